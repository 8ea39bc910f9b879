#pragma once
// The file list and the drawing index of a review list, each a new workbook.
#include <string_view>
#include <vector>

#include "reports/report_rows.h"

namespace tv::titleblock {
struct TK_Library;
}

namespace tv::reports {

inline constexpr std::string_view kEmptyIndexMessage =
    "目录内容设置为空 !\n\n请先在 <图框信息录入> 中填写 <目录生成配置> !";

// "文件清单": file name, paper, scale and the fields of every row. False when no workbook was made.
bool WriteFileList(const std::vector<ReportRow>& rows, const titleblock::TK_Library& library);
// "目 录": the columns of the library's `index_columns`. False, with the message shown, when the
// library names no column, or when no workbook was made.
bool WriteIndex(const std::vector<ReportRow>& rows, const titleblock::TK_Library& library);

// What the title-block review list's index button runs: the index of the list's rows as they
// stand, with the global library, saved into the output folder of the list's settings (path
// mode, format, custom folder). False when nothing was written; the user has been told why.
bool MakeIndexFromList(const plot::Dlg_BPlot2& form);
// The same for its file-list button.
bool MakeFileListFromList(const plot::Dlg_BPlot2& form);

}  // namespace tv::reports
