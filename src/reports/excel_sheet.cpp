#include "reports/excel_sheet.h"

#include <algorithm>
#include <cmath>

namespace tv::reports {

std::string ColumnLetters(std::int32_t n) {
  if (n <= 26) return std::string(1, static_cast<char>(64 + n));
  // Two letters are all the reports need: 702 columns.
  return {static_cast<char>(64 + (n - 1) / 26), static_cast<char>(65 + (n - 1) % 26)};
}

std::string CellName(std::int32_t column, std::int32_t row) { return ColumnLetters(column) + std::to_string(row); }

std::string& ReportFolder() {
  static std::string folder;
  return folder;
}

std::vector<std::string>& SavedWorkbooks() {
  static std::vector<std::string> paths;
  return paths;
}

void ExcelSheet::FitColumns(std::int32_t col1, std::int32_t col2, double extra) {
  SelectRange(col1, 1, col2, 1);
  AutoFitColumns();
  for (std::int32_t c = col1; c <= col2; ++c) {
    SelectRange(c, 1);
    const double width = std::min(ColumnWidth() + extra, 200.0);
    SetColumnWidth(std::floor(width));
  }
}

}  // namespace tv::reports
