// `tvplot plot` as users run it: the built program on drawings written to a temporary folder,
// checked for the files it writes, their pages and pixels, the summary, and bad input.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "../support/frame_drawings.h"
#include "../support/pdf_reading.h"
#include "../support/tvplot_test.h"
#include "examples/sample_drawing.h"

namespace tv::cli {
namespace {

namespace fs = std::filesystem;

using namespace test_support;

// A drawing of `frames` A3 frames at 1:100 side by side, each with a line across.
cad::Database Frames(int frames, double width = 42000, double height = 29700) {
  return test_support::FramesInARow(std::vector<std::pair<double, double>>(static_cast<std::size_t>(frames), {width, height}));
}

class PlotCommandTest : public TvplotTest {
 protected:
  static RunResult Plot(std::vector<std::string> args) {
    args.insert(args.begin(), "plot");
    return Run(args);
  }
};

TEST_F(PlotCommandTest, EverySheetOfTheSampleSetBecomesAPdfOnItsPaper) {
  const std::string sample = Write("sample.dxf", samples::BuildSampleDrawing());
  const std::string original = ReadFile(sample);
  const fs::path out = dir_ / "out";
  const RunResult r = Plot({sample, "--out", out.string()});
  ASSERT_EQ(r.exitCode, 0) << r.err << r.out;

  std::vector<std::string> expected;
  for (int i = 1; i <= 17; ++i) expected.push_back("sample" + std::string(i < 10 ? "0" : "") + std::to_string(i) + ".pdf");
  EXPECT_EQ(FilesIn(out), expected) << "one file per sheet, nothing else left in the folder";
  EXPECT_TRUE(Has(r.out, (out / "sample17.pdf").string())) << r.out;
  EXPECT_TRUE(Has(r.out, "共 17 张图纸，已输出 17 个文件")) << r.out;

  // Sheet 1 is an A0 across, sheet 4 a lengthened A2 upright, sheet 15 the A4 of a layout.
  const auto a0 = PageMm(out / "sample01.pdf");
  EXPECT_NEAR(a0.first, 1189, 0.01);
  EXPECT_NEAR(a0.second, 841, 0.01);
  const auto a2 = PageMm(out / "sample04.pdf");
  EXPECT_NEAR(a2.first, 420, 0.01);
  EXPECT_NEAR(a2.second, 891, 0.01);
  const auto a4 = PageMm(out / "sample15.pdf");
  EXPECT_NEAR(a4.first, 210, 0.01);
  EXPECT_NEAR(a4.second, 297, 0.01);

  EXPECT_EQ(ReadFile(sample), original) << "the drawing is never written";
  EXPECT_EQ(FilesIn(dir_.path()), (std::vector<std::string>{"out", "sample.dxf"}));
}

TEST_F(PlotCommandTest, RasterAndOtherFormatsTakeTheMediumOfTheirDevice) {
  const std::string plan = Write("plan.dxf", Frames(2));
  // A PNG of A3 with 5 mm added each way: (420 + 10) x (297 + 10) units of the medium, enlarged
  // twice by the default image slider.
  const fs::path png = dir_ / "png";
  RunResult r = Plot({plan, "--out", png.string(), "--format", "png", "--margin", "5", "--style", "彩色"});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  ASSERT_EQ(FilesIn(png), (std::vector<std::string>{"plan01.png", "plan02.png"}));
  const std::string bytes = ReadFile(png / "plan01.png");
  ASSERT_GT(bytes.size(), 24u);
  const auto be32 = [&](std::size_t at) {
    return (static_cast<unsigned char>(bytes[at]) << 24) | (static_cast<unsigned char>(bytes[at + 1]) << 16) |
           (static_cast<unsigned char>(bytes[at + 2]) << 8) | static_cast<unsigned char>(bytes[at + 3]);
  };
  EXPECT_EQ(be32(16), 860u);
  EXPECT_EQ(be32(20), 614u);

  for (const auto& [format, magic] : std::vector<std::pair<std::string, std::string>>{
           {"jpg", "\xFF\xD8\xFF"}, {"eps", "%!PS-Adobe-3.0 EPSF"}, {"plt", "\x1B%-1B"}}) {
    SCOPED_TRACE(format);
    const fs::path folder = dir_ / format;
    r = Plot({plan, "--out", folder.string(), "--format", format});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    ASSERT_EQ(FilesIn(folder).size(), 2u);
    EXPECT_EQ(ReadFile(folder / ("plan01." + format)).rfind(magic, 0), 0u);
  }

  // The path mode puts the files in a folder of the format beside the drawing.
  r = Plot({plan, "--path-mode", "1", "--format", "eps"});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(FilesIn(dir_ / "EPS"), (std::vector<std::string>{"plan01.eps", "plan02.eps"}));
}

TEST_F(PlotCommandTest, BadInputGetsAClearMessageAndExitCodeAndNoFile) {
  const std::string plan = Write("plan.dxf", Frames(1)), out = Path("out").string();
  WriteText("file", "x");
  struct Case {
    const char* what;
    std::vector<std::string> args;
    int exitCode;
    const char* says;
  };
  const Case cases[] = {
      {"a style table that is not there", {plan, "--out", out, "--style", Path("none.ctb").string()}, 1, "none.ctb 不存在"},
      {"a drawing that can't be read",
       {WriteText("broken.dxf", "0\nSECTION\n2\nENTITIES\n0\nLINE\n10\nabc\n"), "--out", out}, 2, ""},
      {"a drawing without a sheet", {Write("empty.dxf", cad::Database::createDefault()), "--out", out}, 4, "未找到图框"},
      {"an output folder a file stands in the way of", {plan, "--out", Path("file/out").string()}, 5, "无法创建"},
      // At 1:1 a frame of no standard proportion needs 90 m of paper: the ceiling stops the run.
      {"paper beyond the ceiling", {Write("strip.dxf", Frames(1, 90000, 10000)), "--out", out, "--scale", "1"}, 5, "5080"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const RunResult r = Plot(c.args);
    EXPECT_EQ(r.exitCode, c.exitCode) << r.err;
    EXPECT_TRUE(Has(r.err, c.says)) << r.err;
    EXPECT_FALSE(r.err.empty());
    EXPECT_TRUE(FilesIn(out).empty());
  }
}

}  // namespace
}  // namespace tv::cli
