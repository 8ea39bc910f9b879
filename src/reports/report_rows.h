#pragma once
// What the reports read of a review list: one row per listed sheet, in list order, as the list
// shows it.
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "paper/paper.h"

namespace tv::plot {
struct Dlg_BPlot1;
struct Dlg_BPlot2;
}  // namespace tv::plot

namespace tv::reports {

struct ReportRow {
  std::string fileName;           // may hold line marks where titles were joined
  paper::MyPaper paper{297, 210, false};
  std::string paperName;          // the internal name ("TV_A3"), empty when the row has no paper
  double scale = 0.0;             // drawing units per paper millimetre
  // Drawing number, revision, title, date, info 1, info 2; empty on the generic list.
  std::array<std::string, 6> fields;
  std::int32_t copies = 1;
};

std::vector<ReportRow> RowsOfTitleList(const plot::Dlg_BPlot2& form);
std::vector<ReportRow> RowsOfGenericList(const plot::Dlg_BPlot1& form);

// "1:100" for 100, "2:1" for 0.5, empty for scales at or below 0.00001.
std::string ReportScaleText(double scale);
// The paper as people read it, without its size.
std::string ReportPaperText(const paper::MyPaper& paper);
// A title with its line marks shown as two blanks.
std::string TitleCellText(const std::string& title);
// The pieces of a title: trimmed, cut at each line mark, each piece trimmed.
std::vector<std::string> TitlePieces(const std::string& title);

}  // namespace tv::reports
