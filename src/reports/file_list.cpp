#include "reports/file_list.h"

#include <array>

#include "host/editor.h"
#include "plot/output_paths.h"
#include "plot/title_review.h"
#include "reports/excel_sheet.h"
#include "reports/report_style.h"
#include "titleblock/tk_library.h"

namespace tv::reports {

namespace {

constexpr std::array<const char*, 8> kListHeads{"序 号", "文 件 名", "纸 张", "比 例", "图 号", "版 次", "日 期", "图 名"};
constexpr std::array<double, 8> kListWidths{8, 50, 10, 10, 10, 10, 15, 50};
constexpr std::array<const char*, 9> kIndexHeads{"序 号", "图 号", "版 次", "图 名", "日 期",
                                                 "信息1", "信息2", "图 幅", "比 例"};

void Put(ExcelSheet& sheet, std::int32_t column, std::int32_t row, const std::string& text,
         const char* format = nullptr) {
  sheet.SelectRange(column, row);
  if (format) sheet.SetNumberFormat(format);
  sheet.SetText(text);
}

void PutSerial(ExcelSheet& sheet, std::int32_t column, std::int32_t row, std::int32_t number) {
  sheet.SelectRange(column, row);
  sheet.SetNumberFormat("00");
  sheet.SetNumber(number);
}

// The index cell of one column code.
void PutIndexCell(ExcelSheet& sheet, std::int32_t column, std::int32_t row, std::int32_t code, const ReportRow& r,
                  std::int32_t number) {
  switch (code) {
    case 0: PutSerial(sheet, column, row, number); break;
    case 3: Put(sheet, column, row, TitleCellText(r.fields[2])); break;
    case 7: Put(sheet, column, row, ReportPaperText(r.paper)); break;
    case 8: Put(sheet, column, row, ReportScaleText(r.scale), "@"); break;
    default:
      if (code >= 1 && code <= 6) Put(sheet, column, row, r.fields[static_cast<std::size_t>(code - 1)]);
  }
}

}  // namespace

bool WriteFileList(const std::vector<ReportRow>& rows, const titleblock::TK_Library& library) {
  ExcelSheet sheet("文件清单");
  if (!sheet.OpenExcel()) return false;
  sheet.NameSheet("文件清单");
  for (std::int32_t c = 1; c <= 8; ++c) {
    sheet.SelectRange(c, 1);
    sheet.SetColumnWidth(kListWidths[static_cast<std::size_t>(c - 1)]);
  }
  WriteTitleRow(sheet, 8, "Tarvex批量打印---文件清单");
  WriteHeadRow(sheet, 2, kListHeads.data(), 8);
  std::int32_t row = 3;
  for (const ReportRow& r : rows) {
    const std::string paperText = ReportPaperText(r.paper);
    const std::string scaleText = ReportScaleText(r.scale);
    PutSerial(sheet, 1, row, row - 2);
    Put(sheet, 2, row, plot::WithTitleSeparator(r.fileName, library.TitleSeparator));
    Put(sheet, 3, row, paperText);
    // A scale too small to write shows the paper text again, as the list has always done.
    Put(sheet, 4, row, scaleText.empty() ? paperText : scaleText, "@");
    Put(sheet, 5, row, r.fields[0]);
    Put(sheet, 6, row, r.fields[1]);
    Put(sheet, 7, row, r.fields[3]);
    Put(sheet, 8, row, TitleCellText(r.fields[2]));
    ++row;
  }
  StyleDataBlock(sheet, 8, 3, row - 1);
  sheet.FitColumns(1, 8, 5);
  sheet.SetPageSetup(true, 2);
  sheet.ActivateFirstSheet();
  return sheet.ShowExcel();
}

bool WriteIndex(const std::vector<ReportRow>& rows, const titleblock::TK_Library& library) {
  const std::vector<std::int32_t> columns = library.index_columns;
  if (columns.empty()) {
    host::CurrentEditor().messageBox(kEmptyIndexMessage, "Tarvex打印", host::MessageButtons::Ok);
    return false;
  }
  ExcelSheet sheet("图纸目录");
  if (!sheet.OpenExcel()) return false;
  sheet.NameSheet("目 录");
  const auto n = static_cast<std::int32_t>(columns.size());
  for (std::int32_t c = 1; c <= n; ++c) {
    sheet.SelectRange(c, 1);
    sheet.SetColumnWidth(10);
  }
  WriteTitleRow(sheet, n, "Tarvex批量打印---目 录");
  std::vector<const char*> heads;
  for (std::int32_t code : columns) heads.push_back(code >= 0 && code <= 8 ? kIndexHeads[static_cast<std::size_t>(code)] : "");
  WriteHeadRow(sheet, 2, heads.data(), n);
  std::int32_t row = 3;
  for (const ReportRow& r : rows) {
    for (std::int32_t c = 1; c <= n; ++c) PutIndexCell(sheet, c, row, columns[static_cast<std::size_t>(c - 1)], r, row - 2);
    ++row;
  }
  StyleDataBlock(sheet, n, 3, row - 1);
  // Only the first seven columns are fitted, however many there are.
  sheet.FitColumns(1, 7, 5);
  sheet.SetPageSetup(false, 2);
  sheet.ActivateFirstSheet();
  return sheet.ShowExcel();
}

namespace {

// The list's buttons write where the list's files would go.
void UseOutputFolderOf(const plot::Dlg_BPlot2& form) {
  std::string custom = form.setting.custom_path;
  ReportFolder() = plot::OutputFolder(form.setting.path_mode, form.setting.format, custom);
}

}  // namespace

bool MakeIndexFromList(const plot::Dlg_BPlot2& form) {
  UseOutputFolderOf(form);
  return WriteIndex(RowsOfTitleList(form), titleblock::GlobalTkLibrary());
}

bool MakeFileListFromList(const plot::Dlg_BPlot2& form) {
  UseOutputFolderOf(form);
  return WriteFileList(RowsOfTitleList(form), titleblock::GlobalTkLibrary());
}

}  // namespace tv::reports
