#pragma once
// One `tvplot` subcommand: its name, a line for the command list, its options and the function
// that runs it. Each subcommand lives in a file of its own and offers one `XxxSubcommand()`;
// the table in cli.cpp lists them.
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
}

namespace tv::cli {

class ParsedArgs;

// Exit codes shared by every subcommand.
inline constexpr int kExitOk = 0;
inline constexpr int kExitUsage = 1;       // missing argument, unknown option or command
inline constexpr int kExitUnreadable = 2;  // the drawing could not be read
inline constexpr int kExitUnanswered = 3;  // a prompt had no answer left
inline constexpr int kExitNotSaved = 5;    // the drawing could not be saved where --save-as said

// Where a subcommand writes: results to `out`, messages and progress to `err`.
struct CliStreams {
  std::ostream& out;
  std::ostream& err;
  bool errIsTerminal = false;  // progress lines only make sense on a terminal
};

struct Subcommand {
  std::string_view name;     // "info"
  std::string_view summary;  // one line for `tvplot --help`
  // Declares the options, and as description the synopsis ("用法：tvplot info 图纸.dxf [--json]")
  // and what the command does; the footer holds the exit codes.
  void (*define)(CLI::App& app);
  // Runs with the arguments after the subcommand's name; returns the exit code.
  int (*run)(const ParsedArgs& args, CliStreams& io);
};

}  // namespace tv::cli
