// `tvplot printers`, `tvplot print` and the paper batch's list against a print server of the tests'
// own: the queues and their media, the jobs that reach the queue (one PDF per sheet and copy, at
// the sheet's paper, in the order copies and collation ask for), copies edited in the list, PLT
// files instead of paper, and the refusing, paused, unknown and unreachable cases, which must end
// with a message and never hang.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <regex>
#include <string>
#include <vector>

#include "../support/frame_drawings.h"
#include "../support/pdf_reading.h"
#include "../support/private_cupsd.h"
#include "../support/scoped_env.h"
#include "../support/tvplot_test.h"
#include "cad/dxf_reader.h"
#include "host/print_queues.h"
#include "plot/paper_review.h"

namespace tv::cli {
namespace {

namespace fs = std::filesystem;

using namespace test_support;

// The job lines of a print run, "QUEUE-ID  NAME  第 N 份 …", as (name, copy) in the order sent.
std::vector<std::pair<std::string, int>> JobsSent(const std::string& out) {
  std::vector<std::pair<std::string, int>> jobs;
  static const std::regex line(R"(^tv_\w+-\d+  (\S+)  第 (\d+) 份)");
  std::size_t start = 0;
  while (start < out.size()) {
    std::size_t end = out.find('\n', start);
    if (end == std::string::npos) end = out.size();
    std::smatch m;
    const std::string text = out.substr(start, end - start);
    if (std::regex_search(text, m, line)) jobs.emplace_back(m[1].str(), std::stoi(m[2].str()));
    start = end + 1;
  }
  return jobs;
}

// The finished job files of a queue, in job order.
std::vector<fs::path> JobFiles(const fs::path& folder) {
  std::vector<fs::path> files;
  std::error_code ec;
  for (const fs::directory_entry& e : fs::directory_iterator(folder, ec))
    if (e.path().extension() == ".pdf") files.push_back(e.path());
  const auto number = [](const fs::path& p) { return std::stoi(p.stem().string().substr(4)); };
  std::sort(files.begin(), files.end(), [&](const fs::path& a, const fs::path& b) { return number(a) < number(b); });
  return files;
}

class PrintCommandTest : public TvplotTest {
 protected:
  void SetUp() override {
    TvplotTest::SetUp();
    std::string why;
    cupsd_ = PrivateCupsd::Get(why);
    if (!cupsd_) GTEST_SKIP() << "no private print server: " << why;
    cupsd_->clearOutputs();
    env_ = std::make_unique<ScopedEnv>("CUPS_SERVER", cupsd_->server());
  }
  void TearDown() override { env_.reset(); }

  // The paper batch over model space with `atList` answered at its list, then Esc for the list
  // the command shows again after the run.
  RunResult PaperBatch(const std::string& drawing, std::vector<std::string> atList) {
    std::vector<std::string> args{"run", drawing, "TV_BatchPlot_5", "--answer", "", "--answer", "1"};
    atList.push_back("^C");
    for (const std::string& a : atList) args.insert(args.end(), {"--answer", a});
    return Run(args);
  }

