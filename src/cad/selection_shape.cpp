// Selection outlines of entities: flattened paths and filled areas, blocks kept once per call.
#include <algorithm>
#include <cmath>
#include <limits>

#include "cad/entity_geometry_internal.h"
#include "cad/selection_shape_internal.h"
#include "cad/vendor_text.h"

namespace tv::cad::selection_internal {

using namespace geom_internal;

void Outline::finish(bool area) {
  const std::size_t end = points.size();
  if (end == begin_) return;
  const auto drop = [&] { points.resize(begin_); };
  if (end > std::numeric_limits<std::uint32_t>::max()) return drop();
  Extents3d box;
  for (std::size_t i = begin_; i < end; ++i) {
    const Point3d& p = points[i];
    if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z)) return drop();
    box.add(p);
  }
  // Fewer than three corners fill nothing: such an "area" is its outline.
  pieces.push_back({static_cast<std::uint32_t>(begin_), static_cast<std::uint32_t>(end), area && end - begin_ >= 3, box});
}

Box2 ProjectBox(const Extents3d& box, const Matrix3d& xf) {
  const Point3d c = box.center();
  const Vector3d h = (box.max - box.min) * 0.5;
  Box2 out;
  const auto axis = [&](int r, double& lo, double& hi) {
    const auto& row = xf.m[static_cast<std::size_t>(r)];
    const double mid = row[0] * c.x + row[1] * c.y + row[2] * c.z + row[3];
    const double half = std::abs(row[0]) * h.x + std::abs(row[1]) * h.y + std::abs(row[2]) * h.z;
    lo = mid - half;
    hi = mid + half;
  };
  axis(0, out.minX, out.maxX);
  axis(1, out.minY, out.maxY);
  return out;
}

bool InsidePolygon(Point2d p, const Point2d* poly, std::size_t n) {
  bool inside = false;
  for (std::size_t i = 0, j = n - 1; i < n; j = i++) {
    const Point2d a = poly[i], b = poly[j];
    if ((a.y > p.y) != (b.y > p.y) && p.x < a.x + (p.y - a.y) * (b.x - a.x) / (b.y - a.y)) inside = !inside;
  }
  return inside;
}

