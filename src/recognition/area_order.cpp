// Candidates largest first, so an outer frame is seen before what it holds.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

#include "host/command_prologue.h"
#include "recognition/key_order_internal.h"
#include "recognition/sheet_traversal.h"

namespace tv::recognition {

namespace {

// The records are large; their areas and places are sorted instead, and the records moved once.
struct AreaKey {
  double area;
  std::uint32_t index;
};

bool Larger(const AreaKey& a, const AreaKey& b) { return a.area > b.area; }

std::vector<AreaKey> KeysOf(const TempIdArray& candidates) {
  std::vector<AreaKey> keys;
  keys.reserve(candidates.size());
  for (std::size_t i = 0; i < candidates.size(); ++i)
    keys.push_back({candidates[i].area, static_cast<std::uint32_t>(i)});
  return keys;
}

// Puts the records in key order by gathering them into a new list: its writes run in order, where
// moving them in place along the cycles of the order writes all over a list no cache holds.
void Gather(TempIdArray& candidates, const std::vector<AreaKey>& keys) {
  TempIdArray sorted;
  sorted.reserve(candidates.size());
  for (const AreaKey& k : keys) sorted.push_back(std::move(candidates[k.index]));
  candidates = std::move(sorted);
}

// Sorts a range of keys largest first, equal areas keeping their order: by the bits of the areas,
// which for hundreds of thousands of candidates is several times quicker than comparing them. An
// area that is no number (a zero side times an infinite one) orders nothing, and then only the
// comparison sort gives the order the list has always had.
void SortLargestFirst(std::vector<AreaKey>::iterator first, std::vector<AreaKey>::iterator last) {
  if (std::any_of(first, last, [](const AreaKey& k) { return std::isnan(k.area); })) {
    std::stable_sort(first, last, Larger);
    return;
  }
  const std::vector<AreaKey> unsorted(first, last);
  std::vector<internal::BitsKeyed> keyed;
  keyed.reserve(unsorted.size());
  for (std::size_t k = 0; k < unsorted.size(); ++k) keyed.push_back({~internal::OrderedBits(unsorted[k].area), k});
  internal::SortByBits(keyed);
  for (const internal::BitsKeyed& k : keyed) *first++ = unsorted[k.place];
}

}  // namespace

void SortByArea(TempIdArray& candidates) {
  std::vector<AreaKey> keys = KeysOf(candidates);
  if (candidates.size() < num_max) {
    SortLargestFirst(keys.begin(), keys.end());
    Gather(candidates, keys);
    return;
  }
  // A long list is mostly small entities: sort the head, then place the tail into it, which the
  // stage timer reports as three steps.
  std::int64_t tick = host::StageClock();
  const auto head = keys.begin() + static_cast<std::ptrdiff_t>(num_max);
  tick = host::StageTimer(tick, "超出num_max的部分放入temp_lib");
  SortLargestFirst(keys.begin(), head);
  tick = host::StageTimer(tick, "前面num_max采用递归快速排序");
  SortLargestFirst(head, keys.end());
  std::inplace_merge(keys.begin(), head, keys.end(), Larger);
  Gather(candidates, keys);
  host::StageTimer(tick, "后面部分按大小插入");
}

}  // namespace tv::recognition
