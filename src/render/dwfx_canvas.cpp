#include "render/dwfx_canvas.h"

#include <charconv>
#include <cmath>
#include <cstdio>

namespace tv::render {

namespace {

constexpr double kUnitsPerMm = 96 / 25.4;  // XPS measures in 1/96 inch
// The thinnest line on the page: a zero-width pen would vanish in some viewers.
constexpr double kMinWidthMm = 0.1;

void Append(std::string& out, double v) {
  char text[32];
  const auto [end, ec] = std::to_chars(text, text + sizeof text, v, std::chars_format::fixed, 2);
  std::size_t n = static_cast<std::size_t>(end - text);
  if (ec != std::errc()) n = static_cast<std::size_t>(std::snprintf(text, sizeof text, "0"));
  // "12.50" -> "12.5", "3.00" -> "3": pages of many lines stay smaller.
  if (std::string_view(text, n).find('.') != std::string_view::npos) {
    while (n > 0 && text[n - 1] == '0') --n;
    if (n > 0 && text[n - 1] == '.') --n;
  }
  if (n == 2 && text[0] == '-' && text[1] == '0') text[0] = '0', n = 1;
  out.append(text, n);
}

// Transform factors: six significant digits.
void AppendFine(std::string& out, double v) {
  char text[32];
  const auto [end, ec] = std::to_chars(text, text + sizeof text, v, std::chars_format::general, 6);
  out.append(text, ec == std::errc() ? static_cast<std::size_t>(end - text) : 0);
  if (ec != std::errc()) out += '0';
}

std::string Color(Rgb c) {
  char text[8];
  std::snprintf(text, sizeof text, "#%02X%02X%02X", c.r, c.g, c.b);
  return text;
}

cairo_status_t CollectPng(void* closure, const unsigned char* data, unsigned int length) {
  static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
  return CAIRO_STATUS_SUCCESS;
}

}  // namespace

DwfxCanvas::DwfxCanvas(std::string path, double pageWidthMm, double pageHeightMm, Rgb background)
    : path_(std::move(path)), heightMm_(pageHeightMm) {
  page_.widthUnits = pageWidthMm * kUnitsPerMm;
  page_.heightUnits = pageHeightMm * kUnitsPerMm;
  page_.markup.reserve(1 << 16);
  page_.markup += "<FixedPage xmlns=\"http://schemas.microsoft.com/xps/2005/06\" Width=\"";
  Append(page_.markup, page_.widthUnits);
  page_.markup += "\" Height=\"";
  Append(page_.markup, page_.heightUnits);
  page_.markup += "\" xml:lang=\"und\">\n";
  fill({{{0, 0}, {pageWidthMm, 0}, {pageWidthMm, pageHeightMm}, {0, pageHeightMm}}}, background);
}

void DwfxCanvas::point(std::string& data, cad::Point2d p) const {
  Append(data, p.x * kUnitsPerMm);
  data += ',';
  Append(data, (heightMm_ - p.y) * kUnitsPerMm);
}

void DwfxCanvas::figure(std::string& data, const Polyline2d& points, bool closed) const {
  if (points.empty()) return;
  data += data.empty() ? "M " : " M ";
  point(data, points[0]);
  data += " L ";
  if (points.size() == 1) point(data, points[0]);  // a dot: the round caps draw it
  for (std::size_t i = 1; i < points.size(); ++i) {
    if (i > 1) data += ' ';
    point(data, points[i]);
  }
  if (closed) data += " Z";
}

void DwfxCanvas::flushStrokes() {
  if (pendingData_.empty()) return;
  page_.markup += "<Path Data=\"";
  page_.markup += pendingData_;
  page_.markup += "\" Stroke=\"" + Color(pendingColor_) + "\" StrokeThickness=\"";
  Append(page_.markup, pendingWidth_ * kUnitsPerMm);
  page_.markup += "\" StrokeLineJoin=\"Round\" StrokeStartLineCap=\"Round\" StrokeEndLineCap=\"Round\"/>\n";
  pendingData_.clear();
}

void DwfxCanvas::stroke(const Polyline2d& points, bool closed, Rgb color, double widthMm) {
  if (points.empty()) return;
  const double width = std::max(widthMm, kMinWidthMm);
  if (!pendingData_.empty() && (!(color == pendingColor_) || width != pendingWidth_)) flushStrokes();
  pendingColor_ = color;
  pendingWidth_ = width;
  figure(pendingData_, points, closed);
}

void DwfxCanvas::fill(const std::vector<Polyline2d>& rings, Rgb color) {
  std::string data = "F0";  // even-odd
  const std::size_t bare = data.size();
  for (const Polyline2d& ring : rings)
    if (ring.size() >= 3) figure(data, ring, true);
  if (data.size() == bare) return;
  flushStrokes();
  page_.markup += "<Path Data=\"" + data + "\" Fill=\"" + Color(color) + "\"/>\n";
}

const std::string& DwfxCanvas::glyphOutline(cairo_font_face_t* face, unsigned long index) {
  const auto key = std::make_pair(static_cast<const void*>(face), index);
  if (auto it = outlines_.find(key); it != outlines_.end()) return it->second;
  // In thousandths of an em, y down, origin on the glyph's origin; on an unbounded surface so that
  // no outline is cut.
  std::string data = "F1";
  cairo_surface_t* scratch = cairo_recording_surface_create(CAIRO_CONTENT_ALPHA, nullptr);
  cairo_t* cr = cairo_create(scratch);
  cairo_set_font_face(cr, face);
  cairo_set_font_size(cr, kGlyphUnits);
  const cairo_glyph_t glyph{index, 0, 0};
  cairo_glyph_path(cr, &glyph, 1);
  cairo_path_t* path = cairo_copy_path(cr);
  const auto add = [&](const cairo_path_data_t& p) {
    data += std::to_string(std::lround(p.point.x));
    data += ',';
    data += std::to_string(std::lround(p.point.y));
  };
  if (path && path->status == CAIRO_STATUS_SUCCESS) {
    for (int i = 0; i < path->num_data; i += path->data[i].header.length) {
      const cairo_path_data_t* d = &path->data[i];
      switch (d->header.type) {
        case CAIRO_PATH_MOVE_TO: data += " M "; add(d[1]); break;
        case CAIRO_PATH_LINE_TO: data += " L "; add(d[1]); break;
        case CAIRO_PATH_CURVE_TO:
          data += " C ";
          add(d[1]);
          data += ' ';
          add(d[2]);
          data += ' ';
          add(d[3]);
          break;
        case CAIRO_PATH_CLOSE_PATH: data += " Z"; break;
      }
    }
  }
  cairo_path_destroy(path);
  cairo_destroy(cr);
  cairo_surface_destroy(scratch);
  if (data.size() <= 2) data.clear();  // a space: nothing to paint
  return outlines_.emplace(key, std::move(data)).first->second;
}

void DwfxCanvas::glyphs(GlyphRun run, bool /*asOutlines*/) {
  const double det = run.emX.x * run.emY.y - run.emX.y * run.emY.x;
  if (run.glyphs.empty() || !run.face || !std::isfinite(det) || std::abs(det) < 1e-18) return;
  flushStrokes();
  // Each glyph is its outline in glyph units, placed by a transform: a glyph drawn many times is
  // the same text each time, which the package's compression takes almost for free.
  const double k = kUnitsPerMm / kGlyphUnits;
  const double m11 = k * run.emX.x, m12 = -k * run.emX.y, m21 = -k * run.emY.x, m22 = k * run.emY.y;
  const std::string fill = "\" Fill=\"" + Color(run.color) + "\"/>\n";
  for (const cairo_glyph_t& g : run.glyphs) {
    const std::string& outline = glyphOutline(run.face, g.index);
    if (outline.empty()) continue;
    std::string& out = page_.markup;
    out += "<Path Data=\"";
    out += outline;
    out += "\" RenderTransform=\"";
    AppendFine(out, m11);
    out += ',';
    AppendFine(out, m12);
    out += ',';
    AppendFine(out, m21);
    out += ',';
    AppendFine(out, m22);
    out += ',';
    Append(out, g.x * kUnitsPerMm);
    out += ',';
    Append(out, (heightMm_ - g.y) * kUnitsPerMm);
    out += fill;
  }
}

void DwfxCanvas::image(cairo_surface_t* picture, const cairo_matrix_t& m) {
  if (!picture || cairo_surface_get_type(picture) != CAIRO_SURFACE_TYPE_IMAGE) return;
  const int w = cairo_image_surface_get_width(picture), h = cairo_image_surface_get_height(picture);
  if (w <= 0 || h <= 0) return;
  XpsResource png{std::to_string(page_.resources.size() + 1) + ".png", {}};
  if (cairo_surface_write_to_png_stream(picture, CollectPng, &png.bytes) != CAIRO_STATUS_SUCCESS) return;
  flushStrokes();
  // Pixels to page millimetres (y up), then to page units (y down).
  const double k = kUnitsPerMm;
  std::string t;
  for (double v : {k * m.xx, -k * m.yx, k * m.xy, -k * m.yy, k * m.x0, k * (heightMm_ - m.y0)}) {
    if (!t.empty()) t += ',';
    Append(t, v);
  }
  const std::string size = std::to_string(w) + "," + std::to_string(h);
  page_.markup += "<Path Data=\"M 0,0 L " + std::to_string(w) + ",0 " + size + " 0," + std::to_string(h) +
           " Z\" RenderTransform=\"" + t + "\"><Path.Fill><ImageBrush ImageSource=\"" +
           XpsResourceUri(page_.number, png.name) + "\" Viewbox=\"0,0," + size +
           "\" ViewboxUnits=\"Absolute\" Viewport=\"0,0," + size +
           "\" ViewportUnits=\"Absolute\" TileMode=\"None\"/></Path.Fill></Path>\n";
  page_.resources.push_back(std::move(png));
}

void DwfxCanvas::pushClip(const Polyline2d& polygon) {
  flushStrokes();
  std::string data;
  figure(data, polygon, true);
  if (data.empty()) data = "M 0,0 L 0,0 Z";  // nothing gets through
  page_.markup += "<Canvas Clip=\"" + data + "\">\n";
  ++clipDepth_;
}

void DwfxCanvas::popClip() {
  if (clipDepth_ == 0) return;
  flushStrokes();
  page_.markup += "</Canvas>\n";
  --clipDepth_;
}

bool DwfxCanvas::finish(std::string& error) {
  while (clipDepth_ > 0) popClip();
  flushStrokes();
  page_.markup += "</FixedPage>\n";
  std::vector<XpsPage> pages;
  pages.push_back(std::move(page_));
  return WriteXpsPackage(path_, std::move(pages), error);
}

}  // namespace tv::render
