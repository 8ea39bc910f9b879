// Polylines (with bulges and widths) and the four-cornered entities.
#include <algorithm>
#include <cmath>

#include "cad/entity_geometry.h"
#include "host/whole_number.h"
#include "render/plot_drawing_internal.h"
#include "render/plot_shapes.h"

namespace tv::render::plot_internal {

void AppendBulgeSegment(std::vector<Point2d>& out, Point2d a, Point2d b, double bulge, double tol) {
  const auto arc = cad::ArcFromBulge(a, b, bulge);
  if (!arc || !(tol > 0)) {
    out.push_back(b);
    return;
  }
  // Included angle 4 atan(bulge); chord steps small enough for the tolerance.
  const double sweep = 4 * std::atan(bulge);
  const double r = arc->radius;
  const double step = tol < r ? 2 * std::acos(1 - tol / r) : cad::kPi / 4;
  const int n = SaturatedInt(std::ceil(std::abs(sweep) / std::max(step, 1e-4)), 1, 2048);
  const double a0 = std::atan2(a.y - arc->center.y, a.x - arc->center.x);
  for (int i = 1; i < n; ++i) {
    const double t = a0 + sweep * i / n;
    out.push_back({arc->center.x + r * std::cos(t), arc->center.y + r * std::sin(t)});
  }
  out.push_back(b);
}

namespace {

Vector2d Unit(Vector2d v) {
  const double l = v.length();
  return l > 0 ? v * (1.0 / l) : Vector2d{};
}

}  // namespace

void DrawingPlotter::drawWidePolyline(const std::vector<Point2d>& pts, const std::vector<double>& bulges,
                                      const std::vector<Vector2d>& widths, bool closed, double z, const Matrix3d& ocsToPage,
                                      const Look& look, const DrawContext& ctx) {
  const std::size_t n = pts.size();
  if (n == 0) return;
  const double tol = chordTolerance(ctx);
  const auto bulgeAt = [&](std::size_t i) { return i < bulges.size() ? bulges[i] : 0.0; };
  const auto onPage = [&](Point2d p) { return page(ocsToPage, Point3d{p, z}); };
  const bool wide = std::any_of(widths.begin(), widths.end(), [](Vector2d w) { return w.x > 0 || w.y > 0; });

  if (!wide) {
    std::vector<Point2d> flat{pts[0]};
    for (std::size_t i = 0; i + 1 < n || (closed && i < n && n > 1); ++i)
      AppendBulgeSegment(flat, pts[i], pts[(i + 1) % n], bulgeAt(i), tol);
    Polyline2d out;
    out.reserve(flat.size());
    for (Point2d p : flat) out.push_back(onPage(p));
    if (!AllFinite(out)) return;
    if (closed && out.size() > 1 && out.front() == out.back()) out.pop_back();
    strokePage(out, closed, look);
    ++result_.entitiesDrawn;
    return;
  }

  // Each segment is filled as a band between its two offset lines; the outer gaps at the corners
  // are filled by triangles (a bevelled join).
  std::vector<Polyline2d> bands;
  Point2d prevLeft, prevRight;
  bool hasPrev = false;
  const std::size_t segments = closed ? n : n - 1;
  for (std::size_t i = 0; i < segments; ++i) {
    std::vector<Point2d> q{pts[i]};
    AppendBulgeSegment(q, pts[i], pts[(i + 1) % n], bulgeAt(i), tol);
    std::vector<double> along(q.size(), 0.0);
    for (std::size_t k = 1; k < q.size(); ++k) along[k] = along[k - 1] + q[k].distanceTo(q[k - 1]);
    const double total = along.back();
    if (!(total > 0)) continue;
    const double w0 = i < widths.size() ? widths[i].x : 0, w1 = i < widths.size() ? widths[i].y : 0;
    Polyline2d left, right;
    for (std::size_t k = 0; k < q.size(); ++k) {
      const Point2d before = q[k == 0 ? 0 : k - 1], after = q[k + 1 < q.size() ? k + 1 : k];
      const Vector2d d = Unit(after - before);
      const Vector2d normal{-d.y, d.x};
      const double half = (w0 + (w1 - w0) * along[k] / total) / 2;
      left.push_back(onPage(q[k] + normal * half));
      right.push_back(onPage(q[k] - normal * half));
    }
    if (hasPrev) {
      const Point2d corner = onPage(q[0]);
      bands.push_back({corner, prevLeft, left.front()});
      bands.push_back({corner, prevRight, right.front()});
    }
    prevLeft = left.back();
    prevRight = right.back();
    hasPrev = true;
    Polyline2d band = left;
    band.insert(band.end(), right.rbegin(), right.rend());
    bands.push_back(std::move(band));
  }
  std::erase_if(bands, [](const Polyline2d& b) { return !AllFinite(b); });
  // Bands overlap at the joins: filled one by one, even-odd cannot cancel them out.
  for (const auto& band : bands) canvas_.fill({band}, look.pen.color);
  ++result_.entitiesDrawn;
}

void DrawingPlotter::drawLwPolyline(const cad::LwPolyline& p, const Look& look, const DrawContext& ctx) {
  std::vector<Vector2d> widths(p.points.size());
  for (std::size_t i = 0; i < p.points.size(); ++i) widths[i] = {p.startWidthAt(i), p.endWidthAt(i)};
  drawWidePolyline(p.points, p.bulges, widths, p.isClosed(), p.elevation(), ctx.toPage * Matrix3d::planeToWorld(p.normal()), look, ctx);
}

void DrawingPlotter::drawPolyline(const cad::Polyline& p, const Look& look, const DrawContext& ctx) {
  if (p.isMeshOrPolyface()) {
    // Faces and meshes show their visible edges.
    for (const auto& piece : cad::Explode(p, db_))
      if (piece->type() == cad::ObjectType::Face3d) {
        const auto& f = static_cast<const cad::Face3d&>(*piece);
        drawQuad(f, f.corners, f.normal, true, f.invisibleEdges, look, ctx);
      }
    return;
  }
  std::vector<Point2d> pts;
  std::vector<double> bulges;
  std::vector<Vector2d> widths;
  std::vector<Point3d> pts3d;
  for (const auto& v : p.vertices) {
    // A spline-fit polyline keeps its frame as extra vertices; the curve is the others.
    if ((p.polyFlags & cad::Polyline::kSplineFit) && (v.flags & cad::Polyline::kVertexSplineFrame)) continue;
    pts.push_back(v.position.to2d());
    pts3d.push_back(v.position);
    bulges.push_back(v.bulge);
    widths.push_back({v.startWidth > 0 ? v.startWidth : p.defaultStartWidth, v.endWidth > 0 ? v.endWidth : p.defaultEndWidth});
  }
  if (p.is3d()) {
    strokeWorld(pts3d, p.isClosed(), look, ctx);
    return;
  }
  drawWidePolyline(pts, bulges, widths, p.isClosed(), p.elevation, ctx.toPage * Matrix3d::planeToWorld(p.normal), look, ctx);
}

void DrawingPlotter::drawQuad(const cad::Entity&, const Point3d (&c)[4], const Vector3d& normal, bool face3d,
                              std::int16_t invisibleEdges, const Look& look, const DrawContext& ctx) {
  if (face3d) {
    for (int k = 0; k < 4; ++k) {
      if (invisibleEdges & (1 << k)) continue;
      const Point3d a = c[k], b = c[(k + 1) % 4];
      if (a == b) continue;
      strokeWorld({a, b}, false, look, ctx);
    }
    return;
  }
  Polyline2d out;
  const Matrix3d m = ctx.toPage * Matrix3d::planeToWorld(normal);
  if (!toPage(m, {c[0], c[1], c[3], c[2]}, out)) return;
  canvas_.fill({out}, look.pen.color);
  ++result_.entitiesDrawn;
}

}  // namespace tv::render::plot_internal
