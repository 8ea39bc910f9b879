#include "plot/old_batch.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>

#include "host/editor.h"
#include "host/entity.h"
#include "host/layout_plot.h"
#include "host/run_files.h"
#include "host/wrappers.h"
#include "paper/layout_plot_setting.h"
#include "paper/plotter_writer.h"
#include "paper/scale_fitting.h"
#include "plot/old_batch_form.h"
#include "plot/output_paths.h"
#include "plot/plot_job.h"
#include "plot/plotter_lock.h"
#include "plot/typed_point.h"
#include "recognition/plot_marker.h"
#include "recognition/sheet_geometry.h"
#include "recognition/sheet_order.h"
#include "recognition/sheet_traversal.h"
#include "settings/plot_setting.h"

namespace tv::plot {

namespace {

namespace fs = std::filesystem;
using recognition::Plot_Drawing1;

constexpr std::string_view kRangePrompt = "\n选择打印范围<全部>：";
constexpr std::string_view kRectPrompt = "\n选择代表打印范围的矩形：";
constexpr std::string_view kFirstPrompt = "\n选择打印范围第一点[U-Undo]:";
constexpr std::string_view kSecondPrompt = "\n选择打印范围第二点[回车完成选择]:";
constexpr std::string_view kGroupPrompt = "\n选择打印图集:";
constexpr std::string_view kPltFolderTitle = "请选择放置PLT文件的目录：";

struct Area {
  Point2d min, max;
};

host::MessageAnswer Box(std::string_view text, host::MessageButtons buttons = host::MessageButtons::Ok) {
  return host::CurrentEditor().messageBox(text, kPlotCaption, buttons);
}



bool IsUndo(std::string_view answer) { return answer == "U" || answer == "u"; }

bool AddArea(std::vector<Area>& areas, Point2d a, Point2d b) {
  const Area area{{std::min(a.x, b.x), std::min(a.y, b.y)}, {std::max(a.x, b.x), std::max(a.y, b.y)}};
  if (!(area.max.x - area.min.x > 1e-05) || !(area.max.y - area.min.y > 1e-05)) return false;
  const double tolerance = 1e-06 * std::max(area.max.x - area.min.x, area.max.y - area.min.y);
  for (const Area& old : areas)
    if (std::fabs(old.min.x - area.min.x) <= tolerance && std::fabs(old.min.y - area.min.y) <= tolerance &&
        std::fabs(old.max.x - area.max.x) <= tolerance && std::fabs(old.max.y - area.max.y) <= tolerance)
      return true;
  areas.push_back(area);
  return true;
}

// Pairs of corners until Enter; "U" takes back the last pair. Nothing on cancel.
std::optional<std::vector<Area>> PickPoints() {
  host::Editor& editor = host::CurrentEditor();
  std::vector<Area> areas;
  for (;;) {
    std::string answer;
    if (editor.getString(kFirstPrompt, answer) != host::RTNORM) return std::nullopt;
    std::string_view given = TrimTyped(answer);
    if (given.empty()) return areas;
    if (IsUndo(given)) {
      if (areas.empty()) {
        host::Print("\n没有可撤销的打印范围。");
      } else {
        areas.pop_back();
        host::Print("\n已撤销第 " + std::to_string(areas.size() + 1) + " 个打印范围。");
      }
      continue;
    }
    const std::optional<Point3d> first = ParseTypedPoint(given);
    if (!first) {
      host::Print("\n需要点或选项关键字。");
      continue;
    }
    for (;;) {
      if (editor.getString(kSecondPrompt, answer) != host::RTNORM) return std::nullopt;
      given = TrimTyped(answer);
      if (given.empty()) return areas;
      if (IsUndo(given)) break;  // the first point goes; the pair is picked again
      const std::optional<Point3d> second = ParseTypedPoint(given);
      if (!second) {
        host::Print("\n需要点。");
        continue;
      }
      if (!AddArea(areas, {first->x, first->y}, {second->x, second->y})) {
        host::Print("\n两点不能构成打印范围（宽度或高度为 0），请重新选择。");
        continue;
      }
      host::Print("\n已选择 " + std::to_string(areas.size()) + " 个打印范围。");
      break;
    }
  }
}

// Each selection is one group; its extents widened by the margin are its area. Enter ends.
std::optional<std::vector<Area>> PickGroups(double margin) {
  std::vector<Area> areas;
  for (;;) {
    ObjectIdArray ids;
    const int rc = host::CurrentEditor().select("_:$", {std::string(kGroupPrompt), ""}, {}, {}, ids);
    if (rc == host::RTCAN) return std::nullopt;
    if (rc != host::RTNORM) return areas;
    const Extents3d box = recognition::SelectionExtents(ids);
    if (box.min.x > box.max.x) continue;
    AddArea(areas, {box.min.x - margin, box.min.y - margin}, {box.max.x + margin, box.max.y + margin});
  }
}

bool NamedIn(const std::vector<std::string>& names, const std::string& name) {
  const auto upper = [](std::string s) {
    for (char& ch : s)
      if (ch >= 'a' && ch <= 'z') ch = static_cast<char>(ch - 'a' + 'A');
    return s;
  };
  return std::any_of(names.begin(), names.end(), [&](const std::string& n) { return upper(n) == upper(name); });
}

// The inserts of the chosen blocks, or the closed rectangles (on the chosen layers), among a
// selection; Enter takes the whole current space. Nothing on cancel.
std::optional<std::vector<Area>> PickEntities(const OldBatchChoices& c) {
  ObjectIdArray ids;
  const bool range = c.way != PickWay::Rects;
  const int rc = host::CurrentEditor().select("_:$", {std::string(range ? kRangePrompt : kRectPrompt), ""}, {}, {}, ids);
  if (rc == host::RTCAN) return std::nullopt;
  if (rc != host::RTNORM && range) host::CollectSpaceIds(host::OpenCurrentSpace(), ids);
  std::vector<Area> areas;
  for (const ObjectId id : ids) {
    const host::Entity e = host::OpenEntity(id);
    if (!e) continue;
    if (c.way == PickWay::Blocks) {
      if (e.kind() != host::EntityClass::BlockReference) continue;
      if (!NamedIn(c.blocks, host::BlockName(e.blockTableRecord())) &&
          !NamedIn(c.blocks, host::BlockName(e.dynamicBlockTableRecord())))
        continue;
      const Extents3d box = recognition::EntityExtents(id);
      if (box.min.x <= box.max.x) AddArea(areas, box.min.to2d(), box.max.to2d());
      continue;
    }
    if (!host::IsPolylineClass(e.kind())) continue;
    if (c.way == PickWay::LayerRects) {
      const std::optional<host::LayerFacts> layer = host::ReadLayer(e.layer());
      if (!layer || !NamedIn(c.layers, layer->name)) continue;
    }
    Point3d min, max;
    if (recognition::IsRectanglePolyline(e, false, {}, min, max)) AddArea(areas, min.to2d(), max.to2d());
  }
  return areas;
}

std::optional<std::vector<Area>> PickAreas(const OldBatchChoices& c) {
  switch (c.way) {
    case PickWay::Points: return PickPoints();
    case PickWay::Groups: return PickGroups(c.margin);
    default: return PickEntities(c);
  }
}

// One numbered marker per area, in the drawing's sheet order for areas found in the drawing and
// in the order picked otherwise.
void MarkAreas(recognition::SheetJob& job, const std::vector<Area>& areas, bool reorder, std::int32_t order) {
  const ObjectId layer = recognition::MarkerLayer();
  for (std::size_t i = 0; i < areas.size(); ++i) {
    auto row = std::make_unique<Plot_Drawing1>();
    row->minX = areas[i].min.x, row->minY = areas[i].min.y;
    row->maxX = areas[i].max.x, row->maxY = areas[i].max.y;
    row->sizeX = row->maxX - row->minX, row->sizeY = row->maxY - row->minY;
    row->rotated = row->sizeX < row->sizeY;
    row->sequence = static_cast<std::int32_t>(i);
    row->markerId = recognition::NewMarker(layer, Extents3d{{row->minX, row->minY, 0}, {row->maxX, row->maxY, 0}});
    job.keptSheets.push_back(row.get());
    job.allSheets.push_back(std::move(row));
  }
  if (reorder) recognition::OrderSheets(job, order);
  for (std::size_t i = 0; i < job.keptSheets.size(); ++i)
    recognition::SetMarker(*job.keptSheets[i], static_cast<std::int32_t>(i + 1), recognition::kMarkerActive);
  host::RegenDrawing();
}

std::string Formatted(const char* pattern, int a, int b = 0) {
  char text[256];
  std::snprintf(text, sizeof text, pattern, a, b);
  return text;
}

// The PLT folder: the picker's choice without a trailing separator; nothing on cancel or a bad one.
std::optional<std::string> AskPltFolder() {
  std::optional<std::string> folder = host::CurrentEditor().askFolder(kPltFolderTitle, DrawingFolder());
  if (!folder) return std::nullopt;
  while (folder->size() > 1 && (folder->back() == '\\' || folder->back() == '/')) folder->pop_back();
  std::error_code ec;
  if (!fs::is_directory(*folder, ec)) {
    Box("所选文件夹有误 !");
    return std::nullopt;
  }
  return folder;
}

// The format of the drawing's settings for the time of a PLT run, which the plotter files follow.
class PltFormatScope {
 public:
  explicit PltFormatScope(bool on) : saved_(settings::CurrentPlotSetting().format), on_(on) {
    if (on_) settings::CurrentPlotSetting().format = settings::kFormatPlt;
  }
  ~PltFormatScope() {
    if (on_) settings::CurrentPlotSetting().format = saved_;
  }
  PltFormatScope(const PltFormatScope&) = delete;
  PltFormatScope& operator=(const PltFormatScope&) = delete;

