#pragma once
// `tvplot printers`: the print queues a paper batch may use, each with its media.
// `tvplot print DRAWING [--printer QUEUE] [--copies N] [--collate] …`: the generic batch run to
// paper: each sheet plotted as a PDF at its paper and sent to the queue as a job of its own.
#include "cli/subcommand.h"

namespace tv::cli {

const Subcommand& PrintersSubcommand();
const Subcommand& PrintSubcommand();

}  // namespace tv::cli
