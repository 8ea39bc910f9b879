#pragma once
// A spreadsheet written as a report: one workbook with one sheet, driven by the short verbs the
// reports use. Formatting verbs work on the range last selected with SelectRange. Where an office
// application would show the workbook, this platform saves it into the report folder and
// remembers its path.
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace tv::reports {

// Column letters of a 1-based column: "A" to "Z", then two letters ("AA" for 27, "AZ" for 52).
std::string ColumnLetters(std::int32_t column);
// "B3" for column 2, row 3.
std::string CellName(std::int32_t column, std::int32_t row);

// The folder the workbooks of the run go to; set by whoever starts the report.
std::string& ReportFolder();
// The files the workbooks of this process were saved as, in order.
std::vector<std::string>& SavedWorkbooks();

inline constexpr std::string_view kNoExcelMessage = "未找到 Excel 软件，请先安装 Excel !";

// Horizontal alignment modes of SetAlignment.
inline constexpr std::int32_t kAlignLeft = 0;
inline constexpr std::int32_t kAlignCentre = 1;
inline constexpr std::int32_t kAlignRight = 2;

class ExcelSheet {
 public:
  // `bookName` names the saved file: "文件清单" becomes "文件清单.xlsx" in the report folder.
  explicit ExcelSheet(std::string bookName);
  ~ExcelSheet();
  ExcelSheet(const ExcelSheet&) = delete;
  ExcelSheet& operator=(const ExcelSheet&) = delete;

  // False, with the message shown, when no workbook can be made: here when the report folder
  // can't take files.
  bool OpenExcel();
  void NameSheet(const std::string& text);
  // col1 and row1 from 1; col2 of -1 selects the single cell.
  void SelectRange(std::int32_t col1, std::int32_t row1, std::int32_t col2 = -1, std::int32_t row2 = -1);
  void SetColumnWidth(double width);
  void SetRowHeight(double height);
  void AutoFitColumns();
  // Autofits columns col1 to col2 by row 1's range, then widens each by `extra`, at most to 200.
  void FitColumns(std::int32_t col1, std::int32_t col2, double extra);
  // The width of the first column of the range, in characters.
  double ColumnWidth() const;
  void MergeRange();
  void SetText(const std::string& text);
  void SetNumber(double value);
  void SetFormula(const std::string& text);
  void SetNumberFormat(const std::string& text);
  void SetAlignment(std::int32_t mode);
  // Colours are blue-green-red (0xBBGGRR).
  void SetFill(std::uint32_t colour);
  void SetFont(bool bold, double size, std::uint32_t colour);
  // Around the range: line style (1 continuous, -4115 dash, -4118 dot, -4119 double, 4 dash-dot;
  // 0 leaves the choice to the weight), weight (1 hair, 2 thin, 3 medium, 4 thick) and colour
  // index (1 black).
  void SetBorder(std::int32_t lineStyle, std::int32_t weight, std::int32_t colourIndex);
  // Printing: orientation, one page wide, the first `headRows` rows repeated on every page.
  void SetPageSetup(bool landscape, std::int32_t headRows);
  void ActivateFirstSheet();
  // Saves the workbook into the report folder under a name no file has yet ("文件清单(2).xlsx"
  // after "文件清单.xlsx"), and tells its path. False, with the reason shown, when it can't.
  bool ShowExcel();
  bool SaveAndClose(const std::string& path);

  struct Book;  // the platform's workbook

 private:
  std::string bookName_;
  std::unique_ptr<Book> book_;
};

}  // namespace tv::reports
