#pragma once
// Changing what texts say: texts, multiline texts, attribute definitions and attributes.
#include <string>

#include "host/object_id.h"

namespace tv::host {

// Writes the text of a text, an attribute definition or an attribute, or the contents of a
// multiline text; a multiline attribute takes it as its multiline text's contents. False, with
// nothing changed, for an entity that can't be opened for write (erased, on a locked layer) or
// holds no text.
bool SetEntityText(ObjectId id, const std::string& text);

// Whether an attribute is hidden by its own flag; false for other entities.
bool IsInvisibleAttribute(ObjectId id);

}  // namespace tv::host
