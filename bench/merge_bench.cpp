// One PDF of the whole set against one PDF per sheet: the 100 A1 frames of the frame set plotted
// by the generic batch, once into separate files, once merged (numbered files, the merging
// program, the outline). The drawing is read outside the timing.
//
// BM_MergeFrameSet/0   separate files      BM_MergeFrameSet/1   one merged file
// Counters: sheets, bytes (the separate files together, or the merged file), and in the merged
// case parts_bytes and size_ratio against the separate run of the same process, so run both:
//   tvbench --benchmark_filter=MergeFrameSet
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "bench/batch_runs.h"
#include "bench/frame_set.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kFrames = 100;

std::uintmax_t BytesIn(const fs::path& folder) {
  std::uintmax_t bytes = 0;
  std::error_code ec;
  for (const fs::directory_entry& e : fs::directory_iterator(folder, ec))
    if (e.is_regular_file(ec)) bytes += e.file_size(ec);
  return bytes;
}

std::uintmax_t& SeparateBytes() {
  static std::uintmax_t bytes = 0;
  return bytes;
}

void BM_MergeFrameSet(benchmark::State& state) {
  using namespace tv;
  const bool merged = state.range(0) != 0;
  const fs::path root = fs::temp_directory_path() / "tarvex-bench";
  const fs::path out = root / (merged ? "merge-one" : "merge-separate");
  const fs::path target = out / "frames.pdf";
  setenv("XDG_DATA_HOME", (root / "data").c_str(), 1);
  const std::size_t written =
      bench::PlotFrameSetEachIteration(state, kFrames, out, settings::kFormatPdf, merged ? target.string() : std::string());
  const std::uintmax_t bytes = BytesIn(out);
  state.counters["sheets"] = static_cast<double>(written);
  state.counters["bytes"] = static_cast<double>(bytes);
  if (!merged) SeparateBytes() = bytes;
  if (merged && SeparateBytes() > 0) {
    state.counters["parts_bytes"] = static_cast<double>(SeparateBytes());
    state.counters["size_ratio"] = static_cast<double>(bytes) / static_cast<double>(SeparateBytes());
  }
  std::error_code ec;
  if (written != kFrames) state.SkipWithError("not every sheet of the frame set was plotted");
  else if (merged && !fs::is_regular_file(target, ec)) state.SkipWithError("the merged file was not written");
}
BENCHMARK(BM_MergeFrameSet)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();

}  // namespace