  PrivateCupsd* cupsd_ = nullptr;
  std::unique_ptr<ScopedEnv> env_;
};

TEST_F(PrintCommandTest, PrintersListsTheDefaultQueueFirstWithItsStateAndMedia) {
  const RunResult r = Run({"printers", "--media"});
  ASSERT_EQ(r.exitCode, 0) << r.err << r.out;
  const std::size_t paper = r.out.find("* tv_paper"), refusing = r.out.find("tv_refusing"), paused = r.out.find("tv_paused");
  ASSERT_NE(paper, std::string::npos) << r.out;
  EXPECT_LT(paper, refusing) << r.out;
  EXPECT_LT(paper, paused) << r.out;
  EXPECT_TRUE(Has(r.out, "tv_refusing  拒绝作业")) << r.out;
  EXPECT_TRUE(Has(r.out, "tv_paused    已暂停")) << r.out;
  // The media of the queue's PPD, A4 to A0, upright.
  for (const char* size : {"210x297", "297x420", "420x594", "594x841", "841x1189"}) EXPECT_TRUE(Has(r.out, size)) << size << r.out;
  EXPECT_TRUE(Has(r.out, "iso_a3_297x420mm  297x420  A3")) << "a standard size has its short name\n" << r.out;
}

TEST_F(PrintCommandTest, EverySheetAndCopyReachesTheQueueAtItsPaperInCollatedOrder) {
  // An A3 and an A2 frame across, both at 1:100.
  const std::string plan = Write("plan.dxf", FramesInARow({{42000, 29700}, {59400, 42000}}));
  const std::string original = ReadFile(plan);
  const RunResult r = Run({"print", plan, "--copies", "2", "--collate"});
  ASSERT_EQ(r.exitCode, 0) << r.err << r.out;
  EXPECT_EQ(JobsSent(r.out), (std::vector<std::pair<std::string, int>>{{"plan01", 1}, {"plan02", 1}, {"plan01", 2}, {"plan02", 2}}))
      << r.out;
  EXPECT_TRUE(Has(r.out, "共 2 张图纸，已发送 4 / 4 个打印作业到打印机 tv_paper")) << r.out;
  EXPECT_TRUE(Has(r.out, "iso_a3_297x420mm")) << "the queue's own medium is asked for\n" << r.out;

  ASSERT_TRUE(cupsd_->waitForFiles(kPaperQueue, 4, 30)) << "one file per sheet and copy";
  const std::vector<fs::path> files = JobFiles(cupsd_->outputOf(kPaperQueue));
  const std::pair<double, double> papers[] = {{420, 297}, {594, 420}, {420, 297}, {594, 420}};
  for (std::size_t i = 0; i < files.size(); ++i) {
    const auto [w, h] = PageMm(files[i].string());
    EXPECT_NEAR(w, papers[i].first, 0.5) << files[i];
    EXPECT_NEAR(h, papers[i].second, 0.5) << files[i];
  }
  EXPECT_EQ(ReadFile(plan), original) << "the drawing is never written";
  EXPECT_EQ(FilesIn(dir_.path()), std::vector<std::string>{"plan.dxf"}) << "the PDFs on their way leave nothing behind";
}

TEST_F(PrintCommandTest, UncollatedCopiesOfASheetGoTogether) {
  const std::string plan = Write("plan.dxf", FramesInARow({{42000, 29700}, {42000, 29700}}));
  const RunResult r = Run({"print", plan, "--printer", kPaperQueue, "--copies", "2"});
  ASSERT_EQ(r.exitCode, 0) << r.err << r.out;
  EXPECT_EQ(JobsSent(r.out), (std::vector<std::pair<std::string, int>>{{"plan01", 1}, {"plan01", 2}, {"plan02", 1}, {"plan02", 2}}))
      << r.out;
  EXPECT_TRUE(cupsd_->waitForFiles(kPaperQueue, 4, 30));
}

TEST_F(PrintCommandTest, QueuesThatCannotPrintEndTheRunWithAMessage) {
  const std::string plan = Write("plan.dxf", FramesInARow({{42000, 29700}}));
  struct Case {
    std::string queue;
    int exitCode;
    std::string message;
  };
  const Case cases[] = {
      {kRefusingQueue, 6, "打印机“tv_refusing”拒绝接受作业，未打印"},
      {"tv_gone", 6, "打印机“tv_gone”不存在，未打印"},
  };
  for (const Case& c : cases) {
    const RunResult r = Run({"print", plan, "--printer", c.queue});
    EXPECT_EQ(r.exitCode, c.exitCode) << c.queue << r.err << r.out;
    EXPECT_TRUE(Has(r.err, c.message)) << r.err;
    EXPECT_TRUE(JobsSent(r.out).empty()) << r.out;
  }
  EXPECT_TRUE(JobFiles(cupsd_->outputOf(kRefusingQueue)).empty());
}

TEST_F(PrintCommandTest, AQueueThatRefusesMidwayStopsTheRunAndTheJobsSentAreListed) {
  const std::string plan = Write("plan.dxf", FramesInARow({{42000, 29700}, {42000, 29700}, {42000, 29700}}));
  const RunResult r = Run({"print", plan, "--printer", kFullQueue});
  EXPECT_EQ(r.exitCode, 5) << r.err << r.out;
  EXPECT_EQ(JobsSent(r.out), (std::vector<std::pair<std::string, int>>{{"plan01", 1}})) << r.out;
  EXPECT_TRUE(Has(r.err, "plan02（第 1 份）：打印机“tv_full”未接受作业")) << r.err;
  EXPECT_TRUE(Has(r.err, "停止打印")) << r.err;
  EXPECT_TRUE(Has(r.out, "共 3 张图纸，已发送 1 / 3 个打印作业到打印机 tv_full")) << r.out;
  EXPECT_TRUE(cupsd_->waitForFiles(kFullQueue, 1, 30));
}

TEST_F(PrintCommandTest, APausedQueueHoldsTheJobsAndSaysSo) {
  const std::string plan = Write("plan.dxf", FramesInARow({{42000, 29700}}));
  const RunResult r = Run({"print", plan, "--printer", kPausedQueue});
  ASSERT_EQ(r.exitCode, 0) << r.err << r.out;
  EXPECT_TRUE(Has(r.err, "打印机“tv_paused”已暂停")) << r.err;
  EXPECT_EQ(JobsSent(r.out).size(), 1u) << r.out;
  EXPECT_TRUE(JobFiles(cupsd_->outputOf(kPausedQueue)).empty()) << "held until the queue is resumed";
}

TEST_F(PrintCommandTest, TheOldPaperBatchPlotsOnTheLayoutsPrinterOnceForEveryCopy) {
  cad::Database db = FramesInARow({{42000, 29700}});
  cad::PlotSettings& plot = db.layoutsInTabOrder().front()->plot;
  plot.plotterName = kPaperQueue;
  plot.paperSize = "iso_a3_297x420mm";
  const std::string plan = Write("printer.dxf", db);
  // A rectangle picked, two copies, every rectangle, Yes to the question.
  std::vector<std::string> args{"run", plan, "TV_BatchPlot_16"};
  for (const char* a : {"3", "7 2", "", "ALL", ""}) args.insert(args.end(), {"--answer", a});
  const RunResult r = Run(args);
  EXPECT_TRUE(Has(r.out, "共有 1 张图纸打印，打印 2 份，现在开始打印 ？")) << r.out;
  EXPECT_EQ(Count(r.out, "已发送到打印机 tv_paper，作业 tv_paper-"), 2u) << r.out;
  ASSERT_TRUE(cupsd_->waitForFiles(kPaperQueue, 2, 30));
  for (const fs::path& file : JobFiles(cupsd_->outputOf(kPaperQueue))) {
    const auto [w, h] = PageMm(file.string());
    EXPECT_NEAR(std::min(w, h), 297, 0.5) << file;
    EXPECT_NEAR(std::max(w, h), 420, 0.5) << file;
  }
  EXPECT_EQ(FilesIn(dir_.path()), std::vector<std::string>{"printer.dxf"});
}

TEST_F(PrintCommandTest, CopiesEditedInThePaperListAreTheJobsSent) {
  const std::string plan = Write("plan.dxf", FramesInARow({{42000, 29700}, {42000, 29700}}));
  struct Case {
    std::vector<std::string> atList;
    std::size_t jobs;
  };
  const Case cases[] = {
      {{"打印机 tv_paper", "K 2 3", ""}, 4},                 // 1 + 3, the first as found
      {{"打印机 tv_paper", "K * 2", "逐份打印 是", ""}, 4},  // all rows at once
      {{"打印机 tv_paper", "K 1 0", "K 1 21", ""}, 2},       // refused: the rows stay at 1
  };
  for (const Case& c : cases) {
    cupsd_->clearOutputs();
    const RunResult r = PaperBatch(plan, c.atList);
    EXPECT_TRUE(Has(r.out, "批打印至纸张")) << r.out;
    EXPECT_TRUE(Has(r.out, " 打印份数 ")) << r.out;
    EXPECT_EQ(Count(r.out, "已发送到打印机 tv_paper，作业 tv_paper-"), c.jobs) << c.atList[1] << r.out;
    EXPECT_TRUE(cupsd_->waitForFiles(kPaperQueue, c.jobs, 30)) << c.atList[1];
  }
}

TEST_F(PrintCommandTest, ASheetWhosePaperThePrinterHasNotGoesOnTheNextMediumOrTheOneChosen) {
  // A lengthened A3 (630 x 297) and an A3 at 1:100: the queues offer A4 to A0 only.
  const std::string plan = Write("long.dxf", FramesInARow({{63000, 29700}, {42000, 29700}}));
  struct Case {
    std::vector<std::string> atList;
    std::pair<double, double> firstPaper;
  };
  const Case cases[] = {
      {{"打印机 tv_paper", ""}, {841, 594}},           // the smallest medium that holds it: A1
      {{"打印机 tv_paper", "Z 1 A2", ""}, {594, 420}},  // chosen in the list
  };
  for (const Case& c : cases) {
    cupsd_->clearOutputs();
    const RunResult r = PaperBatch(plan, c.atList);
    EXPECT_TRUE(Has(r.out, "打印机“tv_paper”没有 630x297 的纸张，放大打印到 ")) << r.out;
    EXPECT_EQ(Count(r.out, "已发送到打印机 tv_paper"), 2u) << r.out;
    ASSERT_TRUE(cupsd_->waitForFiles(kPaperQueue, 2, 30));
    const std::vector<fs::path> files = JobFiles(cupsd_->outputOf(kPaperQueue));
    const std::pair<double, double> papers[] = {c.firstPaper, {420, 297}};
    for (std::size_t i = 0; i < files.size() && i < 2; ++i) {
      const auto [w, h] = PageMm(files[i].string());
      EXPECT_NEAR(std::max(w, h), papers[i].first, 0.5) << files[i];
      EXPECT_NEAR(std::min(w, h), papers[i].second, 0.5) << files[i];
    }
  }
}

TEST_F(PrintCommandTest, ThePaperBatchLeavesTheLayoutsPlotterAsItWasAndRemembersItsChoices) {
  cad::Database db = FramesInARow({{42000, 29700}});
  cad::PlotSettings& plot = db.layoutsInTabOrder().front()->plot;
  plot.plotterName = "Office Plotter.pc3";
  plot.paperSize = "ISO_A3_(420.00_x_297.00_MM)";
  const std::string plan = Write("office.dxf", db);
  const std::string saved = Path("after.dxf").string();
  const RunResult r = Run({"run", plan, "TV_BatchPlot_5", "--answer", "", "--answer", "1", "--answer", "打印机 tv_paper",
                           "--answer", "K 1 3", "--answer", "Z 1 A2", "--answer", "", "--answer", "^C", "--save-as", saved});
  EXPECT_EQ(Count(r.out, "已发送到打印机 tv_paper"), 3u) << r.out;
  const cad::DxfReadResult read = cad::ReadDxf(saved);
  ASSERT_TRUE(read.ok()) << read.error;
  const cad::PlotSettings& after = read.db->layoutsInTabOrder().front()->plot;
  EXPECT_EQ(after.plotterName, "Office Plotter.pc3");
  EXPECT_EQ(after.paperSize, "ISO_A3_(420.00_x_297.00_MM)");

  // The next list of the saved drawing shows the copies and the medium chosen.
  const RunResult again = Run({"run", saved, "TV_BatchPlot_5", "--answer", "", "--answer", "1", "--answer", "C"});
  std::istringstream lines(again.out);
  std::string line, row;
  while (std::getline(lines, line))
    if (line.rfind("     1 ", 0) == 0) row = line;
  EXPECT_TRUE(Has(row, " 3 ") && Has(row, "A2")) << again.out;
}

TEST_F(PrintCommandTest, PltOutputWritesOneFilePerSheetIntoTheChosenFolder) {
  const std::string plan = Write("plan.dxf", FramesInARow({{42000, 29700}, {59400, 42000}}));
  const fs::path out = dir_.path() / "plt";
  fs::create_directories(out);
  // Copies don't multiply files; a refusing queue still gives its media.
  const RunResult r = Run({"print", plan, "--printer", kRefusingQueue, "--copies", "3", "--plt", out.string()});
  ASSERT_EQ(r.exitCode, 0) << r.err << r.out;
  EXPECT_EQ(FilesIn(out), (std::vector<std::string>{"plan_1.plt", "plan_2.plt"})) << r.out;
  EXPECT_TRUE(Has(r.out, "共 2 张图纸，已输出 2 个 PLT 文件到")) << r.out;
  for (const std::string& name : FilesIn(out)) EXPECT_TRUE(Has(ReadFile((out / name).string()), "IN;")) << name;
  EXPECT_TRUE(JobFiles(cupsd_->outputOf(kRefusingQueue)).empty());
  EXPECT_EQ(FilesIn(dir_.path()), (std::vector<std::string>{"plan.dxf", "plt"}));

  const RunResult bad = Run({"print", plan, "--plt", (dir_.path() / "none").string()});
  EXPECT_EQ(bad.exitCode, 1) << bad.err;
  EXPECT_TRUE(Has(bad.err, "不存在")) << bad.err;
}

// Needs no server: nothing listens on the port.
TEST(PrintServerTest, AnUnreachableServerGivesAMessageAtOnce) {
  TempDir dir("tv_print");
  ScopedEnv server("CUPS_SERVER", "127.0.0.1:1");
  const RunResult printers = RunTvplot({"printers"});
  EXPECT_EQ(printers.exitCode, 6) << printers.out << printers.err;
  EXPECT_TRUE(Has(printers.err, "无法连接打印服务 127.0.0.1:1")) << printers.err;

  const fs::path plan = dir / "plan.dxf";
  ASSERT_TRUE(cad::WriteDxf(FramesInARow({{42000, 29700}}), plan.string()).ok);
  const RunResult print = RunTvplot({"print", plan.string()});
  EXPECT_EQ(print.exitCode, 6) << print.out << print.err;
  EXPECT_TRUE(Has(print.err, "无法连接打印服务")) << print.err;
}

TEST(PrintServerTest, BadCopiesAreRefusedBeforeAnythingIsAsked) {
  for (const char* copies : {"0", "-1", "x", "21"}) {
    const RunResult r = RunTvplot({"print", "plan.dxf", "--copies", copies});
    EXPECT_EQ(r.exitCode, 1) << copies << r.err;
    EXPECT_TRUE(Has(r.err, "打印份数")) << r.err;
  }
}

TEST(PrintMediaTest, ASheetTakesTheMediumOfItsSizeEitherWay) {
  const std::vector<host::DeviceMedium> media{{"iso_a4_210x297mm", "A4", 210, 297}, {"iso_a3_297x420mm", "A3", 297, 420}};
  struct Case {
    double w, h;
    const char* expected;  // null: none
  };
  const Case cases[] = {{210, 297, "iso_a4_210x297mm"}, {420, 297, "iso_a3_297x420mm"}, {297.8, 420.6, "iso_a3_297x420mm"},
                        {891, 420, nullptr},            {297, 421.5, nullptr}};
  for (const Case& c : cases) {
    const host::DeviceMedium* m = plot::MediumOfSize(media, c.w, c.h);
    if (!c.expected) {
      EXPECT_EQ(m, nullptr) << c.w << "x" << c.h;
      continue;
    }
    EXPECT_NE(m, nullptr) << c.w << "x" << c.h;
    if (m) {
      EXPECT_EQ(m->canonical, c.expected);
    }
  }
}

}  // namespace
}  // namespace tv::cli
