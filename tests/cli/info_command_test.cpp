// `tvplot info` as users run it: the built program on drawings written to a temporary folder,
// checked for exit codes, key lines, JSON validity, and that it writes nothing.
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "../support/corpus.h"
#include "../support/tvplot_test.h"

#include "cli/drawing_summary.h"
#include "cli/json_output.h"
#include "examples/sample_drawing.h"

namespace tv::cli {
namespace {

namespace fs = std::filesystem;

using namespace test_support;

// Names and sizes of everything in a folder.
std::map<std::string, std::uintmax_t> Listing(const fs::path& dir) {
  std::map<std::string, std::uintmax_t> files;
  for (const auto& e : fs::directory_iterator(dir))
    files[e.path().filename().string()] = e.is_regular_file() ? e.file_size() : 0;
  return files;
}

std::size_t LineCount(const std::string& s) { return Count(s, "\n"); }

// The output parses as JSON, strictly (no comments, nothing after the value).
bool IsValidJson(const std::string& s) { return nlohmann::json::accept(s); }

class InfoCommandTest : public TvplotTest {
 protected:
  const std::string sample_ = Write("sample.dxf", samples::BuildSampleDrawing());
};

TEST_F(InfoCommandTest, DescribesTheSampleDrawing) {
  auto before = Listing(dir_.path());
  RunResult r = Run({"info", sample_});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(r.err, "");
  EXPECT_EQ(Listing(dir_.path()), before);

  for (const char* expected : {"文件: " , "版本: AC1032 (R2018)", "代码页: ANSI_936", "单位: 毫米 (mm)，公制",
                               "LTSCALE 100，CELTSCALE 1", "TILEMODE: 1", "范围: (0, -35000, 0) - (324100, 188900, 0)",
                               "  模型空间: ", "  布局1: ", "  布局2: ", "DIMENSION 13", "  块定义 (", "警告: 0"})
    EXPECT_NE(r.out.find(expected), std::string::npos) << expected << "\n" << r.out;
  // Spaces in tab order, then the block total.
  auto model = r.out.find("模型空间:"), layout1 = r.out.find("布局1:"), layout2 = r.out.find("布局2:");
  EXPECT_LT(model, layout1);
  EXPECT_LT(layout1, layout2);

  // Layer states: off, frozen, locked, not plottable (columns: 开 冻结 锁定 打印).
  EXPECT_NE(r.out.find("辅助线     否  否    否    是"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("旧版本     是  是    否    是"), std::string::npos);
  EXPECT_NE(r.out.find("底图       是  否    是    是"), std::string::npos);
  EXPECT_NE(r.out.find("VPORT      是  否    否    否"), std::string::npos);
  EXPECT_NE(r.out.find("DASHED"), std::string::npos);

  // Layouts with their media and floating viewports (not counting the paper space view).
  EXPECT_NE(r.out.find("ISO_full_bleed_A1_(841.00_x_594.00_MM)  841 x 594 mm  Tarvex PDF.pc3  3"), std::string::npos);
  EXPECT_NE(r.out.find("ISO_A3_(420.00_x_297.00_MM)             420 x 297 mm  None            2"), std::string::npos);

  EXPECT_NE(r.out.find("A3图框    属性"), std::string::npos);
  EXPECT_NE(r.out.find("*D13      匿名"), std::string::npos);
  EXPECT_NE(r.out.find("      DEFAULT  XRECORD     4 组"), std::string::npos);
}

TEST_F(InfoCommandTest, JsonIsOneValidObjectWithTheSameFacts) {
  auto before = Listing(dir_.path());
  // Options may come before the drawing.
  RunResult r = Run({"info", "--json", sample_});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(Listing(dir_.path()), before);
  ASSERT_FALSE(r.out.empty());
  EXPECT_EQ(r.out.front(), '{');
  EXPECT_TRUE(IsValidJson(r.out)) << r.out;
  for (const char* expected : {"\"layers\": [", "\"layouts\": [", "\"blocks\": [", "\"dictionaries\": {",
                               "\"acadver\": \"AC1032\"", "\"symbol\": \"mm\"", "\"system\": \"metric\"",
                               "\"ltscale\": 100", "\"name\": \"布局1\"", "\"DIMENSION\": 13", "\"key\": \"DEFAULT\"",
                               "{\"name\": \"辅助线\", \"on\": false", "\"frozen\": true", "\"plottable\": false",
                               "\"min\": [0, -35000, 0]", "\"count\": 0"})
    EXPECT_NE(r.out.find(expected), std::string::npos) << expected;
}

TEST_F(InfoCommandTest, UnreadableDrawingsExitWithTwoAndOneLine) {
  const std::string bytes = ReadFile(sample_);
  ASSERT_GT(bytes.size(), 10000u);
  WriteText("empty.dxf", "");
  WriteText("truncated.dxf", bytes.substr(0, bytes.size() / 2));
  std::string garbage;
  for (int i = 0; i < 4096; ++i) garbage += static_cast<char>((i * 7919 + 13) % 256);
  WriteText("garbage.dxf", garbage);
  fs::create_directory(dir_ / "folder.dxf");
  auto before = Listing(dir_.path());

  for (const char* name : {"empty.dxf", "truncated.dxf", "garbage.dxf", "folder.dxf", "missing.dxf"}) {
    SCOPED_TRACE(name);
    for (bool json : {false, true}) {
      std::vector<std::string> args{"info", (dir_ / name).string()};
      if (json) args.push_back("--json");
      RunResult r = Run(args);
      EXPECT_EQ(r.exitCode, 2) << r.out << r.err;
      EXPECT_EQ(r.out, "");
      EXPECT_EQ(LineCount(r.err), 1u) << r.err;
      EXPECT_GT(r.err.size(), 1u);
    }
  }
  EXPECT_EQ(Listing(dir_.path()), before);
}

// Real drawings from other programs: every one is either described (as valid JSON) or refused
// with one line; none crashes the program.
TEST_F(InfoCommandTest, CorpusDrawingsAreDescribedOrRefused) {
  const fs::path corpus = test_support::CorpusDir();
  TV_SKIP_WITHOUT_CORPUS(corpus);
  std::size_t described = 0;
  for (const auto& e : fs::recursive_directory_iterator(corpus)) {
    if (!e.is_regular_file() || e.path().extension() != ".dxf") continue;
    SCOPED_TRACE(e.path().string());
    RunResult r = Run({"info", e.path().string(), "--json"});
    ASSERT_TRUE(r.exitCode == 0 || r.exitCode == 2) << r.exitCode << " " << r.err;
    if (r.exitCode == 0) {
      EXPECT_TRUE(IsValidJson(r.out));
      ++described;
    } else {
      EXPECT_EQ(LineCount(r.err), 1u) << r.err;
    }
  }
  EXPECT_GT(described, 0u);
}

// ---- the pieces behind the output ------------------------------------------------------------

std::string Printed(const Json& value, const JsonLayout& layout = {}) {
  std::ostringstream out;
  PrintJson(out, value, layout);
  return out.str();
}

TEST(JsonOutput, QuotesAnyBytesIntoValidJsonAndWritesNumbersShortest) {
  const std::pair<Json, std::string> cases[] = {
      {"图层 \"A\"\\B", "\"图层 \\\"A\\\"\\\\B\""},
      {std::string("a\nb\tc\x01\x1f\x7f", 8), "\"a\\nb\\tc\\u0001\\u001f\x7f\""},
      {std::string("nul\0x", 5), "\"nul\\u0000x\""},
      // Stray continuation bytes, a GBK pair, an overlong '/', a surrogate and a cut-off sequence.
      {"\x80", "\"\\ufffd\""},
      {"\xb2\xe3", "\"\\ufffd\\ufffd\""},
      {"\xc0\xaf", "\"\\ufffd\\ufffd\""},
      {"\xed\xa0\x80", "\"\\ufffd\\ufffd\\ufffd\""},
      {"ab\xe5\x9b", "\"ab\\ufffd\\ufffd\""},
      {"\xf0\x9f\x98\x80 \xe2\x80\xa8", "\"\xf0\x9f\x98\x80 \\u2028\""},
      // A replacement character the drawing itself holds is text like any other.
      {"\xef\xbf\xbd\x80", "\"\xef\xbf\xbd\\ufffd\""},
      {0.1, "0.1"},
      {-0.0, "0"},
      {250.0, "250"},
      {100000.0, "1e+05"},
      {-12.5, "-12.5"},
      {1e300 * 1e300, "null"},
      {std::int64_t{-7}, "-7"},
      {std::size_t{42}, "42"},
  };
  for (const auto& [value, text] : cases) {
    EXPECT_EQ(Printed(value), text + "\n") << text;
    EXPECT_TRUE(IsValidJson(Printed(value))) << text;
  }
}

TEST(DrawingSummary, SummarisesAnonymousBlocksAndLimitsDictionaries) {
  cad::Database db = samples::BuildSampleDrawing();
  // A dictionary that holds itself must not send the walk round in circles.
  cad::Dictionary& loop = db.ensureDictionary(*db.rootDictionary(), "LOOP");
  loop.set("SELF", loop.id);

  DrawingSummary full = SummarizeDrawing(db, "x.dxf", {"w1", "w2", "w3"});
  EXPECT_TRUE(full.anonymousGroups.empty());
  EXPECT_EQ(full.warningCount, 3u);
  ASSERT_EQ(full.spaces.size(), 3u);
  EXPECT_TRUE(full.spaces[0].modelSpace);
  EXPECT_EQ(full.spaces[1].label, "布局1");

  SummaryLimits limits;
  limits.anonymousListLimit = 5;
  limits.dictionaryDepth = 1;
  limits.warnings = 2;
  DrawingSummary s = SummarizeDrawing(db, "x.dxf", {"w1", "w2", "w3"}, limits);
  ASSERT_EQ(s.anonymousGroups.size(), 1u);
  EXPECT_EQ(s.anonymousGroups[0].prefix, "*D");
  EXPECT_EQ(s.anonymousGroups[0].count, 13u);
  for (const auto& b : s.blocks) EXPECT_FALSE(b.anonymous) << b.name;
  EXPECT_EQ(s.blocks.size() + s.anonymousGroups[0].count, full.blocks.size());
  EXPECT_EQ(s.warningCount, 3u);
  EXPECT_EQ(s.firstWarnings.size(), 2u);

  ASSERT_TRUE(s.dictionaries);
  const DictionaryNode* tarvex = nullptr;
  const DictionaryNode* loopNode = nullptr;
  for (const auto& c : s.dictionaries->children) {
    if (c.key == "TARVEX") tarvex = &c;
    if (c.key == "LOOP") loopNode = &c;
  }
  ASSERT_TRUE(tarvex && loopNode);
  EXPECT_EQ(tarvex->entries, 2u);
  EXPECT_EQ(tarvex->xrecords, 1u);
  EXPECT_TRUE(tarvex->children.empty());  // beyond the depth limit
  EXPECT_EQ(tarvex->omittedChildren, 2u);

  // The full walk lists the loop's self-entry once and goes no further.
  for (const auto& c : full.dictionaries->children)
    if (c.key == "LOOP") {
      ASSERT_EQ(c.children.size(), 1u);
      EXPECT_TRUE(c.children[0].children.empty());
      EXPECT_EQ(c.children[0].omittedChildren, 1u);
    }
}

}  // namespace
}  // namespace tv::cli
