// The libFuzzer program of one target, chosen by TV_FUZZ_TARGET at build time.
#include <stdlib.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

#include "fuzz/fuzz_targets.h"

namespace {

// The module loads and saves the user's configuration and libraries: give the run a home of its
// own, so that fuzzing never touches the files of the user running it.
class PrivateHome {
 public:
  PrivateHome() {
    std::error_code ec;
    std::string pattern = (std::filesystem::temp_directory_path(ec) / "tv_fuzz_home_XXXXXX").string();
    if (!mkdtemp(pattern.data())) return;
    root_ = pattern;
    const std::string data = root_ + "/.local/share";
    std::filesystem::create_directories(data, ec);
    setenv("HOME", root_.c_str(), 1);
    setenv("XDG_DATA_HOME", data.c_str(), 1);
  }
  ~PrivateHome() {
    std::error_code ec;
    if (!root_.empty()) std::filesystem::remove_all(root_, ec);
  }
  PrivateHome(const PrivateHome&) = delete;
  PrivateHome& operator=(const PrivateHome&) = delete;

 private:
  std::string root_;
};

const tv::fuzz::FuzzTarget* g_target = nullptr;

}  // namespace

// fontconfig keeps its configuration and caches for the life of the process (our font directory
// holds them from the first text measured), which the leak check would take for a leak of the
// input that happened to load them.
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig.so\n"; }

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  static const PrivateHome home;
  for (const tv::fuzz::FuzzTarget& t : tv::fuzz::FuzzTargets())
    if (t.name == TV_FUZZ_TARGET) g_target = &t;
  if (!g_target) {
    std::fprintf(stderr, "no fuzz target named %s\n", TV_FUZZ_TARGET);
    std::abort();
  }
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  g_target->run(std::string_view(reinterpret_cast<const char*>(data), size));
  return 0;
}