 private:
  std::int32_t saved_;
  bool on_;
};

// This host writes PLT only through the system's own PLT device: each area gets the paper of its
// rectangle there, as a single plot would.
void PreparePltPapers(recognition::SheetJob& job, settings::PlotSettingRec& setting) {
  setting.format = settings::kFormatPlt;
  Job().ActivePlotSetting = &setting;
  HoldPlotterFiles();
  const double scale = paper::ScaleOfSheets(job.keptSheets, false);
  paper::RebuildPapers(job, scale, true, true);
}

// Sets the window (and for PLT the device and paper) of the current layout for one area.
void SetUpArea(const Plot_Drawing1& row, settings::PlotSettingRec& setting, bool toPlt) {
  paper::LayoutPlotSetting layout(&setting);
  if (toPlt) {
    layout.SetDevice(paper::PrivatePlotterName(settings::kFormatPlt));
    layout.ReadMediaList();
    layout.SetPaper(row.paperName, false);
    layout.SetRotation(false);
  }
  layout.SetWindow({row.minX, row.minY}, {row.maxX, row.maxY}, 0.0);
}

// Plots every area `copies` times; false when a plot failed and the run stopped.
bool PlotAreas(recognition::SheetJob& job, const OldBatchChoices& c, settings::PlotSettingRec& setting,
               const std::string& stem) {
  host::Editor& editor = host::CurrentEditor();
  const bool inLayout = host::IsPaperSpace();
  for (std::int32_t copy = 0; copy < c.copies; ++copy) {
    for (std::size_t i = 0; i < job.keptSheets.size(); ++i) {
      const Plot_Drawing1& row = *job.keptSheets[i];
      std::string path;
      if (c.toPlt) {
        path = NumberedPltPath(stem, static_cast<std::int32_t>(i + 1));
        if (host::IsDrawingFileRead(path)) {
          Box(OutputIsDrawingMessage(path, i + 1));
          continue;
        }
        std::error_code ec;
        fs::remove(path, ec);
        CheckOutputPathLength(path);
      }
      SetUpArea(row, setting, c.toPlt);
      const std::string orientation = c.autoRotate ? (row.rotated ? "P" : "L") : "";
      Job().InPlot = true;
      const int rc = editor.command(OldBatchAnswers(inLayout, orientation, path));
      Job().InPlot = false;
      if (rc != host::RTNORM) {
        host::Print(Formatted("\n第 %d 张图纸未能打印，批打印中止 !", static_cast<int>(i + 1)));
        return false;
      }
    }
  }
  return true;
}

}  // namespace

std::vector<std::string> OldBatchAnswers(bool inLayout, const std::string& orientation, const std::string& pltPath) {
  std::vector<std::string> a{"-plot", "y", "", "", "", "", orientation, "", "W"};
  a.insert(a.end(), inLayout ? 10 : 8, "");
  if (pltPath.empty()) a.insert(a.end(), {"N", "", "Y"});
  else a.insert(a.end(), {"Y", pltPath, "", "Y"});
  return a;
}

void OldPaperBatchCommand() {
  EnterPlotCommand();
  const std::optional<OldBatchChoices> choices = Dlg_BPlot();
  if (!choices) return;
  const OldBatchChoices& c = *choices;

  const host::LayoutPlotSettings layout = host::LayoutPlotSettings::Current();
  if (!c.toPlt) {
    const std::string device = layout.valid() ? layout.getPlotCfgName() : std::string();
    if (!paper::LayoutPlotSetting::IsPaperDevice(device)) {
      Box("当前布局的打印设备“" + (device.empty() ? std::string("无") : device) +
          "”不能打印到纸张 !\n\n请先在页面设置中为当前布局选择打印机，或选择“打印到PLT文件”。");
      return;
    }
  }

  const std::optional<std::vector<Area>> areas = PickAreas(c);
  if (!areas) return;
  if (areas->empty()) {
    Box("未找到打印区域 !");
    return;
  }
  settings::PlotSettingRec setting = settings::CurrentPlotSetting();
  recognition::SheetJob job;
  MarkAreas(job, *areas, c.way != PickWay::Points && c.way != PickWay::Groups, setting.sort_style);
  const int count = static_cast<int>(job.keptSheets.size());
  const std::string question = c.toPlt ? Formatted("共有 %d 张图纸打印，现在开始打印 ？", count)
                                       : Formatted("共有 %d 张图纸打印，打印 %d 份，现在开始打印 ？", count, c.copies);
  const bool go = Box(question, host::MessageButtons::YesNo) == host::MessageAnswer::Yes;
  for (Plot_Drawing1* row : job.keptSheets) recognition::EraseMarker(row->markerId);
  host::RegenDrawing();
  if (!go) return;

  std::string stem;
  if (c.toPlt) {
    const std::optional<std::string> folder = AskPltFolder();
    if (!folder) return;
    stem = *folder + "/" + DrawingTitle();
  }

  // The layout gets its own plot settings back, whatever the run set.
  const std::shared_ptr<const host::PlotSettingsCopy> kept = layout.valid() ? layout.copy() : nullptr;
  host::SetVar("FILEDIA", std::int32_t{0});
  {
    const PltFormatScope format(c.toPlt);
    if (c.toPlt) PreparePltPapers(job, setting);
    PlotAreas(job, c, setting, stem);
    EndFileRun();
  }
  host::SetVar("FILEDIA", std::int32_t{1});
  if (kept) host::LayoutPlotSettings(layout).restore(*kept);
}

}  // namespace tv::plot
