#pragma once
// The real drawings of other programs that tests read (TV_CORPUS_DIR, outside the project). A
// machine without them skips those tests rather than failing them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace tv::test_support {

// The build's folder, or $TV_CORPUS_DIR when set, so that one run can point the tests elsewhere.
inline std::filesystem::path CorpusDir() {
  if (const char* dir = std::getenv("TV_CORPUS_DIR"); dir && *dir) return dir;
  return TV_CORPUS_DIR;
}

// Every DXF file below `root` (any case of the extension), in the order the folder lists them.
inline std::vector<std::filesystem::path> CorpusDxfFiles(const std::filesystem::path& root) {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
    std::string ext = entry.path().extension().string();
    std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (entry.is_regular_file() && ext == ".dxf") files.push_back(entry.path());
  }
  return files;
}

}  // namespace tv::test_support

// Skips the running test, saying why, unless `where` (the corpus folder or a file of it) exists.
#define TV_SKIP_WITHOUT_CORPUS(where)                                                \
  do {                                                                               \
    const std::filesystem::path tvCorpusPath_ = (where);                             \
    std::error_code tvCorpusError_;                                                  \
    if (!std::filesystem::exists(tvCorpusPath_, tvCorpusError_))                     \
      GTEST_SKIP() << "corpus drawing not found (TV_CORPUS_DIR): " << tvCorpusPath_; \
  } while (false)
