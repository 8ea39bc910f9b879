#pragma once
// `tvplot titleblock DRAWING [--tk FILE] [--range …] [--json]`: the sheets the title-block batch
// finds, with the fields read off each frame and the file names; with `--plot` the batch run
// unattended to files.
#include "cli/subcommand.h"

namespace tv::cli {

const Subcommand& TitleBlockSubcommand();

}  // namespace tv::cli
