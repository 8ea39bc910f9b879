// The numbering of the title-block list as users script it: "图号重编" gives the rows named new
// drawing numbers and their files follow; "文件名前面插入序号" puts a serial before every name and
// keeps its five values in the user's library file, the definitions of the file untouched.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "examples/sample_drawing.h"
#include "examples/sample_library.h"
#include "tests/support/tvplot_test.h"
#include "titleblock/tk_library.h"

namespace tv::plot {
namespace {

namespace fs = std::filesystem;
using namespace test_support;

class TitleNumberingTest : public TvplotTest {
 protected:
  void SetUp() override {
    TvplotTest::SetUp();
    fs::create_directories(data_);
    ASSERT_TRUE(titleblock::SaveTkFileTo(samples::BuildTitleBlockLibrary(), library_, false));
  }
  // The title-block batch with `atList` answered at the list, then Esc for the list shown again.
  RunResult Batch(std::vector<std::string> atList) {
    std::vector<std::string> args{"run", drawing_, "TV_BatchPlot_4", "--answer", "", "--answer", "1"};
    atList.push_back("^C");
    for (const std::string& a : atList) args.insert(args.end(), {"--answer", a});
    return Run(args, {}, home_.string());
  }
  std::vector<std::string> Pdfs() const { return FilesIn(dir_.path() / "PDF"); }

  const fs::path home_ = Path("home");
  const fs::path data_ = home_ / ".local/share/Tarvex";
  const std::string library_ = (data_ / "BPlot_TK.tk").string();
  const std::string drawing_ = Write("titleblocks.dxf", samples::BuildTitleBlockDrawing());
};

TEST_F(TitleNumberingTest, RenumberedRowsAreWhatThePlotWrites) {
  // Rows 1 and 2 renumbered from S-005 with three digits; the rest keep the numbers read.
  const RunResult r = Batch({"D 3-4", "图号重编 1-2", "S-", "-", "5", "", "3", "", ""});
  ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
  EXPECT_TRUE(Has(r.out, "示   例\n\nS-005\n\nS-006\n\nS-007\n\n..........\n\nS-015\n\nS-016")) << r.out;
  EXPECT_EQ(Pdfs(), (std::vector<std::string>{"S-005_A_基础平面图.pdf", "S-006_A_一层梁配筋图.pdf"})) << r.out;

  // Not confirmed, or rows that aren't there: the rows keep their numbers.
  fs::remove_all(dir_.path() / "PDF");
  const RunResult kept = Batch({"D 2-4", "图号重编", "X-", "1", "", "2", "N", "图号重编 9", ""});
  ASSERT_EQ(kept.exitCode, 0) << kept.out << kept.err;
  EXPECT_EQ(Pdfs(), (std::vector<std::string>{"结施-01_A_基础平面图.pdf"})) << kept.out;
}

TEST_F(TitleNumberingTest, SerialBeforeTheNamesIsKeptInTheLibraryAlone) {
  titleblock::TK_Library before;
  ASSERT_TRUE(titleblock::LoadTkFileFrom(before, library_, false));

  const RunResult r = Batch({"D 2-4", "文件名前面插入序号", "是", "P", "7", "\"\"", "3", ""});
  ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
  EXPECT_EQ(Pdfs(), (std::vector<std::string>{"P007结施-01_A_基础平面图.pdf"})) << r.out;

  titleblock::TK_Library after;
  ASSERT_TRUE(titleblock::LoadTkFileFrom(after, library_, false));
  EXPECT_EQ(after.InsertSerial, 1);
  EXPECT_EQ(after.SerialPrefix, "P");
  EXPECT_EQ(after.SerialStart, 7);
  EXPECT_EQ(after.SerialSuffix, "");
  EXPECT_EQ(after.SerialDigits, 3);
  // Nothing else of the file changed.
  after.InsertSerial = before.InsertSerial;
  after.SerialPrefix = before.SerialPrefix;
  after.SerialStart = before.SerialStart;
  after.SerialSuffix = before.SerialSuffix;
  after.SerialDigits = before.SerialDigits;
  const std::string a = Path("a.tk").string(), b = Path("b.tk").string();
  ASSERT_TRUE(titleblock::SaveTkFileTo(before, a, false));
  ASSERT_TRUE(titleblock::SaveTkFileTo(after, b, false));
  EXPECT_EQ(ReadFile(a), ReadFile(b));

  // The next run starts from the saved values; switched off by a word, the names lose the serial.
  fs::remove_all(dir_.path() / "PDF");
  const RunResult off = Batch({"D 2-4", "文件名前面插入序号 否", ""});
  ASSERT_EQ(off.exitCode, 0) << off.out << off.err;
  EXPECT_TRUE(Has(off.out, "文件名前面插入序号：[√] P007…")) << off.out;
  EXPECT_EQ(Pdfs(), (std::vector<std::string>{"结施-01_A_基础平面图.pdf"})) << off.out;
  titleblock::TK_Library last;
  ASSERT_TRUE(titleblock::LoadTkFileFrom(last, library_, false));
  EXPECT_EQ(last.InsertSerial, 0);
  EXPECT_EQ(last.SerialPrefix, "P");
}

}  // namespace
}  // namespace tv::plot
