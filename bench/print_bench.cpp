// Printing a set against writing it as PDF, both as users run them.
// BM_CliPdfBareFrames    `tvplot plot` of the 100 bare frames of BM_PlotBareFrames to PDF files.
// BM_CliPrintBareFrames  `tvplot print` of the same set to a local queue through the paper batch,
//                        one job per sheet, sent while the next sheets plot. The queue is a cupsd of the benchmark's own (a
//                        private configuration and port) whose backend writes each job as a file;
//                        the wait for those files is not timed. Printing should take at most a
//                        tenth longer than the PDFs; run them in turn:
//   for c in CliPdfBareFrames CliPrintBareFrames; do tvbench --benchmark_filter="BM_$c/"; done
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "bench/sparse_frame_sets.h"
#include "cli/cli.h"
#include "tests/support/private_cupsd.h"

namespace {

using namespace tv;
namespace fs = std::filesystem;

constexpr std::size_t kFrames = 100;

// `tvplot args…` in this process, its output to nowhere; the exit code.
int Tvplot(std::vector<std::string> args) {
  args.insert(args.begin(), "tvplot");
  std::vector<char*> argv;
  for (std::string& a : args) argv.push_back(a.data());
  std::fflush(stdout);
  const int kept = ::dup(STDOUT_FILENO);
  const int null = ::open("/dev/null", O_WRONLY);
  ::dup2(null, STDOUT_FILENO);
  const int code = cli::RunCli(static_cast<int>(argv.size()), argv.data());
  std::fflush(stdout);
  ::dup2(kept, STDOUT_FILENO);
  ::close(kept);
  ::close(null);
  return code;
}

// The set's file, written once; empty when it can't be.
std::string SetFile(benchmark::State& state) {
  const fs::path root = fs::temp_directory_path() / "tarvex-bench";
  setenv("XDG_DATA_HOME", (root / "data").c_str(), 1);
  const fs::path path = bench::SparseFilePath(bench::SparseSet::BareFrames, kFrames);
  if (!bench::EnsureSparseFile(bench::SparseSet::BareFrames, kFrames, path)) {
    state.SkipWithError("could not write the frame set");
    return {};
  }
  return path.string();
}

void BM_CliPdfBareFrames(benchmark::State& state) {
  const std::string drawing = SetFile(state);
  if (drawing.empty()) return;
  const fs::path out = fs::temp_directory_path() / "tarvex-bench" / "cli-pdf-bare";
  for (auto _ : state) {
    state.PauseTiming();
    std::error_code ec;
    fs::remove_all(out, ec);
    state.ResumeTiming();
    if (Tvplot({"plot", drawing, "--format", "pdf", "--out", out.string()}) != 0) state.SkipWithError("tvplot plot failed");
  }
}
BENCHMARK(BM_CliPdfBareFrames)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();

void BM_CliPrintBareFrames(benchmark::State& state) {
  const std::string drawing = SetFile(state);
  if (drawing.empty()) return;
  std::string why;
  test_support::PrivateCupsd* cupsd = test_support::PrivateCupsd::Get(why);
  if (!cupsd) {
    state.SkipWithError(("no private print server: " + why).c_str());
    return;
  }
  setenv("CUPS_SERVER", cupsd->server().c_str(), 1);
  bool printed = true;
  for (auto _ : state) {
    state.PauseTiming();
    cupsd->clearOutputs();
    state.ResumeTiming();
    printed = Tvplot({"print", drawing, "--printer", test_support::kPaperQueue}) == 0;
    state.PauseTiming();
    printed = printed && cupsd->waitForFiles(test_support::kPaperQueue, kFrames, 60);
    state.ResumeTiming();
  }
  if (!printed) state.SkipWithError("not every sheet of the set was printed");
}
BENCHMARK(BM_CliPrintBareFrames)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();

}  // namespace
