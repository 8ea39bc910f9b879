#include "cad/box_grid.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace tv::cad {
namespace {

using Box = BoxGrid::Box;

bool Meets(const Box& a, const Box& b) { return a.maxX >= b.minX && a.minX <= b.maxX && a.maxY >= b.minY && a.minY <= b.maxY; }

// Items filed, moved beyond the bounds the grid was laid over, dropped and filed again: every query
// finds what a look at every item finds, in order.
TEST(BoxGrid, QueriesFindWhatALookAtEveryItemFinds) {
  std::mt19937 rng(3);
  const auto real = [&](double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(rng); };
  const auto randomBox = [&] {
    const double x = real(-200, 1200), y = real(-200, 1200), size = std::pow(10.0, real(-3, 3.5));
    return Box{x, y, x + size * real(0, 1), y + size * real(0, 1)};
  };
  constexpr std::uint32_t kItems = 3000;
  // 0 out, 1 bounded, 2 unbounded
  std::vector<int> state(kItems, 0);
  std::vector<Box> boxes(kItems);
  BoxGrid grid;
  const Box bounds{0, 0, 1000, 1000};
  grid.reset(&bounds, kItems / 2);
  std::vector<std::uint32_t> found;
  for (int round = 0; round < 20000; ++round) {
    const auto at = static_cast<std::uint32_t>(rng() % kItems);
    switch (rng() % 5) {
      case 0: grid.remove(at), state[at] = 0; break;
      case 1: grid.addUnbounded(at), state[at] = 2; break;
      default: boxes[at] = randomBox(), grid.add(at, boxes[at]), state[at] = 1; break;
    }
    if (round % 50 != 0) continue;
    const Box q = randomBox();
    std::vector<std::uint32_t> expected;
    for (std::uint32_t i = 0; i < kItems; ++i)
      if (state[i] == 2 || (state[i] == 1 && Meets(boxes[i], q))) expected.push_back(i);
    grid.query(q, found);
    ASSERT_EQ(found, expected) << "round " << round;
  }
}

TEST(BoxGrid, AnEmptyGridStillTakesItems) {
  BoxGrid grid;
  grid.reset(nullptr, 0);
  grid.add(2, {5, 5, 6, 6});
  grid.addUnbounded(0);
  std::vector<std::uint32_t> found;
  grid.query({0, 0, 10, 10}, found);
  EXPECT_EQ(found, (std::vector<std::uint32_t>{0, 2}));
  grid.query({7, 7, 8, 8}, found);
  EXPECT_EQ(found, (std::vector<std::uint32_t>{0}));
  EXPECT_FALSE(grid.filed(1));
  EXPECT_TRUE(grid.bounded(2));
  EXPECT_FALSE(grid.bounded(0));
}

}  // namespace
}  // namespace tv::cad
