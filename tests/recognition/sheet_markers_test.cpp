#include <algorithm>
#include <cmath>

#include "drawing_fixture.h"
#include "host/custom_entity.h"
#include "host/entity.h"
#include "recognition/plot_marker.h"
#include "recognition/sheet_geometry.h"

namespace tv::recognition {
namespace {

using test::DrawingTest;
using test::ExpectBox;
using test::ExpectNear2d;

using Kind = host::DrawnPrimitive::Kind;

std::vector<host::DrawnPrimitive> Draw(const Temp_PlotRec& marker) {
  host::PrimitiveRecorder recorder;
  marker.worldDraw(recorder);
  return recorder.primitives();
}

Temp_PlotRec Marker(std::int32_t number, std::int32_t state, Point2d c0, Point2d c1) {
  Temp_PlotRec m;
  m.number = number;
  m.state = state;
  m.corner0 = Point3d{c0};
  m.corner1 = Point3d{c1};
  return m;
}

bool HasPoint(const host::DrawnPrimitive& p, Point2d q, double tol = 1e-9) {
  return std::any_of(p.points.begin(), p.points.end(),
                     [&](const Point3d& r) { return std::abs(r.x - q.x) <= tol && std::abs(r.y - q.y) <= tol; });
}

// ---- records of scanned entities ----------------------------------------------------------------

class MakeTempIdTest : public DrawingTest {};

TEST_F(MakeTempIdTest, PolylinesAndInsertsCarryTheirScaledArea) {
  const ObjectId frame = AddLw({{0, 0}, {2000, 0}, {2000, 1000}, {0, 1000}}, true);
  cad::BlockRecord& def = db().addBlock("A3");
  AddLw({{0, 0}, {420, 0}, {420, 297}, {0, 297}}, true, &def);
  const ObjectId insert = AddInsert(def, {0, 0, 0}, 100.0).id;
  Open();
  TempIdArray records;
  ASSERT_TRUE(MakeTempId(TempKind::Polyline, frame, records));
  ASSERT_TRUE(MakeTempId(TempKind::BlockReference, insert, records));
  ASSERT_FALSE(MakeTempId(TempKind::Polyline, ObjectId{}, records));
  ASSERT_EQ(records.size(), 2u);
  EXPECT_DOUBLE_EQ(records[0].area, 2.0);
  EXPECT_DOUBLE_EQ(records[1].area, 42.0 * 29.7);
  EXPECT_EQ(records[1].kind, TempKind::BlockReference);
  ExpectNear2d(records[1].maxPt(), {42000, 29700}, 1e-6);
}

// ---- sheets and their markers ----------------------------------------------------------------------

class SheetMarkerTest : public DrawingTest {
 protected:
  void SetUp() override {
    DrawingTest::SetUp();
    source_ = AddLw({{0, 0}, {100, 0}, {100, 300}, {0, 300}}, true);
    Open();
    layer_ = host::FindOrAddLayer("Temp_PlotLayer");
    ASSERT_FALSE(layer_.isNull());
  }

  std::unique_ptr<Plot_Drawing1> NewSheet() {
    auto sheet = std::make_unique<Plot_Drawing1>();
    sheet->sourceIds[0] = source_;
    return sheet;
  }

  const Temp_PlotRec* MarkerOf(const host::Entity& e) { return dynamic_cast<const Temp_PlotRec*>(e.custom()); }

