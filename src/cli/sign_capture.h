#pragma once
// `tvplot sign capture`: a signature captured from the curves of a drawing into the user's library.
#include "cli/command_line.h"

namespace tv::cli {

inline constexpr int kExitPersonTaken = 6;
inline constexpr int kExitNoOutline = 7;

int RunSignCapture(const ParsedArgs& args, CliStreams& io);

}  // namespace tv::cli
