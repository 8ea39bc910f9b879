// The naming rule of a title block: its letters and escapes, the check against a definition's
// areas, and the two forms that edit names with their samples.
#include "titleblock/name_rule.h"

#include <gtest/gtest.h>

namespace tv::titleblock {
namespace {

const FieldTexts kFields{"01", "B2", "一层平面图", "2024.03", "甲", "乙"};

TEST(ExpandNameRule, LettersFieldsEscapesAndCleaning) {
  EXPECT_EQ(ExpandNameRuleText("A_B_T_C", kFields, "A1"), "01_B2_A1_一层平面图");
  EXPECT_EQ(ExpandNameRuleText("AA", kFields, "A1"), "A");
  EXPECT_EQ(ExpandNameRuleText("AAA", kFields, "A1"), "A01");
  EXPECT_EQ(ExpandNameRuleText("A_TT", kFields, "A1"), "01_T");
  EXPECT_EQ(ExpandNameRuleText("DEF", kFields, "A1"), "2024.03甲乙");
  // Small letters and capitals without meaning stay.
  EXPECT_EQ(ExpandNameRuleText("abc-A-XYZ", kFields, "A1"), "abc-01-XYZ");
  // A field not read leaves its separators.
  FieldTexts noRevision = kFields;
  noRevision[1].clear();
  EXPECT_EQ(ExpandNameRuleText("A_B", noRevision, "A1"), "01_");
  // What a title block holds is cleaned: a slash keeps its look, a colon goes, marks of several
  // title lines stay for the path to replace.
  FieldTexts odd = kFields;
  odd[0] = "结施:1/2";
  odd[2] = "一层[++}二层";
  EXPECT_EQ(ExpandNameRuleText("A_C", odd, "A1"), "结施1\u22152_一层[++}二层");
  // Field values are put in after the letters: their capitals are text.
  FieldTexts capitals = kFields;
  capitals[0] = "ABT";
  EXPECT_EQ(ExpandNameRuleText("A", capitals, "A1"), "ABT");
}

TEST(CheckNameRule, TheFirstLetterWithoutItsAreaIsNamed) {
  TK_Customization d;
  d.name_rule = "F_C_A";
  std::string message;
  EXPECT_FALSE(CheckNameRule(d, message, false));
  EXPECT_EQ(message, "文件命名中包含图号(A)，但未点取图号(A)范围");
  EXPECT_FALSE(CheckNameRule(d, message, true));
  EXPECT_EQ(message, "文件命名中包含图号(A)，但图框信息录入时未录入图号范围");

  d.area_drawing_no = Extents3d(Point3d{0, 0, 0}, Point3d{10, 5, 0});
  EXPECT_FALSE(CheckNameRule(d, message, false));
  EXPECT_EQ(message, "文件命名中包含图名(C)，但未点取图名(C)范围");
  d.area_title = d.area_drawing_no;
  d.area_info2 = d.area_drawing_no;
  EXPECT_TRUE(CheckNameRule(d, message, false));
  EXPECT_TRUE(message.empty());

  // Escapes and the paper need no area.
  TK_Customization escapes;
  escapes.name_rule = "TT_T_AA_BB";
  EXPECT_TRUE(CheckNameRule(escapes, message, true));
}

TEST(NameForms, RuleFormSampleDefaultAndEmptyRule) {
  TK_Library library;
  Dlg_TK_Name form = Dlg_TK_Name::Open("", library);
  EXPECT_EQ(form.rule, "A_B_T_C");
  EXPECT_EQ(form.sample(), "输出文件名示例：建施03_A_A1_一层建筑平面图");

  std::string result, message;
  form.rule = "  :?  ";
  EXPECT_FALSE(form.ok(library, result, message));
  EXPECT_EQ(message, "文件名不能为空 !");
  EXPECT_EQ(library.DefaultNameRule, "A_B_T_C");

  form.rule = " C-A ";
  ASSERT_TRUE(form.ok(library, result, message));
  EXPECT_EQ(result, "C-A");
  EXPECT_EQ(library.DefaultNameRule, "C-A") << "the next definition starts from the last rule";
  EXPECT_EQ(Dlg_TK_Name::Open("B", library).rule, "B");
}

TEST(NameForms, GenericNamesFormKeepsTheDrawingPrefixAndShowsFourSerials) {
  settings::PlotSettingRec rec;
  rec.name_prefix = "???";
  rec.name_start = 9;
  rec.name_suffix = "-纸张尺寸";
  rec.name_digits = 2;
  Dlg_Name_Rule form = Dlg_Name_Rule::Open(rec, "plan");
  EXPECT_EQ(form.prefix, "plan");
  EXPECT_EQ(form.sample(),
            "示   例\n\nplan09-A1(841x594)\n\nplan10-A1(841x594)\n\n..........\n\nplan19-A2(594x420)\n\nplan20-A2(594x420)");

  form.suffix = "_纸张";
  form.sort_style = 5;
  form.ok(rec, "plan");
  EXPECT_EQ(rec.name_prefix, "???") << "the drawing's name goes back to the mark that follows the document";
  EXPECT_EQ(rec.name_suffix, "_纸张");
  EXPECT_EQ(rec.sort_style, 5);
  form.prefix = "S-";
  form.ok(rec, "plan");
  EXPECT_EQ(rec.name_prefix, "S-");
}

}  // namespace
}  // namespace tv::titleblock
