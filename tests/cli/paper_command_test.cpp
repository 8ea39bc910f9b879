#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "../support/tvplot_test.h"

namespace tv::cli {
namespace {

using test_support::FilesIn;
using test_support::Has;
using test_support::RunResult;

class PaperCommand : public test_support::TvplotTest {
 protected:
  static RunResult Paper(std::vector<std::string> args) {
    args.insert(args.begin(), "paper");
    return Run(args);
  }
};

TEST_F(PaperCommand, ShowsTheNormalisedPaperAndEveryStyle) {
  const RunResult r = Paper({"420.5x296.9"});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_TRUE(Has(r.out, "420x297")) << r.out;
  EXPECT_TRUE(Has(r.out, "TV_A3")) << r.out;
  EXPECT_TRUE(Has(r.out, "是")) << r.out;

  const RunResult trap = Paper({"1412x420"});
  ASSERT_EQ(trap.exitCode, 0) << trap.err;
  for (const char* rendered : {"A2+11\u22158", "A2+11-8", "2A21-8", "A2+41-8", "A2++++1-8", "A2+\n", "A2+81-8"}) {
    EXPECT_TRUE(Has(trap.out, rendered)) << rendered << "\n" << trap.out;
  }
  EXPECT_TRUE(Has(trap.out, "方式06（甘肃图审）"));
}

TEST_F(PaperCommand, OneStyleInJson) {
  const RunResult r = Paper({"600X300", "--style", "2", "--json"});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_TRUE(Has(r.out, "\"length\": 594")) << r.out;
  EXPECT_TRUE(Has(r.out, "\"width\": 297")) << r.out;
  EXPECT_TRUE(Has(r.out, "\"standard\": false")) << r.out;
  EXPECT_TRUE(Has(r.out, "\"name\": \"TV_A3_Plus_594\"")) << r.out;
  EXPECT_TRUE(Has(r.out, "{\"style\": 2, \"choice\": \"方式02\", \"name\": \"A3加长_594\"}")) << r.out;
  EXPECT_FALSE(Has(r.out, "\"style\": 0")) << r.out;
  EXPECT_FALSE(Has(r.out, "sheetPaper"));
}

TEST_F(PaperCommand, ScaleGivesThePaperOfTheDrawnSheet) {
  const RunResult r = Paper({"105100x59400", "--scale", "100", "--style", "1", "--json"});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  const std::size_t sheet = r.out.find("\"sheetPaper\"");
  ASSERT_NE(sheet, std::string::npos) << r.out;
  EXPECT_TRUE(Has(r.out.substr(sheet), "\"name\": \"TV_A1_Plus_1+1-4\"")) << r.out;
  EXPECT_TRUE(Has(r.out.substr(sheet), "\"name\": \"A1+0.25\"")) << r.out;

  const RunResult text = Paper({"84100x59400", "--scale", "100"});
  ASSERT_EQ(text.exitCode, 0) << text.err;
  EXPECT_TRUE(Has(text.out, "1:100")) << text.out;
  EXPECT_TRUE(Has(text.out, "TV_A1\n")) << text.out;
}

TEST_F(PaperCommand, MalformedArgumentsExitOneWithTheUsage) {
  const std::vector<std::vector<std::string>> bad = {
      {},
      {"420"},
      {"420x"},
      {"x297"},
      {"0x297"},
      {"-420x297"},
      {"420x297mm"},
      {"420x297", "--style", "7"},
      {"420x297", "--style", "a"},
      {"420x297", "--style", "1.5"},
      {"420x297", "--scale", "0"},
      {"420x297", "--scale", "abc"},
      {"420x297", "594x420"},
      {"420x297", "--bogus"},
  };
  for (const auto& args : bad) {
    const RunResult r = Paper(args);
    std::string joined;
    for (const auto& a : args) joined += a + " ";
    EXPECT_EQ(r.exitCode, 1) << joined;
    EXPECT_TRUE(Has(r.err, "用法：tvplot paper")) << joined << r.err;
    EXPECT_TRUE(r.out.empty()) << joined;
  }
}

}  // namespace
}  // namespace tv::cli
