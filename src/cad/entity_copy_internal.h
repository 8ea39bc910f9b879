#pragma once
// An entity copied into another drawing leaves behind the links that only mean something in its
// own: its extension dictionary, reactors, plot style and material. Not part of the API.
#include "cad/entities.h"

namespace tv::cad {

inline void DropForeignLinks(Entity& e) {
  if (!e.extrasIfAny()) return;
  ObjectExtras& x = e.extras();
  x.extensionDictionary = {};
  x.reactors.clear();
  x.plotStyle = {};
  x.material = {};
}

}  // namespace tv::cad
