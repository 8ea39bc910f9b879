#pragma once
// `tvplot info DRAWING [--json]`: what a drawing holds (version, units, entities per space,
// layers, layouts, blocks, dictionaries, reader warnings). Reads only; never writes a file.
#include "cli/subcommand.h"

namespace tv::cli {

const Subcommand& InfoSubcommand();

}  // namespace tv::cli
