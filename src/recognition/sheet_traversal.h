#pragma once
// From a command to a list of sheets: the prompt, the choice of spaces, the walk through model
// space and the layouts, the pipeline run on each space, and the filter of small sheets.
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "host/geometry.h"
#include "host/object_id.h"
#include "recognition/rectangle_finder.h"
#include "recognition/sheet_records.h"

namespace tv::recognition {

// The prompt of both batch commands' range: Enter walks the spaces.
inline constexpr const char* kRangePrompt = "\n选择打印范围：( 回车自动进行模型/布局遍历 )";

// Candidate lists from this size on keep their tail on a side list while the head is sorted.
inline constexpr std::size_t num_max = 10000;

// Asks for a selection (Enter walks the spaces) and fills `job`; true when a sheet was found.
bool FindSheets(SheetJob& job);
// Enter at the range prompt: the spaces to walk, chosen in "自动遍历" (the model first, then the
// layouts in tab order); nullopt on cancel.
std::optional<ObjectIdArray> ChooseSpaces(ObjectId currentSpaceId);
// The markers' layer "Temp_PlotLayer", made on, thawed, unlocked and not plottable.
ObjectId MarkerLayer();
// The pipeline on the ids of one space (`spaceId` null for a user selection); consumes `ids` and
// appends the sheets to job.allSheets.
void ScanSpace(SheetJob& job, ObjectIdArray& ids, ObjectId spaceId);
// Rebuilds keptSheets from the sheets whose area reaches the filter percentage of the largest,
// hiding the markers of the others; returns the count kept.
std::size_t FilterSheets(SheetJob& job);
// Polyline and line sheets that hold nothing go; fences see what the screen shows.
void DropEmptySheets(SheetList& sheets);
// Orders the candidates by area, largest first, reporting its stages to the stage timer.
void SortByArea(TempIdArray& candidates);

// Fresh working coordinates from the editor; with `repairView` a view that doesn't look straight
// down on them is turned to plan.
void RefreshUcs(bool repairView);
// Makes the view show `box` (working coordinates) if it doesn't yet; the view only grows.
void ShowExtents(const Extents3d& box);
void SetView(Point3d lowerLeft, Point3d upperRight);
// A fence that sweeps p0-p1 in its narrower direction with 2n + 2 points.
void ZigzagPoints(std::vector<Point3d>& points, Point3d p0, Point3d p1, int n);

// The progress form of a scan (range 0..10); a tick moves it one step.
void BeginScanProgress();
void TickScanProgress();
void EndScanProgress();

}  // namespace tv::recognition
