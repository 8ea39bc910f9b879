// The console host's plot preview: the page the current layout would plot, rendered by the plot
// engine as a PNG the size of the screen, since a terminal has no preview window. The image goes
// into the scratch folder the system names and its path is printed.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <string>

#include "console/console_editor.h"
#include "console/text_match.h"
#include "host/cad_binding.h"
#include "host/layout_plot.h"
#include "render/plot_engine.h"
#include "render/plotter_files.h"

namespace tv::console {

namespace {

namespace fs = std::filesystem;

// The host value "Plot preview background": a colour as (blue x 256 + green) x 256 + red, in
// decimal. White when unset or unreadable.
render::Rgb PreviewBackground(const std::optional<std::string>& value) {
  std::uint32_t bgr = 0xFFFFFF;
  if (value) {
    const std::string_view text = TrimBlanks(*value);
    std::uint32_t parsed = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), parsed);
    if (ec == std::errc() && end == text.data() + text.size() && parsed <= 0xFFFFFF) bgr = parsed;
  }
  return {static_cast<std::uint8_t>(bgr & 0xFF), static_cast<std::uint8_t>((bgr >> 8) & 0xFF),
          static_cast<std::uint8_t>((bgr >> 16) & 0xFF)};
}

}  // namespace

bool ConsoleEditor::plotPreview(std::string_view scratchFolder, int index, bool) {
  const cad::Layout* layout = db_.objectAs<cad::Layout>(host::Working().currentLayout);
  if (!layout) return false;
  const cad::PlotSettings& plot = layout->plot;
  const std::string deviceFile = host::PlotDeviceFile(plot.plotterName);
  std::string error;
  std::optional<render::PlotterConfig> device;
  if (!deviceFile.empty()) device = render::ReadPlotterConfig(deviceFile, &error);
  const render::PlotterMedium* medium = device ? FindPlotMedium(*device, plot.paperSize) : nullptr;
  if (!medium) {
    print("\n打印预览：打印设备“" + plot.plotterName + "”或图纸“" + plot.paperSize + "”无法使用。");
    return false;
  }

  render::PlotRequest request;
  const bool turned = plot.rotation == 1 || plot.rotation == 3;
  fillPlotRequest(*layout, plot, *device, *medium, turned, request);
  request.format = render::PlotFormat::Png;
  // The page fills the screen, as the preview window would show it.
  const Point3d screen = host::AsPoint(getVar("SCREENSIZE")).value_or(Point3d{1600, 900, 0});
  const double across = turned ? medium->heightMm : medium->widthMm;
  const double down = turned ? medium->widthMm : medium->heightMm;
  if (!(across > 0) || !(down > 0) || !(screen.x >= 1) || !(screen.y >= 1)) return false;
  request.rasterDpi = 25.4 * std::min(screen.x / across, screen.y / down);
  request.enlarge = 1;
  request.background = PreviewBackground(getEnv("Plot preview background"));

  std::error_code ec;
  fs::create_directories(fs::path(scratchFolder), ec);
  request.outputPath = (fs::path(scratchFolder) / ("preview-" + std::to_string(index + 1) + ".png")).string();
  const render::PlotResult result = render::PlotWindow(db_, request);
  for (const std::string& note : result.notes) print("\n" + note);
  if (!result.ok) {
    print("\n打印预览失败：" + result.message);
    return false;
  }
  print("\n打印预览：" + request.outputPath);
  previews_.push_back(request.outputPath);
  return true;
}

}  // namespace tv::console
