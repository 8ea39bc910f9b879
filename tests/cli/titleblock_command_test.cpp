// `tvplot titleblock` as users run it: the built program on the sample title blocks and their
// library, written to a temporary folder; the rows, the names, the files and the refusals.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "../support/tvplot_test.h"
#include "examples/sample_drawing.h"
#include "examples/sample_library.h"
#include "console/text_table.h"
#include "titleblock/tk_library.h"

namespace tv::cli {
namespace {

namespace fs = std::filesystem;

using namespace test_support;
using console::Printable;

class TitleBlockCommandTest : public TvplotTest {
 protected:
  void SetUp() override {
    TvplotTest::SetUp();
    ASSERT_TRUE(titleblock::SaveTkFileTo(samples::BuildTitleBlockLibrary(), tk_, false));
  }
  static RunResult TitleBlock(std::vector<std::string> args) {
    args.insert(args.begin(), "titleblock");
    return Run(args);
  }

  const std::string drawing_ = Write("titleblocks.dxf", samples::BuildTitleBlockDrawing());
  const std::string tk_ = Path("titleblocks.tk").string();
};

TEST_F(TitleBlockCommandTest, EveryDefinedFrameIsARowWithItsFieldsAndName) {
  const RunResult r = TitleBlock({drawing_, "--tk", tk_, "--json"});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  // The frame pasted onto itself is one sheet.
  EXPECT_TRUE(Has(r.out, "\"count\": 4")) << r.out;
  // Attributes, the block's own text for the revision, and the issue stamp above the title block.
  EXPECT_TRUE(Has(r.out, "\"file_name\": \"结施-01_A_基础平面图\"")) << r.out;
  EXPECT_TRUE(Has(r.out, "[\n          80100,\n          7500\n        ]")) << r.out;
  // The turned frame reads like an upright one and stands upright.
  EXPECT_TRUE(Has(r.out, "\"file_name\": \"结施-02_A_一层梁配筋图\"")) << r.out;
  EXPECT_TRUE(Has(r.out, "\"portrait\": true")) << r.out;
  // Loose MText: the number's two lines are one word, the title's two lines keep the separator,
  // the formatting codes are gone.
  EXPECT_TRUE(Has(r.out, "\"file_name\": \"建施-03_一层平面图+（局部）_2026.11.25\"")) << r.out;
  EXPECT_TRUE(Has(r.out, "\"file_name\": \"建施-04_楼梯详图_2026.11.25\"")) << r.out;
  // The frame drawn at 1:50 gets the same paper at its own scale.
  EXPECT_TRUE(Has(r.out, "\"scaleText\": \"1:50\"")) << r.out;

  const RunResult text = TitleBlock({drawing_, "--tk", tk_});
  ASSERT_EQ(text.exitCode, 0) << text.err;
  for (const char* column : {"序 号", "文 件 名", "纸 张", "打印比例", "图 号", "版 次", "图 名", "日 期"})
    EXPECT_TRUE(Has(text.out, column)) << column;
  EXPECT_TRUE(Has(text.out, "4 张")) << text.out;
}

TEST_F(TitleBlockCommandTest, PlotWritesOneFileANameWithoutTouchingTheDrawing) {
  const auto before = fs::last_write_time(drawing_);
  const fs::path out = dir_.path() / "out";
  const RunResult r = TitleBlock({drawing_, "--tk", tk_, "--plot", "--out", out.string()});
  ASSERT_EQ(r.exitCode, 0) << r.err << r.out;
  EXPECT_EQ(FilesIn(out), (std::vector<std::string>{"建施-03_一层平面图+（局部）_2026.11.25.pdf",
                                                    "建施-04_楼梯详图_2026.11.25.pdf", "结施-01_A_基础平面图.pdf",
                                                    "结施-02_A_一层梁配筋图.pdf"}));
  EXPECT_TRUE(Has(r.out, "共 4 张图纸，已输出 4 个文件")) << r.out;
  EXPECT_EQ(fs::last_write_time(drawing_), before);
}

TEST_F(TitleBlockCommandTest, AMissingLibraryOrRangeIsSaidPlainly) {
  struct Case {
    std::vector<std::string> args;
    int exitCode;
    const char* says;
  };
  const Case cases[] = {
      {{}, 4, "图框信息库为空"},  // the test process's own data folder holds no library
      {{"--tk", Path("none.tk").string(), "--plot"}, 2, "无法读取"},
      {{"--tk", tk_, "--range", "layouts"}, 4, "未找到图框"},
      {{"--tk"}, 1, "--tk"},
      // The definitions fix the scale: a scale given for the run is refused rather than ignored.
      {{"--tk", tk_, "--plot", "--scale", "50"}, 1, "--scale"},
  };
  for (const Case& c : cases) {
    std::vector<std::string> args{drawing_};
    args.insert(args.end(), c.args.begin(), c.args.end());
    const RunResult r = TitleBlock(args);
    EXPECT_EQ(r.exitCode, c.exitCode) << c.says << "\n" << r.err;
    EXPECT_TRUE(Has(r.err, c.says)) << r.err;
  }
}

// `tk import` and `titleblock --tk` take a library file through one check: what is no whole
// library is refused by both, in the same words and with exit 2, and the user's library stays as
// it was; a whole library without definitions is an empty library to the batch.
TEST_F(TitleBlockCommandTest, BothCommandsRefuseWhatIsNoWholeLibrary) {
  const std::string whole = ReadFile(tk_);
  titleblock::TK_Library none;
  const std::string emptyLibrary = (dir_.path() / "none.tk").string();
  ASSERT_TRUE(titleblock::SaveTkFileTo(none, emptyLibrary, false));
  struct Case {
    const char* what;
    std::string bytes;
    int batchExit, importExit;
  };
  const Case cases[] = {
      {"a drawing", ReadFile(drawing_), 2, 2},
      {"a library cut in half", whole.substr(0, whole.size() / 2), 2, 2},
      {"a library without its last value", whole.substr(0, whole.rfind('\n', whole.size() - 2) + 1), 2, 2},
      {"an empty file", "", 2, 2},
      {"words", "hello world\n", 2, 2},
      {"a count below zero", "20240329\n-1\n" + whole.substr(whole.find("Standard")), 2, 2},
      {"a library without definitions", ReadFile(emptyLibrary), 4, 0},
      {"a whole library", whole, 0, 0},
  };
  const std::string home = (dir_.path() / "home").string();
  const std::string userLibrary = home + "/.local/share/Tarvex/BPlot_TK.tk";
  fs::create_directories(fs::path(userLibrary).parent_path());
  titleblock::TK_Library mine;
  mine.definitions.push_back(std::make_unique<titleblock::TK_Customization>());
  mine.definitions.back()->block_name = "MINE";
  const std::string file = (dir_.path() / "given.tk").string();
  for (const Case& c : cases) {
    ASSERT_TRUE(titleblock::SaveTkFileTo(mine, userLibrary, false));
    const std::string before = ReadFile(userLibrary);
    WriteFile(file, c.bytes);
    const RunResult batch = TitleBlock({drawing_, "--tk", file});
    const RunResult import = Run({"tk", "import", file, "--keep"}, {}, home);
    EXPECT_EQ(batch.exitCode, c.batchExit) << c.what << "\n" << batch.err;
    EXPECT_EQ(import.exitCode, c.importExit) << c.what << "\n" << import.err;
    if (c.importExit == 0) continue;
    const std::string refusal = Printable(file) + " 不是完整的图框信息配置文件";
    EXPECT_TRUE(Has(batch.err, "tvplot titleblock: " + refusal)) << c.what << "\n" << batch.err;
    EXPECT_TRUE(Has(import.err, "tvplot tk: " + refusal)) << c.what << "\n" << import.err;
    EXPECT_EQ(batch.out, "") << c.what;
    EXPECT_EQ(ReadFile(userLibrary), before) << c.what;
  }
  const RunResult empty = TitleBlock({drawing_, "--tk", emptyLibrary});
  EXPECT_TRUE(Has(empty.err, "图框信息库为空")) << empty.err;
}

}  // namespace
}  // namespace tv::cli
