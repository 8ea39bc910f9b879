#pragma once
// `tvplot run DRAWING COMMAND [--answers FILE] [--answer TEXT]… [--timings]`: runs one command
// line on a drawing unattended, its prompts answered from the options; never writes the drawing.
#include "cli/subcommand.h"

namespace tv::cli {

const Subcommand& RunSubcommand();

}  // namespace tv::cli
