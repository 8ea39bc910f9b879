#pragma once
// Helpers shared by the extents code of recognition.
#include "host/entity.h"

namespace tv::recognition::internal {

// Attributes and attribute definitions are texts to the host, as their classes derive from text.
constexpr bool IsSingleLineText(host::EntityClass c) {
  return c == host::EntityClass::Text || c == host::EntityClass::Attribute;
}

// getGeomExtents as a box: empty when the entity shows nothing.
inline Extents3d GeomExtents(const host::Entity& entity) { return entity.geomExtents().value_or(Extents3d{}); }

}  // namespace tv::recognition::internal
