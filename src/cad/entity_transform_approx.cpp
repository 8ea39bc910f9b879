// Transforms that need another class or an approximation, and hatches.
#include <algorithm>
#include <cmath>

#include "cad/entity_geometry_internal.h"

namespace tv::cad::geom_internal {

namespace {

Vector2d Apply(const PlaneMap& pm, Vector2d v) { return pm.a * v.x + pm.b * v.y; }

// Scale of areas in the plane, square-rooted: the one number for widths and heights under a
// non-uniform map.
double MeanScale(const PlaneMap& pm) { return std::sqrt(std::abs(pm.a.cross(pm.b))); }

// Arcs are replaced by chords deviating at most this fraction of their radius.
constexpr double kArcTolerance = 1e-3;

// Points strictly inside a bulge arc from p to q, in travel order.
std::vector<Point2d> BulgeInterior(Point2d p, Point2d q, double bulge) {
  const auto arc = ArcFromBulge(p, q, bulge);
  if (!arc) return {};
  const Point3d c{arc->center};
  auto pts = EllipseArcPoints(c, {arc->radius, 0, 0}, {0, arc->radius, 0}, arc->startAngle, arc->endAngle, arc->radius * kArcTolerance);
  if (bulge < 0) std::reverse(pts.begin(), pts.end());
  std::vector<Point2d> out;
  for (std::size_t i = 1; i + 1 < pts.size(); ++i) out.push_back(pts[i].to2d());
  return out;
}

// A 2D outline with its per-vertex widths; arcs are flattened and the widths interpolated along them.
struct Outline {
  std::vector<Point2d> points;
  std::vector<Vector2d> widths;  // start, end per point
};

Outline Flatten(const std::vector<Point2d>& pts, const std::vector<Vector2d>& widths, const std::vector<double>& bulges, bool closed) {
  Outline out;
  for (std::size_t i = 0; i < pts.size(); ++i) {
    const Vector2d w = i < widths.size() ? widths[i] : Vector2d{};
    const bool last = i + 1 == pts.size();
    const double bulge = i < bulges.size() && (!last || closed) ? bulges[i] : 0.0;
    const auto inner = bulge != 0 ? BulgeInterior(pts[i], pts[last ? 0 : i + 1], bulge) : std::vector<Point2d>{};
    const double pieces = static_cast<double>(inner.size() + 1);
    const auto widthAt = [&](std::size_t k) { return w.x + (w.y - w.x) * static_cast<double>(k) / pieces; };
    out.points.push_back(pts[i]);
    out.widths.push_back({w.x, widthAt(1)});
    for (std::size_t k = 0; k < inner.size(); ++k) {
      out.points.push_back(inner[k]);
      out.widths.push_back({widthAt(k + 1), widthAt(k + 2)});
    }
  }
  return out;
}

std::unique_ptr<Entity> ApproximateLwPolyline(const LwPolyline& src, const Matrix3d& xf) {
  const auto pm = MapPlane(xf, src.normal());
  if (!pm) return nullptr;
  std::vector<Vector2d> widths;
  for (std::size_t i = 0; i < src.points.size(); ++i) widths.push_back({src.startWidthAt(i), src.endWidthAt(i)});
  const Outline flat = Flatten(src.points, widths, src.bulges, src.isClosed());
  auto p = std::make_unique<LwPolyline>(src);
  const double s = MeanScale(*pm);
  p->points.clear();
  p->bulges.clear();
  if (!p->widths().empty()) p->editDetails().widths.clear();
  const bool wide = std::any_of(flat.widths.begin(), flat.widths.end(), [](Vector2d w) { return w.x != 0 || w.y != 0; });
  double elevation = pm->map(Point3d{0, 0, src.elevation()}).z;
  for (std::size_t i = 0; i < flat.points.size(); ++i) {
    const Point3d m = pm->map(Point3d{flat.points[i], src.elevation()});
    p->points.push_back(m.to2d());
    elevation = m.z;
    if (wide) p->editDetails().widths.push_back(flat.widths[i] * s);
  }
  p->setConstantWidth(src.constantWidth() * s);
  p->setElevation(elevation);
  p->setThickness(p->thickness() * pm->zScale);
  p->setNormal(pm->normal);
  return p;
}

std::unique_ptr<Entity> ApproximatePolyline(const Polyline& src, const Matrix3d& xf) {
  const auto pm = MapPlane(xf, src.normal);
  if (!pm || src.is3d() || src.isMeshOrPolyface()) return nullptr;
  std::vector<Point2d> pts;
  std::vector<Vector2d> widths;
  std::vector<double> bulges;
  for (const auto& v : src.vertices) {
    pts.push_back(v.position.to2d());
    widths.push_back({v.startWidth, v.endWidth});
    bulges.push_back(v.bulge);
  }
  const Outline flat = Flatten(pts, widths, bulges, src.isClosed());
  auto p = std::make_unique<Polyline>(src);
  const double s = MeanScale(*pm);
  p->vertices.clear();
  double elevation = pm->map(Point3d{0, 0, src.elevation}).z;
  for (std::size_t i = 0; i < flat.points.size(); ++i) {
    const Point3d m = pm->map(Point3d{flat.points[i], src.elevation});
    PolylineVertex v;
    v.position = {m.x, m.y, 0};
    v.startWidth = flat.widths[i].x * s;
    v.endWidth = flat.widths[i].y * s;
    p->vertices.push_back(v);
    elevation = m.z;
  }
  p->polyFlags = static_cast<std::int16_t>(p->polyFlags & ~(Polyline::kCurveFit | Polyline::kSplineFit));
  p->defaultStartWidth *= s;
  p->defaultEndWidth *= s;
  p->elevation = elevation;
  p->thickness *= pm->zScale;
  p->normal = pm->normal;
  return p;
}

template <class C>
std::unique_ptr<Entity> CircularToEllipse(const C& c, const Matrix3d& xf, double t0, double t1) {
  const auto pm = MapPlane(xf, c.normal);
  if (!pm) return nullptr;
  const Matrix3d f = xf * Matrix3d::planeToWorld(c.normal);
  return EllipseFromConjugates(c, f.transform(c.center), f.transform(Vector3d{c.radius, 0, 0}), f.transform(Vector3d{0, c.radius, 0}),
                               pm->normal, t0, t1);
}

std::unique_ptr<Entity> ApproximateMText(const MText& src, const Matrix3d& xf) {
  const auto pm = MapPlane(xf, src.normal);
  if (!pm) return nullptr;
  const Vector3d x = xf.transform(MTextDirection(src));
  if (x.isZero(0)) return nullptr;
  auto t = std::make_unique<MText>(src);
  const double s = MeanScale(*pm);
  const Vector3d n = pm->mirrored ? -pm->normal : pm->normal;
  t->position = xf.transform(src.position);
  t->xDirection = x.normalized();
  const Vector3d ocsX = Matrix3d::worldToPlane(n).transform(t->xDirection);
  t->rotation = NormalizeAngle(std::atan2(ocsX.y, ocsX.x));
  t->normal = n;
  t->height *= s;
  t->referenceWidth *= s;
  t->definedHeight *= s;
  return t;
}

// The boundary of a hatch path as one polyline, in travel order.
std::vector<Point2d> FlattenPath(const HatchPath& path) {
  if (path.isPolyline()) return Flatten(path.vertices, {}, path.bulges, path.closed).points;
  // Edges take the curve functions' own tolerance, the same 1/1000 as kArcTolerance.
  std::vector<Point2d> out;
  FlattenHatchEdges(path.edges, 0, /*dropRepeatedStart=*/false, out);
  return out;
}

double MapPatternAngle(const PlaneMap& pm, double degrees) {
  const double phi = RadToDeg(pm.angle);
  const double a = pm.mirrored ? phi - degrees : degrees + phi;
  return RadToDeg(NormalizeAngle(DegToRad(a)));
}

std::unique_ptr<Entity> ApproximateHatch(const Hatch& src, const Matrix3d& xf) {
  const auto pm = MapPlane(xf, src.normal);
  if (!pm) return nullptr;
  auto h = std::make_unique<Hatch>(src);
  const double z = src.elevation;
  const auto mapPoint = [&](Point2d p) { return pm->map(Point3d{p, z}).to2d(); };
  for (HatchPath& path : h->paths) {
    std::vector<Point2d> pts = FlattenPath(path);
    for (Point2d& p : pts) p = mapPoint(p);
    path.flags |= HatchPath::kPolyline;
    path.vertices = std::move(pts);
    path.bulges.clear();
    path.edges.clear();
    path.closed = true;
  }
  for (Point2d& p : h->seedPoints) p = mapPoint(p);
  const double s = MeanScale(*pm);
  h->patternAngle = MapPatternAngle(*pm, src.patternAngle);
  h->patternScale *= s;
  for (auto& line : h->patternLines) {
    line.angle = MapPatternAngle(*pm, line.angle);
    line.base = mapPoint(line.base);
    line.offset = Apply(*pm, line.offset);
    for (double& d : line.dashes) d *= s;
  }
  h->pixelSize *= s;
  h->elevation = pm->map(Point3d{0, 0, z}).z;
  h->normal = pm->normal;
  return h;
}

}  // namespace

bool TransformHatchExact(Hatch& h, const PlaneMap& pm) {
  const double z = h.elevation;
  const auto mapPoint = [&](Point2d p) { return pm.map(Point3d{p, z}).to2d(); };
  const double phi = RadToDeg(pm.angle);
  for (HatchPath& path : h.paths) {
    for (Point2d& p : path.vertices) p = mapPoint(p);
    if (pm.mirrored)
      for (double& b : path.bulges) b = -b;
    for (HatchEdge& edge : path.edges) {
      switch (edge.kind) {
        case HatchEdge::Kind::Line:
          edge.start = mapPoint(edge.start);
          edge.end = mapPoint(edge.end);
          break;
        case HatchEdge::Kind::Arc: {
          // Clockwise arcs store mirrored angles, so a rotation subtracts from them; a mirror
          // turns the direction of travel over.
          const double turn = edge.counterClockwise != pm.mirrored ? phi : -phi;
          edge.start = mapPoint(edge.start);
          edge.radius *= pm.scale;
          edge.startAngle += turn;
          edge.endAngle += turn;
          edge.counterClockwise = edge.counterClockwise != pm.mirrored;
          break;
        }
        case HatchEdge::Kind::Ellipse:
          // Angles count from the major axis, which turns with the ellipse.
          edge.start = mapPoint(edge.start);
          edge.majorAxis = Apply(pm, edge.majorAxis);
          edge.counterClockwise = edge.counterClockwise != pm.mirrored;
          break;
        case HatchEdge::Kind::Spline:
          for (Point2d& p : edge.controlPoints) p = mapPoint(p);
          for (Point2d& p : edge.fitPoints) p = mapPoint(p);
          edge.startTangent = Apply(pm, edge.startTangent);
          edge.endTangent = Apply(pm, edge.endTangent);
          break;
      }
    }
  }
  for (Point2d& p : h.seedPoints) p = mapPoint(p);
  h.patternAngle = MapPatternAngle(pm, h.patternAngle);
  h.patternScale *= pm.scale;
  for (auto& line : h.patternLines) {
    line.angle = MapPatternAngle(pm, line.angle);
    line.base = mapPoint(line.base);
    line.offset = Apply(pm, line.offset);
    for (double& d : line.dashes) d *= pm.scale;
  }
  h.pixelSize *= pm.scale;
  h.elevation = pm.map(Point3d{0, 0, z}).z;
  h.normal = pm.normal;
  return true;
}

std::unique_ptr<Entity> TransformApproximate(const Entity& e, const Matrix3d& xf) {
  switch (e.type()) {
    case ObjectType::Circle: return CircularToEllipse(static_cast<const Circle&>(e), xf, 0, 2 * kPi);
    case ObjectType::Arc: {
      const auto& a = static_cast<const Arc&>(e);
      return CircularToEllipse(a, xf, a.startAngle, a.endAngle);
    }
    case ObjectType::LwPolyline: return ApproximateLwPolyline(static_cast<const LwPolyline&>(e), xf);
    case ObjectType::Polyline: return ApproximatePolyline(static_cast<const Polyline&>(e), xf);
    case ObjectType::MText: return ApproximateMText(static_cast<const MText&>(e), xf);
    case ObjectType::Hatch: return ApproximateHatch(static_cast<const Hatch&>(e), xf);
    default: return nullptr;
  }
}

}  // namespace tv::cad::geom_internal
