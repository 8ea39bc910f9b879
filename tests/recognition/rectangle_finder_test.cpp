#include <algorithm>
#include <string>

#include "drawing_fixture.h"
#include "host/entity.h"
#include "recognition/rectangle_finder.h"
#include "recognition/sheet_geometry.h"
#include "settings/config.h"

namespace tv::recognition {
namespace {

using test::DrawingTest;

class RectangleFinderTest : public DrawingTest {
 protected:
  void TearDown() override {
    settings::GlobalConfig() = settings::Config{};
    DrawingTest::TearDown();
  }

  static void UseBlocks(bool all, bool rect) {
    settings::GlobalConfig().frame_all_blocks = all ? 1 : 0;
    settings::GlobalConfig().frame_rect_blocks = rect ? 1 : 0;
  }

  ObjectId AddRect(Point2d lo, Point2d hi) { return AddLw({lo, {hi.x, lo.y}, hi, {lo.x, hi.y}}, true); }
  ObjectId AddTriangle(Point2d lo, Point2d hi) { return AddLw({lo, {hi.x, lo.y}, {lo.x, hi.y}}, true); }

  ObjectId AddHidden(std::unique_ptr<cad::Entity> e, ObjectId layer, bool visible) {
    e->layer = layer;
    e->setVisible(visible);
    return db().appendEntity(model(), std::move(e)).id;
  }

  // Classifies the ids and orders the candidates largest first, as a scan does.
  TempIdArray Candidates(const ObjectIdArray& ids) {
    TempIdArray candidates, lines;
    ClassifyEntities(ids, candidates, lines);
    std::stable_sort(candidates.begin(), candidates.end(), [](const Temp_Id& a, const Temp_Id& b) { return a.area > b.area; });
    return candidates;
  }

  void Examine(TempIdArray& candidates) {
    ExamineCandidates(candidates, master_, model().id, ObjectId{}, frameIds_, plainIds_, [this] { ++ticks_; });
  }

  static ObjectIdArray IdsOf(const TempIdArray& records) {
    ObjectIdArray ids;
    for (const Temp_Id& r : records) ids.push_back(r.id);
    return ids;
  }
  static ObjectIdArray SourcesOf(const SheetList& sheets) {
    ObjectIdArray ids;
    for (const auto& s : sheets) ids.push_back(s->sourceIds[0]);
    return ids;
  }

