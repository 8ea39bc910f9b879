#pragma once
// Shared by the scale and paper fitting files only.
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <string>
#include <string_view>

#include "host/geometry.h"

namespace tv::paper::internal {

// Points and scales closer than this are the same.
inline constexpr double kPointTolerance = kTol;

inline constexpr std::string_view kCaption = "Tarvex打印";

// truncate(value) as a paper side, kept within what an int32 holds (NaN gives 0).
inline std::int32_t TruncateSide(double value) {
  if (!(value > 0.0)) return 0;
  if (value >= static_cast<double>(std::numeric_limits<std::int32_t>::max())) return std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(value);
}

// Replaces each "%s" of `format` in turn by the next value.
inline std::string FillIn(std::string_view format, std::initializer_list<std::string> values) {
  std::string out;
  auto next = values.begin();
  for (std::size_t i = 0; i < format.size(); ++i) {
    if (format[i] == '%' && i + 1 < format.size() && format[i + 1] == 's' && next != values.end()) {
      out += *next++;
      ++i;
    } else {
      out += format[i];
    }
  }
  return out;
}

}  // namespace tv::paper::internal
