#pragma once
// The real drawings of other programs that tests read (TV_CORPUS_DIR, outside the project). A
// machine without them skips those tests rather than failing them.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

namespace tv::test_support {

// The build's folder, or $TV_CORPUS_DIR when set, so that one run can point the tests elsewhere.
inline std::filesystem::path CorpusDir() {
  if (const char* dir = std::getenv("TV_CORPUS_DIR"); dir && *dir) return dir;
  return TV_CORPUS_DIR;
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
