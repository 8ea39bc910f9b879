// Selection sets and fences through the editor.
#include <unordered_set>

#include "host/wrappers.h"

namespace tv::host {

namespace {

bool Fence(const SelectionFilter& filter, std::vector<Point3d>& points, ObjectIdArray& ids) {
  SelectionSet set;
  const int rc = points.empty() ? RTERROR : CurrentEditor().select("F", {}, points, filter, set);
  points.clear();
  if (rc != RTNORM || set.empty()) return false;
  std::unordered_set<ObjectId> known(ids.begin(), ids.end());
  for (ObjectId id : set)
    if (known.insert(id).second) ids.push_back(id);
  return true;
}

}  // namespace

void SelectionToIds(SelectionSet& set, ObjectIdArray& ids) {
  ids.insert(ids.end(), set.begin(), set.end());
  set.clear();
  set.shrink_to_fit();
}

bool SelectFence(std::vector<Point3d>& points, ObjectIdArray& ids) { return Fence({}, points, ids); }

bool SelectFenceOfType(const std::string& typeName, std::vector<Point3d>& points, ObjectIdArray& ids) {
  return Fence({{0, typeName}}, points, ids);
}

}  // namespace tv::host
