// External references through the built program, in folders laid out as offices keep them: the
// frame of a sheet drawn in an xref, its title block read from there, the xrefs `info` lists, a
// missing one told once per run by every command, and outputs that never replace an xref file.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "../support/tvplot_test.h"
#include "../support/xref_drawings.h"

#include "cad/database.h"
#include "examples/sample_drawing.h"
#include "examples/sample_kit.h"
#include "examples/sample_library.h"
#include "titleblock/tk_library.h"

namespace tv::cli {
namespace {

namespace fs = std::filesystem;
namespace kit = samples::kit;

using test_support::AddXrefBlock;
using test_support::Count;
using test_support::FilesIn;
using test_support::Has;
using test_support::Place;
using test_support::ReadFile;
using test_support::RunProgram;
using test_support::RunResult;
using test_support::TempDir;
using test_support::WriteDrawing;

kit::FrameStyle StyleOf(cad::Database& db) {
  kit::FrameStyle style;
  style.frameLayer = kit::AddLayer(db, "图框", 4).id;
  style.textLayer = kit::AddLayer(db, "文字", 3).id;
  style.textStyle = db.addTextStyle("HZ").id;
  return style;
}

// A frame drawn in paper millimetres in the model space of a drawing of its own, as offices keep
// their title blocks; a layer of notes that is off, frozen and not plotted comes along.
cad::Database FrameXref(const kit::Sheet& sheet) {
  cad::Database db = cad::Database::createDefault();
  const kit::FrameStyle style = StyleOf(db);
  kit::DrawFrame(db, *db.modelSpace(), style, {0, 0}, sheet, 1, false, {"建施-01", "一层平面图", "1:100", "2026.11"});
  cad::Layer& notes = kit::AddLayer(db, "说明", 1);
  notes.on = false;
  notes.setFrozen(true);
  notes.plottable = false;
  return db;
}

// A plan: a grid of lines 30 m by 20 m.
cad::Database PlanXref() {
  cad::Database db = cad::Database::createDefault();
  const cad::ObjectId axis = kit::AddLayer(db, "轴线", 1).id;
  for (int i = 0; i <= 6; ++i) kit::AddLine(db, *db.modelSpace(), {i * 5000.0, 0}, {i * 5000.0, 20000}, axis);
  for (int j = 0; j <= 4; ++j) kit::AddLine(db, *db.modelSpace(), {0, j * 5000.0}, {30000, j * 5000.0}, axis);
  return db;
}

// 项目/建施/A-101.dxf places the frame 项目/xref/图框A1.dxf at 1:100 and a plan saved on another
// machine, found beside the drawing.
class XrefCommandTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_FALSE(dir_.path().empty());
    frame_ = WriteDrawing(project_ / "xref" / "图框A1.dxf", FrameXref(kit::kA1));
    plan_ = WriteDrawing(project_ / "建施" / "平面.dxf", PlanXref());
    tk_ = (dir_ / "titleblocks.tk").string();
    ASSERT_TRUE(titleblock::SaveTkFileTo(samples::BuildTitleBlockLibrary(), tk_, false));
  }
  // The drawing with the frame saved as `framePath` and the plan; a missing xref too when asked.
  std::string Host(const std::string& framePath, bool withMissing = false, bool withPlan = true) {
    cad::Database db = cad::Database::createDefault();
    Place(db, AddXrefBlock(db, "图框A1", framePath), {0, 0, 0}, 100);
    if (withPlan) Place(db, AddXrefBlock(db, "平面", "D:\\工程\\旧项目\\平面.dxf"), {10000, 10000, 0});
    if (withMissing) {
      cad::BlockRecord& missing = AddXrefBlock(db, "总图", "..\\总图\\总平面.dxf");
      Place(db, missing, {0, 0, 0});
      for (const char* name : {"布局A", "布局B"}) Place(db, missing, {}, 1, db.blockOf(db.addLayout(name)));
    }
    return WriteDrawing(project_ / "建施" / "A-101.dxf", db);
  }
  RunResult Run(std::vector<std::string> args) { return RunProgram(TV_TVPLOT_PATH, args); }

  TempDir dir_{"tv_xref_cli"};
  fs::path project_ = dir_ / "项目";
  std::string frame_, plan_, tk_;
};

TEST_F(XrefCommandTest, AFrameDrawnInAnXrefIsASheetWhereverItsFileIsFound) {
  struct Case {
    const char* what;
    std::string saved;
  };
  for (const Case& c : {Case{"relative", "..\\xref\\图框A1.dxf"}, Case{"absolute", frame_},
                        Case{"beside the drawing", "D:\\项目\\xref\\图框A1.dxf"}}) {
    SCOPED_TRACE(c.what);
    if (std::string(c.what) == "beside the drawing") fs::copy_file(frame_, project_ / "建施" / "图框A1.dxf");
    const std::string host = Host(c.saved);
    const RunResult r = Run({"sheets", host, "--json"});
    ASSERT_EQ(r.exitCode, 0) << r.err << r.out;
    EXPECT_TRUE(Has(r.out, "\"count\": 1")) << r.out;
    EXPECT_TRUE(Has(r.out, "A1")) << r.out;
    EXPECT_FALSE(Has(r.err, "外部参照")) << r.err;
  }
}

