#pragma once
// `tvplot console DRAWING [--answers FILE] [--answer TEXT]… [--timings]`: the drawing open on an
// interactive command line; prompts take the given answers first, then lines from the terminal.
#include "cli/subcommand.h"

namespace tv::cli {

const Subcommand& ConsoleSubcommand();

}  // namespace tv::cli
