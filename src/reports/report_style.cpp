#include "reports/report_style.h"

namespace tv::reports {

void WriteTitleRow(ExcelSheet& sheet, std::int32_t columns, const char* text) {
  sheet.SelectRange(1, 1, columns, 1);
  sheet.MergeRange();
  sheet.SetText(text);
  sheet.SetFill(kTitleFill);
  sheet.SetFont(true, 14, 0);
  sheet.SetAlignment(kAlignCentre);
  sheet.SetRowHeight(30);
  sheet.SetBorder(1, 3, 1);
}

void WriteHeadRow(ExcelSheet& sheet, std::int32_t row, const char* const* heads, std::int32_t count) {
  for (std::int32_t c = 1; c <= count; ++c) {
    sheet.SelectRange(c, row);
    sheet.SetText(heads[c - 1]);
    sheet.SetBorder(1, 2, 1);
  }
  sheet.SelectRange(1, row, count, row);
  sheet.SetFill(kHeadFill);
  sheet.SetFont(true, 11, 0);
  sheet.SetAlignment(kAlignCentre);
  sheet.SetRowHeight(19);
  sheet.SetBorder(1, 3, 1);
}

void StyleDataBlock(ExcelSheet& sheet, std::int32_t columns, std::int32_t first, std::int32_t last) {
  if (last < first) return;  // an empty list: title and heads only
  for (std::int32_t r = first; r <= last; ++r)
    for (std::int32_t c = 1; c <= columns; ++c) {
      sheet.SelectRange(c, r);
      sheet.SetBorder(1, 2, 1);
    }
  sheet.SelectRange(1, first, columns, last);
  sheet.SetFont(false, 11, 0);
  sheet.SetAlignment(kAlignCentre);
  sheet.SetRowHeight(19);
  sheet.SetBorder(1, 3, 1);
}

}  // namespace tv::reports
