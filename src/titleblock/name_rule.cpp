#include "titleblock/name_rule.h"

#include <cstddef>

#include "titleblock/file_naming.h"
#include "titleblock/naming_internal.h"

namespace tv::titleblock {

namespace {

using internal::ReplaceAll;

// The fields and the paper in the rule's letters, with the marks that stand for each while the
// rule is worked on. The order is that of the replacing.
struct Letter {
  std::string_view escape, escapeMark, letter, letterMark;
};
constexpr std::array<Letter, 7> kLetters{{
    {"AA", "1@9#51", "A", "QQ11QQ"},
    {"BB", "1@9#52", "B", "QQ22QQ"},
    {"CC", "1@9#53", "C", "QQ33QQ"},
    {"DD", "1@9#54", "D", "QQ44QQ"},
    {"EE", "1@9#55", "E", "QQ55QQ"},
    {"FF", "1@9#56", "F", "QQ66QQ"},
    {"TT", "1@9#57", "T", "QQ77QQ"},
}};

std::string_view Trim(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}

const FieldTexts kSampleFields{"建施03", "A", "一层建筑平面图", "2020.06.09", "信息1", "信息2"};
constexpr std::string_view kSamplePaper = "A1";

struct AreaMessage {
  char letter;
  const Extents3d TK_Customization::*area;
  std::string_view form, listing;
};
// F first: a later failure overwrites an earlier one, so the message names the first letter.
constexpr std::array<AreaMessage, 6> kAreaMessages{{
    {'F', &TK_Customization::area_info2, "文件命名中包含信息2(F)，但未点取信息2(F)范围",
     "文件命名中包含信息2(F)，但图框信息录入时未录入信息2范围"},
    {'E', &TK_Customization::area_info1, "文件命名中包含信息1(E)，但未点取信息1(E)范围",
     "文件命名中包含信息1(E)，但图框信息录入时未录入信息1范围"},
    {'D', &TK_Customization::area_date, "文件命名中包含日期(D)，但未点取日期(D)范围",
     "文件命名中包含日期(D)，但图框信息录入时未录入日期范围"},
    {'C', &TK_Customization::area_title, "文件命名中包含图名(C)，但未点取图名(C)范围",
     "文件命名中包含图名(C)，但图框信息录入时未录入图名范围"},
    {'B', &TK_Customization::area_revision, "文件命名中包含版次(B)，但未点取版次(B)范围",
     "文件命名中包含版次(B)，但图框信息录入时未录入版次范围"},
    {'A', &TK_Customization::area_drawing_no, "文件命名中包含图号(A)，但未点取图号(A)范围",
     "文件命名中包含图号(A)，但图框信息录入时未录入图号范围"},
}};

// A generic name with the paper words shown as `paper` and `paperSize`.
std::string SampleName(const Dlg_Name_Rule& form, std::int32_t serial, std::string_view paper,
                       std::string_view paperSize) {
  std::string head = form.prefix, tail = form.suffix;
  for (std::string* part : {&head, &tail}) internal::ReplacePaperWords(*part, paper, paperSize);
  return head + SerialText(serial, form.digits) + tail;
}

}  // namespace

std::string ExpandNameRuleText(std::string_view rule, const FieldTexts& fields, std::string_view paperText) {
  return CleanFileName(FillNameRule(rule, fields, paperText), true);
}

std::string FillNameRule(std::string_view rule, const FieldTexts& fields, std::string_view paperText) {
  std::string name(rule);
  for (const Letter& l : kLetters) ReplaceAll(name, l.escape, l.escapeMark);
  for (const Letter& l : kLetters) ReplaceAll(name, l.letter, l.letterMark);
  for (std::size_t i = 0; i < fields.size(); ++i) ReplaceAll(name, kLetters[i].letterMark, fields[i]);
  ReplaceAll(name, kLetters[6].letterMark, paperText);
  for (const Letter& l : kLetters) ReplaceAll(name, l.escapeMark, l.letter);
  return name;
}

bool CheckNameRule(const TK_Customization& definition, std::string& message, bool listing) {
  message.clear();
  bool result = true;
  std::string rule = definition.name_rule;
  for (std::size_t i = 0; i < 6; ++i) ReplaceAll(rule, kLetters[i].escape, "");
  for (const AreaMessage& m : kAreaMessages) {
    if (rule.find(m.letter) == std::string::npos || IsAreaSet(definition.*m.area)) continue;
    result = false;
    message = listing ? m.listing : m.form;
  }
  return result;
}

Dlg_TK_Name Dlg_TK_Name::Open(const std::string& rule, const TK_Library& library) {
  return {rule.empty() ? library.DefaultNameRule : rule};
}

std::string Dlg_TK_Name::sample() const {
  return "输出文件名示例：" + ExpandNameRuleText(rule, kSampleFields, kSamplePaper);
}

bool Dlg_TK_Name::ok(TK_Library& library, std::string& result, std::string& message) const {
  const std::string cleaned(Trim(CleanFileName(rule, true)));
  if (cleaned.empty()) {
    message = kEmpty;
    return false;
  }
  message.clear();
  library.DefaultNameRule = cleaned;
  result = cleaned;
  return true;
}

Dlg_Name_Rule Dlg_Name_Rule::Open(const settings::PlotSettingRec& setting, std::string_view drawingName) {
  Dlg_Name_Rule form;
  form.prefix = setting.name_prefix == kDrawingNamePrefix ? std::string(drawingName) : setting.name_prefix;
  form.start = setting.name_start;
  form.suffix = setting.name_suffix;
  form.digits = setting.name_digits;
  form.sort_style = setting.sort_style;
  return form;
}

std::string Dlg_Name_Rule::sample() const {
  std::string text = "示   例\n\n" + SampleName(*this, start, "A1", "A1(841x594)");
  text += "\n\n" + SampleName(*this, start + 1, "A1", "A1(841x594)");
  text += "\n\n..........";
  text += "\n\n" + SampleName(*this, start + 10, "A2", "A2(594x420)");
  text += "\n\n" + SampleName(*this, start + 11, "A2", "A2(594x420)");
  return CleanFileName(std::move(text), false);
}

void Dlg_Name_Rule::ok(settings::PlotSettingRec& setting, std::string_view drawingName) const {
  setting.name_prefix = prefix == drawingName ? std::string(kDrawingNamePrefix) : prefix;
  setting.name_start = start;
  setting.name_suffix = suffix;
  setting.name_digits = digits;
  setting.sort_style = sort_style;
}

}  // namespace tv::titleblock
