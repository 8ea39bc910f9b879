// `tvplot plot --merge` and `tvplot titleblock --plot --merge` as users run them: one PDF of the
// whole set, read back through qpdf for its pages, their order and sizes, and its bookmarks; the
// exchange files the merging programs read; and what happens when the programs are missing.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "../support/frame_drawings.h"
#include "../support/pdf_reading.h"
#include "../support/tvplot_test.h"
#include "examples/sample_drawing.h"
#include "examples/sample_library.h"
#include "settings/config.h"
#include "titleblock/tk_library.h"

namespace tv::cli {
namespace {

namespace fs = std::filesystem;

using namespace test_support;

// Lines of a text file, split at line feeds only.
std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::size_t start = 0;
  for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', start)) {
    lines.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  if (start < text.size()) lines.push_back(text.substr(start));
  return lines;
}

class MergeCommandTest : public TvplotTest {
 protected:
  // `tvplot args…` with the home of the test, whose data folder holds the exchange files.
  RunResult RunAtHome(std::vector<std::string> args) const { return Run(args, {}, home_.string()); }
  fs::path DataFolder() const { return home_ / ".local/share/Tarvex"; }

  // An A3 across, an A4 upright and an A2 across, at 1:100.
  const std::string plan_ = Write("plan.dxf", FramesInARow({{42000, 29700}, {21000, 29700}, {59400, 42000}}));
  const fs::path home_ = Path("home");
};

TEST_F(MergeCommandTest, EverySheetIsOnePageInListOrderWithItsSizeAndBookmark) {
  const std::string original = ReadFile(plan_);
  const fs::path separate = Path("separate");
  const RunResult single = RunAtHome({"plot", plan_, "--out", separate.string()});
  ASSERT_EQ(single.exitCode, 0) << single.err;

  const fs::path target = Path("out") / "set.pdf";
  const RunResult r = RunAtHome({"plot", plan_, "--merge", target.string()});
  ASSERT_EQ(r.exitCode, 0) << r.err << r.out;
  EXPECT_TRUE(Has(r.out, "共 3 张图纸，已合并 3 张到 " + target.string())) << r.out;
  EXPECT_EQ(FilesIn(target.parent_path()), (std::vector<std::string>{"set.pdf"})) << "nothing beside the merged file";

  const PdfFacts merged = ReadPdfFacts(target.string());
  ASSERT_TRUE(merged.read);
  ASSERT_EQ(merged.pages.size(), 3u);
  EXPECT_EQ(merged.outline, (std::vector<std::string>{"plan01", "plan02", "plan03"}));
  EXPECT_EQ(merged.outlinePages, (std::vector<int>{0, 1, 2}));
  for (std::size_t i = 0; i < 3; ++i) {
    const PdfFacts part = ReadPdfFacts((separate / ("plan0" + std::to_string(i + 1) + ".pdf")).string());
    ASSERT_EQ(part.pages.size(), 1u);
    EXPECT_NEAR(merged.pages[i].widthMm, part.pages[0].widthMm, 0.01) << i;
    EXPECT_NEAR(merged.pages[i].heightMm, part.pages[0].heightMm, 0.01) << i;
    EXPECT_EQ(merged.pages[i].rotate, part.pages[0].rotate) << i;
  }
  EXPECT_NEAR(merged.pages[1].widthMm, 210, 0.01) << "the upright A4 stays upright";
  EXPECT_NEAR(merged.pages[2].widthMm, 594, 0.01);

  // The list the first two programs read: UTF-8 with a byte order mark, the target, the count, and
  // per sheet its numbered PDF and its name; plot2.tm and plot3.tm alike.
  const std::string list = ReadFile(DataFolder() / "plot3.tm");
  EXPECT_EQ(ReadFile(DataFolder() / "plot2.tm"), list);
  ASSERT_EQ(list.rfind("\xEF\xBB\xBF", 0), 0u);
  const std::vector<std::string> lines = LinesOf(list.substr(3));
  ASSERT_EQ(lines.size(), 8u) << list;
  EXPECT_EQ(lines[0], target.string());
  EXPECT_EQ(lines[1], "3");
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(fs::path(lines[2 + 2 * i]).filename(), std::to_string(i + 1) + ".pdf");
    EXPECT_EQ(lines[3 + 2 * i], "plan0" + std::to_string(i + 1));
    EXPECT_FALSE(fs::exists(lines[2 + 2 * i])) << "the numbered files are cleared after the merge";
  }
  EXPECT_EQ(list.find('\r'), std::string::npos);
  // The run's working folder went with its numbered files.
  EXPECT_EQ(fs::path(lines[2]).parent_path().parent_path(), home_ / "Tarvex_Temp");
  EXPECT_FALSE(fs::exists(fs::path(lines[2]).parent_path()));
  EXPECT_EQ(ReadFile(plan_), original) << "the drawing is never written";
}

