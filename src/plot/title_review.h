#pragma once
// The review of the title-block file batch: one row per defined frame with its file name, paper,
// scale and the fields read off the frame, between recognition and plotting.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/object_id.h"
#include "paper/paper.h"
#include "settings/plot_setting.h"
#include "titleblock/title_sheets.h"

namespace tv::plot {

inline constexpr std::string_view kBPlot2Title = "批打印至文件";

// The sheets of one title-block batch and the papers they use.
struct TitleSheetJob {
  titleblock::TitleSheetList sheets;  // in the order found, numbered from 1
  paper::PaperList paperList;         // standard papers first
};

struct BPlot2Row {
  titleblock::Plot_Drawing2* sheet = nullptr;
  std::optional<paper::MyPaper> paper;  // unset when the row's paper can't be worked out
  std::string paperName;                // the private plotter's paper
  std::string paperText;                // "纸 张"
  std::string scaleText;                // "打印比例"
  std::string note;                     // "备 注"
  bool warn = false;
};

struct Dlg_BPlot2 {
  TitleSheetJob job;
  settings::PlotSettingRec setting;  // the form's copy of the drawing's settings
  std::vector<BPlot2Row> rows;       // in the order of job.sheets
  std::int32_t styleIndex = 0;
  bool plot_started = false;
  bool cancel_requested = false;
  std::int64_t stageTick = 0;  // the stage clock once the list is filled: showing it is timed last
};

Dlg_BPlot2* TitleReview();
Dlg_BPlot2& NewTitleReview();
void DestroyTitleReview();

// Recognises the title blocks of the working drawing into a new form; null when nothing was found
// or the user cancelled.
Dlg_BPlot2* RecogniseTitleBatch();
// Papers, scales, notes and names of every row.
void FillTitleList(Dlg_BPlot2& form);

// Said once per drawing whose names hold text it garbled, when its list is filled.
std::string UnreadableNamesMessage(const std::string& drawing);

// The name a row's file gets: its line marks replaced by the library's title separator.
std::string TitleFileName(const titleblock::Plot_Drawing2& sheet);
// The names of the form's files in row order: each as above, after the library's serial when
// "文件名前面插入序号" is on, and a name met before in the run followed by "(2)", "(3)" …, as two
// frames with the same fields would otherwise write one file over the other. Names that differ
// only in case count as the same, as they do on the file systems of most offices. A name too long
// for the file system is cut, at a character, so that with its extension and suffix it fits.
std::vector<std::string> TitleFileNames(const Dlg_BPlot2& form);

std::vector<std::string> BPlot2Columns();
std::vector<std::vector<std::string>> BPlot2Cells(const Dlg_BPlot2& form);

}  // namespace tv::plot
