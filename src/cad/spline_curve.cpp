// Curves as polylines and exact curve extents: NURBS by de Boor's algorithm, ellipse arcs.
#include <algorithm>
#include <cmath>

#include "cad/entity_geometry_internal.h"
#include "cad/spline_parameters.h"

namespace tv::cad {

namespace geom_internal {

double SweepEnd(double t0, double t1) {
  if (!std::isfinite(t0) || !std::isfinite(t1)) return t0 + 2 * kPi;
  double span = NormalizeAngle(t1 - t0);
  if (span < 1e-12) span = 2 * kPi;
  return t0 + span;
}

void AddEllipseArc(Extents3d& ext, Point3d c, Vector3d u, Vector3d v, double t0, double t1) {
  if (!std::isfinite(t0)) t0 = 0;
  t1 = SweepEnd(t0, t1);
  const auto at = [&](double t) { return c + u * std::cos(t) + v * std::sin(t); };
  ext.add(at(t0));
  ext.add(at(t1));
  const double us[3] = {u.x, u.y, u.z}, vs[3] = {v.x, v.y, v.z};
  for (int axis = 0; axis < 3; ++axis) {
    if (us[axis] == 0 && vs[axis] == 0) continue;
    // d/dt (u cos t + v sin t) = 0 where tan t = v / u: the extremes along this axis.
    const double extreme = std::atan2(vs[axis], us[axis]);
    for (double k : {extreme, extreme + kPi}) {
      const double t = t0 + NormalizeAngle(k - t0);
      if (t <= t1) ext.add(at(t));
    }
  }
}

std::vector<Point3d> EllipseArcPoints(Point3d c, Vector3d u, Vector3d v, double t0, double t1, double tol) {
  if (!std::isfinite(t0)) t0 = 0;
  t1 = SweepEnd(t0, t1);
  const double span = t1 - t0;
  const double r = std::max(u.length(), v.length());
  if (!(r > 0) || !std::isfinite(r)) return {c};
  if (!(tol > 0) || !std::isfinite(tol)) tol = r * 1e-3;
  // A chord over the angle step deviates from the circle by r (1 - cos(step / 2)).
  const double step = tol >= r ? kPi / 2 : 2 * std::acos(1 - tol / r);
  const int minCount = span >= 2 * kPi - 1e-9 ? 8 : 1;
  const int count = std::clamp(static_cast<int>(std::ceil(span / std::max(step, 1e-9))), minCount, 4096);
  std::vector<Point3d> points;
  points.reserve(static_cast<std::size_t>(count) + 1);
  for (int i = 0; i <= count; ++i) {
    const double t = i == count ? t1 : t0 + span * i / count;
    points.push_back(c + u * std::cos(t) + v * std::sin(t));
  }
  return points;
}

Spline SplineOfHatchEdge(const HatchEdge& edge, double z) {
  Spline s;
  s.degree = static_cast<std::int16_t>(std::clamp(edge.degree, 1, 31));
  s.knots = edge.knots;
  s.weights = edge.weights;
  for (Point2d p : edge.controlPoints) s.controlPoints.push_back(Point3d{p, z});
  for (Point2d p : edge.fitPoints) s.fitPoints.push_back(Point3d{p, z});
  return s;
}

}  // namespace geom_internal

namespace {

using geom_internal::EllipseArcPoints;

struct Homogeneous {
  double x = 0, y = 0, z = 0, w = 0;
  Homogeneous lerp(const Homogeneous& o, double a) const {
    return {x + (o.x - x) * a, y + (o.y - y) * a, z + (o.z - z) * a, w + (o.w - w) * a};
  }
};

// A NURBS curve with checked data: degree p, n control points, n + p + 1 knots.
class Nurbs {
 public:
  static std::optional<Nurbs> from(const Spline& s) {
    const std::size_t n = s.controlPoints.size();
    if (n < 2) return std::nullopt;
    Nurbs c;
    c.p_ = std::clamp<int>(s.degree, 1, static_cast<int>(n) - 1);
    c.points_.reserve(n);
    for (std::size_t i = 0; i < n; ++i) {
      const Point3d& q = s.controlPoints[i];
      double w = s.weights.size() == n ? s.weights[i] : 1.0;
      if (!(w > 0) || !std::isfinite(w)) w = 1.0;
      if (!std::isfinite(q.x) || !std::isfinite(q.y) || !std::isfinite(q.z)) return std::nullopt;
      c.points_.push_back({q.x * w, q.y * w, q.z * w, w});
    }
    c.knots_ = s.knots;
    if (!c.knotsValid()) c.clampedUniformKnots();
    return c;
  }

