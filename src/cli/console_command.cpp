#include "cli/console_command.h"

#include <unistd.h>

#include <iostream>
#include <sstream>

#include "cli/command_line.h"
#include "cli/session_launch.h"
#include "console/console_editor.h"
#include "console/session.h"
#include "console/text_match.h"
#include "console/text_table.h"
#include "host/command_prologue.h"
#include "host/module_entry.h"

namespace tv::cli {

using console::TextTable;
using console::Session;
using console::SessionOptions;
using console::ConsoleEditor;
using console::AsciiUpper;
using console::TrimBlanks;

namespace {

void ListCommands(ConsoleEditor& editor) {
  TextTable table;
  for (const auto& c : editor.commands()) table.addRow({c.globalName, c.group});
  std::ostringstream text;
  text << "\n已注册的命令：\n";
  table.print(text);
  std::string listing = text.str();
  if (listing.ends_with('\n')) listing.pop_back();
  editor.print(listing);
}

void DefineConsole(CLI::App& app) {
  Describe(app,
           "用法：tvplot console 图纸.dxf [--answers 应答文件] [--answer 应答]… [--timings] [--save-as 新图纸.dxf]\n"
           "  打开图纸的命令行：输入命令名执行命令，提示先取给定的应答，再从终端读取。\n"
           "  ? 列出已注册的命令，QUIT 或 EXIT 退出；原图纸不会被改写。\n",
           "  退出码：0 完成，1 用法错误，2 图纸或应答文件无法读取，3 应答不足，5 图纸无法另存\n");
  DefineLaunchOptions(app, "退出时把图纸另存为该文件");
}

int RunConsole(const ParsedArgs& args, CliStreams& io) {
  int exitCode = kExitOk;
  auto request = ParseLaunch(args, 1, io, exitCode);
  if (!request) return exitCode;
  auto db = LoadDrawing(request->positional[0], io);
  if (!db) return kExitUnreadable;

  host::ShowTimings = request->timings;
  const bool typedOnScreen = isatty(STDIN_FILENO) == 1;
  SessionOptions options;
  options.out = &io.out;
  options.err = &io.err;
  options.progress = io.errIsTerminal;
  options.answers = std::move(request->answers);
  options.terminal = &std::cin;
  options.terminalEchoes = typedOnScreen;
  Session session(std::move(*db), request->positional[0], std::move(options));
  host::OnLoad();
  while (!session.closeRequested()) {
    if (typedOnScreen) io.out << "\n命令: " << std::flush;
    std::string line;
    if (!std::getline(std::cin, line)) break;
    std::erase(line, '\r');
    const std::string word = AsciiUpper(TrimBlanks(line));
    if (word == "QUIT" || word == "EXIT") {
      if (!typedOnScreen) session.editor().print("\n命令: " + line);
      session.requestClose();
      break;
    }
    if (word == "?") {
      if (!typedOnScreen) session.editor().print("\n命令: " + line);
      ListCommands(session.editor());
      continue;
    }
    if (typedOnScreen) session.runTypedLine(line);
    else session.runCommandLine(line);
    io.out.flush();
  }
  host::OnUnload();
  io.out << '\n';
  io.out.flush();
  if (!request->saveAs.empty() && !SaveDrawingAs(session.database(), request->saveAs, io)) return kExitNotSaved;
  return session.unansweredPrompt() ? kExitUnanswered : kExitOk;
}

}  // namespace

const Subcommand& ConsoleSubcommand() {
  static const Subcommand kConsole{"console", "打开图纸的交互命令行", &DefineConsole, &RunConsole};
  return kConsole;
}

}  // namespace tv::cli
