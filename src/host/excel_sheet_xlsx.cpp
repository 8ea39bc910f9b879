// The report workbook on libxlsxwriter. Excel formats ranges step by step, while an .xlsx writer
// takes each cell once with its whole format: the verbs build a model of the sheet's cells, and
// ShowExcel writes it out at the end.
#include <fcntl.h>
#include <unistd.h>
#include <xlsxwriter.h>

#include <algorithm>
#include <cerrno>
#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <variant>
#include <vector>

#include "host/editor.h"
#include "reports/excel_sheet.h"

namespace tv::reports {

namespace {

namespace fs = std::filesystem;

constexpr double kDefaultColumnWidth = 8.43;

struct Formula {
  std::string text;
};

struct Style {
  bool bold = false;
  double size = 11.0;
  std::uint32_t fontRgb = 0;
  std::optional<std::uint32_t> fillRgb;
  std::uint8_t horizontal = LXW_ALIGN_NONE;
  bool verticalCentre = false;
  std::string numberFormat;
  // Top, bottom, left, right: libxlsxwriter border kinds and their colours.
  std::uint8_t border[4] = {LXW_BORDER_NONE, LXW_BORDER_NONE, LXW_BORDER_NONE, LXW_BORDER_NONE};
  std::uint32_t borderRgb[4] = {0, 0, 0, 0};

  auto key() const {
    return std::tuple(bold, size, fontRgb, fillRgb, horizontal, verticalCentre, numberFormat, border[0], border[1],
                      border[2], border[3], borderRgb[0], borderRgb[1], borderRgb[2], borderRgb[3]);
  }
};

struct Cell {
  std::variant<std::monostate, std::string, double, Formula> value;
  Style style;
};

std::uint32_t RgbOf(std::uint32_t bgr) {
  return ((bgr & 0xFF) << 16) | (bgr & 0xFF00) | ((bgr >> 16) & 0xFF);
}

// The first colours of the spreadsheet's palette; the rest fall back to black.
std::uint32_t RgbOfIndex(std::int32_t index) {
  static constexpr std::uint32_t kPalette[] = {0x000000, 0xFFFFFF, 0xFF0000, 0x00FF00, 0x0000FF,
                                               0xFFFF00, 0xFF00FF, 0x00FFFF};
  if (index >= 1 && index <= 8) return kPalette[index - 1];
  return 0x000000;
}

std::uint8_t BorderKind(std::int32_t lineStyle, std::int32_t weight) {
  const bool heavy = weight == 3 || weight == -4138 || weight == 4;
  switch (lineStyle) {
    case -4142:  // none
      return LXW_BORDER_NONE;
    case -4115:  // dash
      return heavy ? LXW_BORDER_MEDIUM_DASHED : LXW_BORDER_DASHED;
    case -4118:  // dot
      return LXW_BORDER_DOTTED;
    case -4119:  // double
      return LXW_BORDER_DOUBLE;
    case 4:  // dash dot
      return heavy ? LXW_BORDER_MEDIUM_DASH_DOT : LXW_BORDER_DASH_DOT;
    case 5:
      return heavy ? LXW_BORDER_MEDIUM_DASH_DOT_DOT : LXW_BORDER_DASH_DOT_DOT;
    case 13:
      return LXW_BORDER_SLANT_DASH_DOT;
    default:  // continuous, or no style given: the weight decides
      if (weight == 1) return LXW_BORDER_HAIR;
      if (weight == 4) return LXW_BORDER_THICK;
      return heavy ? LXW_BORDER_MEDIUM : LXW_BORDER_THIN;
  }
}

// Display width of a text in characters of the default font: wide characters take two.
double TextWidth(const std::string& text, double size) {
  double units = 0;
  for (std::size_t i = 0; i < text.size();) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    const std::size_t len = c < 0x80 ? 1 : c < 0xE0 ? 2 : c < 0xF0 ? 3 : 4;
    units += len >= 3 ? 2.0 : 1.0;
    i += len;
  }
  return units * size / 11.0 + 0.71;
}

// The text a number shows in formats such as "00", "0", "0.00" and "@".
std::string NumberShown(double v, const std::string& format) {
  char text[64];
  const std::size_t point = format.find('.');
  if (format.empty() || format == "@" || format == "General") {
    std::snprintf(text, sizeof text, "%.10g", v);
  } else {
    const int places = point == std::string::npos ? 0 : static_cast<int>(format.size() - point - 1);
    const int digits = static_cast<int>(point == std::string::npos ? format.size() : point);
    std::snprintf(text, sizeof text, "%0*.*f", digits + (places ? places + 1 : 0), places, v);
  }
  return text;
}

}  // namespace

