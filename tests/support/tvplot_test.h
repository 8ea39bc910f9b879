#pragma once
// The fixture of end-to-end tests: a temporary folder of the test's own, drawings written into it
// through the project's DXF writer, and the built `tvplot` run on them as a user would.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "cad/database.h"
#include "cad/dxf_writer.h"
#include "run_program.h"

namespace tv::test_support {

// How often `part` occurs in `text`, counting only whole, separate occurrences.
inline std::size_t Count(const std::string& text, const std::string& part) {
  std::size_t n = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) ++n;
  return n;
}

class TvplotTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_FALSE(dir_.path().empty()); }

  // `name` in the test's folder (an absolute path stays as it is).
  std::filesystem::path Path(const std::filesystem::path& name) const { return dir_.path() / name; }

  // `db` written as DXF to `name`, folders made as needed; the path written.
  std::string Write(const std::filesystem::path& name, const cad::Database& db) const {
    const std::filesystem::path path = Path(name);
    std::error_code ec;
    std::filesystem::create_directories(path.parent_path(), ec);
    EXPECT_TRUE(cad::WriteDxf(db, path.string()).ok) << path;
    return path.string();
  }
  std::string WriteText(const std::filesystem::path& name, const std::string& bytes) const {
    const std::filesystem::path path = Path(name);
    WriteFile(path, bytes);
    return path.string();
  }

  // `tvplot args…`, with a home of its own unless `home` is given.
  static RunResult Run(const std::vector<std::string>& args, const std::string& input = {}, const std::string& home = {}) {
    return RunProgram(TV_TVPLOT_PATH, args, input, home);
  }

  TempDir dir_{"tv_cli"};
};

}  // namespace tv::test_support
