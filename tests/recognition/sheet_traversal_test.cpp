// From the prompt to a list of sheets: the walk through the spaces, the pipeline on each, empty
// sheets, the filter of small sheets and the order of candidates.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "console/console_editor.h"
#include "host/command_prologue.h"
#include "host/wrappers.h"
#include "recognition/plot_marker.h"
#include "recognition/sheet_geometry.h"
#include "recognition/sheet_traversal.h"
#include "settings/config.h"
#include "settings/plot_setting.h"
#include "drawing_fixture.h"

namespace tv::recognition {
namespace {

using test::DrawingTest;

class TraversalTest : public DrawingTest {
 protected:
  void TearDown() override {
    job_.Clear();
    settings::GlobalConfig() = settings::Config{};
    settings::CurrentPlotSetting() = settings::PlotSettingRec{};
    host::ShowTimings = false;
    DrawingTest::TearDown();
  }

  ObjectId AddRect(Point2d min, Point2d max, cad::BlockRecord* block = nullptr, ObjectId layer = {}) {
    return AddLw({min, {max.x, min.y}, max, {min.x, max.y}}, true, block, layer);
  }
  // A frame with a line of content in its middle.
  ObjectId AddFrame(Point2d min, Point2d max, cad::BlockRecord* block = nullptr) {
    const double w = max.x - min.x, h = max.y - min.y;
    AddLine({min.x + w * 0.3, min.y + h * 0.5}, {min.x + w * 0.7, min.y + h * 0.5}, block);
    return AddRect(min, max, block);
  }
  void Answer(std::vector<std::string> answers) { session_->editor().answers().pushFront(answers); }
  // Enter at the prompt, then the item of the choice form (1-based as typed).
  bool Walk(int item) {
    Answer({"", std::to_string(item)});
    return FindSheets(job_);
  }
  cad::BlockRecord& PaperSpaceOf(cad::Layout& layout) { return *db().blockOf(layout); }

