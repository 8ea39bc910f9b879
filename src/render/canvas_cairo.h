#pragma once
// The canvas over a cairo surface: PDF and EPS pages in points, raster images in pixels.
#include <cairo.h>

#include <cmath>
#include <memory>
#include <set>
#include <tuple>
#include <vector>

#include "render/plot_canvas.h"

namespace tv::render {

class CairoCanvas final : public PlotCanvas {
 public:
  // `unitsPerMm`: surface units per millimetre (72/25.4 for points, pixels per mm for rasters);
  // `pageHeightMm` turns the page's y up into the surface's y down. Lines are never thinner than
  // `minWidthMm`, so a raster never loses a hairline between its pixels. `crisp` draws lines and
  // areas without antialiasing, so that a pixel is either the pen's colour or untouched (text
  // stays smoothed).
  CairoCanvas(cairo_surface_t* surface, double unitsPerMm, double pageHeightMm, double minWidthMm, bool crisp = false);
  ~CairoCanvas() override;
  CairoCanvas(const CairoCanvas&) = delete;
  CairoCanvas& operator=(const CairoCanvas&) = delete;

  void paintBackground(Rgb color);
  void stroke(const Polyline2d& points, bool closed, Rgb color, double widthMm) override;
  void strokeArc(const PageArc& arc, Rgb color, double widthMm) override;
  void fill(const std::vector<Polyline2d>& rings, Rgb color) override;
  void glyphs(GlyphRun run, bool asOutlines) override;
  void image(cairo_surface_t* picture, const cairo_matrix_t& pixelToPage) override;
  void pushClip(const Polyline2d& polygon) override;
  void popClip() override;
  bool finish(std::string& error) override;

 private:
  // Starts or continues the path of strokes in this pen.
  void beginStroke(Rgb color, double width, std::size_t segments);
  void flushStrokes();
  void flush();
  // The run's face and size on the context.
  void useFontOf(const GlyphRun& run);
  void showGlyphs(const GlyphRun& run);
  void setColor(Rgb c);
  // Notes a point the pending path passes through, for the tolerance of its outline.
  void notePoint(cad::Point2d p);

  cairo_t* cr_;
  double unitsPerMm_;
  double minWidthMm_;
  bool crisp_;
  bool vector_;  // PDF or EPS: paths go out as they are
  bool pdf_;
  // The boxes around the clips pushed, each within the one before; page millimetres.
  struct ClipBox {
    double minX = -HUGE_VAL, minY = -HUGE_VAL, maxX = HUGE_VAL, maxY = HUGE_VAL;
  };
  std::vector<ClipBox> clips_;
  // Strokes of one pen are gathered into one path, and text in the same colour waits beside it:
  // paint of one opaque colour looks the same in any order, so a page of lines, circles and
  // labels in one colour costs one stroke per pen and one text object instead of one of each per
  // entity. Anything in another colour, and every other operation, draws what waits first.
  bool pendingStroke_ = false;
  Rgb pendingColor_;
  double pendingWidth_ = 0;
  std::size_t pendingSegments_ = 0;
  bool pendingInClip_ = false;  // the pending path passes through a point inside the clip
  std::vector<GlyphRun> pendingText_;
  cairo_font_face_t* face_ = nullptr;  // the face last set
  // The faces and sizes of the page's text on a vector page, up to the count past which they are
  // taken for one-off sizes (see finish).
  std::set<std::tuple<const void*, double, double, double, double>> fonts_;
};

}  // namespace tv::render
