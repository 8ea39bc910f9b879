// Hatches: the boundary filled, or the pattern lines the hatch carries cut to the boundary.
#include <algorithm>
#include <cmath>

#include "cad/entity_geometry_internal.h"
#include "render/plot_drawing_internal.h"
#include "render/plot_shapes.h"

namespace tv::render::plot_internal {

namespace {

// More lines than this in one family look solid on paper anyway, and would only cost time.
constexpr double kMaxLinesPerFamily = 20000;

// Dashes of a pattern line over [t0, t1], the pattern starting at t = 0 of the line.
void DashSpan(double t0, double t1, const std::vector<double>& dashes, std::vector<std::pair<double, double>>& out) {
  double period = 0;
  for (double d : dashes) period += std::abs(d);
  if (dashes.empty() || !(period > 0) || (t1 - t0) / period > 100000) {
    out.emplace_back(t0, t1);
    return;
  }
  double start = std::floor(t0 / period) * period;
  while (start < t1) {
    double t = start;
    for (double d : dashes) {
      const double len = std::abs(d);
      if (d >= 0) {
        const double a = std::max(t, t0), b = std::min(t + len, t1);
        if (b > a || (len == 0 && t >= t0 && t <= t1)) out.emplace_back(a, len == 0 ? a : b);
      }
      t += len;
    }
    start += period;
  }
}

}  // namespace

void DrawingPlotter::drawHatch(const cad::Hatch& h, const Look& look, const DrawContext& ctx) {
  // Boundaries in the hatch's plane.
  const double tol = chordTolerance(ctx);
  std::vector<std::vector<Point2d>> rings;
  for (const auto& path : h.paths) {
    std::vector<Point2d> ring;
    if (path.isPolyline()) {
      const std::size_t n = path.vertices.size();
      if (n == 0) continue;
      ring.push_back(path.vertices[0]);
      for (std::size_t i = 0; i + 1 < n || (path.closed && i < n && n > 1); ++i)
        AppendBulgeSegment(ring, path.vertices[i], path.vertices[(i + 1) % n], i < path.bulges.size() ? path.bulges[i] : 0.0, tol);
    } else {
      cad::geom_internal::FlattenHatchEdges(path.edges, 0, true, ring);
    }
    if (ring.size() >= 3 && AllFinite(ring)) rings.push_back(std::move(ring));
  }
  if (rings.empty()) return;
  const Matrix3d m = ctx.toPage * Matrix3d::planeToWorld(h.normal);
  const auto onPage = [&](Point2d p) { return page(m, Point3d{p, h.elevation}); };

  if (h.solidFill) {
    std::vector<Polyline2d> pageRings;
    for (const auto& ring : rings) {
      Polyline2d r;
      for (Point2d p : ring) r.push_back(onPage(p));
      if (AllFinite(r)) pageRings.push_back(std::move(r));
    }
    canvas_.fill(pageRings, look.pen.color);
    ++result_.entitiesDrawn;
    return;
  }

  Look lineLook = look;
  lineLook.dashesMm.clear();
  for (const auto& family : h.patternLines) {
    const double angle = cad::DegToRad(family.angle);
    if (!std::isfinite(angle)) continue;
    const Vector2d dir{std::cos(angle), std::sin(angle)};
    // Line k passes through base + k * offset; its dashes start there.
    ForEachFamilyLine(rings, family.base, dir, family.offset, kMaxLinesPerFamily,
                      [&](Point2d origin, const std::vector<std::pair<double, double>>& spans) {
                        std::vector<std::pair<double, double>> dashes;
                        for (const auto& [t0, t1] : spans) DashSpan(t0, t1, family.dashes, dashes);
                        for (const auto& [a, b] : dashes) {
                          const Polyline2d seg{onPage(origin + dir * a), onPage(origin + dir * b)};
                          if (AllFinite(seg)) strokePage(a == b ? Polyline2d{seg[0]} : seg, false, lineLook);
                        }
                      });
  }
  ++result_.entitiesDrawn;
}

}  // namespace tv::render::plot_internal