struct ExcelSheet::Book {
  std::string sheetName = "Sheet1";
  std::map<std::pair<std::int32_t, std::int32_t>, Cell> cells;  // (row, column) from 0
  std::vector<std::array<std::int32_t, 4>> merges;               // first row, first col, last row, last col
  std::map<std::int32_t, double> widths;
  std::map<std::int32_t, double> heights;
  std::int32_t r1 = 0, c1 = 0, r2 = 0, c2 = 0;  // the current range, from 0
  bool landscape = false;
  std::int32_t headRows = 0;
  bool pageSetup = false;

  template <class F>
  void eachCell(F&& f) {
    for (std::int32_t r = r1; r <= r2; ++r)
      for (std::int32_t c = c1; c <= c2; ++c) f(cells[{r, c}]);
  }

  bool inMerge(std::int32_t r, std::int32_t c) const {
    return std::any_of(merges.begin(), merges.end(), [&](const auto& m) {
      return r >= m[0] && r <= m[2] && c >= m[1] && c <= m[3] && (m[0] != m[2] || m[1] != m[3]);
    });
  }

  bool hiddenByMerge(std::int32_t r, std::int32_t c) const {
    return inMerge(r, c) && std::none_of(merges.begin(), merges.end(), [&](const auto& m) { return m[0] == r && m[1] == c; });
  }

  bool write(const std::string& path) const;
  double valueOf(std::int32_t r, std::int32_t c, int depth) const;
  double evaluate(const std::string& formula, int depth) const;
};

// The formulas the reports write ("=C4*D4", "=SUM(E4:E9)") worked out, so that a reader that
// shows stored results without recalculating shows the right figures; anything else counts 0.
double ExcelSheet::Book::valueOf(std::int32_t r, std::int32_t c, int depth) const {
  const auto it = cells.find({r, c});
  if (it == cells.end() || depth > 16) return 0.0;
  if (const auto* d = std::get_if<double>(&it->second.value)) return *d;
  if (const auto* f = std::get_if<Formula>(&it->second.value)) return evaluate(f->text, depth + 1);
  return 0.0;
}

double ExcelSheet::Book::evaluate(const std::string& formula, int depth) const {
  // A cell name at `at`: letters then digits; false when there is none.
  const auto cellAt = [](const std::string& text, std::size_t& at, std::int32_t& row, std::int32_t& col) {
    col = 0;
    const std::size_t start = at;
    while (at < text.size() && text[at] >= 'A' && text[at] <= 'Z') col = col * 26 + (text[at++] - 'A' + 1);
    if (at == start || at - start > 2) return false;
    row = 0;
    const std::size_t digits = at;
    while (at < text.size() && text[at] >= '0' && text[at] <= '9') row = row * 10 + (text[at++] - '0');
    if (at == digits) return false;
    --row;
    --col;
    return true;
  };
  std::size_t at = formula.rfind('=', 0) == 0 ? 1 : 0;
  std::int32_t r1 = 0, c1 = 0, r2 = 0, c2 = 0;
  if (formula.compare(at, 4, "SUM(") == 0) {
    at += 4;
    if (!cellAt(formula, at, r1, c1) || formula[at++] != ':' || !cellAt(formula, at, r2, c2)) return 0.0;
    double sum = 0;
    for (std::int32_t r = r1; r <= r2; ++r)
      for (std::int32_t c = c1; c <= c2; ++c) sum += valueOf(r, c, depth);
    return sum;
  }
  if (!cellAt(formula, at, r1, c1) || at >= formula.size() || formula[at++] != '*' || !cellAt(formula, at, r2, c2))
    return 0.0;
  return valueOf(r1, c1, depth) * valueOf(r2, c2, depth);
}

