// Candidates largest first, so an outer frame is seen before what it holds.
#include <algorithm>
#include <functional>

#include "host/command_prologue.h"
#include "recognition/sheet_traversal.h"

namespace tv::recognition {

namespace {
bool Larger(const Temp_Id& a, const Temp_Id& b) { return a.area > b.area; }
}  // namespace

void SortByArea(TempIdArray& candidates) {
  if (candidates.size() < num_max) {
    std::stable_sort(candidates.begin(), candidates.end(), Larger);
    return;
  }
  // A long list is mostly small entities: sort the head, then place the tail into it, which the
  // stage timer reports as three steps.
  std::int64_t tick = host::ShowTimings ? host::TickCount() : 0;
  const auto head = candidates.begin() + static_cast<std::ptrdiff_t>(num_max);
  tick = host::StageTimer(tick, "超出num_max的部分放入temp_lib");
  std::stable_sort(candidates.begin(), head, Larger);
  tick = host::StageTimer(tick, "前面num_max采用递归快速排序");
  std::stable_sort(head, candidates.end(), Larger);
  std::inplace_merge(candidates.begin(), head, candidates.end(), Larger);
  host::StageTimer(tick, "后面部分按大小插入");
}

}  // namespace tv::recognition
