#include <string>

#include "drawing_fixture.h"
#include "host/entity.h"
#include "recognition/rectangle_finder.h"
#include "recognition/sheet_geometry.h"
#include "settings/config.h"

namespace tv::recognition {
namespace {

using test::DrawingTest;

class FrameBlockTest : public DrawingTest {
 protected:
  void TearDown() override {
    settings::GlobalConfig() = settings::Config{};
    DrawingTest::TearDown();
  }

  // A closed rectangle of four lines, or of three lines and the fourth side as a polyline segment.
  void AddFourLines(cad::BlockRecord& def, Point2d lo, Point2d hi, bool lastAsPolyline = false) {
    AddLine({lo.x, lo.y, 0}, {hi.x, lo.y, 0}, &def);
    AddLine({hi.x, hi.y, 0}, {hi.x, lo.y, 0}, &def);  // drawn downwards: ends may come either way
    AddLine({lo.x, hi.y, 0}, {hi.x, hi.y, 0}, &def);
    if (lastAsPolyline)
      AddLw({{lo.x, hi.y}, {lo.x, lo.y}}, false, &def);
    else
      AddLine({lo.x, hi.y, 0}, {lo.x, lo.y, 0}, &def);
  }

  void AddRectangle(cad::BlockRecord& def, Point2d lo, Point2d hi, ObjectId layer = {}) {
    AddLw({lo, {hi.x, lo.y}, hi, {lo.x, hi.y}}, true, &def, layer);
  }

  Temp_Id CandidateOf(ObjectId insert) {
    TempIdArray records;
    EXPECT_TRUE(MakeTempId(TempKind::BlockReference, insert, records));
    return records.empty() ? Temp_Id{} : records[0];
  }

  // Runs the frame-block test on each insert in turn with shared caches.
  void Judge(std::initializer_list<ObjectId> inserts) {
    for (ObjectId id : inserts) AddFrameBlockSheet(CandidateOf(id), master_, model().id, ObjectId{}, frameIds_, plainIds_);
  }

  bool HoldsFrame(ObjectId insert) {
    const host::Entity e = host::OpenEntity(insert);
    const Extents3d box = EntityExtentsOpen(e, false, false);
    MatrixStack stack;
    const bool found = BlockHoldsFrame(e, box.min, box.max, stack);
    EXPECT_TRUE(stack.empty()) << "the stack must come back as it went in";
    return found;
  }