TEST_F(XrefCommandTest, WithoutItsFileTheFrameIsMissedAndToldOnce) {
  fs::remove(frame_);
  const std::string host = Host("..\\xref\\图框A1.dxf", false, false);
  const RunResult r = Run({"sheets", host});
  EXPECT_EQ(r.exitCode, 4) << r.err << r.out;
  EXPECT_EQ(Count(r.err, "外部参照 图框A1 未找到（..\\xref\\图框A1.dxf）"), 1u) << r.err;
  EXPECT_TRUE(Has(r.err, "未找到图框")) << r.err;
}

TEST_F(XrefCommandTest, EveryCommandTellsAMissingXrefOnceAndGoesOn) {
  const std::string host = Host("..\\xref\\图框A1.dxf", true);
  const fs::path out = dir_ / "out";
  const std::string notice = "外部参照 总图 未找到（..\\总图\\总平面.dxf）";
  struct Case {
    const char* what;
    std::vector<std::string> args;
    int exitCode;
  };
  // The library defines no frame of this set's: titleblock goes on to find none.
  for (const Case& c : {Case{"info", {"info", host}, 0}, Case{"info json", {"info", host, "--json"}, 0},
                        Case{"sheets", {"sheets", host}, 0}, Case{"plot", {"plot", host, "--out", out.string()}, 0},
                        Case{"titleblock", {"titleblock", host, "--tk", tk_}, 4},
                        Case{"run", {"run", host, "_-plotstamp on"}, 0}}) {
    SCOPED_TRACE(c.what);
    const RunResult r = Run(c.args);
    EXPECT_EQ(r.exitCode, c.exitCode) << r.err << r.out;
    EXPECT_EQ(Count(r.err, notice), 1u) << r.err;
    EXPECT_FALSE(Has(r.out, notice)) << "notices go with the errors, not the listing";
  }
  EXPECT_EQ(FilesIn(out), std::vector<std::string>{"A-10101.pdf"});
}

TEST_F(XrefCommandTest, InfoListsEachXrefWithItsFileAndTheLayersItBrought) {
  const std::string host = Host("..\\xref\\图框A1.dxf", true);
  const RunResult text = Run({"info", host});
  ASSERT_EQ(text.exitCode, 0) << text.err;
  EXPECT_TRUE(Has(text.out, "外部参照 (3)")) << text.out;
  EXPECT_TRUE(Has(text.out, frame_)) << text.out;
  EXPECT_TRUE(Has(text.out, plan_)) << text.out;
  EXPECT_TRUE(Has(text.out, "未找到")) << text.out;
  EXPECT_TRUE(Has(text.out, "图框A1|说明")) << text.out;

  const RunResult json = Run({"info", host, "--json"});
  ASSERT_EQ(json.exitCode, 0) << json.err;
  EXPECT_TRUE(Has(json.out, "{\"name\": \"图框A1\", \"savedPath\": \"..\\\\xref\\\\图框A1.dxf\", \"path\": \"" + frame_ +
                                "\", \"state\": \"loaded\"")) << json.out;
  EXPECT_TRUE(Has(json.out, "{\"name\": \"总图\", \"savedPath\": \"..\\\\总图\\\\总平面.dxf\", \"path\": null, \"state\": \"notFound\""))
      << json.out;
  // The layers keep their states under the xref's name; layer 0 stays the drawing's own.
  EXPECT_TRUE(Has(json.out, "{\"name\": \"图框A1|说明\", \"on\": false, \"frozen\": true, \"locked\": false, \"plottable\": false, \"color\": 1"))
      << json.out;
  EXPECT_TRUE(Has(json.out, "{\"name\": \"图框A1|图框\", \"on\": true")) << json.out;
  EXPECT_TRUE(Has(json.out, "{\"name\": \"平面|轴线\"")) << json.out;
  EXPECT_FALSE(Has(json.out, "图框A1|0\"")) << json.out;
}

