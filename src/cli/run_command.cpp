#include "cli/run_command.h"

#include "cli/command_line.h"
#include "cli/session_launch.h"
#include "console/session.h"
#include "host/command_prologue.h"
#include "host/module_entry.h"

namespace tv::cli {

using console::Session;
using console::SessionOptions;

namespace {

void DefineRun(CLI::App& app) {
  Describe(app,
           "用法：tvplot run 图纸.dxf 命令 [--answers 应答文件] [--answer 应答]… [--timings] [--save-as 新图纸.dxf]\n"
           "  在图纸上无人值守地执行一条命令行（命令名及其应答）。原图纸不会被改写。\n",
           "  退出码：0 完成，1 用法错误或未知命令，2 图纸或应答文件无法读取，3 应答不足，5 图纸无法另存\n");
  DefineLaunchOptions(app, "命令结束后把图纸（连同其打印设置）另存为该文件");
}

int RunRun(const ParsedArgs& args, CliStreams& io) {
  int exitCode = kExitOk;
  auto request = ParseLaunch(args, 2, io, exitCode);
  if (!request) return exitCode;
  auto db = LoadDrawing(request->positional[0], io);
  if (!db) return kExitUnreadable;

  host::ShowTimings = request->timings;
  SessionOptions options;
  options.out = &io.out;
  options.err = &io.err;
  options.progress = io.errIsTerminal;
  options.answers = std::move(request->answers);
  Session session(std::move(*db), request->positional[0], std::move(options));
  host::OnLoad();
  const bool known = session.runCommandLine(request->positional[1]);
  host::OnUnload();
  io.out << '\n';
  io.out.flush();
  if (!known) return kExitUsage;
  if (!request->saveAs.empty() && !SaveDrawingAs(session.database(), request->saveAs, io)) return kExitNotSaved;
  return session.unansweredPrompt() ? kExitUnanswered : kExitOk;
}

}  // namespace

const Subcommand& RunSubcommand() {
  static const Subcommand kRun{"run", "无人值守地在图纸上执行一条命令", &DefineRun, &RunRun};
  return kRun;
}

}  // namespace tv::cli
