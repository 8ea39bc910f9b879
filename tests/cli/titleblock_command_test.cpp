// `tvplot titleblock` as users run it: the built program on the sample title blocks and their
// library, written to a temporary folder; the rows, the names, the files and the refusals.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "../support/run_program.h"

#include "cad/dxf_writer.h"
#include "examples/sample_drawing.h"
#include "examples/sample_library.h"
#include "titleblock/tk_library.h"

namespace tv::cli {
namespace {

namespace fs = std::filesystem;

using test_support::FilesIn;
using test_support::Has;
using test_support::RunProgram;
using test_support::RunResult;
using test_support::TempDir;

class TitleBlockCommandTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_FALSE(dir_.path().empty());
    drawing_ = (dir_.path() / "titleblocks.dxf").string();
    tk_ = (dir_.path() / "titleblocks.tk").string();
    ASSERT_TRUE(cad::WriteDxf(samples::BuildTitleBlockDrawing(), drawing_).ok);
    ASSERT_TRUE(titleblock::SaveTkFileTo(samples::BuildTitleBlockLibrary(), tk_, false));
  }
  RunResult TitleBlock(std::vector<std::string> args) {
    args.insert(args.begin(), "titleblock");
    return RunProgram(TV_TVPLOT_PATH, args);
  }

  TempDir dir_;
  std::string drawing_, tk_;
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
  // The test process's own data folder holds no library.
  const RunResult empty = TitleBlock({drawing_});
  EXPECT_EQ(empty.exitCode, 4);
  EXPECT_TRUE(Has(empty.err, "图框信息库为空")) << empty.err;

  const RunResult missing = TitleBlock({drawing_, "--tk", (dir_.path() / "none.tk").string(), "--plot"});
  EXPECT_EQ(missing.exitCode, 2);
  EXPECT_TRUE(Has(missing.err, "无法读取")) << missing.err;

  const RunResult layouts = TitleBlock({drawing_, "--tk", tk_, "--range", "layouts"});
  EXPECT_EQ(layouts.exitCode, 4);
  EXPECT_TRUE(Has(layouts.err, "未找到图框")) << layouts.err;

  const RunResult usage = TitleBlock({drawing_, "--tk"});
  EXPECT_EQ(usage.exitCode, 1);
  // The definitions fix the scale: a scale given for the run is refused rather than ignored.
  const RunResult scaled = TitleBlock({drawing_, "--tk", tk_, "--plot", "--scale", "50"});
  EXPECT_EQ(scaled.exitCode, 1);
  EXPECT_TRUE(Has(scaled.err, "--scale")) << scaled.err;
}

}  // namespace
}  // namespace tv::cli
