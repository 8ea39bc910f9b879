#pragma once
// The review of the generic file batch ("批打印至文件"): one row per sheet with its paper, scale,
// size and warning, between recognition and plotting.
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "paper/paper.h"
#include "recognition/sheet_records.h"
#include "settings/plot_setting.h"

namespace tv::plot {

inline constexpr std::string_view kBPlot1Title = "批打印至文件";

// What one row shows.
struct BPlot1Row {
  recognition::Plot_Drawing1* sheet = nullptr;
  std::optional<paper::MyPaper> paper;  // unset when the sheet's paper can't be worked out
  std::string paperText;                // "纸张尺寸"
  std::string scaleText;                // "打印比例"
  std::string sizeText;                 // "图面尺寸"
  std::string note;                     // "备 注"
  bool warn = false;
};

struct Dlg_BPlot1 {
  recognition::SheetJob job;
  settings::PlotSettingRec setting;  // the form's copy of the drawing's settings
  double scale = 100.0;              // the scale the papers were worked out at
  std::vector<BPlot1Row> rows;       // in the order of job.keptSheets
  std::int32_t styleIndex = 0;       // "打印样式": an index into the layout's style list
  bool plot_started = false;         // a run has left the form for the private command
  bool cancel_requested = false;     // "中 断 打 印" was pressed
  std::int64_t stageTick = 0;        // the stage clock once the list is filled: showing it is timed last
};

// The live form, or null; a new one replaces every earlier review.
Dlg_BPlot1* GenericReview();
Dlg_BPlot1& NewGenericReview();
void DestroyGenericReview();

// The sheet's size in drawing units, with fewer decimals the larger it is.
std::string SheetSizeText(double sizeX, double sizeY);

// What both generic batches (to files and to paper) do to find their sheets: the prompt, the
// filter and the scale (`scale`, or the one most sheets have, asked when `askScale`). Unset when
// nothing was found or the user cancelled.
std::optional<double> RecogniseSheets(recognition::SheetJob& job, bool askScale, std::optional<double> scale);
// Recognises the sheets of the working drawing into a new form: layer states, the prompt, the
// filter, and the scale (`scale`, or the one most sheets have, offering it as the default when
// `askScale`). Null when nothing was found or the user cancelled.
Dlg_BPlot1* RecogniseGenericBatch(bool askScale, std::optional<double> scale);
// Orders the sheets by the form's sort style when `reorder`, numbers the markers, and fills the rows.
void FillList(Dlg_BPlot1& form, bool reorder);
// Papers of the job and of each row at `scale`, the scales they imply, and the notes.
void RecomputeAll(Dlg_BPlot1& form, double scale);

// Column titles and the cells of each row, as the list shows them.
std::vector<std::string> BPlot1Columns();
std::vector<std::vector<std::string>> BPlot1Cells(const Dlg_BPlot1& form);

}  // namespace tv::plot
