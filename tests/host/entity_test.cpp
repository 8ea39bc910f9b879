#include "host/entity.h"

#include <gtest/gtest.h>

#include <cmath>

#include "cad/entity_geometry.h"
#include "host_test_support.h"
#include "../support/shape_builders.h"

namespace tv::host {
namespace {

using testing::HostDrawingTest;

void ExpectPoint2(Point2d actual, Point2d expected, double tol = 1e-9) {
  EXPECT_NEAR(actual.x, expected.x, tol) << "y=" << actual.y;
  EXPECT_NEAR(actual.y, expected.y, tol) << "x=" << actual.x;
}

void ExpectBox(const std::optional<Extents3d>& box, Point2d min, Point2d max, double tol = 1e-9) {
  ASSERT_TRUE(box.has_value());
  ExpectPoint2(box->min.to2d(), min, tol);
  ExpectPoint2(box->max.to2d(), max, tol);
}

using HostEntityOpen = HostDrawingTest;

TEST_F(HostEntityOpen, OpensLiveEntitiesOnlyAndReadsCommonFacts) {
  cad::Layer& walls = db.addLayer("WALLS");
  cad::Line& line = addLine({1, 2, 0}, {4, 6, 0});
  line.layer = walls.id;
  line.setVisible(false);

  Entity e = OpenEntity(line.id);
  ASSERT_TRUE(e);
  EXPECT_EQ(e.id(), line.id);
  EXPECT_EQ(e.kind(), EntityClass::Line);
  EXPECT_EQ(e.dxfName(), "LINE");
  EXPECT_FALSE(e.visible());
  EXPECT_EQ(e.layer(), walls.id);
  EXPECT_EQ(e.owner(), model().id);
  EXPECT_EQ(e.startPoint(), (Point3d{1, 2, 0}));
  EXPECT_EQ(e.endPoint(), (Point3d{4, 6, 0}));
  ExpectBox(e.geomExtents(), {1, 2}, {4, 6});

  EXPECT_FALSE(OpenEntity(ObjectId{}));
  EXPECT_FALSE(OpenEntity(ObjectId{0xFFFFFF}));  // unknown
  EXPECT_FALSE(OpenEntity(walls.id));             // a layer is no entity
  EXPECT_FALSE(OpenEntity(model().id));           // nor is a block record
  ASSERT_TRUE(db.erase(line.id));
  EXPECT_FALSE(OpenEntity(line.id));

  cad::Line& other = addLine({0, 0, 0}, {1, 1, 0});
  SetWorkingDatabase(nullptr);
  EXPECT_FALSE(OpenEntity(other.id));
  SetWorkingDatabase(&db);
  EXPECT_TRUE(OpenEntity(other.id));
}

TEST_F(HostEntityOpen, AttributesBelongToTheRecordOfTheirInsert) {
  auto insert = test_support::MakeInsert(db.addBlock("TITLE"), {});
  insert->attribs.push_back(test_support::MakeAtt<cad::Attrib>("A-01", {}, 1));
  cad::Insert& ins = add(std::move(insert), &paper());

  Entity a = OpenEntity(ins.attribs[0]->id);
  ASSERT_TRUE(a);
  EXPECT_EQ(a.kind(), EntityClass::Attribute);
  EXPECT_EQ(a.owner(), paper().id);
  EXPECT_EQ(a.textContent(), "A-01");
  EXPECT_FALSE(a.isMTextAttribute());
}

using HostEntityPolyline = HostDrawingTest;

TEST_F(HostEntityPolyline, LightweightPointsGoFromTheirPlaneToWorld) {
  auto flipped = std::make_unique<cad::LwPolyline>();
  flipped->points = {{1, 2}, {3, 2}, {3, 5}};
  flipped->setNormal({0, 0, -1});  // mirrored drawing: OCS x runs to world -x
  flipped->setElevation(4);
  flipped->polyFlags = cad::LwPolyline::kClosed;
  const ObjectId flippedId = add(std::move(flipped)).id;

  // Extrusion along world x: the arbitrary axis rule gives OCS x = world y, OCS y = world z, and
  // the elevation runs along world x.
  auto side = std::make_unique<cad::LwPolyline>();
  side->points = {{2, 3}};
  side->setNormal({1, 0, 0});
  side->setElevation(7);
  const ObjectId sideId = add(std::move(side)).id;

  Entity f = OpenEntity(flippedId);
  EXPECT_EQ(f.kind(), EntityClass::LwPolyline);
  EXPECT_TRUE(f.closed());
  const std::vector<Point2d> v = f.vertices();
  ASSERT_EQ(v.size(), 3u);
  ExpectPoint2(v[0], {-1, 2});
  ExpectPoint2(v[1], {-3, 2});
  ExpectPoint2(v[2], {-3, 5});

  const std::vector<Point2d> s = OpenEntity(sideId).vertices();
  ASSERT_EQ(s.size(), 1u);
  ExpectPoint2(s[0], {7, 2});
  EXPECT_FALSE(OpenEntity(sideId).closed());
}

TEST_F(HostEntityPolyline, TwoDimensionalAndThreeDimensionalPolylinesDifferInClassAndCoordinates) {
  auto make = [&](std::int16_t flags, std::vector<Point3d> points, Vector3d normal, double elevation) {
    auto p = test_support::MakePolyline(std::move(points), flags);
    p->normal = normal;
    p->elevation = elevation;
    return add(std::move(p)).id;
  };
  // A 2D polyline's vertices are OCS points; here the OCS is mirrored.
  const ObjectId flat = make(cad::Polyline::kClosed, {{1, 1, 0}, {5, 1, 0}, {5, 3, 0}}, {0, 0, -1}, 2);
  // A 3D polyline's vertices are world points whatever its normal says.
  const ObjectId spatial = make(cad::Polyline::k3dPolyline, {{1, 1, 9}, {5, 1, -3}}, {0, 0, -1}, 0);

  Entity e2 = OpenEntity(flat);
  EXPECT_EQ(e2.kind(), EntityClass::Polyline2d);
  EXPECT_TRUE(e2.closed());
  const auto v2 = e2.vertices();
  ASSERT_EQ(v2.size(), 3u);
  ExpectPoint2(v2[0], {-1, 1});
  ExpectPoint2(v2[2], {-5, 3});

  Entity e3 = OpenEntity(spatial);
  EXPECT_EQ(e3.kind(), EntityClass::Polyline3d);
  EXPECT_FALSE(e3.closed());
  const auto v3 = e3.vertices();
  ASSERT_EQ(v3.size(), 2u);
  ExpectPoint2(v3[0], {1, 1});
  ExpectPoint2(v3[1], {5, 1});
}

TEST_F(HostEntityPolyline, PolyfaceMeshesCountAsThreeDimensionalAndSkipTheirFaceRecords) {
  Entity e = OpenEntity(add(test_support::MakePolyface({{0, 0, 0}, {2, 0, 0}, {2, 2, 0}}, {{1, 2, 3, 0}})).id);
  EXPECT_EQ(e.kind(), EntityClass::Polyline3d);
  EXPECT_EQ(e.vertices().size(), 3u);
}

using HostEntityKinds = HostDrawingTest;

TEST_F(HostEntityKinds, TextContentIsPlainForEveryTextClass) {
  const ObjectId textId = add(test_support::MakeText("%%c20 钢筋", {}, 1)).id;

  auto mtext = std::make_unique<cad::MText>();
  mtext->text = "{\\fSimSun|b0|i0;图纸目录}\\P第\\H0.7x;2\\H1.4286x;页";
  const ObjectId mtextId = add(std::move(mtext)).id;

  auto proxy = std::make_unique<cad::ProxyEntity>();
  proxy->name = "TCH_TEXT";
  proxy->groups = {cad::Group{100, std::string("TDbText")}, cad::Group{1, std::string("建筑施工图")}};
  const ObjectId proxyId = add(std::move(proxy)).id;

  auto insert = test_support::MakeInsert(db.addBlock("B"), {});
  auto att = test_support::MakeAtt<cad::Attrib>("上\\P下", {}, 1);
  att->editDetails().multiline = {cad::Group{101, std::string("Embedded Object")}, cad::Group{1, std::string("上\\P下")}};
  insert->attribs.push_back(std::move(att));
  const ObjectId attId = add(std::move(insert)).attribs[0]->id;

  EXPECT_EQ(OpenEntity(textId).textContent(), "%%c20 钢筋");  // TEXT as stored
  EXPECT_EQ(OpenEntity(mtextId).textContent(), "图纸目录\n第2页");
  EXPECT_EQ(OpenEntity(proxyId).textContent(), "建筑施工图");
  Entity a = OpenEntity(attId);
  EXPECT_TRUE(a.isMTextAttribute());
  EXPECT_EQ(a.textContent(), "上\n下");
  EXPECT_EQ(OpenEntity(addLine({}, {1, 0, 0}).id).textContent(), "");
}

// ---- block references ----------------------------------------------------------------------------

class HostEntityInsert : public HostDrawingTest {
 protected:
  // A block with its base point at (1, 1) and a 10 x 8 rectangle of lines from the base point.
  cad::BlockRecord& block() {
    cad::BlockRecord& b = db.addBlock("FRAME");
    b.basePoint = {1, 1, 0};
    addLine({1, 1, 0}, {11, 1, 0}, &b);
    addLine({11, 1, 0}, {11, 9, 0}, &b);
    addLine({11, 9, 0}, {1, 9, 0}, &b);
    addLine({1, 9, 0}, {1, 1, 0}, &b);
    return b;
  }
  cad::Insert& insertOf(const cad::BlockRecord& b, Point3d at, double scale, double rotation) {
    return add(test_support::MakeInsert(b, at, {scale, scale, scale}, rotation));
  }
  // Clips `ins` as it stands now: `boundary` in world coordinates relative to `origin`.
  cad::SpatialFilter& clip(cad::Insert& ins, std::vector<Point2d> boundary, Point3d origin, bool inverted = false) {
    cad::SpatialFilter& f = test_support::AddSpatialClip(db, ins, std::move(boundary));
    f.origin = origin;
    f.inverted = inverted;
    f.inverseInsertTransform = *cad::InsertTransform(ins, *db.objectAs<cad::BlockRecord>(ins.block)).inverse();
    return f;
  }
};

TEST_F(HostEntityInsert, ReadsDefinitionTransformAndScale) {
  cad::BlockRecord& b = block();
  cad::Insert& ins = insertOf(b, {100, 50, 0}, 2, kPi / 2);
  ins.scale = {2, 3, 1};
  Entity e = OpenEntity(ins.id);
  EXPECT_EQ(e.kind(), EntityClass::BlockReference);
  EXPECT_EQ(e.blockTableRecord(), b.id);
  EXPECT_EQ(e.scaleFactors(), (Vector3d{2, 3, 1}));
  // The base point lands on the insertion point; block x runs along world y after the turn.
  const Matrix3d xf = e.blockTransform();
  EXPECT_TRUE(xf.transform(Point3d{1, 1, 0}).isEqualTo({100, 50, 0}));
  EXPECT_TRUE(xf.transform(Point3d{2, 1, 0}).isEqualTo({100, 52, 0}));
  EXPECT_TRUE(xf.transform(Point3d{1, 2, 0}).isEqualTo({97, 50, 0}));
  ExpectBox(e.geomExtents(), {76, 50}, {100, 70});
  EXPECT_FALSE(e.isDynamicBlock());
  EXPECT_FALSE(e.clipBounds().has_value());

  // Other classes give neutral answers.
  Entity line = OpenEntity(addLine({}, {1, 0, 0}).id);
  EXPECT_TRUE(line.blockTableRecord().isNull());
  EXPECT_TRUE(line.blockTransform().isIdentity());
  EXPECT_FALSE(line.clipBounds().has_value());
}

TEST_F(HostEntityInsert, ClipBoundsFollowTheReferenceWhenItIsMovedScaledAndRotatedAfterClipping) {
  cad::BlockRecord& b = block();
  cad::Insert& ins = insertOf(b, {10, 20, 0}, 1, 0);
  // Clipped while at (10, 20), unscaled: the world window (12, 22)-(15, 26), stored relative to
  // an origin of (10, 20). In block coordinates that is (3, 3)-(6, 7) (base point (1, 1)).
  clip(ins, {{2, 2}, {5, 6}}, {10, 20, 0});
  ExpectBox(OpenEntity(ins.id).clipBounds(), {12, 22}, {15, 26});

  // Now moved to (100, 50), doubled and turned a quarter: block (3,3)-(6,7) relative to the base
  // point is (2,2)-(5,6); doubled (4,4)-(10,12); turned x' = -y, y' = x; then moved.
  ins.position = {100, 50, 0};
  ins.scale = {2, 2, 2};
  ins.rotation = kPi / 2;
  ExpectBox(OpenEntity(ins.id).clipBounds(), {88, 54}, {96, 60});
}

TEST_F(HostEntityInsert, ClipBoundsOfAPolygonAreItsBoxAndInvertedClipsGiveNone) {
  cad::BlockRecord& b = block();
  cad::Insert& ins = insertOf(b, {0, 0, 0}, 1, 0);
  clip(ins, {{2, 2}, {8, 3}, {5, 7}}, {});
  ExpectBox(OpenEntity(ins.id).clipBounds(), {2, 2}, {8, 7});

  cad::Insert& other = insertOf(b, {0, 0, 0}, 1, 0);
  clip(other, {{2, 2}, {5, 6}}, {}, true);
  EXPECT_FALSE(OpenEntity(other.id).clipBounds().has_value());
}

TEST_F(HostEntityInsert, DynamicBlocksAreKnownByTheirDefinitionOrTheirAnonymousRepresentation) {
  cad::BlockRecord& dynamic = db.addBlock("DOOR");
  db.ensureDictionary(db.ensureExtensionDictionary(dynamic), "ACAD_ENHANCEDBLOCK");
  cad::BlockRecord& rep = db.addBlock("*U");
  rep.extras().xdata = {cad::Group{1001, std::string("AcDbBlockRepBTag")}, cad::Group{1070, std::int64_t{1}},
                        cad::Group{1005, dynamic.id}};
  cad::BlockRecord& plainAnonymous = db.addBlock("*U");
  plainAnonymous.extras().xdata = {cad::Group{1001, std::string("OTHER_APP")}};
  cad::BlockRecord& plain = db.addBlock("WINDOW");
  plain.extras().xdata = {cad::Group{1001, std::string("AcDbBlockRepBTag")}};  // named blocks are no representations

  EXPECT_TRUE(OpenEntity(insertOf(dynamic, {}, 1, 0).id).isDynamicBlock());
  EXPECT_TRUE(OpenEntity(insertOf(rep, {}, 1, 0).id).isDynamicBlock());
  EXPECT_FALSE(OpenEntity(insertOf(plainAnonymous, {}, 1, 0).id).isDynamicBlock());
  EXPECT_FALSE(OpenEntity(insertOf(plain, {}, 1, 0).id).isDynamicBlock());
}

// ---- transients ------------------------------------------------------------------------------------

using HostEntityTransient = HostEntityInsert;

TEST_F(HostEntityTransient, ExplodedPiecesOutliveTheirSource) {
  cad::BlockRecord& b = block();
  const ObjectId insId = insertOf(b, {100, 0, 0}, 1, 0).id;
  std::vector<Entity> pieces;
  {
    Entity source = OpenEntity(insId);
    pieces = source.explode();
  }
  ASSERT_TRUE(db.erase(insId));
  ASSERT_EQ(pieces.size(), 4u);
  for (const Entity& p : pieces) {
    ASSERT_TRUE(p);
    EXPECT_EQ(p.kind(), EntityClass::Line);
    EXPECT_TRUE(p.id().isNull());
    EXPECT_TRUE(p.owner().isNull());
  }
  EXPECT_TRUE(pieces[0].startPoint().isEqualTo({100, 0, 0}));
  EXPECT_TRUE(pieces[0].endPoint().isEqualTo({110, 0, 0}));
  // A piece breaks up further like any entity.
  EXPECT_TRUE(pieces[0].explode().empty());
  EXPECT_TRUE(OpenEntity(addLine({}, {1, 0, 0}).id).explode().empty());
}

TEST_F(HostEntityTransient, TransformedCopiesLeaveTheOriginalAlone) {
  cad::Line& line = addLine({0, 0, 0}, {10, 0, 0});
  Entity copy = OpenEntity(line.id).transformedCopy(Matrix3d::translation({0, 5, 0}) * Matrix3d::rotation(kPi / 2));
  ASSERT_TRUE(copy);
  EXPECT_TRUE(copy.id().isNull());
  EXPECT_TRUE(copy.endPoint().isEqualTo({0, 15, 0}));
  EXPECT_EQ(line.end, (Point3d{10, 0, 0}));
  // A singular matrix gives no copy.
  EXPECT_FALSE(OpenEntity(line.id).transformedCopy(Matrix3d::scaling(0, 1, 1)));
  // A transformed insert keeps finding its block in the drawing.
  Entity moved = OpenEntity(insertOf(block(), {0, 0, 0}, 1, 0).id).transformedCopy(Matrix3d::translation({5, 5, 0}));
  ASSERT_TRUE(moved);
  ExpectBox(moved.geomExtents(), {5, 5}, {15, 13});
}

TEST_F(HostEntityTransient, SplinesFlattenToThreeDimensionalPolylinesThroughTheirEnds) {
  auto s = std::make_unique<cad::Spline>();
  s->degree = 3;
  s->controlPoints = {{0, 0, 0}, {10, 10, 0}, {20, -10, 0}, {30, 0, 5}};
  s->knots = {0, 0, 0, 0, 1, 1, 1, 1};
  cad::Layer& layer = db.addLayer("CURVES");
  s->layer = layer.id;
  const ObjectId id = add(std::move(s)).id;

  Entity poly = OpenEntity(id).splineToPolyline();
  ASSERT_TRUE(poly);
  EXPECT_EQ(poly.kind(), EntityClass::Polyline3d);
  EXPECT_EQ(poly.layer(), layer.id);
  const auto v = poly.vertices();
  ASSERT_GT(v.size(), 10u);
  ExpectPoint2(v.front(), {0, 0});
  ExpectPoint2(v.back(), {30, 0});
  EXPECT_FALSE(OpenEntity(addLine({}, {1, 0, 0}).id).splineToPolyline());
}

TEST_F(HostEntityTransient, FlattenedSplinesStopAtTenThousandSegments) {
  // A zigzag of 12 000 straight spans flattens to more points than the limit allows.
  auto s = std::make_unique<cad::Spline>();
  s->degree = 1;
  const int n = 12001;
  for (int i = 0; i < n; ++i) s->controlPoints.push_back({static_cast<double>(i), (i % 2) ? 1.0 : 0.0, 0});
  s->knots.push_back(0);
  for (int i = 0; i < n; ++i) s->knots.push_back(i);
  s->knots.push_back(n - 1);
  const ObjectId id = add(std::move(s)).id;
  const auto v = OpenEntity(id).splineToPolyline().vertices();
  EXPECT_EQ(v.size(), 10001u);
  ExpectPoint2(v.front(), {0, 0});
  ExpectPoint2(v.back(), {n - 1.0, 0});
}

TEST_F(HostEntityTransient, NewEntitiesAreTransientUntilAppended) {
  Entity line = NewLine({0, 0, 0}, {3, 4, 0});
  EXPECT_EQ(line.kind(), EntityClass::Line);
  EXPECT_TRUE(line.id().isNull());
  EXPECT_TRUE(line.owner().isNull());
  ExpectBox(line.geomExtents(), {0, 0}, {3, 4});

  Entity poly = NewPolyline({{0, 0}, {5, 0}, {5, 2}}, true);
  EXPECT_EQ(poly.kind(), EntityClass::LwPolyline);
  EXPECT_TRUE(poly.closed());
  EXPECT_EQ(poly.vertices().size(), 3u);

  Entity text = NewText({1, 1, 0}, 2.5, 0, "图号");
  EXPECT_EQ(text.kind(), EntityClass::Text);
  EXPECT_EQ(text.textContent(), "图号");
  const auto box = text.geomExtents();
  ASSERT_TRUE(box.has_value());
  EXPECT_NEAR(box->min.y, 1, 1e-9);
  EXPECT_NEAR(box->max.y, 3.5, 1e-9);
  EXPECT_GT(box->max.x, 1 + 2.5);  // two full-width characters

  EXPECT_FALSE(NewCustomEntity(nullptr));
  // Transients made without a drawing work as well.
  SetWorkingDatabase(nullptr);
  EXPECT_TRUE(NewLine({}, {1, 1, 0}).geomExtents().has_value());
  SetWorkingDatabase(&db);
}

}  // namespace
}  // namespace tv::host
