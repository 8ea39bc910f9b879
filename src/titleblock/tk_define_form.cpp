#include "titleblock/tk_define_form.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <optional>

#include "host/editor.h"
#include "host/text_sample.h"
#include "paper/paper.h"
#include "titleblock/file_naming.h"
#include "titleblock/name_rule.h"
#include "titleblock/tk_set_form.h"

namespace tv::titleblock {

namespace {

constexpr std::string_view kCaption = "Tarvex打印";
constexpr std::string_view kListTip = "双击空白处录入新图框";
constexpr double kNewColumnWidth = 2000.0;

std::string Trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(' ');
  return first == std::string::npos ? std::string() : text.substr(first);
}

bool Ask(const std::string& question) {
  return host::CurrentEditor().messageBox(question, kCaption, host::MessageButtons::YesNo) == host::MessageAnswer::Yes;
}

std::string Formatted(const char* pattern, double a, double b) {
  char text[256];
  std::snprintf(text, sizeof text, pattern, a, b);
  return text;
}

std::string Letter(const std::string& answer) {
  if (answer.empty()) return "O";
  return std::string(1, static_cast<char>(std::toupper(static_cast<unsigned char>(answer[0]))));
}

std::optional<std::size_t> AskRow(std::size_t count, const char* what = "行号") {
  std::int32_t row = 0;
  if (host::CurrentEditor().getInteger("\n" + std::string(what) + " (1 - " + std::to_string(count) + "): ", row) !=
      host::RTNORM)
    return std::nullopt;
  if (row < 1 || static_cast<std::size_t>(row) > count) return std::nullopt;
  return static_cast<std::size_t>(row - 1);
}

// A length picked on the drawing as two points: their distance along x or y.
std::optional<double> PickLength(bool vertical) {
  host::Editor& editor = host::CurrentEditor();
  Point3d a, b;
  if (editor.getPoint("\n第一点：", nullptr, a) != host::RTNORM) return std::nullopt;
  if (editor.getPoint("\n第二点：", &a, b) != host::RTNORM) return std::nullopt;
  return vertical ? std::fabs(b.y - a.y) : std::fabs(b.x - a.x);
}

}  // namespace

// ---- page 1 ------------------------------------------------------------------------------------------

DefinitionRow RowOf(const TK_Customization& d, std::size_t position) {
  DefinitionRow row;
  char number[16];
  std::snprintf(number, sizeof number, "%4d", static_cast<int>(position + 1));
  row.cells = {number, d.block_name, paper::PaperDisplayName(d.paper, false, false), std::to_string(d.sort_priority + 1),
               "DEL", d.name_rule};
  for (int slot = 1; slot <= 10; ++slot) row.cells.push_back(IsAreaSet(SetSlotArea(d, slot)) ? "√" : "");
  row.paperRed = d.paper.length < 50 || d.paper.width < 50 || d.paper.length > 5080 || d.paper.width > 5080;
  std::string message;
  if (CheckNameRule(d, message, true)) {
    row.cells.push_back(d.is_dynamic ? "动态图框" : "");
  } else {
    row.ruleRed = true;
    row.cells.push_back(d.is_dynamic ? "动态图框 " + message : message);
  }
  return row;
}

void SortDefinitions(TK_Library& library, int column, bool ascending) {
  if (column < 0 || column >= static_cast<int>(kDefinitionColumns.size()) || column == kColumnDelete) return;
  auto& list = library.definitions;
  std::vector<std::string> keys;
  for (std::size_t i = 0; i < list.size(); ++i) keys.push_back(Trimmed(RowOf(*list[i], i).cells[column]));
  // A bubble sort on plain text, as the list has always sorted: "10" comes before "9".
  for (std::size_t end = list.size(); end > 1; --end) {
    for (std::size_t i = 0; i + 1 < end; ++i) {
      const bool swap = ascending ? keys[i + 1] < keys[i] : keys[i] < keys[i + 1];
      if (!swap) continue;
      std::swap(keys[i], keys[i + 1]);
      std::swap(list[i], list[i + 1]);
    }
  }
}

