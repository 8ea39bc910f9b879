#include <cmath>
#include <optional>
#include <vector>

#include "drawing_fixture.h"
#include "host/entity.h"
#include "recognition/extents_internal.h"
#include "recognition/sheet_geometry.h"

namespace tv::recognition {
namespace {

using test::DrawingTest;
using test::ExpectBox;

// A clamped quadratic spline through `a` and `c`, pulled towards `b`.
std::unique_ptr<cad::Spline> Quadratic(Point3d a, Point3d b, Point3d c) {
  auto s = std::make_unique<cad::Spline>();
  s->degree = 2;
  s->controlPoints = {a, b, c};
  s->knots = {0, 0, 0, 1, 1, 1};
  return s;
}

class EntityExtentsTest : public DrawingTest {
 protected:
  // BlockExtents of a reference into a fresh box; nullopt when it reports nothing.
  std::optional<Extents3d> ContentOf(ObjectId insertId, bool withText = true, bool exactSplines = true) {
    const host::Entity insert = host::OpenEntity(insertId);
    EXPECT_TRUE(static_cast<bool>(insert));
    Extents3d box;
    if (!BlockExtents(insert, box, withText, exactSplines)) {
      EXPECT_TRUE(box.isEmpty()) << "a failed BlockExtents must leave the box alone";
      return std::nullopt;
    }
    return box;
  }

