#include "recognition/working_coordinates.h"

#include "drawing_fixture.h"

namespace tv::recognition {
namespace {

using test::DrawingTest;
using test::ExpectNear2d;

class WorkingCoordinatesTest : public DrawingTest {};

TEST_F(WorkingCoordinatesTest, InactiveStateLeavesPointsInWorld) {
  Open();
  // The editor's UCS alone does not make working coordinates: the state must say so.
  ASSERT_TRUE(host::CurrentEditor().setCurrentUcs(Matrix3d::rotation(kPi / 2)));
  EXPECT_EQ(ToWorking(Point3d{3, 4, 5}), Point3d(3, 4, 5));
  EXPECT_EQ(ToWorld(Point3d{3, 4, 5}), Point3d(3, 4, 5));
  EXPECT_EQ(ToWorking(Vector3d{1, 0, 0}), Vector3d(1, 0, 0));
}

TEST_F(WorkingCoordinatesTest, ActiveUcsConvertsPointsAndDirections) {
  Open();
  UseUcs(Matrix3d::translation({1000, 0, 0}) * Matrix3d::rotation(kPi / 2));
  // UCS (x, y) lies at world (1000 - y, x).
  ExpectNear2d(ToWorld(Point3d{10, 20, 0}), {980, 10}, 1e-9);
  ExpectNear2d(ToWorking(Point3d{980, 10, 0}), {10, 20}, 1e-9);
  // Directions turn but don't move.
  const Vector3d v = ToWorking(Vector3d{0, 1, 0});
  EXPECT_NEAR(v.x, 1.0, 1e-12);
  EXPECT_NEAR(v.y, 0.0, 1e-12);
  const Vector3d back = ToWorld(v);
  EXPECT_NEAR(back.x, 0.0, 1e-12);
  EXPECT_NEAR(back.y, 1.0, 1e-12);
}

TEST_F(WorkingCoordinatesTest, ResetReturnsToWorld) {
  Ucs().active = true;
  Ucs().ucsToWorld = Matrix3d::translation({1, 2, 3});
  Ucs().worldToUcs = Matrix3d::translation({-1, -2, -3});
  ResetUcs();
  EXPECT_FALSE(Ucs().active);
  EXPECT_TRUE(Ucs().ucsToWorld.isIdentity());
  EXPECT_TRUE(Ucs().worldToUcs.isIdentity());
}

}  // namespace
}  // namespace tv::recognition
