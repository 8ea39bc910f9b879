#pragma once
// Answers typed at the picking prompts that also take keywords, so the host can't parse them as
// points itself.
#include <optional>
#include <string_view>

#include "host/geometry.h"

namespace tv::plot {

// Blanks and tabs off both ends.
std::string_view TrimTyped(std::string_view text);

// "x,y" or "x,y,z" (z 0 when left out); nullopt for anything else.
std::optional<Point3d> ParseTypedPoint(std::string_view text);

}  // namespace tv::plot
