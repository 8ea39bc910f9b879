#pragma once
// Points, vectors, 4x4 matrices, extents and coordinate systems: the geometry vocabulary shared by
// the drawing model and the logic behind the host seam. Plain vector algebra, no platform.
#include <array>
#include <cmath>
#include <optional>

namespace tv {

inline constexpr double kPi = 3.14159265358979323846;
inline constexpr double kTol = 1e-10;

struct Vector2d {
  double x = 0, y = 0;
  constexpr Vector2d operator+(Vector2d o) const { return {x + o.x, y + o.y}; }
  constexpr Vector2d operator-(Vector2d o) const { return {x - o.x, y - o.y}; }
  constexpr Vector2d operator*(double s) const { return {x * s, y * s}; }
  constexpr double dot(Vector2d o) const { return x * o.x + y * o.y; }
  constexpr double cross(Vector2d o) const { return x * o.y - y * o.x; }
  double length() const { return std::hypot(x, y); }
  constexpr bool operator==(const Vector2d&) const = default;
};

struct Point2d {
  double x = 0, y = 0;
  constexpr Point2d operator+(Vector2d v) const { return {x + v.x, y + v.y}; }
  constexpr Point2d operator-(Vector2d v) const { return {x - v.x, y - v.y}; }
  constexpr Vector2d operator-(Point2d p) const { return {x - p.x, y - p.y}; }
  double distanceTo(Point2d p) const { return std::hypot(x - p.x, y - p.y); }
  constexpr bool operator==(const Point2d&) const = default;
};

struct Vector3d {
  double x = 0, y = 0, z = 0;
  constexpr Vector3d operator+(Vector3d o) const { return {x + o.x, y + o.y, z + o.z}; }
  constexpr Vector3d operator-(Vector3d o) const { return {x - o.x, y - o.y, z - o.z}; }
  constexpr Vector3d operator-() const { return {-x, -y, -z}; }
  constexpr Vector3d operator*(double s) const { return {x * s, y * s, z * s}; }
  constexpr Vector3d operator/(double s) const { return {x / s, y / s, z / s}; }
  constexpr double dot(Vector3d o) const { return x * o.x + y * o.y + z * o.z; }
  constexpr Vector3d cross(Vector3d o) const {
    return {y * o.z - z * o.y, z * o.x - x * o.z, x * o.y - y * o.x};
  }
  double length() const { return std::sqrt(x * x + y * y + z * z); }
  // Unit vector in the same direction; the zero vector stays zero.
  Vector3d normalized() const;
  bool isZero(double tol = kTol) const { return length() <= tol; }
  bool isEqualTo(Vector3d o, double tol = 1e-9) const { return (*this - o).length() <= tol; }
  constexpr bool operator==(const Vector3d&) const = default;

  static constexpr Vector3d xAxis() { return {1, 0, 0}; }
  static constexpr Vector3d yAxis() { return {0, 1, 0}; }
  static constexpr Vector3d zAxis() { return {0, 0, 1}; }
};

struct Point3d {
  double x = 0, y = 0, z = 0;
  constexpr Point3d() = default;
  constexpr Point3d(double x_, double y_, double z_ = 0) : x(x_), y(y_), z(z_) {}
  constexpr explicit Point3d(Point2d p, double z_ = 0) : x(p.x), y(p.y), z(z_) {}
  constexpr Point3d operator+(Vector3d v) const { return {x + v.x, y + v.y, z + v.z}; }
  constexpr Point3d operator-(Vector3d v) const { return {x - v.x, y - v.y, z - v.z}; }
  constexpr Vector3d operator-(Point3d p) const { return {x - p.x, y - p.y, z - p.z}; }
  constexpr Vector3d asVector() const { return {x, y, z}; }
  constexpr Point2d to2d() const { return {x, y}; }
  double distanceTo(Point3d p) const { return (*this - p).length(); }
  bool isEqualTo(Point3d p, double tol = 1e-9) const { return distanceTo(p) <= tol; }
  constexpr bool operator==(const Point3d&) const = default;
};

// 4x4 transform, row-major, acting on column vectors: p' = M * [x y z 1]^T.
// m[0][3], m[1][3], m[2][3] hold the translation.
class Matrix3d {
 public:
  std::array<std::array<double, 4>, 4> m{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}};

