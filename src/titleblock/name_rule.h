#pragma once
// The naming rule of a title block: a short text in which capitals stand for the fields read off
// the frame (A drawing number, B revision, C title, D date, E and F the two free fields, T the
// paper), a doubled capital for the letter itself. Also the check of a rule against the areas a
// definition has, and the two forms that edit names: the rule of a definition and the prefix,
// serial and suffix of the generic batch.
#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "settings/plot_setting.h"
#include "titleblock/tk_library.h"

namespace tv::titleblock {

// The six fields of a title block, A to F, as read.
using FieldTexts = std::array<std::string, 6>;

// The rule expanded with the fields and the paper's name, cleaned for a file name. A field not
// read is empty, so separators stay. A title of several lines keeps its "[++}" marks here.
std::string ExpandNameRuleText(std::string_view rule, const FieldTexts& fields, std::string_view paperText);
// The same before the cleaning: the texts as read off the drawing.
std::string FillNameRule(std::string_view rule, const FieldTexts& fields, std::string_view paperText);

// Whether every field letter of the rule has its area in the definition. On failure `message`
// names the first such letter of the alphabet, in the wording of the definitions' list
// (`listing`) or of the definition form.
bool CheckNameRule(const TK_Customization& definition, std::string& message, bool listing);

// The rule form of a definition.
struct Dlg_TK_Name {
  static constexpr std::string_view kTitle = "文件命名规则";
  static constexpr std::string_view kLegend =
      "文件命名中用以下字母表示各类信息：\n\nA：图号    B：版次    C：图名    D：日期    E：信息1    F：信息2    T：图幅";
  static constexpr std::string_view kEmpty = "文件名不能为空 !";

  std::string rule;  // the edit

  // Opens on the definition's rule, or the library's default one when it has none.
  static Dlg_TK_Name Open(const std::string& rule, const TK_Library& library);
  // "输出文件名示例：" and the rule expanded with the sample fields.
  std::string sample() const;
  // OK: the rule cleaned and trimmed; an empty one is refused with `message` set to kEmpty. An
  // accepted rule becomes the library's default and is returned in `result`.
  bool ok(TK_Library& library, std::string& result, std::string& message) const;
};

// The form of the generic batch's names: prefix, first serial, suffix, serial digits, order.
struct Dlg_Name_Rule {
  static constexpr std::string_view kTitle = "命名、排序";
  std::string prefix;  // "前  缀"
  std::int32_t start = 1;  // "起始编号"
  std::string suffix;  // "后  缀"
  std::int32_t digits = 2;  // "编号位数"
  std::int32_t sort_style = 1;  // 1 to 9

  // The prefix "???" shows as the drawing's name.
  static Dlg_Name_Rule Open(const settings::PlotSettingRec& setting, std::string_view drawingName);
  // "示   例" with the names of the first two serials and of the serials start + 10 and + 11; the
  // words "纸张尺寸" and "纸张" show as A1 in the first two and as A2 in the others.
  std::string sample() const;
  // OK: the values go into the setting; a prefix equal to the drawing's name is stored as "???".
  void ok(settings::PlotSettingRec& setting, std::string_view drawingName) const;
};

}  // namespace tv::titleblock
