#include "plot/multi_files_form.h"

#include <algorithm>
#include <cstdio>

#include "paper/scale_fitting.h"
#include "settings/plot_setting.h"

namespace tv::plot {

namespace {

// Paper modes of the choice list, in its order.
constexpr std::int32_t kPaperModes[] = {6, 7, 1, 2, 3, 4, 5};

std::string Printf(const char* format, double value) {
  char text[64];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

bool AllOfAtLeastTwo(std::size_t selected, std::size_t rows) { return rows >= 2 && selected == rows; }

template <typename Set>
bool ForSelected(std::vector<Single_Dwg>& rows, const std::vector<std::size_t>& selected, Set&& set) {
  for (std::size_t i : selected)
    if (i >= rows.size()) return false;
  for (std::size_t i : selected) set(rows[i]);
  return true;
}

}  // namespace

const std::vector<std::string>& Dlg_MultiFiles::ColumnTitles() {
  static const std::vector<std::string> titles = {" 序号 ",     " 文  件 ",   " 单个dwg内打印顺序 ", " 过滤系数 ",
                                                  " 输出纸张 ", " 打印比例 ", " 打印样式 ",          " 打印范围 ",
                                                  " 打印签名 ", " 打印印章 ", " 删  除 "};
  return titles;
}

const std::vector<std::string>& Dlg_MultiFiles::PaperChoices() {
  static const std::vector<std::string> choices = {"按打印比例", "按图框设定", "A4", "A3", "A2", "A1", "A0"};
  return choices;
}

const std::vector<std::string>& Dlg_MultiFiles::RangeChoices() {
  static const std::vector<std::string> choices = {"模  型", "布  局", "模型 + 布局"};
  return choices;
}

std::string Dlg_MultiFiles::Cell(std::size_t r, MultiColumn column) const {
  if (r >= rows.size()) return {};
  const Single_Dwg& row = rows[r];
  switch (column) {
    case MultiColumn::Number: {
      char text[16];
      std::snprintf(text, sizeof text, "%2d", static_cast<int>(r + 1));
      return text;
    }
    case MultiColumn::File: return row.name;
    case MultiColumn::SortOrder: return std::to_string(row.sort_order);
    case MultiColumn::Filter: return Printf("%.1f%%", row.filter_ratio);
    case MultiColumn::Paper: {
      static const char* const kPapers[] = {"A4", "A3", "A2", "A1", "A0", "按打印比例", "按图框设定"};
      return row.paper_mode >= 1 && row.paper_mode <= 7 ? kPapers[row.paper_mode - 1] : "";
    }
    case MultiColumn::Scale: {
      if (!row.auto_scale) return paper::ScaleText(row.scale);
      char text[32];
      std::snprintf(text, sizeof text, "S %d", static_cast<int>(row.scale + 0.5));
      return text;
    }
    case MultiColumn::Style:
      return row.style_index >= 0 && static_cast<std::size_t>(row.style_index) < styles.size() ? styles[row.style_index] : "";
    case MultiColumn::Range: {
      static const char* const kRanges[] = {"模 型", "布 局", "模型 + 布局"};
      return row.range >= 0 && row.range <= 2 ? kRanges[row.range] : "";
    }
    case MultiColumn::Signatures: return ColumnInPlay(column) ? (row.plot_signatures ? "是" : "否") : "";
    case MultiColumn::Stamps: return ColumnInPlay(column) ? (row.stamp_on ? "是" : "否") : "";
    case MultiColumn::Delete: return "DEL";
  }
  return {};
}

bool Dlg_MultiFiles::ColumnInPlay(MultiColumn column) const {
  return signatureLibrary || (column != MultiColumn::Signatures && column != MultiColumn::Stamps);
}

void Dlg_MultiFiles::SortByFile() {
  ascending_ = !ascending_;
  std::stable_sort(rows.begin(), rows.end(), [&](const Single_Dwg& a, const Single_Dwg& b) {
    return ascending_ ? a.name < b.name : b.name < a.name;
  });
  for (std::size_t i = 0; i < rows.size(); ++i) rows[i].number = static_cast<std::int32_t>(i + 1);
}

std::string Dlg_MultiFiles::EditTitle(MultiColumn column, std::size_t selected) const {
  const bool all = AllOfAtLeastTwo(selected, rows.size());
  switch (column) {
    case MultiColumn::Paper: return all ? "统 一 修 改 纸 张" : "选  择  纸  张";
    case MultiColumn::Style: return all ? "统一修改打印样式" : "选择打印样式";
    case MultiColumn::Range: return all ? "统一修改打印范围" : "选择打印范围";
    default: return {};
  }
}

bool Dlg_MultiFiles::UnifyPaper(const std::vector<std::size_t>& selected, std::size_t choice) {
  if (choice >= std::size(kPaperModes)) return false;
  return ForSelected(rows, selected, [&](Single_Dwg& row) { row.paper_mode = kPaperModes[choice]; });
}

bool Dlg_MultiFiles::UnifyRange(const std::vector<std::size_t>& selected, std::size_t choice) {
  if (choice >= RangeChoices().size()) return false;
  return ForSelected(rows, selected, [&](Single_Dwg& row) { row.range = static_cast<std::int32_t>(choice); });
}

bool Dlg_MultiFiles::UnifyStyle(const std::vector<std::size_t>& selected, std::size_t choice) {
  if (choice >= styles.size()) return false;
  return ForSelected(rows, selected, [&](Single_Dwg& row) { row.style_index = static_cast<std::int32_t>(choice); });
}

void Dlg_MultiFiles::ToggleSignatures(const std::vector<std::size_t>& selected, std::size_t clicked) {
  if (clicked >= rows.size()) return;
  const std::int32_t value = rows[clicked].plot_signatures ? 0 : 1;
  ForSelected(rows, selected, [&](Single_Dwg& row) { row.plot_signatures = value; });
}

void Dlg_MultiFiles::ToggleStamps(const std::vector<std::size_t>& selected, std::size_t clicked) {
  if (clicked >= rows.size()) return;
  const std::int32_t value = rows[clicked].stamp_on ? 0 : 1;
  ForSelected(rows, selected, [&](Single_Dwg& row) { row.stamp_on = value; });
}

void Dlg_MultiFiles::TakeFormat(int stored) { format = stored == settings::kFormatDwg ? settings::kFormatPdf : stored; }

std::string Dlg_MultiFiles::Text() const {
  std::string text = std::string(kMultiFilesTitle) + '\n';
  const std::vector<std::string>& titles = ColumnTitles();
  for (std::size_t c = 0; c < titles.size(); ++c)
    if (ColumnInPlay(static_cast<MultiColumn>(c))) text += titles[c] + '|';
  text += '\n';
  for (std::size_t r = 0; r < rows.size(); ++r) {
    for (std::size_t c = 0; c < titles.size(); ++c)
      if (ColumnInPlay(static_cast<MultiColumn>(c))) text += Cell(r, static_cast<MultiColumn>(c)) + '|';
    text += '\n';
  }
  return text;
}

}  // namespace tv::plot
