// The stored inputs of the fuzz targets, replayed in the regular build: every input that once
// made a target fail, and the hand-made seeds. A target that fails again ends this test process
// (a crash), or the sanitizer build reports it. Drawings among them also go through `tvplot
// sheets`, which must refuse or list them with its own exit codes.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "../support/run_program.h"
#include "fuzz/fuzz_targets.h"

namespace tv::fuzz {
namespace {

namespace fs = std::filesystem;
using test_support::ReadFile;
using test_support::RunProgram;

std::vector<fs::path> StoredInputs(std::string_view target) {
  std::vector<fs::path> files;
  for (const char* kind : {"regressions", "seeds"}) {
    const fs::path dir = fs::path(TV_SOURCE_DIR) / "tests/fuzz" / kind / std::string(target);
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator(dir, ec))
      if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

class StoredFuzzInputs : public ::testing::TestWithParam<FuzzTarget> {};

TEST_P(StoredFuzzInputs, RunToTheEnd) {
  const std::vector<fs::path> inputs = StoredInputs(GetParam().name);
  for (const fs::path& input : inputs) {
    SCOPED_TRACE(input.string());
    GetParam().run(ReadFile(input));
  }
  RecordProperty("inputs", static_cast<int>(inputs.size()));
}

INSTANTIATE_TEST_SUITE_P(Targets, StoredFuzzInputs, ::testing::ValuesIn(FuzzTargets().begin(), FuzzTargets().end()),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(StoredFuzzDrawings, SheetsCommandListsOrRefusesEach) {
  for (const fs::path& input : StoredInputs("dxf")) {
    SCOPED_TRACE(input.string());
    const auto result = RunProgram(TV_TVPLOT_PATH, {"sheets", input.string()});
    // 0 listed, 2 unreadable (with a message), 4 no sheet.
    EXPECT_TRUE(result.exitCode == 0 || result.exitCode == 2 || result.exitCode == 4) << result.exitCode << result.err;
    if (result.exitCode == 2) {
      EXPECT_FALSE(result.err.empty());
    }
  }
}

}  // namespace
}  // namespace tv::fuzz
