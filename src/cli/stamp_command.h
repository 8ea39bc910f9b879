#pragma once
// `tvplot stamp list|export FILE|import FILE [--keep|--replace]|add IMAGE NAME`: the user's stamp
// library (Stamp.tvlib2 in the data folder, or the file the settings name) shown, written out,
// merged with a .tvlib2 file, or given a new stamp from a PNG or JPEG picture.
#include "cli/subcommand.h"

namespace tv::cli {

const Subcommand& StampSubcommand();

}  // namespace tv::cli
