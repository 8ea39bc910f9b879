#pragma once
// `tvplot report list|index|papers DRAWING [--tk FILE] [--out DIR] [--base A4…A0]`: the review list
// of a drawing written as a workbook (file list, drawing index or paper statistics).
#include <optional>
#include <string>
#include <vector>

#include "cli/subcommand.h"

namespace tv::console {
class ConsoleEditor;
}

namespace tv::cli {

const Subcommand& ReportSubcommand();

// The kinds of a --report value ("list,index,papers"), or the reason it is wrong.
std::optional<std::string> ReadReportKinds(const std::string& value, std::vector<std::string>& kinds);
// The reports of a plot run, written into its output folder from the list the run plotted (the
// title-block list or the generic one): the drawing is recognised again as the list showed it.
// The paths go to io.out; false when one could not be written.
bool WriteRunReports(const std::vector<std::string>& kinds, bool titleList, const std::string& folder,
                     const std::string& range, console::ConsoleEditor& editor, CliStreams& io);

}  // namespace tv::cli
