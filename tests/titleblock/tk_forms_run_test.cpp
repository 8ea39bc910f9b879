// The library form on the drawing's command line (`tvplot run D.dxf TV_BatchPlot_3`): a custom
// paper typed as its two sides, and the serial digits of a definition, as the file keeps them.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "examples/sample_drawing.h"
#include "examples/sample_library.h"
#include "tests/support/tvplot_test.h"
#include "titleblock/tk_library.h"
#include "titleblock/tk_set_form.h"

namespace tv::titleblock {
namespace {

namespace fs = std::filesystem;
using namespace test_support;

TEST(TkFormsTest, PaperSidesTypedOnOneLine) {
  struct Case {
    const char* typed;
    bool read;
    double a, b;
  };
  const Case cases[] = {
      {"841x594", true, 841, 594}, {"1000 X 600", true, 1000, 600}, {"630*297", true, 630, 297},
      {"420×297", true, 420, 297}, {"900，400", true, 900, 400},    {"700 350", true, 700, 350},
      {"841", false, 0, 0},        {"841x", false, 0, 0},           {"ax594", false, 0, 0},
      {"1x2x3", false, 0, 0},
  };
  for (const Case& c : cases) {
    const auto sides = ParsePaperSides(c.typed);
    ASSERT_EQ(sides.has_value(), c.read) << c.typed;
    if (sides) {
      EXPECT_EQ(*sides, (std::pair{c.a, c.b})) << c.typed;
    }
  }
  // A standard paper still offers the custom paper form, as the eleventh row.
  int preselected = -1;
  const std::vector<std::string> rows = PaperChoiceRows({841, 594, true}, preselected);
  ASSERT_EQ(rows.size(), 11u);
  EXPECT_EQ(rows.back(), "自定义纸张");
  EXPECT_EQ(preselected, 3);
}

class TkFormsRunTest : public TvplotTest {
 protected:
  void SetUp() override {
    TvplotTest::SetUp();
    fs::create_directories(data_);
    ASSERT_TRUE(SaveTkFileTo(samples::BuildTitleBlockLibrary(), library_, false));
  }
  RunResult Form(const std::vector<std::string>& answers) {
    std::vector<std::string> args{"run", drawing_, "TV_BatchPlot_3"};
    for (const std::string& a : answers) args.insert(args.end(), {"--answer", a});
    return Run(args, {}, home_.string());
  }
  TK_Library Saved() const {
    TK_Library library;
    EXPECT_TRUE(LoadTkFileFrom(library, library_, false));
    return library;
  }

  const fs::path home_ = Path("home");
  const fs::path data_ = home_ / ".local/share/Tarvex";
  const std::string library_ = (data_ / "BPlot_TK.tk").string();
  const std::string drawing_ = Write("titleblocks.dxf", samples::BuildTitleBlockDrawing());
};

TEST_F(TkFormsRunTest, CustomPaperAndSerialDigitsAreKeptOnOk) {
  // Row 1 (the A1 frame): the eleventh paper row, two sizes refused, then 1000 x 600; its serial
  // digits 4. The second row's paper: Enter keeps the sides shown.
  const RunResult r = Form({"Z", "1", "11", "abc", "6000x600", "600 x 1000", "W", "1", "4", "Z", "2", "11", "", "O"});
  ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
  EXPECT_TRUE(Has(r.out, "自定义纸张 纸张尺寸（mm）： <841x594>: ")) << r.out;
  EXPECT_TRUE(Has(r.out, "应输入两个数，如 841x594。")) << r.out;
  EXPECT_TRUE(Has(r.out, "尺寸过大，不能超过 5080 mm (即200英寸) !")) << r.out;
  const TK_Library saved = Saved();
  ASSERT_EQ(saved.definitions.size(), 2u);
  EXPECT_EQ(saved.definitions[0]->paper.length, 1000);
  EXPECT_EQ(saved.definitions[0]->paper.width, 600);
  EXPECT_EQ(saved.definitions[0]->serial_digits, 4);
  EXPECT_EQ(saved.definitions[1]->paper.length, 594);
  EXPECT_EQ(saved.definitions[1]->paper.width, 420);
  EXPECT_EQ(saved.definitions[1]->serial_digits, 2);

  // Cancelled, the form leaves the file as it was.
  const std::string before = ReadFile(library_);
  const RunResult c = Form({"Z", "1", "11", "700x300", "W", "1", "9", "C"});
  ASSERT_EQ(c.exitCode, 0) << c.out << c.err;
  EXPECT_EQ(ReadFile(library_), before);
}

// `tvplot tk define` takes the same two values: refused ones leave the library as it was.
TEST_F(TkFormsRunTest, DefineTakesACustomPaperAndSerialDigits) {
  const std::string before = ReadFile(library_);
  struct Refused {
    std::vector<std::string> options;
    const char* says;
  };
  const Refused refused[] = {
      {{"--paper", "1000"}, "--paper 应为两边的毫米数"},
      {{"--paper", "30x600"}, "尺寸过小，小于50 mm。"},
      {{"--paper", "6000x600"}, "尺寸过大，不能超过 5080 mm"},
      {{"--digits", "0"}, "--digits 应为 1 至 9 的整数"},
  };
  for (const Refused& c : refused) {
    std::vector<std::string> args{"tk", "define", drawing_, "--block", samples::kTitleFrameA1, "--rule", "T", "--replace"};
    args.insert(args.end(), c.options.begin(), c.options.end());
    const RunResult r = Run(args, {}, home_.string());
    EXPECT_EQ(r.exitCode, 1) << r.err;
    EXPECT_TRUE(Has(r.err, c.says)) << r.err;
    EXPECT_EQ(ReadFile(library_), before);
  }
  const RunResult r = Run({"tk", "define", drawing_, "--block", samples::kTitleFrameA1, "--rule", "T", "--replace",
                           "--paper", "600 x 1000", "--digits", "3"},
                          {}, home_.string());
  ASSERT_EQ(r.exitCode, 0) << r.err;
  const TK_Library saved = Saved();
  ASSERT_EQ(saved.definitions.size(), 2u);
  const TK_Customization& d = *saved.definitions.back();
  EXPECT_EQ(d.block_name, samples::kTitleFrameA1);
  EXPECT_EQ(d.paper.length, 1000);
  EXPECT_EQ(d.paper.width, 600);
  EXPECT_EQ(d.serial_digits, 3);
}

}  // namespace
}  // namespace tv::titleblock
