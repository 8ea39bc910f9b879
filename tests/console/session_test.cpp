// The console session: the command stack, command lines with their answers, host commands, the
// queue of command lines sent to execute, and progress.
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "console_test_support.h"
#include "host/editor.h"

namespace tv::console {
namespace {

using namespace tv::host;
using testing::ScriptedSession;

// Command bodies are plain functions: they report through this log.
std::vector<std::string>& Log() {
  static std::vector<std::string> log;
  return log;
}

void AskName() {
  std::string name;
  int rc = CurrentEditor().getString("\n名称: ", name);
  Log().push_back("AskName " + std::to_string(rc) + " " + name);
}

void AskTwo() {
  std::string a, b;
  CurrentEditor().getString("\n甲: ", a);
  CurrentEditor().getString("\n乙: ", b);
  Log().push_back("AskTwo " + a + " " + b);
}

void Other() { Log().push_back("Other"); }

class SessionTest : public ::testing::Test {
 protected:
  SessionTest() { Log().clear(); }
};

TEST_F(SessionTest, CommandLinesRunRegisteredCommandsWithTheirAnswers) {
  ScriptedSession s(cad::Database::createDefault(), {"从脚本"});
  ConsoleEditor& e = s.editor();
  e.addCommand("G1", "Ask_Name", "问名", ACRX_CMD_MODAL, &AskName);
  e.addCommand("G1", "AskTwo", "", ACRX_CMD_MODAL, &AskTwo);

  EXPECT_TRUE(s.session().runCommandLine("ask_NAME 行内"));
  EXPECT_TRUE(s.session().runCommandLine("问名"));
  EXPECT_TRUE(s.session().runCommandLine("_askname") == false);
  EXPECT_EQ(Log(), (std::vector<std::string>{"AskName 5100 行内", "AskName 5100 从脚本"}));
  EXPECT_NE(s.out().find("\n命令: ask_NAME 行内\n名称: 行内"), std::string::npos) << s.out();
  EXPECT_NE(s.out().find("\n命令: _askname\n未知命令“_askname”。"), std::string::npos) << s.out();

  // Words the command leaves unused are dropped with it, not handed to the next prompt.
  Log().clear();
  s.editor().answers().pushFront({"后来的"});
  EXPECT_TRUE(s.session().runCommandLine("_AskTwo 一 二 三 四"));
  EXPECT_TRUE(s.session().runCommandLine("Ask_Name"));
  EXPECT_EQ(Log(), (std::vector<std::string>{"AskTwo 一 二", "AskName 5100 后来的"}));
  EXPECT_FALSE(s.session().unansweredPrompt());
}

TEST_F(SessionTest, TheCommandStackReplacesByNameAndRemovesByGroup) {
  ScriptedSession s(cad::Database::createDefault());
  ConsoleEditor& e = s.editor();
  e.addCommand("G1", "CMD_A", "甲", 0, &Other);
  e.addCommand("G1", "CMD_B", "CMD_B", 0, &Other);
  e.addCommand("G2", "cmd_a", "", ACRX_CMD_USEPICKSET, &AskName);
  ASSERT_EQ(e.commands().size(), 2u);
  const auto* a = e.findCommand("CMD_A");
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(a->group, "G2") << "a new add replaces the name, whatever its group";
  EXPECT_EQ(a->flags, ACRX_CMD_USEPICKSET);
  EXPECT_EQ(e.findCommand("甲"), nullptr) << "the replaced command's local name went with it";
  EXPECT_NE(e.findCommand("_cmd_b"), nullptr);
  EXPECT_TRUE(e.removeGroup("G1"));
  EXPECT_FALSE(e.removeGroup("G1"));
  EXPECT_EQ(e.findCommand("CMD_B"), nullptr);
  EXPECT_NE(e.findCommand("cmd_a"), nullptr);
  EXPECT_FALSE(s.session().runCommandLine("CMD_B"));
}

TEST_F(SessionTest, HostCommands) {
  ScriptedSession s(cad::Database::createDefault(), {"O", "OFF", "sideways"});
  Editor& e = CurrentEditor();
  EXPECT_FALSE(s.editor().plotStamp());
  EXPECT_EQ(e.command({"-plotstamp", "ON"}), RTNORM);
  EXPECT_TRUE(s.editor().plotStamp());
  EXPECT_EQ(e.command({"-PLOTSTAMP", "off"}), RTNORM);
  EXPECT_FALSE(s.editor().plotStamp());
  EXPECT_EQ(e.command({"_-plotstamp"}), RTNORM) << "the answer comes from the script";
  EXPECT_TRUE(s.editor().plotStamp());
  EXPECT_EQ(e.command({"-plotstamp"}), RTNORM);
  EXPECT_FALSE(s.editor().plotStamp());
  EXPECT_EQ(e.command({"-plotstamp"}), RTERROR);
  EXPECT_EQ(e.command({"-plotstamp"}), RTCAN) << "no answer left";

  EXPECT_EQ(e.command({"REGENALL"}), RTERROR);
  EXPECT_NE(s.out().find("\n未知命令“REGENALL”。"), std::string::npos);

  s.editor().addHostCommand("Count", [](const std::vector<std::string>& args) {
    Log().push_back("Count " + std::to_string(args.size()));
    return RTNORM;
  });
  EXPECT_EQ(e.command({"_count", "a", "b"}), RTNORM);
  EXPECT_TRUE(s.session().runCommandLine("COUNT x"));
  EXPECT_EQ(Log(), (std::vector<std::string>{"Count 3", "Count 2"}));

  EXPECT_FALSE(s.session().closeRequested());
  e.setModified(true);
  EXPECT_TRUE(e.modified());
  e.setModified(false);
  EXPECT_EQ(e.command({"_CLOSE"}), RTNORM);
  EXPECT_TRUE(s.session().closeRequested());
}

void QueuesPlot() {
  Log().push_back("QueuesPlot");
  CurrentEditor().sendStringToExecute("\x03\x03Plot_X arg");
  CurrentEditor().sendStringToExecute("\x03");
  Log().push_back("QueuesPlot done");
}

void PlotX() {
  std::string arg;
  const int rc = CurrentEditor().getString("\n参数: ", arg);
  Log().push_back("Plot_X " + std::to_string(rc) + " " + arg);
}

TEST_F(SessionTest, QueuedTextRunsAfterTheCurrentCommandWithItsArguments) {
  ScriptedSession s(cad::Database::createDefault(), {"脚本应答"});
  s.editor().addCommand("G", "QueuesPlot", "", 0, &QueuesPlot);
  s.editor().addCommand("G", "Plot_X", "", 0, &PlotX);
  s.editor().addCommand("G", "Ask_Name", "", 0, &AskName);
  EXPECT_TRUE(s.session().runCommandLine("QueuesPlot"));
  EXPECT_EQ(Log(), (std::vector<std::string>{"QueuesPlot", "QueuesPlot done", "Plot_X 5100 arg"}));
  EXPECT_FALSE(s.editor().hasQueued());
  EXPECT_NE(s.out().find("\n命令: Plot_X\n参数: arg"), std::string::npos) << s.out();
  // The script's own answer is still there for the next command.
  EXPECT_TRUE(s.session().runCommandLine("Ask_Name"));
  EXPECT_EQ(Log().back(), "AskName 5100 脚本应答");

  // Several words and lines: the first is the command, the others answer it.
  Log().clear();
  CurrentEditor().sendStringToExecute("AskTwo\n甲 乙\n");
  s.editor().addCommand("G", "AskTwo", "", 0, &AskTwo);
  CurrentEditor().sendStringToExecute("NoSuchCommand x");
  s.session().runQueued();
  EXPECT_EQ(Log(), (std::vector<std::string>{"AskTwo 甲 乙"}));
  EXPECT_NE(s.out().find("未知命令“NoSuchCommand”。"), std::string::npos);
}

void Forever() {
  Log().push_back("x");
  CurrentEditor().sendStringToExecute("Forever\n");
}

TEST_F(SessionTest, ACommandQueueingItselfForeverIsStopped) {
  ScriptedSession s(cad::Database::createDefault());
  s.editor().addCommand("G", "Forever", "", 0, &Forever);
  EXPECT_TRUE(s.session().runCommandLine("Forever"));
  EXPECT_EQ(Log().size(), 1001u) << "the typed run and a thousand queued ones";
  EXPECT_FALSE(s.editor().hasQueued());
  EXPECT_NE(s.out().find("\n排队执行的命令已达 1000 次，其余命令已放弃。"), std::string::npos);
}

void UnansweredTwice() {
  std::string a;
  Log().push_back("first " + std::to_string(CurrentEditor().getString("\n第一问: ", a)));
  Log().push_back("second " + std::to_string(CurrentEditor().getString("\n第二问: ", a)));
  CurrentEditor().sendStringToExecute("Ask_Name 队列里的");
}

TEST_F(SessionTest, AnUnansweredRunCancelsLaterPromptsButQueuedArgumentsStillAnswer) {
  ScriptedSession s(cad::Database::createDefault());
  s.editor().addCommand("G", "Unanswered", "", 0, &UnansweredTwice);
  s.editor().addCommand("G", "Ask_Name", "", 0, &AskName);
  EXPECT_TRUE(s.session().runCommandLine("Unanswered"));
  EXPECT_EQ(Log(), (std::vector<std::string>{"first -5002", "second -5002", "AskName 5100 队列里的"}));
  EXPECT_EQ(s.session().unansweredPrompt().value_or(""), "第一问: ");
  EXPECT_EQ(s.out().find("第二问"), std::string::npos);
  EXPECT_TRUE(s.session().runCommandLine("Ask_Name"));
  EXPECT_EQ(Log().back(), "AskName -5002 ");
}

TEST_F(SessionTest, ProgressGoesToTheErrorStreamWhenAsked) {
  std::ostringstream out, err;
  SessionOptions options;
  options.out = &out;
  options.err = &err;
  options.progress = true;
  {
    Session session(cad::Database::createDefault(), "a.dxf", options);
    Editor& e = CurrentEditor();
    e.progressBegin("正在打印", 4);
    e.progressSet(2);
    e.progressSet(4);
    e.progressEnd();
  }
  EXPECT_NE(err.str().find("正在打印 2/4 … 50%"), std::string::npos) << err.str();
  EXPECT_NE(err.str().find("正在打印 4/4 … 100%"), std::string::npos);
  EXPECT_TRUE(out.str().empty());

  // In a run over several drawings every line says which drawing it is of.
  std::ostringstream many;
  options.err = &many;
  options.progressPrefix = "[2/3] b.dxf ";
  {
    Session session(cad::Database::createDefault(), "b.dxf", options);
    CurrentEditor().progressBegin("正在分割图纸", 3);
    CurrentEditor().progressSet(1);
    CurrentEditor().progressEnd();
  }
  EXPECT_NE(many.str().find("[2/3] b.dxf 正在分割图纸 1/3 … 33%"), std::string::npos) << many.str();

  std::ostringstream quiet;
  options.err = &quiet;
  options.progress = false;
  Session session(cad::Database::createDefault(), "a.dxf", options);
  CurrentEditor().progressBegin("正在打印", 4);
  CurrentEditor().progressSet(2);
  CurrentEditor().progressEnd();
  EXPECT_TRUE(quiet.str().empty());
}

}  // namespace
}  // namespace tv::console
