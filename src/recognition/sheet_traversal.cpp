// The road from a command to a list of sheets: selection or a walk through the spaces, the
// pipeline on each space, and the filter of small sheets.
#include "recognition/sheet_traversal.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/command_prologue.h"
#include "host/editor.h"
#include "host/whole_number.h"
#include "host/wrappers.h"
#include "recognition/loose_lines.h"
#include "recognition/plot_marker.h"
#include "recognition/sheet_geometry.h"
#include "settings/config.h"
#include "settings/plot_setting.h"

namespace tv::recognition {

namespace {

constexpr const char* kMarkerLayer = "Temp_PlotLayer";

// The spaces of a walk, by the item chosen in "自动遍历".
ObjectIdArray SpacesOfChoice(int item, ObjectId currentSpaceId) {
  const ObjectId modelId = host::ModelSpaceId();
  if (item == 0) return {modelId};
  if (item == 3) return {currentSpaceId};
  // Layouts in ascending tab order, ties in dictionary order.
  std::vector<host::LayoutFacts> layouts = host::ListLayouts();
  std::erase_if(layouts, [](const host::LayoutFacts& l) { return l.blockId.isNull(); });
  std::stable_sort(layouts.begin(), layouts.end(),
                   [](const host::LayoutFacts& a, const host::LayoutFacts& b) { return a.tabOrder < b.tabOrder; });
  ObjectIdArray spaces;
  for (const host::LayoutFacts& l : layouts)
    if (item == 2 || l.blockId != modelId) spaces.push_back(l.blockId);
  return spaces;
}

// Sequence numbers and the largest sheet, after all spaces are scanned.
void NumberSheets(SheetJob& job, const ObjectIdArray& scanned) {
  // The sheets are few and the scanned ids many: look each id up among the sheets' sources
  // rather than index every id.
  using Source = std::pair<ObjectId, Plot_Drawing1*>;
  const auto byId = [](const Source& a, const Source& b) { return a.first < b.first; };
  std::vector<Source> sources;
  sources.reserve(job.allSheets.size());
  for (const auto& sheet : job.allSheets) {
    sheet->sequence = -1;
    sources.emplace_back(sheet->sourceIds[0], sheet.get());
  }
  std::sort(sources.begin(), sources.end(), byId);
  for (std::size_t i = 0; i < scanned.size(); ++i) {
    auto [first, last] = std::equal_range(sources.begin(), sources.end(), Source{scanned[i], nullptr}, byId);
    for (; first != last; ++first)
      if (first->second->sequence < 0) first->second->sequence = static_cast<std::int32_t>(i);
  }
  job.largestSizeX = job.largestSizeY = 0;
  for (const auto& sheet : job.allSheets) {
    if (sheet->sizeX * 1e-06 * sheet->sizeY > job.largestSizeX * 1e-06 * job.largestSizeY) {
      job.largestSizeX = SaturatedInt(sheet->sizeX);
      job.largestSizeY = SaturatedInt(sheet->sizeY);
    }
  }
}

}  // namespace

std::optional<ObjectIdArray> ChooseSpaces(ObjectId currentSpaceId) {
  const bool inLayout = host::IsPaperSpace();
  const std::vector<std::string> items =
      inLayout ? std::vector<std::string>{"模型空间", "所有布局", "布局+模型", "当前布局"}
               : std::vector<std::string>{"当前模型", "所有布局", "布局+模型"};
  const std::optional<int> item = host::CurrentEditor().chooseItem("自动遍历", items, inLayout ? 3 : 0);
  if (!item) return std::nullopt;
  return SpacesOfChoice(*item, currentSpaceId);
}

ObjectId MarkerLayer() {
  const ObjectId layerId = host::FindOrAddLayer(kMarkerLayer);
  host::SetLayerFlag(layerId, host::kLayerOff, false);
  host::SetLayerFlag(layerId, host::kLayerFrozen, false);
  host::SetLayerFlag(layerId, host::kLayerLocked, false);
  host::SetLayerFlag(layerId, host::kLayerPlottable, false);
  return layerId;
}

bool FindSheets(SheetJob& job) {
  job.largestSizeX = job.largestSizeY = 0;
  job.keptSheets.clear();
  job.allSheets.clear();
  job.frameBlockIds.clear();
  job.plainBlockIds.clear();

  ObjectIdArray picked;
  const int rc = host::CurrentEditor().select("_:$", {kRangePrompt, ""}, {},
                                              host::TypeFilter({"LINE", "LWPOLYLINE", "POLYLINE", "insert"}), picked);
  const std::int64_t start = host::StageClock();
  ObjectIdArray scanned;
  job.currentSpaceId = host::OpenCurrentSpace();

  if (rc == host::RTNORM && !picked.empty()) {
    BeginScanProgress();
    scanned = picked;
    ScanSpace(job, picked, ObjectId{});
  } else if (rc == host::RTERROR) {
    const std::optional<ObjectIdArray> spaces = ChooseSpaces(job.currentSpaceId);
    if (!spaces) return false;
    BeginScanProgress();
    for (ObjectId space : *spaces) {
      ObjectIdArray ids;
      host::CollectSpaceIds(space, ids);
      scanned.insert(scanned.end(), ids.begin(), ids.end());
      ScanSpace(job, ids, space);
    }
    host::ActivateLayoutOf(job.currentSpaceId);
  } else {
    return false;
  }

  TickScanProgress();
  NumberSheets(job, scanned);
  EndScanProgress();
  host::StageTimer(start, "图框判断");

  if (job.allSheets.empty()) {
    host::Print("\n未选择到矩形或图块！！！");
    return false;
  }
  return true;
}

void ScanSpace(SheetJob& job, ObjectIdArray& ids, ObjectId spaceId) {
  const settings::Config& config = settings::GlobalConfig();
  host::ActivateLayoutOf(spaceId);
  RefreshUcs(true);
  const ObjectId layerId = MarkerLayer();
  std::int64_t tick = host::StageClock();

  TempIdArray candidates, lines;
  SheetList master;

  TickScanProgress();
  ClassifyEntities(ids, candidates, lines);
  ids.clear();
  ids.shrink_to_fit();
  tick = host::StageTimer(tick, "从idArray0提取信息并分类");

  TickScanProgress();
  SortByArea(candidates);
  tick = host::StageTimer(tick, "对单个图形按面积从大到小排序");

  ExamineCandidates(candidates, master, spaceId, layerId, job.frameBlockIds, job.plainBlockIds, TickScanProgress);
  tick = host::StageTimer(tick, "对PLine和图块按面积从大到小分别判断");

  if (config.frame_loose_lines) {
    TickScanProgress();
    PruneSheets(master);
    tick = host::StageTimer(tick, "删除尺寸过小的图框，删除重合或内包含的图框2");

    TickScanProgress();
    SegmentArrays segments;
    SplitIntoSegments(master, candidates, lines, segments);
    tick = host::StageTimer(tick, "处理直线，并剔除已有图框内的图形");

    TickScanProgress();
    FindLooseRectangles(segments, spaceId, layerId, master, TickScanProgress);
    tick = host::StageTimer(tick, "得到零散直线组成的矩形");
  }

  TickScanProgress();
  PruneSheets(master);
  tick = host::StageTimer(tick, "删除尺寸过小的图框，删除重合或内包含的图框3");

  if (config.skip_blank_rect) {
    TickScanProgress();
    DropEmptySheets(master);
    host::StageTimer(tick, "删除空图框");
  }

  job.allSheets.reserve(job.allSheets.size() + master.size());
  for (auto& sheet : master) job.allSheets.push_back(std::move(sheet));
}

std::size_t FilterSheets(SheetJob& job) {
  job.keptSheets.clear();
  const double percent = settings::CurrentPlotSetting().filter_ratio;
  const double threshold = job.largestSizeX * 1e-06 * std::trunc(job.largestSizeY * percent / 100.0);
  for (const auto& sheet : job.allSheets) {
    if (sheet->sizeX * 1e-06 * sheet->sizeY < threshold) {
      SetMarker(*sheet, -1, kMarkerHidden);
    } else {
      job.keptSheets.push_back(sheet.get());
      SetMarker(*sheet, -1, kMarkerActive);
    }
  }
  return job.keptSheets.size();
}

}  // namespace tv::recognition
