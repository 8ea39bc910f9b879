#pragma once
// Doubles made whole numbers without undefined behaviour: a size read off a drawing can be 1e308,
// infinite or NaN, and a plain cast of such a value to an integer is undefined.
#include <cmath>
#include <cstdint>
#include <limits>

namespace tv {

// Cut towards zero, NaN as 0, values beyond [lo, hi] at the bound.
inline std::int32_t SaturatedInt(double v, std::int32_t lo = std::numeric_limits<std::int32_t>::min(),
                                 std::int32_t hi = std::numeric_limits<std::int32_t>::max()) {
  if (std::isnan(v)) v = 0;
  const double t = std::trunc(v);
  if (t <= lo) return lo;
  if (t >= hi) return hi;
  return static_cast<std::int32_t>(t);
}

}  // namespace tv
