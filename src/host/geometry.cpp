#include "host/geometry.h"

#include <algorithm>
#include <utility>

namespace tv {

namespace {

using Mat4 = std::array<std::array<double, 4>, 4>;

// Row-echelon reduction with partial pivoting; returns the determinant and leaves `a` reduced.
// When `inv` is given, the same row operations are applied to it and the reduction is carried
// through to the identity (Gauss-Jordan), so `inv` ends up as the inverse.
double Eliminate(Mat4& a, Mat4* inv) {
  double det = 1;
  for (int col = 0; col < 4; ++col) {
    int pivot = col;
    for (int r = col + 1; r < 4; ++r) {
      if (std::abs(a[r][col]) > std::abs(a[pivot][col])) pivot = r;
    }
    const double p = a[pivot][col];
    if (p == 0) return 0;
    if (!std::isfinite(p)) return std::nan("");
    if (pivot != col) {
      std::swap(a[pivot], a[col]);
      if (inv) std::swap((*inv)[pivot], (*inv)[col]);
      det = -det;
    }
    det *= p;
    for (int r = 0; r < 4; ++r) {
      if (r == col || (!inv && r < col)) continue;
      const double f = a[r][col] / p;
      if (f == 0) continue;
      for (int c = 0; c < 4; ++c) {
        a[r][c] -= f * a[col][c];
        if (inv) (*inv)[r][c] -= f * (*inv)[col][c];
      }
    }
  }
  if (inv) {
    for (int r = 0; r < 4; ++r) {
      const double p = a[r][r];
      for (int c = 0; c < 4; ++c) (*inv)[r][c] /= p;
    }
  }
  return det;
}

// Inverse of an orthonormal frame: transposed rotation, translation -R^T o. Exact, unlike
// elimination.
Matrix3d TransposedFrame(const Matrix3d& f) {
  Matrix3d t;
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < 3; ++c) t.m[r][c] = f.m[c][r];
  const Vector3d o = t.transform(f.translationPart());
  t.m[0][3] = -o.x;
  t.m[1][3] = -o.y;
  t.m[2][3] = -o.z;
  return t;
}

Vector3d Column(const Matrix3d& x, int c) { return {x.m[0][c], x.m[1][c], x.m[2][c]}; }

}  // namespace

Vector3d Vector3d::normalized() const {
  // Scale first so huge or tiny components neither overflow nor underflow the length.
  const double big = std::max({std::abs(x), std::abs(y), std::abs(z)});
  if (!(big > 0) || !std::isfinite(big)) return big == 0 ? *this : Vector3d{};
  const Vector3d s = *this / big;
  return s / s.length();
}

Matrix3d Matrix3d::translation(Vector3d v) {
  Matrix3d r;
  r.m[0][3] = v.x;
  r.m[1][3] = v.y;
  r.m[2][3] = v.z;
  return r;
}

Matrix3d Matrix3d::scaling(double s, Point3d center) {
  Matrix3d r;
  for (int i = 0; i < 3; ++i) r.m[i][i] = s;
  r.m[0][3] = center.x * (1 - s);
  r.m[1][3] = center.y * (1 - s);
  r.m[2][3] = center.z * (1 - s);
  return r;
}

Matrix3d Matrix3d::scaling(double sx, double sy, double sz) {
  Matrix3d r;
  r.m[0][0] = sx;
  r.m[1][1] = sy;
  r.m[2][2] = sz;
  return r;
}

Matrix3d Matrix3d::rotation(double angle, Vector3d axis, Point3d center) {
  const Vector3d k = axis.normalized();
  if (k.isZero(0)) return {};
  const double c = std::cos(angle), s = std::sin(angle), t = 1 - c;
  Matrix3d r;
  r.m[0] = {t * k.x * k.x + c, t * k.x * k.y - s * k.z, t * k.x * k.z + s * k.y, 0};
  r.m[1] = {t * k.x * k.y + s * k.z, t * k.y * k.y + c, t * k.y * k.z - s * k.x, 0};
  r.m[2] = {t * k.x * k.z - s * k.y, t * k.y * k.z + s * k.x, t * k.z * k.z + c, 0};
  // The centre stays fixed: T = c - R c.
  const Vector3d rc = r.transform(center.asVector());
  r.m[0][3] = center.x - rc.x;
  r.m[1][3] = center.y - rc.y;
  r.m[2][3] = center.z - rc.z;
  return r;
}

