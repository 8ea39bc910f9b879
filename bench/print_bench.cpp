// Sending a set to a printer against writing it as PDF.
// BM_SubmitBareFrames   the 100 bare frames of BM_PlotBareFrames plotted as PDF, as that benchmark
//                       times them, then sent to a local queue one job each, as `tvplot print`
//                       sends them: the time of printing the set. The queue is a cupsd of the
//                       benchmark's own (a private configuration and port) whose backend writes
//                       each job as a file; the wait for those files is not timed. The counter
//                       submit_ms is the sending alone. Compare with the PDF time of the same set:
//   tvbench --benchmark_filter='BM_PlotBareFrames$'; tvbench --benchmark_filter='BM_SubmitBareFrames$'
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "bench/batch_runs.h"
#include "bench/sparse_frame_sets.h"
#include "host/print_queues.h"
#include "tests/support/private_cupsd.h"

namespace {

using namespace tv;
namespace fs = std::filesystem;

void BM_SubmitBareFrames(benchmark::State& state) {
  constexpr std::size_t kFrames = 100;
  std::string why;
  test_support::PrivateCupsd* cupsd = test_support::PrivateCupsd::Get(why);
  if (!cupsd) {
    state.SkipWithError(("no private print server: " + why).c_str());
    return;
  }
  setenv("CUPS_SERVER", cupsd->server().c_str(), 1);
  const fs::path root = fs::temp_directory_path() / "tarvex-bench";
  const fs::path out = root / "print-bare";
  setenv("XDG_DATA_HOME", (root / "data").c_str(), 1);
  std::size_t sent = 0;
  double submitMs = 0;
  for (auto _ : state) {
    state.PauseTiming();
    std::optional<cad::Database> db = bench::LoadSparseSet(state, bench::SparseSet::BareFrames, kFrames);
    if (!db) break;
    bench::PlotGenericBatch(state, std::move(*db), root / "bare-frames.dxf", out, 0);
    std::vector<fs::path> sheets;
    for (const fs::directory_entry& e : fs::directory_iterator(out))
      if (e.path().extension() == ".pdf") sheets.push_back(e.path());
    std::sort(sheets.begin(), sheets.end());
    cupsd->clearOutputs();
    const std::vector<host::PrintMedium> media = host::QueueMedia(test_support::kPaperQueue);
    state.ResumeTiming();

    const auto started = std::chrono::steady_clock::now();
    host::PrintServer server;
    for (const fs::path& sheet : sheets) {
      host::PrintDocument doc;
      doc.path = sheet.string();
      doc.title = sheet.stem().string();
      if (const host::PrintMedium* m = host::MatchMedium(media, 841, 594)) doc.media = m->name;
      doc.landscape = true;
      if (server.submit(test_support::kPaperQueue, doc).ok) ++sent;
    }

    submitMs += std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - started).count();
    state.PauseTiming();
    cupsd->waitForFiles(test_support::kPaperQueue, sheets.size(), 60);
    state.ResumeTiming();
  }
  state.counters["sent"] = static_cast<double>(sent);
  state.counters["submit_ms"] = benchmark::Counter(submitMs, benchmark::Counter::kAvgIterations);
  if (sent != kFrames) state.SkipWithError("not every sheet of the set was sent");
}
BENCHMARK(BM_SubmitBareFrames)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();

}  // namespace
