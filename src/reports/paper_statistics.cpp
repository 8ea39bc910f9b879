#include "reports/paper_statistics.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <utility>

#include "host/editor.h"
#include "reports/excel_sheet.h"
#include "reports/report_style.h"

namespace tv::reports {

namespace {

struct BaseRow {
  double area;
  double step;
  const char* conversionHead;
  const char* priceHead;
};

// The areas are the products of the ISO sides in millimetres.
constexpr std::array<BaseRow, 5> kBases{{{62370, 1.0, "折合成A4", "A4单价： "},
                                         {124740, 0.5, "折合成A3", "A3单价： "},
                                         {249480, 0.25, "折合成A2", "A2单价： "},
                                         {499554, 0.125, "折合成A1", "A1单价： "},
                                         {999949, 0.0625, "折合成A0", "A0单价： "}}};

const BaseRow& RowOf(BaseSize base) {
  const auto i = static_cast<std::size_t>(static_cast<std::int32_t>(base) - 1);
  return kBases[i < kBases.size() ? i : 0];
}

bool NearWhole(double v, double tolerance) {
  const double whole = std::floor(v);
  return std::fabs(v - whole) < tolerance || std::fabs(v - std::floor(v + 1.0)) < tolerance;
}

std::int64_t AreaOf(const paper::MyPaper* p) { return p ? std::int64_t{p->length} * p->width : 0; }

std::string Printed(const char* format, std::int32_t a, std::int32_t b = 0) {
  char text[64];
  std::snprintf(text, sizeof text, format, a, b);
  return text;
}

void NoPapers() {
  host::CurrentEditor().messageBox(kNoPapersMessage, kPaperStatisticsCaption, host::MessageButtons::Ok);
}

void PutNumber(ExcelSheet& sheet, std::int32_t column, std::int32_t row, double v, const std::string& format) {
  sheet.SelectRange(column, row);
  sheet.SetNumberFormat(format);
  sheet.SetNumber(v);
}

void PutFormula(ExcelSheet& sheet, std::int32_t column, std::int32_t row, const std::string& formula,
                const std::string& format) {
  sheet.SelectRange(column, row);
  sheet.SetNumberFormat(format);
  sheet.SetFormula(formula);
}

// The sum row below the data, over columns 1 to `columns`; `sums` are (column, format).
void WriteSumRow(ExcelSheet& sheet, std::int32_t columns, std::int32_t first, std::int32_t r,
                 const std::vector<std::pair<std::int32_t, std::string>>& sums) {
  sheet.SelectRange(1, r);
  sheet.MergeRange();
  sheet.SetText("汇 总 ");
  sheet.SetAlignment(kAlignCentre);
  for (const auto& [column, format] : sums) {
    const std::string letter = ColumnLetters(column);
    char formula[64];
    std::snprintf(formula, sizeof formula, "=SUM(%s%d:%s%d)", letter.c_str(), first, letter.c_str(), r - 1);
    PutFormula(sheet, column, r, formula, format);
  }
  sheet.SelectRange(1, r, columns, r);
  sheet.SetFont(true, 11, 0);
  sheet.SetFill(kSumFill);
  sheet.SetBorder(1, 3, 1);
  sheet.SetAlignment(kAlignCentre);
  sheet.SetRowHeight(19);
}

}  // namespace

PaperCount CountPapers(const std::vector<ReportRow>& rows, const paper::PaperList& paperList) {
  PaperCount result;
  for (const ReportRow& row : rows) {
    const paper::MyPaper* p = paper::FindPaperByName(paperList, row.paperName);
    std::size_t i = 0;
    while (i < result.papers.size() && result.papers[i] != p) ++i;
    if (i == result.papers.size()) {
      result.papers.push_back(p);
      result.counts.push_back(1);
    } else {
      ++result.counts[i];
    }
  }
  return result;
}

double PaperFactor(const paper::MyPaper& paper, BaseSize base) {
  const BaseRow& b = RowOf(base);
  const double raw = static_cast<double>(std::int64_t{paper.length} * paper.width) / b.area;
  const double q = raw / b.step;
  if (std::fabs(q - std::floor(q)) < 0.066) return std::floor(q) * b.step;
  if (std::fabs(q - std::floor(q + 1.0)) < 0.066) return std::floor(q + 1.0) * b.step;
  return raw;
}

std::string NumberFormatFor(double v) {
  if (NearWhole(v, 0.00001) && v >= 0.5) return "0";
  if (NearWhole(10 * v, 0.00001) && v >= 0.05) return "0.0";
  if (NearWhole(100 * v, 0.00001) && v >= 0.005) return "0.00";
  if (NearWhole(1000 * v, 0.00001) && v >= 0.0005) return "0.000";
  return "0.0000";
}

bool WritePaperStatistics(PaperCount count, BaseSize base) {
  if (count.papers.empty()) {
    NoPapers();
    return false;
  }
  // Smallest paper first; a pair moves only when the right one is smaller.
  const std::size_t n = count.papers.size();
  for (std::size_t pass = 0; pass + 1 < n; ++pass)
    for (std::size_t i = 0; i + 1 < n - pass; ++i)
      if (AreaOf(count.papers[i + 1]) < AreaOf(count.papers[i])) {
        std::swap(count.papers[i], count.papers[i + 1]);
        std::swap(count.counts[i], count.counts[i + 1]);
      }

  ExcelSheet sheet("图纸统计");
  if (!sheet.OpenExcel()) return false;
  const BaseRow& b = RowOf(base);
  sheet.NameSheet("纸张统计");
  constexpr std::array<double, 7> kWidths{8, 15, 15, 15, 15, 15, 15};
  for (std::int32_t c = 1; c <= 7; ++c) {
    sheet.SelectRange(c, 1);
    sheet.SetColumnWidth(kWidths[static_cast<std::size_t>(c - 1)]);
  }
  WriteTitleRow(sheet, 7, "Tarvex批量打印---纸张统计");

  struct Head {
    std::int32_t col1, row1, col2, row2;
    const char* text;
  };
  const Head heads[] = {{1, 2, 1, 3, "序 号"}, {2, 2, 2, 3, "纸张规格"}, {3, 2, 3, 3, "张 数"},
                        {4, 2, 5, 2, b.conversionHead}, {4, 3, -1, -1, "单张折合系数"}, {5, 3, -1, -1, "折合张数"},
                        {6, 3, -1, -1, "单 价"}, {7, 3, -1, -1, "小 计"}};
  for (const Head& h : heads) {
    sheet.SelectRange(h.col1, h.row1, h.col2, h.row2);
    if (h.col2 != -1) sheet.MergeRange();
    sheet.SetText(h.text);
    sheet.SetBorder(1, 2, 1);
  }
  sheet.SelectRange(1, 2, 7, 3);
  sheet.SetBorder(1, 3, 1);
  sheet.SetFont(true, 11, 0);
  sheet.SetAlignment(kAlignCentre);
  sheet.SetRowHeight(15);
  sheet.SetFill(kHeadFill);
  // The price head and the unit price the user edits.
  sheet.SelectRange(6, 2);
  sheet.SetText(b.priceHead);
  sheet.SetAlignment(kAlignRight);
  sheet.SetBorder(0, 2, 1);
  sheet.SelectRange(7, 2);
  sheet.SetNumberFormat("0.00");
  sheet.SetNumber(5);
  sheet.SetFont(true, 11, kRed);
  sheet.SetAlignment(kAlignLeft);
  sheet.SetBorder(0, 2, 1);

  constexpr std::int32_t kFirst = 4;
  std::int32_t r = kFirst;
  double convertedSum = 0;
  for (std::size_t i = 0; i < n; ++i, ++r) {
    const paper::MyPaper* p = count.papers[i];
    const double f = p ? PaperFactor(*p, base) : 0.0;
    const std::int32_t c = count.counts[i];
    PutNumber(sheet, 1, r, static_cast<double>(i + 1), "00");
    sheet.SelectRange(2, r);
    sheet.SetText(p ? ReportPaperText(*p) : std::string());
    PutNumber(sheet, 3, r, c, "0");
    PutNumber(sheet, 4, r, f, NumberFormatFor(f));
    PutFormula(sheet, 5, r, Printed("=C%d*D%d", r, r), NumberFormatFor(f * c));
    PutFormula(sheet, 6, r, Printed("=G2*D%d", r), "0.00");
    PutFormula(sheet, 7, r, Printed("=F%d*C%d", r, r), "0.00");
    convertedSum += f * c;
  }
  sheet.SelectRange(1, kFirst, 7, r - 1);
  sheet.SetBorder(1, 3, 1);
  sheet.SetFont(false, 11, 0);
  sheet.SetAlignment(kAlignCentre);
  sheet.SetRowHeight(19);
  WriteSumRow(sheet, 7, kFirst, r, {{3, "0"}, {5, NumberFormatFor(convertedSum)}, {7, "0.00"}});
  for (std::int32_t c : {2, 4}) {
    sheet.SelectRange(c, 2, c + 1, r);
    sheet.SetBorder(1, 3, 1);
  }
  sheet.SetPageSetup(false, 3);
  sheet.ActivateFirstSheet();
  return sheet.ShowExcel();
}

bool WritePaperPrices(const std::vector<ReportRow>& rows) {
  // Copies added per paper, in order of first appearance, then keyed by the paper's text.
  std::vector<std::string> texts;
  std::vector<std::int32_t> counts;
  std::vector<std::string> keys;
  for (const ReportRow& row : rows) {
    std::size_t i = 0;
    while (i < keys.size() && keys[i] != row.paperName) ++i;
    if (i == keys.size()) {
      keys.push_back(row.paperName);
      texts.push_back(row.paperName.empty() ? std::string() : ReportPaperText(row.paper));
      counts.push_back(0);
    }
    counts[i] += row.copies;
  }
  if (keys.empty()) {
    NoPapers();
    return false;
  }
  const std::size_t n = texts.size();
  for (std::size_t pass = 0; pass + 1 < n; ++pass)
    for (std::size_t i = 0; i + 1 < n - pass; ++i)
      if (texts[i] > texts[i + 1]) {
        std::swap(texts[i], texts[i + 1]);
        std::swap(counts[i], counts[i + 1]);
      }

  ExcelSheet sheet("图纸统计");
  if (!sheet.OpenExcel()) return false;
  sheet.NameSheet("纸张统计");
  constexpr std::array<double, 5> kWidths{8, 20, 15, 15, 15};
  for (std::int32_t c = 1; c <= 5; ++c) {
    sheet.SelectRange(c, 1);
    sheet.SetColumnWidth(kWidths[static_cast<std::size_t>(c - 1)]);
  }
  WriteTitleRow(sheet, 5, "Tarvex批量打印---纸张统计");
  constexpr std::array<const char*, 5> kHeads{"序 号", "纸张规格", "张 数", "单 价", "小 计"};
  WriteHeadRow(sheet, 2, kHeads.data(), 5);
  constexpr std::int32_t kFirst = 3;
  std::int32_t r = kFirst;
  for (std::size_t i = 0; i < n; ++i, ++r) {
    PutNumber(sheet, 1, r, static_cast<double>(i + 1), "00");
    sheet.SelectRange(2, r);
    sheet.SetText(texts[i]);
    PutNumber(sheet, 3, r, counts[i], "0");
    PutNumber(sheet, 4, r, 5, "0.00");
    PutFormula(sheet, 5, r, Printed("=C%d*D%d", r, r), "0.00");
  }
  StyleDataBlock(sheet, 5, kFirst, r - 1);
  sheet.SelectRange(4, kFirst, 4, r - 1);
  sheet.SetFont(false, 11, kRed);
  WriteSumRow(sheet, 5, kFirst, r, {{3, "0"}, {5, "0.00"}});
  sheet.SetPageSetup(false, 2);
  sheet.ActivateFirstSheet();
  return sheet.ShowExcel();
}

}  // namespace tv::reports
