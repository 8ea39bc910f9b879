// `tvplot` on drawings made to exhaust it: blocks nested to double their content at every level,
// MINSERT grids of a billion copies, frames too large for any number type of a list. Each run must
// end quickly with the sheets it can tell, and say when it left content out.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "../support/frame_drawings.h"
#include "../support/multiplying_blocks.h"
#include "../support/tvplot_test.h"

namespace tv::cli {
namespace {

namespace fs = std::filesystem;

using namespace test_support;

constexpr const char* kCutMessage = "图块嵌套过深或图形过多，已略去部分内容";

void Frame(cad::Database& db, double x0, double y0, double width, double height) {
  AddFrame(db, *db.modelSpace(), x0, y0, width, height, false);
}

// An A3 frame at 1:100 holding blocks that double their lines at every level.
cad::Database DoublingDrawing(int levels) {
  cad::Database db = cad::Database::createDefault();
  Frame(db, 0, 0, 42000, 29700);
  test_support::DoublingBlocks(db, levels, {10000, 10000, 0});
  return db;
}

// An A3 frame at 1:100 holding a MINSERT of a small block, `count` x `count` cells `spacing` apart.
cad::Database HugeGrid(int count, double spacing) {
  cad::Database db = cad::Database::createDefault();
  Frame(db, 0, 0, 42000, 29700);
  GridOfCopies(db, count, spacing);
  return db;
}

using HostileDrawingTest = TvplotTest;

TEST_F(HostileDrawingTest, BlocksDoublingAtEveryLevelAreListedAndPlottedWithOneNotice) {
  const std::string drawing = Write("doubling.dxf", DoublingDrawing(41));
  const std::string original = ReadFile(drawing);
  ASSERT_LT(original.size(), 200'000u);

  const RunResult sheets = Run({"sheets", drawing});
  ASSERT_EQ(sheets.exitCode, 0) << sheets.err << sheets.out;
  EXPECT_TRUE(Has(sheets.out, "1 张")) << sheets.out;
  EXPECT_TRUE(Has(sheets.out, "A3 (420x297)")) << sheets.out;
  EXPECT_EQ(Count(sheets.out + sheets.err, kCutMessage), 1u) << sheets.out << sheets.err;

  const fs::path out = dir_ / "out";
  const RunResult plot = Run({"plot", drawing, "--out", out.string()});
  ASSERT_EQ(plot.exitCode, 0) << plot.err << plot.out;
  EXPECT_EQ(FilesIn(out), std::vector<std::string>{"doubling01.pdf"});
  EXPECT_EQ(Count(plot.out + plot.err, kCutMessage), 1u) << plot.out << plot.err;
  EXPECT_EQ(ReadFile(drawing), original);
}

TEST_F(HostileDrawingTest, ShallowDoublingNeedsNoNotice) {
  // Ten levels are a thousand lines: all of them are drawn and nothing is said.
  const std::string drawing = Write("shallow.dxf", DoublingDrawing(10));
  const RunResult sheets = Run({"sheets", drawing});
  ASSERT_EQ(sheets.exitCode, 0) << sheets.err << sheets.out;
  EXPECT_TRUE(Has(sheets.out, "1 张")) << sheets.out;
  const RunResult plot = Run({"plot", drawing, "--out", (dir_ / "out").string(), "--format", "png"});
  ASSERT_EQ(plot.exitCode, 0) << plot.err << plot.out;
  for (const RunResult* r : {&sheets, &plot}) EXPECT_FALSE(Has(r->out + r->err, kCutMessage)) << r->out << r->err;
}

TEST_F(HostileDrawingTest, MInsertGridsAreDrawnWithinBounds) {
  struct Case {
    const char* name;
    int count;
    double spacing;
    bool notice;  // copies were left out
  };
  // Copies that fall on one point are one copy; a grid of distinct copies is drawn up to a bound.
  for (const Case& c : {Case{"onepoint", 32767, 1e-300, false}, Case{"spread", 32767, 1.0, true}, Case{"small", 20, 50.0, false}}) {
    SCOPED_TRACE(c.name);
    const std::string drawing = Write(std::string(c.name) + ".dxf", HugeGrid(c.count, c.spacing));
    const RunResult sheets = Run({"sheets", drawing});
    ASSERT_EQ(sheets.exitCode, 0) << sheets.err << sheets.out;
    EXPECT_TRUE(Has(sheets.out, "1 张")) << sheets.out;

    const fs::path out = dir_ / c.name;
    const RunResult plot = Run({"plot", drawing, "--out", out.string()});
    ASSERT_EQ(plot.exitCode, 0) << plot.err << plot.out;
    EXPECT_EQ(FilesIn(out).size(), 1u);
    EXPECT_EQ(Count(plot.out + plot.err, kCutMessage), c.notice ? 1u : 0u) << plot.out << plot.err;
  }
}

TEST_F(HostileDrawingTest, HugeSheetSizesAreShownAsSuch) {
  cad::Database db = cad::Database::createDefault();
  Frame(db, 0, 0, 1e308, 297);
  auto line = std::make_unique<cad::Line>();
  line->start = {10, 10, 0};
  line->end = {100, 200, 0};
  db.append(*db.modelSpace(), std::move(line));
  const std::string drawing = Write("huge.dxf", db);
  const RunResult text = Run({"sheets", drawing, "--skip-blank", "off"});
  ASSERT_EQ(text.exitCode, 0) << text.err << text.out;
  EXPECT_TRUE(Has(text.out, "1e+308x297")) << text.out;
  const RunResult json = Run({"sheets", drawing, "--skip-blank", "off", "--json"});
  ASSERT_EQ(json.exitCode, 0) << json.err << json.out;
  EXPECT_TRUE(Has(json.out, "\"size\": \"1e+308x297\"")) << json.out;
  for (const RunResult* r : {&text, &json}) EXPECT_FALSE(Has(r->out, "2147483")) << r->out;
}

TEST_F(HostileDrawingTest, PaperOfAHugeSizeOrScaleEndsCleanly) {
  for (const char* size : {"1e308x297", "297x1e308", "1e30x1e30"}) {
    SCOPED_TRACE(size);
    const RunResult r = Run({"paper", size});
    EXPECT_TRUE(r.exitCode == 0 || r.exitCode == 1) << r.exitCode << r.err;
    EXPECT_FALSE(Has(r.out, "-2147483648")) << r.out;
  }
  const RunResult scaled = Run({"paper", "420x297", "--scale", "1e300"});
  EXPECT_TRUE(scaled.exitCode == 0 || scaled.exitCode == 1) << scaled.exitCode << scaled.err;
  EXPECT_FALSE(Has(scaled.out, "-2147483648")) << scaled.out;
}

}  // namespace
}  // namespace tv::cli
