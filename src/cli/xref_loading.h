#pragma once
// Loads the external references of a drawing just read, for every command that opens one, and
// tells the user once on standard error about each that could not be loaded.
#include <string>
#include <vector>

#include "cad/database.h"
#include "cad/xref_load.h"
#include "cli/drawing_summary.h"
#include "cli/subcommand.h"

namespace tv::cli {

cad::XrefLoadResult LoadXrefsOf(cad::Database& db, const std::string& path, CliStreams& io);

// The references as `info` lists them.
std::vector<XrefSummary> XrefSummaries(const cad::XrefLoadResult& result);

}  // namespace tv::cli
