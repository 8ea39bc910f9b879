#pragma once
// `tvplot run DRAWING COMMAND [--answers FILE] [--answer TEXT]… [--timings]`: runs one command
// line on a drawing unattended, its prompts answered from the options; never writes the drawing.
#include "console/subcommand.h"

namespace tv::console {

const Subcommand& RunSubcommand();

}  // namespace tv::console
