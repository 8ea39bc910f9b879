#include "recognition/working_coordinates.h"

#include "drawing_fixture.h"

namespace tv::recognition {
namespace {

using test::DrawingTest;

class WorkingCoordinatesTest : public DrawingTest {};

TEST_F(WorkingCoordinatesTest, InactiveStateLeavesPointsInWorld) {
  Open();
  // The editor's UCS alone does not make working coordinates: the state must say so.
  ASSERT_TRUE(host::CurrentEditor().setCurrentUcs(Matrix3d::rotation(kPi / 2)));
  EXPECT_EQ(ToWorking(Point3d{3, 4, 5}), Point3d(3, 4, 5));
  EXPECT_EQ(ToWorld(Point3d{3, 4, 5}), Point3d(3, 4, 5));
  EXPECT_EQ(ToWorking(Vector3d{1, 0, 0}), (Vector3d{1, 0, 0}));
}

}  // namespace
}  // namespace tv::recognition
