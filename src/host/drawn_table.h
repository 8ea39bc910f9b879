#pragma once
// What a table drawn into the drawing needs of the host: its text style and layer, and texts
// placed by a point other than their baseline start.
#include <cstdint>
#include <string>

#include "host/entity.h"
#include "host/geometry.h"
#include "host/object_id.h"

namespace tv::host {

struct TextStyleLook {
  std::string name;
  std::string fontFile;
  std::string bigFontFile;
  double size = 0.0;
  double xScale = 1.0;
  bool shapeFile = true;
};

// The text style of that name; a style the drawing has is kept as it stands, else it is made
// with `look`.
ObjectId FindOrAddTextStyle(const TextStyleLook& look);

// Gives a layer its colour, linetype (the drawing's of that name; left alone when it has none)
// and lineweight, in hundredths of a millimetre (-3 the default).
void SetLayerLook(ObjectId layerId, std::int32_t colorIndex, const std::string& linetype, std::int32_t lineweight);

enum class TextPlacement { LeftMiddle, MiddleCentre };
// A single-line text placed by `point` as `placement` says, in `style` (null: Standard).
Entity NewPlacedText(Point3d point, TextPlacement placement, double height, double widthFactor, ObjectId style,
                     std::string text);

}  // namespace tv::host
