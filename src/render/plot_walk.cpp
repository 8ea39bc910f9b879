// The walk: which entities plot, how they look, and the descent into blocks and viewports.
#include <algorithm>
#include <cmath>
#include <strings.h>

#include "cad/entity_geometry.h"
#include "cad/entity_geometry_internal.h"
#include "cad/layout_viewport.h"
#include "cad/walk_limits.h"
#include "render/plot_drawing_internal.h"
#include "render/plot_shapes.h"

namespace tv::render::plot_internal {

namespace {

constexpr int kMaxDepth = 32;
// Entities visited for one plot: a fixed allowance and a multiple of the drawing's own entities, so
// that real sheets with many block references draw in full, while blocks multiplying each other
// stop after seconds of drawing.
constexpr std::size_t kBaseWork = 500'000;
constexpr std::size_t kWorkPerEntity = 16;
// Markers of sheets live on this layer and never reach paper.
constexpr const char* kMarkerLayer = "Temp_PlotLayer";

bool SameName(const std::string& a, const char* b) { return strcasecmp(a.c_str(), b) == 0; }

bool Finite(Point3d p) { return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z); }

}  // namespace

DrawingPlotter::DrawingPlotter(const cad::Database& db, PlotCanvas& canvas, const PlotRequest& request, PlotResult& result)
    : db_(db), canvas_(canvas), request_(request), result_(result) {
  layerZero_ = db.findLayer("0");
  ltscale_ = db.header.getDouble("$LTSCALE", 1.0);
  if (!(ltscale_ > 0) || !std::isfinite(ltscale_)) ltscale_ = 1;
  const auto lw = db.header.getInt("$LWDEFAULT", 25);
  lwDefault_ = static_cast<std::int16_t>(lw >= 0 && lw <= 211 ? lw : 25);
  psLtScale_ = db.header.getInt("$PSLTSCALE", 1) != 0;
  std::size_t entities = 0;
  for (const auto& block : db.blocks) entities += block->entities.size();
  maxWork_ = kBaseWork + kWorkPerEntity * entities;
}

DrawingPlotter::~DrawingPlotter() {
  for (auto& [name, surface] : pictures_)
    if (surface) cairo_surface_destroy(surface);
}

double DrawingPlotter::MeanScale(const Matrix3d& m) {
  const double det = m.m[0][0] * m.m[1][1] - m.m[0][1] * m.m[1][0];
  const double s = std::sqrt(std::abs(det));
  return std::isfinite(s) && s > 0 ? s : 1.0;
}

void DrawingPlotter::drawSpace(const cad::BlockRecord& space, const Matrix3d& toPage,
                               const std::vector<const cad::Entity*>* only) {
  DrawContext ctx;
  ctx.toPage = toPage;
  ctx.mmPerUnit = MeanScale(toPage);
  if (!only) {
    drawBlockEntities(space, ctx);
    return;
  }
  for (const cad::Entity* e : *only)
    if (!e->isErased() && spend()) drawEntity(*e, ctx);
}

bool DrawingPlotter::spend() {
  if (work_ >= maxWork_) {
    if (work_ == maxWork_) cad::NoteContentLeftOut();
    work_ = maxWork_ + 1;
    return false;
  }
  ++work_;
  return true;
}

void DrawingPlotter::drawBlockEntities(const cad::BlockRecord& block, const DrawContext& ctx) {
  db_.forEachEntity(block, [&](const cad::Entity& e) {
    if (spend()) drawEntity(e, ctx);
  });
}

const cad::Layer* DrawingPlotter::effectiveLayer(const cad::Entity& e, const DrawContext& ctx) const {
  const cad::Layer* layer = db_.objectAs<cad::Layer>(e.layer);
  if (!layer) layer = layerZero_;
  // Inside a block, layer 0 stands for the layer of the insert.
  if (ctx.blockLayer && (!layer || layer == layerZero_)) return ctx.blockLayer;
  return layer;
}

bool DrawingPlotter::plots(const cad::Entity& e, const DrawContext& ctx) const {
  if (e.isErased() || !e.isVisible()) return false;
  const cad::Layer* own = db_.objectAs<cad::Layer>(e.layer);
  for (const cad::Layer* layer : {own, effectiveLayer(e, ctx)}) {
    if (!layer) continue;
    if (!layer->isOn() || layer->isFrozen() || !layer->plottable || SameName(layer->name, kMarkerLayer)) return false;
    if (ctx.frozenHere && ctx.frozenHere->count(layer->id)) return false;
  }
  return true;
}

