// DWF output as users ask for it: `tvplot plot --format dwf` and the review list's "F DWF"; one
// DWF (DWFx package) per sheet on the sheet's paper in the list's background colour, and with a
// merge one package of every sheet.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "../support/frame_drawings.h"
#include "../support/tvplot_test.h"
#include "../support/xps_reading.h"

namespace tv::cli {
namespace {

namespace fs = std::filesystem;

using namespace test_support;

class DwfCommandTest : public TvplotTest {
 protected:
  RunResult RunAtHome(std::vector<std::string> args) const { return Run(args, {}, home_.string()); }
  // An A3 across, an A4 upright and an A2 across, at 1:100.
  const std::string plan_ = Write("plan.dxf", FramesInARow({{42000, 29700}, {21000, 29700}, {59400, 42000}}));
  const fs::path home_ = Path("home");
  const std::vector<std::pair<double, double>> papers_{{420, 297}, {210, 297}, {594, 420}};

  // The generic batch over model space with `atList` answered at the review list, then Esc for the
  // list shown again after the run.
  RunResult Generic(std::vector<std::string> atList) const {
    std::vector<std::string> args{"run", plan_, "TV_BatchPlot_2", "--answer", "", "--answer", "1"};
    atList.push_back("^C");
    for (const std::string& a : atList) args.insert(args.end(), {"--answer", a});
    return RunAtHome(args);
  }
};

TEST_F(DwfCommandTest, EverySheetBecomesAPackageOnItsPaper) {
  const std::string original = ReadFile(plan_);
  const fs::path out = Path("out");
  const RunResult r = RunAtHome({"plot", plan_, "--format", "dwf", "--out", out.string()});
  ASSERT_EQ(r.exitCode, 0) << r.err << r.out;
  EXPECT_EQ(FilesIn(out), (std::vector<std::string>{"plan01.dwf", "plan02.dwf", "plan03.dwf"}));
  EXPECT_TRUE(Has(r.out, "共 3 张图纸，已输出 3 个文件")) << r.out;
  for (std::size_t i = 0; i < 3; ++i) {
    const std::string file = (out / ("plan0" + std::to_string(i + 1) + ".dwf")).string();
    const auto pages = XpsPagesMm(file);
    ASSERT_EQ(pages.size(), 1u) << file;
    EXPECT_NEAR(pages[0].first, papers_[i].first, 0.01) << file;
    EXPECT_NEAR(pages[0].second, papers_[i].second, 0.01) << file;
    EXPECT_NE(ZipEntry(file, "Documents/1/Pages/1.fpage").find("<Path Data="), std::string::npos) << "the frame is drawn";
  }
  EXPECT_EQ(ReadFile(plan_), original) << "the drawing is never written";
}

TEST_F(DwfCommandTest, MergeJoinsTheSheetsIntoOnePackageInListOrder) {
  const fs::path target = Path("set") / "all";  // the extension is added
  const RunResult r = RunAtHome({"plot", plan_, "--format", "dwf", "--merge", target.string()});
  ASSERT_EQ(r.exitCode, 0) << r.err << r.out;
  const fs::path written = Path("set") / "all.dwf";
  EXPECT_TRUE(Has(r.out, "共 3 张图纸，已合并 3 张到 " + written.string())) << r.out;
  EXPECT_EQ(FilesIn(written.parent_path()), (std::vector<std::string>{"all.dwf"})) << "nothing beside the merged file";
  const auto pages = XpsPagesMm(written.string());
  ASSERT_EQ(pages.size(), 3u);
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_NEAR(pages[i].first, papers_[i].first, 0.01) << i;
    EXPECT_NEAR(pages[i].second, papers_[i].second, 0.01) << i;
  }
}

TEST_F(DwfCommandTest, ReviewListSetsTheBackgroundAndMergesDwfToo) {
  const RunResult r = Generic({"F DWF", "背景色 10,20,30", ""});
  ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
  const fs::path folder = Path("DWF");  // the format's folder beside the drawing
  ASSERT_EQ(FilesIn(folder), (std::vector<std::string>{"plan01.dwf", "plan02.dwf", "plan03.dwf"})) << r.out;
  // The page is painted in the list's colour before anything else.
  const std::string page = ZipEntry((folder / "plan02.dwf").string(), "Documents/1/Pages/1.fpage");
  const std::size_t first = page.find("<Path ");
  ASSERT_NE(first, std::string::npos);
  const std::string firstPath = page.substr(first, page.find("/>", first) - first);
  EXPECT_TRUE(Has(firstPath, "Fill=\"#0A141E\"")) << firstPath;

  const std::string merged = Path("set.dwf").string();
  const RunResult m = Generic({"F DWF", "合并PDF 是", "", merged});
  ASSERT_EQ(m.exitCode, 0) << m.out << m.err;
  EXPECT_TRUE(Has(m.out, "合并后的DWF文件保存为")) << m.out;
  EXPECT_EQ(XpsPagesMm(merged).size(), 3u) << m.out;
}

}  // namespace
}  // namespace tv::cli
