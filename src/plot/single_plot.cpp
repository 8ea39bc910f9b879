#include "plot/single_plot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <filesystem>
#include <memory>
#include <system_error>

#include "host/editor.h"
#include "host/entity.h"
#include "host/run_files.h"
#include "host/wrappers.h"
#include "paper/layout_plot_setting.h"
#include "paper/plotter_writer.h"
#include "paper/saved_plotter.h"
#include "paper/scale_fitting.h"
#include "plot/output_paths.h"
#include "plot/plot_job.h"
#include "plot/plotter_lock.h"
#include "plot/run_checks.h"
#include "plot/typed_point.h"
#include "plot/single_plot_form.h"
#include "plot/sheet_export.h"
#include "settings/config.h"
#include "settings/plot_setting.h"

namespace tv::plot {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kFirstPointPrompt = "\n选择打印范围第一点：( 按Tab键-->选择打印图形 ) ( 按S键设置 )";
constexpr std::string_view kSecondPointPrompt = "\n选择第二点：";
constexpr std::string_view kSelectPrompt = "\n选择要打印的图形：( 按Tab键-->点选打印范围 ) ( 按S键设置 )";
constexpr std::string_view kSaveTitle = "文件保存为...";

// What a plot the host didn't finish leaves for the stand-by command.
struct Pending {
  std::string path;
  bool plotSignatures = false;
  bool rotated = false;
};
Pending& PendingPlot() {
  static Pending pending;
  return pending;
}

std::string& LastSingleFolder() {
  static std::string folder;
  return folder;
}

// Without the dot; drawing files take the extension the platform writes them with.
std::string ExtensionOf(std::int32_t format) {
  static constexpr std::string_view kExtensions[] = {"pdf", "dwf", "jpg", "png", "plt", "eps"};
  if (format == settings::kFormatDwg) return FormatExtension(format).substr(1);
  if (format < 0 || format > 5) return "pdf";
  return std::string(kExtensions[format]);
}

bool IsFileOnlyFormat(std::int32_t format) {
  return format == settings::kFormatPlt || format == settings::kFormatEps;
}

void Say(std::string_view text) { host::CurrentEditor().messageBox(text, kPlotCaption, host::MessageButtons::Ok); }

std::string Sized(const char* pattern, std::int32_t a, std::int32_t b) {
  char text[512];
  std::snprintf(text, sizeof text, pattern, a, b);
  return text;
}



void PlotPicked(const Point3d& first, const Point3d& second);

void EndSinglePlot() {
  EndFileRun();
  host::SetVar("FILEDIA", std::int32_t{1});
}

// The pick's rectangle to a drawing file of its own for DWG, else to a plot.
void PlotPicked(const Point3d& first, const Point3d& second) {
  if (SinglePlotSetting().format != settings::kFormatDwg) {
    RunSinglePlot(first, second);
    return;
  }
  std::string path;
  if (!ChooseSinglePath(path)) return;
  const std::string parked = std::string(kParkedStylePrefix) + TimeStamp();
  ParkStandardNames(parked);
  ExportSheet({std::min(first.x, second.x), std::min(first.y, second.y)},
              {std::max(first.x, second.x), std::max(first.y, second.y)}, path, true, false);
  RestoreStandardNames(parked);
}

}  // namespace

bool ChooseSinglePath(std::string& out) {
  const settings::PlotSettingRec& setting = SinglePlotSetting();
  const std::string extension = ExtensionOf(setting.format);
  std::error_code ec;
  if (settings::GlobalConfig().choose_folder == 0 && !IsFileOnlyFormat(setting.format)) {
    // A throw-away to look at: the previous one goes with the rest of the folder.
    const std::string folder = TempFolder();
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, ec))
      if (entry.is_regular_file(ec)) fs::remove(entry.path(), ec);
    out = folder + "/BP" + TimeStamp() + "." + extension;
    return true;
  }
  std::string folder = LastSingleFolder().empty() ? DrawingFolder() : LastSingleFolder();
  const std::string offered =
      folder + "/" + DrawingTitle() + (setting.format == settings::kFormatDwg ? "_单页." : ".") + extension;
  for (;;) {
    std::optional<std::string> chosen = host::CurrentEditor().askSavePath(kSaveTitle, offered, extension);
    if (!chosen || chosen->empty()) return false;
    if (host::IsDrawingFileRead(*chosen)) {
      Say(OutputIsDrawingMessage(*chosen, 1));
      continue;
    }
    fs::remove(*chosen, ec);
    if (fs::exists(*chosen, ec)) {
      Say("文件 < " + *chosen + " >\n\n可能处于打开状态，无法覆盖 ！\n\n请选择其他文件名 !");
      continue;
    }
    LastSingleFolder() = fs::path(*chosen).parent_path().string();
    out = *chosen;
    return true;
  }
}

