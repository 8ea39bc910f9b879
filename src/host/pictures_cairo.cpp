#include "host/pictures.h"

#include <cairo.h>

#include "render/raster_jpeg.h"

namespace tv::host {

std::optional<PictureSize> OpenPicture(const std::string& path) {
  // By content, not by name: the stamp form's scratch file has neither extension.
  cairo_surface_t* surface = cairo_image_surface_create_from_png(path.c_str());
  if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS) {
    cairo_surface_destroy(surface);
    surface = render::ReadJpeg(path);
    if (!surface) return std::nullopt;
  }
  const PictureSize size{cairo_image_surface_get_width(surface), cairo_image_surface_get_height(surface)};
  cairo_surface_destroy(surface);
  if (size.width <= 0 || size.height <= 0) return std::nullopt;
  return size;
}

}  // namespace tv::host
