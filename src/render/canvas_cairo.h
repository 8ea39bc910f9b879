#pragma once
// The canvas over a cairo surface: PDF and EPS pages in points, raster images in pixels.
#include <cairo.h>

#include <memory>

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
  void fill(const std::vector<Polyline2d>& rings, Rgb color) override;
  void glyphs(const GlyphRun& run, bool asOutlines) override;
  void image(cairo_surface_t* picture, const cairo_matrix_t& pixelToPage) override;
  void pushClip(const Polyline2d& polygon) override;
  void popClip() override;
  bool finish(std::string& error) override;

 private:
  void flush();
  void setColor(Rgb c);

  cairo_t* cr_;
  double minWidthMm_;
  // Strokes of one pen are gathered into one path: a drawing of many short lines then costs one
  // stroke per pen change instead of one per line.
  bool pending_ = false;
  Rgb pendingColor_;
  double pendingWidth_ = 0;
  std::size_t pendingSegments_ = 0;
};

}  // namespace tv::render
