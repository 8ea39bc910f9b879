// The outer frame: its box by the settings, and the command drawing it around a selection.
#include <gtest/gtest.h>

#include <cmath>

#include "../support/entity_builders.h"
#include "../support/tvplot_test.h"
#include "aids/outer_frame.h"
#include "cad/drawing_file.h"
#include "drawing_diff.h"

namespace tv::aids {
namespace {

using namespace test_support;

TEST(OuterFrameBox, WidensByTheSettingsAndGrowsToOneToRootTwo) {
  const double r2 = std::sqrt(2.0);
  const struct {
    const char* what;
    FrameBox content;
    OuterFrameOptions options;
    FrameBox frame;
  } cases[] = {
      {"as it is", {0, 0, 40, 10}, {0, 7, 9, 0}, {0, 0, 40, 10}},
      {"fixed margin", {0, 0, 40, 10}, {1, 5, 9, 0}, {-5, -5, 45, 15}},
      {"percent of the short side", {0, 0, 40, 10}, {2, 0, 10, 0}, {-1, -1, 41, 11}},
      {"percent of a tall content", {0, 0, 10, 40}, {2, 0, 10, 0}, {-1, -1, 11, 41}},
      {"square grows wide", {0, 0, 10, 10}, {0, 0, 0, 1}, {5 - 5 * r2, 0, 5 + 5 * r2, 10}},
      {"wide and thin grows high", {0, 0, 40, 10}, {0, 0, 0, 1}, {0, 5 - 20 / r2, 40, 5 + 20 / r2}},
      {"tall and narrow grows wide", {0, 0, 10, 40}, {0, 0, 0, 1}, {5 - 20 / r2, 0, 5 + 20 / r2, 40}},
      {"nearly square and tall grows high", {0, 0, 10, 12}, {0, 0, 0, 1}, {0, 6 - 5 * r2, 10, 6 + 5 * r2}},
      {"margin first, then the proportion", {0, 0, 8, 8}, {1, 1, 0, 1}, {4 - 5 * r2, -1, 4 + 5 * r2, 9}},
  };
  for (const auto& c : cases) {
    const FrameBox f = OuterFrameBox(c.content, c.options);
    EXPECT_NEAR(f.x0, c.frame.x0, 1e-9) << c.what;
    EXPECT_NEAR(f.y0, c.frame.y0, 1e-9) << c.what;
    EXPECT_NEAR(f.x1, c.frame.x1, 1e-9) << c.what;
    EXPECT_NEAR(f.y1, c.frame.y1, 1e-9) << c.what;
  }
}

class OuterFrameCommandTest : public TvplotTest {
 protected:
  void SetUp() override {
    TvplotTest::SetUp();
    cad::Database db = cad::Database::createDefault();
    db.addLayer("FRAME");
    db.header.setString("$CLAYER", "FRAME", 8);
    cad::BlockRecord& ms = *db.modelSpace();
    db.append(ms, MakeLine({0, 0, 0}, {100, 0, 0}));
    db.append(ms, MakeLine({0, 0, 0}, {0, 50, 0}));
    db.append(ms, MakeCircle({500, 500, 0}, 10));  // left out of the selections
    drawing_ = Write("content.dxf", db);
  }
  std::string drawing_;
  const std::string home_ = Path("home").string();
};

TEST_F(OuterFrameCommandTest, DrawsOneClosedRectangleAroundEachSelectionOnTheCurrentLayer) {
  const std::string out = Path("framed.dxf").string();
  // S opens the settings at the prompt: a margin of 5; then two rounds, and Enter ends.
  const RunResult r = Run({"run", drawing_, "TV_BatchPlot_17", "--answer", "S", "--answer", "2 5", "--answer", "",
                           "--answer", "W -1,-1 101,51", "--answer", "W 480,480 520,520", "--answer", "",
                           "--save-as", out},
                          {}, home_);
  ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
  const auto before = RecordsByHandle(drawing_), after = RecordsByHandle(out);
  EXPECT_TRUE(ChangedHandles(before, after).empty());

  cad::DxfReadResult saved = cad::ReadDrawing(out);
  ASSERT_TRUE(saved.ok()) << saved.error;
  std::vector<std::vector<cad::Point2d>> frames;
  for (const std::string& handle : AddedHandles(before, after)) {
    const auto* p = saved.db->objectAs<cad::LwPolyline>(ObjectId::fromHandleText(handle));
    if (!p) continue;
    EXPECT_TRUE(p->isClosed());
    EXPECT_EQ(saved.db->objectAs<cad::Layer>(p->layer)->name, "FRAME");
    frames.push_back(p->points);
  }
  ASSERT_EQ(frames.size(), 2u);
  std::sort(frames.begin(), frames.end(), [](const auto& a, const auto& b) { return a[0].x < b[0].x; });
  const std::vector<cad::Point2d> expected[2] = {{{-5, -5}, {105, -5}, {105, 55}, {-5, 55}},
                                                 {{485, 485}, {515, 485}, {515, 515}, {485, 515}}};
  for (int f = 0; f < 2; ++f) {
    ASSERT_EQ(frames[f].size(), 4u);
    for (int i = 0; i < 4; ++i) {
      EXPECT_NEAR(frames[f][i].x, expected[f][i].x, 1e-6) << f << " " << i;
      EXPECT_NEAR(frames[f][i].y, expected[f][i].y, 1e-6) << f << " " << i;
    }
  }
  // The settings are the user's: the next run finds them.
  const RunResult again = Run({"run", drawing_, "TV_BatchPlot_17", "--answer", "S", "--answer", "C", "--answer", ""},
                              {}, home_);
  EXPECT_NE(again.out.find("(●) 四周外扩固定尺寸  5"), std::string::npos) << again.out;
}

}  // namespace
}  // namespace tv::aids
