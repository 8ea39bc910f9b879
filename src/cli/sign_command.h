#pragma once
// `tvplot sign list|export FILE|import FILE [--keep|--replace]`: the user's signature library
// (Sign.tvlib1 in the data folder, or the file the settings name) shown, written out, or merged
// with a .tvlib1 file.
#include "cli/subcommand.h"

namespace tv::cli {

const Subcommand& SignSubcommand();

}  // namespace tv::cli
