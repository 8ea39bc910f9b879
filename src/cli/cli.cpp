#include "cli/cli.h"

#include <unistd.h>

#include <algorithm>
#include <exception>
#include <iostream>
#include <span>
#include <string>
#include <vector>

#include "cad/walk_limits.h"
#include "cli/command_line.h"
#include "cli/config_command.h"
#include "cli/console_command.h"
#include "cli/frame_command.h"
#include "cli/info_command.h"
#include "cli/paper_command.h"
#include "cli/plot_command.h"
#include "cli/print_command.h"
#include "cli/report_command.h"
#include "cli/run_command.h"
#include "cli/sheets_command.h"
#include "cli/sign_command.h"
#include "cli/stamp_command.h"
#include "cli/subcommand.h"
#include "cli/titleblock_command.h"
#include "cli/tk_command.h"
#include "console/text_table.h"
#include "host/version.h"

namespace tv::cli {

using console::Printable;
using console::TextTable;

namespace {

// Every subcommand, in the order `tvplot --help` lists them. A new one is a file of its own and
// one line here.
constexpr const Subcommand& (*kSubcommands[])() = {
    &InfoSubcommand,
    &ConsoleSubcommand,
    &RunSubcommand,
    &PaperSubcommand,
    &SheetsSubcommand,
    &PlotSubcommand,
    &PrintSubcommand,
    &PrintersSubcommand,
    &TitleBlockSubcommand,
    &ReportSubcommand,
    &TkSubcommand,
    &FrameSubcommand,
    &SignSubcommand,
    &StampSubcommand,
    &ConfigSubcommand,
};

const Subcommand* FindSubcommand(std::string_view name) {
  for (auto get : kSubcommands)
    if (get().name == name) return &get();
  return nullptr;
}

void PrintUsage(std::ostream& out) {
  out << "用法：tvplot 命令 [参数…]\n"
         "      tvplot help 命令     显示命令的用法\n"
         "      tvplot --version    显示版本\n"
         "命令：\n";
  TextTable t;
  for (auto get : kSubcommands) t.addRow({std::string(get().name), std::string(get().summary)});
  t.addRow({"help", "显示帮助"});
  t.print(out);
}

int RunHelp(std::span<const std::string> args, CliStreams& io) {
  if (args.empty()) {
    PrintUsage(io.out);
    return kExitOk;
  }
  if (const Subcommand* cmd = FindSubcommand(args.front())) {
    io.out << SubcommandHelp(*cmd);
    return kExitOk;
  }
  io.err << "tvplot: 未知命令 " << Printable(args.front()) << '\n';
  PrintUsage(io.err);
  return kExitUsage;
}

int Dispatch(const std::vector<std::string>& args, CliStreams& io) {
  if (args.empty()) {
    PrintUsage(io.err);
    return kExitUsage;
  }
  if (args[0] == "--version" || args[0] == "-v") {
    io.out << "tvplot " << host::kProductVersion << '\n';
    return kExitOk;
  }
  if (args[0] == "--help" || args[0] == "-h") return RunHelp({}, io);
  if (args[0] == "help") return RunHelp(std::span(args).subspan(1), io);
  if (const Subcommand* cmd = FindSubcommand(args[0])) {
    return RunSubcommand(*cmd, std::vector<std::string>(args.begin() + 1, args.end()), io);
  }
  io.err << "tvplot: 未知命令 " << Printable(args[0]) << '\n';
  PrintUsage(io.err);
  return kExitUsage;
}

}  // namespace

int RunCli(int argc, char** argv) {
  std::vector<std::string> args(argv + std::min(argc, 1), argv + argc);
  CliStreams io{std::cout, std::cerr, isatty(STDERR_FILENO) == 1};
  int code = kExitUnreadable;
  try {
    code = Dispatch(args, io);
  } catch (const std::exception& e) {
    // Subcommands report failures by result; what still gets here is running out of memory
    // on an oversized drawing and the like.
    io.err << "tvplot: " << e.what() << '\n';
  }
  // Said once, after everything else, whichever walk left content out.
  if (cad::ContentLeftOut()) io.err << "tvplot: 提示：图块嵌套过深或图形过多，已略去部分内容\n";
  std::cout.flush();
  std::cerr.flush();
  return code;
}

}  // namespace tv::cli
