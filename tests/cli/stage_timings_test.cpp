// `--timings` as users ask for it: the stages of the review list are timed and printed, in their
// order, whichever command builds the list.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/tvplot_test.h"

#include "examples/sample_drawing.h"
#include "examples/sample_library.h"
#include "titleblock/tk_library.h"

namespace tv::console {
namespace {

using test_support::RunResult;

const std::vector<std::string> kGenericStages = {"过滤图形", "判断比例", "更新参数", "更新对话框", "显示对话框"};
const std::vector<std::string> kTitleStages = {"更新对话框", "显示对话框"};

// True when every stage was printed with its time, in the order given.
::testing::AssertionResult StagesInOrder(const std::string& text, const std::vector<std::string>& stages) {
  std::size_t at = 0;
  for (const std::string& stage : stages) {
    const std::size_t found = text.find("\n\n" + stage + "--耗时 ", at);
    if (found == std::string::npos) return ::testing::AssertionFailure() << "no stage " << stage << " in order in:\n" << text;
    at = found + 1;
  }
  return ::testing::AssertionSuccess();
}

class StageTimingsTest : public test_support::TvplotTest {
 protected:
  void SetUp() override {
    TvplotTest::SetUp();
    ASSERT_TRUE(titleblock::SaveTkFileTo(samples::BuildTitleBlockLibrary(), tk_, false));
  }

  const std::string drawing_ = Write("titleblocks.dxf", samples::BuildTitleBlockDrawing());
  const std::string tk_ = Path("titleblocks.tk").string(), out_ = Path("out").string();
};

TEST_F(StageTimingsTest, EveryCommandThatBuildsAListTimesItsStages) {
  struct Case {
    const char* name;
    std::vector<std::string> args;
    const std::vector<std::string>& stages;
  };
  for (const Case& c : std::vector<Case>{
           {"sheets", {"sheets", drawing_, "--timings"}, kGenericStages},
           {"plot", {"plot", drawing_, "--out", out_ + "/plot", "--timings"}, kGenericStages},
           {"run", {"run", drawing_, "TV_BatchPlot_2", "--answer", "", "--answer", "3", "--answer", "C", "--timings"},
            kGenericStages},
           {"titleblock", {"titleblock", drawing_, "--tk", tk_, "--timings"}, kTitleStages},
           {"titleblock --plot",
            {"titleblock", drawing_, "--tk", tk_, "--plot", "--out", out_ + "/title", "--timings"},
            kTitleStages},
       }) {
    SCOPED_TRACE(c.name);
    const RunResult r = Run(c.args);
    ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
    EXPECT_TRUE(StagesInOrder(r.out + r.err, c.stages));
    if (&c.stages == &kTitleStages) {
      EXPECT_EQ((r.out + r.err).find("过滤图形--耗时"), std::string::npos);
    }
  }
  // Without the option nothing is timed.
  const RunResult quiet = Run({"sheets", drawing_});
  ASSERT_EQ(quiet.exitCode, 0) << quiet.err;
  EXPECT_EQ((quiet.out + quiet.err).find("--耗时"), std::string::npos);
}

}  // namespace
}  // namespace tv::console
