#pragma once
// "图框信息库管理": the library of title-block definitions in one form of three pages, the list of
// definitions, the drawing index and the other settings, and the command that opens it.
#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "titleblock/tk_library.h"

namespace tv::titleblock {

// ---- page 1: the list ---------------------------------------------------------------------------

inline constexpr std::array<const char*, 17> kDefinitionColumns{
    "序 号", "图框对应的图块", "对应纸张", "排序优先级别", "删 除", "文件命名规则", "图号(A)", "版次(B)", "图名(C)",
    "日期(D)", "信息1(E)", "信息2(F)", "注册章位置", "出图章位置", "项目章位置", "竣工章位置", "备 注"};
inline constexpr int kColumnNumber = 0, kColumnPaper = 2, kColumnPriority = 3, kColumnDelete = 4, kColumnRule = 5,
                     kColumnRemark = 16;

// One row of the list as shown, and which of its cells are marked red.
struct DefinitionRow {
  std::vector<std::string> cells;
  bool paperRed = false;  // a side below 50 or above 5080
  bool ruleRed = false;   // the rule names a field without an area: rule and remark are red
};
DefinitionRow RowOf(const TK_Customization& definition, std::size_t position);

// Sorts the list, and the library with it, by the shown text of one column (not "删 除"),
// ascending or descending; the order of equal cells stays.
void SortDefinitions(TK_Library& library, int column, bool ascending);

// A new definition picked from the drawing and entered in "录入新图框"; true when it was appended.
// A known block name is replaced only when the user agrees to remove the old definition.
bool AddDefinition(TK_Library& library);

// ---- page 2: the drawing index --------------------------------------------------------------------

// The check of leaving the page. `confirm` asks a Yes/No question and is true on Yes.
bool CheckIndexPage(const TK_Library& library, const std::function<bool(const std::string&)>& confirm,
                    std::string& message);
// "选择字符获取参数": the look of the index's text taken from a text or multiline text the user
// picks at "\n选择字符："; false when nothing fitting was picked.
bool PickIndexTextStyle(TK_IndexStyle& style);
// "字型：%s     字高：…     图层：%s" with as many decimals as the height needs.
std::string IndexStyleLabel(const TK_IndexStyle& style);
// The colour of the sample text: "ByLayer", "ByBlock" or "---" beside a swatch.
std::string IndexColourLabel(std::int32_t colour);

// ---- page 3: other settings -------------------------------------------------------------------------

// "示 例： 结施01_一层梁布置图%s二层梁布置图%s三层梁布置图" with the cleaned separator.
std::string SeparatorSample(std::string_view separator);
// The papers 630x297, 1040x420, 1892x594 and 1486x841 named in `style`, "/" shown as "∕".
std::array<std::string, 4> LengthenedSamples(std::int32_t style);

// ---- the form ------------------------------------------------------------------------------------------

class Dlg_TK_Define {
 public:
  static constexpr std::string_view kTitle = "图框信息库管理";
  static constexpr std::array<std::string_view, 3> kPages{"  图框信息录入    ", "  目录生成配置    ", "  其  它    "};

  explicit Dlg_TK_Define(TK_Library& library);

  // The values of the third page and the frame flag of the second, stored into the library on OK.
  std::int32_t drawFrame;
  std::array<std::int32_t, 6> centreInArea;
  std::string titleSeparator;
  std::int32_t paperNameStyle;

  // A click on a header: each column keeps its own direction, flipped at every click.
  void clickHeader(int column);
  // OK: the page values go into the library, which is saved without asking. False when the save
  // failed, in which case the library is read back from its file.
  bool ok();
  // The form on the command line: true when it closed with OK.
  bool run();

 private:
  void showList() const;
  void showIndexPage() const;
  void showOtherPage() const;
  bool runIndexPage();
  void runOtherPage();
  void refreshFromLibrary();

  TK_Library& library_;
  std::array<bool, kDefinitionColumns.size()> descending_{};
};

// The command behind "图框信息库管理": the library read again from its file, the form, and the five
// numbering values of the batch dialogs kept across.
void TkDefineCommand();

}  // namespace tv::titleblock
