// Sheet recognition on the frame set of bench/frame_set.h (the sample builder's frames.dxf).
//
// BM_LoadFrameSet/N        reads the DXF file of N frames.
// BM_RecogniseFrameSet/N   the generic batch's road over model space on the loaded drawing in a
//                          console session: CollectSpaceIds, ScanSpace, FilterSheets, OrderSheets
//                          (rows from the top), on a drawing read outside the timing.
// One iteration each: a user's run reads and scans once in a fresh process, and a second pass
// would find the allocator and the caches warm from the first only where the drawing is small.
// For figures to compare, run each case in a process of its own:
//   for c in Load Recognise; do for n in 100 1000; do tvbench --benchmark_filter=${c}FrameSet/$n/; done; done
// Counters: entities (model space), sheets (found and kept), entities_per_second.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>

#include "bench/batch_runs.h"
#include "bench/frame_set.h"

namespace {

namespace fs = std::filesystem;
using tv::bench::EnsureFrameFile;
using tv::bench::FrameFilePath;
using tv::bench::LoadFrameSet;
using tv::bench::ModelEntities;

void BM_LoadFrameSet(benchmark::State& state) {
  const auto frames = static_cast<std::size_t>(state.range(0));
  const fs::path path = FrameFilePath(frames);
  if (!EnsureFrameFile(frames, path)) {
    state.SkipWithError("could not write the frame set");
    return;
  }
  const std::size_t entities = tv::bench::TimeLoad(state, path);
  state.counters["entities"] = static_cast<double>(entities);
  state.counters["file_MB"] = static_cast<double>(fs::file_size(path)) / (1024.0 * 1024.0);
  state.counters["entities_per_second"] =
      benchmark::Counter(static_cast<double>(entities), benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(BM_LoadFrameSet)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond)->Iterations(1);

void BM_RecogniseFrameSet(benchmark::State& state) {
  using namespace tv;
  const auto frames = static_cast<std::size_t>(state.range(0));
  std::size_t entities = 0, found = 0, kept = 0;
  for (auto _ : state) {
    // Every scan meets a drawing just read, as a user's run does: nothing of the drawing or of a
    // previous scan's lists is warm in the caches or the allocator.
    state.PauseTiming();
    std::optional<cad::Database> db = LoadFrameSet(state, frames);
    if (!db) break;
    entities = ModelEntities(*db);
    const bench::RecognisedSheets sheets = bench::RecogniseModelSpace(state, std::move(*db), "frames.dxf");
    found = sheets.found;
    kept = sheets.kept;
  }
  state.counters["entities"] = static_cast<double>(entities);
  state.counters["sheets"] = static_cast<double>(found);
  state.counters["kept"] = static_cast<double>(kept);
  state.counters["entities_per_second"] =
      benchmark::Counter(static_cast<double>(entities), benchmark::Counter::kIsIterationInvariantRate);
  if (found != frames) state.SkipWithError("the frame set did not give one sheet per frame");
}
BENCHMARK(BM_RecogniseFrameSet)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace
