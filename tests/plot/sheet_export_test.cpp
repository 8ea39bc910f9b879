// Which entities belong to a sheet: the box test and the segment test, case by case.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "plot/sheet_export.h"

namespace tv::plot {
namespace {

const Point2d kMin{0, 0}, kMax{1000, 700};

TEST(SheetMembership, BoxMustOverlapTheSheetByAHundredthOfItsSize) {
  struct Case {
    std::string what;
    Extents3d box;
    bool belongs;
  };
  const std::vector<Case> cases{
      {"inside", {{100, 100, 0}, {200, 200, 0}}, true},
      {"on the right edge, no width", {{1000, 100, 0}, {1000, 200, 0}}, true},
      {"half out", {{900, 100, 0}, {1100, 200, 0}}, true},
      {"just under a hundredth across", {{995, 100, 0}, {1995, 200, 0}}, false},
      {"a hundredth across", {{990, 100, 0}, {1990, 200, 0}}, true},
      {"beside it", {{1001, 100, 0}, {1100, 200, 0}}, false},
      {"above it", {{100, 701, 0}, {200, 800, 0}}, false},
      {"empty", {}, false},
  };
  for (const Case& c : cases) EXPECT_EQ(Overlap(c.box, kMin, kMax, 0.01), c.belongs) << c.what;
}

TEST(SheetMembership, SegmentCrossesWhenCornersLieOnBothSidesOfItsLine) {
  struct Case {
    std::string what;
    Point2d a, b;
    bool crosses;
  };
  const std::vector<Case> cases{
      {"diagonal through", {-10, -10}, {1010, 710}, true},
      {"horizontal through the middle", {-50, 350}, {1050, 350}, true},
      {"vertical through the middle", {500, -50}, {500, 750}, true},
      {"along the bottom edge", {-50, 0}, {2000, 0}, false},
      {"along the left edge, vertical", {0, -50}, {0, 900}, false},
      {"below, parallel", {0, -5}, {1000, -5}, false},
      {"right of it, vertical", {1200, 0}, {1200, 700}, false},
      {"touching one corner only", {1000, 700}, {2000, 0}, false},
      {"steep, beside it", {1100, 0}, {1110, 700}, false},
  };
  for (const Case& c : cases) EXPECT_EQ(SegmentCrosses(c.a, c.b, kMin, kMax), c.crosses) << c.what;
}

TEST(SheetMembership, TimeStampIsFourteenDigits) {
  const std::string stamp = TimeStamp();
  ASSERT_EQ(stamp.size(), 14u);
  for (const char c : stamp) EXPECT_TRUE(c >= '0' && c <= '9') << stamp;
}

}  // namespace
}  // namespace tv::plot