namespace {

constexpr int kMaxDepth = 32;
// Arcs become chords deviating at most this fraction of their radius, so that a fence passing a
// thousandth of the radius beside the curve is told apart from one touching it.
constexpr double kArcTolerance = 1e-4;
// Pieces and placements kept for the blocks of one call; a hostile drawing stops growing here.
constexpr std::size_t kMaxBuilt = 8'000'000;
// Points of one clipped insert's content.
constexpr std::size_t kMaxClipPoints = 4'000'000;

// OCS to WCS; most entities lie in the XY plane, where that is the identity.
Matrix3d PlaneToWorld(const Vector3d& normal) { return normal == Vector3d::zAxis() ? Matrix3d{} : Matrix3d::planeToWorld(normal); }

// Points of a 2D outline with bulges, arcs flattened; a closed outline does not repeat its start.
template <class BulgeAt>
void BulgedPoints(const std::vector<Point2d>& pts, BulgeAt bulgeAt, bool closed, std::vector<Point2d>& out) {
  out.clear();
  const std::size_t n = pts.size();
  for (std::size_t i = 0; i < n; ++i) {
    out.push_back(pts[i]);
    const bool last = i + 1 == n;
    if (last && (!closed || n < 2)) break;
    const Point2d q = pts[last ? 0 : i + 1];
    const double bulge = bulgeAt(i);
    const auto arc = ArcFromBulge(pts[i], q, bulge);
    if (!arc) continue;
    const auto arcPts = EllipseArcPoints(Point3d{arc->center}, {arc->radius, 0, 0}, {0, arc->radius, 0}, arc->startAngle,
                                         arc->endAngle, arc->radius * kArcTolerance);
    // The arc's points run counter-clockwise; a negative bulge travels them backwards.
    for (std::size_t k = 1; k + 1 < arcPts.size(); ++k) out.push_back(arcPts[bulge < 0 ? arcPts.size() - 1 - k : k].to2d());
  }
}

// A flat 2D outline at height z of a plane: a path (closed ones repeat their start) or an area.
void Emit(Outline& o, const Matrix3d& toWorld, double z, const std::vector<Point2d>& pts, bool closed, bool area) {
  if (pts.empty()) return;
  o.start();
  for (const Point2d& p : pts) o.add(toWorld.transform(Point3d{p, z}));
  if (closed && !area && pts.size() > 1) {
    const Point3d first = o.points[o.points.size() - pts.size()];
    o.add(first);
  }
  o.finish(area);
}

void EmitPoints(Outline& o, const std::vector<Point3d>& pts, bool area = false) {
  o.start();
  for (const Point3d& p : pts) o.add(p);
  o.finish(area);
}

// The visible edges of a face, as few chains as possible. Bit k of `invisible` hides the edge
// from corner k to the next.
void EmitEdges(Outline& o, const Point3d* const* corners, int count, int invisible) {
  if (count < 2) return;
  const auto visible = [&](int k) { return !(invisible & (1 << k)); };
  int first = 0;
  while (first < count && visible(first)) ++first;
  if (first == count) {  // every edge shows: one closed chain
    o.start();
    for (int k = 0; k < count; ++k) o.add(*corners[k]);
    o.add(*corners[0]);
    o.finish(false);
    return;
  }
  bool open = false;
  for (int step = 1; step <= count; ++step) {
    const int k = (first + step) % count;
    if (visible(k)) {
      if (!open) {
        o.start();
        o.add(*corners[k]);
        open = true;
      }
      o.add(*corners[(k + 1) % count]);
    } else if (open) {
      o.finish(false);
      open = false;
    }
  }
  if (open) o.finish(false);
}

void EmitPolyline(Outline& o, const Polyline& p, std::vector<Point2d>& scratch) {
  if (p.polyFlags & Polyline::kPolyface) {
    ForEachPolyfaceFace(p, [&](const PolyfaceFace& f) { EmitEdges(o, f.corners.data(), f.count, f.invisible); });
    return;
  }
  if (p.polyFlags & Polyline::k3dMesh) {
    const int m = p.meshM, n = p.meshN;
    if (m < 1 || n < 1 || p.vertices.size() < static_cast<std::size_t>(m) * static_cast<std::size_t>(n)) return;
    const bool closedM = p.polyFlags & Polyline::kClosed, closedN = p.polyFlags & Polyline::kMeshClosedN;
    const auto at = [&](int i, int j) { return p.vertices[static_cast<std::size_t>((i % m) * n + (j % n))].position; };
    for (int i = 0; i < m; ++i) {
      o.start();
      for (int j = 0; j < n + (closedN && n > 1 ? 1 : 0); ++j) o.add(at(i, j));
      o.finish(false);
    }
    for (int j = 0; j < n; ++j) {
      o.start();
      for (int i = 0; i < m + (closedM && m > 1 ? 1 : 0); ++i) o.add(at(i, j));
      o.finish(false);
    }
    return;
  }
  // Spline-frame control points are not part of the drawn curve when fitted vertices exist.
  const bool hasCurveVertices = std::any_of(p.vertices.begin(), p.vertices.end(),
                                            [](const PolylineVertex& v) { return !(v.flags & Polyline::kVertexSplineFrame); });
  const auto drawn = [&](const PolylineVertex& v) { return !(hasCurveVertices && (v.flags & Polyline::kVertexSplineFrame)); };
  if (p.is3d()) {
    const std::size_t begin = o.points.size();
    o.start();
    for (const auto& v : p.vertices)
      if (drawn(v)) o.add(v.position);
    if (p.isClosed() && o.points.size() - begin > 1) {
      const Point3d first = o.points[begin];
      o.add(first);
    }
    o.finish(false);
    return;
  }
  std::vector<Point2d> pts;
  std::vector<double> bulges;
  for (const auto& v : p.vertices) {
    if (!drawn(v)) continue;
    pts.push_back(v.position.to2d());
    bulges.push_back(v.bulge);
  }
  BulgedPoints(pts, [&](std::size_t i) { return bulges[i]; }, p.isClosed(), scratch);
  Emit(o, PlaneToWorld(p.normal), p.elevation, scratch, p.isClosed(), false);
}

// The boundary of a hatch path in its OCS, in travel order, not repeating its start.
void HatchLoop(const HatchPath& path, std::vector<Point2d>& out) {
  if (path.isPolyline()) {
    BulgedPoints(path.vertices, [&](std::size_t i) { return i < path.bulges.size() ? path.bulges[i] : 0.0; }, true, out);
    return;
  }
  FlattenHatchEdges(path.edges, kArcTolerance, /*dropRepeatedStart=*/true, out);
}

template <class R>
void EmitRaster(Outline& o, const R& r) {
  const Vector3d u = r.uPixel, v = r.vPixel;
  std::vector<Point2d> clip = r.clipVertices;
  const bool clipped = (r.clipping || r.type() == ObjectType::Wipeout) && !r.clipInverted && clip.size() >= 2;
  if (!clipped) clip = {{-0.5, -0.5}, {r.imageSize.x - 0.5, r.imageSize.y - 0.5}};
  if (clip.size() == 2) clip = {clip[0], {clip[1].x, clip[0].y}, clip[1], {clip[0].x, clip[1].y}};
  // Clip vertices are pixel coordinates with rows counted from the top edge, pixel centres on
  // whole numbers.
  o.start();
  for (const Point2d& c : clip) o.add(r.position + u * (c.x + 0.5) + v * (r.imageSize.y - 0.5 - c.y));
  const Point3d first = o.points[o.points.size() - clip.size()];
  o.add(first);
  o.finish(false);
}

// The clip boundary of an insert in its block's coordinates, flat; empty when it has no usable clip.
std::vector<Point2d> ClipBoundary(const Insert& insert, const Database& db) {
  std::vector<Point2d> points;
  for (const Point3d& p : InsertClipBoundary(insert, db)) points.push_back(p.to2d());
  return points;
}

// Every piece of a shape in one outline, placed blocks included.
void Flatten(const Shape& s, const Matrix3d& xf, Outline& out, std::size_t& work) {
  for (const Piece& p : s.own.pieces) {
    if (out.points.size() > kMaxClipPoints) NoteContentLeftOut();
    if (Spent(work) || out.points.size() > kMaxClipPoints) return;
    out.start();
    for (std::uint32_t i = p.begin; i < p.end; ++i) out.add(xf.transform(s.own.points[i]));
    out.finish(p.area);
  }
  for (const Placement& pl : s.placements) {
    const Matrix3d first = xf * pl.xf;
    const Vector3d cs = xf.transform(pl.columnStep), rs = xf.transform(pl.rowStep);
    for (int row = 0; row < pl.rows; ++row)
      for (int column = 0; column < pl.columns; ++column) {
        if (Spent(work)) return;
        Matrix3d cell = first;
        const Vector3d t = cs * column + rs * row;
        cell.m[0][3] += t.x;
        cell.m[1][3] += t.y;
        cell.m[2][3] += t.z;
        Flatten(*pl.shape, cell, out, work);
      }
  }
}

Point3d Lerp(Point3d a, Point3d b, double t) { return a + (b - a) * t; }

// Parts of a path inside a polygon (x, y; z follows along).
void ClipPath(const Point3d* pts, std::size_t n, const std::vector<Point2d>& clip, Outline& out) {
  const auto inside = [&](Point3d p) { return InsidePolygon(p.to2d(), clip.data(), clip.size()); };
  if (n == 1) {
    if (inside(pts[0])) EmitPoints(out, {pts[0]});
    return;
  }
  bool open = false;
  Point3d last;
  std::vector<double> ts;
  for (std::size_t i = 0; i + 1 < n; ++i) {
    const Point3d p = pts[i], q = pts[i + 1];
    const Vector2d d = q.to2d() - p.to2d();
    ts.assign({0.0, 1.0});
    for (std::size_t k = 0; k < clip.size(); ++k) {
      const Point2d a = clip[k], b = clip[(k + 1) % clip.size()];
      const Vector2d e = b - a;
      const double denom = d.cross(e);
      if (denom == 0) continue;
      const Vector2d ap = a - p.to2d();
      const double t = ap.cross(e) / denom, s = ap.cross(d) / denom;
      if (t > 0 && t < 1 && s >= 0 && s <= 1) ts.push_back(t);
    }
    std::sort(ts.begin(), ts.end());
    for (std::size_t k = 0; k + 1 < ts.size(); ++k) {
      if (!(ts[k + 1] > ts[k])) continue;
      if (!inside(Lerp(p, q, (ts[k] + ts[k + 1]) / 2))) continue;
      const Point3d a = ts[k] == 0 ? p : Lerp(p, q, ts[k]), b = ts[k + 1] == 1 ? q : Lerp(p, q, ts[k + 1]);
      if (!open || !(a == last)) {
        if (open) out.finish(false);
        out.start();
        out.add(a);
        open = true;
      }
      out.add(b);
      last = b;
    }
  }
  if (open) out.finish(false);
}

bool IsConvex(const std::vector<Point2d>& poly) {
  int sign = 0;
  for (std::size_t i = 0; i < poly.size(); ++i) {
    const Point2d a = poly[i], b = poly[(i + 1) % poly.size()], c = poly[(i + 2) % poly.size()];
    const double turn = (b - a).cross(c - b);
    if (turn == 0) continue;
    if (sign == 0) sign = turn > 0 ? 1 : -1;
    else if ((turn > 0 ? 1 : -1) != sign) return false;
  }
  return true;
}

// An area cut by a convex polygon (Sutherland-Hodgman).
void ClipArea(const Point3d* pts, std::size_t n, const std::vector<Point2d>& clip, Outline& out) {
  double twiceArea = 0;
  for (std::size_t i = 0; i < clip.size(); ++i) {
    const Point2d a = clip[i], b = clip[(i + 1) % clip.size()];
    twiceArea += a.x * b.y - b.x * a.y;
  }
  const double orientation = twiceArea < 0 ? -1 : 1;
  std::vector<Point3d> poly(pts, pts + n), next;
  for (std::size_t k = 0; k < clip.size() && !poly.empty(); ++k) {
    const Point2d a = clip[k], b = clip[(k + 1) % clip.size()];
    const auto side = [&](Point3d p) { return orientation * (b - a).cross(p.to2d() - a); };
    next.clear();
    for (std::size_t i = 0; i < poly.size(); ++i) {
      const Point3d p = poly[i], q = poly[(i + 1) % poly.size()];
      const double sp = side(p), sq = side(q);
      if (sp >= 0) next.push_back(p);
      if ((sp >= 0) != (sq >= 0)) next.push_back(Lerp(p, q, sp / (sp - sq)));
    }
    poly.swap(next);
  }
  if (poly.size() >= 3) EmitPoints(out, poly, true);
}

void ComputeBox(Shape& s) {
  s.box = {};
  for (const Piece& p : s.own.pieces) s.box.add(p.box);
  for (const Placement& p : s.placements) s.box.add(p.box);
}

bool Finite(const Extents3d& e) {
  return std::isfinite(e.min.x) && std::isfinite(e.min.y) && std::isfinite(e.min.z) && std::isfinite(e.max.x) && std::isfinite(e.max.y) &&
         std::isfinite(e.max.z);
}

}  // namespace