  cad::Layer& AddLayer(const std::string& name, bool off, bool frozen) {
    cad::Layer& layer = db().addLayer(name);
    layer.on = !off;
    layer.setFrozen(frozen);
    return layer;
  }
};

TEST_F(EntityExtentsTest, TextWithoutTextIsADegenerateBoxAtTheOrigin) {
  const ObjectId text = AddText("ABC", {100, 100, 0}, 10).id;
  const ObjectId mtext = AddMText("ABC", {300, 100, 0}, 10, 50).id;
  Open();
  for (ObjectId id : {text, mtext}) {
    const host::Entity e = host::OpenEntity(id);
    const Extents3d without = EntityExtentsOpen(e, false, true);
    // Not empty: it joins a union and pulls it to the origin, as callers expect of it.
    EXPECT_FALSE(without.isEmpty());
    EXPECT_EQ(without.min, Point3d(0, 0, 0));
    EXPECT_EQ(without.max, Point3d(0, 0, 0));
    const Extents3d with = EntityExtentsOpen(e, true, true);
    ASSERT_FALSE(with.isEmpty());
    EXPECT_GT(with.min.x, 99.0);
  }
}

TEST_F(EntityExtentsTest, MissingOrErasedEntitiesHaveNoExtents) {
  const ObjectId gone = AddLine({0, 0, 0}, {10, 0, 0});
  const ObjectId kept = AddLine({0, 0, 0}, {10, 5, 0});
  Open();
  ASSERT_TRUE(host::EraseEntity(gone));
  EXPECT_TRUE(EntityExtents(gone).isEmpty());
  EXPECT_TRUE(EntityExtents(ObjectId{}).isEmpty());
  ExpectBox(EntityExtents(kept), {0, 0}, {10, 5});
  EXPECT_TRUE(EntityExtentsOpen(host::Entity{}, true, true).isEmpty());
}

TEST_F(EntityExtentsTest, SelectionExtentsIsTheUnion) {
  const ObjectId a = AddLine({-5, 2, 0}, {10, 2, 0});
  const ObjectId b = AddLine({20, -3, 0}, {20, 40, 0});
  Open();
  ExpectBox(SelectionExtents({ObjectId{}, a, b}), {-5, -3}, {20, 40});
  EXPECT_TRUE(SelectionExtents({}).isEmpty());
}

TEST_F(EntityExtentsTest, RotatedUcsMeasuresInWorkingCoordinates) {
  const ObjectId line = AddLine({0, 0, 0}, {10, 0, 0});
  cad::BlockRecord& def = db().addBlock("FRAME");
  AddLine({0, 0, 0}, {100, 50, 0}, &def);
  const ObjectId insert = AddInsert(def, {0, 0, 0}).id;
  Open();
  // World x becomes -y of the UCS, world y its x.
  UseUcs(Matrix3d::rotation(kPi / 2));
  ExpectBox(EntityExtents(line), {0, -10}, {0, 0}, 1e-9);
  ExpectBox(EntityExtents(insert), {0, -100}, {50, 0}, 1e-9);
  ResetUcs();
  ExpectBox(EntityExtents(line), {0, 0}, {10, 0});
}

TEST_F(EntityExtentsTest, HatchOnlyBlockFallsBackToPlainExtents) {
  cad::BlockRecord& def = db().addBlock("FILL");
  AddHatch({0, 0}, {10, 10}, &def);
  const ObjectId insert = AddInsert(def, {100, 100, 0}).id;
  Open();
  EXPECT_FALSE(ContentOf(insert).has_value());
  const host::Entity e = host::OpenEntity(insert);
  const std::optional<Extents3d> plain = e.geomExtents();
  ASSERT_TRUE(plain.has_value());
  const Extents3d box = EntityExtents(insert);
  ExpectBox(box, plain->min.to2d(), plain->max.to2d());
}

TEST_F(EntityExtentsTest, OtherVendorTextWithoutExtentsDoesNotPullTheBoxToTheOrigin) {
  cad::BlockRecord& def = db().addBlock("TITLE");
  AddLine({100, 100, 0}, {200, 150, 0}, &def);
  for (const char* name : {"TCH_TEXT", "tch_mtext"}) {
    auto proxy = std::make_unique<cad::ProxyEntity>();
    proxy->name = name;
    Append(std::move(proxy), &def);
  }
  const ObjectId insert = AddInsert(def, {1000, 0, 0}).id;
  // A point of another class does count, even at the origin.
  cad::BlockRecord& dotted = db().addBlock("DOTTED");
  AddLine({100, 100, 0}, {200, 150, 0}, &dotted);
  Append(test_support::MakePoint({0, 0, 0}), &dotted);
  const ObjectId dottedInsert = AddInsert(dotted, {1000, 0, 0}).id;
  Open();
  const auto box = ContentOf(insert);
  ASSERT_TRUE(box.has_value());
  ExpectBox(*box, {1100, 100}, {1200, 150});
  ExpectBox(EntityExtents(insert), {1100, 100}, {1200, 150});
  const auto withPoint = ContentOf(dottedInsert);
  ASSERT_TRUE(withPoint.has_value());
  ExpectBox(*withPoint, {1000, 0}, {1200, 150});
}

TEST_F(EntityExtentsTest, HiddenLayersInvisibleEntitiesAndWipeoutsAreLeftOut) {
  const ObjectId frozen = AddLayer("FROZEN", false, true).id;
  const ObjectId off = AddLayer("OFF", true, false).id;
  cad::BlockRecord& inner = db().addBlock("INNER");
  AddLine({20, 20, 0}, {30, 30, 0}, &inner);
  cad::BlockRecord& far = db().addBlock("FAR");
  AddLine({40, 40, 0}, {700, 45, 0}, &far);

  cad::BlockRecord& def = db().addBlock("SHEET");
  AddLine({0, 0, 0}, {10, 10, 0}, &def);
  AddLine({-100, -100, 0}, {-90, -90, 0}, &def, frozen);
  AddLine({500, 500, 0}, {510, 510, 0}, &def, off);
  db().entity(AddLine({0, 0, 0}, {1000, 0, 0}, &def))->setVisible(false);
  auto wipeout = std::make_unique<cad::Wipeout>();
  wipeout->position = {-50, -50, 0};
  wipeout->uPixel = {1, 0, 0};
  wipeout->vPixel = {0, 1, 0};
  wipeout->imageSize = {5, 5};
  Append(std::move(wipeout), &def);
  // A reference on an off layer keeps its content; one on a frozen layer does not.
  AddInsert(inner, {0, 0, 0}, 1.0, &def, off);
  AddInsert(far, {0, 0, 0}, 1.0, &def, frozen);
  const ObjectId insert = AddInsert(def, {0, 0, 0}).id;
  Open();
  ASSERT_GE(FindId(host::Aids().frozenLayerIds, frozen), 0);
  ASSERT_GE(FindId(host::Aids().offLayerIds, off), 0);

  const auto box = ContentOf(insert);
  ASSERT_TRUE(box.has_value());
  ExpectBox(*box, {0, 0}, {30, 30});
}

TEST_F(EntityExtentsTest, TextsSplinesAndDimensionsFollowTheFlags) {
  cad::BlockRecord& dimBlock = db().addBlock("*D");
  AddLine({1000, 1000, 0}, {1100, 1000, 0}, &dimBlock);

  cad::BlockRecord& def = db().addBlock("NOTES");
  AddLine({0, 0, 0}, {10, 10, 0}, &def);
  AddText("WIDE TEXT", {100, 0, 0}, 10, &def);
  Append(Quadratic({0, -200, 0}, {5, -250, 0}, {10, -200, 0}), &def);
  auto dim = std::make_unique<cad::Dimension>();
  dim->block = dimBlock.id;
  Append(std::move(dim), &def);
  const ObjectId insert = AddInsert(def, {0, 0, 0}).id;
  Open();

  const auto bare = ContentOf(insert, false, false);
  ASSERT_TRUE(bare.has_value());
  ExpectBox(*bare, {0, 0}, {10, 10});

  const auto withText = ContentOf(insert, true, false);
  ASSERT_TRUE(withText.has_value());
  EXPECT_GT(withText->max.x, 100.0);
  EXPECT_NEAR(withText->min.y, 0.0, 1e-9);

  const auto withSpline = ContentOf(insert, false, true);
  ASSERT_TRUE(withSpline.has_value());
  // The curve dips to -225, half way to its middle control point.
  EXPECT_NEAR(withSpline->min.y, -225.0, 0.5);
  EXPECT_LT(withSpline->max.x, 50.0);
}

TEST_F(EntityExtentsTest, NestedReferencesCarryTheirTransforms) {
  cad::BlockRecord& inner = db().addBlock("INNER");
  AddLine({0, 0, 0}, {10, 5, 0}, &inner);
  cad::BlockRecord& outer = db().addBlock("OUTER");
  AddInsert(inner, {100, 0, 0}, 2.0, &outer);
  const ObjectId insert = AddInsert(outer, {0, 1000, 0}).id;
  // A definition that contains itself ends without running away.
  cad::BlockRecord& loop = db().addBlock("LOOP");
  AddLine({0, 0, 0}, {1, 1, 0}, &loop);
  AddInsert(loop, {10, 0, 0}, 1.0, &loop);
  const ObjectId looped = AddInsert(loop, {0, 0, 0}).id;
  Open();
  const auto box = ContentOf(insert);
  ASSERT_TRUE(box.has_value());
  ExpectBox(*box, {100, 1000}, {120, 1010});
  const auto loopBox = ContentOf(looped);
  ASSERT_TRUE(loopBox.has_value());
  EXPECT_EQ(loopBox->min.x, 0.0);
}

TEST_F(EntityExtentsTest, SpatialClipIsIntersected) {
  cad::BlockRecord& def = db().addBlock("CLIPPED");
  AddLine({0, 0, 0}, {100, 100, 0}, &def);
  cad::Insert& clipped = AddInsert(def, {1000, 0, 0});
  cad::Insert& inverted = AddInsert(def, {2000, 0, 0});
  const ObjectId plain = AddInsert(def, {3000, 0, 0}).id;
  for (cad::Insert* insert : {&clipped, &inverted}) {
    // Drawn in the space; the inverse of the reference's transform takes it into the block.
    cad::SpatialFilter& filter = test_support::AddSpatialClip(db(), *insert, {{insert->position.x + 10, 10}, {insert->position.x + 50, 60}});
    filter.inverseInsertTransform = Matrix3d::translation(-insert->position.asVector());
    filter.inverted = insert == &inverted;
  }
  const ObjectId clippedId = clipped.id, invertedId = inverted.id;
  Open();

  const auto box = ContentOf(clippedId);
  ASSERT_TRUE(box.has_value());
  ExpectBox(*box, {1010, 10}, {1050, 60});
  EXPECT_EQ(box->min.z, 0.0);
  EXPECT_EQ(box->max.z, 0.0);

  const auto whole = ContentOf(invertedId);
  ASSERT_TRUE(whole.has_value());
  ExpectBox(*whole, {2000, 0}, {2100, 100});

  // Directly: a box partly outside the clip keeps the overlap only.
  Extents3d partly{Point3d{1000, 30, 5}, Point3d{1030, 200, 7}};
  ASSERT_TRUE(ClipToSpatialFilter(host::OpenEntity(clippedId), partly));
  ExpectBox(partly, {1010, 30}, {1030, 60});
  EXPECT_EQ(partly.max.z, 0.0);
  Extents3d untouched{Point3d{1, 2, 3}, Point3d{4, 5, 6}};
  EXPECT_FALSE(ClipToSpatialFilter(host::OpenEntity(plain), untouched));
  EXPECT_EQ(untouched.max, Point3d(4, 5, 6));
}

TEST_F(EntityExtentsTest, MTextExtentsHugTheLettersInsideTheFrame) {
  const ObjectId id = AddMText("AB", {0, 100, 0}, 10, 1000).id;
  Open();
  const host::Entity mtext = host::OpenEntity(id);
  const std::optional<Extents3d> frame = mtext.geomExtents();
  ASSERT_TRUE(frame.has_value());
  ASSERT_GT(frame->width(), 900.0);
  Extents3d letters{Point3d{-1e6, -1e6, 0}, Point3d{1e6, 1e6, 0}};  // replaced, not grown
  EXPECT_TRUE(MTextExtents(mtext, letters));
  ASSERT_FALSE(letters.isEmpty());
  EXPECT_LT(letters.width(), 100.0);
  EXPECT_GE(letters.min.x, frame->min.x - 1e-9);
  EXPECT_LE(letters.max.x, frame->max.x + 1e-9);
  EXPECT_GE(letters.min.y, frame->min.y - 1e-9);
  EXPECT_LE(letters.max.y, frame->max.y + 1e-9);
  const Extents3d measured = EntityExtents(id);
  ExpectBox(measured, letters.min.to2d(), letters.max.to2d());
}

TEST_F(EntityExtentsTest, SplineExtentsFollowTheCurveNotItsControlPoints) {
  const ObjectId id = Append(Quadratic({0, 0, 0}, {50, 100, 0}, {100, 0, 0})).id;
  Open();
  Extents3d box{Point3d{-10, -10, 0}, Point3d{-5, -5, 0}};  // grown, not replaced
  SplineExtents(host::OpenEntity(id), box);
  EXPECT_NEAR(box.max.y, 50.0, 0.5);
  EXPECT_NEAR(box.max.x, 100.0, 1e-6);
  EXPECT_EQ(box.min.x, -10.0);
  EXPECT_EQ(box.min.y, -10.0);
}

}  // namespace
}  // namespace tv::recognition
