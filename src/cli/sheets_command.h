#pragma once
// `tvplot sheets DRAWING [--range …] [--order N] [--filter P] [--scale S] [--json] …`: the sheets
// the generic batch finds in a drawing, as its review list shows them.
#include "cli/subcommand.h"

namespace tv::cli {

const Subcommand& SheetsSubcommand();

}  // namespace tv::cli