Look DrawingPlotter::lookOf(const cad::Entity& e, const DrawContext& ctx) const {
  const cad::Layer* layer = effectiveLayer(e, ctx);
  int aci = e.colorIndex;
  std::int32_t trueColor = e.trueColor;
  if (e.hasTrueColor()) {
    // A true colour stands by itself; the index beside it is only its nearest match.
    if (aci == cad::kColorByLayer || aci == cad::kColorByBlock) aci = 7;
  } else if (aci == cad::kColorByLayer) {
    aci = layer ? layer->colorIndex : 7;
    trueColor = layer ? layer->trueColor : -1;
  } else if (aci == cad::kColorByBlock) {
    aci = ctx.byBlockColor;
    trueColor = ctx.byBlockTrueColor;
  }
  if (aci < 0) aci = -aci;  // an off layer's colour as some files store it

  std::int16_t lw = e.lineweight;
  if (lw == cad::kLineweightByLayer) lw = layer ? layer->lineweight : cad::kLineweightDefault;
  if (lw == cad::kLineweightByBlock) lw = ctx.byBlockLineweight;
  if (lw < 0) lw = lwDefault_;

  Look look;
  look.pen = PenOf(request_.style, aci, trueColor, lw / 100.0);
  if (!request_.lineweights) look.pen.widthMm = 0;

  // Linetype: none or "ByLayer" is the layer's, "ByBlock" the insert's.
  const cad::Linetype* lt = db_.objectAs<cad::Linetype>(e.linetype);
  if (lt && SameName(lt->name, "ByBlock")) lt = db_.objectAs<cad::Linetype>(ctx.byBlockLinetype);
  if (!lt || SameName(lt->name, "ByLayer")) lt = layer ? db_.objectAs<cad::Linetype>(layer->linetype) : nullptr;
  if (lt && !lt->isContinuous() && !SameName(lt->name, "ByBlock") && !SameName(lt->name, "ByLayer")) {
    const double entityScale = e.linetypeScale > 0 && std::isfinite(e.linetypeScale) ? e.linetypeScale : 1.0;
    const double k = ltscale_ * entityScale * ctx.linetypeFactor * ctx.mmPerUnit;
    for (const auto& d : lt->dashes) look.dashesMm.push_back(d.length * k);
  }
  return look;
}

DrawContext DrawingPlotter::childContext(const cad::Entity& owner, const DrawContext& ctx, const Matrix3d& toPage) const {
  DrawContext child = ctx;
  child.toPage = toPage;
  child.mmPerUnit = MeanScale(toPage);
  child.depth = ctx.depth + 1;
  child.blockLayer = effectiveLayer(owner, ctx);
  // The owner's own properties, ByBlock ones passed down from further out.
  if (owner.hasTrueColor()) {
    child.byBlockColor = owner.colorIndex == cad::kColorByLayer || owner.colorIndex == cad::kColorByBlock ? 7 : owner.colorIndex;
    child.byBlockTrueColor = owner.trueColor;
  } else if (owner.colorIndex == cad::kColorByLayer) {
    child.byBlockColor = child.blockLayer ? child.blockLayer->colorIndex : 7;
    child.byBlockTrueColor = child.blockLayer ? child.blockLayer->trueColor : -1;
  } else if (owner.colorIndex != cad::kColorByBlock) {
    child.byBlockColor = owner.colorIndex;
    child.byBlockTrueColor = owner.trueColor;
  }
  if (owner.lineweight == cad::kLineweightByLayer)
    child.byBlockLineweight = child.blockLayer ? child.blockLayer->lineweight : cad::kLineweightDefault;
  else if (owner.lineweight != cad::kLineweightByBlock)
    child.byBlockLineweight = owner.lineweight;
  const cad::Linetype* lt = db_.objectAs<cad::Linetype>(owner.linetype);
  if (!lt || SameName(lt->name, "ByLayer"))
    child.byBlockLinetype = child.blockLayer ? child.blockLayer->linetype : cad::ObjectId{};
  else if (!SameName(lt->name, "ByBlock"))
    child.byBlockLinetype = owner.linetype;
  return child;
}

Point2d DrawingPlotter::page(const Matrix3d& m, Point3d p) const {
  const Point3d q = m.transform(p);
  return {q.x, q.y};
}