  SheetList master_;
  ObjectIdArray frameIds_, plainIds_;
  int ticks_ = 0;
};

// ---- classification ---------------------------------------------------------------------------------

TEST_F(RectangleFinderTest, InsertsCountWhateverTheirVisibilityOtherEntitiesOnlyWhenShown) {
  cad::Layer& off = db().addLayer("OFF");
  off.on = false;
  cad::Layer& frozen = db().addLayer("FROZEN");
  frozen.setFrozen(true);
  cad::BlockRecord& def = db().addBlock("B");
  AddLine({0, 0, 0}, {10, 10, 0}, &def);

  auto insertOn = [&](ObjectId layer, bool visible) { return AddHidden(test_support::MakeInsert(def, {}), layer, visible); };
  auto polylineOn = [&](ObjectId layer, bool visible) {
    return AddHidden(test_support::MakeLwPolyline({{0, 0}, {100, 0}, {100, 50}}, false), layer, visible);
  };
  auto lineOn = [&](ObjectId layer, bool visible) { return AddHidden(test_support::MakeLine({}, {100, 0, 0}), layer, visible); };
  const ObjectIdArray inserts = {insertOn({}, true), insertOn({}, false), insertOn(off.id, true), insertOn(frozen.id, true)};
  const ObjectId shownPolyline = polylineOn({}, true);
  const ObjectIdArray hiddenPolylines = {polylineOn({}, false), polylineOn(off.id, true), polylineOn(frozen.id, true)};
  const ObjectId shownLine = lineOn({}, true);
  const ObjectId slantedLine = AddLine({0, 0, 0}, {100, 100, 0});
  const ObjectId hiddenLine = lineOn(off.id, true);
  const ObjectId polyline2d = AddPolyline({{0, 0}, {5, 0}, {5, 5}}, false, false);
  const ObjectId polyline3d = AddPolyline({{0, 0}, {5, 0}, {5, 5}}, false, true);
  const ObjectId circleId = Append(test_support::MakeCircle({}, 50)).id;
  Open();

  ObjectIdArray all = inserts;
  all.insert(all.end(), {shownPolyline, shownLine, slantedLine, hiddenLine, polyline2d, polyline3d, circleId, ObjectId{999999}});
  all.insert(all.end(), hiddenPolylines.begin(), hiddenPolylines.end());

  TempIdArray candidates, lines;
  ClassifyEntities(all, candidates, lines);
  ObjectIdArray expected = inserts;
  expected.insert(expected.end(), {shownPolyline, polyline2d, polyline3d});
  EXPECT_EQ(IdsOf(candidates), expected);
  EXPECT_EQ(candidates[0].kind, TempKind::BlockReference);
  EXPECT_EQ(candidates[4].kind, TempKind::Polyline);
  EXPECT_DOUBLE_EQ(candidates[4].area, 0.1 * 0.05);
  EXPECT_EQ(IdsOf(lines), ObjectIdArray{shownLine});
  EXPECT_EQ(lines[0].kind, TempKind::Line);

  // Without loose-line frames lines are not even measured; open polylines stay candidates.
  settings::GlobalConfig().frame_loose_lines = 0;
  candidates.clear();
  lines.clear();
  ClassifyEntities(all, candidates, lines);
  EXPECT_TRUE(lines.empty());
  EXPECT_EQ(IdsOf(candidates), expected);
}

// ---- single candidates ---------------------------------------------------------------------------------

TEST_F(RectangleFinderTest, PolylineSheetsGoToTheFrontAndTakeTheCandidatesBox) {
  const ObjectId first = AddRect({0, 0}, {420, 297});
  const ObjectId second = AddRect({500, 0}, {920, 297});
  const ObjectId triangle = AddTriangle({0, 500}, {100, 600});
  Open();
  const TempIdArray candidates = Candidates({first, second, triangle});
  ASSERT_EQ(candidates.size(), 3u);

  SheetList batch;
  EXPECT_TRUE(TryPolylineSheet(candidates[0], batch, model().id, ObjectId{}));
  EXPECT_TRUE(TryPolylineSheet(candidates[1], batch, model().id, ObjectId{}));
  EXPECT_FALSE(TryPolylineSheet(candidates[2], batch, model().id, ObjectId{}));
  ASSERT_EQ(SourcesOf(batch), (ObjectIdArray{second, first}));
  const Plot_Drawing1& s = *batch[1];
  EXPECT_EQ(s.kind, SheetKind::Polyline);
  EXPECT_EQ(s.spaceId, model().id);
  EXPECT_DOUBLE_EQ(s.maxX, 420.0);
  EXPECT_DOUBLE_EQ(s.unitFactor, 1.0);
  EXPECT_FALSE(s.markerId.isNull());

  // The box is the candidate's, not the vertices'.
  Temp_Id wider = candidates[0];
  wider.extents = Extents3d({-5, -5, 0}, {425, 302, 0});
  EXPECT_TRUE(TryPolylineSheet(wider, batch, model().id, ObjectId{}));
  EXPECT_DOUBLE_EQ(batch[0]->minX, -5.0);

  // A marker refused leaves no sheet.
  Temp_Id flat = candidates[0];
  flat.extents = Extents3d({0, 0, 0}, {420, 0, 0});
  EXPECT_FALSE(TryPolylineSheet(flat, batch, model().id, ObjectId{}));
  EXPECT_EQ(batch.size(), 3u);
}

// ---- the candidate loop -----------------------------------------------------------------------------------

TEST_F(RectangleFinderTest, LoopTakesSheetsAndLeavesTheRestInOrder) {
  cad::BlockRecord& def = db().addBlock("B");
  AddLine({0, 0, 0}, {300, 200, 0}, &def);
  cad::BlockRecord& framed = db().addBlock("F");
  AddLw({{0, 0}, {300, 0}, {300, 200}, {0, 200}}, true, &framed);
  const ObjectId big = AddRect({0, 0}, {841, 594});
  const ObjectId insert = AddInsert(def, {2000, 0, 0}).id;
  const ObjectId frameInsert = AddInsert(framed, {3000, 0, 0}).id;
  const ObjectId open = AddLw({{2000, 1000}, {2400, 1000}, {2400, 1300}}, false);
  const ObjectId small = AddRect({5000, 0}, {5100, 50});
  const ObjectId triangle = AddTriangle({6000, 0}, {6010, 10});
  Open();
  const ObjectIdArray ids = {big, insert, frameInsert, open, small, triangle};

  // Inserts neither taken nor wanted stay where they were, for the line stage.
  UseBlocks(false, false);
  TempIdArray candidates = Candidates(ids);
  Examine(candidates);
  EXPECT_EQ(SourcesOf(master_), (ObjectIdArray{small, big}));
  EXPECT_EQ(IdsOf(candidates), (ObjectIdArray{open, insert, frameInsert, triangle}));

  // Every insert is a sheet.
  master_.clear();
  UseBlocks(true, true);
  candidates = Candidates(ids);
  Examine(candidates);
  EXPECT_EQ(IdsOf(candidates), (ObjectIdArray{open, triangle}));
  EXPECT_EQ(master_.size(), 4u);
  EXPECT_TRUE(frameIds_.empty()) << "taking every insert needs no verdicts";

  // Only inserts that draw their own frame; the other leaves the list all the same.
  master_.clear();
  UseBlocks(false, true);
  candidates = Candidates(ids);
  Examine(candidates);
  EXPECT_EQ(IdsOf(candidates), (ObjectIdArray{open, triangle}));
  EXPECT_EQ(master_.size(), 3u);
  EXPECT_EQ(master_[0]->sourceIds[0], frameInsert) << "frame blocks skip the batch";
  EXPECT_EQ(frameIds_, ObjectIdArray{framed.id});
  EXPECT_EQ(plainIds_, ObjectIdArray{def.id});
  EXPECT_EQ(ticks_, 0);
}

TEST_F(RectangleFinderTest, EachBatchOfFiftyPurgesTheContentsOfItsFrames) {
  // 120 equal frames in a row; each holds a small rectangle and a triangle.
  ObjectIdArray frames, inner, triangles;
  for (int k = 0; k < 120; ++k) {
    const double x = k * 1000.0;
    frames.push_back(AddRect({x, 0}, {x + 841, 594}));
    inner.push_back(AddRect({x + 100, 100}, {x + 300, 250}));
    triangles.push_back(AddTriangle({x + 400, 100}, {x + 500, 200}));
  }
  Open();
  ObjectIdArray ids = triangles;
  ids.insert(ids.end(), inner.begin(), inner.end());
  ids.insert(ids.end(), frames.begin(), frames.end());
  TempIdArray candidates = Candidates(ids);
  Examine(candidates);

  // The frames come first; after the 50th and the 100th the contents of those frames left the list
  // before they were looked at. The last 20 frames were never purged: their small rectangles became
  // sheets and their triangles stayed.
  EXPECT_EQ(ticks_, 2);
  EXPECT_EQ(master_.size(), 140u);
  EXPECT_EQ(IdsOf(candidates), ObjectIdArray(triangles.begin() + 100, triangles.end()));
  std::size_t withContent = 0;
  for (const auto& s : master_) withContent += s->hasContent ? 1 : 0;
  EXPECT_EQ(withContent, 100u);
  const ObjectIdArray sources = SourcesOf(master_);
  for (int k = 0; k < 120; ++k) {
    const bool isSheet = std::find(sources.begin(), sources.end(), inner[k]) != sources.end();
    EXPECT_EQ(isSheet, k >= 100) << "inner rectangle " << k;
  }
}

}  // namespace
}  // namespace tv::recognition
