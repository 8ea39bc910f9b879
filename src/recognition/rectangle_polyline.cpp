#include <algorithm>
#include <cmath>
#include <vector>

#include "recognition/sheet_geometry.h"
#include "recognition/working_coordinates.h"

namespace tv::recognition {

Point3d TransformByStack(Point3d point, const MatrixStack& stack) {
  for (auto it = stack.rbegin(); it != stack.rend(); ++it) point = it->transform(point);
  return point;
}

bool IsRectanglePolyline(const host::Entity& entity, bool useStack, const MatrixStack& stack, Point3d& minPt,
                         Point3d& maxPt) {
  if (!entity || !host::IsPolylineClass(entity.kind())) return false;
  minPt = Point3d{0, 0, 0};

  std::vector<Point2d> v = entity.vertices();
  const bool closed = entity.closed();

  // Repeated vertices: a drawn rectangle often repeats its first corner at the end. A vertex goes
  // when the next one lies on it, which is what removing it and staying in place amounts to.
  std::size_t kept = 0;
  for (std::size_t i = 0; i < v.size(); ++i)
    if (i + 1 == v.size() || !(v[i].distanceTo(v[i + 1]) < 1e-05)) v[kept++] = v[i];
  v.resize(kept);
  // Only 4 or 5 corners make a rectangle; long polylines stop here, before any transform.
  if (v.size() != 4 && v.size() != 5) return false;

  for (Point2d& p : v) {
    Point3d q{p.x, p.y, 0.0};
    if (useStack) q = TransformByStack(q, stack);
    q = ToWorking(q);
    p = {q.x, q.y};
  }

  const Point2d a = v[0], b = v[1], c = v[2], d = v[3];

  const double dx = c.x - a.x, dy = c.y - a.y;
  const double t = (std::abs(dy) + std::abs(dx)) / 1000.0;
  if (!(std::abs(dx) > 1e-05) || !(std::abs(dy) > 1e-05)) return false;

  // Lightweight polylines must close; 2D and 3D ones from older programs are often left open.
  if (entity.kind() == host::EntityClass::LwPolyline) {
    if (v.size() == 4 && !closed) return false;
    if (v.size() == 5 && !(v[4].distanceTo(a) < t)) return false;
  }

  const auto alongAxis = [t](Point2d p, Point2d q) { return std::abs(p.x - q.x) < t || std::abs(p.y - q.y) < t; };
  if (!alongAxis(a, b) || !alongAxis(b, c) || !alongAxis(c, d) || !alongAxis(d, a)) return false;

  minPt = {std::min({a.x, b.x, c.x, d.x}), std::min({a.y, b.y, c.y, d.y}), 0.0};
  maxPt = {std::max({a.x, b.x, c.x, d.x}), std::max({a.y, b.y, c.y, d.y}), 0.0};
  return true;
}

}  // namespace tv::recognition
