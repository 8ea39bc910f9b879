// Candidates largest first, so an outer frame is seen before what it holds.
#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "host/command_prologue.h"
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

// Puts each record where its key now stands, following the cycles of the order in place: a copy
// of a list this large would cost more in fresh memory than the moves themselves.
void Rearrange(TempIdArray& candidates, std::vector<AreaKey>& keys) {
  constexpr std::uint32_t kPlaced = UINT32_MAX;
  for (std::size_t start = 0; start < keys.size(); ++start) {
    if (keys[start].index == kPlaced) continue;
    if (keys[start].index == start) {
      keys[start].index = kPlaced;
      continue;
    }
    Temp_Id held = std::move(candidates[start]);
    std::size_t to = start;
    for (;;) {
      const std::uint32_t from = keys[to].index;
      keys[to].index = kPlaced;
      if (from == start) {
        candidates[to] = std::move(held);
        break;
      }
      candidates[to] = std::move(candidates[from]);
      to = from;
    }
  }
}

}  // namespace

void SortByArea(TempIdArray& candidates) {
  std::vector<AreaKey> keys = KeysOf(candidates);
  if (candidates.size() < num_max) {
    std::stable_sort(keys.begin(), keys.end(), Larger);
    Rearrange(candidates, keys);
    return;
  }
  // A long list is mostly small entities: sort the head, then place the tail into it, which the
  // stage timer reports as three steps.
  std::int64_t tick = host::ShowTimings ? host::TickCount() : 0;
  const auto head = keys.begin() + static_cast<std::ptrdiff_t>(num_max);
  tick = host::StageTimer(tick, "超出num_max的部分放入temp_lib");
  std::stable_sort(keys.begin(), head, Larger);
  tick = host::StageTimer(tick, "前面num_max采用递归快速排序");
  std::stable_sort(head, keys.end(), Larger);
  std::inplace_merge(keys.begin(), head, keys.end(), Larger);
  Rearrange(candidates, keys);
  host::StageTimer(tick, "后面部分按大小插入");
}

}  // namespace tv::recognition
