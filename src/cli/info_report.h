#pragma once
// The two shapes of `tvplot info` output: text for people, one JSON object for programs.
#include <ostream>

#include "cli/drawing_summary.h"

namespace tv::cli {

void WriteInfoText(const DrawingSummary& s, std::ostream& out);
void WriteInfoJson(const DrawingSummary& s, std::ostream& out);

}  // namespace tv::cli
