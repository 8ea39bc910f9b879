// `tvplot run` and `tvplot console` as users run them: the built program on drawings written to
// a temporary folder, with answers from options, files and standard input.
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <gtest/gtest.h>

#include "../console/console_test_support.h"
#include "../support/tvplot_test.h"

#include "cli/command_line.h"
#include "cli/session_launch.h"

namespace tv::cli {
namespace {

namespace fs = std::filesystem;

using namespace test_support;

cad::Database OneLine() {
  cad::Database db = cad::Database::createDefault();
  console::testing::AddLine(db, *db.modelSpace(), {0, 0}, {100, 0});
  return db;
}

class RunCommand : public TvplotTest {
 protected:
  ~RunCommand() override {
    EXPECT_EQ(ReadFile(drawing_), original_) << "the drawing is never written";
    EXPECT_EQ(FilesIn(dir_.path()).size(), extraFiles_ + 1) << "nothing is left beside the drawing";
  }
  const std::string drawing_ = Write("平面.dxf", OneLine()), original_ = ReadFile(drawing_);
  std::size_t extraFiles_ = 0;
};

TEST_F(RunCommand, APromptWithoutAnAnswerEndsWithCode3NamingIt) {
  RunResult r = Run({"run", drawing_, "_-plotstamp"});
  EXPECT_EQ(r.exitCode, kExitUnanswered) << r.out << r.err;
  EXPECT_NE(r.out.find("\n命令: _-plotstamp\n输入选项 [开(ON)/关(OFF)]: \n应答已用完，无法回答提示“输入选项 [开(ON)/关(OFF)]: ”，命令已取消。"),
            std::string::npos)
      << r.out;
}

TEST_F(RunCommand, AnswersFromOptionsAndFiles) {
  EXPECT_EQ(Run({"run", drawing_, "_-plotstamp", "--answer", "ON"}).exitCode, kExitOk);
  EXPECT_EQ(Run({"run", drawing_, "_-plotstamp on"}).exitCode, kExitOk);
  const std::string answers = WriteText("应答.txt", "OFF\r\n");
  extraFiles_ = 1;
  RunResult r = Run({"run", drawing_, "_-plotstamp", "--answers", answers});
  EXPECT_EQ(r.exitCode, kExitOk) << r.out << r.err;
  EXPECT_NE(r.out.find("]: OFF"), std::string::npos) << "the answer is echoed: " << r.out;
  EXPECT_EQ(Run({"run", drawing_, "_-plotstamp", "--answers", answers + ".missing"}).exitCode, kExitUnreadable);
}

TEST_F(RunCommand, UnknownCommandsAndBrokenDrawings) {
  RunResult r = Run({"run", drawing_, "NO_SUCH_COMMAND"});
  EXPECT_EQ(r.exitCode, kExitUsage);
  EXPECT_NE(r.out.find("未知命令“NO_SUCH_COMMAND”。"), std::string::npos) << r.out;
  EXPECT_EQ(Run({"run", (dir_ / "missing.dxf").string(), "X"}).exitCode, kExitUnreadable);
  const std::string broken = WriteText("broken.dxf", "0\nSECTION\n2\nENTITIES\n0\nLINE\n10\nnot a number\n");
  extraFiles_ = 1;
  r = Run({"run", broken, "X"});
  EXPECT_EQ(r.exitCode, kExitUnreadable) << r.out << r.err;
  EXPECT_FALSE(r.err.empty());
}

TEST_F(RunCommand, SaveAsWritesANewDrawingAndNeverTheOriginal) {
  const std::string saved = (dir_ / "另存.dxf").string();
  RunResult r = Run({"run", drawing_, "_-plotstamp on", "--save-as", saved});
  ASSERT_EQ(r.exitCode, kExitOk) << r.err;
  extraFiles_ = 1;
  CliStreams io{std::cout, std::cerr, false};
  auto reread = LoadDrawing(saved, io);
  ASSERT_TRUE(reread);
  EXPECT_TRUE(reread->modelSpace());

  EXPECT_EQ(Run({"run", drawing_, "_-plotstamp on", "--save-as", drawing_}).exitCode, kExitUsage);
  // An unwritable target leaves neither a file nor a temporary behind.
  r = Run({"run", drawing_, "_-plotstamp on", "--save-as", (dir_ / "无此文件夹" / "x.dxf").string()});
  EXPECT_EQ(r.exitCode, 5) << r.err;
  EXPECT_NE(r.err.find("无法保存"), std::string::npos) << r.err;
}

TEST_F(RunCommand, ModuleCommandsRunThroughTheLoadedModule) {
  RunResult r = Run({"run", drawing_, "tv_batchplot_12", "--timings"});
  EXPECT_EQ(r.exitCode, kExitOk) << r.out << r.err;
  EXPECT_NE(r.out.find("安装文件夹"), std::string::npos) << r.out;
}

TEST_F(RunCommand, TheConsoleReadsCommandLinesUntilQuit) {
  RunResult r = Run({"console", drawing_, "--answer", "ON"}, "?\n_-plotstamp\nnope\n_-plotstamp\nOFF\nquit\n_-plotstamp\n");
  EXPECT_EQ(r.exitCode, kExitOk) << r.out << r.err;
  EXPECT_NE(r.out.find("TV_BatchPlot_12"), std::string::npos) << "? lists the registered commands";
  EXPECT_NE(r.out.find("\n命令: _-plotstamp\n输入选项 [开(ON)/关(OFF)]: ON"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("\n命令: nope\n未知命令“nope”。"), std::string::npos);
  EXPECT_NE(r.out.find("]: OFF\n命令: quit"), std::string::npos) << r.out;
  EXPECT_EQ(r.out.find("quit\n命令: _-plotstamp"), std::string::npos) << "nothing runs after QUIT";

  r = Run({"console", drawing_}, "_-plotstamp\n");
  EXPECT_EQ(r.exitCode, kExitUnanswered) << "standard input ended at a prompt";
  r = Run({"console", drawing_}, "_close\n_-plotstamp\n");
  EXPECT_EQ(r.exitCode, kExitOk) << "CLOSE ends the session";
  EXPECT_EQ(r.out.find("输入选项"), std::string::npos);
}

// The launch options of `run` and `console`, parsed as either parses them.
std::optional<LaunchRequest> Launched(const std::vector<std::string>& args, CliStreams& io, int& code) {
  static std::optional<LaunchRequest> request;
  static int exitCode = 0;
  static const Subcommand kLaunch{
      "run", "", [](CLI::App& app) { DefineLaunchOptions(app, "另存"); },
      [](const ParsedArgs& a, CliStreams& s) {
        request = ParseLaunch(a, 2, s, exitCode);
        return exitCode;
      }};
  request.reset();
  exitCode = kExitOk;
  code = RunSubcommand(kLaunch, args, io);
  return request;
}

TEST(SessionLaunch, AnswerOptionsComeBeforeTheFileAndTimingsIsAFlag) {
  TempDir dir;
  const std::string file = (dir / "a.txt").string();
  WriteFile(file, "三\n四\n");
  std::ostringstream out, err;
  CliStreams io{out, err, false};
  int code = -1;
  auto request = Launched({"d.dxf", "--answers", file, "--answer", "一", "CMD", "--answer=二", "--timings", "--answer",
                           "-plot", "--answer", "", "--answer="},
                          io, code);
  ASSERT_TRUE(request) << err.str();
  EXPECT_EQ(request->positional, (std::vector<std::string>{"d.dxf", "CMD"}));
  EXPECT_EQ(request->answers, (std::vector<std::string>{"一", "二", "-plot", "", "", "三", "四"}));
  EXPECT_TRUE(request->timings);
  EXPECT_FALSE(Launched({"d.dxf"}, io, code));
  EXPECT_EQ(code, kExitUsage);
  EXPECT_FALSE(Launched({"d.dxf", "C", "--answers", file + "x"}, io, code));
  EXPECT_EQ(code, kExitUnreadable);
}

}  // namespace
}  // namespace tv::cli
