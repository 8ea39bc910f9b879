#pragma once
// `tvplot plot DRAWING [--format …] [--out DIR | --path-mode N] [--style S] [--margin MM] …`: the
// generic batch run unattended, from recognition to one file per sheet.
#include "console/subcommand.h"

namespace tv::console {

const Subcommand& PlotSubcommand();

}  // namespace tv::console
