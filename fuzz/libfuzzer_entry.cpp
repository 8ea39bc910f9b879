// The libFuzzer program of one target, chosen by TV_FUZZ_TARGET at build time.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

#include "fuzz/fuzz_targets.h"
#include "tests/support/private_home.h"

namespace {

const tv::fuzz::FuzzTarget* g_target = nullptr;

}  // namespace

// fontconfig keeps its configuration and caches for the life of the process (our font directory
// holds them from the first text measured), which the leak check would take for a leak of the
// input that happened to load them.
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig.so\n"; }

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  // Fuzzing never touches the files of the user running it.
  static const tv::test_support::PrivateHome home("tv_fuzz_home");
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