bool DrawingPlotter::toPage(const Matrix3d& m, const std::vector<Point3d>& pts, Polyline2d& out) const {
  out.clear();
  out.reserve(pts.size());
  for (const Point3d& p : pts) {
    if (!Finite(p)) return false;
    out.push_back(page(m, p));
  }
  return AllFinite(out);
}

double DrawingPlotter::chordTolerance(const DrawContext& ctx) const {
  // A twentieth of a millimetre on paper is below what a pen or a pixel shows.
  return 0.05 / ctx.mmPerUnit;
}

void DrawingPlotter::strokePage(const Polyline2d& pts, bool closed, const Look& look) {
  if (pts.empty()) return;
  const double width = std::max(look.pen.widthMm, minPenMm_);
  if (look.dashesMm.empty()) {
    canvas_.stroke(pts, closed, look.pen.color, width);
    return;
  }
  for (const auto& piece : ApplyDashes(pts, closed, look.dashesMm)) canvas_.stroke(piece, false, look.pen.color, width);
}

bool DrawingPlotter::strokeArcWorld(Point3d c, Vector3d u, Vector3d v, double t0, double t1, const Look& look,
                                    const DrawContext& ctx) {
  // Dash patterns run along the chords as they do along any line.
  if (!look.dashesMm.empty()) return false;
  if (!std::isfinite(t0)) t0 = 0;
  t1 = cad::geom_internal::SweepEnd(t0, t1);
  const Vector3d pu = ctx.toPage.transform(u), pv = ctx.toPage.transform(v);
  PageArc arc;
  arc.center = page(ctx.toPage, c);
  arc.u = {pu.x, pu.y};
  arc.v = {pv.x, pv.y};
  arc.start = t0;
  arc.end = t1;
  arc.closed = t1 - t0 >= 2 * cad::kPi - 1e-9;
  if (!std::isfinite(arc.center.x + arc.center.y + arc.u.x + arc.u.y + arc.v.x + arc.v.y + t1)) return true;
  canvas_.strokeArc(arc, look.pen.color, std::max(look.pen.widthMm, minPenMm_));
  ++result_.entitiesDrawn;
  return true;
}

void DrawingPlotter::strokeWorld(const std::vector<Point3d>& pts, bool closed, const Look& look, const DrawContext& ctx,
                                 const Matrix3d* ocs) {
  Polyline2d out;
  if (!toPage(ocs ? ctx.toPage * *ocs : ctx.toPage, pts, out)) return;
  strokePage(out, closed, look);
  ++result_.entitiesDrawn;
}

