// Extents of entities in WCS, inserts and blocks included.
#include <algorithm>
#include <cmath>
#include <unordered_set>

#include "cad/entity_geometry_internal.h"
#include "cad/vendor_text.h"
#include "cad/walk_limits.h"

namespace tv::cad {

using namespace geom_internal;

Matrix3d InsertTransform(const Insert& insert, const BlockRecord& block, int column, int row) {
  const Vector3d cell{column * insert.columnSpacing, row * insert.rowSpacing, 0};
  return Matrix3d::planeToWorld(insert.normal) * Matrix3d::translation(insert.position.asVector()) *
         Matrix3d::rotation(insert.rotation) * Matrix3d::translation(cell) *
         Matrix3d::scaling(insert.scale.x, insert.scale.y, insert.scale.z) * Matrix3d::translation(-block.basePoint.asVector());
}

// The visible part of a clipped insert's content.
std::vector<Point3d> InsertClipBoundary(const Insert& insert, const Database& db) {
  const SpatialFilter* filter = db.spatialFilterOf(insert);
  if (!filter || filter->inverted || filter->boundary.size() < 2) return {};
  std::vector<Point2d> outline = filter->boundary;
  if (outline.size() == 2) {
    const Point2d a = outline[0], b = outline[1];
    outline = {a, {b.x, a.y}, b, {a.x, b.y}};
  }
  // The boundary lies in the plane (origin, normal) of the space the insert was clipped in; the
  // inverse insert transform of that moment takes it into block coordinates. A broken (singular)
  // matrix is taken as none rather than clipping everything away. The clip transform (40 after
  // the inverse) is the identity in practice and is not applied.
  const Matrix3d& inverse = filter->inverseInsertTransform;
  const Matrix3d toBlock = (inverse.inverse() ? inverse : Matrix3d{}) * Matrix3d::translation(filter->origin.asVector()) *
                           Matrix3d::planeToWorld(filter->normal);
  std::vector<Point3d> points;
  for (const Point2d& p : outline) {
    const Point3d q = toBlock.transform(Point3d{p});
    if (!std::isfinite(q.x) || !std::isfinite(q.y) || !std::isfinite(q.z)) return {};
    points.push_back(q);
  }
  return points;
}

namespace {

constexpr int kMaxDepth = 32;
// Entities visited by the exact walks of one cache (of one measurement without a cache of the
// caller's); past it, inserts turned off the axes count by their blocks' boxes, larger but found
// at once. Boxes for indexing and zooming stay boxes around everything.
constexpr std::size_t kMaxWork = 500'000;

Vector3d Unit(Vector3d n) {
  const Vector3d u = n.normalized();
  return u.isZero(0) ? Vector3d::zAxis() : u;
}

// True when each axis maps onto one axis, so the box of a transformed box is exact.
bool KeepsAxes(const Matrix3d& m) {
  for (int c = 0; c < 3; ++c) {
    int big = 0;
    const double len = std::abs(m.m[0][c]) + std::abs(m.m[1][c]) + std::abs(m.m[2][c]);
    for (int r = 0; r < 3; ++r)
      if (std::abs(m.m[r][c]) > 1e-12 * len) ++big;
    if (big != 1) return false;
  }
  return true;
}

}  // namespace

// Measures entities; blocks come from (and go into) the cache it works for.
class ExtentsBuilder {
 public:
  ExtentsBuilder(const Database& db, ExtentsCache& cache) : db_(db), m_(cache.measurer()), cache_(cache) {}

  void entity(const Entity& e, const Matrix3d& xf, Extents3d& out);

  void blockContents(const BlockRecord& block, const Matrix3d& xf, Extents3d& out) {
    if (static_cast<int>(stack_.size()) >= kMaxDepth || std::find(stack_.begin(), stack_.end(), &block) != stack_.end()) {
      NoteContentLeftOut();
      return;
    }
    stack_.push_back(&block);
    for (const auto& e : block.entities) {
      ++cache_.work_;
      if (e->isErased() || !e->isVisible()) continue;
      if (const auto* def = As<AttDef>(e.get()); def && (!(def->attFlags & kAttConstant) || (def->attFlags & kAttInvisible))) continue;
      entity(*e, xf, out);
    }
    stack_.pop_back();
  }

