#include <algorithm>
#include <cmath>

#include "drawing_fixture.h"
#include "host/entity.h"
#include "recognition/sheet_geometry.h"

namespace tv::recognition {
namespace {

using test::DrawingTest;
using test::ExpectNear2d;

// The corners of the 100 x 50 rectangle at (10, 20), counter-clockwise from the lower left.
const std::vector<Point2d> kCorners = {{10, 20}, {110, 20}, {110, 70}, {10, 70}};

std::vector<Point2d> Walk(int start, bool clockwise) {
  std::vector<Point2d> out;
  for (int i = 0; i < 4; ++i) {
    const int step = clockwise ? -i : i;
    out.push_back(kCorners[static_cast<std::size_t>(((start + step) % 4 + 4) % 4)]);
  }
  return out;
}

class RectanglePolylineTest : public DrawingTest {
 protected:
  // Runs the test on the entity with an empty stack.
  bool IsRectangle(ObjectId id, Point3d& minPt, Point3d& maxPt) {
    const host::Entity e = host::OpenEntity(id);
    EXPECT_TRUE(static_cast<bool>(e));
    return IsRectanglePolyline(e, false, {}, minPt, maxPt);
  }
  bool IsRectangle(ObjectId id) {
    Point3d minPt, maxPt;
    return IsRectangle(id, minPt, maxPt);
  }
};

TEST_F(RectanglePolylineTest, AnyWindingAndStartVertexPasses) {
  std::vector<ObjectId> ids;
  for (int start = 0; start < 4; ++start)
    for (bool clockwise : {false, true}) ids.push_back(AddLw(Walk(start, clockwise), true));
  Open();
  for (ObjectId id : ids) {
    Point3d minPt{-1, -1, -1}, maxPt;
    ASSERT_TRUE(IsRectangle(id, minPt, maxPt)) << id.value;
    ExpectNear2d(minPt, {10, 20});
    ExpectNear2d(maxPt, {110, 70});
    EXPECT_EQ(minPt.z, 0.0);
    EXPECT_EQ(maxPt.z, 0.0);
  }
}

TEST_F(RectanglePolylineTest, RepeatedLastVertexPassesClosedOrOpen) {
  std::vector<Point2d> five = Walk(2, true);
  five.push_back(five.front());
  const ObjectId lwClosed = AddLw(five, true);
  const ObjectId lwOpen = AddLw(five, false);
  const ObjectId flatOpen = AddPolyline(five, false, false);
  // A last vertex a little off the first still closes within a thousandth of the sides.
  std::vector<Point2d> nearly = kCorners;
  nearly.push_back({10.1, 20.05});
  const ObjectId lwNearly = AddLw(nearly, false);
  // Consecutive repeated vertices are dropped before counting.
  const ObjectId doubled = AddLw({kCorners[0], kCorners[1], kCorners[1], {110, 70.000001}, kCorners[3]}, true);
  Open();
  Point3d minPt, maxPt;
  for (ObjectId id : {lwClosed, lwOpen, flatOpen, lwNearly, doubled}) {
    ASSERT_TRUE(IsRectangle(id, minPt, maxPt)) << id.value;
    ExpectNear2d(minPt, {10, 20}, 1e-5);
    ExpectNear2d(maxPt, {110, 70}, 1e-5);
  }
}

TEST_F(RectanglePolylineTest, WhichOutlinesPassByClass) {
  enum Class { kLw, kFlat, kSpatial };
  struct Case {
    const char* what;
    std::vector<Point2d> points;
    bool closed;
    Class kind;
    bool passes;
  };
  std::vector<Point2d> fifthAway = kCorners;
  fifthAway.push_back({10.2, 20});  // t is 0.15
  const std::vector<Point2d> chamfered = {{0, 0}, {100, 0}, {100, 50}, {90, 60}, {0, 60}};
  const std::vector<Point2d> thin = {{0, 0}, {100, 0}, {100, 1e-06}, {0, 1e-06}};
  const Case cases[] = {
      {"a fifth vertex away from the first, lightweight", fifthAway, true, kLw, false},
      {"a fifth vertex away from the first, 2d", fifthAway, true, kFlat, true},
      {"four vertices open, lightweight", kCorners, false, kLw, false},
      {"four vertices open, 2d", kCorners, false, kFlat, true},
      {"four vertices open, 3d", kCorners, false, kSpatial, true},
      {"a chamfered corner, lightweight", chamfered, true, kLw, false},
      {"a chamfered corner, 2d", chamfered, true, kFlat, false},
      {"too thin", thin, true, kLw, false},
      {"too thin, 2d", {thin[0], thin[1], thin[2], thin[3], thin[0]}, true, kFlat, false},
      // The diagonal a-c lies on an axis: a "rectangle" folded onto one line.
      {"folded", {{0, 0}, {100, 0}, {0, 0.5}, {100, 0.5}}, true, kLw, false},
      {"three vertices", {{0, 0}, {100, 0}, {100, 50}}, true, kLw, false},
      {"six vertices", {{0, 0}, {50, 0}, {100, 0}, {100, 50}, {0, 50}, {0, 25}}, true, kLw, false},
      // Sides may lean within a thousandth of the diagonal span: t = (100 + 50) / 1000 = 0.15.
      {"leaning 0.14", {{0, 0}, {100, 0.14}, {100, 50}, {0, 50}}, true, kLw, true},
      {"leaning 0.16", {{0, 0}, {100, 0.16}, {100, 50}, {0, 50}}, true, kLw, false},
  };
  std::vector<ObjectId> ids;
  for (const Case& c : cases)
    ids.push_back(c.kind == kLw ? AddLw(c.points, c.closed) : AddPolyline(c.points, c.closed, c.kind == kSpatial));
  Open();
  for (std::size_t i = 0; i < ids.size(); ++i) EXPECT_EQ(IsRectangle(ids[i]), cases[i].passes) << cases[i].what;
}

TEST_F(RectanglePolylineTest, RotatedRectangleFailsInWorldButPassesInItsUcs) {
  const double angle = DegToRad(30);
  const Matrix3d ucs = Matrix3d::translation({500, 300, 0}) * Matrix3d::rotation(angle);
  std::vector<Point2d> world;
  for (Point2d p : kCorners) world.push_back(ucs.transform(Point3d{p}).to2d());
  const ObjectId id = AddLw(world, true);
  Open();
  EXPECT_FALSE(IsRectangle(id));
  UseUcs(ucs);
  Point3d minPt, maxPt;
  ASSERT_TRUE(IsRectangle(id, minPt, maxPt));
  ExpectNear2d(minPt, {10, 20}, 1e-7);
  ExpectNear2d(maxPt, {110, 70}, 1e-7);
}

TEST_F(RectanglePolylineTest, StackTakesBlockVerticesIntoTheSpace) {
  const ObjectId id = AddLw(kCorners, true);
  Open();
  const host::Entity e = host::OpenEntity(id);
  // Outer reference moves by (1000, 0), the inner one doubles: the inner applies first.
  const MatrixStack stack = {Matrix3d::translation({1000, 0, 0}), Matrix3d::scaling(2.0)};
  Point3d minPt, maxPt;
  ASSERT_TRUE(IsRectanglePolyline(e, true, stack, minPt, maxPt));
  ExpectNear2d(minPt, {1020, 40});
  ExpectNear2d(maxPt, {1220, 140});
  // Without useStack the stack is ignored.
  ASSERT_TRUE(IsRectanglePolyline(e, false, stack, minPt, maxPt));
  ExpectNear2d(minPt, {10, 20});
}

TEST_F(RectanglePolylineTest, OnlyPolylinesAreAccepted) {
  const ObjectId line = AddLine({0, 0, 0}, {100, 0, 0});
  Open();
  Point3d minPt{5, 5, 5}, maxPt;
  EXPECT_FALSE(IsRectangle(line, minPt, maxPt));
  EXPECT_FALSE(IsRectanglePolyline(host::Entity{}, false, {}, minPt, maxPt));
}

}  // namespace
}  // namespace tv::recognition
