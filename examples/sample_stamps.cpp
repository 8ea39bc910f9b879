#include "examples/sample_stamps.h"

#include <cairo.h>
#include <fontconfig/fontconfig.h>

#include <cmath>
#include <numbers>

namespace tv::samples {

namespace {

cairo_status_t Append(void* closure, const unsigned char* data, unsigned int length) {
  static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
  return CAIRO_STATUS_SUCCESS;
}

std::string PngOf(cairo_surface_t* surface) {
  std::string bytes;
  cairo_surface_write_to_png_stream(surface, &Append, &bytes);
  return bytes;
}

// The family fontconfig offers for Chinese text: the toy font API doesn't fall back per glyph.
std::string ChineseFamily() {
  std::string family = "sans-serif";
  FcPattern* pattern = FcNameParse(reinterpret_cast<const FcChar8*>("sans-serif:lang=zh-cn"));
  if (!pattern) return family;
  FcConfigSubstitute(nullptr, pattern, FcMatchPattern);
  FcDefaultSubstitute(pattern);
  FcResult result = FcResultNoMatch;
  if (FcPattern* found = FcFontMatch(nullptr, pattern, &result)) {
    FcChar8* name = nullptr;
    if (FcPatternGetString(found, FC_FAMILY, 0, &name) == FcResultMatch && name) family = reinterpret_cast<char*>(name);
    FcPatternDestroy(found);
  }
  FcPatternDestroy(pattern);
  return family;
}

// The text centred, as large as fits `room` across.
void CentredText(cairo_t* cr, const std::string& text, double cx, double cy, double room, double size) {
  static const std::string family = ChineseFamily();
  cairo_select_font_face(cr, family.c_str(), CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_BOLD);
  cairo_set_font_size(cr, size);
  cairo_text_extents_t e;
  cairo_text_extents(cr, text.c_str(), &e);
  if (e.width > room && e.width > 0) {
    cairo_set_font_size(cr, size * room / e.width);
    cairo_text_extents(cr, text.c_str(), &e);
  }
  cairo_move_to(cr, cx - e.width / 2 - e.x_bearing, cy - e.height / 2 - e.y_bearing);
  cairo_show_text(cr, text.c_str());
}

std::unique_ptr<signing::TV_Stamp> Stamp(const char* name, std::string picture, double width, double height,
                                         std::int32_t kind, std::int32_t code) {
  auto s = std::make_unique<signing::TV_Stamp>();
  s->name = name;
  s->image = std::move(picture);
  s->image_size = static_cast<std::int32_t>(s->image.size());
  s->width = width;
  s->height = height;
  s->stamp_kind = kind;
  s->auth_code = code;
  s->valid_until = 20351231;
  return s;
}

}  // namespace

std::string SealPicture(const std::string& text, int widthPx, int heightPx, bool round) {
  cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, widthPx, heightPx);
  cairo_t* cr = cairo_create(surface);
  cairo_set_source_rgba(cr, 0.85, 0.05, 0.05, 0.9);
  const double w = widthPx, h = heightPx, line = std::min(w, h) * 0.06;
  cairo_set_line_width(cr, line);
  if (round) {
    cairo_arc(cr, w / 2, h / 2, std::min(w, h) / 2 - line, 0, 2 * std::numbers::pi);
    cairo_stroke(cr);
    cairo_arc(cr, w / 2, h / 2, std::min(w, h) / 2 - 2.6 * line, 0, 2 * std::numbers::pi);
    cairo_set_line_width(cr, line * 0.4);
    cairo_stroke(cr);
    // The star of an office seal.
    const double r = std::min(w, h) * 0.12;
    for (int i = 0; i < 10; ++i) {
      const double a = -std::numbers::pi / 2 + i * std::numbers::pi / 5, k = i % 2 == 0 ? r : r * 0.4;
      const double x = w / 2 + k * std::cos(a), y = h * 0.4 + k * std::sin(a);
      i == 0 ? cairo_move_to(cr, x, y) : cairo_line_to(cr, x, y);
    }
    cairo_close_path(cr);
    cairo_fill(cr);
    CentredText(cr, text, w / 2, h * 0.68, w * 0.5, h * 0.09);
  } else {
    cairo_rectangle(cr, line, line, w - 2 * line, h - 2 * line);
    cairo_stroke(cr);
    CentredText(cr, text, w / 2, h / 2, w * 0.8, h * 0.35);
  }
  cairo_destroy(cr);
  std::string bytes = PngOf(surface);
  cairo_surface_destroy(surface);
  return bytes;
}

std::string SolidRedPicture(int widthPx, int heightPx) {
  cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, widthPx, heightPx);
  cairo_t* cr = cairo_create(surface);
  cairo_set_source_rgb(cr, 1, 0, 0);
  cairo_paint(cr);
  cairo_destroy(cr);
  std::string bytes = PngOf(surface);
  cairo_surface_destroy(surface);
  return bytes;
}

signing::StampLibrary BuildStampLibrary() {
  signing::StampLibrary library;
  library.stamps.push_back(Stamp("出图专用章", SealPicture("出图专用章", 400, 400, true), 40, 40, 1, 0));
  library.stamps.push_back(Stamp("注册建筑师章", SealPicture("注册建筑师", 500, 250, false), 50, 25, 0, 0));
  library.stamps.push_back(Stamp("审定章", SealPicture("审 定", 360, 180, false), 36, 18, 4, 2468));
  return library;
}

}  // namespace tv::samples
