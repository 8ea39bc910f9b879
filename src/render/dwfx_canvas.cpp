#include "render/dwfx_canvas.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <map>
#include <string>
#include <string_view>

#include "cad/utf8.h"
#include "render/font_subset.h"
#include "render/plot_fonts.h"

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
  v += 0.0;  // -0 becomes 0
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

// Glyphs are laid out in hundredths of an em: the unit of their advances.
constexpr double kEmHundredths = 100;
// How far (hundredths of an em) a glyph may stray from its line and still be part of it.
constexpr double kOffLine = 0.5;

double Hundredths(double v) { return std::round(v * 100) / 100; }

// A character (or a few) and the glyphs that show it.
struct Cluster {
  std::size_t glyph = 0, glyphs = 0;  // the first glyph, the count
  std::size_t byte = 0, bytes = 0;    // the characters in the run's UTF-8
  int units = 0;                      // UTF-16 code units of the characters
};

// The run's clusters; empty when they don't cover its text and glyphs exactly, or the text holds
// what XML can't carry, so the run is written without its text.
std::vector<Cluster> Clusters(const GlyphRun& run) {
  std::vector<Cluster> out;
  std::size_t glyph = 0, byte = 0;
  for (const cairo_text_cluster_t& c : run.clusters) {
    if (c.num_bytes <= 0 || c.num_glyphs <= 0) return {};
    Cluster cl{glyph, static_cast<std::size_t>(c.num_glyphs), byte, static_cast<std::size_t>(c.num_bytes), 0};
    if (cl.byte + cl.bytes > run.utf8.size() || cl.glyph + cl.glyphs > run.glyphs.size()) return {};
    const std::string_view text = std::string_view(run.utf8).substr(cl.byte, cl.bytes);
    for (std::size_t i = 0; i < text.size();) {
      const std::size_t at = i;
      const char32_t cp = cad::NextCodePoint(text, i);
      if (cp == 0xFFFD && text.substr(at, i - at) != "\xEF\xBF\xBD") return {};  // not UTF-8
      const bool allowed = cp == 0x9 || cp == 0xA || cp == 0xD || (cp >= 0x20 && cp < 0xD800) ||
                           (cp >= 0xE000 && cp < 0xFFFE) || (cp >= 0x10000 && cp <= 0x10FFFF);
      if (!allowed) return {};
      cl.units += cp >= 0x10000 ? 2 : 1;
    }
    glyph += cl.glyphs;
    byte += cl.bytes;
    out.push_back(cl);
  }
  if (glyph != run.glyphs.size() || byte != run.utf8.size()) return {};
  return out;
}

void AppendEscaped(std::string& out, std::string_view text) {
  for (char c : text) {
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      case '\t': out += "&#9;"; break;
      case '\n': out += "&#10;"; break;
      case '\r': out += "&#13;"; break;
      default:
        // Other control characters can't stand in XML: one replacement character each, so that
        // the text keeps its length.
        if (static_cast<unsigned char>(c) < 0x20) out += "\xEF\xBF\xBD";
        else out += c;
    }
  }
}

// A glyph id goes into the page as a mark until the page's fonts are cut, which renumbers their
// glyphs: "\x01FONT:ID\x02". No other control character reaches the markup.
void AppendGlyphMark(std::string& out, std::size_t font, unsigned glyph) {
  out += '\x01';
  out += std::to_string(font);
  out += ':';
  out += std::to_string(glyph);
  out += '\x02';
}

