#pragma once
// `tvplot tk list|export FILE|import FILE [--keep|--replace]`: the user's title-block library
// (BPlot_TK.tk in the data folder) shown, written to a .tk file, or merged with one.
#include "cli/subcommand.h"

namespace tv::cli {

const Subcommand& TkSubcommand();

}  // namespace tv::cli
