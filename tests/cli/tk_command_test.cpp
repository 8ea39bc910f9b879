// `tvplot tk` as users run it: the built program on a data folder of the test's own, listing,
// exporting and importing the title-block library, and refusing what it cannot do.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "../support/run_together.h"
#include "../support/tvplot_test.h"
#include "host/geometry.h"
#include "titleblock/tk_library.h"

namespace tv::cli {
namespace {

namespace fs = std::filesystem;

using namespace test_support;
using titleblock::TK_Customization;
using titleblock::TK_Library;

std::unique_ptr<TK_Customization> Definition(const std::string& name, std::int32_t length) {
  auto d = std::make_unique<TK_Customization>();
  d->block_name = name;
  d->paper.length = length;
  return d;
}

class TkCommandTest : public TvplotTest {
 protected:
  void SetUp() override {
    TvplotTest::SetUp();
    fs::create_directories(data_ + "/Tarvex");
  }

  // Runs `tvplot tk …` with the test's data folder.
  RunResult Tk(std::vector<std::string> args) {
    args.insert(args.begin(), {"XDG_DATA_HOME=" + data_, TV_TVPLOT_PATH, "tk"});
    return RunProgram("/usr/bin/env", args);
  }

  static void Write(const TK_Library& library, const std::string& path) {
    ASSERT_TRUE(titleblock::SaveTkFileTo(library, path, false));
  }

  static std::vector<std::string> Names(const std::string& path) {
    TK_Library library;
    EXPECT_TRUE(titleblock::LoadTkFileFrom(library, path, false));
    std::vector<std::string> names;
    for (const auto& d : library.definitions) names.push_back(d->block_name + ":" + std::to_string(d->paper.length));
    return names;
  }

  // The user's library holds A and B; import.tk holds A (another paper) and C.
  void TwoLibraries() {
    TK_Library mine;
    mine.definitions.push_back(Definition("A", 111));
    mine.definitions.push_back(Definition("B", 222));
    mine.SerialPrefix = "MINE";
    Write(mine, library_);
    TK_Library theirs;
    theirs.definitions.push_back(Definition("A", 333));
    theirs.definitions.push_back(Definition("C", 444));
    theirs.SerialPrefix = "THEIRS";
    Write(theirs, file("import.tk"));
  }

  std::string file(const std::string& name) const { return Path(name).string(); }

