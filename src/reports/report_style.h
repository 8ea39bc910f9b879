#pragma once
// The look every report sheet shares: title, head and data rows.
#include <cstdint>

#include "reports/excel_sheet.h"

namespace tv::reports {

inline constexpr std::uint32_t kTitleFill = 0xB4E0C6;  // blue-green-red
inline constexpr std::uint32_t kHeadFill = 0xCCF2FF;
inline constexpr std::uint32_t kSumFill = 0xDCDCDC;
inline constexpr std::uint32_t kRed = 0x0000FF;

// Row `row`, columns 1 to `columns`, merged, holding `text` in the title style.
void WriteTitleRow(ExcelSheet& sheet, std::int32_t columns, const char* text);
// Row `row` of heads in the head style.
void WriteHeadRow(ExcelSheet& sheet, std::int32_t row, const char* const* heads, std::int32_t count);
// Rows first to last, columns 1 to `columns`, in the data style.
void StyleDataBlock(ExcelSheet& sheet, std::int32_t columns, std::int32_t first, std::int32_t last);

}  // namespace tv::reports