Matrix3d Matrix3d::mirroring(Point3d point, Vector3d normal) {
  const Vector3d n = normal.normalized();
  if (n.isZero(0)) return {};
  const double nn[3] = {n.x, n.y, n.z};
  const double d = 2 * point.asVector().dot(n);
  Matrix3d r;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) r.m[i][j] = (i == j ? 1.0 : 0.0) - 2 * nn[i] * nn[j];
    r.m[i][3] = d * nn[i];
  }
  return r;
}

Matrix3d Matrix3d::alignCoordSys(Point3d origin, Vector3d x, Vector3d y, Vector3d z) {
  Matrix3d r;
  r.m[0] = {x.x, y.x, z.x, origin.x};
  r.m[1] = {x.y, y.y, z.y, origin.y};
  r.m[2] = {x.z, y.z, z.z, origin.z};
  return r;
}

Vector3d ArbitraryXAxis(Vector3d normal) {
  Vector3d n = normal.normalized();
  if (n.isZero(0)) n = Vector3d::zAxis();
  constexpr double kLimit = 1.0 / 64.0;
  const Vector3d w =
      (std::abs(n.x) < kLimit && std::abs(n.y) < kLimit) ? Vector3d::yAxis() : Vector3d::zAxis();
  return w.cross(n).normalized();
}

Matrix3d Matrix3d::planeToWorld(Vector3d normal) {
  // Nearly every entity lies in the world's own plane: spare it the square roots.
  if (normal == Vector3d::zAxis()) return Matrix3d{};
  Vector3d n = normal.normalized();
  if (n.isZero(0)) n = Vector3d::zAxis();
  const Vector3d ax = ArbitraryXAxis(n);
  return alignCoordSys({}, ax, n.cross(ax).normalized(), n);
}

Matrix3d Matrix3d::worldToPlane(Vector3d normal) { return TransposedFrame(planeToWorld(normal)); }

Matrix3d Matrix3d::operator*(const Matrix3d& o) const {
  Matrix3d r;
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) {
      double s = 0;
      for (int k = 0; k < 4; ++k) s += m[i][k] * o.m[k][j];
      r.m[i][j] = s;
    }
  }
  return r;
}

// Drawing transforms are affine; the bottom row is taken to be (0 0 0 1).
Point3d Matrix3d::transform(Point3d p) const {
  return {m[0][0] * p.x + m[0][1] * p.y + m[0][2] * p.z + m[0][3],
          m[1][0] * p.x + m[1][1] * p.y + m[1][2] * p.z + m[1][3],
          m[2][0] * p.x + m[2][1] * p.y + m[2][2] * p.z + m[2][3]};
}

Vector3d Matrix3d::transform(Vector3d v) const {
  return {m[0][0] * v.x + m[0][1] * v.y + m[0][2] * v.z,
          m[1][0] * v.x + m[1][1] * v.y + m[1][2] * v.z,
          m[2][0] * v.x + m[2][1] * v.y + m[2][2] * v.z};
}

double Matrix3d::determinant() const {
  Mat4 a = m;
  return Eliminate(a, nullptr);
}

std::optional<Matrix3d> Matrix3d::inverse() const {
  Mat4 a = m;
  Matrix3d inv;
  const double det = Eliminate(a, &inv.m);
  if (!std::isfinite(det) || std::abs(det) < 1e-300) return std::nullopt;
  for (const auto& row : inv.m)
    for (double v : row)
      if (!std::isfinite(v)) return std::nullopt;
  return inv;
}

double Matrix3d::scaleX() const { return Column(*this, 0).length(); }

bool Matrix3d::isIdentity(double tol) const { return isEqualTo(Matrix3d{}, tol); }

bool Matrix3d::isEqualTo(const Matrix3d& o, double tol) const {
  for (int i = 0; i < 4; ++i)
    for (int j = 0; j < 4; ++j)
      if (!(std::abs(m[i][j] - o.m[i][j]) <= tol)) return false;
  return true;
}

bool Matrix3d::isUniformScaledOrthogonal(double tol) const {
  if (m[3][0] != 0 || m[3][1] != 0 || m[3][2] != 0 || m[3][3] != 1) return false;
  const Vector3d c[3] = {Column(*this, 0), Column(*this, 1), Column(*this, 2)};
  const double s = c[0].length();
  if (!(s > 0) || !std::isfinite(s)) return false;
  // Tolerances are relative to the scale so large drawing units behave like small ones.
  for (int i = 1; i < 3; ++i)
    if (!(std::abs(c[i].length() - s) <= tol * s)) return false;
  const double s2 = s * s;
  return std::abs(c[0].dot(c[1])) <= tol * s2 && std::abs(c[0].dot(c[2])) <= tol * s2 &&
         std::abs(c[1].dot(c[2])) <= tol * s2;
}

