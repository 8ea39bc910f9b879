#pragma once
// Raster images of the working drawing: picture definitions under the named image dictionary
// ("ACAD_IMAGE_DICT"), IMAGE entities showing them, and the place of an entity in its space's
// draw order.
#include <string>

#include "host/geometry.h"
#include "host/object_id.h"

namespace tv::host {

// Why no definition came out of AddImageDefinition.
enum class ImageDefinitionFailure { None, NotLoaded, NoDictionary };

// The definition under `key`, or null.
ObjectId FindImageDefinition(const std::string& key);
// Takes the entry `key` out of the dictionary and deletes its definition, with the reactors that
// tied images to it. False when there was no such entry.
bool RemoveImageDefinition(const std::string& key);
// Takes the image dictionary away when nothing is left in it.
void DropEmptyImageDictionary();
// Loads the picture file and enters a definition for it under `key`. An entry already under
// `key` wins: its id is returned and the file isn't looked at. Null, with the reason, on failure.
ObjectId AddImageDefinition(const std::string& key, const std::string& file, ImageDefinitionFailure& why);

// Appends an IMAGE of the definition to the current space on `layerId`: the whole picture fills
// the rectangle from `lowerLeft`, `width` along x and `height` along y; shown, transparent, without
// clipping. Null when the definition is unknown or has no pixels.
ObjectId AppendImage(ObjectId definitionId, Point3d lowerLeft, double width, double height, ObjectId layerId);

// The colour of a layer, 1 to 255.
void SetLayerColor(ObjectId layerId, int colorIndex);

// Puts an entity last (drawn over everything else of its space) or first (under everything).
bool MoveInDrawOrder(ObjectId id, bool front);

}  // namespace tv::host