  SheetList master_;
  ObjectIdArray frameIds_, plainIds_;
};

TEST_F(FrameBlockTest, SegmentsMatchWithinTheToleranceEitherWayRound) {
  const Point3d p{0.5, -0.5, 0}, q{100.5, 0.2, 0};
  EXPECT_TRUE(SegmentMatches(p, q, 0, 0, 100, 0, 1.0));
  EXPECT_TRUE(SegmentMatches(q, p, 0, 0, 100, 0, 1.0));
  EXPECT_FALSE(SegmentMatches(p, q, 0, 0, 100, 0, 0.5)) << "the tolerance is strict";
  EXPECT_FALSE(SegmentMatches(p, q, 0, 0, 0, 100, 1.0));
  EXPECT_FALSE(SegmentMatches(p, p, 0, 0, 100, 0, 1.0)) << "both ends must match";
}

TEST_F(FrameBlockTest, FourLinesOfOneDefinitionMakeAFrameAPolylineSideDoesNot) {
  cad::BlockRecord& lines = db().addBlock("LINES");
  AddFourLines(lines, {0, 0}, {420, 297});
  AddLine({25, 10, 0}, {400, 280, 0}, &lines);  // content
  cad::BlockRecord& mixed = db().addBlock("MIXED");
  AddFourLines(mixed, {0, 0}, {420, 297}, true);
  const ObjectId a = AddInsert(lines, {0, 0, 0}).id;
  const ObjectId b = AddInsert(lines, {1000, 0, 0}, 2.0).id;
  const ObjectId c = AddInsert(mixed, {0, 1000, 0}).id;
  Open();
  EXPECT_TRUE(HoldsFrame(a));
  EXPECT_TRUE(HoldsFrame(b));
  EXPECT_FALSE(HoldsFrame(c));

  Judge({a, b, c});
  ASSERT_EQ(master_.size(), 2u);
  EXPECT_EQ(master_[0]->sourceIds[0], a);
  EXPECT_EQ(master_[0]->kind, SheetKind::Block);
  EXPECT_EQ(master_[1]->sourceIds[0], b);
  EXPECT_DOUBLE_EQ(master_[1]->unitFactor, 2.0);
  EXPECT_DOUBLE_EQ(master_[1]->maxX, 1840.0);
  EXPECT_FALSE(master_[1]->markerId.isNull());
  EXPECT_EQ(frameIds_, ObjectIdArray{lines.id});
  EXPECT_EQ(plainIds_, ObjectIdArray{mixed.id});
}

TEST_F(FrameBlockTest, SidesMustStandInOneDefinitionButARectangleMayBeNested) {
  // Two sides here and two in a child: no level holds all four.
  cad::BlockRecord& halfChild = db().addBlock("HALF_CHILD");
  AddLine({0, 0, 0}, {420, 0, 0}, &halfChild);
  AddLine({420, 0, 0}, {420, 297, 0}, &halfChild);
  cad::BlockRecord& split = db().addBlock("SPLIT");
  AddLine({0, 297, 0}, {420, 297, 0}, &split);
  AddLine({0, 0, 0}, {0, 297, 0}, &split);
  AddInsert(halfChild, {0, 0, 0}, 1.0, &split);

  // The rectangle two levels down, scaled and moved on the way.
  cad::BlockRecord& grandChild = db().addBlock("BORDER");
  AddRectangle(grandChild, {0, 0}, {210, 148.5});
  cad::BlockRecord& child = db().addBlock("SHEET");
  AddInsert(grandChild, {10, 10, 0}, 2.0, &child);
  AddLine({100, 100, 0}, {200, 150, 0}, &child);
  cad::BlockRecord& parent = db().addBlock("TITLE");
  AddInsert(child, {0, 0, 0}, 1.0, &parent);
  AddText("DRAWING NO.", {300, 400, 0}, 5, &parent);  // text outside the frame doesn't count

  const ObjectId splitInsert = AddInsert(split, {0, 0, 0}).id;
  const ObjectId nested = AddInsert(parent, {5000, 0, 0}).id;
  Open();
  EXPECT_FALSE(HoldsFrame(splitInsert));
  EXPECT_TRUE(HoldsFrame(nested));

  Judge({splitInsert, nested});
  ASSERT_EQ(master_.size(), 1u);
  EXPECT_EQ(master_[0]->sourceIds[0], nested);
  // The sheet is the insert's full extents, text included, though the frame was matched without it.
  EXPECT_GT(master_[0]->maxY, 400.0);
  EXPECT_EQ(frameIds_, ObjectIdArray{parent.id});
  EXPECT_EQ(plainIds_, ObjectIdArray{split.id});
}

TEST_F(FrameBlockTest, HiddenOrMisplacedRectanglesAreNoFrame) {
  cad::Layer& frozen = db().addLayer("FROZEN");
  frozen.setFrozen(true);
  cad::BlockRecord& hidden = db().addBlock("HIDDEN");
  AddRectangle(hidden, {0, 0}, {420, 297}, frozen.id);
  AddLine({0, 0, 0}, {420, 297, 0}, &hidden);
  // The rectangle lies inside the content's box, not on its edge.
  cad::BlockRecord& inner = db().addBlock("INNER");
  AddRectangle(inner, {20, 20}, {400, 277});
  AddLine({0, 0, 0}, {420, 297, 0}, &inner);
  const ObjectId a = AddInsert(hidden, {0, 0, 0}).id;
  const ObjectId b = AddInsert(inner, {1000, 0, 0}).id;
  Open();
  EXPECT_FALSE(HoldsFrame(a));
  EXPECT_FALSE(HoldsFrame(b));
}

TEST_F(FrameBlockTest, EachDynamicInsertIsJudgedOnItsOwn) {
  cad::BlockRecord& dynamic = db().addBlock("DYN_FRAME");
  db().ensureDictionary(db().ensureExtensionDictionary(dynamic), "ACAD_ENHANCEDBLOCK");
  AddRectangle(dynamic, {0, 0}, {420, 297});
  cad::BlockRecord& dynamicPlain = db().addBlock("DYN_DOOR");
  db().ensureDictionary(db().ensureExtensionDictionary(dynamicPlain), "ACAD_ENHANCEDBLOCK");
  AddLine({0, 0, 0}, {90, 200, 0}, &dynamicPlain);

  const ObjectId d1 = AddInsert(dynamic, {0, 0, 0}).id;
  const ObjectId d2 = AddInsert(dynamic, {1000, 0, 0}).id;
  const ObjectId p1 = AddInsert(dynamicPlain, {2000, 0, 0}).id;
  Open();

  Judge({d1, d2, p1});
  EXPECT_EQ(master_.size(), 2u);
  EXPECT_TRUE(frameIds_.empty()) << "no verdict is kept for a dynamic definition";
  EXPECT_TRUE(plainIds_.empty());
}

TEST_F(FrameBlockTest, FramesAreMatchedInWorkingCoordinates) {
  cad::BlockRecord& def = db().addBlock("FRAME");
  AddFourLines(def, {0, 0}, {594, 420});
  AddRectangle(def, {25, 10}, {584, 410});
  const ObjectId insert = AddInsert(def, {100, 200, 0}).id;
  Open();
  // A quarter turn keeps the frame on the axes, with every coordinate exchanged.
  UseUcs(Matrix3d::rotation(kPi / 2));
  EXPECT_TRUE(HoldsFrame(insert));
  Judge({insert});
  ASSERT_EQ(master_.size(), 1u);
  EXPECT_TRUE(master_[0]->rotated);
  EXPECT_NEAR(master_[0]->sizeX, 420.0, 1e-9);
}

}  // namespace
}  // namespace tv::recognition
