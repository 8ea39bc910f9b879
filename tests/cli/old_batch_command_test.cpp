// "批打到纸张(旧版)" run as a user would at the command line: the form, the picking, the
// question, then one `-plot` per area and copy, into numbered PLT files or to the layout's device.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "../support/frame_drawings.h"
#include "../support/tvplot_test.h"

namespace tv::cli {
namespace {

namespace fs = std::filesystem;

using namespace test_support;

class OldBatchCommandTest : public TvplotTest {
 protected:
  // An A3 frame at 1:100 lying, then one standing, 5000 apart.
  std::string Plan() const { return Write("plan.dxf", FramesInARow({{42000, 29700}, {29700, 42000}})); }

  RunResult Batch(const std::string& drawing, const std::vector<std::string>& answers) const {
    std::vector<std::string> args{"run", drawing, "TV_BatchPlot_16"};
    for (const std::string& a : answers) args.insert(args.end(), {"--answer", a});
    return Run(args);
  }

  static bool IsHpgl(const fs::path& file) { return ReadFile(file).starts_with("\x1b%-1BBP;IN;"); }
};

TEST_F(OldBatchCommandTest, EachAreaGoesToItsNumberedPltFileOnceForEveryCopy) {
  const std::string plan = Plan();
  const std::string original = ReadFile(plan);
  const fs::path out = dir_ / "plt";
  fs::create_directories(out);
  WriteFile(out / "plan-002.plt", "old");
  // "自行选择封闭矩形", two copies, PLT on, OK; every rectangle; Yes; the folder (with a trailing "/").
  const RunResult r = Batch(plan, {"3", "打印份数 2", "9", "", "ALL", "Y", out.string() + "/"});
  ASSERT_EQ(r.exitCode, 0) << r.out;
  EXPECT_TRUE(Has(r.out, "共有 2 张图纸打印，现在开始打印 ？")) << r.out;
  EXPECT_EQ(FilesIn(out), (std::vector<std::string>{"plan-001.plt", "plan-002.plt"}));
  EXPECT_TRUE(IsHpgl(out / "plan-001.plt"));
  EXPECT_TRUE(IsHpgl(out / "plan-002.plt")) << "the old file is replaced";
  EXPECT_EQ(Count(r.out, "已打印到文件 " + (out / "plan-001.plt").string()), 2u) << r.out;
  EXPECT_EQ(Count(r.out, "已打印到文件 " + (out / "plan-002.plt").string()), 2u) << r.out;
  EXPECT_EQ(ReadFile(plan), original) << "the drawing is never written";
}

// Two inserts of a frame block, one rectangle on layer "FRAMES" and a stray one on "0": each way
// finds its own areas in the whole space (Enter at the range prompt).
TEST_F(OldBatchCommandTest, TheWaysOfTheFormFindTheirOwnAreas) {
  cad::Database db = cad::Database::createDefault();
  cad::BlockRecord& frame = db.addBlock("TK_A3");
  AddFrame(db, frame, 0, 0, 42000, 29700);
  db.append(*db.modelSpace(), MakeInsert(frame, {0, 0, 0}));
  db.append(*db.modelSpace(), MakeInsert(frame, {50000, 0, 0}));
  AddFrame(db, *db.modelSpace(), 0, 40000, 42000, 29700).layer = db.addLayer("FRAMES").id;
  AddFrame(db, *db.modelSpace(), 50000, 40000, 42000, 29700);
  const std::string drawing = Write("ways.dxf", db);
  struct Case {
    const char* name;
    std::vector<std::string> form;  // answers up to OK
    std::vector<std::string> range;
    std::size_t files;
  };
  const Case cases[] = {
      {"blocks named", {"1 tk_a3"}, {""}, 2},
      {"blocks picked", {"1", "W -1000,-1000 93000,31000"}, {""}, 2},
      {"rectangles on the named layer", {"指定图层上封闭矩形 FRAMES"}, {""}, 1},
      {"rectangles picked, inserts are none", {"3"}, {"ALL"}, 2},
      {"groups widened by the margin", {"5", "6 100"}, {"W -1000,-1000 43000,31000", ""}, 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const fs::path out = dir_ / (std::string("ways-") + std::to_string(&c - cases));
    fs::create_directories(out);
    std::vector<std::string> answers = c.form;
    answers.insert(answers.end(), {"打印到PLT文件", ""});
    answers.insert(answers.end(), c.range.begin(), c.range.end());
    answers.insert(answers.end(), {"Y", out.string()});
    const RunResult r = Batch(drawing, answers);
    ASSERT_EQ(r.exitCode, 0) << r.out;
    EXPECT_EQ(FilesIn(out).size(), c.files) << r.out;
  }
}

TEST_F(OldBatchCommandTest, PickedPointsWithUndoAndTheFormsChoicesKeptInTheDrawing) {
  const std::string plan = Plan();
  const fs::path out = dir_ / "picked";
  fs::create_directories(out);
  const fs::path saved = dir_ / "saved.dxf";
  // "自行选点确定", PLT on; two pairs, the second taken back, a half pair taken back, Enter.
  RunResult r = Run({"run", plan, "TV_BatchPlot_16", "--answer", "自行选点确定", "--answer", "9", "--answer", "",
                     "--answer", "0,0", "--answer", "42000,29700", "--answer", "47000,0", "--answer", "76700,42000",
                     "--answer", "u", "--answer", "47000,0", "--answer", "U", "--answer", "", "--answer", "Y",
                     "--answer", out.string(), "--save-as", saved.string()});
  ASSERT_EQ(r.exitCode, 0) << r.out;
  EXPECT_TRUE(Has(r.out, "已撤销第 2 个打印范围")) << r.out;
  EXPECT_TRUE(Has(r.out, "共有 1 张图纸打印，现在开始打印 ？")) << r.out;
  EXPECT_EQ(FilesIn(out), std::vector<std::string>{"plan-001.plt"});
  EXPECT_FALSE(Has(ReadFile(saved), "Temp_PlotRec")) << "the numbered rectangles are gone";

  // The form opens on the saved drawing as it was left.
  r = Batch(saved.string(), {"C"});
  EXPECT_TRUE(Has(r.out, "(●) 自行选点确定")) << r.out;
  EXPECT_TRUE(Has(r.out, "[√] 打印到PLT文件")) << r.out;
}

TEST_F(OldBatchCommandTest, RunsThatCannotPlotSayWhyAndWriteNothing) {
  cad::Database printer = FramesInARow({{42000, 29700}});
  printer.layoutsInTabOrder().front()->plot.plotterName = "HP LaserJet 5200";
  const std::string onPrinter = Write("printer.dxf", printer);
  struct Case {
    const char* name;
    std::string drawing;
    std::vector<std::string> answers;
    const char* message;
  };
  const Case cases[] = {
      {"no rectangle picked", Plan(), {"3", "9", "", ""}, "未找到打印区域 !"},
      {"no point picked", Plan(), {"4", "9", "", "0,0", ""}, "未找到打印区域 !"},
      {"no block chosen", Plan(), {"1", "", "", "C"}, "请先选择指定图块名 !"},
      {"no copies", Plan(), {"7 0", "C"}, "打印份数不能小于 1 !"},
      {"a layout without a printer", Plan(), {"3", ""}, "不能打印到纸张 !"},
      {"a printer the print server doesn't have", onPrinter, {"3", "", "ALL", "Y"}, "“HP LaserJet 5200”无法使用"},
      {"answered No", Plan(), {"3", "9", "", "ALL", "N"}, "共有 2 张图纸打印"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const RunResult r = Batch(c.drawing, c.answers);
    EXPECT_TRUE(Has(r.out, c.message)) << r.out;
    EXPECT_FALSE(Has(r.out, "已打印到文件")) << r.out;
  }
  const RunResult r = Batch(onPrinter, {"3", "7 2", "", "ALL", ""});
  EXPECT_TRUE(Has(r.out, "共有 1 张图纸打印，打印 2 份，现在开始打印 ？")) << r.out;
  EXPECT_EQ(Count(r.out, "第 1 张图纸未能打印，批打印中止 !"), 1u) << "the run stops at the first failure";
  EXPECT_EQ(FilesIn(dir_.path()), (std::vector<std::string>{"plan.dxf", "printer.dxf"})) << "nothing beside the drawings";
}

}  // namespace
}  // namespace tv::cli