bool AddDefinition(TK_Library& library) {
  auto definition = std::make_unique<TK_Customization>();
  if (!PickFrameBlock(*definition) || definition->block_name.empty()) return false;
  if (TK_Customization* known = FindDefinition(library, definition->block_name)) {
    if (!Ask("对图块名为 " + definition->block_name +
             " 的图框信息已有录入 !\n\n若要重新录入，需先将该图框的原有录入数据删除 !\n\n是否将该图框的原有录入数据删除 ？"))
      return false;
    std::erase_if(library.definitions, [&](const auto& d) { return d.get() == known; });
  }
  {
    Dlg_TK_Set form(*definition, library);
    if (!form.run()) return false;
  }
  library.definitions.push_back(std::move(definition));
  return true;
}

// ---- page 2 ------------------------------------------------------------------------------------------

bool CheckIndexPage(const TK_Library& library, const std::function<bool(const std::string&)>& confirm,
                    std::string& message) {
  message.clear();
  if (library.index_columns.empty()) return true;
  const double height = library.index_style.text_height;
  if (!(library.index_row_height > 0.0)) {
    message = "点取的目录行高小于等于 0 ，有误 !";
    return false;
  }
  if (!(height > 0.0)) {
    message = "选择的字符高度小于等于 0 ，有误 !";
    return false;
  }
  const double ratio = library.index_row_height / height;
  if (ratio < 1.0) return confirm(Formatted("目录行高 %.1f 小于字符高度 %.1f\n\n是否确认 ？", library.index_row_height, height));
  if (ratio > 5.0)
    return confirm(Formatted("目录行高 %.1f ，字符高度 %.1f\n\n两者相差过大，是否确认 ？", library.index_row_height, height));
  return true;
}

bool PickIndexTextStyle(TK_IndexStyle& style) {
  ObjectIdArray picked;
  if (host::CurrentEditor().select("_:$", {"\n选择字符：", ""}, {}, host::TypeFilter({"Text", "MText"}), picked) !=
          host::RTNORM ||
      picked.empty())
    return false;
  const std::optional<host::TextSampleFacts> facts = host::ReadTextSample(picked.front());
  if (!facts) return false;
  style.text_height = facts->text_height;
  style.width_factor = facts->width_factor;
  style.color = facts->color;
  style.layer = facts->layer;
  style.style_name = facts->style_name;
  style.font_file = facts->font_file;
  style.bigfont_file = facts->bigfont_file;
  style.style_text_size = facts->style_text_size;
  style.style_x_scale = facts->style_x_scale;
  style.is_shape_file = facts->is_shape_file;
  style.layer_color = facts->layer_color;
  style.layer_linetype = facts->layer_linetype;
  style.layer_lineweight = facts->layer_lineweight;
  return true;
}

std::string IndexStyleLabel(const TK_IndexStyle& style) {
  const char* pattern = style.text_height > 100   ? "字型：%s     字高：%d     图层：%s"
                        : style.text_height > 10 ? "字型：%s     字高：%.1f     图层：%s"
                                                 : "字型：%s     字高：%.2f     图层：%s";
  char text[1024];
  if (style.text_height > 100)
    std::snprintf(text, sizeof text, pattern, style.style_name.c_str(), static_cast<int>(style.text_height),
                  style.layer.c_str());
  else
    std::snprintf(text, sizeof text, pattern, style.style_name.c_str(), style.text_height, style.layer.c_str());
  return text;
}

std::string IndexColourLabel(std::int32_t colour) {
  if (colour == 256) return "ByLayer";
  if (colour == 0) return "ByBlock";
  return "--- (" + std::to_string(colour) + ")";
}

// ---- page 3 ------------------------------------------------------------------------------------------

std::string SeparatorSample(std::string_view separator) {
  const std::string s = CleanFileName(std::string(separator), true);
  return "示 例： 结施01_一层梁布置图" + s + "二层梁布置图" + s + "三层梁布置图";
}

