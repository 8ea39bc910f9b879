// The generic batch in format 6 on the 100-frame set: recognition and review list as for a plot,
// then each sheet cut into a drawing file of its own. Compare with BM_PlotFrameSet/0 (the same
// batch plotted to vector PDF), run in the same minutes:
//   tvbench --benchmark_filter='SplitFrameSet|PlotFrameSet/0/'
// Counters: sheets (files written), sheets_per_second.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "bench/batch_runs.h"
#include "bench/frame_set.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kFrames = 100;

void BM_SplitFrameSet(benchmark::State& state) {
  using namespace tv;
  const fs::path root = fs::temp_directory_path() / "tarvex-bench";
  setenv("XDG_DATA_HOME", (root / "data").c_str(), 1);
  const std::size_t written = bench::PlotFrameSetEachIteration(state, kFrames, root / "split", settings::kFormatDwg);
  state.counters["sheets"] = static_cast<double>(written);
  state.counters["sheets_per_second"] =
      benchmark::Counter(static_cast<double>(written), benchmark::Counter::kIsIterationInvariantRate);
  if (written != kFrames) state.SkipWithError("not every sheet of the frame set was written");
}
BENCHMARK(BM_SplitFrameSet)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();

}  // namespace
