// Hatch boundaries made of edges, and spline chord tolerances, as polylines.
#include <algorithm>
#include <cmath>

#include "cad/entity_geometry_internal.h"

namespace tv::cad::geom_internal {

double SplineChordTolerance(const Spline& s, double relativeTolerance) {
  Extents3d box;
  for (const Point3d& p : s.controlPoints.empty() ? s.fitPoints : s.controlPoints) box.add(p);
  const double size = box.isEmpty() ? 0 : (box.max - box.min).length();
  return std::isfinite(size) && size > 0 ? size * relativeTolerance : 0;
}

void FlattenHatchEdges(const std::vector<HatchEdge>& edges, double relativeTolerance, bool dropRepeatedStart,
                       std::vector<Point2d>& out) {
  out.clear();
  const auto append = [&](const std::vector<Point3d>& pts, bool reversed) {
    for (std::size_t i = 0; i < pts.size(); ++i) out.push_back(pts[reversed ? pts.size() - 1 - i : i].to2d());
  };
  for (const HatchEdge& edge : edges) {
    switch (edge.kind) {
      case HatchEdge::Kind::Line:
        out.push_back(edge.start);
        out.push_back(edge.end);
        break;
      case HatchEdge::Kind::Arc: case HatchEdge::Kind::Ellipse: {
        // Clockwise edges store their angles mirrored: the counter-clockwise span is (-end, -start).
        const double a0 = DegToRad(edge.counterClockwise ? edge.startAngle : 360 - edge.endAngle);
        const double a1 = DegToRad(edge.counterClockwise ? edge.endAngle : 360 - edge.startAngle);
        Vector3d u{edge.radius, 0, 0}, v{0, edge.radius, 0};
        double t0 = a0, t1 = a1;
        if (edge.kind == HatchEdge::Kind::Ellipse) {
          const double ratio = edge.radius;
          u = {edge.majorAxis.x, edge.majorAxis.y, 0};
          v = {-edge.majorAxis.y * ratio, edge.majorAxis.x * ratio, 0};
          // The stored angles are true angles; the curve parameter of an angle depends on the ratio.
          if (ratio > 0 && std::abs(a1 - a0) < 2 * kPi - 1e-9) {
            t0 = std::atan2(std::sin(a0) / ratio, std::cos(a0));
            t1 = std::atan2(std::sin(a1) / ratio, std::cos(a1));
          }
        }
        const double r = std::max(u.length(), v.length());
        append(EllipseArcPoints(Point3d{edge.start}, u, v, t0, t1, r * relativeTolerance), !edge.counterClockwise);
        break;
      }
      case HatchEdge::Kind::Spline: {
        const Spline s = SplineOfHatchEdge(edge, 0);
        append(SplineToPolyline(s, SplineChordTolerance(s, relativeTolerance)), false);
        break;
      }
    }
  }
  // Edges share their end points, and a loop ends where it starts.
  const auto same = [](Point2d a, Point2d b) { return a.distanceTo(b) <= 1e-12 * (1 + std::abs(a.x) + std::abs(a.y)); };
  out.erase(std::unique(out.begin(), out.end(), same), out.end());
  if (dropRepeatedStart && out.size() > 1 && same(out.front(), out.back())) out.pop_back();
}

}  // namespace tv::cad::geom_internal
