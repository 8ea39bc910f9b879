#pragma once
// `tvplot sign place` and `tvplot sign approve`: signatures put into a drawing and approved,
// the result saved as another drawing.
#include "cli/command_line.h"

namespace tv::cli {

int RunSignPlace(const ParsedArgs& args, CliStreams& io);
int RunSignApprove(const ParsedArgs& args, CliStreams& io);

}  // namespace tv::cli