void DrawingPlotter::drawEntity(const cad::Entity& e, const DrawContext& ctx) {
  if (e.type() == cad::ObjectType::Viewport) {
    // Viewports usually stand on a layer that is off or does not plot: that hides their edge, not
    // what they show. Only a frozen layer hides the view as well.
    const cad::Layer* layer = effectiveLayer(e, ctx);
    if (e.isErased() || !e.isVisible() || (layer && layer->isFrozen())) return;
    drawViewport(static_cast<const cad::Viewport&>(e), plots(e, ctx), lookOf(e, ctx), ctx);
    return;
  }
  if (!plots(e, ctx)) return;
  using cad::ObjectType;
  const Look look = lookOf(e, ctx);
  const double tol = chordTolerance(ctx);
  switch (e.type()) {
    case ObjectType::Line: {
      const auto& l = static_cast<const cad::Line&>(e);
      strokeWorld({l.start, l.end}, false, look, ctx);
      break;
    }
    case ObjectType::LwPolyline: drawLwPolyline(static_cast<const cad::LwPolyline&>(e), look, ctx); break;
    case ObjectType::Polyline: drawPolyline(static_cast<const cad::Polyline&>(e), look, ctx); break;
    case ObjectType::Circle: {
      const auto& c = static_cast<const cad::Circle&>(e);
      if (!(c.radius > 0) || !std::isfinite(c.radius)) break;
      const Matrix3d toWorld = Matrix3d::planeToWorld(c.normal);
      if (!strokeArcWorld(toWorld.transform(c.center), toWorld.transform(Vector3d{c.radius, 0, 0}),
                          toWorld.transform(Vector3d{0, c.radius, 0}), 0, 2 * cad::kPi, look, ctx))
        strokeWorld(cad::CircleToPolyline(c, tol), true, look, ctx);
      break;
    }
    case ObjectType::Arc: {
      const auto& a = static_cast<const cad::Arc&>(e);
      if (!(a.radius > 0) || !std::isfinite(a.radius)) break;
      const Matrix3d toWorld = Matrix3d::planeToWorld(a.normal);
      if (!strokeArcWorld(toWorld.transform(a.center), toWorld.transform(Vector3d{a.radius, 0, 0}),
                          toWorld.transform(Vector3d{0, a.radius, 0}), a.startAngle, a.endAngle, look, ctx))
        strokeWorld(cad::ArcToPolyline(a, tol), false, look, ctx);
      break;
    }
    case ObjectType::Ellipse: {
      const auto& el = static_cast<const cad::Ellipse&>(e);
      if (!Finite(el.center) || !std::isfinite(el.majorAxis.length()) || !std::isfinite(el.ratio)) break;
      Vector3d n = el.normal.normalized();
      if (n.isZero(0)) n = Vector3d::zAxis();
      if (!strokeArcWorld(el.center, el.majorAxis, n.cross(el.majorAxis) * el.ratio, el.startParam, el.endParam, look, ctx))
        strokeWorld(cad::EllipseToPolyline(el, tol), false, look, ctx);
      break;
    }
    case ObjectType::Spline: {
      const auto& s = static_cast<const cad::Spline&>(e);
      const bool finite = std::all_of(s.controlPoints.begin(), s.controlPoints.end(), Finite) &&
                          std::all_of(s.fitPoints.begin(), s.fitPoints.end(), Finite);
      if (!finite) break;
      strokeWorld(cad::SplineToPolyline(s, tol), s.splineFlags & cad::Spline::kClosed, look, ctx);
      break;
    }
    case ObjectType::Point: {
      const auto& p = static_cast<const cad::PointEntity&>(e);
      strokeWorld({p.position}, false, look, ctx);
      break;
    }
    case ObjectType::Solid: {
      const auto& s = static_cast<const cad::Solid&>(e);
      drawQuad(e, s.corners, s.normal, false, 0, look, ctx);
      break;
    }
    case ObjectType::Trace: {
      const auto& s = static_cast<const cad::Trace&>(e);
      drawQuad(e, s.corners, s.normal, false, 0, look, ctx);
      break;
    }
    case ObjectType::Face3d: {
      const auto& s = static_cast<const cad::Face3d&>(e);
      drawQuad(e, s.corners, s.normal, true, s.invisibleEdges, look, ctx);
      break;
    }
    case ObjectType::Text: drawTextEntity(static_cast<const cad::Text&>(e), look, ctx); break;
    case ObjectType::AttDef:
      // A definition shows its tag where it stands in a space; inside blocks only constant ones show.
      if (ctx.depth == 0 || (static_cast<const cad::AttDef&>(e).attFlags & cad::kAttConstant))
        drawTextEntity(static_cast<const cad::AttDef&>(e), look, ctx);
      break;
    case ObjectType::Attrib:
      if (!static_cast<const cad::Attrib&>(e).isInvisible()) drawTextEntity(static_cast<const cad::Attrib&>(e), look, ctx);
      break;
    case ObjectType::MText: drawMText(static_cast<const cad::MText&>(e), look, ctx); break;
    case ObjectType::Insert: drawInsert(static_cast<const cad::Insert&>(e), ctx); break;
    case ObjectType::Dimension: {
      const auto& d = static_cast<const cad::Dimension&>(e);
      const auto* block = db_.objectAs<cad::BlockRecord>(d.block);
      if (block && ctx.depth >= kMaxDepth) cad::NoteContentLeftOut();
      else if (block) drawBlockEntities(*block, childContext(e, ctx, ctx.toPage));
      break;
    }
    case ObjectType::Leader: drawLeader(static_cast<const cad::Leader&>(e), look, ctx); break;
    case ObjectType::Hatch: drawHatch(static_cast<const cad::Hatch&>(e), look, ctx); break;
    case ObjectType::Image: drawRaster(static_cast<const cad::Image&>(e), false, ctx); break;
    case ObjectType::Wipeout: drawRaster(static_cast<const cad::Wipeout&>(e), true, ctx); break;
    case ObjectType::Custom: {
      const auto& c = static_cast<const cad::CustomEntity&>(e);
      if (c.isTransient()) break;
      for (const auto& prim : c.content->primitives()) {
        Look primLook = look;
        // Primitives drawn ByLayer or ByBlock take the entity's own pen.
        if (prim.colorIndex >= 1 && prim.colorIndex <= 255) primLook.pen = PenOf(request_.style, prim.colorIndex, -1, look.pen.widthMm);
        Polyline2d pts;
        if (!toPage(ctx.toPage, prim.points, pts)) continue;
        if (prim.filled) canvas_.fill({pts}, primLook.pen.color);
        else strokePage(pts, prim.kind == cad::CustomPrimitive::Kind::Polygon, primLook);
      }
      ++result_.entitiesDrawn;
      break;
    }
    default: break;  // proxies and others draw nothing of their own
  }
}

