// The console host's "-plot": the host's command-line plot. It walks the prompts of a detailed
// plot configuration, takes each answer from the command's arguments and then from the session,
// and plots the chosen layout through the plot engine with what the layout's plot settings hold:
// an empty answer accepts the layout's value, as the system's answer lists expect.
#include <cmath>
#include <filesystem>
#include <initializer_list>
#include <optional>
#include <string>

#include "console/answer_parse.h"
#include "console/console_editor.h"
#include "console/text_match.h"
#include "host/cad_binding.h"
#include "host/layout_plot.h"
#include "host/print_queues.h"
#include "render/plot_engine.h"
#include "render/plotter_files.h"

namespace tv::console {

namespace {

namespace fs = std::filesystem;
using host::RTCAN;
using host::RTERROR;
using host::RTNORM;

// Bits of the layout flags (group 70).
constexpr std::int16_t kFlagPlotCentered = 4;
constexpr std::int16_t kFlagUseStandardScale = 16;
constexpr std::int16_t kFlagPlotPlotStyles = 32;
constexpr std::int16_t kFlagPrintLineweights = 128;

bool IsYes(std::string_view answer) {
  const std::string a = AsciiUpper(TrimBlanks(answer));
  return a == "Y" || a == "YES" || a == "是";
}
bool IsNo(std::string_view answer) {
  const std::string a = AsciiUpper(TrimBlanks(answer));
  return a == "N" || a == "NO" || a == "否";
}

// "1=100" or "1:100": plotted millimetres per drawing unit.
std::optional<double> ParseScale(std::string_view text) {
  const std::size_t sep = text.find_first_of("=:");
  if (sep == std::string_view::npos) return std::nullopt;
  const auto mm = ParseReal(text.substr(0, sep)), units = ParseReal(text.substr(sep + 1));
  if (!mm || !units || !(*mm > 0) || !(*units > 0) || !std::isfinite(*mm / *units)) return std::nullopt;
  return *mm / *units;
}

std::string PointText(Point2d p) {
  char text[96];
  std::snprintf(text, sizeof text, "%.4f,%.4f", p.x, p.y);
  return text;
}

std::optional<render::PlotFormat> FormatOf(int code) {
  switch (code) {
    case 0: return render::PlotFormat::Pdf;
    case 1: return render::PlotFormat::Dwf;
    case 2: return render::PlotFormat::Jpg;
    case 3: return render::PlotFormat::Png;
    case 4: return render::PlotFormat::Plt;
    case 5: return render::PlotFormat::Eps;
    default: return std::nullopt;
  }
}

// Devices of codes 0 to 3 write files only; the others could drive a plotter and ask first.
bool FileOnly(int code) { return code >= 0 && code <= 3; }

}  // namespace

const render::PlotterMedium* FindPlotMedium(const render::PlotterConfig& config, std::string_view name) {
  for (const render::PlotterMedium& m : config.media)
    if (m.name == name) return &m;
  for (const render::PlotterMedium& m : config.media)
    if (m.localeName == name) return &m;
  return nullptr;
}

void ConsoleEditor::fillPlotRequest(const cad::Layout& layout, const cad::PlotSettings& plot,
                                    const render::PlotterConfig& device, const render::PlotterMedium& medium, bool turned,
                                    render::PlotRequest& request) {
  request.spaceBlock = layout.isModel() ? cad::ObjectId{} : layout.blockRecord;
  if (plot.plotType == host::kPlotWindow) {
    // The window is stored relative to the view target, in display coordinates. The batch turns
    // the view to the plan of the current UCS, so in model space these are UCS coordinates; the
    // engine's view coordinates are world ones turned by the UCS angle, which shifts the window by
    // the UCS origin turned back.
    const Point3d target = host::AsPoint(getVar("TARGET")).value_or(Point3d{});
    Point2d shift{target.x, target.y};
    if (layout.isModel()) {
      const Matrix3d ucs = currentUcs();
      const Point3d origin = ucs.transform(Point3d{0, 0, 0});
      const Point3d xEnd = ucs.transform(Point3d{1, 0, 0});
      const double angle = std::atan2(xEnd.y - origin.y, xEnd.x - origin.x);
      if (std::isfinite(angle) && angle != 0.0) {
        request.viewTwist = angle;
        const Point3d back = Matrix3d::rotation(-angle).transform(Point3d{origin.x, origin.y, 0});
        shift.x += back.x, shift.y += back.y;
      } else {
        shift.x += origin.x, shift.y += origin.y;
      }
    }
    request.windowMin = {plot.windowMin.x + shift.x, plot.windowMin.y + shift.y};
    request.windowMax = {plot.windowMax.x + shift.x, plot.windowMax.y + shift.y};
  }
  request.medium = {medium.widthMm,      medium.heightMm,     medium.printableLlx, medium.printableLly,
                    medium.printableUrx, medium.printableUry, turned};
  const bool fit = (plot.layoutFlags & kFlagUseStandardScale) && plot.standardScaleType == host::kScaleToFit;
  request.fitToPrintable = fit;
  if (!fit && plot.customScaleDenominator > 0) request.scale = plot.customScaleNumerator / plot.customScaleDenominator;
  request.centered = (plot.layoutFlags & kFlagPlotCentered) != 0;
  const std::uint32_t bgr = device.backgroundBgr;
  request.background = {static_cast<std::uint8_t>(bgr & 0xFF), static_cast<std::uint8_t>((bgr >> 8) & 0xFF),
                        static_cast<std::uint8_t>((bgr >> 16) & 0xFF)};
  request.style = render::PlotStyle::objectColors();
  if ((plot.layoutFlags & kFlagPlotPlotStyles) && !plot.styleSheet.empty()) {
    const std::string styleFile = host::PlotStyleSheetFile(plot.styleSheet);
    std::string styleError;
    std::optional<render::PlotStyleTable> table;
    if (!styleFile.empty()) table = render::ReadPlotStyleTable(styleFile, &styleError);
    if (table) request.style = render::PlotStyleFromTable(*table);
    else print("\n打印样式表“" + plot.styleSheet + "”无法读取，按对象颜色打印。");
  }
  request.lineweights = (plot.layoutFlags & kFlagPrintLineweights) != 0;
  request.textAsGeometry = device.textAsGraphics;
  if (const cad::BlockRecord* space = request.spaceBlock.isNull() ? db_.modelSpace()
                                                                   : db_.objectAs<cad::BlockRecord>(request.spaceBlock)) {
    std::unique_ptr<render::SpaceIndex>& index = plotIndexes_[space->id];
    if (!index || !index->describes(*space)) index = std::make_unique<render::SpaceIndex>(db_, *space);
    request.index = index.get();
  }
  request.drawingFolder = fs::path(path_).parent_path().string();
}

int ConsoleEditor::plotCommand(const std::vector<std::string>& args) {
  std::size_t next = 1;
  // The next answer: an argument of the call, else one of the session.
  const auto take = [&](std::string_view prompt) -> std::optional<std::string> {
    if (next < args.size()) {
      print(prompt);
      const std::string& a = args[next++];
      print(a);
      return a;
    }
    return ask(prompt);
  };
  // A keyword answer, or Enter. Anything else is refused and the next answer taken, as the host
  // does: a list of answers that has slipped out of step is used up rather than mistaken for a
  // file name.
  const auto choose = [&](const std::string& prompt,
                          std::initializer_list<std::string_view> keywords) -> std::optional<std::string> {
    while (true) {
      auto answer = take(prompt);
      if (!answer) return std::nullopt;
      const std::string a = AsciiUpper(TrimBlanks(*answer));
      if (a.empty()) return a;
      for (std::string_view k : keywords)
        if (a == k) return a;
      print("\n无效的选项关键字。");
    }
  };
  const auto yesNo = [&](const std::string& prompt) { return choose(prompt, {"Y", "YES", "是", "N", "NO", "否"}); };

  cad::Layout* layout = db_.objectAs<cad::Layout>(host::Working().currentLayout);
  if (!layout) {
    print("\n没有可打印的布局。");
    return RTERROR;
  }

  auto reply = yesNo("\n是否需要详细打印配置？[是(Y)/否(N)] <否>: ");
  if (!reply) return RTCAN;
  const bool detailed = IsYes(*reply);

  reply = take("\n输入布局名或 [?] <" + layout->name + ">: ");
  if (!reply) return RTCAN;
  if (!TrimBlanks(*reply).empty()) {
    cad::Layout* named = nullptr;
    for (cad::Layout* l : db_.layoutsInTabOrder())
      if (EqualsNoCase(l->name, TrimBlanks(*reply))) named = l;
    if (!named) {
      print("\n未找到布局“" + std::string(TrimBlanks(*reply)) + "”。");
      return RTERROR;
    }
    layout = named;
  }
  cad::PlotSettings plot = layout->plot;  // what this plot uses; the layout keeps its own

  reply = take("\n输入输出设备的名称或 [?] <" + plot.plotterName + ">: ");
  if (!reply) return RTCAN;
  if (!TrimBlanks(*reply).empty()) plot.plotterName = std::string(TrimBlanks(*reply));
  const std::string deviceFile = host::PlotDeviceFile(plot.plotterName);
  std::string error;
  std::optional<render::PlotterConfig> device;
  if (!deviceFile.empty()) device = render::ReadPlotterConfig(deviceFile, &error);
  else device = host::PrintQueueDevice(plot.plotterName);
  const int code = device ? device->format : -1;
  const bool printer = code == host::kPrintQueueFormat;

  bool turned = plot.rotation == 1 || plot.rotation == 3;
  std::optional<bool> upright;  // the orientation answered: the page upright or across
  bool toFile = true;
  std::string path;
  if (detailed) {
    reply = take("\n输入图纸尺寸或 [?] <" + plot.paperSize + ">: ");
    if (!reply) return RTCAN;
    if (!TrimBlanks(*reply).empty()) plot.paperSize = std::string(TrimBlanks(*reply));
    if (!choose("\n输入图纸单位 [英寸(I)/毫米(M)/像素(P)] <毫米>: ", {"I", "M", "P", "英寸", "毫米", "像素"})) return RTCAN;
    reply = choose(std::string("\n输入图形方向 [纵向(P)/横向(L)] <") + (turned ? "纵向" : "横向") + ">: ", {"P", "L", "纵向", "横向"});
    if (!reply) return RTCAN;
    const std::string o = AsciiUpper(TrimBlanks(*reply));
    if (o == "P" || o == "纵向") turned = true, upright = true;
    if (o == "L" || o == "横向") turned = false, upright = false;
    if (!yesNo("\n是否上下颠倒打印？[是(Y)/否(N)] <否>: ")) return RTCAN;
    reply = choose("\n输入打印区域 [显示(D)/范围(E)/图形界限(L)/视图(V)/窗口(W)] <窗口>: ", {"D", "E", "L", "V", "W"});
    if (!reply) return RTCAN;
    const std::string area = AsciiUpper(TrimBlanks(*reply));
    if (area == "E" || area == "D") plot.plotType = host::kPlotExtents;
    if (area == "W" || area.empty()) {
      plot.plotType = host::kPlotWindow;
      for (Point2d* corner : {&plot.windowMin, &plot.windowMax}) {
        reply = take(std::string(corner == &plot.windowMin ? "\n输入窗口的左下角" : "\n输入窗口的右上角") + " <" +
                     PointText(*corner) + ">: ");
        if (!reply) return RTCAN;
        if (TrimBlanks(*reply).empty()) continue;
        const auto p = ParsePoint(*reply);
        if (!p) {
          print("\n需要点坐标。");
          return RTERROR;
        }
        *corner = p->to2d();
      }
    }
    reply = take("\n输入打印比例 (打印的 毫米=图形单位) 或 [布满(F)] <布满>: ");
    if (!reply) return RTCAN;
    if (const std::string s = AsciiUpper(TrimBlanks(*reply)); s == "F" || s == "布满") {
      plot.layoutFlags |= kFlagUseStandardScale;
      plot.standardScaleType = host::kScaleToFit;
    } else if (!s.empty()) {
      const auto scale = ParseScale(s);
      if (!scale) {
        print("\n无效的打印比例。");
        return RTERROR;
      }
      plot.layoutFlags &= ~kFlagUseStandardScale;
      plot.customScaleNumerator = *scale, plot.customScaleDenominator = 1;
    }
    reply = take("\n输入打印偏移 (x,y) 或 [居中打印(C)] <居中>: ");
    if (!reply) return RTCAN;
    if (const std::string s = AsciiUpper(TrimBlanks(*reply)); s == "C" || s == "居中打印") {
      plot.layoutFlags |= kFlagPlotCentered;
    } else if (!s.empty()) {
      if (!ParsePoint(s)) {
        print("\n需要点坐标或选项关键字。");
        return RTERROR;
      }
      plot.layoutFlags &= ~kFlagPlotCentered;
    }
    reply = yesNo("\n是否按样式打印？[是(Y)/否(N)] <是>: ");
    if (!reply) return RTCAN;
    if (IsNo(*reply)) plot.layoutFlags &= ~kFlagPlotPlotStyles;
    else if (IsYes(*reply)) plot.layoutFlags |= kFlagPlotPlotStyles;
    reply = take("\n输入打印样式表名称或 [?] (输入 . 表示无) <" + plot.styleSheet + ">: ");
    if (!reply) return RTCAN;
    if (TrimBlanks(*reply) == ".") plot.styleSheet.clear();
    else if (!TrimBlanks(*reply).empty()) plot.styleSheet = std::string(TrimBlanks(*reply));
    reply = yesNo("\n是否打印线宽？[是(Y)/否(N)] <是>: ");
    if (!reply) return RTCAN;
    if (IsNo(*reply)) plot.layoutFlags &= ~kFlagPrintLineweights;
    else if (IsYes(*reply)) plot.layoutFlags |= kFlagPrintLineweights;
    if (layout->isModel()) {
      if (!choose("\n输入着色打印设置 [按显示(A)/线框(W)/消隐(H)/视觉样式(V)/渲染(R)] <按显示>: ", {"A", "W", "H", "V", "R"})) return RTCAN;
    } else {
      for (std::string prompt : {"\n是否按打印比例缩放线宽？[是(Y)/否(N)] <否>: ", "\n是否先打印图纸空间？[是(Y)/否(N)] <否>: ",
                                 "\n是否隐藏图纸空间对象？[是(Y)/否(N)] <否>: "})
        if (!yesNo(prompt)) return RTCAN;
    }
  }
  if (!FileOnly(code)) {
    reply = yesNo("\n是否打印到文件 [是(Y)/否(N)] <否>: ");
    if (!reply) return RTCAN;
    toFile = IsYes(*reply);
  }
  if (toFile) {
    const std::string offered = fs::path(path_).stem().string() + "-" + layout->name;
    reply = take("\n输入文件名 <" + offered + ">: ");
    if (!reply) return RTCAN;
    path = std::string(TrimBlanks(*reply));
    if (path.empty()) path = offered;
    // A bare name goes beside the drawing, as the host's default folder would take it.
    if (fs::path(path).is_relative()) path = (fs::absolute(fs::path(path_)).parent_path() / path).string();
  }
  if (detailed && !yesNo("\n是否保存对页面设置的修改 [是(Y)/否(N)]? <否>: ")) return RTCAN;
  reply = yesNo("\n是否继续打印？[是(Y)/否(N)] <是>: ");
  if (!reply) return RTCAN;
  if (IsNo(*reply)) return RTCAN;

  PlotRecord record{path, false, {}, {}, 0, {}, {}, 0, 0};
  const auto refuse = [&](std::string message) {
    print("\n" + message);
    record.message = std::move(message);
    plots_.push_back(std::move(record));
    return RTERROR;
  };
  if (!device) {
    return refuse("打印设备“" + (plot.plotterName.empty() ? std::string("无") : plot.plotterName) + "”无法使用" +
                  (error.empty() ? std::string() : "：" + error) + "，未打印。");
  }
  // Paper needs a printer: a file device can't give it.
  if (!toFile && !printer) return refuse("打印设备“" + plot.plotterName + "”不是打印机，不能打印到纸张，未打印。");
  // A printer plotted to a file writes the plotter language (PLT) at its medium, as a driver would.
  const std::optional<render::PlotFormat> format =
      printer ? (toFile ? render::PlotFormat::Plt : render::PlotFormat::Pdf) : FormatOf(code);
  if (!format) return refuse("打印设备“" + plot.plotterName + "”的输出格式无法识别，未打印。");
  // The open drawing is in use, as it would be in any host: a plot never replaces it.
  if (std::error_code ec; toFile && fs::exists(path, ec) && fs::equivalent(path, path_, ec))
    return refuse("文件 " + path + " 是打开的图纸，不能写入，未打印。");
  const render::PlotterMedium* medium = FindPlotMedium(*device, plot.paperSize);
  if (!medium) return refuse("打印设备“" + plot.plotterName + "”没有图纸“" + plot.paperSize + "”，未打印。");

  // A printer's media stand upright as the queue describes them: the orientation answered is the
  // page's, so an across page turns the medium.
  if (printer && upright) turned = *upright != (medium->heightMm > medium->widthMm);
  render::PlotRequest request;
  fillPlotRequest(*layout, plot, *device, *medium, turned, request);
  request.format = *format;
  // Raster media are measured in pixels: one pixel for each unit of the medium.
  request.rasterDpi = 25.4;
  request.enlarge = 1;
  request.outputPath = path;
  if (printer && !toFile) return printOnQueue(plot.plotterName, medium->name, request);

  const render::PlotResult result = render::PlotWindow(db_, request);
  for (const std::string& note : result.notes) print("\n" + note);
  if (!result.ok) return refuse(result.message);
  print("\n已打印到文件 " + path);
  record.ok = true;
  plots_.push_back(std::move(record));
  return RTNORM;
}

}  // namespace tv::console
