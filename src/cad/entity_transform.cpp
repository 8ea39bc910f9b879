// Transforming entities in place, exactly where the class can carry the result.
#include <algorithm>
#include <cmath>
#include <type_traits>

#include "cad/entity_geometry_internal.h"
#include "cad/vendor_text.h"

namespace tv::cad {

namespace geom_internal {

namespace {

Vector3d Unit(Vector3d n) {
  const Vector3d u = n.normalized();
  return u.isZero(0) ? Vector3d::zAxis() : u;
}

Vector3d Column(const Matrix3d& m, int c) { return {m.m[0][c], m.m[1][c], m.m[2][c]}; }

Vector2d Apply(const PlaneMap& pm, Vector2d v) { return pm.a * v.x + pm.b * v.y; }

// An angle of the old OCS measured in the new one.
double MapAngle(const PlaneMap& pm, double angle) {
  const Vector2d d = Apply(pm, {std::cos(angle), std::sin(angle)});
  return NormalizeAngle(std::atan2(d.y, d.x));
}

bool Finite(Point3d p) { return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z); }

constexpr double kMaxOblique = 85.0 * kPi / 180.0;

// CIRCLE and ARC keep their class under rotation, uniform scale and mirroring.
template <class C>
bool TransformCircular(C& c, const Matrix3d& xf) {
  const auto pm = MapPlane(xf, c.normal);
  if (!pm || !pm->similar) return false;
  c.center = pm->map(c.center);
  c.radius *= pm->scale;
  c.thickness *= pm->zScale;
  c.normal = pm->normal;
  if constexpr (std::is_same_v<C, Arc>) {
    // A mirrored arc runs the other way round: its old end becomes its start.
    const double s = c.startAngle, t = c.endAngle;
    c.startAngle = NormalizeAngle(pm->mirrored ? pm->angle - t : s + pm->angle);
    c.endAngle = NormalizeAngle(pm->mirrored ? pm->angle - s : t + pm->angle);
  }
  return true;
}

// TEXT, ATTDEF and ATTRIB: the glyph frame (advance, up) is mapped and decomposed again into
// rotation, height, width factor, oblique angle and mirror flags; any non-singular map fits.
template <class T>
bool TransformText(T& t, const Matrix3d& xf) {
  const auto pm = MapPlane(xf, t.normal());
  if (!pm) return false;
  const double h = t.height > 0 ? t.height : 1.0, wf = t.widthFactor > 0 ? t.widthFactor : 1.0;
  const double mx = (t.generation() & Text::kMirrorX) ? -1 : 1, my = (t.generation() & Text::kMirrorY) ? -1 : 1;
  const double ob = std::isfinite(t.oblique()) ? t.oblique() : 0.0;
  const double c = std::cos(t.rotation), s = std::sin(t.rotation);
  const auto rotate = [](Vector2d v, double c, double s) { return Vector2d{c * v.x - s * v.y, s * v.x + c * v.y}; };
  const Vector2d au = Apply(*pm, rotate({mx, 0}, c, s)) * (h * wf);
  const Vector2d av = Apply(*pm, rotate({mx * std::tan(ob), my}, c, s)) * h;
  const double det = au.cross(av);
  if (!(std::abs(det) > 0) || !std::isfinite(det)) return false;
  // Keep the upside-down flag; the backward flag absorbs a change of orientation.
  const double my2 = my, mx2 = (det > 0 ? 1 : -1) * my2;
  const double rot2 = std::atan2(mx2 * au.y, mx2 * au.x);
  const Vector2d up = rotate(av, std::cos(rot2), -std::sin(rot2));
  const double h2 = my2 * up.y;
  if (!(h2 > 0)) return false;
  const double ob2 = std::atan(mx2 * up.x / h2);
  if (std::abs(ob2) > kMaxOblique) return false;
  const Point3d position = pm->map(t.position), alignPoint = pm->map(t.alignPoint());
  if (!Finite(position) || !Finite(alignPoint)) return false;
  t.height = t.height > 0 ? h2 : t.height;
  t.widthFactor = au.length() / h2;
  t.rotation = NormalizeAngle(rot2);
  t.setOblique(std::abs(ob2) < 1e-14 ? 0.0 : NormalizeAngle(ob2));
  t.setGeneration(static_cast<std::int16_t>((t.generation() & ~(Text::kMirrorX | Text::kMirrorY)) |
                                            (mx2 < 0 ? Text::kMirrorX : 0) | (my2 < 0 ? Text::kMirrorY : 0)));
  t.position = position;
  if (t.hasAlignPoint()) t.setAlignPoint(alignPoint);
  t.setNormal(pm->normal);
  t.setThickness(t.thickness() * pm->zScale);
  return true;
}

bool TransformInsert(Insert& ins, const Matrix3d& xf) {
  const auto pm = MapPlane(xf, ins.normal);
  if (!pm || !pm->axesKept || ins.scale.x == 0 || ins.scale.y == 0) return false;
  const double c = std::cos(ins.rotation), s = std::sin(ins.rotation);
  const Vector2d a = Apply(*pm, Vector2d{c, s} * ins.scale.x), b = Apply(*pm, Vector2d{-s, c} * ins.scale.y);
  const double la = a.length(), lb = b.length(), det = a.cross(b);
  // Insert scales act along the insert's own axes: their images must stay perpendicular.
  if (!(la > 0) || !(lb > 0) || std::abs(a.dot(b)) > 1e-9 * la * lb) return false;
  const double sy = (ins.scale.y < 0 ? -1 : 1) * lb;
  const double sx = (det < 0 ? -1 : 1) * (sy < 0 ? -1 : 1) * la;
  // Attributes are tried first on copies, so a refusal leaves everything untouched; the originals
  // are then moved themselves because the drawing's index points at them.
  for (const auto& at : ins.attribs) {
    Attrib trial(*at);
    if (!TransformText(trial, xf)) return false;
  }
  const Point3d position = pm->map(ins.position);
  if (!Finite(position)) return false;
  ins.columnSpacing *= sx / ins.scale.x;
  ins.rowSpacing *= sy / ins.scale.y;
  ins.rotation = NormalizeAngle(std::atan2(a.y / sx, a.x / sx));
  ins.scale = {sx, sy, ins.scale.z * pm->zScale};
  ins.position = position;
  ins.normal = pm->normal;
  for (const auto& at : ins.attribs) TransformText(*at, xf);
  return true;
}

// LWPOLYLINE and 2D POLYLINE share this: the outline maps exactly unless it has arcs or widths
// under a map that is not a similarity.
bool PlanarOutlineFits(const PlaneMap& pm, bool hasBulges, bool hasWidths) { return pm.similar || (!hasBulges && !hasWidths); }

bool TransformLwPolyline(LwPolyline& p, const Matrix3d& xf) {
  const auto pm = MapPlane(xf, p.normal());
  if (!pm) return false;
  const bool bulged = std::any_of(p.bulges.begin(), p.bulges.end(), [](double b) { return b != 0; });
  const auto& widths = p.widths();
  const bool wide = p.constantWidth() != 0 || std::any_of(widths.begin(), widths.end(), [](Vector2d w) { return w.x != 0 || w.y != 0; });
  if (!PlanarOutlineFits(*pm, bulged, wide)) return false;
  double elevation = pm->map(Point3d{0, 0, p.elevation()}).z;
  for (Point2d& q : p.points) {
    const Point3d m = pm->map(Point3d{q, p.elevation()});
    q = m.to2d();
    elevation = m.z;
  }
  if (pm->mirrored)
    for (double& b : p.bulges) b = -b;
  p.setConstantWidth(p.constantWidth() * pm->scale);
  if (!widths.empty())
    for (Vector2d& w : p.editDetails().widths) w = w * pm->scale;
  p.setElevation(elevation);
  p.setThickness(p.thickness() * pm->zScale);
  p.setNormal(pm->normal);
  return true;
}

bool TransformPolyline(Polyline& p, const Matrix3d& xf) {
  if (p.is3d() || p.isMeshOrPolyface()) {
    for (auto& v : p.vertices) v.position = xf.transform(v.position);
    return true;
  }
  const auto pm = MapPlane(xf, p.normal);
  if (!pm) return false;
  const bool bulged = std::any_of(p.vertices.begin(), p.vertices.end(), [](const PolylineVertex& v) { return v.bulge != 0; });
  const bool wide = p.defaultStartWidth != 0 || p.defaultEndWidth != 0 ||
                    std::any_of(p.vertices.begin(), p.vertices.end(), [](const PolylineVertex& v) { return v.startWidth != 0 || v.endWidth != 0; });
  if (!PlanarOutlineFits(*pm, bulged, wide)) return false;
  double elevation = pm->map(Point3d{0, 0, p.elevation}).z;
  for (auto& v : p.vertices) {
    const Point3d m = pm->map(Point3d{v.position.x, v.position.y, p.elevation});
    v.position = {m.x, m.y, 0};
    elevation = m.z;
    if (pm->mirrored) v.bulge = -v.bulge;
    v.startWidth *= pm->scale;
    v.endWidth *= pm->scale;
    if (v.flags & 2) v.tangent = MapAngle(*pm, v.tangent);  // curve-fit tangent defined
  }
  p.defaultStartWidth *= pm->scale;
  p.defaultEndWidth *= pm->scale;
  p.elevation = elevation;
  p.thickness *= pm->zScale;
  p.normal = pm->normal;
  return true;
}

template <class Q>
bool TransformPlanarQuad(Q& q, const Matrix3d& xf) {
  const auto pm = MapPlane(xf, q.normal);
  if (!pm) return false;
  for (Point3d& c : q.corners) c = pm->map(c);
  q.normal = pm->normal;
  q.thickness *= pm->zScale;
  return true;
}

bool TransformMText(MText& t, const Matrix3d& xf) {
  const auto pm = MapPlane(xf, t.normal);
  if (!pm || !pm->similar) return false;
  const Vector3d x = xf.transform(MTextDirection(t));
  if (x.isZero(0)) return false;
  // No mirror flag on MTEXT: a mirrored one is turned over, its normal reversed.
  const Vector3d n = pm->mirrored ? -pm->normal : pm->normal;
  t.position = xf.transform(t.position);
  t.xDirection = x.normalized();
  const Vector3d ocsX = Matrix3d::worldToPlane(n).transform(t.xDirection);
  t.rotation = NormalizeAngle(std::atan2(ocsX.y, ocsX.x));
  t.normal = n;
  t.height *= pm->scale;
  t.referenceWidth *= pm->scale;
  t.definedHeight *= pm->scale;
  return true;
}

template <class R>
void TransformRaster(R& r, const Matrix3d& xf) {
  r.position = xf.transform(r.position);
  r.uPixel = xf.transform(r.uPixel);
  r.vPixel = xf.transform(r.vPixel);
}

bool TransformViewport(Viewport& v, const Matrix3d& xf) {
  // A viewport stays an axis-parallel rectangle: only moves, uniform scales and mirrors fit.
  const Vector3d x = Column(xf, 0), y = Column(xf, 1);
  const double s = std::abs(x.x);
  if (!(s > 0) || std::abs(x.y) > 1e-12 * s || std::abs(y.x) > 1e-12 * s || std::abs(std::abs(y.y) - s) > 1e-9 * s) return false;
  v.center = xf.transform(v.center);
  v.width *= s;
  v.height *= s;
  return true;
}

}  // namespace

std::optional<PlaneMap> MapPlane(const Matrix3d& xf, Vector3d normal) {
  const Vector3d n = Unit(normal);
  const Matrix3d toWorld = Matrix3d::planeToWorld(n);
  const Vector3d a3 = xf.transform(Column(toWorld, 0)), b3 = xf.transform(Column(toWorld, 1));
  const Vector3d cross = a3.cross(b3);
  const double len = cross.length();
  if (!(len > 1e-12 * a3.length() * b3.length()) || !std::isfinite(len)) return std::nullopt;
  PlaneMap pm;
  pm.normal = cross / len;
  if (pm.normal.dot(n) < 0) {
    pm.normal = -pm.normal;
    pm.mirrored = true;
  }
  const Matrix3d toNew = Matrix3d::worldToPlane(pm.normal);
  pm.oldOcsToNew = toNew * xf * toWorld;
  const Vector3d a = toNew.transform(a3), b = toNew.transform(b3);
  pm.a = {a.x, a.y};
  pm.b = {b.x, b.y};
  const Vector3d image = toNew.transform(xf.transform(n));
  pm.zScale = image.z;
  pm.axesKept = std::hypot(image.x, image.y) <= 1e-9 * image.length();
  const double la = pm.a.length(), lb = pm.b.length();
  pm.similar = std::abs(la - lb) <= 1e-9 * std::max(la, lb) && std::abs(pm.a.dot(pm.b)) <= 1e-9 * la * lb;
  pm.scale = la;
  pm.angle = std::atan2(pm.a.y, pm.a.x);
  return pm;
}

bool IsInvertible(const Matrix3d& xf) {
  const double det = xf.determinant();
  const double size = Column(xf, 0).length() * Column(xf, 1).length() * Column(xf, 2).length();
  return std::isfinite(det) && std::isfinite(size) && std::abs(det) > 1e-12 * size;
}

std::unique_ptr<Ellipse> EllipseFromConjugates(const Entity& props, Point3d c, Vector3d u, Vector3d v, Vector3d normalHint,
                                               double t0, double t1) {
  const double span = SweepEnd(t0, t1) - t0;
  const bool full = span >= 2 * kPi - 1e-12;
  // The principal axes sit where |u cos s + v sin s| is largest: tan 2s = 2 u.v / (u.u - v.v).
  double s0 = 0.5 * std::atan2(2 * u.dot(v), u.dot(u) - v.dot(v));
  Vector3d major = u * std::cos(s0) + v * std::sin(s0);
  Vector3d minor = v * std::cos(s0) - u * std::sin(s0);
  if (minor.length() > major.length()) {
    s0 += kPi / 2;
    const Vector3d m = major;
    major = minor;
    minor = -m;
  }
  const double lmaj = major.length(), lmin = minor.length();
  if (!(lmaj > 0) || !(lmin > 1e-12 * lmaj) || !std::isfinite(lmaj)) return nullptr;
  Vector3d n = major.cross(minor).normalized();
  if (n.dot(normalHint) < 0) n = -n;
  // Along the entity's own minor axis (n x major) the parameter runs forward or backward.
  const bool forward = minor.dot(n.cross(major)) > 0;
  auto e = std::make_unique<Ellipse>();
  CopyCommonProperties(props, *e);
  e->center = c;
  e->majorAxis = major;
  e->normal = n;
  e->ratio = std::min(1.0, lmin / lmaj);
  if (full) {
    e->startParam = 0;
    e->endParam = 2 * kPi;
  } else {
    e->startParam = NormalizeAngle(forward ? t0 - s0 : s0 - (t0 + span));
    e->endParam = e->startParam + span;
  }
  return e;
}

bool TransformExact(Entity& e, const Matrix3d& xf) {
  if (!IsInvertible(xf)) return false;
  switch (e.type()) {
    case ObjectType::Line: {
      auto& l = static_cast<Line&>(e);
      l.start = xf.transform(l.start);
      l.end = xf.transform(l.end);
      return true;
    }
    case ObjectType::LwPolyline: return TransformLwPolyline(static_cast<LwPolyline&>(e), xf);
    case ObjectType::Polyline: return TransformPolyline(static_cast<Polyline&>(e), xf);
    case ObjectType::Circle: return TransformCircular(static_cast<Circle&>(e), xf);
    case ObjectType::Arc: return TransformCircular(static_cast<Arc&>(e), xf);
    case ObjectType::Ellipse: {
      auto& el = static_cast<Ellipse&>(e);
      const auto pm = MapPlane(xf, el.normal);
      if (!pm) return false;
      const Vector3d minor = Unit(el.normal).cross(el.majorAxis) * el.ratio;
      auto mapped = EllipseFromConjugates(el, xf.transform(el.center), xf.transform(el.majorAxis), xf.transform(minor), pm->normal,
                                          el.startParam, el.endParam);
      if (!mapped) return false;
      el.center = mapped->center;
      el.majorAxis = mapped->majorAxis;
      el.normal = mapped->normal;
      el.ratio = mapped->ratio;
      el.startParam = mapped->startParam;
      el.endParam = mapped->endParam;
      return true;
    }
    case ObjectType::Spline: {
      auto& s = static_cast<Spline&>(e);
      const auto pm = MapPlane(xf, s.normal);
      for (Point3d& p : s.controlPoints) p = xf.transform(p);
      for (Point3d& p : s.fitPoints) p = xf.transform(p);
      s.startTangent = xf.transform(s.startTangent);
      s.endTangent = xf.transform(s.endTangent);
      if (pm) s.normal = pm->normal;
      return true;
    }
    case ObjectType::Point: {
      auto& p = static_cast<PointEntity&>(e);
      p.position = xf.transform(p.position);
      if (const auto pm = MapPlane(xf, p.normal)) {
        p.normal = pm->normal;
        p.thickness *= pm->zScale;
      }
      return true;
    }
    case ObjectType::Solid: return TransformPlanarQuad(static_cast<Solid&>(e), xf);
    case ObjectType::Trace: return TransformPlanarQuad(static_cast<Trace&>(e), xf);
    case ObjectType::Face3d:
      for (Point3d& c : static_cast<Face3d&>(e).corners) c = xf.transform(c);
      return true;
    case ObjectType::Text: return TransformText(static_cast<Text&>(e), xf);
    case ObjectType::AttDef: return TransformText(static_cast<AttDef&>(e), xf);
    case ObjectType::Attrib: return TransformText(static_cast<Attrib&>(e), xf);
    case ObjectType::MText: return TransformMText(static_cast<MText&>(e), xf);
    case ObjectType::Insert: return TransformInsert(static_cast<Insert&>(e), xf);
    case ObjectType::Hatch: {
      auto& h = static_cast<Hatch&>(e);
      const auto pm = MapPlane(xf, h.normal);
      return pm && pm->similar && TransformHatchExact(h, *pm);
    }
    case ObjectType::Leader: {
      auto& l = static_cast<Leader&>(e);
      for (Point3d& p : l.vertices) p = xf.transform(p);
      if (const auto pm = MapPlane(xf, l.normal)) l.normal = pm->normal;
      return true;
    }
    case ObjectType::Viewport: return TransformViewport(static_cast<Viewport&>(e), xf);
    case ObjectType::Image: TransformRaster(static_cast<Image&>(e), xf); return true;
    case ObjectType::Proxy: return TransformVendorText(static_cast<ProxyEntity&>(e), xf);
    case ObjectType::Wipeout: TransformRaster(static_cast<Wipeout&>(e), xf); return true;
    case ObjectType::Custom: {
      auto& custom = static_cast<CustomEntity&>(e);
      return custom.content && custom.content->transformBy(xf);
    }
    default:
      // DIMENSION shows its block, which a transform of the entity alone would leave behind.
      return false;
  }
}

void MakeTransient(Entity& e) {
  e.id = ObjectId{};
  e.owner = ObjectId{};
  if (e.extrasIfAny()) {
    e.extras().extensionDictionary = ObjectId{};
    e.extras().reactors.clear();
  }
  if (auto* ins = As<Insert>(&e)) {
    ins->seqendId = ObjectId{};
    for (auto& a : ins->attribs) MakeTransient(*a);
  }
  if (auto* p = As<Polyline>(&e)) {
    p->seqendId = ObjectId{};
    for (auto& v : p->vertices) v.id = ObjectId{};
  }
}

}  // namespace geom_internal

using namespace geom_internal;

bool TransformBy(Entity& entity, const Matrix3d& xf) { return TransformExact(entity, xf); }

std::unique_ptr<Entity> TransformedCopy(const Entity& entity, const Matrix3d& xf) {
  if (!IsInvertible(xf)) return nullptr;
  auto copy = entity.clone();
  MakeTransient(*copy);
  if (TransformExact(*copy, xf)) return copy;
  auto approx = TransformApproximate(entity, xf);
  if (approx) MakeTransient(*approx);
  return approx;
}

}  // namespace tv::cad
