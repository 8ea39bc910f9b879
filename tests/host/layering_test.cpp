// The logic must run against any host: only the seam's implementation and the console may see
// this platform's drawing model, renderer and command line.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

// Files of a folder that include one of the platform folders, as "file: line".
std::vector<std::string> PlatformIncludes(const fs::path& folder, bool headersOnly) {
  static const std::regex include(R"(^\s*#\s*include\s*"(cad|render|console)/)");
  std::vector<std::string> found;
  if (!fs::is_directory(folder)) return found;
  for (const auto& entry : fs::directory_iterator(folder)) {
    const fs::path& p = entry.path();
    if (p.extension() != ".h" && p.extension() != ".cpp") continue;
    if (headersOnly && p.extension() != ".h") continue;
    std::ifstream in(p);
    for (std::string line; std::getline(in, line);)
      if (std::regex_search(line, include)) found.push_back(p.filename().string() + ": " + line);
  }
  return found;
}

TEST(Layering, SubsystemsSeeOnlyTheSeam) {
  const fs::path src = fs::path(TV_SOURCE_DIR) / "src";
  for (const char* folder : {"recognition", "paper", "plot", "titleblock", "signing", "reports", "settings", "aids", "controls"}) {
    const auto found = PlatformIncludes(src / folder, false);
    EXPECT_TRUE(found.empty()) << folder << " includes the platform:\n" << ::testing::PrintToString(found);
  }
}

TEST(Layering, SeamHeadersDoNotLeakThePlatform) {
  // cad_binding.h is the one header meant for the platform side.
  auto found = PlatformIncludes(fs::path(TV_SOURCE_DIR) / "src" / "host", true);
  std::erase_if(found, [](const std::string& s) { return s.rfind("cad_binding.h", 0) == 0; });
  EXPECT_TRUE(found.empty()) << ::testing::PrintToString(found);
}

}  // namespace
