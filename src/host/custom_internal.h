#pragma once
// The system's own entities inside this platform's drawing model, for the seam's implementation:
// a host::CustomEntity is the content of a cad::CustomEntity.
#include <memory>

#include "host/custom_entity.h"

namespace tv::cad {
class Entity;
class CustomContent;
}  // namespace tv::cad

namespace tv::host {

// The drawing model's content for `object`; null when `object` is.
std::unique_ptr<cad::CustomContent> MakeCustomContent(std::unique_ptr<CustomEntity> object);
// The object behind one of the system's own entities, for changing it; nullptr for other entities.
CustomEntity* MutableCustomOf(cad::Entity& e);

}  // namespace tv::host
