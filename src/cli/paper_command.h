#pragma once
// `tvplot paper LENGTHxWIDTH [--scale S] [--style N] [--json]`: the paper a size becomes, its
// internal name and how each naming style writes it; with --scale, also the paper a sheet drawn
// at that size needs at that scale.
#include "cli/subcommand.h"

namespace tv::cli {

const Subcommand& PaperSubcommand();

}  // namespace tv::cli
