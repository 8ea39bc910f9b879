#include "render/canvas_cairo.h"

#include <algorithm>
#include <cmath>

#include "host/whole_number.h"

namespace tv::render {

namespace {

constexpr std::size_t kMaxBatchSegments = 4096;
// Curves are made into chords or Bézier pieces within this many surface units.
constexpr double kTolerance = 0.05;
// A vector page keeps a stroke's path as it is; the tolerance at the stroke only bounds the outline
// cairo works out for the stroke's extents, at a cost that grows with its fineness.
constexpr double kVectorStrokeTolerance = 0.25;
// A PDF page uses those extents only to leave out a stroke wholly outside the clip, so it takes them
// this many pen radii coarse (cairo draws no line under a pen at four radii or more, and lines are
// never thinner than one point there). That halves the work of the outline; a path with no point
// inside the clip keeps the fine tolerance, since coarse extents could then miss the clip.
constexpr double kPdfStrokeToleranceRadii = 3.5;
constexpr double kPdfMinLineWidth = 1.0;  // points

void FontMatrix(const GlyphRun& run, cairo_matrix_t& m) {
  // Glyph space has y down, the page y up.
  cairo_matrix_init(&m, run.emX.x, run.emX.y, -run.emY.x, -run.emY.y, 0, 0);
}

bool UsableFontMatrix(const GlyphRun& run) {
  const double det = run.emX.x * run.emY.y - run.emX.y * run.emY.x;
  return std::isfinite(det) && std::abs(det) > 1e-18;
}

// Appends the unit circle's arc from angle a to b (b > a) in as few cubic pieces as keep it within
// `tolerance` on a surface where the unit is at most `scale` units long. A piece over the angle t
// strays from the circle by about 1.91e-5 t^6 (exact at a half turn, and above it for less), so a
// circle of a few millimetres takes three pieces where the quarter-turn rule of thumb takes four.
void AddUnitArc(cairo_t* cr, double a, double b, double scale, double tolerance) {
  const double span = b - a;
  const double limit = std::pow(tolerance / (1.91e-5 * std::max(scale, 1e-9)), 1.0 / 6);
  const int pieces = SaturatedInt(std::ceil(span / std::min(limit, kPi)), 1, 1024);
  const double step = span / pieces;
  const double k = 4.0 / 3.0 * std::tan(step / 4);
  double c0 = std::cos(a), s0 = std::sin(a);
  cairo_new_sub_path(cr);
  cairo_move_to(cr, c0, s0);
  for (int i = 1; i <= pieces; ++i) {
    const double t = i == pieces ? b : a + step * i;
    const double c1 = std::cos(t), s1 = std::sin(t);
    cairo_curve_to(cr, c0 - k * s0, s0 + k * c0, c1 + k * s1, s1 - k * c1, c1, s1);
    c0 = c1;
    s0 = s1;
  }
}

// cairo keeps this many released scaled fonts, with the glyphs they loaded, in case they are asked
// for again.
constexpr std::size_t kHeldOverFonts = 256;

// After a page of more text sizes than cairo holds over, the fonts it holds are one-off sizes that
// the next page will not ask for, yet their glyphs take up room in cairo's glyph cache, which the
// next page needs for the glyphs it looks up again on writing: with fewer free, more of those are
// dropped and loaded from the font file a second time. Releasing as many fonts of an empty private
// face, which load no glyphs, makes cairo let go of the held ones.
void ReleaseHeldOverFonts() {
  static cairo_font_face_t* const empty = cairo_user_font_face_create();  // kept to the end, like the text faces
  cairo_font_options_t* options = cairo_font_options_create();
  const cairo_matrix_t identity{1, 0, 0, 1, 0, 0};
  for (std::size_t i = 0; i < kHeldOverFonts; ++i) {
    cairo_matrix_t size;
    cairo_matrix_init_scale(&size, static_cast<double>(i + 1), static_cast<double>(i + 1));
    cairo_scaled_font_destroy(cairo_scaled_font_create(empty, &size, &identity, options));
  }
  cairo_font_options_destroy(options);
}

void AddRings(cairo_t* cr, const std::vector<Polyline2d>& rings) {
  for (const auto& ring : rings) {
    if (ring.size() < 2) continue;
    cairo_move_to(cr, ring[0].x, ring[0].y);
    for (std::size_t i = 1; i < ring.size(); ++i) cairo_line_to(cr, ring[i].x, ring[i].y);
    cairo_close_path(cr);
  }
}

}  // namespace

CairoCanvas::CairoCanvas(cairo_surface_t* surface, double unitsPerMm, double pageHeightMm, double minWidthMm, bool crisp)
    : cr_(cairo_create(surface)),
      unitsPerMm_(unitsPerMm),
      minWidthMm_(minWidthMm),
      crisp_(crisp),
      vector_(cairo_surface_get_type(surface) != CAIRO_SURFACE_TYPE_IMAGE),
      pdf_(cairo_surface_get_type(surface) == CAIRO_SURFACE_TYPE_PDF) {
  if (crisp) cairo_set_antialias(cr_, CAIRO_ANTIALIAS_NONE);
  cairo_translate(cr_, 0, pageHeightMm * unitsPerMm);
  cairo_scale(cr_, unitsPerMm, -unitsPerMm);
  cairo_set_line_cap(cr_, CAIRO_LINE_CAP_ROUND);
  cairo_set_line_join(cr_, CAIRO_LINE_JOIN_ROUND);
  cairo_set_tolerance(cr_, kTolerance);
  // Glyphs keep their outlines as designed, unhinted, at every size.
  cairo_font_options_t* options = cairo_font_options_create();
  cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
  cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
  cairo_set_font_options(cr_, options);
  cairo_font_options_destroy(options);
}

CairoCanvas::~CairoCanvas() { cairo_destroy(cr_); }

void CairoCanvas::setColor(Rgb c) { cairo_set_source_rgb(cr_, c.r / 255.0, c.g / 255.0, c.b / 255.0); }

void CairoCanvas::paintBackground(Rgb color) {
  flush();
  cairo_save(cr_);
  setColor(color);
  cairo_paint(cr_);
  cairo_restore(cr_);
}

void CairoCanvas::flushStrokes() {
  if (!pendingStroke_) return;
  setColor(pendingColor_);
  cairo_set_line_width(cr_, pendingWidth_);
  // Finer than the pen's radius, so that the outline keeps the pen's round shape and extents.
  double tolerance = std::clamp(pendingWidth_ * unitsPerMm_ / 2, kTolerance, kVectorStrokeTolerance);
  if (pdf_ && pendingInClip_)
    tolerance = kPdfStrokeToleranceRadii * std::max(pendingWidth_ * unitsPerMm_, kPdfMinLineWidth) / 2;
  if (vector_) cairo_set_tolerance(cr_, tolerance);
  // The path is already held in surface units and the pen is round: stroked under the page's scale
  // without its flip it has the same outline, and a vector page then writes it as it is instead of
  // inside a flipping transform, every y without its minus sign.
  cairo_matrix_t page;
  cairo_get_matrix(cr_, &page);
  cairo_matrix_t unflipped;
  cairo_matrix_init_scale(&unflipped, unitsPerMm_, unitsPerMm_);
  cairo_set_matrix(cr_, &unflipped);
  cairo_stroke(cr_);
  cairo_set_matrix(cr_, &page);
  if (vector_) cairo_set_tolerance(cr_, kTolerance);
  pendingStroke_ = false;
  pendingInClip_ = false;
  pendingSegments_ = 0;
}

void CairoCanvas::notePoint(cad::Point2d p) {
  if (pendingInClip_) return;
  if (clips_.empty()) {
    pendingInClip_ = true;
    return;
  }
  const ClipBox& box = clips_.back();
  pendingInClip_ = p.x > box.minX && p.x < box.maxX && p.y > box.minY && p.y < box.maxY;
}

void CairoCanvas::flush() {
  flushStrokes();
  if (pendingText_.empty()) return;
  setColor(pendingText_.front().color);
  if (crisp_) cairo_set_antialias(cr_, CAIRO_ANTIALIAS_DEFAULT);
  for (const GlyphRun& run : pendingText_) showGlyphs(run);
  if (crisp_) cairo_set_antialias(cr_, CAIRO_ANTIALIAS_NONE);
  pendingText_.clear();
}

void CairoCanvas::beginStroke(Rgb color, double width, std::size_t segments) {
  const bool otherColor = (pendingStroke_ || !pendingText_.empty()) &&
                          !(color == (pendingStroke_ ? pendingColor_ : pendingText_.front().color));
  if (otherColor) flush();
  else if (pendingStroke_ && (pendingWidth_ != width || pendingSegments_ > kMaxBatchSegments)) flushStrokes();
  pendingStroke_ = true;
  pendingColor_ = color;
  pendingWidth_ = width;
  pendingSegments_ += segments;
}

void CairoCanvas::stroke(const Polyline2d& points, bool closed, Rgb color, double widthMm) {
  if (points.empty()) return;
  beginStroke(color, std::max(widthMm, minWidthMm_), points.size());
  for (const auto& p : points) {
    if (pendingInClip_) break;
    notePoint(p);
  }
  cairo_move_to(cr_, points[0].x, points[0].y);
  if (points.size() == 1) cairo_line_to(cr_, points[0].x, points[0].y);  // a dot
  for (std::size_t i = 1; i < points.size(); ++i) cairo_line_to(cr_, points[i].x, points[i].y);
  if (closed) cairo_close_path(cr_);
}

void CairoCanvas::strokeArc(const PageArc& arc, Rgb color, double widthMm) {
  // The unit circle mapped onto the arc's axes; a flat or broken mapping is drawn by its chords.
  const double det = arc.u.x * arc.v.y - arc.u.y * arc.v.x;
  const double size = std::max(arc.u.length(), arc.v.length());
  if (!std::isfinite(det) || !(std::abs(det) > 1e-9 * size * size) || !(arc.end > arc.start)) {
    PlotCanvas::strokeArc(arc, color, widthMm);
    return;
  }
  beginStroke(color, std::max(widthMm, minWidthMm_), 4);
  notePoint(arc.center + arc.u * std::cos(arc.start) + arc.v * std::sin(arc.start));
  cairo_matrix_t saved;
  cairo_get_matrix(cr_, &saved);
  cairo_matrix_t onPage;
  cairo_matrix_init(&onPage, arc.u.x, arc.u.y, arc.v.x, arc.v.y, arc.center.x, arc.center.y);
  cairo_transform(cr_, &onPage);
  // On a vector page as close as the chords that other formats draw; on pixels as fine as cairo's own.
  const double tolerance = vector_ ? kCurveToleranceMm * unitsPerMm_ : kTolerance;
  // The longest the mapping makes a unit vector: the radius of a circle, the major semi-axis of an ellipse.
  const double sum = arc.u.x * arc.u.x + arc.u.y * arc.u.y + arc.v.x * arc.v.x + arc.v.y * arc.v.y;
  const double stretch = std::sqrt((sum + std::sqrt(std::max(sum * sum - 4 * det * det, 0.0))) / 2);
  AddUnitArc(cr_, arc.start, arc.end, stretch * unitsPerMm_, tolerance);
  if (arc.closed) cairo_close_path(cr_);
  // The path is kept on the page: the pen's width stays that of the page.
  cairo_set_matrix(cr_, &saved);
}

void CairoCanvas::fill(const std::vector<Polyline2d>& rings, Rgb color) {
  flush();
  AddRings(cr_, rings);
  cairo_set_fill_rule(cr_, CAIRO_FILL_RULE_EVEN_ODD);
  setColor(color);
  cairo_fill(cr_);
}

void CairoCanvas::useFontOf(const GlyphRun& run) {
  if (run.face != face_) {
    cairo_set_font_face(cr_, run.face);
    face_ = run.face;
  }
  cairo_matrix_t m;
  FontMatrix(run, m);
  cairo_set_font_matrix(cr_, &m);
  if (vector_ && fonts_.size() <= kHeldOverFonts) fonts_.emplace(run.face, m.xx, m.yx, m.xy, m.yy);
}

void CairoCanvas::showGlyphs(const GlyphRun& run) {
  useFontOf(run);
  const int count = static_cast<int>(run.glyphs.size());
  if (!run.clusters.empty()) {
    cairo_show_text_glyphs(cr_, run.utf8.data(), static_cast<int>(run.utf8.size()), run.glyphs.data(), count,
                           run.clusters.data(), static_cast<int>(run.clusters.size()), cairo_text_cluster_flags_t{});
  } else {
    cairo_show_glyphs(cr_, run.glyphs.data(), count);
  }
}

void CairoCanvas::glyphs(GlyphRun run, bool asOutlines) {
  if (run.glyphs.empty() || !run.face || !UsableFontMatrix(run)) return;
  if (asOutlines) {
    flush();
    useFontOf(run);
    setColor(run.color);
    if (crisp_) cairo_set_antialias(cr_, CAIRO_ANTIALIAS_DEFAULT);
    cairo_glyph_path(cr_, run.glyphs.data(), static_cast<int>(run.glyphs.size()));
    cairo_set_fill_rule(cr_, CAIRO_FILL_RULE_WINDING);
    cairo_fill(cr_);
    if (crisp_) cairo_set_antialias(cr_, CAIRO_ANTIALIAS_NONE);
    return;
  }
  const bool otherColor = (pendingStroke_ || !pendingText_.empty()) &&
                          !(run.color == (pendingStroke_ ? pendingColor_ : pendingText_.front().color));
  if (otherColor || pendingText_.size() >= kMaxBatchSegments) flush();
  pendingText_.push_back(std::move(run));
}

void CairoCanvas::image(cairo_surface_t* picture, const cairo_matrix_t& pixelToPage) {
  if (!picture) return;
  cairo_matrix_t inverse = pixelToPage;
  if (cairo_matrix_invert(&inverse) != CAIRO_STATUS_SUCCESS) return;
  flush();
  cairo_save(cr_);
  cairo_transform(cr_, &pixelToPage);
  cairo_set_source_surface(cr_, picture, 0, 0);
  cairo_pattern_set_filter(cairo_get_source(cr_), CAIRO_FILTER_GOOD);
  cairo_rectangle(cr_, 0, 0, cairo_image_surface_get_width(picture), cairo_image_surface_get_height(picture));
  cairo_fill(cr_);
  cairo_restore(cr_);
}

void CairoCanvas::pushClip(const Polyline2d& polygon) {
  flush();
  ClipBox box = clips_.empty() ? ClipBox{} : clips_.back();
  if (!polygon.empty()) {
    ClipBox own{polygon[0].x, polygon[0].y, polygon[0].x, polygon[0].y};
    for (const auto& p : polygon) {
      own.minX = std::min(own.minX, p.x), own.maxX = std::max(own.maxX, p.x);
      own.minY = std::min(own.minY, p.y), own.maxY = std::max(own.maxY, p.y);
    }
    box = {std::max(box.minX, own.minX), std::max(box.minY, own.minY), std::min(box.maxX, own.maxX),
           std::min(box.maxY, own.maxY)};
  }
  clips_.push_back(box);
  cairo_save(cr_);
  AddRings(cr_, {polygon});
  cairo_set_fill_rule(cr_, CAIRO_FILL_RULE_EVEN_ODD);
  cairo_clip(cr_);
}

void CairoCanvas::popClip() {
  flush();
  if (!clips_.empty()) clips_.pop_back();
  cairo_restore(cr_);
}

bool CairoCanvas::finish(std::string& error) {
  flush();
  cairo_surface_t* surface = cairo_get_target(cr_);
  if (cairo_surface_get_type(surface) == CAIRO_SURFACE_TYPE_IMAGE) {
    cairo_surface_flush(surface);  // the pixels are written out by the caller
  } else {
    cairo_show_page(cr_);
    cairo_surface_finish(surface);
    if (fonts_.size() > kHeldOverFonts) ReleaseHeldOverFonts();
  }
  const cairo_status_t status = cairo_surface_status(surface);
  if (status != CAIRO_STATUS_SUCCESS) {
    error = cairo_status_to_string(status);
    return false;
  }
  return true;
}

std::vector<Polyline2d> GlyphOutlines(const GlyphRun& run, double toleranceMm) {
  std::vector<Polyline2d> rings;
  if (run.glyphs.empty() || !run.face || !UsableFontMatrix(run)) return rings;
  // An unbounded surface: on a bounded one cairo leaves out the glyphs that fall outside it.
  cairo_surface_t* scratch = cairo_recording_surface_create(CAIRO_CONTENT_ALPHA, nullptr);
  cairo_t* cr = cairo_create(scratch);
  cairo_set_tolerance(cr, toleranceMm > 0 ? toleranceMm : 0.02);
  cairo_set_font_face(cr, run.face);
  cairo_matrix_t m;
  FontMatrix(run, m);
  cairo_set_font_matrix(cr, &m);
  cairo_glyph_path(cr, run.glyphs.data(), static_cast<int>(run.glyphs.size()));
  cairo_path_t* path = cairo_copy_path_flat(cr);
  if (path && path->status == CAIRO_STATUS_SUCCESS) {
    for (int i = 0; i < path->num_data; i += path->data[i].header.length) {
      const cairo_path_data_t& d = path->data[i];
      switch (d.header.type) {
        case CAIRO_PATH_MOVE_TO: rings.push_back({{path->data[i + 1].point.x, path->data[i + 1].point.y}}); break;
        case CAIRO_PATH_LINE_TO:
          if (rings.empty()) rings.emplace_back();
          rings.back().push_back({path->data[i + 1].point.x, path->data[i + 1].point.y});
          break;
        default: break;  // closing is implied by filling; curves do not occur in a flat path
      }
    }
  }
  cairo_path_destroy(path);
  cairo_destroy(cr);
  cairo_surface_destroy(scratch);
  std::erase_if(rings, [](const Polyline2d& r) { return r.size() < 3; });
  return rings;
}

}  // namespace tv::render
