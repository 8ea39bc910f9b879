#pragma once
// Pattern lines of a predefined hatch pattern cut to an area, for entities of the system that draw
// themselves hatched: the lines the drawing model's hatching gives, as loose segments.
#include <array>
#include <string_view>
#include <vector>

#include "host/geometry.h"

namespace tv::host {

using Segment3d = std::array<Point3d, 2>;

// The lines of `pattern` ("ANSI31") at `scale` inside the closed `loops` (even-odd, so holes stay
// empty), in the XY plane at Z 0. Nothing for a pattern the host doesn't know.
std::vector<Segment3d> HatchPatternSegments(const std::vector<std::vector<Point3d>>& loops, std::string_view pattern,
                                            double scale);

}  // namespace tv::host
