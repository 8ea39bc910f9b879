#pragma once
// `tvplot config show | export FILE | import FILE`: the user's configuration, shown field by
// field with its meaning, saved to a file of the user's choice, or read from one and kept.
#include "cli/subcommand.h"

namespace tv::cli {

const Subcommand& ConfigSubcommand();

}  // namespace tv::cli
