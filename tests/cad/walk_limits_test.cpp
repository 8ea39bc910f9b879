// Walks over block contents on drawings built to multiply their content: blocks inserting the block
// below twice at every level, and MINSERT grids of a billion copies. Every walk ends at once, gives
// the answer a smaller drawing of the same kind gives, and notes when it left content out.
#include "cad/walk_limits.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "cad/database.h"
#include "cad/entity_geometry.h"
#include "cad/selection_geometry.h"
#include "../support/multiplying_blocks.h"

namespace tv::cad {
namespace {

using test_support::DoublingBlocks;
using test_support::GridOfCopies;

class WalkLimitsTest : public ::testing::Test {
 protected:
  void SetUp() override { ClearContentLeftOut(); }
  void TearDown() override { ClearContentLeftOut(); }
};

TEST_F(WalkLimitsTest, DoublingBlocksAreMeasuredOncePerBlock) {
  // Ten levels are 1024 lines, all measured, turned or not.
  for (double rotation : {0.0, 0.5}) {
    SCOPED_TRACE(rotation);
    Database db = Database::createDefault();
    const Insert& top = DoublingBlocks(db, 10, {1000, 1000, 0}, rotation);
    const auto box = EntityExtents(top, db);
    ASSERT_TRUE(box.has_value());
    const Matrix3d xf = Matrix3d::translation({1000, 1000, 0}) * Matrix3d::rotation(rotation) * Matrix3d::scaling(100, 100, 100);
    Extents3d expected;
    for (Point3d p : {Point3d{0, 0, 0}, Point3d{10, 10, 0}, Point3d{2.5, 0, 0}, Point3d{12.5, 10, 0}}) expected.add(xf.transform(p));
    EXPECT_NEAR(box->min.x, expected.min.x, 1e-6);
    EXPECT_NEAR(box->min.y, expected.min.y, 1e-6);
    EXPECT_NEAR(box->max.x, expected.max.x, 1e-6);
    EXPECT_NEAR(box->max.y, expected.max.y, 1e-6);
    EXPECT_FALSE(SelectionShapeOf(top, db).paths.empty());
    EXPECT_EQ(Explode(top, db).size(), 3u);  // its line and the two inserts
    EXPECT_FALSE(ContentLeftOut());
  }
  // 41 levels (two trillion lines) nest past any real drawing: every walk ends, and says so.
  for (double rotation : {0.0, 0.5}) {
    SCOPED_TRACE(rotation);
    Database db = Database::createDefault();
    const Insert& top = DoublingBlocks(db, 41, {1000, 1000, 0}, rotation);
    EXPECT_TRUE(EntityExtents(top, db).has_value());
    EXPECT_TRUE(ContentLeftOut());
    ClearContentLeftOut();
    EXPECT_FALSE(SelectionShapeOf(top, db).paths.empty());
    EXPECT_TRUE(ContentLeftOut());
    EXPECT_EQ(Explode(top, db).size(), 3u);  // its line and the two inserts
  }
}

TEST_F(WalkLimitsTest, GridsOnOnePointCountOnceAndHugeGridsAreBounded) {
  struct Case {
    double spacing;
    std::size_t pieces;
    bool leftOut;
  };
  for (const Case& c : {Case{1e-300, 1, false}, Case{0, 1, false}, Case{1.0, kMaxGridCopies, true}}) {
    SCOPED_TRACE(c.spacing);
    ClearContentLeftOut();
    Database db = Database::createDefault();
    const Insert& grid = GridOfCopies(db, 32767, c.spacing);
    EXPECT_EQ(Explode(grid, db).size(), c.pieces);
    const auto box = EntityExtents(grid, db);
    ASSERT_TRUE(box.has_value());
    EXPECT_NEAR(box->max.x, 1010 + c.spacing * 32766, 1e-6);
    EXPECT_EQ(SelectByBox(db, *db.modelSpace(), {1005, 1005}, {1006, 1006}, true, {}).size(), 1u);
    EXPECT_EQ(ContentLeftOut(), c.leftOut);
  }
}

}  // namespace
}  // namespace tv::cad
