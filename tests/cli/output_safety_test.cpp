// What a run leaves behind, with the built program: the drawings it read are never replaced, names
// the file system refuses or can't show are made into names it takes, and two runs at once share
// the user's plotter files without losing a sheet, a file or the truth of their summaries.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "../support/frame_drawings.h"
#include "../support/tvplot_test.h"
#include "examples/sample_drawing.h"
#include "examples/sample_library.h"
#include "host/run_lock.h"
#include "titleblock/tk_library.h"

namespace tv::cli {
namespace {

namespace fs = std::filesystem;

using namespace test_support;

// The sample title blocks with the attribute values `from` changed to `to` (the frame pasted
// twice, and the turned frame when its value matches too).
cad::Database TitleBlocksWith(const std::vector<std::pair<std::string, std::string>>& changes) {
  cad::Database db = samples::BuildTitleBlockDrawing();
  for (const auto& entity : db.modelSpace()->entities)
    if (auto* insert = dynamic_cast<cad::Insert*>(entity.get()))
      for (const auto& attrib : insert->attribs)
        for (const auto& [from, to] : changes)
          if (attrib->text == from) attrib->text = to;
  return db;
}

// A drawing of frames side by side at 1:100, one per size given (millimetres of the paper), each
// with a line across.
cad::Database Frames(std::vector<std::pair<double, double>> papers) {
  for (auto& [w, h] : papers) w *= 100, h *= 100;
  return FramesInARow(papers);
}

bool IsUtf8(const std::string& s) {
  for (std::size_t i = 0; i < s.size();) {
    const auto c = static_cast<unsigned char>(s[i]);
    const std::size_t n = c < 0x80 ? 1 : (c >> 5) == 6 ? 2 : (c >> 4) == 14 ? 3 : (c >> 3) == 30 ? 4 : 0;
    if (n == 0 || i + n > s.size()) return false;
    for (std::size_t k = 1; k < n; ++k)
      if ((static_cast<unsigned char>(s[i + k]) & 0xC0) != 0x80) return false;
    i += n;
  }
  return true;
}

class OutputSafetyTest : public TvplotTest {
 protected:
  void SetUp() override {
    TvplotTest::SetUp();
    ASSERT_TRUE(titleblock::SaveTkFileTo(samples::BuildTitleBlockLibrary(), tk_, false));
  }
  RunResult TitlePlot(const std::string& drawing, const fs::path& out) const {
    return Run({"titleblock", drawing, "--tk", tk_, "--plot", "--out", out.string()});
  }

