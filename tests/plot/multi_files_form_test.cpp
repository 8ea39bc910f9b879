// The multi-file form as the console shows it: cells, edit titles, unified edits and the format.
#include "plot/multi_files_form.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace tv::plot {
namespace {

Dlg_MultiFiles FormOf(std::vector<std::string> names) {
  Dlg_MultiFiles form;
  form.styles = {"黑白.ctb", "彩色.ctb"};
  for (const std::string& n : names) {
    Single_Dwg row;
    row.path = "/d/" + n;
    row.name = n;
    form.rows.push_back(row);
  }
  return form;
}

TEST(MultiFilesForm, CellsShowEachChoice) {
  Dlg_MultiFiles form = FormOf({"a.dwg"});
  Single_Dwg& row = form.rows[0];
  struct Case {
    std::function<void(Single_Dwg&)> set;
    MultiColumn column;
    std::string text;
  } cases[] = {
      {[](Single_Dwg&) {}, MultiColumn::Number, " 1"},
      {[](Single_Dwg&) {}, MultiColumn::File, "a.dwg"},
      {[](Single_Dwg& r) { r.filter_ratio = 2.5; }, MultiColumn::Filter, "2.5%"},
      {[](Single_Dwg& r) { r.paper_mode = 4; }, MultiColumn::Paper, "A1"},
      {[](Single_Dwg& r) { r.paper_mode = 6; }, MultiColumn::Paper, "按打印比例"},
      {[](Single_Dwg& r) { r.paper_mode = 7; }, MultiColumn::Paper, "按图框设定"},
      {[](Single_Dwg& r) { r.scale = 50; }, MultiColumn::Scale, "1:50"},
      {[](Single_Dwg& r) { r.auto_scale = 1; r.scale = 200; }, MultiColumn::Scale, "S 200"},
      {[](Single_Dwg& r) { r.style_index = 1; }, MultiColumn::Style, "彩色.ctb"},
      {[](Single_Dwg& r) { r.range = 2; }, MultiColumn::Range, "模型 + 布局"},
      {[](Single_Dwg& r) { r.plot_signatures = 1; }, MultiColumn::Signatures, ""},
      {[](Single_Dwg&) {}, MultiColumn::Delete, "DEL"},
  };
  for (const Case& c : cases) {
    c.set(row);
    EXPECT_EQ(form.Cell(0, c.column), c.text) << static_cast<int>(c.column);
  }
  form.signatureLibrary = true;
  EXPECT_EQ(form.Cell(0, MultiColumn::Signatures), "是");
  EXPECT_NE(form.Text().find(" 打印签名 "), std::string::npos);
}

TEST(MultiFilesForm, UnifiedEditsTitlesAndToggles) {
  Dlg_MultiFiles form = FormOf({"b.dwg", "a.dwg", "c.dwg"});
  EXPECT_EQ(form.EditTitle(MultiColumn::Paper, 3), "统 一 修 改 纸 张");
  EXPECT_EQ(form.EditTitle(MultiColumn::Paper, 2), "选  择  纸  张");
  EXPECT_EQ(form.EditTitle(MultiColumn::Range, 3), "统一修改打印范围");
  EXPECT_EQ(FormOf({"a.dwg"}).EditTitle(MultiColumn::Style, 1), "选择打印样式");

  ASSERT_TRUE(form.UnifyPaper({0, 2}, 1));
  EXPECT_EQ(form.rows[0].paper_mode, 7);
  EXPECT_EQ(form.rows[1].paper_mode, 1);
  EXPECT_FALSE(form.UnifyRange({0}, 3));
  EXPECT_FALSE(form.UnifyStyle({5}, 0)) << "a row outside the list changes nothing";

  form.rows[1].plot_signatures = 1;
  form.ToggleSignatures({0, 1, 2}, 1);
  for (const Single_Dwg& r : form.rows) EXPECT_EQ(r.plot_signatures, 0);

  form.SortByFile();
  EXPECT_EQ(form.rows.front().name, "a.dwg");
  form.SortByFile();
  EXPECT_EQ(form.rows.front().name, "c.dwg");
  EXPECT_EQ(form.rows.front().number, 1);

  form.TakeFormat(6);
  EXPECT_EQ(form.format, 0) << "a stored DWG format falls to PDF";
  form.TakeFormat(2);
  EXPECT_EQ(form.format, 2);
}

}  // namespace
}  // namespace tv::plot