 private:
  // The plane of a planar entity: its OCS to world, then the caller's transform.
  static Matrix3d Plane(const Matrix3d& xf, Vector3d normal) { return xf * Matrix3d::planeToWorld(normal); }

  static void Arc2d(Extents3d& ext, const Matrix3d& f, Point2d center, double radius, double a0, double a1, double z) {
    AddEllipseArc(ext, f.transform(Point3d{center, z}), f.transform(Vector3d{radius, 0, 0}), f.transform(Vector3d{0, radius, 0}), a0, a1);
  }

  // A 2D outline with bulges in the plane `f` at height z.
  static void Bulged(Extents3d& ext, const Matrix3d& f, const std::vector<Point2d>& pts, const std::vector<double>& bulges,
                     bool closed, double z) {
    for (std::size_t i = 0; i < pts.size(); ++i) {
      ext.add(f.transform(Point3d{pts[i], z}));
      const bool last = i + 1 == pts.size();
      if (last && !closed) break;
      const double bulge = i < bulges.size() ? bulges[i] : 0.0;
      if (auto arc = ArcFromBulge(pts[i], pts[last ? 0 : i + 1], bulge)) Arc2d(ext, f, arc->center, arc->radius, arc->startAngle, arc->endAngle, z);
    }
  }

  // Half a polyline width around every point of the outline, in the plane `f`.
  static void Widen(Extents3d& ext, const Matrix3d& f, double halfWidth) {
    if (!(halfWidth > 0) || ext.isEmpty()) return;
    for (int r = 0; r < 3; ++r) {
      const double d = halfWidth * std::hypot(f.m[r][0], f.m[r][1]);
      (&ext.min.x)[r] -= d;
      (&ext.max.x)[r] += d;
    }
  }

  static void Extrude(Extents3d& ext, const Matrix3d& xf, Vector3d normal, double thickness) {
    if (thickness == 0 || !std::isfinite(thickness) || ext.isEmpty()) return;
    const Vector3d t = xf.transform(Unit(normal) * thickness);
    ext.add(Extents3d(ext.min + t, ext.max + t));
  }

  void insert(const Insert& ins, const Matrix3d& xf, Extents3d& out);
  void hatch(const Hatch& h, const Matrix3d& xf, Extents3d& out);
  void polyline(const Polyline& p, const Matrix3d& xf, Extents3d& out);
  template <class Q>
  static void quad(const Q& q, const Matrix3d& xf, Extents3d& out) {
    const Matrix3d f = Plane(xf, q.normal);
    for (const Point3d& c : q.corners) out.add(f.transform(c));
    Extrude(out, xf, q.normal, q.thickness);
  }
  template <class R>
  static void raster(const R& r, const Matrix3d& xf, Extents3d& out) {
    const Vector3d u = r.uPixel * r.imageSize.x, v = r.vPixel * r.imageSize.y;
    for (Point3d p : {r.position, r.position + u, r.position + v, r.position + u + v}) out.add(xf.transform(p));
  }
  template <class T>
  void text(const T& t, const Matrix3d& xf, Extents3d& out) {
    if (auto box = TextBoxOcs(TextParamsOf(t), db_, m_)) {
      const Matrix3d f = Plane(xf, t.normal());
      for (const Point3d& p : *box) out.add(f.transform(p));
      Extrude(out, xf, t.normal(), t.thickness());
    }
  }