  const std::string tk_ = Path("titleblocks.tk").string();
};

TEST_F(OutputSafetyTest, ADrawingUnderAnOutputsNameIsRefusedAndTheOtherSheetsComeOut) {
  // The drawing saved in the output folder under the name its first sheet will get.
  const fs::path out = dir_ / "out";
  const std::string drawing = Write(out / "结施-01_A_基础平面图.pdf", samples::BuildTitleBlockDrawing());
  const std::string bytes = ReadFile(drawing);
  const RunResult r = TitlePlot(drawing, out);
  EXPECT_EQ(r.exitCode, 5) << r.err << r.out;
  EXPECT_TRUE(ReadFile(drawing) == bytes) << "the drawing is never replaced";
  EXPECT_TRUE(Has(r.err, "是本次打印读取的图纸文件，不能覆盖，第 1 张图纸未打印")) << r.err;
  EXPECT_TRUE(Has(r.out, "共 4 张图纸，已输出 3 个文件")) << r.out;
  EXPECT_EQ(FilesIn(out), (std::vector<std::string>{"建施-03_一层平面图+（局部）_2026.11.25.pdf",
                                                    "建施-04_楼梯详图_2026.11.25.pdf", "结施-01_A_基础平面图.pdf",
                                                    "结施-02_A_一层梁配筋图.pdf"}));
}

TEST_F(OutputSafetyTest, AnOutputNameThatIsTheDrawingByAnotherPathIsRefused) {
  const std::string drawing = Write("plan.dxf", Frames({{420, 297}, {420, 297}}));
  const std::string bytes = ReadFile(drawing);
  struct Case {
    const char* folder;
    void (*make)(const fs::path& drawing, const fs::path& output);
  };
  for (const Case& c : {Case{"hard-link", [](const fs::path& d, const fs::path& o) { fs::create_hard_link(d, o); }},
                        Case{"symbolic-link", [](const fs::path& d, const fs::path& o) { fs::create_symlink(d, o); }}}) {
    SCOPED_TRACE(c.folder);
    const fs::path out = dir_ / c.folder;
    fs::create_directories(out);
    c.make(drawing, out / "plan01.pdf");
    const RunResult r = Run({"plot", drawing, "--out", out.string()});
    EXPECT_EQ(r.exitCode, 5) << r.err << r.out;
    EXPECT_TRUE(Has(r.err, "第 1 张图纸未打印")) << r.err;
    EXPECT_TRUE(Has(r.out, "共 2 张图纸，已输出 1 个文件")) << r.out;
    EXPECT_TRUE(ReadFile(drawing) == bytes) << "the drawing is never replaced";
    EXPECT_TRUE(ReadFile(out / "plan01.pdf") == bytes) << "the link still leads to the drawing";
    EXPECT_EQ(ReadFile(out / "plan02.pdf").rfind("%PDF", 0), 0u);
  }
}

TEST_F(OutputSafetyTest, NamesTooLongForTheFileSystemAreCutToFitWithTheirSuffix) {
  // A title of 300 characters (900 bytes), on two frames that then get one name.
  std::string title;
  for (int i = 0; i < 30; ++i) title += "基础平面图第一二三层";
  const std::string drawing =
      Write("long.dxf", TitleBlocksWith({{"基础平面图", title}, {"一层梁配筋图", title}, {"结施-02", "结施-01"}}));
  const fs::path out = dir_ / "out";
  const RunResult r = TitlePlot(drawing, out);
  ASSERT_EQ(r.exitCode, 0) << r.err << r.out;
  EXPECT_TRUE(Has(r.out, "共 4 张图纸，已输出 4 个文件")) << r.out;
  const std::vector<std::string> names = FilesIn(out);
  ASSERT_EQ(names.size(), 4u);
  std::vector<std::string> cut;
  for (const std::string& name : names) {
    EXPECT_LE(name.size(), 255u) << name;
    EXPECT_TRUE(IsUtf8(name)) << "cut between two characters: " << name;
    if (name.starts_with("结施-01_A_基础平面图第一二三层")) cut.push_back(name);
  }
  ASSERT_EQ(cut.size(), 2u) << r.out;
  const bool firstIsCopy = cut[0].ends_with("(2).pdf");
  const std::string& plain = cut[firstIsCopy ? 1 : 0];
  const std::string& copy = cut[firstIsCopy ? 0 : 1];
  ASSERT_TRUE(copy.ends_with("(2).pdf")) << plain << "\n" << copy;
  EXPECT_TRUE(plain.starts_with(copy.substr(0, copy.size() - 7))) << "the same name, then (2)";
  EXPECT_GT(plain.size(), 251u) << "cut no shorter than needed";
  EXPECT_GT(copy.size(), 251u) << "cut no shorter than needed";
}

TEST_F(OutputSafetyTest, GarbledTextOfADrawingBecomesAReadableMarkSaidOnce) {
  // A drawing of the UTF-8 versions with bytes in two titles that are no UTF-8.
  std::string dxf = cad::WriteDxfToString(TitleBlocksWith({{"基础平面图", "基础@@平面图"}, {"一层梁配筋图", "一层@@梁"}}));
  for (std::size_t at = dxf.find("@@"); at != std::string::npos; at = dxf.find("@@", at)) dxf.replace(at, 2, "\xB5\xD7");
  const std::string drawing = WriteText("garbled.dxf", dxf);
  const fs::path out = dir_ / "out";
  const RunResult r = TitlePlot(drawing, out);
  ASSERT_EQ(r.exitCode, 0) << r.err << r.out;
  const std::vector<std::string> names = FilesIn(out);
  EXPECT_NE(std::find(names.begin(), names.end(), "结施-01_A_基础_平面图.pdf"), names.end()) << r.out;
  EXPECT_NE(std::find(names.begin(), names.end(), "结施-02_A_一层_梁.pdf"), names.end()) << r.out;
  for (const std::string& name : names) EXPECT_TRUE(IsUtf8(name) && !Has(name, "\uFFFD")) << name;
  EXPECT_EQ(Count(r.err, "无法识别的文字"), 1u) << r.err;
  EXPECT_TRUE(Has(r.err, drawing)) << "the message names the drawing: " << r.err;
}

// ---- two runs at once ------------------------------------------------------------------------------

class ConcurrentRunsTest : public OutputSafetyTest {
 protected:
  std::string Home() const { return (dir_ / "home").string(); }
  StartedProgram StartPlot(const std::string& drawing, const fs::path& out) {
    return StartProgram(TV_TVPLOT_PATH, {"plot", drawing, "--out", out.string()}, {}, Home());
  }
};

TEST_F(ConcurrentRunsTest, ARunWaitsWithAMessageWhileAnotherHoldsThePlotterFiles) {
  const std::string drawing = Write("plan.dxf", Frames({{420, 297}}));
  const fs::path data = fs::path(Home()) / ".local/share/Tarvex";
  fs::create_directories(data);
  std::optional<host::RunLock> other = host::RunLock::Acquire((data / "T_Plot.lock").string(), {});
  ASSERT_TRUE(other);
  const fs::path out = dir_ / "out";
  StartedProgram run = StartPlot(drawing, out);
  // It says why it waits, and writes nothing while it does.
  std::string err;
  for (int i = 0; i < 200 && !Has(err, "等待"); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(25));
    err = ErrorsSoFar(run);
  }
  EXPECT_TRUE(Has(err, "另一个打印任务正在使用打印设备文件")) << err;
  EXPECT_TRUE(StillRunning(run));
  EXPECT_TRUE(FilesIn(out).empty());
  other.reset();
  const RunResult r = WaitProgram(run);
  EXPECT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(FilesIn(out), std::vector<std::string>{"plan01.pdf"});
}

TEST_F(ConcurrentRunsTest, TwoRunsAtOnceEachWriteEverySheetAndSayWhatIsThere) {
  // Papers of every size, so that a plotter file written for one list lacks the papers of the other.
  const std::string plan = Write("plan.dxf", Frames({{420, 297}, {594, 420}, {297, 210}, {841, 594}}));
  const std::string other = Write("other.dxf", Frames({{1189, 841}, {630, 297}, {891, 420}}));
  const std::vector<std::string> planFiles{"plan01.pdf", "plan02.pdf", "plan03.pdf", "plan04.pdf"};
  for (int round = 0; round < 3; ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    // The same drawing into the same folder twice, and another drawing elsewhere, all at once.
    const fs::path out = dir_ / ("out" + std::to_string(round)), elsewhere = dir_ / ("else" + std::to_string(round));
    StartedProgram a = StartPlot(plan, out), b = StartPlot(plan, out), c = StartPlot(other, elsewhere);
    for (StartedProgram* run : {&a, &b}) {
      const RunResult r = WaitProgram(*run);
      EXPECT_EQ(r.exitCode, 0) << r.err << r.out;
      EXPECT_TRUE(Has(r.out, "共 4 张图纸，已输出 4 个文件")) << r.out;
    }
    const RunResult r = WaitProgram(c);
    EXPECT_EQ(r.exitCode, 0) << r.err << r.out;
    EXPECT_EQ(FilesIn(out), planFiles) << "every file whole, nothing of a run left over";
    EXPECT_EQ(FilesIn(elsewhere), (std::vector<std::string>{"other01.pdf", "other02.pdf", "other03.pdf"}));
    for (const std::string& name : planFiles) EXPECT_EQ(ReadFile(out / name).rfind("%PDF", 0), 0u) << name;
  }
}

}  // namespace
}  // namespace tv::cli
