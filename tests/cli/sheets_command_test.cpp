// `tvplot sheets` as users run it: the built program on the sample drawings, written to a
// temporary folder, checked for the review list, its JSON form, the range and the exit codes.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "../support/tvplot_test.h"
#include "examples/sample_drawing.h"

namespace tv::cli {
namespace {

namespace fs = std::filesystem;

using namespace test_support;

class SheetsCommandTest : public TvplotTest {
 protected:
  static RunResult Sheets(std::vector<std::string> args) {
    args.insert(args.begin(), "sheets");
    return Run(args);
  }

  const std::string sample_ = Write("sample.dxf", samples::BuildSampleDrawing());
};

TEST_F(SheetsCommandTest, ReviewListOfEverySpaceWithPaperScaleAndSize) {
  const auto before = fs::last_write_time(sample_);
  const RunResult r = Sheets({sample_});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  for (const char* column : {"序 号", "纸张尺寸", "打印比例", "图面尺寸", "备 注"}) EXPECT_TRUE(Has(r.out, column)) << column;
  EXPECT_TRUE(Has(r.out, "17 张")) << r.out;
  // Model space first, then the layouts in tab order: spaces never interleave.
  const std::size_t lastModel = r.out.rfind("Model"), firstLayout = r.out.find("布局1");
  ASSERT_NE(firstLayout, std::string::npos) << r.out;
  EXPECT_LT(lastModel, firstLayout);
  EXPECT_LT(firstLayout, r.out.find("布局2"));
  EXPECT_TRUE(Has(r.out, "A0 (1189x841)")) << r.out;
  EXPECT_TRUE(Has(r.out, "118900x84100")) << r.out;
  // Reading a drawing never writes it.
  EXPECT_EQ(fs::last_write_time(sample_), before);
}

TEST_F(SheetsCommandTest, JsonNamesEverySheetAndTheRangeNarrowsIt) {
  const RunResult model = Sheets({sample_, "--range", "model", "--json"});
  ASSERT_EQ(model.exitCode, 0) << model.err;
  EXPECT_TRUE(Has(model.out, "\"count\": 13")) << model.out;
  EXPECT_EQ(Count(model.out, "\"number\": "), 13u);
  EXPECT_EQ(Count(model.out, "\"layout\": \"Model\""), 13u);
  for (const char* key : {"\"kind\": ", "\"minX\": ", "\"maxY\": ", "\"sizeX\": ", "\"rotated\": ", "\"paperName\": \"TV_A",
                          "\"paper\": \"A", "\"scale\": 100"})
    EXPECT_TRUE(Has(model.out, key)) << key;

  const RunResult layouts = Sheets({sample_, "--range", "layouts", "--json"});
  ASSERT_EQ(layouts.exitCode, 0) << layouts.err;
  EXPECT_TRUE(Has(layouts.out, "\"count\": 4")) << layouts.out;
  EXPECT_FALSE(Has(layouts.out, "\"layout\": \"Model\""));

  // A filter of 30 % keeps only sheets of at least 30 % of the largest one's area.
  const RunResult filtered = Sheets({sample_, "--range", "model", "--filter", "30", "--json"});
  ASSERT_EQ(filtered.exitCode, 0) << filtered.err;
  EXPECT_LT(Count(filtered.out, "\"number\": "), 13u);
}

TEST_F(SheetsCommandTest, SettingsOfRecognitionChangeWhatCounts) {
  // The sample has frames of all three kinds: 0 polyline, 1 loose lines, 2 block.
  const RunResult all = Sheets({sample_, "--range", "model", "--json"});
  ASSERT_EQ(all.exitCode, 0) << all.err;
  for (const char* kind : {"\"kind\": 0", "\"kind\": 1", "\"kind\": 2"}) EXPECT_TRUE(Has(all.out, kind)) << kind;

  const RunResult polylines = Sheets({sample_, "--range", "model", "--blocks", "none", "--loose-lines", "off", "--json"});
  ASSERT_EQ(polylines.exitCode, 0) << polylines.err;
  EXPECT_TRUE(Has(polylines.out, "\"kind\": 0"));
  EXPECT_FALSE(Has(polylines.out, "\"kind\": 1"));
  EXPECT_FALSE(Has(polylines.out, "\"kind\": 2"));
}

TEST_F(SheetsCommandTest, OptionsSteerOneListingAndLeaveTheUsersSettingsAlone) {
  const std::string home = (dir_.path() / "home").string();
  fs::create_directories(home);
  const RunResult narrowed =
      Run({"sheets", sample_, "--loose-lines", "off", "--order", "7"}, "", home);
  ASSERT_EQ(narrowed.exitCode, 0) << narrowed.err;
  const RunResult shown = Run({"config", "show"}, "", home);
  ASSERT_EQ(shown.exitCode, 0) << shown.err;
  EXPECT_TRUE(Has(shown.out, "frame_loose_lines      1")) << shown.out;
  EXPECT_TRUE(Has(shown.out, "sort_style            1")) << shown.out;
  // Without options the listing follows the configuration again: loose-line frames count.
  const RunResult plain = Run({"sheets", sample_, "--range", "model", "--json"}, "", home);
  ASSERT_EQ(plain.exitCode, 0) << plain.err;
  EXPECT_TRUE(Has(plain.out, "\"kind\": 1"));
}

TEST_F(SheetsCommandTest, ExitCodesTellWhatWentWrong) {
  const std::string empty = Write("empty.dxf", cad::Database::createDefault());
  const RunResult none = Sheets({empty});
  EXPECT_EQ(none.exitCode, 4);
  EXPECT_TRUE(Has(none.err + none.out, "未找到图框")) << none.err;

  EXPECT_EQ(Sheets({(dir_.path() / "missing.dxf").string()}).exitCode, 2);
}

}  // namespace
}  // namespace tv::cli