TEST_F(XrefCommandTest, ATitleBlockDefinitionNamesAnXrefAndItsTextsAreTheFields) {
  // The library's A2 frame, drawn in a file of its own with its values written over it.
  cad::Database xref = cad::Database::createDefault();
  const kit::FrameStyle style = StyleOf(xref);
  Place(xref, kit::MakePlainFrameBlock(xref, style, samples::kTitleFrameA2, kit::kA2), {});
  const cad::Point2d o = kit::TitleGridOrigin(kit::kA2);
  auto write = [&](const kit::Box& cell, std::string text) {
    kit::AddText(xref, *xref.modelSpace(), std::move(text), {o.x + cell.min.x + 4, o.y + cell.min.y + 3}, style.textLayer,
                 style.textStyle);
  };
  write(kit::kCellDrawingNo, "建施-05");
  write(kit::kCellTitle, "二层平面图");
  write(kit::kCellDate, "2026.11.25");
  WriteDrawing(project_ / "xref" / "标准图框A2.dxf", xref);

  cad::Database db = cad::Database::createDefault();
  Place(db, AddXrefBlock(db, samples::kTitleFrameA2, "..\\xref\\标准图框A2.dxf"), {0, 0, 0}, 100);
  const std::string host = WriteDrawing(project_ / "建施" / "A-201.dxf", db);

  const RunResult r = Run({"titleblock", host, "--tk", tk_, "--json"});
  ASSERT_EQ(r.exitCode, 0) << r.err << r.out;
  EXPECT_TRUE(Has(r.out, "\"count\": 1")) << r.out;
  EXPECT_TRUE(Has(r.out, "\"file_name\": \"建施-05_二层平面图_2026.11.25\"")) << r.out;
}

TEST_F(XrefCommandTest, AnOutputThatWouldReplaceAnXrefFileIsRefused) {
  const std::string host = Host("..\\xref\\图框A1.dxf");
  const std::string bytes = ReadFile(frame_);
  const fs::path out = dir_ / "out";
  fs::create_directories(out);
  fs::create_hard_link(frame_, out / "A-10101.pdf");
  const RunResult r = Run({"plot", host, "--out", out.string()});
  EXPECT_EQ(r.exitCode, 5) << r.err << r.out;
  EXPECT_TRUE(Has(r.err, "第 1 张图纸未打印")) << r.err;
  EXPECT_TRUE(ReadFile(frame_) == bytes) << "the xref file is never replaced";

  const RunResult save = Run({"run", host, "_-plotstamp on", "--save-as", frame_});
  EXPECT_NE(save.exitCode, 0) << save.err << save.out;
  EXPECT_TRUE(ReadFile(frame_) == bytes) << "nor saved over";
}

TEST_F(XrefCommandTest, InfoShowsNestedAttachmentsLoadedAndNestedOverlaysLeftOut) {
  WriteDrawing(project_ / "xref" / "轴网.dxf", PlanXref());
  WriteDrawing(project_ / "xref" / "底图.dxf", PlanXref());
  cad::Database plan = PlanXref();
  Place(plan, AddXrefBlock(plan, "轴网", "轴网.dxf"), {});
  Place(plan, AddXrefBlock(plan, "底图", "底图.dxf", true), {});
  WriteDrawing(project_ / "xref" / "平面.dxf", plan);
  cad::Database db = cad::Database::createDefault();
  Place(db, AddXrefBlock(db, "平面", "..\\xref\\平面.dxf"), {});
  const std::string host = WriteDrawing(project_ / "建施" / "A-102.dxf", db);

  const RunResult r = Run({"info", host, "--json"});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_TRUE(r.err.empty()) << r.err;
  for (const std::string& part :
       {std::string("{\"name\": \"平面|轴网\", \"savedPath\": \"轴网.dxf\", \"path\": \"") + (project_ / "xref" / "轴网.dxf").string() +
            "\", \"state\": \"loaded\", \"overlay\": false, \"depth\": 2}",
        std::string("{\"name\": \"平面|底图\", \"savedPath\": \"底图.dxf\", \"path\": null, \"state\": \"overlay\", \"overlay\": true, \"depth\": 2}"),
        std::string("\"name\": \"平面|轴线\""), std::string("\"name\": \"轴网|轴线\"")})
    EXPECT_TRUE(Has(r.out, part)) << part << '\n' << r.out;
  EXPECT_FALSE(Has(r.out, "底图|")) << r.out;
}

TEST_F(XrefCommandTest, ACycleOfXrefsIsRefusedAndTheRunEnds) {
  cad::Database a = cad::Database::createDefault();
  Place(a, AddXrefBlock(a, "B", "B.dxf"), {});
  cad::Database b = cad::Database::createDefault();
  Place(b, AddXrefBlock(b, "A", "A.dxf"), {});
  WriteDrawing(dir_ / "B.dxf", b);
  const std::string host = WriteDrawing(dir_ / "A.dxf", a);
  const RunResult r = Run({"info", host});
  EXPECT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(Count(r.err, "外部参照 A 循环引用（A.dxf），未加载"), 1u) << r.err;
}

}  // namespace
}  // namespace tv::cli