std::array<std::string, 4> LengthenedSamples(std::int32_t style) {
  constexpr paper::MyPaper kSamples[] = {{630, 297, false}, {1040, 420, false}, {1892, 594, false}, {1486, 841, false}};
  std::array<std::string, 4> names;
  for (std::size_t i = 0; i < names.size(); ++i) {
    paper::MyPaper p = kSamples[i];
    paper::NormalizePaperSize(p);
    std::string name = paper::PaperNameOf(p);
    paper::RenderPaperName(name, style);
    for (std::size_t at = name.find('/'); at != std::string::npos; at = name.find('/', at)) name.replace(at, 1, "∕");
    names[i] = name;
  }
  return names;
}

// ---- the form -----------------------------------------------------------------------------------------

Dlg_TK_Define::Dlg_TK_Define(TK_Library& library) : library_(library) { refreshFromLibrary(); }

void Dlg_TK_Define::refreshFromLibrary() {
  drawFrame = library_.index_draw_frame;
  centreInArea = library_.CentreInArea;
  titleSeparator = library_.TitleSeparator;
  paperNameStyle = library_.PaperNameStyle;
}

void Dlg_TK_Define::clickHeader(int column) {
  if (column < 0 || column >= static_cast<int>(descending_.size()) || column == kColumnDelete) return;
  SortDefinitions(library_, column, !descending_[column]);
  descending_[column] = !descending_[column];
}

bool Dlg_TK_Define::ok() {
  library_.index_draw_frame = drawFrame;
  library_.CentreInArea = centreInArea;
  library_.TitleSeparator = titleSeparator;
  library_.PaperNameStyle = paperNameStyle;
  if (SaveTkFile(library_, false, false)) return true;
  // What could not be saved is not kept: the library stays what its file holds.
  LoadTkFile(library_, false);
  return false;
}

void Dlg_TK_Define::showList() const {
  host::Editor& editor = host::CurrentEditor();
  if (library_.definitions.empty()) {
    host::Print("\n" + std::string(kTitle) + " -" + std::string(kPages[0]) + "\n" + std::string(kListTip));
    return;
  }
  std::vector<std::vector<std::string>> rows;
  for (std::size_t i = 0; i < library_.definitions.size(); ++i) {
    DefinitionRow row = RowOf(*library_.definitions[i], i);
    // Red cells are marked with "!" on the command line.
    if (row.paperRed) row.cells[kColumnPaper] = "!" + row.cells[kColumnPaper];
    if (row.ruleRed) {
      row.cells[kColumnRule] = "!" + row.cells[kColumnRule];
      row.cells[kColumnRemark] = "!" + row.cells[kColumnRemark];
    }
    rows.push_back(std::move(row.cells));
  }
  editor.showList(std::string(kTitle) + " -" + std::string(kPages[0]),
                  std::vector<std::string>(kDefinitionColumns.begin(), kDefinitionColumns.end()), rows);
}

void Dlg_TK_Define::showIndexPage() const {
  std::string text = "\n" + std::string(kPages[1]) + "\n" + IndexStyleLabel(library_.index_style) +
                     "\n颜色：" + IndexColourLabel(library_.index_style.color);
  char height[64];
  std::snprintf(height, sizeof height, "%g", library_.index_row_height);
  text += "\n行高：" + std::string(height) + "\n列：";
  for (std::size_t i = 0; i < library_.index_columns.size(); ++i) {
    const std::int32_t c = library_.index_columns[i];
    const char* name = c >= 0 && c < static_cast<std::int32_t>(kIndexColumnNames.size()) ? kIndexColumnNames[c] : "?";
    char width[64];
    std::snprintf(width, sizeof width, "%g", i < library_.index_col_widths.size() ? library_.index_col_widths[i] : 0.0);
    text += " [" + std::string(name) + " " + width + "]";
  }
  text += std::string("\n绘制目录内容边框线：") + (drawFrame ? "是" : "否");
  host::Print(text);
}

