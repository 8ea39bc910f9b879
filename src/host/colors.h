#pragma once
// Colours of entities and layers as index colours: what the colour-dependent plot styles work on.
#include <cstdint>
#include <optional>

#include "host/object_id.h"

namespace tv::host {

inline constexpr int kColorByBlock = 0;
inline constexpr int kColorByLayer = 256;

// The index colour 1..255 nearest to a true colour 0x00RRGGBB.
int NearestColorIndex(std::int32_t rgb);

// An entity's colour as an index: 0 ByBlock, 1..255, 256 ByLayer; a true colour, also one of a
// colour book, gives its nearest index colour. nullopt when the entity can't be opened.
std::optional<int> EntityColorIndex(ObjectId id);
// Sets an index colour 0..256, which drops any true colour. True when the colour changed.
bool SetEntityColorIndex(ObjectId id, int index);

// The same for layers (1..255).
std::optional<int> LayerColorIndex(ObjectId layerId);
bool SetLayerColorIndex(ObjectId layerId, int index);

}  // namespace tv::host
