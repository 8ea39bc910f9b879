// The definition forms' own rules: the list's plain-text sort, the index page's check, the copy
// of areas from another frame and the refusals of "录入新图框".
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "titleblock/tk_define_form.h"
#include "titleblock/tk_set_form.h"
#include "titleblock/tuhao_form.h"

namespace tv::titleblock {
namespace {

std::vector<std::string> Names(const TK_Library& library) {
  std::vector<std::string> names;
  for (const auto& d : library.definitions) names.push_back(d->block_name);
  return names;
}

TEST(TkDefineFormTest, HeaderClicksSortByShownTextAndFlipDirection) {
  TK_Library library;
  for (int i = 1; i <= 10; ++i) {
    auto d = std::make_unique<TK_Customization>();
    d->block_name = "F" + std::to_string(i);
    library.definitions.push_back(std::move(d));
  }
  Dlg_TK_Define form(library);
  form.clickHeader(kColumnNumber);  // "10" comes before "9"
  EXPECT_EQ(Names(library), (std::vector<std::string>{"F1", "F10", "F2", "F3", "F4", "F5", "F6", "F7", "F8", "F9"}));
  form.clickHeader(1);
  EXPECT_EQ(Names(library).front(), "F1");
  form.clickHeader(1);
  EXPECT_EQ(Names(library).front(), "F9");
  form.clickHeader(kColumnDelete);  // not a sort
  EXPECT_EQ(Names(library).front(), "F9");
}

TEST(TkDefineFormTest, IndexPageCheck) {
  struct Case {
    double rowHeight, textHeight;
    bool noColumns, answer;
    bool passes;
    const char* says;  // the message or question, "" when nothing is said
  };
  const Case cases[] = {
      {0, 0, true, false, true, ""},
      {0, 300, false, true, false, "点取的目录行高小于等于 0 ，有误 !"},
      {1000, 0, false, true, false, "选择的字符高度小于等于 0 ，有误 !"},
      {200, 300, false, false, false, "目录行高 200.0 小于字符高度 300.0\n\n是否确认 ？"},
      {200, 300, false, true, true, "目录行高 200.0 小于字符高度 300.0\n\n是否确认 ？"},
      {1500, 300, false, false, true, ""},  // exactly five times asks nothing
      {1600, 300, false, false, false, "目录行高 1600.0 ，字符高度 300.0\n\n两者相差过大，是否确认 ？"},
  };
  for (const Case& c : cases) {
    TK_Library library;
    library.index_row_height = c.rowHeight;
    library.index_style.text_height = c.textHeight;
    if (c.noColumns) library.index_columns.clear();
    std::string asked, message;
    const bool passed = CheckIndexPage(
        library, [&](const std::string& q) { return asked = q, c.answer; }, message);
    EXPECT_EQ(passed, c.passes) << c.rowHeight << "/" << c.textHeight;
    EXPECT_EQ(asked.empty() ? message : asked, c.says) << c.rowHeight << "/" << c.textHeight;
  }
}

TEST(TkDefineFormTest, EnteringADefinition) {
  TK_Library library;
  auto big = std::make_unique<TK_Customization>();
  big->block_name = "BIG";
  big->frame_extents = Extents3d(Point3d{-500, -300, 0}, Point3d{500, 300, 0});
  big->area_title = Extents3d(Point3d{400, -300, 0}, Point3d{500, -250, 0});
  big->name_rule = "C";
  big->sort_priority = 4;
  big->print_extents = big->frame_extents;
  library.definitions.push_back(std::move(big));

  TK_Customization d;
  d.block_name = "SMALL";
  d.pick_centre = Point3d{1000, 1000, 0};
  d.frame_extents = Extents3d(Point3d{-200, -100, 0}, Point3d{200, 100, 0});
  d.name_rule = "old";
  Dlg_TK_Set form(d, library, false);
  EXPECT_TRUE(d.name_rule.empty());
  std::string message;
  EXPECT_FALSE(form.ok(message));
  EXPECT_EQ(message, Dlg_TK_Set::kNoRule);

  // The areas keep to the lower right corner of the smaller frame; the print extents stay behind.
  ASSERT_TRUE(form.canCopy());
  form.copyFrom(*library.definitions.front());
  EXPECT_EQ(d.area_title.min, (Point3d{100, -100, 0}));
  EXPECT_EQ(d.area_title.max, (Point3d{200, -50, 0}));
  EXPECT_EQ(d.sort_priority, 4);
  EXPECT_FALSE(IsAreaSet(d.print_extents));
  EXPECT_TRUE(form.marked(3));
  EXPECT_EQ(form.buttonText(3), "点取图名(C)范围 ■");
  EXPECT_TRUE(form.ok(message)) << message;

  // A rule that needs an area not picked keeps the form open; a void pick keeps the old area.
  d.name_rule = "A_C";
  EXPECT_FALSE(form.ok(message));
  EXPECT_EQ(message, "文件命名中包含图号(A)，但未点取图号(A)范围");
  EXPECT_FALSE(form.storeArea(1, Point3d{1000, 1000, 0}, Point3d{1000, 1100, 0}, message));
  EXPECT_EQ(message, Dlg_TK_Set::kBadRange);
  ASSERT_TRUE(form.storeArea(1, Point3d{1150, 950, 0}, Point3d{1100, 900, 0}, message));
  EXPECT_EQ(d.area_drawing_no.min, (Point3d{100, -100, 0}));
  EXPECT_EQ(d.area_drawing_no.max, (Point3d{150, -50, 0}));
  EXPECT_TRUE(form.ok(message)) << message;
}

TEST(TkDefineFormTest, PaperChoicePreselectsTheRowOfThePaper) {
  struct Case {
    paper::MyPaper paper;
    int preselected;
    std::size_t rows;
  };
  const Case cases[] = {
      {{841, 594, true}, 3, 11},   // A1; the eleventh row is the custom paper form
      {{297, 210, true}, 0, 11},   // A4
      {{1051, 594, true}, 8, 11},  // A1 lengthened
      {{733, 512, false}, 10, 11}, // neither: its own eleventh row
  };
  for (const Case& c : cases) {
    int preselected = -1;
    EXPECT_EQ(PaperChoiceRows(c.paper, preselected).size(), c.rows) << c.paper.length;
    EXPECT_EQ(preselected, c.preselected) << c.paper.length;
  }
}

TEST(TkDefineFormTest, RenumberingSample) {
  Dlg_TuHao form;
  form.start = 9;
  EXPECT_EQ(form.sample(), "示   例\n\n结施-09\n\n结施-10\n\n结施-11\n\n..........\n\n结施-19\n\n结施-20");
  EXPECT_FALSE(Dlg_TuHao::Refreshes("-"));
  EXPECT_TRUE(Dlg_TuHao::Refreshes("-1"));
}

}  // namespace
}  // namespace tv::titleblock
