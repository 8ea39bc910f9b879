#pragma once
// Helpers the rectangle finder's files share.
#include <algorithm>
#include <vector>

#include "host/entity.h"
#include "host/object_id.h"
#include "host/wrappers.h"
#include "recognition/sheet_records.h"

namespace tv::recognition::internal {

// The frozen and off layers of the batch as one sorted list: a scan asks about every entity, and
// a drawing may have hundreds of layers.
class HiddenLayers {
 public:
  static HiddenLayers Current() {
    HiddenLayers hidden;
    const host::DrawingAids& aids = host::Aids();
    hidden.ids_ = aids.frozenLayerIds;
    hidden.ids_.insert(hidden.ids_.end(), aids.offLayerIds.begin(), aids.offLayerIds.end());
    std::sort(hidden.ids_.begin(), hidden.ids_.end());
    return hidden;
  }
  bool contains(ObjectId layer) const { return std::binary_search(ids_.begin(), ids_.end(), layer); }

 private:
  std::vector<ObjectId> ids_;
};

// Loops that open the entities of a list out of the drawing's order fetch those ahead of them:
// first their places in the drawing, then, nearer, the entities. `opens` tells which it will open.
template <class Opens>
void FetchAhead(const TempIdArray& list, std::size_t i, Opens&& opens) {
  constexpr std::size_t kFar = 16, kNear = 8;
  if (i + kFar < list.size() && opens(i + kFar)) host::PrefetchEntity(list[i + kFar].id, true);
  if (i + kNear < list.size() && opens(i + kNear)) host::PrefetchEntity(list[i + kNear].id, false);
}

}  // namespace tv::recognition::internal