bool RunSinglePlot(const Point3d& first, const Point3d& second) {
  host::Editor& editor = host::CurrentEditor();
  settings::PlotSettingRec& setting = SinglePlotSetting();
  Job().ActivePlotSetting = &setting;

  recognition::SheetJob job;
  auto owned = std::make_unique<recognition::Plot_Drawing1>();
  recognition::Plot_Drawing1& row = *owned;
  row.minX = std::min(first.x, second.x);
  row.minY = std::min(first.y, second.y);
  row.maxX = std::max(first.x, second.x);
  row.maxY = std::max(first.y, second.y);
  row.sizeX = std::fabs(second.x - first.x);
  row.sizeY = std::fabs(second.y - first.y);
  row.rotated = row.sizeX < row.sizeY;
  job.keptSheets.push_back(owned.get());
  job.allSheets.push_back(std::move(owned));

  double scale = FixedListScale() ? *FixedListScale() : paper::ScaleOfSheet(row, true);
  row.scale = scale;
  paper::MyPaper paper;
  if (paper::PaperOfSheet(row, paper, scale, false)) {
    if (setting.format != settings::kFormatDwf &&
        (paper.length > paper::kLargestSide || paper.width > paper::kLargestSide)) {
      Say(Sized("输出纸张尺寸 %d x %d mm 过大\n\n已超过 5080 mm (即200英寸)\n\n请检查是否打印比例有误\n\n打印退出 !",
                paper.length, paper.width));
      Job().ActivePlotSetting = nullptr;
      return false;
    }
    if (paper.length < paper::kSmallestSide || paper.width < paper::kSmallestSide) {
      const std::string question = Sized(
          "输出纸张尺寸 %d x %d mm 过小\n\n可能打印比例有误，或者选择的打印范围有误\n\n是否继续 ?", paper.length,
          paper.width);
      if (editor.messageBox(question, kPlotCaption, host::MessageButtons::YesNo) != host::MessageAnswer::Yes) {
        Job().ActivePlotSetting = nullptr;
        return false;
      }
    }
    const double longSide = std::max(row.sizeX, row.sizeY), shortSide = std::min(row.sizeX, row.sizeY);
    if (paper.length > 0 && paper.width > 0)
      scale = std::max(longSide / paper.length, shortSide / paper.width);
  }

  // Signatures that would be left out of the plot are asked about before anything is set up.
  if (!SignatureCheckPasses(setting)) {
    Job().ActivePlotSetting = nullptr;
    return false;
  }
  paper::LayoutPlotSetting::SavePlotter(paper::GlobalSavedPlotter());
  const bool inLayout = host::IsPaperSpace();
  host::SetVar("FILEDIA", std::int32_t{0});
  HoldPlotterFiles();
  paper::RebuildPapers(job, scale, true, false);
  {
    paper::LayoutPlotSetting layout(&setting);
    layout.ReadStyleList();
    layout.ReadMediaList();
    layout.SetDevice(paper::PrivatePlotterName(setting.format));
    layout.SetPaper(row.paperName, row.rotated);
    layout.SetPlotStyle(LastStyleIndex());
    layout.SetWindow({row.minX, row.minY}, {row.maxX, row.maxY}, scale);
    layout.SetRotation(row.rotated);
  }

  std::string path;
  if (!ChooseSinglePath(path)) {
    EndSinglePlot();
    return false;
  }
  const bool signatures = setting.plot_signatures != 0;
  if (!PlotOne(inLayout, path, signatures, row.rotated)) {
    PendingPlot() = {path, signatures, row.rotated};
    editor.sendStringToExecute("\x03\x03");
    editor.sendStringToExecute("SinglePlot_Plot_Standby\n");
    return false;
  }
  if (!IsFileOnlyFormat(setting.format)) editor.shellOpen(path);
  EndSinglePlot();
  return true;
}

void SinglePlot_SelectP() {
  host::Editor& editor = host::CurrentEditor();
  for (;;) {
    std::string answer;
    if (editor.getString(kFirstPointPrompt, answer) != host::RTNORM) return;
    const std::string_view given = TrimTyped(answer);
    if (given.empty()) return;
    if (given == "S" || given == "s") {
      Dlg_SinglePlot_Setting();
      continue;
    }
    if (given == "\t" || given == "Tab" || given == "TAB" || given == "tab") {
      SinglePlot_SelectW();
      return;
    }
    const std::optional<Point3d> first = ParseTypedPoint(given);
    if (!first) {
      host::Print("\n需要点或选项关键字。");
      continue;
    }
    Point3d second;
    if (editor.getCorner(kSecondPointPrompt, *first, second) != host::RTNORM) continue;
    PlotPicked(*first, second);
  }
}

void SinglePlot_SelectW() {
  host::Editor& editor = host::CurrentEditor();
  ObjectIdArray ids;
  const int rc = editor.select("_:$", {std::string(kSelectPrompt), ""}, {}, {}, ids);
  if (rc == host::RTCAN) return;
  std::optional<Extents3d> joint;
  for (const ObjectId id : ids) {
    const host::Entity e = host::OpenEntity(id);
    if (!e) continue;
    const std::optional<Extents3d> box = e.geomExtents();
    if (!box) continue;
    if (!joint) joint = *box;
    else joint->add(*box);
  }
  if (!joint) return;
  PlotPicked(joint->min, joint->max);
}

void SinglePlotCommand() {
  EnterPlotCommand();
  if (settings::GlobalConfig().single_plot_pick_mode == 0) SinglePlot_SelectP();
  else SinglePlot_SelectW();
}

void SinglePlot_Plot_Standby() {
  Pending pending = std::move(PendingPlot());
  PendingPlot() = {};
  if (pending.path.empty()) return;
  host::SetVar("FILEDIA", std::int32_t{0});
  if (PlotOne(true, pending.path, pending.plotSignatures, pending.rotated) && !IsFileOnlyFormat(SinglePlotSetting().format))
    host::CurrentEditor().shellOpen(pending.path);
  host::CurrentEditor().sendStringToExecute("TV_BatchPlot_1\n\x03\x03");
  EndSinglePlot();
}

}  // namespace tv::plot
