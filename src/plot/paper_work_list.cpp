#include "plot/paper_work_list.h"

#include <algorithm>

namespace tv::plot {

std::vector<std::size_t> PaperWorkList(const std::vector<std::int32_t>& copies, bool collate, bool toPlt) {
  std::vector<std::size_t> list;
  const auto countOf = [&](std::size_t i) -> std::int32_t { return toPlt ? 1 : std::max<std::int32_t>(1, copies[i]); };
  if (collate && !toPlt) {
    // Round robin: every pass takes each sheet that still has copies left.
    std::vector<std::int32_t> left(copies.size());
    for (std::size_t i = 0; i < copies.size(); ++i) left[i] = countOf(i);
    for (bool any = true; any;) {
      any = false;
      for (std::size_t i = 0; i < left.size(); ++i)
        if (left[i] > 0) {
          --left[i];
          list.push_back(i);
          any = true;
        }
    }
    return list;
  }
  for (std::size_t i = 0; i < copies.size(); ++i) list.insert(list.end(), static_cast<std::size_t>(countOf(i)), i);
  return list;
}

}  // namespace tv::plot
