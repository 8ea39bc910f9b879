// Wrong usage and help of every `tvplot` subcommand, as users meet them: the built program run
// with arguments that never reach a drawing.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "../support/tvplot_test.h"

namespace tv::cli {
namespace {

using test_support::Has;
using test_support::RunResult;

using Usage = test_support::TvplotTest;

const std::vector<std::string> kCommands = {"info", "console", "run",        "paper", "sheets",
                                            "plot", "titleblock", "tk", "config"};

std::string Joined(const std::vector<std::string>& args) {
  std::string text;
  for (const auto& a : args) text += "[" + a + "] ";
  return text;
}

TEST_F(Usage, WrongUsageNamesTheProblemAndShowsTheCommandsHelp) {
  struct Case {
    std::vector<std::string> args;
    std::string message;
  };
  const Case cases[] = {
      {{"info"}, "缺少图纸文件"},
      {{"info", "a.dxf", "b.dxf"}, "多余的参数 b.dxf"},
      {{"info", "a.dxf", "--bogus"}, "未知选项 --bogus"},
      {{"info", "a.dxf", "-x"}, "未知选项 -x"},
      {{"info", "a.dxf", "--", "--json"}, "多余的参数 --json"},
      {{"info", "--json=false", "a.dxf"}, "选项 --json 不带值"},
      {{"paper", "420x297", "--style"}, "选项 --style 缺少值"},
      {{"paper", "420x297", "--style", "9"}, "命名方式 9 无效"},
      {{"paper", "-420x297"}, "纸张尺寸 -420x297 无效"},
      {{"sheets", "a.dxf", "--order", "10"}, "打印顺序 10 无效"},
      {{"sheets", "a.dxf", "--order=0"}, "打印顺序 0 无效"},
      {{"sheets", "a.dxf", "--filter", "31"}, "过滤比例应在 0 ~ 30 % 之间 !"},
      {{"sheets", "a.dxf", "--range", "paper"}, "范围 paper 无效"},
      {{"sheets", "a.dxf", "--loose-lines", "yes"}, "选项 --loose-lines 应为 on 或 off"},
      {{"sheets", "a.dxf", "--blocks", "some"}, "图块选项 some 无效"},
      {{"sheets", "a.dxf", "--scale", "-5"}, "比例 -5 无效"},
      {{"plot", "a.dxf", "--format", "svg"}, "输出格式 svg 无效"},
      {{"plot", "a.dxf", "--out", "o", "--path-mode", "1"}, "--out 与 --path-mode 只能选一个"},
      {{"plot", "a.dxf", "--path-mode", "3"}, "存储路径 3 无效"},
      {{"plot", "a.dxf", "--margin", "101"}, "周边留白 101 无效"},
      {{"plot", "a.dxf", "--yes", "--no"}, "--yes 与 --no 只能选一个"},
      {{"plot", "a.dxf", "--json"}, "未知选项 --json"},
      {{"titleblock"}, "缺少图纸文件"},
      {{"titleblock", "a.dxf", "--plot", "--scale", "100"}, "不接受 --scale"},
      {{"titleblock", "a.dxf", "--order", "2"}, "不接受 --order"},
      {{"titleblock", "a.dxf", "--format", "pdf"}, "选项 --format 只用于 --plot"},
      {{"titleblock", "a.dxf", "--plot", "--json"}, "选项 --json 不用于 --plot"},
      {{"titleblock", "a.dxf", "--plot", "--margin", "x"}, "周边留白 x 无效"},
      {{"titleblock", "a.dxf", "--tk"}, "选项 --tk 缺少值"},
      {{"tk"}, "缺少操作：list、export、import 或 define"},
      {{"tk", "merge"}, "未知操作 merge"},
      {{"tk", "export"}, "缺少 .tk 文件"},
      {{"tk", "import", "x.tk", "--keep", "--replace"}, "--keep 和 --replace 只能给出其一"},
      {{"tk", "list", "--keep"}, "--keep 和 --replace 只用于 import"},
      {{"config"}, "缺少操作：show、export 或 import"},
      {{"config", "show", "x"}, "多余的参数 x"},
      {{"config", "export"}, "缺少配置文件"},
      {{"config", "drop"}, "未知操作 drop"},
      {{"config", "show", "--json"}, "未知选项 --json"},
      {{"run"}, "缺少图纸文件"},
      {{"run", "a.dxf"}, "缺少命令"},
      {{"run", "a.dxf", "CMD", "--save-as", "a.dxf"}, "--save-as 须是另一个文件"},
      {{"run", "a.dxf", "CMD", "--answer"}, "选项 --answer 缺少值"},
      {{"console", "a.dxf", "extra"}, "多余的参数 extra"},
      {{"console"}, "缺少图纸文件"},
  };
  for (const Case& c : cases) {
    const RunResult r = Run(c.args);
    const std::string& command = c.args.front();
    EXPECT_EQ(r.exitCode, 1) << Joined(c.args) << r.err;
    EXPECT_TRUE(r.err.starts_with("tvplot " + command + ": ")) << Joined(c.args) << r.err;
    EXPECT_TRUE(Has(r.err.substr(0, r.err.find('\n')), c.message)) << Joined(c.args) << r.err;
    EXPECT_TRUE(Has(r.err, "\n用法：tvplot " + command + " ")) << Joined(c.args) << r.err;
    EXPECT_TRUE(r.out.empty()) << Joined(c.args) << r.out;
  }
}

TEST_F(Usage, EveryCommandShowsOneHelpHoweverAskedFor) {
  for (const std::string& command : kCommands) {
    const RunResult help = Run({"help", command});
    ASSERT_EQ(help.exitCode, 0) << command << help.err;
    EXPECT_TRUE(help.out.starts_with("用法：tvplot " + command + " ")) << help.out;
    EXPECT_TRUE(Has(help.out, "  -h, --help ")) << help.out;
    EXPECT_TRUE(help.err.empty()) << help.err;
    // Help wins wherever it stands and whatever else is wrong.
    for (const std::vector<std::string>& args :
         {std::vector<std::string>{command, "--help"}, {command, "-h"}, {command, "x.dxf", "--bogus", "-h"}}) {
      const RunResult r = Run(args);
      EXPECT_EQ(r.exitCode, 0) << Joined(args) << r.err;
      EXPECT_EQ(r.out, help.out) << Joined(args);
    }
  }
  // A value left out is no reason to refuse help; after "--", "-h" is a word like any other.
  EXPECT_EQ(Run({"sheets", "--help", "--range"}).exitCode, 0);
  const RunResult after = Run({"info", "--", "-h"});
  EXPECT_EQ(after.exitCode, 2) << after.err;
  EXPECT_TRUE(Has(after.err, "-h")) << after.err;
  // Each option is listed with what it does.
  const RunResult sheets = Run({"sheets", "--help"});
  for (const char* line : {"  --range R ", "  --loose-lines on|off ", "  --json ", "退出码：0 完成"})
    EXPECT_TRUE(Has(sheets.out, line)) << line << "\n" << sheets.out;
}

TEST_F(Usage, TheCommandListNamesEveryCommand) {
  for (const std::vector<std::string>& args : {std::vector<std::string>{"--help"}, {"-h"}, {"help"}}) {
    const RunResult r = Run(args);
    ASSERT_EQ(r.exitCode, 0) << Joined(args);
    EXPECT_TRUE(r.out.starts_with("用法：tvplot 命令")) << r.out;
    for (const std::string& command : kCommands) EXPECT_TRUE(Has(r.out, "\n  " + command + " ")) << command;
  }
  for (const std::vector<std::string>& args :
       {std::vector<std::string>{}, {"nope"}, {"help", "nope"}, {"--bogus"}}) {
    const RunResult r = Run(args);
    EXPECT_EQ(r.exitCode, 1) << Joined(args);
    EXPECT_TRUE(Has(r.err, "用法：tvplot 命令")) << Joined(args) << r.err;
    EXPECT_TRUE(r.out.empty()) << Joined(args);
  }
  EXPECT_TRUE(Has(Run({"help", "nope"}).err, "tvplot: 未知命令 nope"));
  const RunResult version = Run({"--version"});
  EXPECT_EQ(version.exitCode, 0);
  EXPECT_TRUE(version.out.starts_with("tvplot ")) << version.out;
}

}  // namespace
}  // namespace tv::cli