bool Dlg_TK_Define::runIndexPage() {
  host::Editor& editor = host::CurrentEditor();
  showIndexPage();
  while (true) {
    std::string answer;
    const int rc = editor.getString("\n选择字符获取参数(T)/增加列(A)/删除列(D)/行高(H)/列宽(W)/绘制目录内容边框线(F)/返回(R) <返回>: ", answer);
    const std::string k = rc == host::RTNORM ? (answer.empty() ? "R" : Letter(answer)) : "R";
    if (k == "R") {
      std::string message;
      if (CheckIndexPage(library_, Ask, message)) return true;
      if (!message.empty()) editor.messageBox(message, kCaption, host::MessageButtons::Ok);
      if (rc != host::RTNORM) return false;
      continue;
    }
    if (k == "T") {
      PickIndexTextStyle(library_.index_style);
    } else if (k == "A") {
      std::vector<std::string> names;
      std::vector<std::int32_t> numbers;
      for (std::int32_t c = 0; c < static_cast<std::int32_t>(kIndexColumnNames.size()); ++c) {
        if (std::find(library_.index_columns.begin(), library_.index_columns.end(), c) != library_.index_columns.end())
          continue;
        names.push_back(kIndexColumnNames[c]);
        numbers.push_back(c);
      }
      if (names.empty()) {
        editor.messageBox("所有信息均已加入目录列表 !", kCaption, host::MessageButtons::Ok);
      } else if (const auto row = editor.chooseItem("选择要添加的列", names, 0);
                 row && *row >= 0 && static_cast<std::size_t>(*row) < names.size()) {
        library_.index_col_widths.resize(library_.index_columns.size(), kNewColumnWidth);
        library_.index_columns.push_back(numbers[static_cast<std::size_t>(*row)]);
        library_.index_col_widths.push_back(kNewColumnWidth);
      }
    } else if (k == "D") {
      if (library_.index_columns.empty()) {
        editor.messageBox("列表为空，无列可删除 !", kCaption, host::MessageButtons::Ok);
      } else {
        std::vector<std::string> names;
        for (std::int32_t c : library_.index_columns)
          names.push_back(c >= 0 && c < static_cast<std::int32_t>(kIndexColumnNames.size()) ? kIndexColumnNames[c] : "?");
        if (const auto row = editor.chooseItem("选择要删除的列", names, 0);
            row && *row >= 0 && static_cast<std::size_t>(*row) < names.size()) {
          const auto at = static_cast<std::ptrdiff_t>(*row);
          library_.index_columns.erase(library_.index_columns.begin() + at);
          if (static_cast<std::size_t>(at) < library_.index_col_widths.size())
            library_.index_col_widths.erase(library_.index_col_widths.begin() + at);
        }
      }
    } else if (k == "H") {
      if (const auto h = PickLength(true)) library_.index_row_height = *h;
    } else if (k == "W") {
      if (const auto row = AskRow(library_.index_columns.size(), "列号")) {
        if (const auto w = PickLength(false)) {
          library_.index_col_widths.resize(library_.index_columns.size(), kNewColumnWidth);
          library_.index_col_widths[*row] = *w;
        }
      }
    } else if (k == "F") {
      drawFrame = drawFrame ? 0 : 1;
    } else {
      continue;
    }
    showIndexPage();
  }
}

void Dlg_TK_Define::showOtherPage() const {
  std::string text = "\n" + std::string(kPages[2]) + "\n1、图框信息自动按录入范围居中布置：";
  constexpr const char* kFlags[] = {"图号 (A)", "版次 (B)", "图名 (C)", "日期 (D)", "信息1 (E)", "信息2 (F)"};
  for (std::size_t i = 0; i < centreInArea.size(); ++i)
    text += std::string(" ") + (centreInArea[i] ? "☑" : "☐") + kFlags[i];
  text += "\n2、当图框上有多个图名时，图名之间字符设置：" + titleSeparator + "\n   " + SeparatorSample(titleSeparator);
  text += "\n3、加长纸张的命名方式：" + std::string(paper::PaperNameStyleChoice(paperNameStyle));
  const std::array<std::string, 4> standard = LengthenedSamples(0), chosen = LengthenedSamples(paperNameStyle);
  text += "\n   国 标：";
  for (const auto& n : standard) text += " " + n;
  text += "\n   示 例：";
  for (const auto& n : chosen) text += " " + n;
  text += "  " + std::string(paper::PaperNameStyleLabel(paperNameStyle));
  host::Print(text);
}