void ShapeBuilder::build(const Entity& e, Shape& out) {
  out.clear();
  entity(e, out);
  ComputeBox(out);
}

void ShapeBuilder::place(Shape& out, const Shape* content, const Matrix3d& xf, int columns, int rows, Vector3d columnStep,
                         Vector3d rowStep) {
  if (!content) return;
  Placement pl{content, xf, columns, rows, columnStep, rowStep, content->box.transformed(xf)};
  const Extents3d first = pl.box;
  if (columns > 1) pl.box.add(Extents3d(first.min + columnStep * (columns - 1), first.max + columnStep * (columns - 1)));
  if (rows > 1) pl.box.add(Extents3d(first.min + rowStep * (rows - 1), first.max + rowStep * (rows - 1)));
  if (columns > 1 && rows > 1) {
    const Vector3d corner = columnStep * (columns - 1) + rowStep * (rows - 1);
    pl.box.add(Extents3d(first.min + corner, first.max + corner));
  }
  // A broken transform (NaN, infinite scale) places nothing anyone could select.
  if (pl.box.isEmpty() || !Finite(pl.box)) return;
  out.placements.push_back(pl);
}

const Shape* ShapeBuilder::block(const BlockRecord& b) {
  if (auto it = blocks_.find(&b); it != blocks_.end()) {
    if (std::find(stack_.begin(), stack_.end(), &b) != stack_.end()) NoteContentLeftOut();
    return it->second.get();
  }
  if (static_cast<int>(stack_.size()) >= kMaxDepth) {
    NoteContentLeftOut();
    return nullptr;
  }
  // A block that (indirectly) inserts itself finds this empty entry and stops there.
  blocks_.emplace(&b, nullptr);
  stack_.push_back(&b);
  auto shape = std::make_unique<Shape>();
  for (const auto& e : b.entities) {
    if (built_ + shape->own.pieces.size() + shape->placements.size() > kMaxBuilt) {
      NoteContentLeftOut();
      break;
    }
    if (e->isErased() || !e->isVisible()) continue;
    if (const auto* def = As<AttDef>(e.get()); def && (!(def->attFlags & kAttConstant) || (def->attFlags & kAttInvisible))) continue;
    if (const auto* custom = As<CustomEntity>(e.get()); custom && custom->isTransient()) continue;
    entity(*e, *shape);
  }
  stack_.pop_back();
  built_ += shape->own.pieces.size() + shape->placements.size();
  if (shape->empty()) return nullptr;
  ComputeBox(*shape);
  auto& slot = blocks_[&b];
  slot = std::move(shape);
  return slot.get();
}

