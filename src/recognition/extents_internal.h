#pragma once
// Helpers shared by the extents code of recognition.
#include <cstdint>
#include <map>
#include <tuple>

#include "host/entity.h"

namespace tv::recognition::internal {

// Attributes and attribute definitions are texts to the host, as their classes derive from text.
constexpr bool IsSingleLineText(host::EntityClass c) {
  return c == host::EntityClass::Text || c == host::EntityClass::Attribute;
}

// getGeomExtents as a box: empty when the entity shows nothing.
inline Extents3d GeomExtents(const host::Entity& entity) { return entity.geomExtents().value_or(Extents3d{}); }

// While one lives, the box of a block's content in its own coordinates is worked out once per block
// and kept: a scan measures thousands of references to the same few blocks, and neither the blocks
// nor the layers change under it. Scopes don't nest; an inner one is a no-op.
class BlockBoxScope {
 public:
  BlockBoxScope();
  ~BlockBoxScope();
  BlockBoxScope(const BlockBoxScope&) = delete;
  BlockBoxScope& operator=(const BlockBoxScope&) = delete;

  struct Box {
    bool added = false;
    Extents3d extents;
  };
  // The kept box of (block, withText, exactSplines); null when no scope is open.
  static std::map<std::tuple<std::uint64_t, bool, bool>, Box>* Current();

 private:
  std::map<std::tuple<std::uint64_t, bool, bool>, Box> boxes_;
  bool owner_ = false;
};

}  // namespace tv::recognition::internal