  const Database& db_;
  const TextMeasurer& m_;
  ExtentsCache& cache_;
  std::vector<const BlockRecord*> stack_;
};

namespace {

std::optional<Extents3d> Result(const Extents3d& e) { return e.isEmpty() ? std::nullopt : std::optional<Extents3d>(e); }

}  // namespace

void ExtentsBuilder::entity(const Entity& e, const Matrix3d& xf, Extents3d& out) {
  Extents3d ext;
  switch (e.type()) {
    case ObjectType::Line: {
      const auto& l = static_cast<const Line&>(e);
      ext.add(xf.transform(l.start));
      ext.add(xf.transform(l.end));
      break;
    }
    case ObjectType::LwPolyline: {
      const auto& p = static_cast<const LwPolyline&>(e);
      const Matrix3d f = Plane(xf, p.normal());
      Bulged(ext, f, p.points, p.bulges, p.isClosed(), p.elevation());
      double width = p.constantWidth();
      for (const Vector2d& w : p.widths()) width = std::max({width, w.x, w.y});
      Widen(ext, f, width / 2);
      Extrude(ext, xf, p.normal(), p.thickness());
      break;
    }
    case ObjectType::Polyline: polyline(static_cast<const Polyline&>(e), xf, ext); break;
    case ObjectType::Circle: {
      const auto& c = static_cast<const Circle&>(e);
      Arc2d(ext, Plane(xf, c.normal), c.center.to2d(), c.radius, 0, 2 * kPi, c.center.z);
      Extrude(ext, xf, c.normal, c.thickness);
      break;
    }
    case ObjectType::Arc: {
      const auto& a = static_cast<const Arc&>(e);
      Arc2d(ext, Plane(xf, a.normal), a.center.to2d(), a.radius, a.startAngle, a.endAngle, a.center.z);
      Extrude(ext, xf, a.normal, a.thickness);
      break;
    }
    case ObjectType::Ellipse: {
      const auto& el = static_cast<const Ellipse&>(e);
      const Vector3d minor = Unit(el.normal).cross(el.majorAxis) * el.ratio;
      AddEllipseArc(ext, xf.transform(el.center), xf.transform(el.majorAxis), xf.transform(minor), el.startParam, el.endParam);
      break;
    }
    case ObjectType::Spline:
      for (const Point3d& p : SplineToPolyline(static_cast<const Spline&>(e), 0)) ext.add(xf.transform(p));
      break;
    case ObjectType::Point: {
      const auto& p = static_cast<const PointEntity&>(e);
      ext.add(xf.transform(p.position));
      Extrude(ext, xf, p.normal, p.thickness);
      break;
    }
    case ObjectType::Solid: quad(static_cast<const Solid&>(e), xf, ext); break;
    case ObjectType::Trace: quad(static_cast<const Trace&>(e), xf, ext); break;
    case ObjectType::Face3d:
      for (const Point3d& c : static_cast<const Face3d&>(e).corners) ext.add(xf.transform(c));
      break;
    case ObjectType::Text: text(static_cast<const Text&>(e), xf, ext); break;
    case ObjectType::AttDef: text(static_cast<const AttDef&>(e), xf, ext); break;
    case ObjectType::Attrib: text(static_cast<const Attrib&>(e), xf, ext); break;
    case ObjectType::MText: {
      const MTextLayout layout = LayoutMText(static_cast<const MText&>(e), db_, m_);
      if (layout.lines.empty() || (layout.lines.size() == 1 && layout.lines[0].text.empty())) break;
      const Matrix3d f = xf * layout.frameToWorld;
      for (Point2d p : {Point2d{layout.left, layout.bottom}, Point2d{layout.right, layout.bottom}, Point2d{layout.right, layout.top},
                        Point2d{layout.left, layout.top}})
        ext.add(f.transform(Point3d{p}));
      break;
    }
    case ObjectType::Insert: insert(static_cast<const Insert&>(e), xf, ext); break;
    case ObjectType::Hatch: hatch(static_cast<const Hatch&>(e), xf, ext); break;
    case ObjectType::Dimension: {
      const auto& d = static_cast<const Dimension&>(e);
      if (const auto* block = db_.objectAs<BlockRecord>(d.block)) {
        // The geometry block of a dimension holds world coordinates of the dimension's space.
        blockContents(*block, xf, ext);
      } else {
        ext.add(xf.transform(d.definitionPoint));
        ext.add(Plane(xf, d.normal).transform(d.textMidPoint));
      }
      break;
    }
    case ObjectType::Leader:
      for (const Point3d& p : static_cast<const Leader&>(e).vertices) ext.add(xf.transform(p));
      break;
    case ObjectType::Viewport: {
      const auto& v = static_cast<const Viewport&>(e);
      const Vector3d half{v.width / 2, v.height / 2, 0};
      ext.add(xf.transform(v.center - half));
      ext.add(xf.transform(v.center + half));
      ext.add(xf.transform(v.center + Vector3d{half.x, -half.y, 0}));
      ext.add(xf.transform(v.center + Vector3d{-half.x, half.y, 0}));
      break;
    }
    case ObjectType::Image: raster(static_cast<const Image&>(e), xf, ext); break;
    case ObjectType::Wipeout: raster(static_cast<const Wipeout&>(e), xf, ext); break;
    case ObjectType::Custom:
      // An application's own entity is as large as what it draws.
      if (const auto& content = static_cast<const CustomEntity&>(e).content)
        for (const CustomPrimitive& p : content->primitives())
          for (const Point3d& q : p.points) ext.add(xf.transform(q));
      break;
    case ObjectType::Proxy:
      // Of other vendors' entities only their texts have a size that can be told.
      if (const auto standIn = VendorTextStandIn(static_cast<const ProxyEntity&>(e), db_)) entity(*standIn, xf, ext);
      break;
    default: break;  // anything unknown shows nothing measurable
  }
  // Degenerate input (NaN coordinates) must not spread into the caller's extents.
  if (!ext.isEmpty() && std::isfinite(ext.min.x + ext.min.y + ext.min.z + ext.max.x + ext.max.y + ext.max.z)) out.add(ext);
}

void ExtentsBuilder::polyline(const Polyline& p, const Matrix3d& xf, Extents3d& out) {
  // Spline-frame control points are not part of the drawn curve when fitted vertices exist.
  const bool hasCurveVertices = std::any_of(p.vertices.begin(), p.vertices.end(),
                                            [](const PolylineVertex& v) { return !(v.flags & Polyline::kVertexSplineFrame); });
  const auto drawn = [&](const PolylineVertex& v) {
    if (hasCurveVertices && (v.flags & Polyline::kVertexSplineFrame)) return false;
    // Polyface face records carry indices, not positions.
    if ((p.polyFlags & Polyline::kPolyface) && (v.flags & 128) && !(v.flags & 64)) return false;
    return true;
  };
  if (p.is3d() || p.isMeshOrPolyface()) {
    for (const auto& v : p.vertices)
      if (drawn(v)) out.add(xf.transform(v.position));
    return;
  }
  std::vector<Point2d> pts;
  std::vector<double> bulges;
  double width = std::max(p.defaultStartWidth, p.defaultEndWidth);
  for (const auto& v : p.vertices) {
    if (!drawn(v)) continue;
    pts.push_back(v.position.to2d());
    bulges.push_back(v.bulge);
    width = std::max({width, v.startWidth, v.endWidth});
  }
  const Matrix3d f = Plane(xf, p.normal);
  Extents3d ext;
  Bulged(ext, f, pts, bulges, p.isClosed(), p.elevation);
  Widen(ext, f, width / 2);
  Extrude(ext, xf, p.normal, p.thickness);
  out.add(ext);
}

void ExtentsBuilder::hatch(const Hatch& h, const Matrix3d& xf, Extents3d& out) {
  const Matrix3d f = Plane(xf, h.normal);
  const double z = h.elevation;
  for (const HatchPath& path : h.paths) {
    if (path.isPolyline()) {
      Bulged(out, f, path.vertices, path.bulges, path.closed, z);
      continue;
    }
    for (const HatchEdge& edge : path.edges) {
      switch (edge.kind) {
        case HatchEdge::Kind::Line:
          out.add(f.transform(Point3d{edge.start, z}));
          out.add(f.transform(Point3d{edge.end, z}));
          break;
        case HatchEdge::Kind::Arc: {
          // Clockwise edges store their angles mirrored: the counter-clockwise span is (-end, -start).
          const double a0 = edge.counterClockwise ? edge.startAngle : 360 - edge.endAngle;
          const double a1 = edge.counterClockwise ? edge.endAngle : 360 - edge.startAngle;
          Arc2d(out, f, edge.start, edge.radius, DegToRad(a0), DegToRad(a1), z);
          break;
        }
        case HatchEdge::Kind::Ellipse: {
          const double ratio = edge.radius;
          const Vector2d major = edge.majorAxis, minor{-major.y * ratio, major.x * ratio};
          const double a0 = DegToRad(edge.counterClockwise ? edge.startAngle : 360 - edge.endAngle);
          const double a1 = DegToRad(edge.counterClockwise ? edge.endAngle : 360 - edge.startAngle);
          // The stored angles are true angles; the curve parameter of an angle depends on the ratio.
          const auto param = [&](double a) { return ratio > 0 ? std::atan2(std::sin(a) / ratio, std::cos(a)) : a; };
          const bool full = std::abs(a1 - a0) >= 2 * kPi - 1e-9;
          AddEllipseArc(out, f.transform(Point3d{edge.start, z}), f.transform(Vector3d{major.x, major.y, 0}),
                        f.transform(Vector3d{minor.x, minor.y, 0}), full ? 0 : param(a0), full ? 2 * kPi : param(a1));
          break;
        }
        case HatchEdge::Kind::Spline:
          for (const Point3d& p : SplineToPolyline(SplineOfHatchEdge(edge, z), 0)) out.add(f.transform(p));
          break;
      }
    }
  }
}

void ExtentsBuilder::insert(const Insert& ins, const Matrix3d& xf, Extents3d& out) {
  const auto* block = db_.objectAs<BlockRecord>(ins.block);
  if (block && (static_cast<int>(stack_.size()) >= kMaxDepth || std::find(stack_.begin(), stack_.end(), block) != stack_.end())) {
    NoteContentLeftOut();
  } else if (block) {
    const std::vector<Point3d> clip = InsertClipBoundary(ins, db_);
    // Cells are translated copies, so the outer cells bound them all.
    const int columns = std::max<int>(ins.columnCount, 1), rows = std::max<int>(ins.rowCount, 1);
    std::vector<std::pair<int, int>> cells{{0, 0}};
    if (columns > 1) cells.emplace_back(columns - 1, 0);
    if (rows > 1) cells.emplace_back(0, rows - 1);
    if (columns > 1 && rows > 1) cells.emplace_back(columns - 1, rows - 1);
    for (const auto& [column, row] : cells) {
      const Matrix3d m = xf * InsertTransform(ins, *block, column, row);
      Extents3d content;
      // A transform that keeps the axes takes the block's own box exactly. Others walk the content,
      // as long as the measurement's work allows; then the box stands in, larger but bounded.
      if (KeepsAxes(m) || cache_.work_ > kMaxWork) {
        if (auto b = cache_.blockExtents(*block, db_)) content = b->transformed(m);
      } else {
        blockContents(*block, m, content);
      }
      if (!clip.empty() && !content.isEmpty()) {
        Extents3d window;
        for (const Point3d& p : clip) window.add(m.transform(p));
        content.min.x = std::max(content.min.x, window.min.x);
        content.min.y = std::max(content.min.y, window.min.y);
        content.max.x = std::min(content.max.x, window.max.x);
        content.max.y = std::min(content.max.y, window.max.y);
        if (content.isEmpty()) continue;
      }
      out.add(content);
    }
  }
  for (const auto& a : ins.attribs)
    if (!a->isErased() && a->isVisible() && !a->isInvisible()) entity(*a, xf, out);
}

std::optional<Extents3d> EntityExtents(const Entity& entity, const Database& db, const TextMeasurer* measurer) {
  ExtentsCache cache(measurer);
  return cache.entityExtents(entity, db);
}

std::optional<Extents3d> BlockExtents(const BlockRecord& block, const Database& db, const TextMeasurer* measurer) {
  ExtentsCache cache(measurer);
  return cache.blockExtents(block, db);
}

ExtentsCache::ExtentsCache(const TextMeasurer* measurer) : measurer_(measurer ? measurer : &ApproximateTextMeasurer()) {}

std::optional<Extents3d> ExtentsCache::blockExtents(const BlockRecord& block, const Database& db) {
  if (auto it = blocks_.find(&block); it != blocks_.end()) {
    // A block that (indirectly) inserts itself finds its own entry still being worked out.
    if (std::find(measuring_.begin(), measuring_.end(), &block) != measuring_.end()) NoteContentLeftOut();
    return it->second;
  }
  if (measuring_.size() >= static_cast<std::size_t>(kMaxDepth)) {
    NoteContentLeftOut();
    return std::nullopt;
  }
  blocks_.emplace(&block, std::nullopt);
  measuring_.push_back(&block);
  ExtentsBuilder builder(db, *this);
  Extents3d ext;
  builder.blockContents(block, Matrix3d{}, ext);
  measuring_.pop_back();
  return blocks_[&block] = Result(ext);
}

std::optional<Extents3d> ExtentsCache::entityExtents(const Entity& entity, const Database& db) {
  ExtentsBuilder builder(db, *this);
  Extents3d ext;
  builder.entity(entity, Matrix3d{}, ext);
  return Result(ext);
}

}  // namespace tv::cad