void Dlg_TK_Define::runOtherPage() {
  host::Editor& editor = host::CurrentEditor();
  showOtherPage();
  while (true) {
    std::string answer;
    if (editor.getString("\n居中(A-F)/分隔符(S)/命名方式(P)/返回(R) <返回>: ", answer) != host::RTNORM) return;
    const std::string k = Letter(answer.empty() ? "R" : answer);
    if (k == "R") return;
    if (k >= "A" && k <= "F") {
      std::int32_t& flag = centreInArea[static_cast<std::size_t>(k[0] - 'A')];
      flag = flag ? 0 : 1;
    } else if (k == "S") {
      std::string typed;
      if (editor.getString("\n多图名间字符设置 <" + titleSeparator + ">: ", typed) == host::RTNORM && !typed.empty())
        titleSeparator = CleanFileName(typed, true);
    } else if (k == "P") {
      std::vector<std::string> items;
      for (std::int32_t s = 0; s < paper::kPaperNameStyleCount; ++s)
        items.push_back(std::string(paper::PaperNameStyleChoice(s)) + " " + std::string(paper::PaperNameStyleLabel(s)));
      if (const auto row = editor.chooseItem("加长纸张的命名方式", items, paperNameStyle);
          row && *row >= 0 && *row < paper::kPaperNameStyleCount)
        paperNameStyle = *row;
    } else {
      continue;
    }
    showOtherPage();
  }
}

bool Dlg_TK_Define::run() {
  host::Editor& editor = host::CurrentEditor();
  showList();
  const std::string prompt =
      "\n录入新图框(A)/删除(D)/纸张(Z)/排序级别(S)/命名规则(N)/序号位数(W)/按列排序(L)/目录生成配置(M)/其它(Q)/导入设置(I)/"
      "导出设置(E)/确定(O)/取消(C) <确定>: ";
  while (true) {
    std::string answer;
    if (editor.getString(prompt, answer) != host::RTNORM) return false;
    const std::string k = Letter(answer);
    const std::size_t count = library_.definitions.size();
    if (k == "O") {
      if (!ok()) host::Print("\n图框信息库未能保存。");
      return true;
    }
    if (k == "C") return false;
    if (k == "A") {
      AddDefinition(library_);
    } else if ((k == "D" || k == "Z" || k == "S" || k == "N" || k == "W") && count > 0) {
      const auto row = AskRow(count);
      if (!row) continue;
      TK_Customization& d = *library_.definitions[*row];
      if (k == "D") library_.definitions.erase(library_.definitions.begin() + static_cast<std::ptrdiff_t>(*row));
      else if (k == "Z") ChoosePaper(d);
      else if (k == "S") ChooseSortPriority(d);
      else if (k == "W") ChooseSerialDigits(d);
      else EditNameRule(d, library_);
    } else if (k == "L") {
      std::vector<std::string> columns;
      for (const char* c : kDefinitionColumns) columns.push_back(c);
      if (const auto column = editor.chooseItem("按列排序", columns, 0)) clickHeader(*column);
    } else if (k == "M") {
      runIndexPage();
    } else if (k == "Q") {
      runOtherPage();
    } else if (k == "I") {
      LoadTkFile(library_, true);
      refreshFromLibrary();
    } else if (k == "E") {
      SaveTkFile(library_, true, true);
    } else {
      continue;
    }
    showList();
  }
}

void TkDefineCommand() {
  TK_Library& library = GlobalTkLibrary();
  // The batch dialogs' numbering values outlive the reload.
  const std::int32_t insertSerial = library.InsertSerial, start = library.SerialStart, digits = library.SerialDigits;
  const std::string prefix = library.SerialPrefix, suffix = library.SerialSuffix;
  LoadTkFile(library, false);
  {
    Dlg_TK_Define form(library);
    form.run();
  }
  library.InsertSerial = insertSerial;
  library.SerialPrefix = prefix;
  library.SerialStart = start;
  library.SerialSuffix = suffix;
  library.SerialDigits = digits;
}

}  // namespace tv::titleblock
