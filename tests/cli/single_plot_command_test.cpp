// `tvplot plot DRAWING --window X1,Y1 X2,Y2`: one rectangle, one file, the paper and scale found
// from the rectangle; bad windows refused before anything is read or written.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "../support/frame_drawings.h"
#include "../support/pdf_reading.h"
#include "../support/tvplot_test.h"

namespace tv::cli {
namespace {

namespace fs = std::filesystem;

using namespace test_support;

class SinglePlotCommandTest : public TvplotTest {
 protected:
  // An A3 frame at 1:100 lying, then one standing, 5000 apart.
  std::string Plan() const { return Write("plan.dxf", FramesInARow({{42000, 29700}, {29700, 42000}})); }
  static RunResult Plot(std::vector<std::string> args) {
    args.insert(args.begin(), "plot");
    return Run(args);
  }
};

TEST_F(SinglePlotCommandTest, AWindowGivesOneFileOnThePaperItsSizeAndScaleCallFor) {
  struct Case {
    const char* name;
    std::vector<std::string> window;  // the words after --window
    std::vector<std::string> extra;
    double width, height;  // page, mm
  };
  const Case cases[] = {
      {"around the lying frame", {"0,0", "42000,29700"}, {}, 420, 297},
      {"corners in either order, one word", {"42000,29700 0,0"}, {}, 420, 297},
      {"the standing frame turns the medium", {"47000,0", "76700,42000"}, {}, 297, 420},
      {"a fixed scale picks a larger paper", {"0,0", "42000,29700"}, {"--scale", "50"}, 841, 594},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string plan = Plan();
    const std::string original = ReadFile(plan);
    const fs::path out = dir_ / (std::string("out-") + std::to_string(&c - cases));
    std::vector<std::string> args{plan, "--out", out.string(), "--window"};
    args.insert(args.end(), c.window.begin(), c.window.end());
    args.insert(args.end(), c.extra.begin(), c.extra.end());
    const RunResult r = Plot(args);
    ASSERT_EQ(r.exitCode, 0) << r.err << r.out;
    ASSERT_EQ(FilesIn(out), std::vector<std::string>{"plan.pdf"}) << "one file, nothing else in the folder";
    EXPECT_TRUE(Has(r.out, (out / "plan.pdf").string())) << r.out;
    EXPECT_TRUE(Has(r.out, "共 1 张图纸，已输出 1 个文件")) << r.out;
    const auto page = PageMm(out / "plan.pdf");
    EXPECT_NEAR(page.first, c.width, 0.5);
    EXPECT_NEAR(page.second, c.height, 0.5);
    EXPECT_EQ(ReadFile(plan), original) << "the drawing is never written";
  }
}

TEST_F(SinglePlotCommandTest, OtherFormatsGiveOneFileOfTheirKind) {
  const std::string plan = Plan();
  for (const std::string format : {"png", "dwg"}) {
    SCOPED_TRACE(format);
    const fs::path out = dir_ / format;
    const RunResult r = Plot({plan, "--out", out.string(), "--format", format, "--window", "0,0", "42000,29700"});
    ASSERT_EQ(r.exitCode, 0) << r.err << r.out;
    const std::vector<std::string> files = FilesIn(out);
    ASSERT_EQ(files.size(), 1u);
    EXPECT_EQ(files[0], format == "png" ? "plan.png" : "plan_单页.dxf");
  }
}

TEST_F(SinglePlotCommandTest, AnEmptyWindowPlotsNothing) {
  const std::string plan = Plan();
  const fs::path out = dir_ / "out";
  const RunResult r = Plot({plan, "--out", out.string(), "--window", "200000,200000", "242000,229700"});
  EXPECT_EQ(r.exitCode, 4) << r.err << r.out;
  EXPECT_TRUE(Has(r.err, "打印窗口内没有图形")) << r.err;
  EXPECT_TRUE(FilesIn(out).empty());
}

TEST_F(SinglePlotCommandTest, BadWindowsAreRefusedWithAReason) {
  const std::string plan = Plan();
  const std::string original = ReadFile(plan);
  struct Case {
    std::vector<std::string> window;
    const char* message;
  };
  const Case cases[] = {
      {{"1,2"}, "无效"},
      {{"a,b", "3,4"}, "无效"},
      {{"1;2 3,4"}, "无效"},
      {{"0,0 5"}, "无效"},
      {{"0,0 1e999,4"}, "无效"},
      {{"0,0", "0,5"}, "宽度或高度为 0"},
      {{""}, "无效"},
  };
  const fs::path out = dir_ / "out";
  for (const Case& c : cases) {
    std::vector<std::string> args{plan, "--out", out.string(), "--window"};
    args.insert(args.end(), c.window.begin(), c.window.end());
    SCOPED_TRACE(args.back());
    const RunResult r = Plot(args);
    EXPECT_EQ(r.exitCode, 1) << r.err;
    EXPECT_TRUE(Has(r.err, "tvplot plot: ")) << r.err;
    EXPECT_TRUE(Has(r.err, c.message)) << r.err;
    EXPECT_FALSE(fs::exists(out));
  }
  const RunResult merged = Plot({plan, "--window", "0,0", "1,1", "--merge", (dir_ / "all.pdf").string()});
  EXPECT_EQ(merged.exitCode, 1);
  EXPECT_TRUE(Has(merged.err, "--window 与 --merge 只能选一个")) << merged.err;
  EXPECT_EQ(ReadFile(plan), original);
}

// The command itself, answered as a user at the command line would: corners, the settings form
// and the file; the form's choices are kept in the drawing and only the form writes them.
TEST_F(SinglePlotCommandTest, TheCommandPlotsPickedCornersAndTheFormKeepsItsChoicesInTheDrawing) {
  const std::string plan = Plan();
  const std::string original = ReadFile(plan);
  const fs::path out = dir_ / "picked.pdf";
  const fs::path plotted = dir_ / "plotted.dxf";
  // "自主选择文件存储" on (7), then two corners and the file.
  RunResult r = Run({"run", plan, "TV_BatchPlot_1", "--answer", "S", "--answer", "7", "--answer", "", "--answer",
                     "0,0", "--answer", "42000,29700", "--answer", out.string(), "--answer", "^C", "--save-as",
                     plotted.string()});
  ASSERT_EQ(r.exitCode, 0) << r.err << r.out;
  ASSERT_TRUE(fs::is_regular_file(out)) << r.out;
  const auto page = PageMm(out);
  EXPECT_NEAR(page.first, 420, 0.5);
  EXPECT_NEAR(page.second, 297, 0.5);
  EXPECT_TRUE(Has(ReadFile(plotted), "TPLOT_SETTING2")) << "the confirmed form keeps its choices";
  EXPECT_EQ(ReadFile(plan), original) << "the drawing is never written";

  // Tab selects entities instead: their joint extents are the rectangle, here the standing frame.
  const fs::path selected = dir_ / "selected.pdf";
  r = Run({"run", plan, "TV_BatchPlot_1", "--answer", "S", "--answer", "7", "--answer", "", "--answer", "Tab",
           "--answer", "W 46000,-1000 77700,43000", "--answer", selected.string()});
  ASSERT_EQ(r.exitCode, 0) << r.err << r.out;
  const auto upright = PageMm(selected);
  EXPECT_NEAR(upright.first, 297, 0.5);
  EXPECT_NEAR(upright.second, 420, 0.5);

  // A plot without the form leaves no record.
  const fs::path bare = dir_ / "bare.dxf";
  r = Run({"run", plan, "TV_BatchPlot_1", "--answer", "0,0", "--answer", "42000,29700", "--answer", "^C",
           "--save-as", bare.string()});
  ASSERT_EQ(r.exitCode, 0) << r.err << r.out;
  EXPECT_FALSE(Has(ReadFile(bare), "TPLOT_SETTING2"));

  // The margin set in the form comes back when the form opens on the saved drawing; a cancelled
  // form changes nothing.
  const fs::path margined = dir_ / "margined.dxf";
  r = Run({"run", plan, "TV_BatchPlot_1", "--answer", "S", "--answer", "3", "--answer", "7", "--answer", "",
           "--answer", "^C", "--save-as", margined.string()});
  ASSERT_EQ(r.exitCode, 0) << r.err << r.out;
  r = Run({"run", margined.string(), "TV_BatchPlot_1", "--answer", "S", "--answer", "^C", "--answer", "^C"});
  EXPECT_TRUE(Has(r.out, "周边留白：7")) << r.out;
}

}  // namespace
}  // namespace tv::cli
