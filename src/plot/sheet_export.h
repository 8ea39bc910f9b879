#pragma once
// Sheets cut out of the drawing into drawing files of their own (output format 6): which entities
// belong to a sheet, one sheet to one file, and the loop over a run's sheets. The drawing itself
// is only read; its "Standard" dimension, multiline and multileader styles are put aside under
// another name while a run cuts, so that the copies don't collide with the new files' own.
#include <optional>
#include <string>
#include <string_view>

#include "host/geometry.h"
#include "host/object_id.h"
#include "plot/sheet_loop.h"
#include "settings/plot_setting.h"

namespace tv::plot {

inline constexpr std::string_view kSheetFileOpenMessage = "文件 < %s >\n\n可能处于打开状态，无法覆盖 ！";
inline constexpr std::string_view kSplitCancelQuestion = "是否中断 ？";
inline constexpr std::string_view kSheetBlockPrefix = "BK";
inline constexpr std::string_view kParkedStylePrefix = "TV";

using SheetIds = ObjectIdArray;

// The local time as "%Y%m%d%H%M%S".
std::string TimeStamp();

void ParkStandardNames(const std::string& name);
void RestoreStandardNames(const std::string& name);

// The box test: the overlap of `box` with the rectangle reaches `tolerance` of the box's width and
// of its height; an empty overlap fails.
bool Overlap(const Extents3d& box, Point2d min, Point2d max, double tolerance);
// The line through `a` and `b` passes between the rectangle's corners (some corners on each side).
bool SegmentCrosses(Point2d a, Point2d b, Point2d min, Point2d max);

// The entities of the current space that belong to the rectangle (world coordinates).
SheetIds EntitiesOfSheet(Point2d min, Point2d max);

// One sheet of the current space to the drawing file `path`; `renameLayout` names a layout sheet's
// layout after the file. `fileSetting`, when given, becomes the file's own plot settings. False,
// with the reason shown, when the file could not be written.
bool ExportSheet(Point2d min, Point2d max, const std::string& path, bool openAfter, bool renameLayout,
                 const settings::PlotSettingRec* fileSetting = nullptr);

// The loop of format 6 over a run's rows, into `folderOut` (the settings' folder when empty; it
// is returned). True: the files written are there, also after a cancel.
bool SplitToDwgFiles(SheetLoop& loop, std::string& folderOut);

}  // namespace tv::plot