void DrawingPlotter::drawInsert(const cad::Insert& ins, const DrawContext& ctx) {
  const auto* block = db_.objectAs<cad::BlockRecord>(ins.block);
  if (block && ctx.depth >= kMaxDepth && !block->isLayout()) cad::NoteContentLeftOut();
  if (!block || ctx.depth >= kMaxDepth || block->isLayout()) return;
  const std::vector<Point3d> clip = cad::InsertClipBoundary(ins, db_);
  // Copies on one point are drawn once; the copies of a grid count against the plot's bound.
  const double size = std::max({std::abs(ins.position.x), std::abs(ins.position.y), std::abs(ins.position.z)});
  const int columns = cad::DistinctCells(ins.columnCount, ins.columnSpacing, size);
  const int rows = cad::DistinctCells(ins.rowCount, ins.rowSpacing, size);
  const bool grid = columns > 1 || rows > 1;
  bool more = true;
  for (int r = 0; r < rows && more; ++r) {
    for (int c = 0; c < columns && more; ++c) {
      const Matrix3d m = ctx.toPage * cad::InsertTransform(ins, *block, c, r);
      if (!std::isfinite(m.determinant()) || work_ > maxWork_) return;
      if (grid && ++gridCopies_ > cad::kMaxGridCopies) {
        cad::NoteContentLeftOut();
        more = false;
        break;
      }
      bool clipped = false;
      if (!clip.empty()) {
        Polyline2d outline;
        if (toPage(m, clip, outline)) {
          canvas_.pushClip(outline);
          clipped = true;
        }
      }
      drawBlockEntities(*block, childContext(ins, ctx, m));
      if (clipped) canvas_.popClip();
    }
  }
  // Attributes stand in the insert's space, and take ByBlock from it.
  DrawContext attCtx = childContext(ins, ctx, ctx.toPage);
  attCtx.blockLayer = ctx.blockLayer;
  attCtx.depth = ctx.depth + 1;
  for (const auto& a : ins.attribs)
    if (a && !a->isErased() && plots(*a, attCtx)) drawTextEntity(*a, lookOf(*a, attCtx), attCtx);
}

void DrawingPlotter::drawLeader(const cad::Leader& l, const Look& look, const DrawContext& ctx) {
  if (l.vertices.size() < 2) return;
  strokeWorld(l.vertices, false, look, ctx);
  if (!l.hasArrowhead) return;
  // A closed arrow at the first vertex, as long as the drawing's dimension arrows.
  const double size = db_.header.getDouble("$DIMASZ", 2.5) * std::max(db_.header.getDouble("$DIMSCALE", 1.0), 1e-9);
  Polyline2d pts;
  if (!toPage(ctx.toPage, {l.vertices[0], l.vertices[1]}, pts)) return;
  const Vector2d d = pts[1] - pts[0];
  const double len = d.length();
  if (!(len > 0)) return;
  const Vector2d u = d * (1.0 / len), n{-u.y, u.x};
  const double a = std::min(size * ctx.mmPerUnit, len);
  canvas_.fill({{pts[0], pts[0] + u * a + n * (a / 6), pts[0] + u * a - n * (a / 6)}}, look.pen.color);
}

