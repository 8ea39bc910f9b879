// The whole generic batch on the 100-frame set of the recognition benchmark: the command's
// recognition and review list, then one -plot per sheet through the plot engine, as
// `tvplot plot frames.dxf --format F` runs it. The drawing is read outside the timing.
//
// BM_PlotFrameSet/0   vector PDF      BM_PlotFrameSet/3   PNG (the private plotter's pixels)
// Counters: sheets (files written), sheets_per_second, peak_MB (the process's peak resident
// memory, drawing included). Run each case in a process of its own for the memory figure:
//   for f in 0 3; do tvbench --benchmark_filter=PlotFrameSet/$f/; done
#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "bench/batch_runs.h"
#include "bench/frame_set.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kFrames = 100;

double PeakMegabytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024.0;
}

void BM_PlotFrameSet(benchmark::State& state) {
  using namespace tv;
  const auto format = static_cast<std::int32_t>(state.range(0));
  const fs::path root = fs::temp_directory_path() / "tarvex-bench";
  const fs::path out = root / ("plot-" + std::to_string(format));
  // The benchmark's settings live beside its drawings, never in the user's data folder.
  setenv("XDG_DATA_HOME", (root / "data").c_str(), 1);
  const std::size_t written = bench::PlotFrameSetEachIteration(state, kFrames, out, format);
  state.counters["sheets"] = static_cast<double>(written);
  state.counters["sheets_per_second"] =
      benchmark::Counter(static_cast<double>(written), benchmark::Counter::kIsIterationInvariantRate);
  state.counters["peak_MB"] = PeakMegabytes();
  if (written != kFrames) state.SkipWithError("not every sheet of the frame set was plotted");
}
BENCHMARK(BM_PlotFrameSet)->Arg(0)->Arg(3)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();

}  // namespace
