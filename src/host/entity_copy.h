#pragma once
// Copies of entities of the drawing, as the host's clone operation makes them.
#include "host/object_id.h"

namespace tv::host {

// A copy of an entity appended to the current space, its attributes and vertices with handles of
// their own; null when the entity can't be opened.
ObjectId CopyEntity(ObjectId id);

}  // namespace tv::host