const Shape* ShapeBuilder::clippedBlock(const Shape& content, const std::vector<Point2d>& clip) {
  Outline flat;
  std::size_t work = 0;
  Flatten(content, Matrix3d{}, flat, work);
  auto shape = std::make_unique<Shape>();
  const bool convex = IsConvex(clip);
  for (const Piece& p : flat.pieces) {
    const Point3d* pts = flat.points.data() + p.begin;
    const std::size_t n = p.end - p.begin;
    if (p.area && convex) {
      ClipArea(pts, n, clip, shape->own);
    } else if (p.area) {
      // Cutting an area by a concave clip is left to its outline.
      std::vector<Point3d> ring(pts, pts + n);
      ring.push_back(pts[0]);
      ClipPath(ring.data(), ring.size(), clip, shape->own);
    } else {
      ClipPath(pts, n, clip, shape->own);
    }
  }
  if (shape->empty()) return nullptr;
  ComputeBox(*shape);
  clipped_.push_back(std::move(shape));
  return clipped_.back().get();
}

void ShapeBuilder::insert(const Insert& ins, Shape& out) {
  if (const auto* b = db_.objectAs<BlockRecord>(ins.block)) {
    const Shape* content = block(*b);
    if (content) {
      if (const auto clip = ClipBoundary(ins, db_); !clip.empty()) content = clippedBlock(*content, clip);
    }
    if (content) {
      // Copies on one point are one copy.
      const double size = std::max({std::abs(ins.position.x), std::abs(ins.position.y), std::abs(ins.position.z)});
      const int columns = DistinctCells(ins.columnCount, ins.columnSpacing, size);
      const int rows = DistinctCells(ins.rowCount, ins.rowSpacing, size);
      const Matrix3d first = InsertTransform(ins, *b);
      Vector3d columnStep, rowStep;
      if (columns > 1 || rows > 1) {
        // Cells step along the insert's rotated axes, unscaled.
        const Matrix3d axes = PlaneToWorld(ins.normal) * Matrix3d::rotation(ins.rotation);
        columnStep = axes.transform(Vector3d{ins.columnSpacing, 0, 0});
        rowStep = axes.transform(Vector3d{0, ins.rowSpacing, 0});
      }
      place(out, content, first, columns, rows, columnStep, rowStep);
    }
  }
  for (const auto& a : ins.attribs)
    if (!a->isErased() && a->isVisible() && !a->isInvisible()) entity(*a, out);
}