std::string ResolveGlyphMarks(const std::string& markup, const std::map<std::size_t, std::map<unsigned, unsigned>>& ids) {
  std::string out;
  out.reserve(markup.size());
  std::size_t done = 0;
  for (std::size_t at = markup.find('\x01'); at != std::string::npos; at = markup.find('\x01', done)) {
    out.append(markup, done, at - done);
    const std::size_t end = markup.find('\x02', at);
    const std::size_t colon = markup.find(':', at);
    if (end == std::string::npos || colon > end) {
      done = at;
      break;
    }
    const auto font = static_cast<std::size_t>(std::stoul(markup.substr(at + 1, colon - at - 1)));
    const auto glyph = static_cast<unsigned>(std::stoul(markup.substr(colon + 1, end - colon - 1)));
    unsigned id = 0;  // the missing glyph, should a mark have no font
    if (auto f = ids.find(font); f != ids.end())
      if (auto g = f->second.find(glyph); g != f->second.end()) id = g->second;
    out += std::to_string(id);
    done = end + 1;
  }
  out.append(markup, done);
  return out;
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

void DwfxCanvas::appendOutlines(const GlyphRun& run, std::string& out) {
  // Each glyph is its outline in glyph units, placed by a transform: a glyph drawn many times is
  // the same text each time, which the package's compression takes almost for free.
  const double k = kUnitsPerMm / kGlyphUnits;
  const double m11 = k * run.emX.x, m12 = -k * run.emX.y, m21 = -k * run.emY.x, m22 = k * run.emY.y;
  const std::string fill = "\" Fill=\"" + Color(run.color) + "\"/>\n";
  for (const cairo_glyph_t& g : run.glyphs) {
    const std::string& outline = glyphOutline(run.face, g.index);
    if (outline.empty()) continue;
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

DwfxCanvas::PageFont& DwfxCanvas::pageFont(cairo_font_face_t* face) {
  if (auto it = fonts_.find(face); it != fonts_.end()) return it->second;
  PageFont font;
  font.source = FontOfFace(face);
  const FontEmbedding embedding = EmbeddingOf(font.source);
  font.number = fontOrder_.size() + 1;
  if (embedding != FontEmbedding::None)
    font.part = "font" + std::to_string(font.number) + (embedding == FontEmbedding::OpenType ? ".otf" : ".ttf");
  fontOrder_.push_back(face);
  return fonts_.emplace(face, std::move(font)).first->second;
}

void DwfxCanvas::glyphs(GlyphRun run, bool asOutlines) {
  const double det = run.emX.x * run.emY.y - run.emX.y * run.emY.x;
  if (run.glyphs.empty() || !run.face || !std::isfinite(det) || std::abs(det) < 1e-18) return;
  flushStrokes();
  if (!asOutlines) {
    PageFont& font = pageFont(run.face);
    const std::size_t begin = page_.markup.size();
    if (!font.part.empty() && appendText(run, font, page_.markup)) {
      texts_.push_back({begin, page_.markup.size(), std::move(run)});
      return;
    }
  }
  appendOutlines(run, page_.markup);
}

bool DwfxCanvas::appendText(const GlyphRun& run, PageFont& font, std::string& out) const {
  const std::size_t n = run.glyphs.size();
  // Glyph positions in the run's em square, in hundredths of an em (the unit of the advances),
  // from the first glyph: u along the baseline, v up.
  const double det = run.emX.x * run.emY.y - run.emX.y * run.emY.x;
  std::vector<double> u(n), v(n);
  for (std::size_t i = 0; i < n; ++i) {
    const double dx = run.glyphs[i].x - run.glyphs[0].x, dy = run.glyphs[i].y - run.glyphs[0].y;
    u[i] = kEmHundredths * (dx * run.emY.y - dy * run.emY.x) / det;
    v[i] = kEmHundredths * (run.emX.x * dy - run.emX.y * dx) / det;
    if (!std::isfinite(u[i]) || !std::isfinite(v[i])) return false;
  }
  // The characters' clusters, each with its glyphs; text left out when they don't add up.
  std::vector<Cluster> clusters = Clusters(run);
  const bool withText = !clusters.empty();
  if (!withText)
    for (std::size_t i = 0; i < n; ++i) clusters.push_back({i, 1, 0, 0, 1});

  const std::string head = "<Glyphs Fill=\"" + Color(run.color) + "\" FontUri=\"" + XpsResourceUri(page_.number, font.part) +
                           "\" FontRenderingEmSize=\"" + std::to_string(static_cast<int>(kEmHundredths)) +
                           "\" OriginX=\"0\" OriginY=\"0\" RenderTransform=\"";
  // Local units are hundredths of an em, y down, on the segment's first glyph.
  const double k = kUnitsPerMm / kEmHundredths;
  std::string factors;
  for (double f : {k * run.emX.x, -k * run.emX.y, -k * run.emY.x, k * run.emY.y}) {
    AppendFine(factors, f);
    factors += ',';
  }
  const std::size_t before = out.size();
  // A glyph off the baseline, or behind the one before it, starts a new element: advances only
  // go forward along one line.
  std::size_t c = 0;
  while (c < clusters.size()) {
    const std::size_t first = clusters[c].glyph;
    const double lineV = v[first];
    double lastU = u[first];
    std::size_t last = c;
    for (; last < clusters.size(); ++last) {
      bool inRow = true;
      for (std::size_t j = clusters[last].glyph; j < clusters[last].glyph + clusters[last].glyphs; ++j) {
        if (j == first) continue;
        inRow = inRow && std::abs(v[j] - lineV) <= kOffLine && u[j] >= lastU - kOffLine;
        lastU = u[j];
      }
      if (inRow) continue;
      if (last == c) {  // the glyphs of one character not in a row: its outlines show it
        out.resize(before);
        return false;
      }
      break;
    }
    out += head;
    out += factors;
    Append(out, run.glyphs[first].x * kUnitsPerMm);
    out += ',';
    Append(out, (heightMm_ - run.glyphs[first].y) * kUnitsPerMm);
    if (withText) {
      out += "\" UnicodeString=\"";
      if (run.utf8[clusters[c].byte] == '{') out += "{}";  // a leading brace would read as escape
      for (std::size_t i = c; i < last; ++i) AppendEscaped(out, std::string_view(run.utf8).substr(clusters[i].byte, clusters[i].bytes));
    }
    out += "\" Indices=\"";
    const std::size_t end = clusters[last - 1].glyph + clusters[last - 1].glyphs;
    for (std::size_t i = c; i < last; ++i) {
      const Cluster& cl = clusters[i];
      for (std::size_t j = cl.glyph; j < cl.glyph + cl.glyphs; ++j) {
        if (j != first) out += ';';
        if (j == cl.glyph && withText && (cl.units != 1 || cl.glyphs != 1))
          out += "(" + std::to_string(cl.units) + ":" + std::to_string(cl.glyphs) + ")";
        const auto gid = static_cast<unsigned>(run.glyphs[j].index);
        AppendGlyphMark(out, font.number, gid);
        out += ',';
        // From rounded positions, so that the rounding does not add up along the line.
        const double advance = j + 1 < end ? Hundredths(u[j + 1] - u[first]) - Hundredths(u[j] - u[first])
                                           : kEmHundredths * GlyphAdvanceEm(font.source, gid);
        Append(out, advance);
        font.glyphs.push_back(gid);
      }
    }
    out += "\"/>\n";
    c = last;
  }
  if (withText)
    for (std::size_t i = 0; i < run.utf8.size();) font.characters.push_back(cad::NextCodePoint(run.utf8, i));
  return true;
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

void DwfxCanvas::embedFonts() {
  std::vector<const cairo_font_face_t*> failed;
  std::map<std::size_t, std::map<unsigned, unsigned>> glyphIds;  // by font number
  for (const cairo_font_face_t* face : fontOrder_) {
    PageFont& font = fonts_.at(face);
    if (font.part.empty() || font.glyphs.empty()) continue;
    std::sort(font.glyphs.begin(), font.glyphs.end());
    font.glyphs.erase(std::unique(font.glyphs.begin(), font.glyphs.end()), font.glyphs.end());
    std::sort(font.characters.begin(), font.characters.end());
    font.characters.erase(std::unique(font.characters.begin(), font.characters.end()), font.characters.end());
    FontSubset subset = SubsetFont(font.source, font.glyphs, font.characters);
    if (subset.bytes.empty()) {
      failed.push_back(face);
      continue;
    }
    page_.resources.push_back({font.part, std::move(subset.bytes)});
    glyphIds[font.number] = std::move(subset.glyphIds);
  }
  if (!failed.empty()) {
    std::string markup;
    markup.reserve(page_.markup.size());
    std::size_t done = 0;
    for (const TextElement& t : texts_) {
      if (std::find(failed.begin(), failed.end(), t.run.face) == failed.end()) continue;
      markup.append(page_.markup, done, t.begin - done);
      appendOutlines(t.run, markup);
      done = t.end;
    }
    markup.append(page_.markup, done);
    page_.markup = std::move(markup);
  }
  page_.markup = ResolveGlyphMarks(page_.markup, glyphIds);
}

bool DwfxCanvas::finish(std::string& error) {
  while (clipDepth_ > 0) popClip();
  flushStrokes();
  embedFonts();
  page_.markup += "</FixedPage>\n";
  std::vector<XpsPage> pages;
  pages.push_back(std::move(page_));
  return WriteXpsPackage(path_, std::move(pages), error);
}

}  // namespace tv::render
