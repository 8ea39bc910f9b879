#pragma once
// Helpers the rectangle finder's files share.
#include <algorithm>
#include <vector>

#include "host/object_id.h"
#include "host/wrappers.h"

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

}  // namespace tv::recognition::internal
