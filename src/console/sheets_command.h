#pragma once
// `tvplot sheets DRAWING [--range …] [--order N] [--filter P] [--scale S] [--json] …`: the sheets
// the generic batch finds in a drawing, as its review list shows them.
#include "console/subcommand.h"

namespace tv::console {

const Subcommand& SheetsSubcommand();

}  // namespace tv::console
