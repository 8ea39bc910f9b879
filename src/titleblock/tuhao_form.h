#pragma once
// "图号重编": numbers for the drawing numbers of a review list, as prefix, serial and suffix.
#include <cstdint>
#include <string>
#include <string_view>

namespace tv::titleblock {

struct Dlg_TuHao {
  static constexpr std::string_view kTitle = "图号重编";
  std::string Prefix = "结施-";
  std::int32_t start = 1;
  std::string suffix;
  std::int32_t digits = 2;

  // The number of the `k`th row (from 0).
  std::string number(std::int32_t k) const;
  // "示   例" with the first three numbers, a gap, and the numbers of start + 10 and + 11.
  std::string sample() const;
  // A start typed as "-" alone is a number being entered: the sample waits.
  static bool Refreshes(std::string_view typedStart) { return typedStart != "-"; }
};

}  // namespace tv::titleblock