TEST_F(MergeCommandTest, PagesTurnedByTheOrientationSettingStayTurnedInTheMergedFile) {
  // "全部转为竖放" with the second direction: the sheets lying across get "/Rotate 270".
  settings::Config config;
  config.pdf_orientation = 2;
  config.pdf_rotate_side = 1;
  fs::create_directories(DataFolder());
  ASSERT_TRUE(settings::SaveConfigTo(config, (DataFolder() / "BPlot_Cfg.cfg").string(), false));
  const fs::path target = Path("turned.pdf");
  const RunResult r = RunAtHome({"plot", plan_, "--merge", target.string()});
  ASSERT_EQ(r.exitCode, 0) << r.err << r.out;
  const PdfFacts merged = ReadPdfFacts(target.string());
  ASSERT_EQ(merged.pages.size(), 3u);
  EXPECT_EQ(merged.pages[0].rotate, 270);
  EXPECT_EQ(merged.pages[1].rotate, 0) << "the upright A4 already stands";
  EXPECT_EQ(merged.pages[2].rotate, 270);
  EXPECT_NEAR(merged.pages[0].widthMm, 420, 0.01) << "the paper itself is kept";
}

TEST_F(MergeCommandTest, OneSheetIsCopiedWithoutAList) {
  const std::string one = Write("one.dxf", FramesInARow({{42000, 29700}}));
  const fs::path target = Path("one.pdf");
  const RunResult r = RunAtHome({"plot", one, "--merge", target.string()});
  ASSERT_EQ(r.exitCode, 0) << r.err << r.out;
  const PdfFacts merged = ReadPdfFacts(target.string());
  ASSERT_TRUE(merged.read);
  EXPECT_EQ(merged.pages.size(), 1u);
  EXPECT_FALSE(fs::exists(DataFolder() / "plot3.tm"));
  EXPECT_FALSE(fs::exists(DataFolder() / "plot2.tm"));
}

TEST_F(MergeCommandTest, TitleBlockSheetsAreBookmarkedByTheirFileNames) {
  const std::string drawing = Write("titleblocks.dxf", samples::BuildTitleBlockDrawing());
  const std::string tk = Path("titleblocks.tk").string();
  ASSERT_TRUE(titleblock::SaveTkFileTo(samples::BuildTitleBlockLibrary(), tk, false));
  const fs::path target = Path("merged") / "titles.pdf";
  const RunResult r = RunAtHome({"titleblock", drawing, "--tk", tk, "--plot", "--merge", target.string()});
  ASSERT_EQ(r.exitCode, 0) << r.err << r.out;
  const PdfFacts merged = ReadPdfFacts(target.string());
  ASSERT_TRUE(merged.read);
  ASSERT_EQ(merged.pages.size(), 4u);
  const std::vector<std::string> names{"结施-01_A_基础平面图", "结施-02_A_一层梁配筋图",
                                       "建施-03_一层平面图+（局部）_2026.11.25", "建施-04_楼梯详图_2026.11.25"};
  std::vector<std::string> sorted = merged.outline;
  EXPECT_EQ(merged.outlinePages, (std::vector<int>{0, 1, 2, 3}));
  std::sort(sorted.begin(), sorted.end());
  std::vector<std::string> expected = names;
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(sorted, expected) << "one bookmark per sheet, the line marks turned into the separator";
  // The list names the sheets in the order of the pages.
  const std::vector<std::string> lines = LinesOf(ReadFile(DataFolder() / "plot3.tm").substr(3));
  ASSERT_EQ(lines.size(), 10u);
  for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(lines[3 + 2 * i], merged.outline[i]);
  // The title text stays text: every page's fonts map back to characters.
  for (const PdfPageFacts& page : merged.pages) {
    EXPECT_GT(page.fonts, 0);
    EXPECT_EQ(page.fontsWithText, page.fonts);
  }
}

