// Shortcut commands and the menu as users meet them through `tvplot run`: a shortcut set in the
// form "快捷命令设置" is kept and runs its command in the next run, a cleared one is gone, and an
// item of the menu runs its command.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "../support/tvplot_test.h"
#include "cad/database.h"

namespace tv::cli {
namespace {

namespace fs = std::filesystem;
using namespace test_support;

class ShortcutMenuTest : public TvplotTest {
 protected:
  // `tvplot run` on the drawing, the user's settings shared by every run of the test.
  RunResult RunOn(const std::string& line, const std::vector<std::string>& answers = {}) {
    std::vector<std::string> args{"run", drawing_, line};
    for (const std::string& a : answers) args.insert(args.end(), {"--answer", a});
    return Run(args, {}, home_.string());
  }
  // The form with `answers`, then OK.
  RunResult Form(std::vector<std::string> answers) {
    answers.push_back("");
    RunResult r = RunOn("TV_BatchPlot_9", answers);
    EXPECT_EQ(r.exitCode, 0) << r.out << r.err;
    return r;
  }
  std::string Menu() {
    RunResult r = RunOn("MENU", {""});
    EXPECT_EQ(r.exitCode, 0) << r.out << r.err;
    return r.out;
  }

  const fs::path home_ = Path("home");
  const std::string drawing_ = Write("plan.dxf", cad::Database::createDefault());
};

constexpr const char* kSinglePlotPrompt = "选择打印范围第一点";

TEST_F(ShortcutMenuTest, ShortcutSetInTheFormRunsItsCommandInTheNextRun) {
  const RunResult form = Form({"1 p 1", "17 WK", "6 X"});
  for (const char* text : {"快捷命令设置", "点击列表对应项输入或修改快捷命令", "功  能", "对应快捷命令", "  单张打印到文件"})
    EXPECT_NE(form.out.find(text), std::string::npos) << text << form.out;
  EXPECT_NE(form.out.find("无效的行号"), std::string::npos);  // the blank row takes none

  // The blank inside was dropped; any case types it.
  const RunResult byShortcut = RunOn("P1", {"^C"});
  EXPECT_EQ(byShortcut.exitCode, 0) << byShortcut.out << byShortcut.err;
  EXPECT_NE(byShortcut.out.find(kSinglePlotPrompt), std::string::npos) << byShortcut.out;

  const std::string menu = Menu();
  EXPECT_NE(menu.find("T_批打印"), std::string::npos) << menu;
  EXPECT_NE(menu.find("单张打印到文件--p1"), std::string::npos) << menu;
  EXPECT_NE(menu.find("生成外框--WK"), std::string::npos) << menu;

  const RunResult shown = Run({"config", "show"}, {}, home_.string());
  EXPECT_NE(shown.out.find("p1"), std::string::npos) << shown.out;
}

TEST_F(ShortcutMenuTest, MenuItemRunsItsCommand) {
  // Item 17 is "卸载", the last but one of "设置".
  const RunResult r = RunOn("MENU", {"0", "17"});
  EXPECT_EQ(r.exitCode, 0) << r.out << r.err;
  EXPECT_NE(r.out.find("无效的菜单项编号"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("命令: TV_BatchPlot_12"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("本软件为绿色软件"), std::string::npos) << r.out;

  // The number may follow the name on the command line; Enter leaves the menu without a command.
  const RunResult typed = RunOn("MENU 1", {"^C"});
  EXPECT_NE(typed.out.find(kSinglePlotPrompt), std::string::npos) << typed.out;
  EXPECT_EQ(Menu().find("命令: TV_BatchPlot"), std::string::npos);
}

TEST_F(ShortcutMenuTest, ClearedShortcutsNoLongerRun) {
  Form({"1 P1", "2 PP", "3 P4"});
  ASSERT_EQ(RunOn("PP", {"^C"}).exitCode, 0);

  // A row number alone clears that row.
  Form({"1"});
  const RunResult gone = RunOn("P1");
  EXPECT_EQ(gone.exitCode, 1) << gone.out;
  EXPECT_NE(gone.out.find("未知命令“P1”"), std::string::npos) << gone.out;
  std::string menu = Menu();
  EXPECT_NE(menu.find("单张打印到文件\n"), std::string::npos) << menu;
  EXPECT_NE(menu.find("批打到文件(通用型)--PP"), std::string::npos) << menu;

  // Cancel keeps what was there; "delete all" asks first and empties every row.
  ASSERT_EQ(RunOn("TV_BatchPlot_9", {"2 QQ", "C"}).exitCode, 0);
  EXPECT_EQ(RunOn("PP", {"^C"}).exitCode, 0);
  const RunResult no = Form({"D", "N"});
  EXPECT_NE(no.out.find("[快捷命令设置] 确实要删除全部快捷命令吗 ?"), std::string::npos) << no.out;
  EXPECT_EQ(RunOn("PP", {"^C"}).exitCode, 0);
  Form({"D", "Y"});
  EXPECT_EQ(RunOn("PP").exitCode, 1);
  EXPECT_EQ(RunOn("P4").exitCode, 1);
  menu = Menu();
  EXPECT_EQ(menu.find("--P"), std::string::npos) << menu;
}

}  // namespace
}  // namespace tv::cli
