#pragma once
// `tvplot console DRAWING [--answers FILE] [--answer TEXT]… [--timings]`: the drawing open on an
// interactive command line; prompts take the given answers first, then lines from the terminal.
#include "console/subcommand.h"

namespace tv::console {

const Subcommand& ConsoleSubcommand();

}  // namespace tv::console
