// Several drawings in one `tvplot plot` run: files and folders on the command line, a drawing that
// can't be read among good ones, and one merged PDF across drawings.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "../support/frame_drawings.h"
#include "../support/pdf_reading.h"
#include "../support/tvplot_test.h"
#include "examples/sample_drawing.h"
#include "examples/sample_library.h"
#include "titleblock/tk_library.h"

namespace tv::cli {
namespace {

namespace fs = std::filesystem;

using namespace test_support;

class MultiDrawingTest : public TvplotTest {
 protected:
  void SetUp() override {
    TvplotTest::SetUp();
    plan_ = Write("plan.dxf", FramesInARow({{42000, 29700}, {21000, 29700}, {59400, 42000}}));
    Write("set/b.dxf", FramesInARow({{42000, 29700}, {42000, 29700}}));
    Write("set/a.dxf", FramesInARow({{21000, 29700}}));
    WriteText("set/notes.txt", "not a drawing");
    fs::create_directories(Path("set/sub"));
    WriteText("set/sub/c.dxf", "not reached: subfolders are not walked");
    broken_ = WriteText("broken.dxf", "0\nSECTION\n2\nENTITIES\n0\nLINE\n");
    fs::create_directories(Path("empty"));
  }
  RunResult RunAtHome(std::vector<std::string> args) const { return Run(args, {}, Path("home").string()); }