bool DrawingPlotter::outlineOf(const cad::Entity& e, const DrawContext& ctx, Polyline2d& out) const {
  const double tol = chordTolerance(ctx);
  std::vector<Point3d> pts;
  switch (e.type()) {
    case cad::ObjectType::LwPolyline: {
      const auto& p = static_cast<const cad::LwPolyline&>(e);
      const Matrix3d ocs = Matrix3d::planeToWorld(p.normal());
      std::vector<Point2d> flat;
      const std::size_t n = p.points.size();
      for (std::size_t i = 0; i < n; ++i) {
        if (i == 0) flat.push_back(p.points[0]);
        if (i + 1 < n || p.isClosed()) AppendBulgeSegment(flat, p.points[i], p.points[(i + 1) % n], p.bulgeAt(i), tol);
      }
      for (const Point2d& q : flat) pts.push_back(ocs.transform(Point3d{q, p.elevation()}));
      break;
    }
    case cad::ObjectType::Polyline: {
      const auto& p = static_cast<const cad::Polyline&>(e);
      const Matrix3d ocs = p.is3d() ? Matrix3d{} : Matrix3d::planeToWorld(p.normal);
      for (const auto& v : p.vertices)
        if (!(v.flags & cad::Polyline::kVertexSplineFrame)) pts.push_back(ocs.transform(v.position));
      break;
    }
    case cad::ObjectType::Circle: pts = cad::CircleToPolyline(static_cast<const cad::Circle&>(e), tol); break;
    case cad::ObjectType::Ellipse: pts = cad::EllipseToPolyline(static_cast<const cad::Ellipse&>(e), tol); break;
    case cad::ObjectType::Spline: pts = cad::SplineToPolyline(static_cast<const cad::Spline&>(e), tol); break;
    default: return false;
  }
  return toPage(ctx.toPage, pts, out) && out.size() >= 3;
}

void DrawingPlotter::drawViewport(const cad::Viewport& vp, bool edge, const Look& look, const DrawContext& ctx) {
  // Viewports show model space only from a layout, and the layout's own viewport is the sheet.
  if (ctx.depth > 0 || ctx.inViewport || !(vp.width > 0) || !(vp.height > 0) || !(vp.viewHeight > 0)) return;
  auto own = layoutViewports_.find(vp.owner.value);
  if (own == layoutViewports_.end()) {
    const auto* space = db_.objectAs<cad::BlockRecord>(vp.owner);
    own = layoutViewports_.emplace(vp.owner.value, space ? cad::LayoutViewportOf(db_, *space) : cad::ObjectId{}).first;
  }
  if (own->second == vp.id) return;
  const double hw = vp.width / 2, hh = vp.height / 2;
  Polyline2d border;
  if (!toPage(ctx.toPage,
              {vp.center + Vector3d{-hw, -hh, 0}, vp.center + Vector3d{hw, -hh, 0}, vp.center + Vector3d{hw, hh, 0},
               vp.center + Vector3d{-hw, hh, 0}},
              border))
    return;
  Polyline2d clip = border;
  const cad::Entity* boundary = (vp.statusFlags & cad::Viewport::kClippedNonRect) ? db_.entity(vp.clipBoundary) : nullptr;
  Polyline2d shape;
  if (boundary && outlineOf(*boundary, ctx, shape)) clip = shape;

  if (vp.status != 0) {
    const cad::BlockRecord* model = db_.modelSpace();
    if (model) {
      // Model coordinates to the viewport's display coordinates (turned by the twist about the
      // target, seen along the view direction), then onto the paper. Views are drawn parallel.
      const double s = vp.scale();
      const Vector3d dir = vp.viewDirection.isZero() ? Vector3d::zAxis() : vp.viewDirection.normalized();
      const Matrix3d modelToDisplay = Matrix3d::worldToPlane(dir) * Matrix3d::translation(-vp.viewTarget.asVector()) *
                                      Matrix3d::rotation(vp.twist, dir, vp.viewTarget);
      const Matrix3d displayToPaper = Matrix3d::translation(vp.center.asVector()) * Matrix3d::scaling(s, s, s) *
                                      Matrix3d::translation(Vector3d{-vp.viewCenter.x, -vp.viewCenter.y, 0});
      const Matrix3d modelToPaper = displayToPaper * modelToDisplay;
      std::unordered_set<cad::ObjectId> frozen(vp.frozenLayers.begin(), vp.frozenLayers.end());
      DrawContext inner;
      inner.toPage = ctx.toPage * modelToPaper;
      inner.mmPerUnit = MeanScale(inner.toPage);
      inner.frozenHere = &frozen;
      inner.linetypeFactor = psLtScale_ && s > 0 ? 1.0 / s : 1.0;
      inner.inViewport = true;
      canvas_.pushClip(clip);
      drawBlockEntities(*model, inner);
      canvas_.popClip();
    }
  }
  // The viewport's edge: its clip shape when that is an entity of its own (which plots by itself).
  if (edge && !boundary) strokePage(border, true, look);
}

}  // namespace tv::render::plot_internal
