#include "host/whole_number.h"

#include <gtest/gtest.h>

#include <limits>

namespace tv {
namespace {

TEST(SaturatedInt, CutsTowardZeroAndHoldsAtTheEndsOfTheRange) {
  constexpr auto kMax = std::numeric_limits<std::int32_t>::max();
  constexpr auto kMin = std::numeric_limits<std::int32_t>::min();
  const struct {
    double value;
    std::int32_t expected;
  } cases[] = {
      {84100.9, 84100}, {-2.7, -2},  {0.0, 0},          {2147483646.5, 2147483646}, {2147483648.0, kMax},
      {4.5e273, kMax},  {-1e300, kMin}, {-2147483648.0, kMin}, {std::numeric_limits<double>::infinity(), kMax},
      {std::numeric_limits<double>::quiet_NaN(), 0},
  };
  for (const auto& c : cases) EXPECT_EQ(SaturatedInt(c.value), c.expected) << c.value;
}

}  // namespace
}  // namespace tv