bool ExcelSheet::Book::write(const std::string& path) const {
  lxw_workbook* workbook = workbook_new(path.c_str());
  if (!workbook) return false;
  lxw_worksheet* sheet = workbook_add_worksheet(workbook, sheetName.c_str());
  if (!sheet) sheet = workbook_add_worksheet(workbook, nullptr);
  std::map<decltype(Style().key()), lxw_format*> formats;
  const auto formatOf = [&](const Style& s) {
    auto [it, added] = formats.try_emplace(s.key(), nullptr);
    if (!added) return it->second;
    lxw_format* f = workbook_add_format(workbook);
    if (s.bold) format_set_bold(f);
    format_set_font_size(f, s.size);
    if (s.fontRgb) format_set_font_color(f, s.fontRgb);
    if (s.fillRgb) {
      format_set_pattern(f, LXW_PATTERN_SOLID);
      format_set_fg_color(f, *s.fillRgb);
    }
    if (s.horizontal != LXW_ALIGN_NONE) format_set_align(f, s.horizontal);
    if (s.verticalCentre) format_set_align(f, LXW_ALIGN_VERTICAL_CENTER);
    if (!s.numberFormat.empty()) format_set_num_format(f, s.numberFormat.c_str());
    format_set_top(f, s.border[0]);
    format_set_bottom(f, s.border[1]);
    format_set_left(f, s.border[2]);
    format_set_right(f, s.border[3]);
    if (s.border[0]) format_set_top_color(f, s.borderRgb[0]);
    if (s.border[1]) format_set_bottom_color(f, s.borderRgb[1]);
    if (s.border[2]) format_set_left_color(f, s.borderRgb[2]);
    if (s.border[3]) format_set_right_color(f, s.borderRgb[3]);
    it->second = f;
    return f;
  };
  for (const auto& [c, w] : widths) worksheet_set_column(sheet, c, c, w, nullptr);
  for (const auto& [r, h] : heights) worksheet_set_row(sheet, r, h, nullptr);
  for (const auto& m : merges) {
    if (m[0] == m[2] && m[1] == m[3]) continue;  // a single cell merged stays a plain cell
    const auto it = cells.find({m[0], m[1]});
    worksheet_merge_range(sheet, m[0], m[1], m[2], m[3], "", it == cells.end() ? nullptr : formatOf(it->second.style));
  }
  for (const auto& [at, cell] : cells) {
    const auto [r, c] = at;
    lxw_format* f = formatOf(cell.style);
    // A merged area shows its first cell; the others keep only their borders and fills.
    if (hiddenByMerge(r, c)) worksheet_write_blank(sheet, r, c, f);
    else if (const auto* s = std::get_if<std::string>(&cell.value)) worksheet_write_string(sheet, r, c, s->c_str(), f);
    else if (const auto* d = std::get_if<double>(&cell.value)) worksheet_write_number(sheet, r, c, *d, f);
    else if (const auto* fm = std::get_if<Formula>(&cell.value)) worksheet_write_formula_num(sheet, r, c, fm->text.c_str(), f, evaluate(fm->text, 0));
    else worksheet_write_blank(sheet, r, c, f);
  }
  if (pageSetup) {
    worksheet_set_paper(sheet, 9);  // A4
    if (landscape) worksheet_set_landscape(sheet);
    else worksheet_set_portrait(sheet);
    worksheet_fit_to_pages(sheet, 1, 0);
    if (headRows > 0) worksheet_repeat_rows(sheet, 0, headRows - 1);
  }
  worksheet_activate(sheet);
  return workbook_close(workbook) == LXW_NO_ERROR;
}

ExcelSheet::ExcelSheet(std::string bookName) : bookName_(std::move(bookName)) {}
ExcelSheet::~ExcelSheet() = default;

bool ExcelSheet::OpenExcel() {
  // The folder must take a file now, or the report would be lost at the end.
  std::error_code ec;
  const std::string& folder = ReportFolder();
  fs::create_directories(folder, ec);
  const bool usable = !folder.empty() && fs::is_directory(folder, ec) && ::access(folder.c_str(), W_OK) == 0;
  if (!usable) {
    host::CurrentEditor().messageBox(kNoExcelMessage, "Tarvex打印", host::MessageButtons::Ok);
    host::Print("\n报表文件夹 " + folder + " 无法写入");
    return false;
  }
  book_ = std::make_unique<Book>();
  return true;
}

void ExcelSheet::NameSheet(const std::string& text) { book_->sheetName = text; }

void ExcelSheet::SelectRange(std::int32_t col1, std::int32_t row1, std::int32_t col2, std::int32_t row2) {
  if (col2 == -1) {
    col2 = col1;
    row2 = row1;
  }
  book_->c1 = std::min(col1, col2) - 1;
  book_->c2 = std::max(col1, col2) - 1;
  book_->r1 = std::min(row1, row2) - 1;
  book_->r2 = std::max(row1, row2) - 1;
}

void ExcelSheet::SetColumnWidth(double width) {
  for (std::int32_t c = book_->c1; c <= book_->c2; ++c) book_->widths[c] = width;
}

void ExcelSheet::SetRowHeight(double height) {
  for (std::int32_t r = book_->r1; r <= book_->r2; ++r) book_->heights[r] = height;
}

void ExcelSheet::AutoFitColumns() {
  // As the whole columns are fitted: every cell of them counts, merged ones excepted.
  for (std::int32_t c = book_->c1; c <= book_->c2; ++c) {
    double width = 0;
    for (const auto& [at, cell] : book_->cells) {
      if (at.second != c || book_->inMerge(at.first, at.second)) continue;
      if (const auto* s = std::get_if<std::string>(&cell.value)) width = std::max(width, TextWidth(*s, cell.style.size));
      else if (const auto* d = std::get_if<double>(&cell.value))
        width = std::max(width, TextWidth(NumberShown(*d, cell.style.numberFormat), cell.style.size));
    }
    if (width > 0) book_->widths[c] = width;
  }
}

