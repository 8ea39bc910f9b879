#pragma once
// Colours and pens on paper: the index colour palette and the plot styles.
#include <cstdint>
#include <optional>

#include "render/plot_request.h"

namespace tv::render {

// The usual colour of an index colour 1..255 on a dark screen (7 is white); 0 and 256 give 7's.
Rgb AciColor(int aci);

// What an object of colour index `aci` (1..255) and true colour `trueColor` (0x00RRGGBB, -1 none)
// with lineweight `lineweightMm` plots as under `style`.
struct Pen {
  Rgb color;
  double widthMm = 0;
};
Pen PenOf(const PlotStyle& style, int aci, std::int32_t trueColor, double lineweightMm);

}  // namespace tv::render
