#pragma once
// A stable radix sort on the bits of double keys, for the lists of a scan that are too long for a
// comparison sort to be cheap: the candidates by area, the segment families by coordinate.
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tv::recognition::internal {

// A key as an unsigned number in the order of <, 0 and -0 being one number. Not for NaN.
std::uint64_t OrderedBits(double key);

struct BitsKeyed {
  std::uint64_t bits;
  std::size_t place;
};

// Sorts by `bits`, ascending; equal bits keep their order.
void SortByBits(std::vector<BitsKeyed>& items);

}  // namespace tv::recognition::internal
