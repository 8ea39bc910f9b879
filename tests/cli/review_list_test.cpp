// The review lists of the file batches worked through their commands, as a user scripts them:
// `tvplot run D.dxf TV_BatchPlot_2 --answer …`, and what comes out (files, their papers, names).
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include "examples/sample_drawing.h"
#include "examples/sample_library.h"
#include "tests/support/frame_drawings.h"
#include "tests/support/pdf_reading.h"
#include "tests/support/tvplot_test.h"
#include "titleblock/tk_library.h"

namespace tv::cli {
namespace {

namespace fs = std::filesystem;
using namespace test_support;

// Page sizes in whole millimetres, long side first, in the order of the files' names.
std::vector<std::pair<int, int>> PagesIn(const fs::path& folder) {
  std::vector<std::pair<int, int>> pages;
  for (const std::string& file : FilesIn(folder)) {
    const PdfFacts facts = ReadPdfFacts((folder / file).string());
    for (const PdfPageFacts& p : facts.pages) {
      const int a = static_cast<int>(std::lround(p.widthMm)), b = static_cast<int>(std::lround(p.heightMm));
      pages.emplace_back(std::max(a, b), std::min(a, b));
    }
  }
  return pages;
}

class ReviewListTest : public TvplotTest {
 protected:
  // The generic batch over model space with `atList` answered at the list, then Esc for the list
  // the command shows again after the run.
  RunResult Generic(const std::string& drawing, std::vector<std::string> atList, const std::string& home = {}) {
    std::vector<std::string> args{"run", drawing, "TV_BatchPlot_2", "--answer", "", "--answer", "1"};
    atList.push_back("^C");
    for (const std::string& a : atList) args.insert(args.end(), {"--answer", a});
    return Run(args, {}, home);
  }
  fs::path PdfFolder() const { return dir_.path() / "PDF"; }
};

TEST_F(ReviewListTest, DeletedAndRenamedRowsAreWhatThePlotWrites) {
  const std::string d = Write("plan.dxf", FramesInARow({{42000, 29700}, {42000, 29700}, {42000, 29700}}));
  const RunResult r = Generic(d, {"D 1", "N 2 封面", ""});
  ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
  // The serials follow the rows left; the typed name stays.
  EXPECT_EQ(FilesIn(PdfFolder()), (std::vector<std::string>{"plan01.pdf", "封面.pdf"})) << r.out;
}

TEST_F(ReviewListTest, PaperAndScaleEditsChangeTheRowsNamedAndTheirPages) {
  // Three sheets at 1:1: two lengthened A3 and one A3.
  const std::string d = Write("long.dxf", FramesInARow({{630, 297}, {700, 297}, {420, 297}}));
  const RunResult r = Generic(d, {"Z 1-2 A3加长", "Z 3 800x400", ""});
  ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
  EXPECT_EQ(PagesIn(PdfFolder()), (std::vector<std::pair<int, int>>{{630, 297}, {700, 297}, {800, 400}})) << r.out;

  fs::remove_all(PdfFolder());
  // 2:1 gives the A3 sheet an A1; the paper list answered by its entry.
  const RunResult s = Generic(d, {"S 3 2:1", "Z 1,2", "1", ""});
  ASSERT_EQ(s.exitCode, 0) << s.out << s.err;
  EXPECT_TRUE(Has(s.out, "选  择  纸  张")) << s.out;
  EXPECT_EQ(PagesIn(PdfFolder()), (std::vector<std::pair<int, int>>{{297, 210}, {297, 210}, {841, 594}})) << s.out;

  fs::remove_all(PdfFolder());
  // The list's last entry is the custom paper form; a number typed after the rows is an entry.
  const RunResult t = Generic(d, {"Z 2", "11", "800", "400", "Z 3 4", ""});
  ASSERT_EQ(t.exitCode, 0) << t.out << t.err;
  EXPECT_TRUE(Has(t.out, "自定义纸张")) << t.out;
  EXPECT_EQ(PagesIn(PdfFolder())[1], (std::pair<int, int>{800, 400})) << t.out;
  EXPECT_EQ(PagesIn(PdfFolder())[2], (std::pair<int, int>{841, 594})) << t.out;
}

TEST_F(ReviewListTest, AScaleEditKeepsTheScaleTyped) {
  // An A-shaped sheet at 1:100 asked for at 1:50 is an A1 at 1:50, not its A3 again; a frame block
  // inserted at 100 takes the typed scale in drawing units too.
  const std::string d = Write("plan.dxf", FramesInARow({{42000, 29700}}));
  const RunResult r = Generic(d, {"S 1 50", ""});
  ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
  EXPECT_EQ(PagesIn(PdfFolder()), (std::vector<std::pair<int, int>>{{841, 594}})) << r.out;

  const std::string sample = Write("sample.dxf", samples::BuildSampleDrawing());
  const RunResult s = Generic(sample, {"S 7 50", "C"});
  const std::string after = s.out.substr(s.out.find(": S 7 50"));
  const std::size_t at = after.find("\n     7 ");
  ASSERT_NE(at, std::string::npos) << after;
  const std::string row = after.substr(at, after.find('\n', at + 1) - at);
  EXPECT_TRUE(Has(row, "A1 (841x594)") && Has(row, " 1:50 ")) << row;
}

TEST_F(ReviewListTest, ACustomFolderTakesTheFiles) {
  const std::string d = Write("plan.dxf", FramesInARow({{42000, 29700}}));
  const fs::path out = Path("out");
  fs::create_directories(out);
  const RunResult r = Generic(d, {"存储路径 " + Path("missing").string(), "存储路径 " + out.string(), ""});
  ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
  EXPECT_TRUE(Has(r.out, "所选文件夹有误 !")) << r.out;
  EXPECT_EQ(FilesIn(out), (std::vector<std::string>{"plan01.pdf"})) << r.out;
  EXPECT_FALSE(fs::exists(PdfFolder()));
  // An entry by its place as listed: the first is the drawing's own folder.
  const RunResult s = Generic(d, {"存储路径 " + out.string(), "存储路径 1", ""});
  ASSERT_EQ(s.exitCode, 0) << s.out << s.err;
  EXPECT_TRUE(fs::exists(Path("plan01.pdf"))) << s.out;
  EXPECT_FALSE(fs::exists(PdfFolder()));
}

TEST_F(ReviewListTest, OrderAndFilterRebuildTheRows) {
  // Left to right: an A3 and an A2 sheet at 1:100, and a small frame the filter drops.
  const std::string d = Write("plan.dxf", FramesInARow({{42000, 29700}, {59400, 42000}, {4200, 2970}}));
  // Rows from the top, each from the right: the A2 sheet comes first. Then the filter at 30 %.
  const RunResult r = Generic(d, {"序号、排序 2", "比例、过滤", "", "", "30", ""});
  ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
  EXPECT_EQ(PagesIn(PdfFolder()), (std::vector<std::pair<int, int>>{{594, 420}, {420, 297}})) << r.out;

  // The naming form orders too: prefix, start, suffix, digits kept, then rows from the right.
  fs::remove_all(PdfFolder());
  const RunResult n = Generic(d, {"命名、排序", "", "", "", "", "2", ""});
  ASSERT_EQ(n.exitCode, 0) << n.out << n.err;
  const auto pages = PagesIn(PdfFolder());
  ASSERT_EQ(pages.size(), 3u) << n.out;
  EXPECT_EQ(pages[1], (std::pair<int, int>{594, 420})) << n.out;
  EXPECT_EQ(pages[2], (std::pair<int, int>{420, 297})) << n.out;
}

TEST_F(ReviewListTest, MergeTurnedOnInTheListGivesOnePdf) {
  const std::string d = Write("plan.dxf", FramesInARow({{42000, 29700}, {59400, 42000}}));
  const std::string merged = Path("set.pdf").string();
  const RunResult r = Generic(d, {"合并PDF 是", "", merged});
  ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
  EXPECT_EQ(ReadPdfFacts(merged).pages.size(), 2u) << r.out;
}

TEST_F(ReviewListTest, GenericListCountsItsPapers) {
  const std::string d = Write("plan.dxf", FramesInARow({{42000, 29700}, {59400, 42000}}));
  const RunResult r = Generic(d, {"纸张统计", "2", "C"});
  ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
  EXPECT_EQ(FilesIn(PdfFolder()), (std::vector<std::string>{"图纸统计.xlsx"})) << r.out;
}

TEST_F(ReviewListTest, RefusedValuesSayWhyAndClosingWritesNothing) {
  const std::string d = Write("plan.dxf", FramesInARow({{42000, 29700}, {42000, 29700}}));
  const auto before = fs::last_write_time(d);
  const RunResult r = Generic(d, {"Z 9 A3", "S 1 0", "K 1 0", "N 1 ***", "Z 1 A9", "F TIFF", "D *", "周边留白 +30", "背景色", "C"});
  ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
  for (const char* said : {"行号 9 超出范围（1 到 2）", "打印比例应大于 0 !", "打印份数不能小于 1 !", "文件名不能为空 !",
                           "无法识别的纸张：A9", "无法识别的输出格式：TIFF", "不能删除全部图纸", "无效的周边留白：+30",
                           "“背景色”在输出格式 PDF 下不可用。"})
    EXPECT_TRUE(Has(r.out, said)) << said << "\n" << r.out;
  EXPECT_FALSE(fs::exists(PdfFolder()));
  EXPECT_EQ(fs::last_write_time(d), before);
}

TEST_F(ReviewListTest, FormatAndControlsShowWhatTheFormatUses) {
  const std::string d = Write("plan.dxf", FramesInARow({{42000, 29700}}));
  const RunResult r = Generic(d, {"F DWG", "?", "Z 1 A2", "F PDF", "C"});
  ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
  // Listed after each change: the DWG list without paper, scale, style or merge, then PDF again.
  const std::size_t dwg = r.out.find(": F DWG"), help = r.out.find(": ?", dwg), pdf = r.out.find(": F PDF", help);
  ASSERT_NE(pdf, std::string::npos) << r.out;
  const std::string dwgList = r.out.substr(dwg, help - dwg), pdfList = r.out.substr(pdf);
  for (const char* gone : {"纸张尺寸", "打印比例", "预 览", "合并PDF", "打印样式", "周边留白"})
    EXPECT_FALSE(Has(dwgList, gone)) << gone << "\n" << dwgList;
  EXPECT_TRUE(Has(dwgList, "存为图块")) << dwgList;
  EXPECT_TRUE(Has(r.out.substr(help, pdf - help), "输出格式为 DWG 时不使用纸张")) << r.out;
  EXPECT_TRUE(Has(pdfList, "纸张尺寸") && Has(pdfList, "合并PDF") && !Has(pdfList, "存为图块")) << pdfList;
  // The names stay as they were.
  EXPECT_TRUE(Has(dwgList, "plan01") && Has(pdfList, "plan01"));
}

TEST_F(ReviewListTest, ImageFormatAndMarginAreKeptForTheNextRunOnlyWhenPlotted) {
  const std::string d = Write("plan.dxf", FramesInARow({{42000, 29700}}));
  const std::string home = Path("home").string();
  // Closed: nothing of the list is kept.
  ASSERT_EQ(Generic(d, {"周边留白 +5", "F PNG", "C"}, home).exitCode, 0);
  RunResult r = Generic(d, {""}, home);
  ASSERT_EQ(r.exitCode, 0) << r.out;
  EXPECT_EQ(PagesIn(PdfFolder()), (std::vector<std::pair<int, int>>{{420, 297}})) << r.out;
  // Plotted: the margin grows the paper, and the next run starts from it.
  fs::remove_all(PdfFolder());
  r = Generic(d, {"周边留白 +5", ""}, home);
  ASSERT_EQ(r.exitCode, 0) << r.out;
  const auto grown = PagesIn(PdfFolder());
  ASSERT_EQ(grown.size(), 1u) << r.out;
  EXPECT_GT(grown[0].first, 420);
  fs::remove_all(PdfFolder());
  r = Generic(d, {"F PNG", ""}, home);
  ASSERT_EQ(r.exitCode, 0) << r.out;
  EXPECT_TRUE(Has(r.out, "周边留白： + 05 mm")) << r.out;
  EXPECT_EQ(FilesIn(dir_.path() / "PNG"), (std::vector<std::string>{"plan01.png"}));
}

TEST_F(ReviewListTest, TitleBlockListRenamesDeletesAndChecksNames) {
  const fs::path home = Path("home");
  const fs::path data = home / ".local/share/Tarvex";
  fs::create_directories(data);
  ASSERT_TRUE(titleblock::SaveTkFileTo(samples::BuildTitleBlockLibrary(), (data / "BPlot_TK.tk").string(), false));
  const std::string d = Write("titleblocks.dxf", samples::BuildTitleBlockDrawing());
  const auto run = [&](std::vector<std::string> atList) {
    std::vector<std::string> args{"run", d, "TV_BatchPlot_4", "--answer", "", "--answer", "1"};
    atList.push_back("^C");
    for (const std::string& a : atList) args.insert(args.end(), {"--answer", a});
    return Run(args, {}, home.string());
  };
  RunResult r = run({"D 3-4", "N 1,2 结构", "K 1 2", "生成目录", "文件清单", "纸张统计 A3", "Z 1 A2", "S 2 50", "C"});
  ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
  EXPECT_TRUE(Has(r.out, "结构01")) << r.out;
  EXPECT_TRUE(Has(r.out, "结构02")) << r.out;
  EXPECT_TRUE(Has(r.out, "该列表没有打印份数")) << r.out;
  // The index, the file list and the paper count of the rows as they stand, in the list's output folder.
  for (const char* book : {"图纸目录.xlsx", "文件清单.xlsx", "图纸统计.xlsx"})
    EXPECT_TRUE(fs::exists(dir_.path() / "PDF" / book)) << book << "\n" << r.out;
  fs::remove_all(dir_.path() / "PDF");
  // A paper gives the scale at which the frame fills it, a scale the paper of that scale.
  const std::string afterPaper = r.out.substr(r.out.find(": Z 1 A2"));
  EXPECT_TRUE(Has(afterPaper, "A2 (594x420)  1:141.58")) << afterPaper;
  EXPECT_TRUE(Has(afterPaper.substr(afterPaper.find(": S 2 50")), "1:50")) << afterPaper;

  // Stamps without a stamp library: No stops the run before any file is written.
  r = run({"打印印章 是", "", "N", "C"});
  ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
  EXPECT_TRUE(Has(r.out, "印章库为空，无法打印印章，是否继续打印 ?")) << r.out;
  EXPECT_FALSE(fs::exists(dir_.path() / "PDF"));

  r = run({"D 3-4", "N 1,2 结构", ""});
  ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
  EXPECT_EQ(FilesIn(dir_.path() / "PDF"), (std::vector<std::string>{"结构01.pdf", "结构02.pdf"})) << r.out;
}

}  // namespace
}  // namespace tv::cli
