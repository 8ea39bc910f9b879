#pragma once
// The walk over a drawing's entities that puts them on a plot canvas; shared by the plot_*.cpp
// files that draw the entity kinds, not part of the engine's interface.
#include <cairo.h>

#include <map>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "cad/database.h"
#include "render/plot_canvas.h"
#include "render/plot_colors.h"
#include "render/plot_fonts.h"
#include "render/plot_request.h"

namespace tv::render::plot_internal {

using cad::Matrix3d;
using cad::Point2d;
using cad::Point3d;
using cad::Vector2d;
using cad::Vector3d;

// Where the walk stands: the transform to the page and what ByBlock and layer 0 mean here.
struct DrawContext {
  Matrix3d toPage;                       // coordinates of the entities at hand to page mm (x, y)
  double mmPerUnit = 1;                  // mean scale of toPage, for tolerances and patterns
  const cad::Layer* blockLayer = nullptr;  // layer of the innermost insert (layer 0 inside blocks)
  std::int16_t byBlockColor = 7;
  std::int32_t byBlockTrueColor = -1;
  std::int16_t byBlockLineweight = cad::kLineweightDefault;
  cad::ObjectId byBlockLinetype;
  const std::unordered_set<cad::ObjectId>* frozenHere = nullptr;  // layers frozen in the viewport
  double linetypeFactor = 1;            // paper space linetype scaling inside a viewport
  int depth = 0;                         // blocks entered
  bool inViewport = false;
};

// The resolved look of one entity.
struct Look {
  Pen pen;
  std::vector<double> dashesMm;  // on the page; empty = continuous
};

class DrawingPlotter {
 public:
  DrawingPlotter(const cad::Database& db, PlotCanvas& canvas, const PlotRequest& request, PlotResult& result);
  ~DrawingPlotter();

  // Draws the entities of a space (model space or a layout's paper space), or only `only` of them.
  void drawSpace(const cad::BlockRecord& space, const Matrix3d& toPage,
                 const std::vector<const cad::Entity*>* only = nullptr);

  static double MeanScale(const Matrix3d& m);

 private:
  void drawBlockEntities(const cad::BlockRecord& block, const DrawContext& ctx);
  void drawEntity(const cad::Entity& e, const DrawContext& ctx);
  bool plots(const cad::Entity& e, const DrawContext& ctx) const;
  const cad::Layer* effectiveLayer(const cad::Entity& e, const DrawContext& ctx) const;
  Look lookOf(const cad::Entity& e, const DrawContext& ctx) const;
  DrawContext childContext(const cad::Entity& owner, const DrawContext& ctx, const Matrix3d& toPage) const;

  // Output helpers on drawing coordinates.
  Point2d page(const Matrix3d& m, Point3d p) const;
  bool toPage(const Matrix3d& m, const std::vector<Point3d>& pts, Polyline2d& out) const;
  void strokeWorld(const std::vector<Point3d>& pts, bool closed, const Look& look, const DrawContext& ctx,
                   const Matrix3d* ocs = nullptr);
  void strokePage(const Polyline2d& pts, bool closed, const Look& look);
  // The arc c + u cos t + v sin t, t from t0 to t1, as a curve where the canvas keeps curves; a
  // dashed look is flattened and cut as any line. False when it was left to the caller.
  bool strokeArcWorld(Point3d c, Vector3d u, Vector3d v, double t0, double t1, const Look& look, const DrawContext& ctx);
  double chordTolerance(const DrawContext& ctx) const;

  // Entity kinds (plot_curves.cpp, plot_text.cpp, plot_hatch.cpp, plot_images.cpp, plot_walk.cpp).
  void drawLwPolyline(const cad::LwPolyline& p, const Look& look, const DrawContext& ctx);
  void drawPolyline(const cad::Polyline& p, const Look& look, const DrawContext& ctx);
  void drawWidePolyline(const std::vector<Point2d>& pts, const std::vector<double>& bulges,
                        const std::vector<Vector2d>& widths, bool closed, double z, const Matrix3d& ocsToPage,
                        const Look& look, const DrawContext& ctx);
  void drawQuad(const cad::Entity& e, const Point3d (&corners)[4], const cad::Vector3d& normal, bool face3d,
                std::int16_t invisibleEdges, const Look& look, const DrawContext& ctx);
  template <class T>
  void drawTextEntity(const T& t, const Look& look, const DrawContext& ctx);
  void drawMText(const cad::MText& m, const Look& look, const DrawContext& ctx);
  void drawGlyphLine(const std::vector<ShapedGlyph>& shaped, Point2d origin, Vector2d emX, Vector2d emY, Rgb color);
  void drawHatch(const cad::Hatch& h, const Look& look, const DrawContext& ctx);
  void drawInsert(const cad::Insert& ins, const DrawContext& ctx);
  void drawViewport(const cad::Viewport& vp, bool edge, const Look& look, const DrawContext& ctx);
  template <class T>
  void drawRaster(const T& r, bool wipeout, const DrawContext& ctx);
  void drawLeader(const cad::Leader& l, const Look& look, const DrawContext& ctx);
  bool outlineOf(const cad::Entity& e, const DrawContext& ctx, Polyline2d& out) const;
  cairo_surface_t* picture(const std::string& fileName);

  const cad::Database& db_;
  PlotCanvas& canvas_;
  const PlotRequest& request_;
  PlotResult& result_;
  const cad::Layer* layerZero_ = nullptr;
  double ltscale_ = 1;
  std::int16_t lwDefault_ = 25;
  bool psLtScale_ = true;
  double minPenMm_ = 0.1;       // every line at least this wide; with lineweights off, all lines
  std::size_t work_ = 0;        // entities visited, capped against runaway nesting
  std::size_t maxWork_ = 0;     // the cap, from the drawing's size
  std::size_t gridCopies_ = 0;  // MINSERT copies drawn, capped against runaway grids
  // Counts one entity visit; false, and the run told, once the plot's work is spent.
  bool spend();
  std::map<std::string, cairo_surface_t*> pictures_;  // loaded image files (nullptr = unreadable)
  // The own viewport of each layout drawn, looked up once: a layout may hold many viewports.
  std::map<std::uint64_t, cad::ObjectId> layoutViewports_;
};

// Appends the points of a polyline segment from `a` (not repeated) to `b`: a straight segment gives
// `b`, a bulged one its arc within `tol`.
void AppendBulgeSegment(std::vector<Point2d>& out, Point2d a, Point2d b, double bulge, double tol);

// Image files: PNG through cairo, JPEG through libjpeg; nullptr when unreadable.
cairo_surface_t* LoadPicture(const std::string& path);

}  // namespace tv::render::plot_internal
