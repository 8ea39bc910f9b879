// Raster images and wipeouts.
#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>

#include "render/plot_drawing_internal.h"
#include "render/plot_shapes.h"
#include "render/raster_jpeg.h"

namespace tv::render::plot_internal {

namespace {

std::string Lower(std::string s) {
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

}  // namespace

cairo_surface_t* LoadPicture(const std::string& path) {
  std::error_code ec;
  if (!std::filesystem::is_regular_file(path, ec)) return nullptr;
  const std::string ext = Lower(std::filesystem::path(path).extension().string());
  if (ext == ".jpg" || ext == ".jpeg" || ext == ".jpe") return ReadJpeg(path);
  cairo_surface_t* s = cairo_image_surface_create_from_png(path.c_str());
  if (cairo_surface_status(s) == CAIRO_STATUS_SUCCESS) return s;
  cairo_surface_destroy(s);
  return ReadJpeg(path);  // a JPEG under another name
}

cairo_surface_t* DrawingPlotter::picture(const std::string& fileName) {
  if (auto it = pictures_.find(fileName); it != pictures_.end()) return it->second;
  // Drawings made on Windows name their pictures with backslashes, often beside the drawing.
  std::string name = fileName;
  std::replace(name.begin(), name.end(), '\\', '/');
  std::vector<std::filesystem::path> candidates{name};
  if (!request_.drawingFolder.empty()) {
    candidates.push_back(std::filesystem::path(request_.drawingFolder) / name);
    candidates.push_back(std::filesystem::path(request_.drawingFolder) / std::filesystem::path(name).filename());
  }
  cairo_surface_t* found = nullptr;
  for (const auto& c : candidates)
    if ((found = LoadPicture(c.string()))) break;
  if (!found) result_.notes.push_back("图像文件\n\n" + fileName + "\n\n未找到, 未打印 !");
  pictures_.emplace(fileName, found);
  return found;
}

template <class T>
void DrawingPlotter::drawRaster(const T& r, bool wipeout, const DrawContext& ctx) {
  const Point3d corner = r.position;
  const Vector3d u = r.uPixel, v = r.vPixel;
  const double w = r.imageSize.x, h = r.imageSize.y;
  if (!std::isfinite(corner.x + corner.y + corner.z + u.x + u.y + u.z + v.x + v.y + v.z + w + h) || !(w > 0) || !(h > 0))
    return;
  // Clip vertices count pixels from the top left pixel's centre, y down.
  const auto fromPixel = [&](double x, double y) { return corner + u * (x + 0.5) + v * (h - 0.5 - y); };
  std::vector<Point3d> outline;
  if (r.clipping && r.clipVertices.size() >= 2) {
    auto verts = r.clipVertices;
    if (verts.size() == 2) verts = {verts[0], {verts[1].x, verts[0].y}, verts[1], {verts[0].x, verts[1].y}};
    for (Point2d p : verts) outline.push_back(fromPixel(p.x, p.y));
  } else {
    outline = {fromPixel(-0.5, h - 0.5), fromPixel(w - 0.5, h - 0.5), fromPixel(w - 0.5, -0.5), fromPixel(-0.5, -0.5)};
  }
  Polyline2d shape;
  if (!toPage(ctx.toPage, outline, shape)) return;
  if (wipeout) {
    canvas_.fill({shape}, request_.background);
    ++result_.entitiesDrawn;
    return;
  }
  const auto* def = db_.objectAs<cad::ImageDef>(r.imageDef);
  if (!def) return;
  cairo_surface_t* pic = picture(def->fileName);
  if (!pic) return;
  // Pixels of the file onto the image's rectangle: the file may have other pixel counts than the
  // drawing recorded.
  const double fw = cairo_image_surface_get_width(pic), fh = cairo_image_surface_get_height(pic);
  const Point2d topLeft = page(ctx.toPage, corner + v * h);
  const Vector3d du = ctx.toPage.transform(u * (w / fw)), dv = ctx.toPage.transform(v * (h / fh));
  cairo_matrix_t m;
  cairo_matrix_init(&m, du.x, du.y, -dv.x, -dv.y, topLeft.x, topLeft.y);
  canvas_.pushClip(shape);
  canvas_.image(pic, m);
  canvas_.popClip();
  ++result_.entitiesDrawn;
}

template void DrawingPlotter::drawRaster(const cad::Image&, bool, const DrawContext&);
template void DrawingPlotter::drawRaster(const cad::Wipeout&, bool, const DrawContext&);

}  // namespace tv::render::plot_internal