void Extents3d::add(Point3d p) {
  min = {std::min(min.x, p.x), std::min(min.y, p.y), std::min(min.z, p.z)};
  max = {std::max(max.x, p.x), std::max(max.y, p.y), std::max(max.z, p.z)};
}

void Extents3d::add(const Extents3d& e) {
  if (e.isEmpty()) return;
  add(e.min);
  add(e.max);
}

Extents3d Extents3d::transformed(const Matrix3d& xf) const {
  Extents3d r;
  if (isEmpty()) return r;
  for (int i = 0; i < 8; ++i) {
    r.add(xf.transform(
        Point3d{(i & 1) ? max.x : min.x, (i & 2) ? max.y : min.y, (i & 4) ? max.z : min.z}));
  }
  return r;
}

void Extents3d::expandBy(double d) {
  if (isEmpty()) return;
  min = min - Vector3d{d, d, d};
  max = max + Vector3d{d, d, d};
  // Shrinking past zero size leaves a proper empty box, so later add() calls start afresh.
  if (isEmpty()) *this = Extents3d{};
}

bool Extents3d::contains(Point3d p, double tol) const {
  if (isEmpty()) return false;
  return p.x >= min.x - tol && p.x <= max.x + tol && p.y >= min.y - tol && p.y <= max.y + tol &&
         p.z >= min.z - tol && p.z <= max.z + tol;
}

bool Extents3d::intersects(const Extents3d& e) const {
  if (isEmpty() || e.isEmpty()) return false;
  return min.x <= e.max.x && e.min.x <= max.x && min.y <= e.max.y && e.min.y <= max.y &&
         min.z <= e.max.z && e.min.z <= max.z;
}

Matrix3d CoordSystem::toWorld() const {
  Vector3d x = xAxis.normalized();
  if (x.isZero(0)) x = Vector3d::xAxis();
  Vector3d z = x.cross(yAxis).normalized();
  // A y axis parallel to x carries no direction; pick any perpendicular one deterministically.
  if (z.isZero(0)) z = x.cross(ArbitraryXAxis(x)).normalized();
  const Vector3d y = z.cross(x).normalized();
  return Matrix3d::alignCoordSys(origin, x, y, z);
}

Matrix3d CoordSystem::fromWorld() const { return TransposedFrame(toWorld()); }

bool CoordSystem::isWorld(double tol) const { return toWorld().isIdentity(tol); }

double NormalizeAngle(double a) {
  if (!std::isfinite(a)) return 0;
  constexpr double kTwoPi = 2 * kPi;
  double r = std::fmod(a, kTwoPi);
  if (r < 0) r += kTwoPi;
  // A tiny negative input rounds up to exactly 2*pi above.
  return r >= kTwoPi ? 0.0 : r;
}

std::optional<BulgeArc> ArcFromBulge(Point2d p1, Point2d p2, double bulge) {
  if (!std::isfinite(bulge) || std::abs(bulge) < 1e-12) return std::nullopt;
  const Vector2d chord = p2 - p1;
  const double d = chord.length();
  if (!(d > 0) || !std::isfinite(d)) return std::nullopt;
  // With b = tan(theta/4): r = d (1 + b^2) / (4|b|), and the centre sits at signed distance
  // d (1 - b^2) / (4b) left of the chord midpoint. Written as sums of b and 1/b so huge
  // bulges do not overflow b^2.
  const double inv = 1 / bulge;
  const double radius = d / 4 * (std::abs(inv) + std::abs(bulge));
  const double offset = d / 4 * (inv - bulge);
  const Vector2d left{-chord.y / d, chord.x / d};
  const Point2d mid{(p1.x + p2.x) / 2, (p1.y + p2.y) / 2};
  BulgeArc arc;
  arc.center = mid + left * offset;
  arc.radius = radius;
  if (!std::isfinite(arc.center.x) || !std::isfinite(arc.center.y) || !std::isfinite(radius))
    return std::nullopt;
  const double a1 = std::atan2(p1.y - arc.center.y, p1.x - arc.center.x);
  const double a2 = std::atan2(p2.y - arc.center.y, p2.x - arc.center.x);
  // A clockwise arc from p1 to p2 is the counter-clockwise arc from p2 to p1.
  arc.startAngle = NormalizeAngle(bulge > 0 ? a1 : a2);
  arc.endAngle = NormalizeAngle(bulge > 0 ? a2 : a1);
  return arc;
}

}  // namespace tv
