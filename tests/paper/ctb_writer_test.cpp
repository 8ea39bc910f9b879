#include "paper/ctb_writer.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "paper/ctb_lineweight_form.h"
#include "plotter_fixture.h"

namespace tv::paper {
namespace {

using testing::Count;
using testing::Papers;
using testing::PlotterFolderTest;
namespace fs = std::filesystem;
using test_support::ReadFile;
using test_support::WriteFile;

std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

TEST(PlotStyleTableText, HeadStylesAndLineweightTableInOrder) {
  const std::string text = PlotStyleTableText(kBlackWhiteTable, kObjectLineweightChoice);
  ASSERT_TRUE(text.ends_with("\n"));
  EXPECT_EQ(Count(text, "\r"), 0u);
  const std::vector<std::string> lines = LinesOf(text);
  // 6 head lines, the colour table (2 + 255), the styles (2 + 255 x 18), the lineweights (2 + 11).
  ASSERT_EQ(lines.size(), 6u + 257u + 2u + 255u * 18u + 13u);
  const std::vector<std::string> head{"PIAFILEVERSION_2.0,PC3VER1",      "description=\"",
                                      "aci_table_available=TRUE",        "scale_factor=1.0",
                                      "apply_factor=FALSE",              "custom_lineweight_display_units=0",
                                      "aci_table{",                      " 0=\"Color_1",
                                      " 1=\"Color_2"};
  EXPECT_EQ(std::vector<std::string>(lines.begin(), lines.begin() + 9), head);
  EXPECT_EQ(lines[6 + 255], " 254=\"Color_255");
  EXPECT_EQ(lines[6 + 256], "}");
  EXPECT_EQ(lines[6 + 257], "plot_style{");

  const std::vector<std::string> firstStyle{
      " 0{", "  name=\"Color_1", "  localized_name=\"Color_1", "  description=\"", "  color=-1023410176",
      "  mode_color=-1023410176", "  color_policy=5", "  physical_pen_number=0", "  virtual_pen_number=0",
      "  screen=100", "  linepattern_size=0.5", "  linetype=31", "  adaptive_linetype=TRUE", "  lineweight=0",
      "  fill_style=73", "  end_style=4", "  join_style=5", "}"};
  const std::size_t styles = 6 + 258;
  EXPECT_EQ(std::vector<std::string>(lines.begin() + styles, lines.begin() + styles + 18), firstStyle);
  EXPECT_EQ(lines[styles + 254 * 18], " 254{");
  EXPECT_EQ(lines[styles + 254 * 18 + 1], "  name=\"Color_255");

  const std::vector<std::string> tail{"}",       "custom_lineweight_table{", " 0=0.0",  " 1=0.05", " 2=0.1",
                                      " 3=0.15", " 4=0.2", " 5=0.25", " 6=0.3", " 7=0.35", " 8=0.4", " 9=0.45",
                                      " 10=0.5", "}"};
  EXPECT_EQ(std::vector<std::string>(lines.end() - 14, lines.end()), tail);
}

TEST(PlotStyleTableText, KindsDifferInColourAndPolicyOnly) {
  const std::string colour = PlotStyleTableText(kColourTable, 6);
  EXPECT_EQ(Count(colour, "\n  color=-1006632961\n"), 255u);
  EXPECT_EQ(Count(colour, "\n  mode_color=-1006632961\n"), 255u);
  EXPECT_EQ(Count(colour, "\n  color_policy=1\n"), 255u);
  const std::string blue = PlotStyleTableText(kBlueWhiteTable, 6);
  EXPECT_EQ(Count(blue, "\n  color=-1023409921\n"), 255u);
  EXPECT_EQ(Count(blue, "\n  color_policy=5\n"), 255u);
  EXPECT_EQ(static_cast<std::uint32_t>(PlotStyleColor(kBlackWhiteTable)), 0xC3000000u);
  EXPECT_EQ(static_cast<std::uint32_t>(PlotStyleColor(kColourTable)), 0xC3FFFFFFu);
  EXPECT_EQ(static_cast<std::uint32_t>(PlotStyleColor(kBlueWhiteTable)), 0xC30000FFu);
}

TEST(PlotStyleTableText, LineweightNumbersKeepTheShiftBetweenTheHalvesOfTheList) {
  const std::pair<int, int> expected[] = {{1, 2}, {2, 3},  {5, 6},   {6, 0},   {7, 7},
                                          {8, 8}, {11, 11}, {12, 1}};
  for (const auto& [index, value] : expected) {
    EXPECT_EQ(LineweightValueOf(index), value) << index;
    EXPECT_EQ(Count(PlotStyleTableText(kColourTable, index), "\n  lineweight=" + std::to_string(value) + "\n"), 255u)
        << index;
  }
  const std::vector<std::string>& choices = LineweightChoices();
  ASSERT_EQ(choices.size(), 12u);
  EXPECT_EQ(choices[0], "自行编辑");
  EXPECT_EQ(choices[1], "0.05 mm");
  EXPECT_EQ(choices[6], "对象线宽");
  EXPECT_EQ(choices[7], "0.30 mm");
  EXPECT_EQ(choices[11], "0.50 mm");
}

// ---- the tables in the host's folders -------------------------------------------------------------------

class PlotStyleFolderTest : public PlotterFolderTest {
 protected:
  fs::path folder(const std::string& name) {
    fs::create_directories(dir_ / name);
    return dir_ / name;
  }
};

TEST_F(PlotStyleFolderTest, MissingTablesAreWrittenIntoTheStyleFolder) {
  EnsurePlotStyleTables();
  for (const char* name : {"黑白.ctb", "彩色.ctb", "蓝白.ctb"}) {
    ASSERT_TRUE(fs::exists(styles() / name)) << name;
    EXPECT_EQ(Count(ReadFile(styles() / name), "\n  lineweight=0\n"), 255u);
  }
  EXPECT_EQ(ReadFile(styles() / "彩色.ctb"), PlotStyleTableText(kColourTable, 6));
  EXPECT_EQ(settings::GlobalConfig().ctb_colour_a, 6);
  EXPECT_EQ(settings::GlobalConfig().ctb_colour_b, 6);
  EXPECT_EQ(settings::GlobalConfig().ctb_colour_c, 6);
  EXPECT_TRUE(host_.boxes.empty());
}

TEST_F(PlotStyleFolderTest, TablesSpreadOverTwoFoldersCountAsPresent) {
  const fs::path a = folder("a"), b = folder("b");
  WriteFile(a / "黑白.ctb", "mine");
  WriteFile(a / "彩色.ctb", "mine");
  WriteFile(b / "蓝白.ctb", "mine");
  settings::GlobalConfig().ctb_colour_a = 3;
  EnsurePlotStyleTables(a.string() + ";" + b.string());
  EXPECT_EQ(ReadFile(a / "黑白.ctb"), "mine");
  EXPECT_EQ(ReadFile(b / "蓝白.ctb"), "mine");
  EXPECT_FALSE(fs::exists(b / "黑白.ctb"));
  EXPECT_FALSE(fs::exists(a / "蓝白.ctb"));
  EXPECT_EQ(settings::GlobalConfig().ctb_colour_a, 3);
}

TEST_F(PlotStyleFolderTest, AllMissingLandInTheLastFolderTried) {
  const fs::path a = folder("a"), b = folder("b");
  EnsurePlotStyleTables(a.string() + ";" + b.string());
  for (const char* name : {"黑白.ctb", "彩色.ctb", "蓝白.ctb"}) {
    EXPECT_FALSE(fs::exists(a / name));
    EXPECT_TRUE(fs::exists(b / name));
  }
}

TEST_F(PlotStyleFolderTest, WalkStopsOnceAllThreeAreSeen) {
  const fs::path a = folder("a"), c = dir_ / "c";
  for (const char* name : {"黑白.ctb", "彩色.ctb", "蓝白.ctb"}) WriteFile(a / name, "mine");
  EnsurePlotStyleTables(a.string() + ";" + c.string());
  EXPECT_FALSE(fs::exists(c));  // never created: the walk ended in the first folder
  // Only the missing one is written, into the folder the walk ended in.
  fs::remove(a / "彩色.ctb");
  EnsurePlotStyleTables(a.string() + ";" + c.string());
  EXPECT_TRUE(fs::exists(c / "彩色.ctb"));
  EXPECT_FALSE(fs::exists(c / "黑白.ctb"));
}

TEST_F(PlotStyleFolderTest, UnwritableTableIsReportedAndTheOldOneStays) {
  const fs::path blocked = dir_ / "blocked";
  WriteFile(blocked, "a file, no folder");
  EXPECT_FALSE(WritePlotStyleTable((blocked / "黑白.ctb").string(), kBlackWhiteTable, 6));
  ASSERT_EQ(host_.boxes.size(), 1u);
  EXPECT_EQ(host_.boxes[0].first, "Tarvex打印样式文件写入");
  EXPECT_EQ(host_.boxes[0].second, "文件\n\n" + (blocked / "黑白.ctb").string() + "\n\n写入操作有误!");
}

// ---- the lineweight button ------------------------------------------------------------------------------

TEST_F(PlotStyleFolderTest, ChoosingALineweightRewritesTheTableAndStoresTheChoice) {
  EnsurePlotStyleTables();
  std::vector<std::string> list{" 黑白.ctb", " 彩色.ctb"};
  std::int32_t selected = 1;
  host_.choiceAnswer = 1;  // "0.05 mm"
  EXPECT_TRUE(EditPlotStyle(" 彩色.ctb", list, selected));
  ASSERT_EQ(host_.choices.size(), 1u);
  EXPECT_EQ(host_.choices[0].first, "修改<彩色.ctb>的打印线宽");
  EXPECT_EQ(host_.choices[0].second, 6);  // the stored choice is preselected
  EXPECT_EQ(settings::GlobalConfig().ctb_colour_b, 1);
  EXPECT_EQ(Count(ReadFile(styles() / "彩色.ctb"), "\n  lineweight=2\n"), 255u);
  EXPECT_EQ(Count(ReadFile(styles() / "黑白.ctb"), "\n  lineweight=0\n"), 255u);

  host_.choiceAnswer = 7;  // "0.30 mm"
  EXPECT_TRUE(EditPlotStyle("彩色.ctb", list, selected));
  EXPECT_EQ(host_.choices.back().second, 1);
  EXPECT_EQ(Count(ReadFile(styles() / "彩色.ctb"), "\n  lineweight=7\n"), 255u);
}

TEST_F(PlotStyleFolderTest, CancelLeavesTableAndChoiceAlone) {
  EnsurePlotStyleTables();
  const std::string before = ReadFile(styles() / "蓝白.ctb");
  std::vector<std::string> list;
  std::int32_t selected = 0;
  EXPECT_FALSE(EditPlotStyle("蓝白.ctb", list, selected, [](const Dlg_LineWeight&) { return std::nullopt; }));
  EXPECT_EQ(ReadFile(styles() / "蓝白.ctb"), before);
  EXPECT_EQ(settings::GlobalConfig().ctb_colour_c, 6);
}

TEST_F(PlotStyleFolderTest, UnknownTableDoesNothing) {
  std::vector<std::string> list{" a.ctb"};
  std::int32_t selected = 0;
  bool asked = false;
  EXPECT_FALSE(EditPlotStyle("黑白.ctb", list, selected, [&](const Dlg_LineWeight&) {
    asked = true;
    return std::optional<std::int32_t>(1);
  }));
  EXPECT_FALSE(asked);
  EXPECT_FALSE(fs::exists(styles() / "黑白.ctb"));
}

TEST_F(PlotStyleFolderTest, EditInHostStoresTheChoiceAndRefillsALongerList) {
  EnsurePlotStyleTables();
  WriteFile(styles() / "acad.ctb", "host table");
  const std::string before = ReadFile(styles() / "黑白.ctb");
  std::vector<std::string> list{" 黑白.ctb", " acad.ctb"};
  std::int32_t selected = 1;
  auto readStyles = [] { return std::vector<std::string>{"黑白.ctb", "彩色.ctb", "蓝白.ctb", "acad.ctb"}; };
  EXPECT_TRUE(EditPlotStyle("黑白.ctb", list, selected, [](const Dlg_LineWeight&) { return std::optional<std::int32_t>(0); },
                            readStyles));
  EXPECT_EQ(settings::GlobalConfig().ctb_colour_a, 0);
  EXPECT_EQ(ReadFile(styles() / "黑白.ctb"), before);
  EXPECT_EQ(list, (std::vector<std::string>{" 黑白.ctb", " 彩色.ctb", " 蓝白.ctb", " acad.ctb"}));
  EXPECT_EQ(selected, 3);  // still acad.ctb

  // A table of the host's own goes straight to the refill; a list as long stays as it is.
  list = {" x.ctb", " y.ctb", " z.ctb", " w.ctb"};
  selected = 2;
  EXPECT_TRUE(EditPlotStyle("acad.ctb", list, selected, {}, readStyles));
  EXPECT_EQ(list[0], " x.ctb");
  EXPECT_EQ(selected, 2);
  EXPECT_TRUE(host_.choices.empty());

  // A name that is gone selects the first row.
  list = {" gone.ctb"};
  selected = 0;
  EXPECT_TRUE(EditPlotStyle("acad.ctb", list, selected, {}, readStyles));
  EXPECT_EQ(list.size(), 4u);
  EXPECT_EQ(selected, 0);
}

TEST_F(PlotStyleFolderTest, FormOpensOnTheStoredChoice) {
  settings::GlobalConfig().ctb_colour_c = 9;
  Dlg_LineWeight form(kBlueWhiteTable);
  EXPECT_EQ(form.selected, 9);
  settings::GlobalConfig().ctb_colour_c = 40;  // out of the list: the objects' lineweights
  EXPECT_EQ(Dlg_LineWeight(kBlueWhiteTable).selected, 6);
}

}  // namespace
}  // namespace tv::paper