void ShapeBuilder::entity(const Entity& e, Shape& out) {
  Outline& o = out.own;
  const auto text = [&](const auto& t) {
    if (auto box = TextBoxOcs(TextParamsOf(t), db_, m_)) {
      const Matrix3d f = PlaneToWorld(t.normal());
      o.start();
      for (const Point3d& p : *box) o.add(f.transform(p));
      o.finish(true);
    }
  };
  const auto quad = [&](const auto& q) {
    const Matrix3d f = PlaneToWorld(q.normal);
    // SOLID and TRACE fill their corners in the order 1, 2, 4, 3.
    EmitPoints(o, {f.transform(q.corners[0]), f.transform(q.corners[1]), f.transform(q.corners[3]), f.transform(q.corners[2])}, true);
  };
  switch (e.type()) {
    case ObjectType::Line: {
      const auto& l = static_cast<const Line&>(e);
      EmitPoints(o, {l.start, l.end});
      break;
    }
    case ObjectType::LwPolyline: {
      const auto& p = static_cast<const LwPolyline&>(e);
      BulgedPoints(p.points, [&](std::size_t i) { return p.bulgeAt(i); }, p.isClosed(), scratch_);
      Emit(o, PlaneToWorld(p.normal()), p.elevation(), scratch_, p.isClosed(), false);
      break;
    }
    case ObjectType::Polyline: EmitPolyline(o, static_cast<const Polyline&>(e), scratch_); break;
    case ObjectType::Circle: {
      const auto& c = static_cast<const Circle&>(e);
      EmitPoints(o, CircleToPolyline(c, c.radius * kArcTolerance));
      break;
    }
    case ObjectType::Arc: {
      const auto& a = static_cast<const Arc&>(e);
      EmitPoints(o, ArcToPolyline(a, a.radius * kArcTolerance));
      break;
    }
    case ObjectType::Ellipse: {
      const auto& el = static_cast<const Ellipse&>(e);
      EmitPoints(o, EllipseToPolyline(el, el.majorAxis.length() * kArcTolerance));
      break;
    }
    case ObjectType::Spline: {
      const auto& s = static_cast<const Spline&>(e);
      EmitPoints(o, SplineToPolyline(s, SplineChordTolerance(s, kArcTolerance)));
      break;
    }
    case ObjectType::Point: EmitPoints(o, {static_cast<const PointEntity&>(e).position}); break;
    case ObjectType::Solid: quad(static_cast<const Solid&>(e)); break;
    case ObjectType::Trace: quad(static_cast<const Trace&>(e)); break;
    case ObjectType::Face3d: {
      const auto& f = static_cast<const Face3d&>(e);
      const Point3d* corners[4] = {&f.corners[0], &f.corners[1], &f.corners[2], &f.corners[3]};
      EmitEdges(o, corners, 4, f.invisibleEdges);
      break;
    }
    case ObjectType::Text: text(static_cast<const Text&>(e)); break;
    case ObjectType::AttDef: text(static_cast<const AttDef&>(e)); break;
    case ObjectType::Attrib: text(static_cast<const Attrib&>(e)); break;
    case ObjectType::MText: {
      const MTextLayout layout = LayoutMText(static_cast<const MText&>(e), db_, m_);
      if (layout.lines.empty() || (layout.lines.size() == 1 && layout.lines[0].text.empty())) break;
      const Matrix3d& f = layout.frameToWorld;
      EmitPoints(o,
                 {f.transform(Point3d{layout.left, layout.bottom}), f.transform(Point3d{layout.right, layout.bottom}),
                  f.transform(Point3d{layout.right, layout.top}), f.transform(Point3d{layout.left, layout.top})},
                 true);
      break;
    }
    case ObjectType::Insert: insert(static_cast<const Insert&>(e), out); break;
    case ObjectType::Hatch: {
      const auto& h = static_cast<const Hatch&>(e);
      const Matrix3d f = PlaneToWorld(h.normal);
      for (const HatchPath& path : h.paths) {
        HatchLoop(path, scratch_);
        Emit(o, f, h.elevation, scratch_, true, h.solidFill);
      }
      break;
    }
    case ObjectType::Dimension: {
      // The geometry block of a dimension holds coordinates of the dimension's own space.
      if (const auto* b = db_.objectAs<BlockRecord>(static_cast<const Dimension&>(e).block)) place(out, block(*b), Matrix3d{});
      break;
    }
    case ObjectType::Leader: EmitPoints(o, static_cast<const Leader&>(e).vertices); break;
    case ObjectType::Viewport: {
      const auto& v = static_cast<const Viewport&>(e);
      const double w = v.width / 2, h = v.height / 2;
      const Point3d c = v.center;
      EmitPoints(o, {c + Vector3d{-w, -h, 0}, c + Vector3d{w, -h, 0}, c + Vector3d{w, h, 0}, c + Vector3d{-w, h, 0}, c + Vector3d{-w, -h, 0}});
      break;
    }
    case ObjectType::Image: EmitRaster(o, static_cast<const Image&>(e)); break;
    case ObjectType::Wipeout: EmitRaster(o, static_cast<const Wipeout&>(e)); break;
    case ObjectType::Custom: {
      const auto& c = static_cast<const CustomEntity&>(e);
      if (!c.content) break;
      for (const CustomPrimitive& prim : c.content->primitives()) {
        const bool polygon = prim.kind == CustomPrimitive::Kind::Polygon;
        o.start();
        for (const Point3d& p : prim.points) o.add(p);
        if (polygon && !prim.filled && prim.points.size() > 1) o.add(prim.points.front());
        o.finish(polygon && prim.filled);
      }
      break;
    }
    case ObjectType::Proxy:
      // Other vendors' texts are boxes like TEXT and MTEXT; other proxies have no geometry known.
      if (const auto standIn = VendorTextStandIn(static_cast<const ProxyEntity&>(e), db_)) entity(*standIn, out);
      break;
    default: break;
  }
}

}  // namespace tv::cad::selection_internal
