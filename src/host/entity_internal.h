#pragma once
// What stands behind an Entity handle on this platform; seen by the seam's implementation only,
// whose files include the drawing model themselves.
#include <memory>

#include "host/entity.h"

namespace tv::cad {
class Entity;
class Database;
class TextMeasurer;
}  // namespace tv::cad

namespace tv::host {

// A handle reads an entity of the working drawing in place, or owns a transient one.
struct Entity::Impl {
  const cad::Entity* entity = nullptr;  // never null in a live handle
  std::unique_ptr<cad::Entity> owned;   // set for transients; `entity` points into it
  const cad::Database* db = nullptr;    // where block, style and layer references are looked up

  bool transient() const { return owned != nullptr; }
};

namespace entity_internal {

// A handle that owns `e`; empty when `e` is null. `db` resolves its references (may be null).
Entity MakeTransient(std::unique_ptr<cad::Entity> e, const cad::Database* db);
// The drawing a handle's references resolve in: its own, else an empty one.
const cad::Database& DatabaseOf(const Entity::Impl& impl);
// One text measurer for the seam: installed fonts when any resolve, else the approximation.
const cad::TextMeasurer& SeamTextMeasurer();

}  // namespace entity_internal

}  // namespace tv::host
