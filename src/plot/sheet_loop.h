#pragma once
// The loop both file batches run: one sheet after the other, the cancel check, the sheet's layout
// and plot settings, its path, one -plot, and the stand-by pass for the sheets an old host may
// have missed. The families differ only in their rows and in what they do around each plot.
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "host/geometry.h"
#include "host/object_id.h"
#include "settings/plot_setting.h"

namespace tv::plot {

// One row as the loop plots it; both row kinds give these.
struct SheetToPlot {
  ObjectId spaceId;  // its space; null: the current one
  std::string paperName;
  bool rotated = false;  // the paper stands upright
  Point2d min, max;      // the window, working coordinates
  double scale = 1.0;    // drawing units per plotted millimetre
  std::string fileName;  // without folder and extension
};

struct SheetLoop {
  std::vector<SheetToPlot> rows;
  settings::PlotSettingRec setting;  // the run's settings, as the form took them over
  bool* cancelRequested = nullptr;   // the form's "中 断 打 印" flag
  std::function<void()> finish;      // puts the plotter back and closes the form
  std::string standbyCommand;        // posted when sheets wait for a second try
  // Around each plot, by row index: the title-block family puts its stamps on and off here.
  std::function<void(std::size_t)> beforePlot, afterPlot;
  // Joins the numbered PDFs of a merge (the folder, the rows' names) once the loop ended.
  std::function<bool(const std::string&, const std::vector<std::string>&)> merge;
};

// Sets the plot settings of the row's layout (switching to it first). True when paper space is
// current.
bool PrepareSheet(const SheetToPlot& row, const settings::PlotSettingRec& setting, std::int32_t styleIndex);

// The first pass into `folderOut` (the settings' folder, or the merge folder, when empty). False
// when the user stopped the run; true when it ended or waits for the stand-by command.
bool RunSheetLoop(SheetLoop& loop, std::string folderOut);

// The stand-by pass over the rows the first pass left in the job state.
void RunStandbyLoop(SheetLoop& loop);

}  // namespace tv::plot
