#include "render/plot_engine.h"

#include <cairo-pdf.h>
#include <cairo-ps.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <memory>

#include "cad/entity_geometry.h"
#include "render/canvas_cairo.h"
#include "render/dwfx_canvas.h"
#include "render/hpgl_canvas.h"
#include "render/plot_drawing_internal.h"
#include "render/raster_jpeg.h"
#include "render/space_index.h"

namespace tv::render {

namespace {

namespace fs = std::filesystem;

constexpr double kPointsPerMm = 72.0 / 25.4;
// Rasters larger than this many pixels are refused rather than exhausting memory.
constexpr double kMaxPixels = 400e6;

std::string WriteFailed(const std::string& path) { return "文件\n\n" + path + "\n\n写入操作有误!"; }

bool Finite(double v) { return std::isfinite(v); }

struct SurfaceDeleter {
  void operator()(cairo_surface_t* s) const { cairo_surface_destroy(s); }
};
using SurfacePtr = std::unique_ptr<cairo_surface_t, SurfaceDeleter>;

// A temporary name in the same folder, so that the final rename never crosses file systems. It
// doesn't grow with the file's own name, which may already be as long as the folder allows.
std::string TemporaryName(const std::string& path) {
  static unsigned counter = 0;
  const fs::path p(path);
  return (p.parent_path() / (".tvplot-" + std::to_string(::getpid()) + "-" + std::to_string(++counter) + ".part"))
      .string();
}

// The extents of a space, for a request without a window.
std::optional<cad::Extents3d> SpaceExtents(const cad::Database& db, const cad::BlockRecord& space) {
  cad::ExtentsCache cache;
  cad::Extents3d all;
  db.forEachEntity(space, [&](const cad::Entity& e) {
    if (!e.isVisible() || e.type() == cad::ObjectType::Viewport) return;
    if (auto ext = cache.entityExtents(e, db)) all.add(*ext);
  });
  if (all.isEmpty()) return std::nullopt;
  return all;
}

}  // namespace

std::optional<PageLayout> LayOutPage(const PlotRequest& request, cad::Point2d windowMin, cad::Point2d windowMax,
                                     std::string& message) {
  const PlotMedium& m = request.medium;
  if (!(m.widthMm > 0) || !(m.heightMm > 0) || !Finite(m.widthMm) || !Finite(m.heightMm)) {
    message = "图纸尺寸有误, 无法打印 !";
    return std::nullopt;
  }
  PageLayout page;
  double llx = m.printableLlx, lly = m.printableLly, urx = m.printableUrx, ury = m.printableUry;
  if (!(urx > llx) || !(ury > lly) || !Finite(llx + lly + urx + ury)) llx = 0, lly = 0, urx = m.widthMm, ury = m.heightMm;
  llx = std::max(llx, 0.0), lly = std::max(lly, 0.0), urx = std::min(urx, m.widthMm), ury = std::min(ury, m.heightMm);
  if (m.turned) {
    // The paper turned a quarter counter-clockwise: (x, y) of the medium lands at (H - y, x).
    page.widthMm = m.heightMm;
    page.heightMm = m.widthMm;
    page.printLlx = m.heightMm - ury, page.printUrx = m.heightMm - lly;
    page.printLly = llx, page.printUry = urx;
  } else {
    page.widthMm = m.widthMm, page.heightMm = m.heightMm;
    page.printLlx = llx, page.printLly = lly, page.printUrx = urx, page.printUry = ury;
  }
  const double ww = windowMax.x - windowMin.x, wh = windowMax.y - windowMin.y;
  if (!Finite(ww) || !Finite(wh) || !(ww > 0) || !(wh > 0)) {
    message = "打印窗口有误, 无法打印 !";
    return std::nullopt;
  }
  const double pw = page.printUrx - page.printLlx, ph = page.printUry - page.printLly;
  page.scale = request.fitToPrintable ? std::min(pw / ww, ph / wh) : request.scale;
  if (!(page.scale > 0) || !Finite(page.scale)) {
    message = "打印比例有误, 无法打印 !";
    return std::nullopt;
  }
  double ox = page.printLlx, oy = page.printLly;
  if (request.centered) {
    ox = (page.printLlx + page.printUrx) / 2 - ww * page.scale / 2;
    oy = (page.printLly + page.printUry) / 2 - wh * page.scale / 2;
  }
  page.viewToPage = cad::Matrix3d::translation({ox, oy, 0}) * cad::Matrix3d::scaling(page.scale, page.scale, page.scale) *
                    cad::Matrix3d::translation({-windowMin.x, -windowMin.y, 0});
  page.spaceToPage = request.viewTwist == 0 || !Finite(request.viewTwist)
                         ? page.viewToPage
                         : page.viewToPage * cad::Matrix3d::rotation(-request.viewTwist);
  return page;
}

PlotResult PlotWindow(const cad::Database& db, const PlotRequest& request) {
  PlotResult result;
  if (request.outputPath.empty()) {
    result.message = "未指定打印输出文件 !";
    return result;
  }
  const cad::BlockRecord* space =
      request.spaceBlock.isNull() ? db.modelSpace() : db.objectAs<cad::BlockRecord>(request.spaceBlock);
  if (!space) {
    result.message = "要打印的空间不存在 !";
    return result;
  }
  cad::Point2d wmin = request.windowMin, wmax = request.windowMax;
  if (wmin == wmax) {
    const auto ext = SpaceExtents(db, *space);
    if (!ext) {
      result.message = "打印窗口内没有图形 !";
      return result;
    }
    // The extents as the twisted view frames them.
    const cad::Matrix3d toView = cad::Matrix3d::rotation(Finite(request.viewTwist) ? -request.viewTwist : 0.0);
    cad::Extents3d view;
    for (const cad::Point3d& c : {ext->min, cad::Point3d{ext->max.x, ext->min.y, 0}, ext->max, cad::Point3d{ext->min.x, ext->max.y, 0}})
      view.add(toView.transform(cad::Point3d{c.x, c.y, 0}));
    wmin = view.min.to2d(), wmax = view.max.to2d();
  }
  std::string message;
  const auto page = LayOutPage(request, wmin, wmax, message);
  if (!page) {
    result.message = message;
    return result;
  }

  const std::string temp = TemporaryName(request.outputPath);
  std::error_code ec;
  const auto fail = [&](const std::string& why) {
    fs::remove(temp, ec);
    result.ok = false;
    result.message = why;
    return result;
  };

  // The surface of the format.
  SurfacePtr surface;
  std::unique_ptr<PlotCanvas> canvas;
  double unitsPerMm = kPointsPerMm;
  const bool raster = request.format == PlotFormat::Png || request.format == PlotFormat::Jpg;
  double minPenMm = 0.1;
  switch (request.format) {
    case PlotFormat::Pdf:
      surface.reset(cairo_pdf_surface_create(temp.c_str(), page->widthMm * kPointsPerMm, page->heightMm * kPointsPerMm));
      break;
    case PlotFormat::Eps:
      surface.reset(cairo_ps_surface_create(temp.c_str(), page->widthMm * kPointsPerMm, page->heightMm * kPointsPerMm));
      if (cairo_surface_status(surface.get()) == CAIRO_STATUS_SUCCESS) cairo_ps_surface_set_eps(surface.get(), 1);
      break;
    case PlotFormat::Png:
    case PlotFormat::Jpg: {
      const double enlarge = request.enlarge > 0 && Finite(request.enlarge) ? request.enlarge : 1.0;
      const double dpi = request.rasterDpi > 0 && Finite(request.rasterDpi) ? request.rasterDpi : 150.0;
      unitsPerMm = dpi / 25.4 * enlarge;
      const double w = std::round(page->widthMm * unitsPerMm), h = std::round(page->heightMm * unitsPerMm);
      if (!(w >= 1) || !(h >= 1) || w * h > kMaxPixels || w > 32767 || h > 32767) return fail("图纸像素尺寸过大, 无法打印 !");
      result.widthPx = static_cast<int>(w), result.heightPx = static_cast<int>(h);
      surface.reset(cairo_image_surface_create(CAIRO_FORMAT_RGB24, result.widthPx, result.heightPx));
      minPenMm = 1.0 / unitsPerMm;  // one pixel
      break;
    }
    case PlotFormat::Plt: canvas = std::make_unique<HpglCanvas>(temp, page->widthMm, page->heightMm); break;
    case PlotFormat::Dwf:
      canvas = std::make_unique<DwfxCanvas>(temp, page->widthMm, page->heightMm, request.background);
      break;
  }
  if (!canvas) {
    if (!surface || cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) return fail(WriteFailed(request.outputPath));
    auto cairoCanvas = std::make_unique<CairoCanvas>(surface.get(), unitsPerMm, page->heightMm, raster ? minPenMm : 0.0, raster);
    if (raster) cairoCanvas->paintBackground(request.background);
    canvas = std::move(cairoCanvas);
  }

  {
    plot_internal::DrawingPlotter plotter(db, *canvas, request, result);
    // Only the window reaches the paper.
    const auto corner = [&](double x, double y) {
      const cad::Point3d p = page->viewToPage.transform(cad::Point3d{x, y, 0});
      return cad::Point2d{p.x, p.y};
    };
    canvas->pushClip({corner(wmin.x, wmin.y), corner(wmax.x, wmin.y), corner(wmax.x, wmax.y), corner(wmin.x, wmax.y)});
    if (request.index && request.index->describes(*space)) {
      // The window's box in the space's coordinates, a little larger for rounding.
      const cad::Matrix3d toSpace = cad::Matrix3d::rotation(Finite(request.viewTwist) ? request.viewTwist : 0.0);
      cad::Extents3d box;
      for (const cad::Point2d& c : {wmin, cad::Point2d{wmax.x, wmin.y}, wmax, cad::Point2d{wmin.x, wmax.y}})
        box.add(toSpace.transform(cad::Point3d{c.x, c.y, 0}));
      const double pad = 1e-6 * std::max(box.max.x - box.min.x, box.max.y - box.min.y);
      std::vector<const cad::Entity*> only;
      request.index->query({box.min.x - pad, box.min.y - pad}, {box.max.x + pad, box.max.y + pad}, only);
      plotter.drawSpace(*space, page->spaceToPage, &only);
    } else {
      plotter.drawSpace(*space, page->spaceToPage);
    }
    canvas->popClip();
  }
  std::string error;
  if (!canvas->finish(error)) return fail(WriteFailed(request.outputPath));
  if (request.format == PlotFormat::Png) {
    if (cairo_surface_write_to_png(surface.get(), temp.c_str()) != CAIRO_STATUS_SUCCESS) return fail(WriteFailed(request.outputPath));
  } else if (request.format == PlotFormat::Jpg) {
    if (!WriteJpeg(surface.get(), temp, request.jpegQuality, error)) return fail(WriteFailed(request.outputPath));
  }
  canvas.reset();
  surface.reset();
  fs::rename(temp, request.outputPath, ec);
  if (ec) return fail(WriteFailed(request.outputPath));
  result.ok = true;
  return result;
}

}  // namespace tv::render
