#pragma once
// `tvplot tk define DRAWING --block NAME --area 图号 X1,Y1 X2,Y2 … [--rule RULE] [--paper LxW]
// [--digits N] [--replace]`: a title-block definition captured from an insert of the block in the
// drawing and added to the user's library, as "录入新图框" enters it.
#include "cli/command_line.h"

namespace tv::cli {

int RunTkDefine(const ParsedArgs& args, CliStreams& io);

}  // namespace tv::cli