  const std::string data_ = Path("data").string(), library_ = data_ + "/Tarvex/BPlot_TK.tk";
};

TEST_F(TkCommandTest, ListOfAnEmptyLibrarySaysSoAndShowsTheNamingSettings) {
  const RunResult r = Tk({"list"});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_TRUE(Has(r.out, "图框信息库为空")) << r.out;
  EXPECT_TRUE(Has(r.out, "BPlot_TK.tk")) << r.out;
  EXPECT_TRUE(Has(r.out, "序号后缀")) << r.out;
  EXPECT_TRUE(Has(r.out, "A_B_T_C")) << r.out;
}

TEST_F(TkCommandTest, ListShowsEachDefinitionAsTheFormsDo) {
  TK_Library library;
  auto d = Definition("图框 A1", 841);
  d->paper.width = 594;
  d->rotation = kPi / 2;
  d->scale = 100;
  d->name_rule = "A_B";
  d->sort_priority = 2;
  d->is_dynamic = 1;
  d->area_title = Extents3d({0, 0, 0}, {10, 5, 0});
  d->area_date = Extents3d({0, 0, 0}, {10, 5, 0});
  library.definitions.push_back(std::move(d));
  library.definitions.push_back(Definition("PLAIN", 420));
  library.SerialPrefix = "PRE-";
  Write(library, library_);

  const RunResult r = Tk({"list"});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_TRUE(Has(r.out, "共 2 个图框")) << r.out;
  for (const char* cell : {"图框 A1", "841x594", "90", "A_B", "图名、日期", "PLAIN", "420x210", "未定义", "PRE-"})
    EXPECT_TRUE(Has(r.out, cell)) << cell << "\n" << r.out;
  // Sort priority 2 is shown as 3; the dynamic frame says so.
  const std::string first = r.out.substr(r.out.find("图框 A1"));
  const std::string row = first.substr(0, first.find('\n'));
  EXPECT_TRUE(Has(row, " 3 ")) << row;
  EXPECT_TRUE(Has(row, "是")) << row;

  const RunResult json = Tk({"list", "--json"});
  ASSERT_EQ(json.exitCode, 0) << json.err;
  for (const char* part : {"\"blockName\": \"图框 A1\"", "\"sortPriority\": 3", "\"rotation\": 90.0002", "\"dynamic\": true",
                           "\"title\": [0, 0, 10, 5]", "\"serialPrefix\": \"PRE-\"", "\"count\": 2"})
    EXPECT_TRUE(Has(json.out, part)) << part << "\n" << json.out;
}

TEST_F(TkCommandTest, ExportWritesTheLibraryToTheFileGiven) {
  TwoLibraries();
  const RunResult r = Tk({"export", file("out.tk")});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_TRUE(Has(r.out, "2 个图框")) << r.out;
  EXPECT_EQ(Names(file("out.tk")), (std::vector<std::string>{"A:111", "B:222"}));
}

TEST_F(TkCommandTest, ExportToAPlaceThatCannotBeWrittenShowsTheFailure) {
  const RunResult r = Tk({"export", file("missing/folder/out.tk")});
  EXPECT_EQ(r.exitCode, 4) << r.err;
  EXPECT_TRUE(Has(r.err, "写入操作有误!")) << r.err;
  EXPECT_TRUE(Has(r.err, "missing/folder/out.tk")) << r.err;
  EXPECT_FALSE(fs::exists(file("missing")));
}

TEST_F(TkCommandTest, ImportMergesOrReplacesAsAskedAndChangesNothingWhenItCannot) {
  struct Case {
    const char* what;
    std::vector<std::string> args;
    bool mineAbsent;  // the user has no library yet
    int exitCode;
    std::vector<std::string> says, names;
  };
  const std::string import = file("import.tk");
  const Case cases[] = {
      {"keep", {"import", import, "--keep"}, false, 0,
       {"导入 1 个图框定义", "同名的 1 个保留原有定义", "现有 3 个图框"}, {"A:111", "B:222", "C:444"}},
      {"replace", {"import", import, "--replace"}, false, 0, {}, {"A:333", "C:444"}},
      // Without an answer and no terminal to ask at, nothing is guessed.
      {"no answer", {"import", import}, false, 1, {"--keep", "--replace"}, {"A:111", "B:222"}},
      // An empty library is not asked about.
      {"into an empty library", {"import", import}, true, 0, {}, {"A:333", "C:444"}},
      {"a missing file", {"import", file("nothing.tk"), "--replace"}, false, 2, {"无法读取文件"}, {"A:111", "B:222"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    // Gone first: saved again unchanged, the file an import of the last case made would be kept as
    // another run's newer file.
    fs::remove(library_);
    TwoLibraries();
    if (c.mineAbsent) fs::remove(library_);
    const std::string before = c.mineAbsent ? "" : ReadFile(library_);
    const RunResult r = Tk(c.args);
    EXPECT_EQ(r.exitCode, c.exitCode) << r.err;
    for (const std::string& part : c.says) EXPECT_TRUE(Has(r.out + r.err, part)) << part << "\n" << r.out << r.err;
    if (c.mineAbsent) {
      EXPECT_FALSE(Has(r.err, "原图框信息是否保留")) << r.err;
    }
    EXPECT_EQ(Names(library_), c.names);
    if (c.exitCode != 0) {
      EXPECT_EQ(ReadFile(library_), before) << "a refused import writes nothing";
    }
  }
  // Keeping takes the numbering of the imported file all the same.
  ASSERT_EQ(Tk({"import", import, "--keep"}).exitCode, 0);
  TK_Library back;
  ASSERT_TRUE(titleblock::LoadTkFileFrom(back, library_, false));
  EXPECT_EQ(back.SerialPrefix, "THEIRS");
}

// Imports at once, each of a library of its own and each keeping what is there: every one lands and
// says so. Repeated, since runs that don't take turns lose work only now and then: the first
// round starts with no files at all (every run also brings the files to current defaults), the
// later ones with the user's files in place.
TEST_F(TkCommandTest, ImportsAtOnceAllLand) {
  constexpr int kRuns = 5;
  std::vector<std::string> all;
  for (int i = 0; i < kRuns; ++i) {
    TK_Library one;
    one.definitions.push_back(Definition("F" + std::to_string(i), 100 + i));
    Write(one, file("lib" + std::to_string(i) + ".tk"));
    all.push_back("F" + std::to_string(i) + ":" + std::to_string(100 + i));
  }
  const std::string home = file("home");
  for (int round = 0; round < 3; ++round) {
    if (round == 0) fs::remove_all(data_);
    else fs::remove(library_);
    std::vector<std::vector<std::string>> commands;
    for (int i = 0; i < kRuns; ++i)
      commands.push_back({"/usr/bin/env", "HOME=" + home, "XDG_DATA_HOME=" + data_, "XDG_CONFIG_HOME=" + home,
                          "XDG_CACHE_HOME=" + home, TV_TVPLOT_PATH, "tk", "import",
                          file("lib" + std::to_string(i) + ".tk"), "--keep"});
    const std::vector<RunResult> runs = test_support::RunTogether(commands);
    for (const RunResult& r : runs) {
      EXPECT_EQ(r.exitCode, 0) << "round " << round << ": " << r.err;
      EXPECT_TRUE(Has(r.out, "导入 1 个图框定义")) << r.out;
    }
    std::vector<std::string> names = Names(library_);
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, all) << "round " << round;
    EXPECT_FALSE(fs::exists(library_ + ".lock"));
  }
}

}  // namespace
}  // namespace tv::cli