  double domainStart() const { return knots_[p_]; }
  double domainEnd() const { return knots_[points_.size()]; }
  const std::vector<double>& knots() const { return knots_; }
  int degree() const { return p_; }

  Point3d at(double u) const {
    const std::size_t n = points_.size();
    // The knot span k with knots[k] <= u < knots[k+1], inside [p, n - 1].
    std::size_t k = static_cast<std::size_t>(p_);
    if (u >= domainEnd()) {
      k = n - 1;
      while (k > static_cast<std::size_t>(p_) && knots_[k] >= knots_[k + 1]) --k;
    } else {
      k = static_cast<std::size_t>(std::upper_bound(knots_.begin() + p_, knots_.begin() + static_cast<std::ptrdiff_t>(n), u) -
                                   knots_.begin()) - 1;
      k = std::clamp<std::size_t>(k, static_cast<std::size_t>(p_), n - 1);
    }
    Homogeneous d[32];
    for (int j = 0; j <= p_; ++j) d[j] = points_[k - static_cast<std::size_t>(p_) + static_cast<std::size_t>(j)];
    for (int r = 1; r <= p_; ++r) {
      for (int j = p_; j >= r; --j) {
        const std::size_t i = k - static_cast<std::size_t>(p_) + static_cast<std::size_t>(j);
        const double denom = knots_[i + static_cast<std::size_t>(p_ - r) + 1] - knots_[i];
        const double a = denom > 0 ? (u - knots_[i]) / denom : 0.0;
        d[j] = d[j - 1].lerp(d[j], a);
      }
    }
    const Homogeneous& h = d[p_];
    return h.w != 0 ? Point3d{h.x / h.w, h.y / h.w, h.z / h.w} : Point3d{h.x, h.y, h.z};
  }

 private:
  bool knotsValid() const {
    const std::size_t n = points_.size();
    if (p_ > 31 || knots_.size() != n + static_cast<std::size_t>(p_) + 1) return false;
    for (std::size_t i = 0; i < knots_.size(); ++i) {
      if (!std::isfinite(knots_[i])) return false;
      if (i > 0 && knots_[i] < knots_[i - 1]) return false;
    }
    return knots_[static_cast<std::size_t>(p_)] < knots_[n];
  }

  void clampedUniformKnots() {
    p_ = std::min(p_, 31);
    const std::size_t n = points_.size();
    const std::size_t p = static_cast<std::size_t>(p_);
    knots_.assign(n + p + 1, 0.0);
    const std::size_t inner = n - p;  // spans
    for (std::size_t i = 1; i < inner; ++i) knots_[p + i] = static_cast<double>(i) / static_cast<double>(inner);
    for (std::size_t i = n; i < knots_.size(); ++i) knots_[i] = 1.0;
  }

