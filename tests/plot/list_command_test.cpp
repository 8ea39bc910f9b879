#include "plot/list_command.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tv::plot {
namespace {

const std::vector<std::string> kControls = {"打印样式", "输出格式", "生 成 目 录"};

struct Case {
  const char* answer;
  ListVerb verb;
  std::vector<std::size_t> rows;  // from 0
  const char* argument;
  std::size_t control;
  const char* error;  // a part of the message when refused
};

TEST(ListCommand, AnswersAtTheList) {
  const std::vector<Case> cases = {
      {"", ListVerb::Plot, {}, "", 0, ""},
      {"  p ", ListVerb::Plot, {}, "", 0, ""},
      {"C", ListVerb::Close, {}, "", 0, ""},
      {"close", ListVerb::Close, {}, "", 0, ""},
      {"打印", ListVerb::Plot, {}, "", 0, ""},
      {"?", ListVerb::Show, {}, "", 0, ""},
      {"N 3 底层平面", ListVerb::Name, {2}, "底层平面", 0, ""},
      {"n 1,4 图纸 A", ListVerb::Name, {0, 3}, "图纸 A", 0, ""},
      {"Z 2-4 A3加长", ListVerb::Paper, {1, 2, 3}, "A3加长", 0, ""},
      {"Z * 594x420", ListVerb::Paper, {0, 1, 2, 3, 4}, "594x420", 0, ""},
      {"Z 5", ListVerb::Paper, {4}, "", 0, ""},
      {"S 1,3-4,3 50", ListVerb::Scale, {0, 2, 3}, "50", 0, ""},
      {"K 2 3", ListVerb::Copies, {1}, "3", 0, ""},
      {"D 1，5", ListVerb::Delete, {0, 4}, "", 0, ""},
      {"V 2", ListVerb::Preview, {1}, "", 0, ""},
      {"F png", ListVerb::Format, {}, "png", 0, ""},
      {"2 PNG", ListVerb::Control, {}, "PNG", 1, ""},
      {"输出格式 DWG", ListVerb::Control, {}, "DWG", 1, ""},
      {"生成目录", ListVerb::Control, {}, "", 2, ""},
      {"打印样式", ListVerb::Control, {}, "", 0, ""},
      // Refused, with what was wrong.
      {"D 6", ListVerb::Refused, {}, "", 0, "行号 6 超出范围（1 到 5）"},
      {"D 0", ListVerb::Refused, {}, "", 0, "超出范围"},
      {"S 4-2 50", ListVerb::Refused, {}, "", 0, "无效的行号范围"},
      {"Z x A3", ListVerb::Refused, {}, "", 0, "无效的行号"},
      {"N 2", ListVerb::Refused, {}, "", 0, "文件名不能为空 !"},
      {"D", ListVerb::Refused, {}, "", 0, "请指定行号"},
      {"D 1 2", ListVerb::Refused, {}, "", 0, "无法识别的命令"},
      {"V 1-2", ListVerb::Refused, {}, "", 0, "预览一次只能指定一行"},
      {"4", ListVerb::Refused, {}, "", 0, "没有编号为 4 的选项"},
      {"Q 1", ListVerb::Refused, {}, "", 0, "无法识别的命令"},
      {"打印到纸", ListVerb::Refused, {}, "", 0, "无法识别的命令"},
  };
  for (const Case& k : cases) {
    SCOPED_TRACE(k.answer);
    const ListCommand c = ParseListCommand(k.answer, 5, kControls);
    EXPECT_EQ(c.verb, k.verb) << c.error;
    EXPECT_EQ(c.rows, k.rows);
    EXPECT_EQ(c.argument, k.argument);
    if (k.verb == ListVerb::Control) {
      EXPECT_EQ(c.control, k.control);
    }
    EXPECT_NE(c.error.find(k.error), std::string::npos) << c.error;
    EXPECT_EQ(c.error.empty(), k.verb != ListVerb::Refused);
  }
}

TEST(ListCommand, StarMarksEveryRowAndAnEmptyListHasNone) {
  EXPECT_TRUE(ParseListCommand("K * 2", 3, {}).allRows);
  EXPECT_FALSE(ParseListCommand("K 1-3 2", 3, {}).allRows);
  std::string error;
  EXPECT_TRUE(ParseRows("*", 0, error).empty());
  EXPECT_FALSE(error.empty());
}

}  // namespace
}  // namespace tv::plot
