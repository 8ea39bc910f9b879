#pragma once
// Drawings built in code and the pictures the plot engine makes of them, for the plot tests.
#include <cairo.h>

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "cad/database.h"
#include "render/plot_engine.h"
#include "tests/support/entity_builders.h"
#include "tests/support/run_program.h"

namespace tv::render::test {

// A PNG read back, with pixel access.
class Picture {
 public:
  explicit Picture(const std::string& path) : surface_(cairo_image_surface_create_from_png(path.c_str())) {}
  ~Picture() { cairo_surface_destroy(surface_); }
  Picture(const Picture&) = delete;
  Picture& operator=(const Picture&) = delete;
  bool ok() const { return cairo_surface_status(surface_) == CAIRO_STATUS_SUCCESS; }
  int width() const { return cairo_image_surface_get_width(surface_); }
  int height() const { return cairo_image_surface_get_height(surface_); }
  Rgb at(int x, int y) const {
    const unsigned char* row = cairo_image_surface_get_data(surface_) + y * cairo_image_surface_get_stride(surface_);
    const std::uint32_t p = reinterpret_cast<const std::uint32_t*>(row)[x];
    return {static_cast<std::uint8_t>(p >> 16), static_cast<std::uint8_t>(p >> 8), static_cast<std::uint8_t>(p)};
  }
  // The darkest pixel (by its brightest channel) in the square of `r` pixels around (x, y).
  Rgb darkestNear(int x, int y, int r = 1) const {
    Rgb best{255, 255, 255};
    int bestValue = 1000;
    for (int dy = -r; dy <= r; ++dy)
      for (int dx = -r; dx <= r; ++dx) {
        const int px = x + dx, py = y + dy;
        if (px < 0 || py < 0 || px >= width() || py >= height()) continue;
        const Rgb c = at(px, py);
        const int v = std::max({c.r, c.g, c.b});
        if (v < bestValue) bestValue = v, best = c;
      }
    return best;
  }
  // The pixel nearest (x, y), within `r` pixels, that is not `background`; `background` when all are.
  Rgb inkNear(int x, int y, Rgb background, int r = 1) const {
    for (int d = 0; d <= r; ++d)
      for (int dy = -d; dy <= d; ++dy)
        for (int dx = -d; dx <= d; ++dx) {
          const int px = x + dx, py = y + dy;
          if (px < 0 || py < 0 || px >= width() || py >= height()) continue;
          if (!(at(px, py) == background)) return at(px, py);
        }
    return background;
  }
  // Pixels in a rectangle that differ from `background`.
  int countNot(Rgb background, int x0, int y0, int x1, int y1) const {
    int n = 0;
    for (int y = std::max(y0, 0); y < std::min(y1, height()); ++y)
      for (int x = std::max(x0, 0); x < std::min(x1, width()); ++x)
        if (!(at(x, y) == background)) ++n;
    return n;
  }

 private:
  cairo_surface_t* surface_;
};

inline bool IsDark(Rgb c) { return c.r < 100 && c.g < 100 && c.b < 100; }

// A page of 100 x 50 mm showing model space 0..100 x 0..50 at two pixels a millimetre: drawing
// unit (x, y) lands on pixel (2x, 100 - 2y).
inline PlotRequest PngRequest(const std::filesystem::path& out) {
  PlotRequest r;
  r.windowMin = {0, 0};
  r.windowMax = {100, 50};
  r.medium.widthMm = 100;
  r.medium.heightMm = 50;
  r.format = PlotFormat::Png;
  r.rasterDpi = 50.8;
  r.background = {230, 240, 250};
  r.outputPath = out.string();
  return r;
}
inline int Px(double x) { return static_cast<int>(std::lround(2 * x)); }
inline int Py(double y) { return static_cast<int>(std::lround(100 - 2 * y)); }

template <class T>
T& Add(cad::Database& db, cad::BlockRecord& block, std::unique_ptr<T> e, cad::ObjectId layer = {}) {
  if (!layer.isNull()) e->layer = layer;
  return db.append(block, std::move(e));
}

inline cad::Line& AddLine(cad::Database& db, cad::BlockRecord& block, cad::Point3d a, cad::Point3d b, cad::ObjectId layer = {}) {
  return Add(db, block, test_support::MakeLine(a, b), layer);
}

}  // namespace tv::render::test