  std::string plan_, broken_;
};

TEST_F(MultiDrawingTest, EachDrawingInTurnWithProgressAndSummaries) {
  struct Case {
    std::string label;
    std::vector<std::string> words;  // relative to the test folder
    std::vector<std::string> files;  // what the output folder holds afterwards
    std::vector<std::string> order;  // the drawings as progress names them, in order
    int exitCode;
    std::string summary;
    std::size_t read;  // drawings that could be read, each with a summary of its own
  };
  const std::vector<Case> cases = {
      {"two drawings", {"plan.dxf", "set/a.dxf"}, {"a01.pdf", "plan01.pdf", "plan02.pdf", "plan03.pdf"},
       {"[1/2] ", "plan.dxf", "[2/2] ", "a.dxf"}, 0, "共 2 个图纸文件，2 个全部输出，0 个未全部输出", 2},
      {"a folder by name", {"set"}, {"a01.pdf", "b01.pdf", "b02.pdf"}, {"[1/2] ", "a.dxf", "[2/2] ", "b.dxf"}, 0,
       "共 2 个图纸文件，2 个全部输出，0 个未全部输出", 2},
      {"an unreadable drawing among good ones", {"plan.dxf", "broken.dxf", "set/a.dxf"},
       {"a01.pdf", "plan01.pdf", "plan02.pdf", "plan03.pdf"}, {"[1/3] ", "[2/3] ", "broken.dxf", "[3/3] ", "a.dxf"}, 5,
       "共 3 个图纸文件，2 个全部输出，1 个未全部输出", 2},
      {"a missing drawing and a folder without drawings", {"gone.dxf", "empty", "set/a.dxf"}, {"a01.pdf"},
       {"empty", "[1/2] ", "gone.dxf", "[2/2] ", "a.dxf"}, 5, "共 2 个图纸文件，1 个全部输出，1 个未全部输出", 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    const fs::path out = Path("out-" + std::to_string(&c - cases.data()));
    std::vector<std::string> args = {"plot"};
    for (const std::string& w : c.words) args.push_back(Path(w).string());
    args.insert(args.end(), {"--out", out.string()});
    const RunResult r = RunAtHome(args);
    EXPECT_EQ(r.exitCode, c.exitCode) << r.err << r.out;
    EXPECT_EQ(FilesIn(out), c.files) << r.err;
    std::size_t at = 0;
    for (const std::string& part : c.order) {
      const std::size_t found = r.err.find(part, at);
      ASSERT_NE(found, std::string::npos) << part << " after " << at << " in\n" << r.err;
      at = found + part.size();
    }
    EXPECT_TRUE(Has(r.out, c.summary)) << r.out;
    // Each drawing's own summary stands before the run's.
    EXPECT_EQ(Count(r.out, "张图纸，已输出"), c.read) << r.out;
  }
}

TEST_F(MultiDrawingTest, MergeJoinsEveryDrawingsSheetsInOrderWithTheirBookmarks) {
  const fs::path target = Path("merged") / "all.pdf";
  const RunResult r = RunAtHome({"plot", plan_, Path("set").string(), broken_, "--merge", target.string()});
  EXPECT_EQ(r.exitCode, 5) << r.err << r.out;
  EXPECT_TRUE(Has(r.out, "已合并到 " + target.string())) << r.out;
  EXPECT_TRUE(Has(r.err, "broken.dxf")) << r.err;
  EXPECT_EQ(FilesIn(target.parent_path()), (std::vector<std::string>{"all.pdf"})) << "nothing of the run is left beside it";

  const PdfFacts merged = ReadPdfFacts(target.string());
  ASSERT_TRUE(merged.read);
  ASSERT_EQ(merged.pages.size(), 6u);
  // Every sheet by its file name, a drawing's only sheet too.
  EXPECT_EQ(merged.outline, (std::vector<std::string>{"plan01", "plan02", "plan03", "a01", "b01", "b02"}));
  EXPECT_EQ(merged.outlinePages, (std::vector<int>{0, 1, 2, 3, 4, 5}));
  EXPECT_NEAR(merged.pages[1].widthMm, 210, 0.01);
  EXPECT_NEAR(merged.pages[3].widthMm, 210, 0.01) << "a's upright A4 follows plan's sheets";
  EXPECT_NEAR(merged.pages[4].widthMm, 420, 0.01);

  // All good: the run succeeds.
  const RunResult ok = RunAtHome({"plot", plan_, Path("set/a.dxf").string(), "--merge", target.string()});
  EXPECT_EQ(ok.exitCode, 0) << ok.err << ok.out;
  EXPECT_EQ(ReadPdfFacts(target.string()).pages.size(), 4u);
}

TEST_F(MultiDrawingTest, OptionsWrongForEveryDrawingStopAtOnce) {
  const RunResult r = RunAtHome({"plot", plan_, Path("set").string(), "--format", "bmp"});
  EXPECT_EQ(r.exitCode, 1);
  EXPECT_EQ(Count(r.err, "bmp"), 1u) << r.err;
  EXPECT_FALSE(Has(r.err, "[2/")) << r.err;
}

TEST_F(MultiDrawingTest, TitleBlockPlotTakesSeveralDrawingsIntoOneMerge) {
  const std::string tk = Path("titleblocks.tk").string();
  ASSERT_TRUE(titleblock::SaveTkFileTo(samples::BuildTitleBlockLibrary(), tk, false));
  Write("tb/1.dxf", samples::BuildTitleBlockDrawing());
  Write("tb/2.dxf", samples::BuildTitleBlockDrawing());
  const fs::path target = Path("tb-out") / "set.pdf";
  const RunResult r =
      RunAtHome({"titleblock", Path("tb").string(), "--tk", tk, "--plot", "--merge", target.string()});
  ASSERT_EQ(r.exitCode, 0) << r.err << r.out;
  EXPECT_TRUE(Has(r.err, "[2/2] ")) << r.err;
  const PdfFacts merged = ReadPdfFacts(target.string());
  ASSERT_TRUE(merged.read);
  ASSERT_EQ(merged.pages.size(), 8u);
  ASSERT_EQ(merged.outline.size(), 8u);
  for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(merged.outline[i], merged.outline[i + 4]) << "the same set twice";
  EXPECT_TRUE(Has(merged.outline.front() + merged.outline[1], "施-")) << merged.outline.front();
}

}  // namespace
}  // namespace tv::cli
