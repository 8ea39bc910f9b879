// Finding the sheets of the title-block batch: the range, the walk through the spaces, the
// inserts whose block the library defines, and the removal of sheets that lie in others.
#include <algorithm>
#include <optional>
#include <vector>

#include "host/command_prologue.h"
#include "host/editor.h"
#include "host/entity.h"
#include "host/wrappers.h"
#include "recognition/sheet_geometry.h"
#include "recognition/sheet_traversal.h"
#include "titleblock/title_sheets.h"

namespace tv::titleblock {

namespace {

constexpr double kCoverTolerance = 0.00001;

// The progress of a scan: one step for each candidate, across the spaces of a walk.
int progressStep = 0;

// The block name an insert is known by: a dynamic block's "*U" copy by its original's name. A
// plain anonymous block keeps its "*U" name and so never matches a definition.
std::string InsertBlockName(const host::Entity& insert) { return host::BlockName(insert.dynamicBlockTableRecord()); }

bool LiesIn(const Plot_Drawing2& a, const Plot_Drawing2& b) {
  return !(a.min_x < b.min_x - kCoverTolerance) && !(a.min_y < b.min_y - kCoverTolerance) &&
         !(a.max_x > b.max_x + kCoverTolerance) && !(a.max_y > b.max_y + kCoverTolerance);
}

// A sheet that lies in another goes. The rectangles are looked at as they are at each moment, so
// of two equal sheets the first goes and the second stays.
void RemoveCoveredSheets(TitleSheetList& rows) {
  for (std::size_t i = 0; i < rows.size(); ++i) {
    for (std::size_t j = 0; j < rows.size(); ++j) {
      if (i == j || !LiesIn(*rows[i], *rows[j])) continue;
      Plot_Drawing2& row = *rows[i];
      row.min_x = row.min_y = row.max_x = row.max_y = 0.0;
      row.width = row.height = 0.0;
      break;
    }
  }
  std::erase_if(rows, [](const auto& row) { return !(row->width > 0.0) || !(row->height > 0.0); });
}

}  // namespace

void ScanTitleBlocks(TitleSheetList& list) {
  list.clear();
  host::Editor& editor = host::CurrentEditor();
  if (GlobalTkLibrary().definitions.empty()) {
    editor.messageBox(kEmptyLibraryMessage, "Tarvex批打印", host::MessageButtons::Ok);
    // Cancels the running command and opens the library form in its place.
    editor.sendStringToExecute("\x03\x03");
    editor.sendStringToExecute("TV_BatchPlot_3\n");
    return;
  }

  ObjectIdArray picked;
  const int rc = editor.select("_:$", {recognition::kRangePrompt, ""}, {}, host::TypeFilter({"insert"}), picked);
  std::int64_t tick = host::StageClock();
  const ObjectId currentSpaceId = host::OpenCurrentSpace();
  progressStep = 0;
  if (rc == host::RTNORM && !picked.empty()) {
    editor.progressBegin("计算图框............", static_cast<int>(picked.size()));
    FilterTitleBlocks(list, picked, ObjectId{});
    editor.progressEnd();
  } else if (rc == host::RTERROR) {
    const std::optional<ObjectIdArray> spaces = recognition::ChooseSpaces(currentSpaceId);
    if (!spaces) return;
    std::vector<ObjectIdArray> idsOfSpace(spaces->size());
    std::size_t total = 0;
    for (std::size_t i = 0; i < spaces->size(); ++i) {
      host::CollectSpaceIds((*spaces)[i], idsOfSpace[i]);
      total += idsOfSpace[i].size();
    }
    editor.progressBegin("计算图框............", static_cast<int>(total));
    for (std::size_t i = 0; i < spaces->size(); ++i) FilterTitleBlocks(list, idsOfSpace[i], (*spaces)[i]);
    editor.progressEnd();
    host::ActivateLayoutOf(currentSpaceId);
  } else {
    return;
  }
  tick = host::StageTimer(tick, "图框判断");

  for (std::size_t i = 0; i < list.size(); ++i) {
    list[i]->number = static_cast<std::int32_t>(i + 1);
    recognition::SetMarker(list[i]->rec_id, list[i]->number, -1);
  }
  if (list.empty()) host::Print("\n未选择到图框！！！");
}

void FilterTitleBlocks(TitleSheetList& list, const ObjectIdArray& ids, ObjectId spaceId) {
  if (!spaceId.isNull()) host::ActivateLayoutOf(spaceId);
  recognition::RefreshUcs(true);
  host::Editor& editor = host::CurrentEditor();
  std::int64_t tick = host::StageClock();

  TitleSheetList found;
  Extents3d seen;
  for (ObjectId id : ids) {
    editor.progressSet(++progressStep);
    const host::Entity insert = host::OpenEntity(id);
    if (!insert || insert.kind() != host::EntityClass::BlockReference) continue;
    const TK_Customization* definition = FindDefinition(GlobalTkLibrary(), InsertBlockName(insert));
    if (!definition) continue;
    auto row = std::make_unique<Plot_Drawing2>();
    row->insert_id = id;
    row->space_id = spaceId;
    row->definition = definition;
    const Extents3d extents = recognition::EntityExtentsOpen(insert, true, true);
    if (!extents.isEmpty()) {
      seen.add(extents.min);
      seen.add(extents.max);
    }
    found.push_back(std::move(row));
  }
  tick = host::StageTimer(tick, "筛选出符合图框定义的图块");
  if (found.empty()) return;

  // The fences that read the fields see only what the screen shows.
  if (!seen.isEmpty()) recognition::SetView(seen.min, seen.max);
  const ObjectId layerId = recognition::MarkerLayer();
  for (auto& row : found) {
    SheetFromInsert(*row, layerId, spaceId);
    ReadSheetFields(*row);
  }
  tick = host::StageTimer(tick, "由图框(图块)Id得到其余信息");

  RemoveCoveredSheets(found);
  host::StageTimer(tick, "删除重合或内包含的图块");
  for (auto& row : found) list.push_back(std::move(row));
}

}  // namespace tv::titleblock