// The merging programs as an installation may hold them: a copy of the built ones in a folder the
// run takes as its installation.
class MergeToolsTest : public MergeCommandTest {
 protected:
  RunResult RunInstalled(const std::vector<std::string>& tools, std::vector<std::string> args) {
    const fs::path install = Path("install");
    fs::create_directories(install);
    const fs::path built = fs::path(TV_TVPLOT_PATH).parent_path();
    fs::copy(built / "drivers", install / "drivers", fs::copy_options::recursive);  // the plot drivers
    for (const std::string& tool : tools) fs::copy_file(built / tool, install / tool);
    fs::create_directories(home_);
    const std::string script = "TARVEX_HOME=" + install.string();
    args.insert(args.begin(), {"-u", "TARVEX_HOME", script, TV_TVPLOT_PATH});
    return RunProgram("/usr/bin/env", args, {}, home_.string());
  }
};

TEST_F(MergeToolsTest, TheMarkerProgramMergesWhenTheListProgramsAreMissing) {
  const fs::path target = Path("set.pdf");
  const RunResult r = RunInstalled({"Tpr4"}, {"plot", plan_, "--merge", target.string()});
  ASSERT_EQ(r.exitCode, 0) << r.err << r.out;
  EXPECT_TRUE(Has(r.err, "文件 < " + (Path("install") / "Tpr2").string() + " > 缺失!")) << r.err;
  EXPECT_TRUE(Has(r.err, "Tpr3 > 缺失!")) << r.err;
  const PdfFacts merged = ReadPdfFacts(target.string());
  ASSERT_TRUE(merged.read);
  EXPECT_EQ(merged.outline, (std::vector<std::string>{"plan01", "plan02", "plan03"}));
  // The markers: the count and each name with its place, all empty.
  std::vector<std::string> markers = FilesIn(DataFolder() / "Tarvex_Temp");
  std::erase_if(markers, [](const std::string& m) { return m.rfind("run-", 0) == 0; });
  EXPECT_EQ(markers, (std::vector<std::string>{"3.tmpnum", "plan01.tmp1", "plan02.tmp2", "plan03.tmp3"}));
  for (const std::string& m : markers) EXPECT_EQ(fs::file_size(DataFolder() / "Tarvex_Temp" / m), 0u);
}

TEST_F(MergeToolsTest, NoProgramMeansAnErrorAndNoTarget) {
  const fs::path target = Path("set.pdf");
  const RunResult r = RunInstalled({}, {"plot", plan_, "--merge", target.string()});
  EXPECT_EQ(r.exitCode, 5) << r.err << r.out;
  EXPECT_TRUE(Has(r.err, "调用PDF合并命令出错 !")) << r.err;
  EXPECT_TRUE(Has(r.err, "未能合并为 " + target.string())) << r.err;
  EXPECT_FALSE(fs::exists(target));
}

TEST_F(MergeCommandTest, MergeOptionsAreChecked) {
  struct Case {
    std::vector<std::string> args;
    const char* says;
  };
  const Case cases[] = {
      {{"plot", plan_, "--merge", Path("x.pdf").string(), "--format", "png"}, "--merge 只用于 PDF 或 DWF 格式"},
      {{"plot", plan_, "--merge", ""}, "不能为空"},
      {{"titleblock", plan_, "--merge", Path("x.pdf").string()}, "--merge 只用于 --plot"},
  };
  for (const Case& c : cases) {
    const RunResult r = RunAtHome(c.args);
    EXPECT_EQ(r.exitCode, 1) << c.says << r.err;
    EXPECT_TRUE(Has(r.err, c.says)) << r.err;
  }
  EXPECT_FALSE(fs::exists(Path("x.pdf")));
}

}  // namespace
}  // namespace tv::cli
