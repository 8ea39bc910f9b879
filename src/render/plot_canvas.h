#pragma once
// The drawing surface of the plot engine: a page in millimetres, origin at the lower left corner
// of the paper, y up. The drawing walk speaks only these few operations; each output format has
// its own canvas (cairo for PDF/PNG/JPG/EPS, an HPGL/2 writer for PLT).
#include <cairo.h>

#include <string>
#include <vector>

#include "cad/geometry.h"
#include "render/plot_request.h"

namespace tv::render {

using Polyline2d = std::vector<cad::Point2d>;

// Glyphs of one font, placed on the page.
struct GlyphRun {
  cairo_font_face_t* face = nullptr;  // owned by the font cache, alive for the whole plot
  // Images of the em square's axes on the page (mm per em): x along the baseline, y up.
  cad::Vector2d emX, emY;
  std::vector<cairo_glyph_t> glyphs;  // x, y: the glyph origins on the page, mm
  std::string utf8;                   // the characters, for searchable text
  std::vector<cairo_text_cluster_t> clusters;  // one per character here
  Rgb color;
};

// An arc of an ellipse on the page, the image of a circle's arc under the drawing's transform:
// the points center + u cos t + v sin t for t from `start` up to `end` (at most a turn further).
struct PageArc {
  cad::Point2d center;
  cad::Vector2d u, v;
  double start = 0, end = 0;
  bool closed = false;  // a whole curve, joined where it starts
};

// The arc as chords within `toleranceMm` of it.
Polyline2d ArcPoints(const PageArc& arc, double toleranceMm);

// Curves on paper are flattened within this distance where a format cannot draw them as curves.
inline constexpr double kCurveToleranceMm = 0.05;

class PlotCanvas {
 public:
  virtual ~PlotCanvas() = default;
  // A line through the points, `widthMm` wide with round ends and joins.
  virtual void stroke(const Polyline2d& points, bool closed, Rgb color, double widthMm) = 0;
  // An arc drawn as `stroke` draws a line; formats without curves take its chords.
  virtual void strokeArc(const PageArc& arc, Rgb color, double widthMm) {
    stroke(ArcPoints(arc, kCurveToleranceMm), arc.closed, color, widthMm);
  }
  // The area inside the rings by the even-odd rule.
  virtual void fill(const std::vector<Polyline2d>& rings, Rgb color) = 0;
  // Text: as text where the format keeps text (searchable), else or when asked as outlines.
  virtual void glyphs(GlyphRun run, bool asOutlines) = 0;
  // A picture: `pixelToPage` maps pixel coordinates (x right, y down, pixel corners on integers)
  // onto the page. Formats that cannot carry pictures leave it out.
  virtual void image(cairo_surface_t* picture, const cairo_matrix_t& pixelToPage) = 0;
  // Later drawing stays inside the polygon (and inside every polygon pushed before it).
  virtual void pushClip(const Polyline2d& polygon) = 0;
  virtual void popClip() = 0;
  // Ends the page and writes what is still held; false with a reason when something failed.
  virtual bool finish(std::string& error) = 0;
};

// The outlines of a glyph run on the page, flattened to `toleranceMm`.
std::vector<Polyline2d> GlyphOutlines(const GlyphRun& run, double toleranceMm);

}  // namespace tv::render
