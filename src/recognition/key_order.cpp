#include <bit>
#include <utility>

#include "recognition/key_order_internal.h"

namespace tv::recognition::internal {

std::uint64_t OrderedBits(double key) {
  if (key == 0.0) key = 0.0;
  const auto bits = std::bit_cast<std::uint64_t>(key);
  return bits >> 63 ? ~bits : bits | (std::uint64_t{1} << 63);
}

void SortByBits(std::vector<BitsKeyed>& items) {
  constexpr int kDigitBits = 11, kPasses = 6;  // 66 bits cover the key
  constexpr std::size_t kRadix = std::size_t{1} << kDigitBits;
  const std::size_t n = items.size();
  if (n < 2) return;
  std::vector<std::uint32_t> counts(kPasses * kRadix, 0);
  for (const BitsKeyed& k : items)
    for (int p = 0; p < kPasses; ++p) ++counts[p * kRadix + ((k.bits >> (p * kDigitBits)) & (kRadix - 1))];
  std::vector<BitsKeyed> other(n);
  for (int p = 0; p < kPasses; ++p) {
    std::uint32_t* count = counts.data() + p * kRadix;
    // A digit every key shares moves nothing.
    if (count[(items[0].bits >> (p * kDigitBits)) & (kRadix - 1)] == n) continue;
    std::uint32_t sum = 0;
    for (std::size_t d = 0; d < kRadix; ++d) sum += std::exchange(count[d], sum);
    for (const BitsKeyed& k : items) other[count[(k.bits >> (p * kDigitBits)) & (kRadix - 1)]++] = k;
    items.swap(other);
  }
}

}  // namespace tv::recognition::internal
