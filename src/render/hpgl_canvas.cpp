#include "render/hpgl_canvas.h"

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "render/plot_shapes.h"

namespace tv::render {

namespace {

constexpr double kUnitsPerMm = 40;  // plotter units of 0.025 mm
constexpr int kMaxPens = 255;

long Units(double mm) { return std::lround(mm * kUnitsPerMm); }

Polyline2d BoundingRectangle(const Polyline2d& p) {
  double x0 = 1e300, y0 = 1e300, x1 = -1e300, y1 = -1e300;
  for (auto q : p) {
    x0 = std::min(x0, q.x), y0 = std::min(y0, q.y);
    x1 = std::max(x1, q.x), y1 = std::max(y1, q.y);
  }
  return {{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}};
}

}  // namespace

HpglCanvas::HpglCanvas(std::string path, double pageWidthMm, double pageHeightMm)
    : path_(std::move(path)), widthMm_(pageWidthMm), heightMm_(pageHeightMm) {}

int HpglCanvas::pen(Rgb color, double widthMm) {
  const long micro = std::lround(widthMm * 1000);
  const auto key = std::make_tuple(int{color.r}, int{color.g}, int{color.b}, micro);
  if (auto it = pens_.find(key); it != pens_.end()) return it->second;
  if (static_cast<int>(penList_.size()) >= kMaxPens) {
    // Out of pens: the nearest colour of the same kind will do.
    return 1;
  }
  penList_.emplace_back(color, widthMm);
  const int number = static_cast<int>(penList_.size());
  pens_.emplace(key, number);
  return number;
}

void HpglCanvas::polyline(const Polyline2d& points) {
  if (points.empty()) return;
  body_ << "PU" << Units(points[0].x) << ',' << Units(points[0].y) << ";PD";
  if (points.size() == 1) {
    body_ << Units(points[0].x) << ',' << Units(points[0].y);
  } else {
    for (std::size_t i = 1; i < points.size(); ++i) body_ << (i > 1 ? "," : "") << Units(points[i].x) << ',' << Units(points[i].y);
  }
  body_ << ";\n";
}

void HpglCanvas::ring(const Polyline2d& points) {
  Polyline2d closed = points;
  closed.push_back(points.front());
  polyline(closed);
}

void HpglCanvas::stroke(const Polyline2d& points, bool closed, Rgb color, double widthMm) {
  if (points.empty() || !AllFinite(points)) return;
  Polyline2d line = points;
  if (closed && line.size() > 1) line.push_back(line.front());
  std::vector<Polyline2d> pieces{std::move(line)};
  for (const auto& clip : clips_) {
    std::vector<Polyline2d> kept;
    for (const auto& p : pieces)
      for (auto& q : ClipLineToPolygon(p, clip)) kept.push_back(std::move(q));
    pieces = std::move(kept);
  }
  if (pieces.empty()) return;
  const int p = pen(color, widthMm);
  if (p != currentPen_) {
    body_ << "SP" << p << ";\n";
    currentPen_ = p;
  }
  for (const auto& piece : pieces) polyline(piece);
}

void HpglCanvas::fill(const std::vector<Polyline2d>& rings, Rgb color) {
  std::vector<Polyline2d> kept;
  for (const auto& r : rings) {
    if (r.size() < 3 || !AllFinite(r)) continue;
    Polyline2d piece = r;
    for (const auto& clip : clips_) {
      piece = ClipPolygonToConvex(piece, IsConvex(clip) ? clip : BoundingRectangle(clip));
      if (piece.empty()) break;
    }
    if (!piece.empty()) kept.push_back(std::move(piece));
  }
  if (kept.empty()) return;
  const int p = pen(color, 0.1);
  if (p != currentPen_) {
    body_ << "SP" << p << ";\n";
    currentPen_ = p;
  }
  body_ << "PU" << Units(kept[0][0].x) << ',' << Units(kept[0][0].y) << ";PM0;\n";
  for (std::size_t i = 0; i < kept.size(); ++i) {
    if (i > 0) body_ << "PM1;\n";
    ring(kept[i]);
  }
  body_ << "PM2;FP0;\n";
}

void HpglCanvas::glyphs(GlyphRun run, bool) {
  const auto outlines = GlyphOutlines(run, 0.02);
  if (!outlines.empty()) fill(outlines, run.color);
}

void HpglCanvas::image(cairo_surface_t*, const cairo_matrix_t&) {}

void HpglCanvas::pushClip(const Polyline2d& polygon) { clips_.push_back(polygon); }

void HpglCanvas::popClip() {
  if (!clips_.empty()) clips_.pop_back();
}

bool HpglCanvas::finish(std::string& error) {
  std::ofstream out(path_, std::ios::binary | std::ios::trunc);
  if (!out) {
    error = "cannot open";
    return false;
  }
  out << "\x1b%-1BBP;IN;\n";
  out << "PS" << Units(widthMm_) << ',' << Units(heightMm_) << ";\n";
  out << "WU0;\n";  // pen widths in millimetres
  out << "NP" << std::max<std::size_t>(penList_.size(), 1) << ";\n";
  for (std::size_t i = 0; i < penList_.size(); ++i) {
    const auto& [c, w] = penList_[i];
    out << "PC" << i + 1 << ',' << int{c.r} << ',' << int{c.g} << ',' << int{c.b} << ";PW" << std::round(w * 1000) / 1000 << ','
        << i + 1 << ";\n";
  }
  out << body_.str();
  out << "PU;SP0;PG;\x1b%-12345X";
  out.flush();
  if (!out) {
    error = "write failed";
    return false;
  }
  return true;
}

}  // namespace tv::render
