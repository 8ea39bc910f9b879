#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>
#include <system_error>

#include "host/frame_files.h"
#include "render/canvas_cairo.h"

namespace tv::host {

bool WriteSegmentPicture(const std::vector<FileSegment>& segments, int width, int height, int margin,
                         const std::string& path) {
  if (width <= 0 || height <= 0 || path.empty()) return false;
  std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface(
      cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height), &cairo_surface_destroy);
  std::string error;
  {
    // One canvas unit a pixel; lines a pixel wide without smoothing, so the picture is black and
    // white only.
    render::CairoCanvas canvas(surface.get(), 1.0, height, 1.0, true);
    canvas.paintBackground({0, 0, 0});
    double minX = HUGE_VAL, minY = HUGE_VAL, maxX = -HUGE_VAL, maxY = -HUGE_VAL;
    for (const FileSegment& s : segments)
      for (Point2d p : {s.start, s.end}) {
        if (!std::isfinite(p.x) || !std::isfinite(p.y)) continue;
        minX = std::min(minX, p.x), minY = std::min(minY, p.y), maxX = std::max(maxX, p.x), maxY = std::max(maxY, p.y);
      }
    if (minX <= maxX) {
      const double roomX = std::max(1, width - 2 * margin), roomY = std::max(1, height - 2 * margin);
      const double spanX = maxX - minX, spanY = maxY - minY;
      const double scale = std::min(spanX > 0 ? roomX / spanX : HUGE_VAL, spanY > 0 ? roomY / spanY : HUGE_VAL);
      const double s = std::isfinite(scale) ? scale : 1.0;
      // Centred in the rectangle whichever side limits the scale.
      const double offX = (width - spanX * s) / 2, offY = (height - spanY * s) / 2;
      const auto place = [&](Point2d p) { return cad::Point2d{offX + (p.x - minX) * s, offY + (p.y - minY) * s}; };
      for (const FileSegment& seg : segments)
        canvas.stroke({place(seg.start), place(seg.end)}, false, {255, 255, 255}, 1.0);
    }
    if (!canvas.finish(error)) return false;
  }
  // Written beside the target and renamed over it, so that a failed write leaves no half picture.
  const std::string partial = path + ".part";
  if (cairo_surface_write_to_png(surface.get(), partial.c_str()) != CAIRO_STATUS_SUCCESS) {
    std::error_code ec;
    std::filesystem::remove(partial, ec);
    return false;
  }
  std::error_code ec;
  std::filesystem::rename(partial, path, ec);
  if (!ec) return true;
  std::filesystem::remove(partial, ec);
  return false;
}

}  // namespace tv::host