double ExcelSheet::ColumnWidth() const {
  const auto it = book_->widths.find(book_->c1);
  return it == book_->widths.end() ? kDefaultColumnWidth : it->second;
}

void ExcelSheet::MergeRange() { book_->merges.push_back({book_->r1, book_->c1, book_->r2, book_->c2}); }

void ExcelSheet::SetText(const std::string& text) {
  book_->eachCell([&](Cell& cell) { cell.value = text; });
}

void ExcelSheet::SetNumber(double value) {
  book_->eachCell([&](Cell& cell) { cell.value = value; });
}

void ExcelSheet::SetFormula(const std::string& text) {
  book_->eachCell([&](Cell& cell) { cell.value = Formula{text}; });
}

void ExcelSheet::SetNumberFormat(const std::string& text) {
  book_->eachCell([&](Cell& cell) { cell.style.numberFormat = text; });
}

void ExcelSheet::SetAlignment(std::int32_t mode) {
  const std::uint8_t horizontal = mode == kAlignLeft ? LXW_ALIGN_LEFT : mode == kAlignRight ? LXW_ALIGN_RIGHT : LXW_ALIGN_CENTER;
  book_->eachCell([&](Cell& cell) {
    cell.style.horizontal = horizontal;
    cell.style.verticalCentre = true;
  });
}

void ExcelSheet::SetFill(std::uint32_t colour) {
  book_->eachCell([&](Cell& cell) { cell.style.fillRgb = RgbOf(colour); });
}

void ExcelSheet::SetFont(bool bold, double size, std::uint32_t colour) {
  book_->eachCell([&](Cell& cell) {
    cell.style.bold = bold;
    cell.style.size = size;
    cell.style.fontRgb = RgbOf(colour);
  });
}

void ExcelSheet::SetBorder(std::int32_t lineStyle, std::int32_t weight, std::int32_t colourIndex) {
  const std::uint8_t kind = BorderKind(lineStyle, weight);
  const std::uint32_t rgb = RgbOfIndex(colourIndex);
  Book& b = *book_;
  for (std::int32_t r = b.r1; r <= b.r2; ++r)
    for (std::int32_t c = b.c1; c <= b.c2; ++c) {
      const int edges[4] = {r == b.r1, r == b.r2, c == b.c1, c == b.c2};
      if (!(edges[0] || edges[1] || edges[2] || edges[3])) continue;
      Style& s = b.cells[{r, c}].style;
      for (int e = 0; e < 4; ++e)
        if (edges[e]) {
          s.border[e] = kind;
          s.borderRgb[e] = rgb;
        }
    }
}

void ExcelSheet::SetPageSetup(bool landscape, std::int32_t headRows) {
  book_->pageSetup = true;
  book_->landscape = landscape;
  book_->headRows = headRows;
}

void ExcelSheet::ActivateFirstSheet() {}

bool ExcelSheet::SaveAndClose(const std::string& path) {
  // Written under a name of its own and moved to the name asked for by a rename that fails rather
  // than replace a file (a hard link where the file system has no such rename): a failure leaves
  // nothing half-written behind.
  const std::string temp = path + ".tmp-" + std::to_string(::getpid());
  if (!book_->write(temp)) {
    std::error_code ec;
    fs::remove(temp, ec);
    return false;
  }
  bool placed = ::renameat2(AT_FDCWD, temp.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE) == 0;
  if (!placed && (errno == EINVAL || errno == ENOSYS)) placed = ::link(temp.c_str(), path.c_str()) == 0;
  std::error_code ec;
  fs::remove(temp, ec);  // gone already after a rename
  return placed;
}

bool ExcelSheet::ShowExcel() {
  const fs::path folder(ReportFolder());
  for (int n = 1; n < 1000; ++n) {
    const std::string name = bookName_ + (n == 1 ? std::string() : "(" + std::to_string(n) + ")") + ".xlsx";
    const std::string path = (folder / name).string();
    std::error_code ec;
    if (fs::exists(path, ec)) continue;
    if (SaveAndClose(path)) {
      SavedWorkbooks().push_back(path);
      host::Print("\n已写入 " + path);
      return true;
    }
    if (fs::exists(path, ec)) continue;  // another run took the name meanwhile
    break;
  }
  host::CurrentEditor().messageBox("报表文件无法写入 " + folder.string() + " !", "Tarvex打印", host::MessageButtons::Ok);
  return false;
}

}  // namespace tv::reports
