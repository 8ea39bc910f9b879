#pragma once
// `tvplot frame list|add|delete|rename|redefine|preview|place`: the frame folder (the configured
// frame_folder, or --folder) listed and kept, a frame previewed as a picture, and a frame placed
// into a copy of a drawing.
#include "cli/subcommand.h"

namespace tv::cli {

inline constexpr int kExitFrameNameTaken = 6;  // "图框重名 !"
inline constexpr int kExitNothingSelected = 7;  // the drawing gave no entities for the frame

const Subcommand& FrameSubcommand();

}  // namespace tv::cli
