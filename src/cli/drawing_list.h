#pragma once
// Several drawings in one run of `tvplot plot` or `tvplot titleblock --plot`: the drawings and
// folders of the command line taken one at a time, each opened, plotted and let go before the
// next, so a run holds no more than its largest drawing.
#include <string>
#include <vector>

#include "cli/subcommand.h"

namespace tv::cli {

struct FileBatch;
class ParsedArgs;

// The drawings the words name, in order: a file as given, a folder its .dxf and .dwg files
// (not its subfolders), sorted by name. A folder without drawings is named in `empty`.
std::vector<std::string> DrawingsOf(const std::vector<std::string>& words, std::vector<std::string>& empty);
// Whether the words ask for a run over several drawings: more than one, or a folder.
bool ManyDrawings(const std::vector<std::string>& words);
// Runs the batch over each drawing in turn; with --merge, one PDF across all of them.
int RunDrawings(const ParsedArgs& args, CliStreams& io, const FileBatch& batch);

}  // namespace tv::cli
