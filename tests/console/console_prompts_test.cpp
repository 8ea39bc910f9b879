// Prompts, message boxes, lists and file dialogs of the console editor, answered from a script,
// from a terminal, by a cancel and by nothing at all.
#include <filesystem>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "console/answer_source.h"
#include "console_test_support.h"
#include "host/editor.h"

namespace tv::console {
namespace {

using namespace tv::host;
using testing::ScriptedSession;

TEST(ConsolePrompts, EchoAnswersAfterTheirPromptsAsATranscript) {
  ScriptedSession s(cad::Database::createDefault(), {"图纸一", "42", "2.5", "3,4"});
  std::string text;
  std::int32_t n = 0;
  double x = 0;
  Point3d p;
  EXPECT_EQ(CurrentEditor().getString("\n名称: ", text), RTNORM);
  EXPECT_EQ(text, "图纸一");
  EXPECT_EQ(CurrentEditor().getInteger("\n份数: ", n), RTNORM);
  EXPECT_EQ(n, 42);
  EXPECT_EQ(CurrentEditor().getReal("\n比例: ", x), RTNORM);
  EXPECT_DOUBLE_EQ(x, 2.5);
  EXPECT_EQ(CurrentEditor().getPoint("\n基点: ", nullptr, p), RTNORM);
  EXPECT_EQ(p, Point3d(3, 4, 0));
  EXPECT_EQ(s.out(), "\n名称: 图纸一\n份数: 42\n比例: 2.5\n基点: 3,4");
}

TEST(ConsolePrompts, EnterCancelAndBadAnswers) {
  ScriptedSession s(cad::Database::createDefault(), {"", "^C", "\x03", "十二", "1.5", "12", "abc", "1e400", "-0.25",
                                                     "1,2,3", "@1,1", "3", "7,8,9,10", ""});
  Editor& e = CurrentEditor();
  std::string text = "old";
  std::int32_t n = 0;
  double x = 0;
  Point3d p;
  EXPECT_EQ(e.getString("\nA: ", text), RTNORM);  // Enter is an empty text
  EXPECT_EQ(text, "");
  EXPECT_EQ(e.getString("\nB: ", text), RTCAN);
  EXPECT_EQ(e.getInteger("\nC: ", n), RTCAN);
  // Not integers: re-asked, each time taking the next answer.
  EXPECT_EQ(e.getInteger("\nD: ", n), RTNORM);
  EXPECT_EQ(n, 12);
  EXPECT_NE(s.out().find("\nD: 十二\n需要整数值。\nD: 1.5\n需要整数值。\nD: 12"), std::string::npos) << s.out();
  EXPECT_EQ(e.getReal("\nE: ", x), RTNORM);
  EXPECT_DOUBLE_EQ(x, -0.25);
  EXPECT_EQ(e.getPoint("\nF: ", nullptr, p), RTNORM);
  EXPECT_EQ(p, Point3d(1, 2, 3));
  const Point3d base{10, 20, 0};
  EXPECT_EQ(e.getCorner("\nG: ", base, p), RTNORM);
  EXPECT_EQ(p, Point3d(11, 21, 0));
  EXPECT_EQ(e.getPoint("\nH: ", nullptr, p), RTNONE) << "a lone number is no point, the 4-D one neither, Enter ends";
  EXPECT_NE(s.out().find("\nH: 3\n需要点。\nH: 7,8,9,10\n需要点。\nH: "), std::string::npos) << s.out();
  EXPECT_FALSE(s.session().unansweredPrompt());
}

TEST(ConsolePrompts, KeywordsMatchNameLetterOrCapitalsInAnyCase) {
  ScriptedSession s(cad::Database::createDefault(),
                    {"y", "否", "No", "ye", "maybe", "n", "LA", "la", "是", "p"});
  Editor& e = CurrentEditor();
  std::string k;
  EXPECT_EQ(e.getKeyword("\n继续? ", "是(Y) 否(N)", k), RTNORM);
  EXPECT_EQ(k, "是(Y)");
  EXPECT_EQ(e.getKeyword("\n继续? ", "是(Y) 否(N)", k), RTNORM);
  EXPECT_EQ(k, "否(N)");
  EXPECT_EQ(e.getKeyword("\n? ", "Yes No", k), RTNORM);
  EXPECT_EQ(k, "No");
  EXPECT_EQ(e.getKeyword("\n? ", "Yes No", k), RTNORM);
  EXPECT_EQ(k, "Yes");
  // A wrong answer is re-asked with the next one.
  EXPECT_EQ(e.getKeyword("\n? ", "Yes No", k), RTNORM);
  EXPECT_EQ(k, "No");
  EXPECT_NE(s.out().find("maybe\n无效的选项关键字。\n? n"), std::string::npos) << s.out();
  EXPECT_EQ(e.getKeyword("\n? ", "LAyer LType", k), RTNORM);
  EXPECT_EQ(k, "LAyer");
  EXPECT_EQ(e.getKeyword("\n? ", "LAyer LType", k), RTNORM);
  EXPECT_EQ(k, "LAyer");
  // Local keywords answer with the global ones after "_".
  EXPECT_EQ(e.getKeyword("\n? ", "是(Y) 否(N) _ Yes No", k), RTNORM);
  EXPECT_EQ(k, "Yes");
  EXPECT_EQ(e.getKeyword("\n? ", "打印(P)/预览(V)", k), RTNORM);
  EXPECT_EQ(k, "打印(P)");
}

TEST(ConsolePrompts, RunningOutOfAnswersCancelsOnceLoudlyThenSilently) {
  ScriptedSession s(cad::Database::createDefault(), {"first"});
  Editor& e = CurrentEditor();
  std::string text;
  EXPECT_EQ(e.getString("\n第一: ", text), RTNORM);
  EXPECT_EQ(e.getString("\n\n选择图框: ", text), RTCAN);
  EXPECT_EQ(s.out(), "\n第一: first\n\n选择图框: \n应答已用完，无法回答提示“选择图框: ”，命令已取消。");
  ASSERT_TRUE(s.session().unansweredPrompt());
  EXPECT_EQ(*s.session().unansweredPrompt(), "选择图框: ");

  s.clearOut();
  std::int32_t n = 0;
  std::string k;
  ObjectIdArray ids;
  EXPECT_EQ(e.getInteger("\n份数: ", n), RTCAN);
  EXPECT_EQ(e.getKeyword("\n继续? ", "是(Y) 否(N)", k), RTCAN);
  EXPECT_EQ(e.select("_:$", {"\n选择对象: ", "\n删除对象: "}, {}, {}, ids), RTCAN);
  EXPECT_EQ(e.messageBox("确定吗？", "提示", MessageButtons::YesNo), MessageAnswer::Cancel);
  EXPECT_FALSE(e.chooseItem("打印机", {"A", "B"}, 0));
  EXPECT_FALSE(e.askOpenPath("打开", "pdf"));
  EXPECT_EQ(s.out().find("份数"), std::string::npos) << "later prompts are cancelled silently";
  EXPECT_EQ(s.out().find("应答已用完"), std::string::npos);
  EXPECT_EQ(*s.session().unansweredPrompt(), "选择图框: ") << "the first unanswered prompt is kept";
}

TEST(ConsolePrompts, TerminalAnswersFollowTheListAndEndLikeAnEmptyList) {
  std::istringstream terminal("7\r\n\n");
  ScriptedSession s(cad::Database::createDefault(), {"5"}, &terminal);
  Editor& e = CurrentEditor();
  std::int32_t n = 0;
  EXPECT_EQ(e.getInteger("\nA: ", n), RTNORM);
  EXPECT_EQ(n, 5);
  EXPECT_EQ(e.getInteger("\nB: ", n), RTNORM);
  EXPECT_EQ(n, 7);
  EXPECT_EQ(e.getInteger("\nC: ", n), RTNONE);
  EXPECT_EQ(e.getInteger("\nD: ", n), RTCAN) << "the terminal has ended";
  EXPECT_EQ(s.session().unansweredPrompt().value_or(""), "D: ");
}

TEST(ConsolePrompts, MessageBoxes) {
  ScriptedSession s(cad::Database::createDefault(),
                    {"Yes", "否", "x", "n", "c", "取消", "OK", "是", "^C", ""});
  Editor& e = CurrentEditor();
  EXPECT_EQ(e.messageBox("已完成。", "Tarvex打印", MessageButtons::Ok), MessageAnswer::Ok);
  EXPECT_EQ(s.out(), "\n[Tarvex打印] 已完成。") << "an Ok box takes no answer";
  EXPECT_EQ(e.messageBox("覆盖吗？", "", MessageButtons::YesNo), MessageAnswer::Yes);
  EXPECT_EQ(e.messageBox("覆盖吗？", "", MessageButtons::YesNo), MessageAnswer::No);
  EXPECT_EQ(e.messageBox("覆盖吗？", "", MessageButtons::YesNo), MessageAnswer::No) << "x re-asked, then n";
  EXPECT_EQ(e.messageBox("继续？", "", MessageButtons::OkCancel), MessageAnswer::Cancel);
  EXPECT_EQ(e.messageBox("继续？", "", MessageButtons::OkCancel), MessageAnswer::Cancel);
  EXPECT_EQ(e.messageBox("继续？", "", MessageButtons::OkCancel), MessageAnswer::Ok);
  EXPECT_EQ(e.messageBox("保存？", "", MessageButtons::YesNoCancel), MessageAnswer::Yes);
  EXPECT_EQ(e.messageBox("保存？", "", MessageButtons::YesNoCancel), MessageAnswer::Cancel);
  EXPECT_EQ(e.messageBox("保存？", "", MessageButtons::YesNoCancel), MessageAnswer::Yes) << "Enter: the first button";
  EXPECT_NE(s.out().find("\n覆盖吗？\n是(Y)/否(N): x\n无效的选项关键字。\n是(Y)/否(N): n"), std::string::npos) << s.out();
  EXPECT_NE(s.out().find("\n确定(O)/取消(C): "), std::string::npos);
  EXPECT_NE(s.out().find("\n是(Y)/否(N)/取消(C): "), std::string::npos);
}

TEST(ConsolePrompts, ChooseItemByNumberTextOrDefault) {
  ScriptedSession s(cad::Database::createDefault(), {"2", "", "PDF 打印机", "9", "甲", "1", "^C", ""});
  Editor& e = CurrentEditor();
  const std::vector<std::string> items{"甲", "PDF 打印机", "丙"};
  EXPECT_EQ(e.chooseItem("选择打印机", items, 2), 1);
  EXPECT_NE(s.out().find("\n选择打印机\n  1. 甲\n  2. PDF 打印机\n  3. 丙 <默认>"), std::string::npos) << s.out();
  EXPECT_EQ(e.chooseItem("选择打印机", items, 2), 2);
  EXPECT_EQ(e.chooseItem("选择打印机", items, 0), 1);
  EXPECT_EQ(e.chooseItem("选择打印机", items, -1), 0) << "9 is out of range and re-asked";
  EXPECT_EQ(e.chooseItem("选择打印机", items, -1), 0);
  EXPECT_FALSE(e.chooseItem("选择打印机", items, 1));
  EXPECT_FALSE(e.chooseItem("选择打印机", items, -1)) << "Enter without a default";
}

TEST(ConsolePrompts, FileDialogs) {
  ScriptedSession s(cad::Database::createDefault(), {"/tmp/a.pdf", "", "", "out/b", "/tmp/C.PDF", "^C", "/tmp/f", ""});
  Editor& e = CurrentEditor();
  EXPECT_EQ(e.askOpenPath("打开文件", "pdf").value_or(""), "/tmp/a.pdf");
  EXPECT_FALSE(e.askOpenPath("打开文件", "pdf"));
  EXPECT_EQ(e.askSavePath("保存为", "清单.xlsx", "xlsx").value_or(""), "清单.xlsx");
  EXPECT_EQ(e.askSavePath("保存为", "清单.pdf", "pdf").value_or(""), "out/b.pdf") << "the type's extension is added";
  EXPECT_EQ(e.askSavePath("保存为", "", "pdf").value_or(""), "/tmp/C.PDF");
  EXPECT_FALSE(e.askSavePath("保存为", "x.pdf", "pdf"));
  EXPECT_EQ(e.askFolder("输出文件夹", "/tmp").value_or(""), "/tmp/f");
  EXPECT_FALSE(e.askFolder("输出文件夹", "/tmp"));
  EXPECT_NE(s.out().find("\n保存为 <清单.xlsx>: "), std::string::npos);
}

TEST(ConsolePrompts, ShellOpenWithoutATerminalNamesTheFile) {
  ScriptedSession s(cad::Database::createDefault());
  const std::string file = (std::filesystem::temp_directory_path() / "tv_console_open_test.pdf").string();
  { std::ofstream(file) << "%PDF-1.4\n"; }
  EXPECT_FALSE(CurrentEditor().shellOpen(file + ".missing"));
  EXPECT_TRUE(CurrentEditor().shellOpen(file));
  EXPECT_EQ(s.out(), "\n请用阅读器打开：" + file);
  std::filesystem::remove(file);
}

TEST(AnswerFiles, LinesAreAnswersWithoutCarriageReturnsOrByteOrderMark) {
  EXPECT_EQ(SplitAnswerLines("a\r\n\r\nb c\n"), (std::vector<std::string>{"a", "", "b c"}));
  EXPECT_EQ(SplitAnswerLines("x"), (std::vector<std::string>{"x"}));
  EXPECT_TRUE(SplitAnswerLines("").empty());
  const std::string file = (std::filesystem::temp_directory_path() / "tv_console_answers_test.txt").string();
  { std::ofstream(file, std::ios::binary) << "\xEF\xBB\xBF是\r\n\r\n# not a comment\n"; }
  std::string error;
  auto lines = ReadAnswersFile(file, error);
  ASSERT_TRUE(lines);
  EXPECT_EQ(*lines, (std::vector<std::string>{"是", "", "# not a comment"}));
  std::filesystem::remove(file);
  EXPECT_FALSE(ReadAnswersFile(file, error));
  EXPECT_NE(error.find(file), std::string::npos);
  EXPECT_FALSE(ReadAnswersFile(std::filesystem::temp_directory_path().string(), error)) << "a folder is no file";
  EXPECT_TRUE(IsCancelAnswer("^C"));
  EXPECT_TRUE(IsCancelAnswer("\x03\x03"));
  EXPECT_FALSE(IsCancelAnswer("^c x"));
  EXPECT_FALSE(IsCancelAnswer(""));
}

}  // namespace
}  // namespace tv::console
