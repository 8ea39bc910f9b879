#pragma once
// The canvas of PLT files: HPGL/2 with a pen per colour and width (NP, PC, PW), polylines as
// PU/PD, areas in polygon mode (PM, FP) and text as filled outlines. Clipping is done here, on
// the geometry, since HPGL/2 can only clip to a rectangle.
#include <map>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "render/plot_canvas.h"

namespace tv::render {

class HpglCanvas final : public PlotCanvas {
 public:
  HpglCanvas(std::string path, double pageWidthMm, double pageHeightMm);

  void stroke(const Polyline2d& points, bool closed, Rgb color, double widthMm) override;
  void fill(const std::vector<Polyline2d>& rings, Rgb color) override;
  void glyphs(GlyphRun run, bool asOutlines) override;
  void image(cairo_surface_t* picture, const cairo_matrix_t& pixelToPage) override;
  void pushClip(const Polyline2d& polygon) override;
  void popClip() override;
  bool finish(std::string& error) override;

 private:
  int pen(Rgb color, double widthMm);
  void polyline(const Polyline2d& points);
  void ring(const Polyline2d& points);

  std::string path_;
  double widthMm_, heightMm_;
  std::ostringstream body_;
  std::map<std::tuple<int, int, int, long>, int> pens_;  // colour and width in µm to pen number
  std::vector<std::tuple<Rgb, double>> penList_;
  int currentPen_ = 0;
  std::vector<Polyline2d> clips_;
};

}  // namespace tv::render
