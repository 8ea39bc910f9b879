#pragma once
// Reading numbers and points from the answers typed at the console's prompts.
#include <cstdint>
#include <optional>
#include <string_view>

#include "host/geometry.h"

namespace tv::console {

// A whole answer as an integer in range ("12", "-3", "+4"); nullopt for anything else.
std::optional<std::int32_t> ParseInteger(std::string_view text);
// A whole answer as a finite number ("2.5", "-1e3", ".5").
std::optional<double> ParseReal(std::string_view text);
// "x,y" or "x,y,z"; with `base`, "@dx,dy[,dz]" is relative to it (to the origin without one).
std::optional<Point3d> ParsePoint(std::string_view text, const Point3d* base = nullptr);

}  // namespace tv::console