  static Matrix3d identity() { return {}; }
  static Matrix3d translation(Vector3d v);
  static Matrix3d scaling(double s, Point3d center = {});
  static Matrix3d scaling(double sx, double sy, double sz);
  // Counter-clockwise rotation by `angle` radians about `axis` through `center`.
  static Matrix3d rotation(double angle, Vector3d axis = Vector3d::zAxis(), Point3d center = {});
  // Mirror about the plane through `point` with normal `normal`.
  static Matrix3d mirroring(Point3d point, Vector3d normal);
  // Maps the world coordinate system onto the system (origin, x, y, z): the matrix whose
  // columns are the axes, so coordinates in that system become world coordinates.
  static Matrix3d alignCoordSys(Point3d origin, Vector3d x, Vector3d y, Vector3d z);
  // Object coordinate system of a planar entity with this extrusion (the arbitrary axis rule):
  // OCS coordinates to world.
  static Matrix3d planeToWorld(Vector3d normal);
  static Matrix3d worldToPlane(Vector3d normal);

  Matrix3d operator*(const Matrix3d& o) const;
  Point3d transform(Point3d p) const;
  Vector3d transform(Vector3d v) const;  // no translation
  double determinant() const;
  std::optional<Matrix3d> inverse() const;
  // Scale factor along x of the transform (length of the image of the unit x vector).
  double scaleX() const;
  bool isIdentity(double tol = 1e-12) const;
  bool isEqualTo(const Matrix3d& o, double tol = 1e-9) const;
  // True when the transform preserves shapes up to uniform scale (no shear, equal axes).
  bool isUniformScaledOrthogonal(double tol = 1e-9) const;
  Vector3d translationPart() const { return {m[0][3], m[1][3], m[2][3]}; }
};

// Arbitrary axis algorithm of DXF: the OCS x axis for an extrusion direction.
Vector3d ArbitraryXAxis(Vector3d normal);

// An axis-aligned box; starts empty and grows as points are added.
struct Extents3d {
  Point3d min{1e300, 1e300, 1e300};
  Point3d max{-1e300, -1e300, -1e300};

  Extents3d() = default;
  Extents3d(Point3d a, Point3d b) { add(a); add(b); }
  bool isEmpty() const { return min.x > max.x || min.y > max.y || min.z > max.z; }
  void add(Point3d p);
  void add(const Extents3d& e);
  // Extents of the eight corners after the transform.
  Extents3d transformed(const Matrix3d& xf) const;
  void expandBy(double d);
  bool contains(Point3d p, double tol = 0) const;
  bool intersects(const Extents3d& e) const;
  Point3d center() const { return {(min.x + max.x) / 2, (min.y + max.y) / 2, (min.z + max.z) / 2}; }
  double width() const { return isEmpty() ? 0 : max.x - min.x; }
  double height() const { return isEmpty() ? 0 : max.y - min.y; }
};

// A right-handed coordinate system given by its origin and axes (a UCS).
struct CoordSystem {
  Point3d origin;
  Vector3d xAxis = Vector3d::xAxis();
  Vector3d yAxis = Vector3d::yAxis();
  Vector3d zAxis() const { return xAxis.cross(yAxis).normalized(); }
  // Coordinates in this system to world and back.
  Matrix3d toWorld() const;
  Matrix3d fromWorld() const;
  bool isWorld(double tol = 1e-12) const;
};

// Angle helpers in radians.
double NormalizeAngle(double a);  // into [0, 2*pi)
inline double DegToRad(double d) { return d * kPi / 180.0; }
inline double RadToDeg(double r) { return r * 180.0 / kPi; }

// Point on a circular arc between p1 and p2 with DXF bulge b (tan of a quarter of the included
// angle; positive = counter-clockwise). Returns centre and radius; nullopt when b is ~0.
struct BulgeArc {
  Point2d center;
  double radius = 0;
  double startAngle = 0;  // radians, counter-clockwise from start to end
  double endAngle = 0;
};
std::optional<BulgeArc> ArcFromBulge(Point2d p1, Point2d p2, double bulge);

}  // namespace tv