  SheetJob job_;
};

TEST_F(TraversalTest, ZigzagSweepsAcrossTheNarrowerSide) {
  std::vector<Point3d> points{{9, 9, 9}};
  ZigzagPoints(points, {0, 0, 0}, {30, 100, 0}, 3);  // tall: sweeps along x
  ASSERT_EQ(points.size(), 8u);
  EXPECT_EQ(points[0], Point3d(0, 0, 0));
  EXPECT_EQ(points[1], Point3d(0, 100, 0));
  EXPECT_EQ(points[2], Point3d(10, 0, 0));
  EXPECT_EQ(points[7], Point3d(30, 100, 0));

  ZigzagPoints(points, {0, 0, 0}, {100, 30, 0}, 90);  // wide: sweeps along y
  ASSERT_EQ(points.size(), 182u);
  EXPECT_EQ(points[0], Point3d(0, 0, 0));
  EXPECT_EQ(points[1], Point3d(100, 0, 0));
  EXPECT_NEAR(points[181].y, 30.0, 1e-12);
}

TEST_F(TraversalTest, AreaOrderTakesTheSideListFromTenThousandOn) {
  Open();
  host::ShowTimings = true;
  for (std::size_t count : {num_max - 1, num_max}) {
    out_.str("");
    TempIdArray candidates(count);
    const double special[] = {0.0, -0.0, std::numeric_limits<double>::infinity(), 1e-300, 1e300};
    for (std::size_t i = 0; i < count; ++i) {
      candidates[i].id = ObjectId(i + 1);
      candidates[i].area = i % 13 == 0 ? special[(i / 13) % 5] : static_cast<double>((i * 7919) % 1000);
    }
    SortByArea(candidates);
    // Largest first, and equal areas (0 and -0 among them) in the order they came.
    EXPECT_TRUE(std::is_sorted(candidates.begin(), candidates.end(), [](const Temp_Id& a, const Temp_Id& b) {
      return a.area > b.area || (a.area == b.area && a.id.value < b.id.value);
    }));
    EXPECT_EQ(candidates.front().area, std::numeric_limits<double>::infinity());
    const bool sideList = out_.str().find("超出num_max的部分放入temp_lib") != std::string::npos;
    EXPECT_EQ(sideList, count == num_max) << count;
    EXPECT_EQ(out_.str().find("后面部分按大小插入") != std::string::npos, count == num_max);
  }
}

TEST_F(TraversalTest, ModelWalkFindsTheThreeKindsAndDropsStrayAndNestedRectangles) {
  // A polyline frame holding a nested frame, a block frame, a frame of loose lines and a stray
  // rectangle with nothing in it.
  AddFrame({0, 0}, {841, 594});
  AddFrame({100, 100}, {400, 300});
  cad::BlockRecord& def = db().addBlock("FRAME");
  AddRect({0, 0}, {420, 297}, &def);
  AddInsert(def, {1000, 0});
  for (auto [a, b] : {std::pair<Point2d, Point2d>{{2000, 0}, {2594, 0}}, {{2000, 420}, {2594, 420}},
                      {{2000, 0}, {2000, 420}}, {{2594, 0}, {2594, 420}}})
    AddLine(Point3d{a}, Point3d{b});
  AddLine({2100, 200}, {2400, 200});
  AddRect({3000, 0}, {3200, 100});
  Open();

  ASSERT_TRUE(Walk(1));
  ASSERT_EQ(job_.allSheets.size(), 3u);
  std::vector<SheetKind> kinds;
  for (const auto& s : job_.allSheets) {
    kinds.push_back(s->kind);
    EXPECT_EQ(s->spaceId, host::ModelSpaceId());
  }
  EXPECT_EQ(std::count(kinds.begin(), kinds.end(), SheetKind::Polyline), 1);
  EXPECT_EQ(std::count(kinds.begin(), kinds.end(), SheetKind::Block), 1);
  EXPECT_EQ(std::count(kinds.begin(), kinds.end(), SheetKind::Lines), 1);
  EXPECT_EQ(job_.largestSizeX, 841);
  EXPECT_EQ(job_.largestSizeY, 594);
  for (const auto& s : job_.allSheets) EXPECT_GE(s->sequence, 0);
  // The markers live on their own layer, which doesn't plot.
  const ObjectId layer = host::FindOrAddLayer("Temp_PlotLayer");
  EXPECT_FALSE(host::GetLayerFlag(layer, host::kLayerPlottable));
}

TEST_F(TraversalTest, CancelAndNothingFound) {
  AddRect({0, 0}, {100, 100});  // empty: dropped as stray
  Open();
  Answer({"^C"});
  EXPECT_FALSE(FindSheets(job_));
  EXPECT_EQ(out_.str().find("未选择到"), std::string::npos);

  Answer({"", "^C"});
  EXPECT_FALSE(FindSheets(job_));
  EXPECT_EQ(out_.str().find("未选择到"), std::string::npos);

  EXPECT_FALSE(Walk(1));
  EXPECT_NE(out_.str().find("\n未选择到矩形或图块！！！"), std::string::npos);
}

TEST_F(TraversalTest, LayoutWalkKeepsSpacesAndReturnsToTheFirstActive) {
  cad::Layout& first = db().addLayout("布局A");
  first.tabOrder = 2;
  cad::Layout& second = db().addLayout("布局B");
  second.tabOrder = 1;
  AddFrame({0, 0}, {420, 297}, &PaperSpaceOf(first));
  AddFrame({0, 0}, {297, 210}, &PaperSpaceOf(second));
  AddFrame({0, 0}, {841, 594});
  Open();
  const ObjectId startSpace = host::OpenCurrentSpace();

  ASSERT_TRUE(Walk(2));  // "所有布局"
  ASSERT_EQ(job_.allSheets.size(), 2u);
  // Ascending tab order: 布局B first.
  EXPECT_EQ(job_.allSheets[0]->spaceId, PaperSpaceOf(second).id);
  EXPECT_EQ(job_.allSheets[1]->spaceId, PaperSpaceOf(first).id);
  EXPECT_EQ(host::OpenCurrentSpace(), startSpace);

  ASSERT_TRUE(Walk(3));  // "布局+模型"
  EXPECT_EQ(job_.allSheets.size(), 3u);
}

TEST_F(TraversalTest, SelectionSkipsHiddenPolylinesButNotInserts) {
  cad::Layer& off = db().addLayer("关闭");
  off.on = false;
  const ObjectId rect = AddFrame({0, 0}, {420, 297});
  db().entity(rect)->layer = off.id;
  cad::BlockRecord& def = db().addBlock("FRAME");
  AddRect({0, 0}, {420, 297}, &def);
  const ObjectId insert = AddInsert(def, {1000, 0}, 1.0, nullptr, off.id).id;
  Open();
  Answer({"H " + rect.handleText() + " " + insert.handleText()});
  ASSERT_TRUE(FindSheets(job_));
  ASSERT_EQ(job_.allSheets.size(), 1u);
  EXPECT_EQ(job_.allSheets[0]->sourceIds[0], insert);
  EXPECT_TRUE(job_.allSheets[0]->spaceId.isNull());
  EXPECT_EQ(job_.allSheets[0]->sequence, 1);
}

TEST_F(TraversalTest, EmptySheetsGoUnlessFencesOrAViewportFindSomething) {
  // Only a text in the outer 2.5% margin: empty.
  AddRect({0, 0}, {1000, 1000});
  AddText("边", {5, 500, 0}, 5);
  // Only a small circle on a vertical of the finest fence, clear of the coarser ones: kept.
  AddRect({2000, 0}, {3000, 1000});
  auto circle = std::make_unique<cad::Circle>();
  circle->center = {2000 + 25 + 950.0 / 90 * 4, 600, 0};
  circle->radius = 2;
  Append(std::move(circle));
  Open();
  ASSERT_TRUE(Walk(1));
  ASSERT_EQ(job_.allSheets.size(), 1u);
  EXPECT_DOUBLE_EQ(job_.allSheets[0]->minX, 2000);

  // Without the option both stay.
  settings::GlobalConfig().skip_blank_rect = 0;
  ASSERT_TRUE(Walk(1));
  EXPECT_EQ(job_.allSheets.size(), 2u);
}

TEST_F(TraversalTest, ALayoutSheetHoldingOnlyAViewportIsNotEmpty) {
  cad::Layout& layout = db().addLayout("布局1");
  cad::BlockRecord& paper = PaperSpaceOf(layout);
  AddRect({0, 0}, {420, 297}, &paper);
  auto vp = std::make_unique<cad::Viewport>();
  vp->center = {210, 150, 0};
  vp->width = 300;
  vp->height = 200;
  vp->status = 2;
  vp->number = 2;
  db().append(paper, std::move(vp));
  AddRect({1000, 0}, {1420, 297}, &paper);  // no viewport: empty
  Open();
  ASSERT_TRUE(Walk(2));
  ASSERT_EQ(job_.allSheets.size(), 1u);
  EXPECT_DOUBLE_EQ(job_.allSheets[0]->minX, 0);
}

TEST_F(TraversalTest, RotatedUcsFindsFramesSquareToIt) {
  const Matrix3d ucs = Matrix3d::rotation(kPi / 6);
  auto square = [&](Point2d min, Point2d max) {
    std::vector<Point2d> pts;
    for (Point2d p : {min, Point2d{max.x, min.y}, max, Point2d{min.x, max.y}}) pts.push_back(ucs.transform(Point3d{p}).to2d());
    AddLine(ucs.transform(Point3d{(min.x + max.x) / 2, (min.y + max.y) / 2}),
            ucs.transform(Point3d{(min.x + max.x) / 2 + 10, (min.y + max.y) / 2}));
    return AddLw(pts, true);
  };
  const ObjectId inUcs = square({0, 0}, {420, 297});
  const ObjectId inWorld = AddFrame({2000, 0}, {2420, 297});
  Open();
  ASSERT_TRUE(host::CurrentEditor().setCurrentUcs(ucs));
  ASSERT_TRUE(Walk(1));
  ASSERT_EQ(job_.allSheets.size(), 1u);
  EXPECT_EQ(job_.allSheets[0]->sourceIds[0], inUcs);
  EXPECT_NEAR(job_.allSheets[0]->sizeX, 420, 1e-6);
  EXPECT_TRUE(Ucs().active);

  ASSERT_TRUE(host::CurrentEditor().setCurrentUcs(Matrix3d::identity()));
  ASSERT_TRUE(Walk(1));
  ASSERT_EQ(job_.allSheets.size(), 1u);
  EXPECT_EQ(job_.allSheets[0]->sourceIds[0], inWorld);
  EXPECT_FALSE(Ucs().active);
}

TEST_F(TraversalTest, FilterHidesSheetsBelowThePercentageOfTheLargest) {
  AddFrame({0, 0}, {1000, 1000});
  AddFrame({2000, 0}, {2100, 100});  // 1% of the largest area
  AddFrame({3000, 0}, {3500, 500});  // 25%
  Open();
  ASSERT_TRUE(Walk(1));
  ASSERT_EQ(job_.allSheets.size(), 3u);

  EXPECT_EQ(FilterSheets(job_), 3u);  // 0% keeps every sheet of positive area
  settings::CurrentPlotSetting().filter_ratio = 0.5;
  EXPECT_EQ(FilterSheets(job_), 3u);
  settings::CurrentPlotSetting().filter_ratio = 20.0;
  EXPECT_EQ(FilterSheets(job_), 2u);
  settings::CurrentPlotSetting().filter_ratio = 30.0;
  EXPECT_EQ(FilterSheets(job_), 1u);
  // A lower percentage brings hidden sheets back.
  settings::CurrentPlotSetting().filter_ratio = 0.0;
  EXPECT_EQ(FilterSheets(job_), 3u);
}

TEST_F(TraversalTest, ShowExtentsOnlyGrowsTheView) {
  Open();
  host::ZoomView({0, 0}, {1600, 900});
  const host::ViewRect before = host::ShowActiveView();
  ShowExtents(Extents3d({100, 100, 0}, {200, 200, 0}));
  const host::ViewRect same = host::ShowActiveView();
  EXPECT_DOUBLE_EQ(same.lowerLeft.x, before.lowerLeft.x);
  EXPECT_DOUBLE_EQ(same.upperRight.y, before.upperRight.y);

  ShowExtents(Extents3d({-1000, 0, 0}, {200, 5000, 0}));
  const host::ViewRect grown = host::ShowActiveView();
  EXPECT_LE(grown.lowerLeft.x, -1000);
  EXPECT_GE(grown.upperRight.y, 5000);
  EXPECT_GE(grown.upperRight.x, before.upperRight.x);
}

}  // namespace
}  // namespace tv::recognition
