#pragma once
// Whole numbers from the doubles of a drawing, which may hold any value: a cast of one out of
// range is undefined, these hold it at the ends of the range instead.
#include <cmath>
#include <cstdint>
#include <limits>

namespace tv {

// Truncated toward zero like a cast; NaN gives 0.
inline std::int32_t TruncateToInt32(double v) {
  if (std::isnan(v)) return 0;
  if (v <= static_cast<double>(std::numeric_limits<std::int32_t>::min())) return std::numeric_limits<std::int32_t>::min();
  if (v >= static_cast<double>(std::numeric_limits<std::int32_t>::max())) return std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(v);
}

}  // namespace tv
