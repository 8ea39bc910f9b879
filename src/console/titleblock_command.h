#pragma once
// `tvplot titleblock DRAWING [--tk FILE] [--range …] [--json]`: the sheets the title-block batch
// finds, with the fields read off each frame and the file names; with `--plot` the batch run
// unattended to files.
#include "console/subcommand.h"

namespace tv::console {

const Subcommand& TitleBlockSubcommand();

}  // namespace tv::console
