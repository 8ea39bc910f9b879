#pragma once
// `tvplot plot DRAWING [--format …] [--out DIR | --path-mode N] [--style S] [--margin MM] …`: the
// generic batch run unattended, from recognition to one file per sheet. The title-block batch
// runs the same way through its own command.
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/subcommand.h"
#include "settings/plot_setting.h"

namespace tv::console {
class ConsoleEditor;
}

namespace tv::cli {

const Subcommand& PlotSubcommand();

// A file batch run unattended with the options of `tvplot plot`.
struct FileBatch {
  struct Refusal {
    std::string message;
    int exitCode = 0;
  };
  std::string_view program;  // "tvplot plot", as messages begin
  std::string_view command;  // the batch command the session runs
  // Runs once the module is loaded, before the settings are taken over; a refusal ends the run.
  std::function<std::optional<Refusal>()> prepare;
  // Given: changes the settings the run takes over, after the output options did.
  std::function<void(settings::PlotSettingRec&)> adjust;
  // Set for one drawing of a run over several: the drawing, and the file its sheets merge into.
  std::string drawing;
  std::optional<std::string> merge;
  std::string progressPrefix;  // "[2/5] 平面.dxf ": which drawing the progress lines are of
  // Given: takes the bookmarks of the sheets the merge joined, in order.
  std::vector<std::string>* mergedBookmarks = nullptr;
  // Given: takes the files the run wrote, in sheet order.
  std::vector<std::string>* writtenFiles = nullptr;
  // Commands typed at the review list before its OK, and the answers its OK then asks for.
  std::vector<std::string> listAnswers, runAnswers;
  // Given: what the run says at its end instead of the files it wrote (the folder isn't checked
  // either): the session's editor, the rows listed and the seconds taken; returns the exit code.
  std::function<int(console::ConsoleEditor& editor, int listed, double seconds)> summary;
};
int RunFileBatch(const ParsedArgs& args, CliStreams& io, const FileBatch& batch);
// The options of where and how the files are written, which the title-block batch shares:
// --format, --out, --path-mode, --style, --margin, --yes, --no and --verbose.
void DefinePlotOutputOptions(CLI::App& app);

}  // namespace tv::cli