  ObjectId source_;
  ObjectId layer_;
};

TEST_F(SheetMarkerTest, AddMarkerRefusesSheetsWithoutSourceOrSize) {
  Plot_Drawing1 noSource;
  EXPECT_FALSE(AddMarker(noSource, layer_, Extents3d{Point3d{0, 0}, Point3d{100, 300}}, 1.0));
  EXPECT_TRUE(noSource.markerId.isNull());

  auto sheet = NewSheet();
  EXPECT_FALSE(AddMarker(*sheet, layer_, Extents3d{Point3d{5, 5}, Point3d{5, 5}}, 1.0));
  EXPECT_FALSE(AddMarker(*sheet, layer_, Extents3d{}, 1.0));
  EXPECT_FALSE(AddMarker(*sheet, layer_, Extents3d{Point3d{0, 0}, Point3d{1e-05, 100}}, 1.0));
  EXPECT_FALSE(AddMarker(*sheet, layer_, Extents3d{Point3d{0, 0}, Point3d{100, 1e-05}}, 1.0));
  EXPECT_TRUE(sheet->markerId.isNull());
  EXPECT_EQ(sheet->sizeX, 1.0);
  EXPECT_TRUE(AddMarker(*sheet, layer_, Extents3d{Point3d{0, 0}, Point3d{2e-05, 2e-05}}, 1.0));
}

TEST_F(SheetMarkerTest, AddMarkerFillsTheSheetAndAppendsItsMarker) {
  auto sheet = NewSheet();
  ASSERT_TRUE(AddMarker(*sheet, layer_, Extents3d{Point3d{10, 20, 3}, Point3d{110, 320, 3}}, 2.5));
  EXPECT_EQ(sheet->unitFactor, 2.5);
  EXPECT_EQ(sheet->minX, 10.0);
  EXPECT_EQ(sheet->minY, 20.0);
  EXPECT_EQ(sheet->maxX, 110.0);
  EXPECT_EQ(sheet->maxY, 320.0);
  EXPECT_EQ(sheet->sizeX, 100.0);
  EXPECT_EQ(sheet->sizeY, 300.0);
  EXPECT_TRUE(sheet->rotated);
  ASSERT_FALSE(sheet->markerId.isNull());

  const host::Entity e = host::OpenEntity(sheet->markerId);
  ASSERT_TRUE(static_cast<bool>(e));
  EXPECT_EQ(e.layer(), layer_);
  EXPECT_EQ(e.owner(), host::OpenCurrentSpace());
  EXPECT_EQ(e.dxfName(), "Temp_PlotRec");
  const Temp_PlotRec* marker = MarkerOf(e);
  ASSERT_NE(marker, nullptr);
  EXPECT_EQ(marker->number, 0);
  EXPECT_EQ(marker->state, kMarkerActive);
  EXPECT_EQ(marker->corner0, Point3d(10, 20, 0));
  EXPECT_EQ(marker->corner1, Point3d(110, 320, 0));
  EXPECT_FALSE(marker->inUcs);

  auto wide = NewSheet();
  ASSERT_TRUE(AddMarker(*wide, layer_, Extents3d{Point3d{0, 0}, Point3d{300, 100}}, 1.0));
  EXPECT_FALSE(wide->rotated);
}

TEST_F(SheetMarkerTest, MarkerMadeInAUcsKeepsItsState) {
  const Matrix3d ucs = Matrix3d::translation({1000, 0, 0}) * Matrix3d::rotation(kPi / 2);
  UseUcs(ucs);
  auto sheet = NewSheet();
  ASSERT_TRUE(AddMarker(*sheet, layer_, Extents3d{Point3d{0, 0}, Point3d{100, 50}}, 1.0));
  const host::Entity e = host::OpenEntity(sheet->markerId);
  const Temp_PlotRec* marker = MarkerOf(e);
  ASSERT_NE(marker, nullptr);
  EXPECT_TRUE(marker->inUcs);
  EXPECT_TRUE(marker->matrix.isEqualTo(Ucs().worldToUcs));
  // Drawn on the sheet in world coordinates: UCS (x, y) is world (1000 - y, x).
  host::PrimitiveRecorder recorder;
  marker->worldDraw(recorder);
  ExpectBox(recorder.extents(), {950, 0}, {1000, 100}, 1e-9);
}

TEST_F(SheetMarkerTest, SetMarkerChangesOnlyWhatDiffers) {
  auto sheet = NewSheet();
  ASSERT_TRUE(AddMarker(*sheet, layer_, Extents3d{Point3d{0, 0}, Point3d{100, 300}}, 1.0));
  const auto read = [&] {
    const host::Entity e = host::OpenEntity(sheet->markerId);
    const Temp_PlotRec* m = MarkerOf(e);
    return m ? std::pair{m->number, m->state} : std::pair{-99, -99};
  };
  EXPECT_FALSE(SetMarker(*sheet, -1, -1));
  EXPECT_FALSE(SetMarker(*sheet, 0, 0));
  EXPECT_TRUE(SetMarker(*sheet, 7, -1));
  EXPECT_EQ(read(), std::pair(7, 0));
  EXPECT_FALSE(SetMarker(*sheet, 7, -5));
  EXPECT_TRUE(SetMarker(*sheet, -1, kMarkerHighlighted));
  EXPECT_EQ(read(), std::pair(7, 1));
  EXPECT_TRUE(SetMarker(*sheet, 3, kMarkerHidden));
  EXPECT_EQ(read(), std::pair(3, 2));

  Plot_Drawing1 unmarked;
  EXPECT_FALSE(SetMarker(unmarked, 1, 1));
  Plot_Drawing1 pointsElsewhere;
  pointsElsewhere.markerId = source_;  // not a marker
  EXPECT_FALSE(SetMarker(pointsElsewhere, 1, 1));
  pointsElsewhere.markerId = ObjectId{};
}

TEST_F(SheetMarkerTest, DeletingASheetErasesItsMarker) {
  auto sheet = NewSheet();
  ASSERT_TRUE(AddMarker(*sheet, layer_, Extents3d{Point3d{0, 0}, Point3d{100, 300}}, 1.0));
  const ObjectId marker = sheet->markerId;
  ASSERT_TRUE(static_cast<bool>(host::OpenEntity(marker)));
  sheet.reset();
  EXPECT_FALSE(static_cast<bool>(host::OpenEntity(marker)));
  EXPECT_TRUE(listenForErase);
  // The source entity is not the sheet's to erase.
  EXPECT_TRUE(static_cast<bool>(host::OpenEntity(source_)));
}

TEST_F(SheetMarkerTest, ClearingAJobDropsEverySheetAndMarker) {
  SheetJob job;
  ObjectIdArray markers;
  for (int i = 0; i < 3; ++i) {
    auto sheet = NewSheet();
    ASSERT_TRUE(AddMarker(*sheet, layer_, Extents3d{Point3d{i * 200.0, 0}, Point3d{i * 200.0 + 100, 300}}, 1.0));
    markers.push_back(sheet->markerId);
    job.allSheets.push_back(std::move(sheet));
  }
  job.keptSheets.push_back(job.allSheets[1].get());
  job.largestSizeX = 100;
  job.largestSizeY = 300;
  job.Clear();
  EXPECT_TRUE(job.allSheets.empty());
  EXPECT_TRUE(job.keptSheets.empty());
  EXPECT_EQ(job.largestSizeX, 0);
  for (ObjectId id : markers) EXPECT_FALSE(static_cast<bool>(host::OpenEntity(id)));
  EXPECT_TRUE(listenForErase);
}

// ---- what a marker draws ---------------------------------------------------------------------------

TEST(PlotMarkerDrawTest, UnnumberedMarkerIsAThinRingWithACross) {
  const auto prims = Draw(Marker(0, kMarkerActive, {0, 0}, {750, 600}));
  ASSERT_EQ(prims.size(), 4u);
  const double t = 600.0 / 75.0 / 6.0;
  EXPECT_EQ(prims[0].kind, Kind::Polygon);
  EXPECT_EQ(prims[0].points.size(), 9u);
  EXPECT_EQ(prims[1].kind, Kind::Polygon);
  EXPECT_EQ(prims[1].points.size(), 5u);
  for (int i = 0; i < 2; ++i) {
    EXPECT_TRUE(prims[i].filled);
    EXPECT_EQ(prims[i].colorIndex, 1);
  }
  // Outer corners, inner corners and the bottom strip.
  for (Point2d q : {Point2d{0, 600}, Point2d{750, 600}, Point2d{t, 600 - t}, Point2d{750 - t, 600 - t}})
    EXPECT_TRUE(HasPoint(prims[0], q, 1e-9)) << q.x << "," << q.y;
  for (Point2d q : {Point2d{0, 0}, Point2d{750, 0}, Point2d{750, t}, Point2d{0, t}})
    EXPECT_TRUE(HasPoint(prims[1], q, 1e-9)) << q.x << "," << q.y;
  // The ring closes: the strips meet along y = t, the bottom polygon ends where it began.
  EXPECT_EQ(prims[1].points.front(), prims[1].points.back());
  EXPECT_EQ(prims[0].points.front(), prims[0].points.back());

  EXPECT_EQ(prims[2].kind, Kind::Polyline);
  EXPECT_EQ(prims[3].kind, Kind::Polyline);
  EXPECT_TRUE(HasPoint(prims[2], {0, 0}) && HasPoint(prims[2], {750, 600}));
  EXPECT_TRUE(HasPoint(prims[3], {0, 600}) && HasPoint(prims[3], {750, 0}));
}

TEST(PlotMarkerDrawTest, NumberIsDrawnAsDigitsInTheCentreBox) {
  const auto prims = Draw(Marker(12345, kMarkerHighlighted, {0, 0}, {750, 600}));
  ASSERT_GE(prims.size(), 2u + 5u);
  const double t = 600.0 / 75.0;
  EXPECT_TRUE(HasPoint(prims[0], {t, 600 - t}));
  EXPECT_EQ(prims[0].colorIndex, 6);
  const double halfW = (750 - 2 * t) * 0.9 / 2, halfH = (600 - 2 * t) * 0.9 / 2;
  double left = 1e9, right = -1e9;
  const host::DrawnPrimitive* leftmost = nullptr;
  for (std::size_t i = 2; i < prims.size(); ++i) {
    EXPECT_EQ(prims[i].kind, Kind::Polyline);
    for (const Point3d& p : prims[i].points) {
      EXPECT_LE(std::abs(p.x - 375), halfW + 1e-9);
      EXPECT_LE(std::abs(p.y - 300), halfH + 1e-9);
      if (p.x < left) {
        left = p.x;
        leftmost = &prims[i];
      }
      right = std::max(right, p.x);
    }
    EXPECT_FALSE(HasPoint(prims[i], {0, 0}) && HasPoint(prims[i], {750, 600}));
  }
  // Five digits across the middle, the most significant, a plain upright "1", first.
  EXPECT_LT(left, 375 - 100);
  EXPECT_GT(right, 375 + 100);
  ASSERT_NE(leftmost, nullptr);
  EXPECT_EQ(leftmost->points.size(), 2u);
  EXPECT_NEAR(leftmost->points[0].x, leftmost->points[1].x, 1e-9);

  // One digit alone is narrower than five.
  const auto single = Draw(Marker(7, kMarkerActive, {0, 0}, {750, 600}));
  double singleLeft = 1e9;
  for (std::size_t i = 2; i < single.size(); ++i)
    for (const Point3d& p : single[i].points) singleLeft = std::min(singleLeft, p.x);
  EXPECT_GT(singleLeft, left);
}

TEST(PlotMarkerDrawTest, HiddenMarkerDrawsNothing) {
  for (std::int32_t number : {5, 0}) EXPECT_TRUE(Draw(Marker(number, kMarkerHidden, {0, 0}, {100, 100})).empty()) << number;
}

TEST(PlotMarkerDrawTest, CornersGivenTheOtherWayRoundStillFrameTheSheet) {
  host::PrimitiveRecorder recorder;
  Marker(0, kMarkerActive, {750, 600}, {0, 0}).worldDraw(recorder);
  ExpectBox(recorder.extents(), {0, 0}, {750, 600});
  const double t = 600.0 / 75.0 / 6.0;
  ASSERT_FALSE(recorder.primitives().empty());
  EXPECT_TRUE(HasPoint(recorder.primitives()[0], {750 - t, 600 - t}));
}

}  // namespace
}  // namespace tv::recognition
