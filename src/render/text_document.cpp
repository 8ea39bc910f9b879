#include "render/text_document.h"

#include <cairo-pdf.h>
#include <cairo.h>

#include <memory>
#include <string_view>

namespace tv::render {

namespace {

constexpr double kPointsPerMm = 72.0 / 25.4;
constexpr double kPageWidth = 210 * kPointsPerMm;
constexpr double kPageHeight = 297 * kPointsPerMm;
constexpr double kMargin = 20 * kPointsPerMm;
constexpr double kBodySize = 10.5;
constexpr double kHeadingSize = 15;
constexpr const char* kFamily = "WenQuanYi Micro Hei";

struct SurfaceDeleter {
  void operator()(cairo_surface_t* s) const { cairo_surface_destroy(s); }
};
struct ContextDeleter {
  void operator()(cairo_t* c) const { cairo_destroy(c); }
};

// Length of the UTF-8 sequence that starts with `lead`.
std::size_t SequenceLength(unsigned char lead) {
  if (lead < 0x80) return 1;
  if ((lead & 0xE0) == 0xC0) return 2;
  if ((lead & 0xF0) == 0xE0) return 3;
  if ((lead & 0xF8) == 0xF0) return 4;
  return 1;
}

class PageWriter {
 public:
  explicit PageWriter(cairo_t* cr) : cr_(cr) {}

  void heading(std::string_view text) {
    space(kHeadingSize * 0.8);
    setSize(kHeadingSize);
    paragraph(text, kHeadingSize * 1.5);
    space(kHeadingSize * 0.3);
  }
  void text(std::string_view text) {
    setSize(kBodySize);
    paragraph(text, kBodySize * 1.6);
  }
  void space(double points) { y_ += points; }

 private:
  void setSize(double size) {
    cairo_select_font_face(cr_, kFamily, CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(cr_, size);
  }
  double width(const std::string& s) {
    cairo_text_extents_t e;
    cairo_text_extents(cr_, s.c_str(), &e);
    return e.x_advance;
  }
  // Breaks where the line is full: Chinese text has no blanks to break at, so any character may end a line.
  void paragraph(std::string_view text, double leading) {
    const double maxWidth = kPageWidth - 2 * kMargin;
    std::string line;
    std::size_t i = 0;
    while (i < text.size()) {
      const std::size_t n = SequenceLength(static_cast<unsigned char>(text[i]));
      std::string next = line + std::string(text.substr(i, n));
      if (!line.empty() && width(next) > maxWidth) {
        emit(line, leading);
        line.clear();
        continue;
      }
      line = std::move(next);
      i += n;
    }
    emit(line, leading);
  }
  void emit(const std::string& line, double leading) {
    if (y_ + leading > kPageHeight - kMargin) {
      cairo_show_page(cr_);
      y_ = kMargin;
    }
    y_ += leading;
    cairo_move_to(cr_, kMargin, y_);
    cairo_show_text(cr_, line.c_str());
  }

  cairo_t* cr_;
  double y_ = kMargin;
};

}  // namespace

std::string WriteTextPdf(const std::string& path, const std::vector<std::string>& lines) {
  std::unique_ptr<cairo_surface_t, SurfaceDeleter> surface(cairo_pdf_surface_create(path.c_str(), kPageWidth, kPageHeight));
  if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS)
    return std::string("无法创建文件 ") + path + "：" + cairo_status_to_string(cairo_surface_status(surface.get()));
  std::unique_ptr<cairo_t, ContextDeleter> cr(cairo_create(surface.get()));
  cairo_set_source_rgb(cr.get(), 0, 0, 0);
  PageWriter page(cr.get());
  for (const std::string& line : lines) {
    if (line.rfind("# ", 0) == 0)
      page.heading(std::string_view(line).substr(2));
    else if (line.empty())
      page.space(kBodySize * 0.6);
    else
      page.text(line);
  }
  cairo_show_page(cr.get());
  cr.reset();
  cairo_surface_finish(surface.get());
  if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS)
    return std::string("写入失败 ") + path + "：" + cairo_status_to_string(cairo_surface_status(surface.get()));
  return {};
}

}  // namespace tv::render