  int p_ = 3;
  std::vector<double> knots_;
  std::vector<Homogeneous> points_;
};

double DistanceToSegment(Point3d p, Point3d a, Point3d b) {
  const Vector3d ab = b - a;
  const double len2 = ab.dot(ab);
  if (!(len2 > 0)) return p.distanceTo(a);
  const double t = std::clamp((p - a).dot(ab) / len2, 0.0, 1.0);
  return p.distanceTo(a + ab * t);
}

constexpr std::size_t kMaxSplinePoints = 50000;

void Refine(const Nurbs& c, double u0, Point3d p0, double u1, Point3d p1, double tol, int depth, std::vector<Point3d>& out) {
  const double um = (u0 + u1) / 2;
  const Point3d pm = c.at(um);
  if (depth <= 0 || out.size() >= kMaxSplinePoints || DistanceToSegment(pm, p0, p1) <= tol) {
    out.push_back(p1);
    return;
  }
  Refine(c, u0, p0, um, pm, tol, depth - 1, out);
  Refine(c, um, pm, u1, p1, tol, depth - 1, out);
}

}  // namespace

std::vector<Point3d> SplineToPolyline(const Spline& spline, double chordTolerance) {
  const auto curve = Nurbs::from(spline);
  if (!curve) return spline.controlPoints.empty() ? spline.fitPoints : spline.controlPoints;
  if (!(chordTolerance > 0) || !std::isfinite(chordTolerance)) {
    Extents3d box;
    for (const Point3d& q : spline.controlPoints) box.add(q);
    chordTolerance = std::max((box.max - box.min).length() * 1e-3, 1e-12);
  }
  std::vector<Point3d> points;
  const auto& knots = curve->knots();
  const double start = curve->domainStart(), end = curve->domainEnd();
  Point3d previous = curve->at(start);
  points.push_back(previous);
  // Each knot span is a polynomial piece; a few even steps per piece before refining keep an
  // S-bend inside one piece from looking straight at its midpoint.
  const int steps = curve->degree() + 1;
  for (std::size_t k = 0; k + 1 < knots.size(); ++k) {
    const double a = std::max(knots[k], start), b = std::min(knots[k + 1], end);
    if (!(b > a)) continue;
    for (int s = 1; s <= steps; ++s) {
      const double u0 = a + (b - a) * (s - 1) / steps;
      const double u1 = s == steps ? b : a + (b - a) * s / steps;
      const Point3d next = curve->at(u1);
      Refine(*curve, u0, previous, u1, next, chordTolerance, 12, points);
      previous = next;
    }
    if (points.size() >= kMaxSplinePoints) break;
  }
  return points;
}

std::vector<Point3d> SplineAtEqualParameters(const Spline& spline, std::size_t steps) {
  const auto curve = Nurbs::from(spline);
  if (!curve || steps == 0) return {};
  const double start = curve->domainStart(), end = curve->domainEnd();
  std::vector<Point3d> points;
  points.reserve(steps + 1);
  for (std::size_t i = 0; i < steps; ++i)
    points.push_back(curve->at(start + (end - start) * static_cast<double>(i) / static_cast<double>(steps)));
  points.push_back(curve->at(end));
  return points;
}

std::vector<Point3d> EllipseToPolyline(const Ellipse& e, double chordTolerance) {
  Vector3d n = e.normal.normalized();
  if (n.isZero(0)) n = Vector3d::zAxis();
  const Vector3d minor = n.cross(e.majorAxis) * e.ratio;
  return EllipseArcPoints(e.center, e.majorAxis, minor, e.startParam, e.endParam, chordTolerance);
}

std::vector<Point3d> ArcToPolyline(const Arc& arc, double chordTolerance) {
  const Matrix3d toWorld = Matrix3d::planeToWorld(arc.normal);
  return EllipseArcPoints(toWorld.transform(arc.center), toWorld.transform(Vector3d{arc.radius, 0, 0}),
                          toWorld.transform(Vector3d{0, arc.radius, 0}), arc.startAngle, arc.endAngle, chordTolerance);
}

std::vector<Point3d> CircleToPolyline(const Circle& circle, double chordTolerance) {
  const Matrix3d toWorld = Matrix3d::planeToWorld(circle.normal);
  return EllipseArcPoints(toWorld.transform(circle.center), toWorld.transform(Vector3d{circle.radius, 0, 0}),
                          toWorld.transform(Vector3d{0, circle.radius, 0}), 0, 2 * kPi, chordTolerance);
}

}  // namespace tv::cad
