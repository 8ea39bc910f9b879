#pragma once
// Sheets counted by paper, for the print shop's bill: converted into sheets of one base size, or
// priced per sheet of each paper. Prices and totals stay live formulas in the workbook.
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "paper/paper.h"
#include "reports/report_rows.h"

namespace tv::reports {

inline constexpr std::string_view kNoPapersMessage = "无纸张可统计 !";
inline constexpr std::string_view kPaperStatisticsCaption = "纸张统计";

// 1 A4, 2 A3, 3 A2, 4 A1, 5 A0.
enum class BaseSize : std::int32_t { A4 = 1, A3, A2, A1, A0 };

struct PaperCount {
  std::vector<const paper::MyPaper*> papers;  // each once, in order of first appearance
  std::vector<std::int32_t> counts;
};

// Each row's paper found by name in `paperList`; a row whose paper isn't there counts under null.
PaperCount CountPapers(const std::vector<ReportRow>& rows, const paper::PaperList& paperList);

// How many sheets of the base one sheet of `paper` is worth, snapped to the base's step when near.
double PaperFactor(const paper::MyPaper& paper, BaseSize base);
// The shortest of "0", "0.0", "0.00", "0.000" and "0.0000" that shows v.
std::string NumberFormatFor(double v);

// "纸张统计" converted into the base size. False when nothing was counted (with the message) or no
// workbook was made.
bool WritePaperStatistics(PaperCount count, BaseSize base);
// "纸张统计" by unit price: each row's copies added up per paper text.
bool WritePaperPrices(const std::vector<ReportRow>& rows);

}  // namespace tv::reports
