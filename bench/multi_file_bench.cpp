// Memory of a run over many drawings: `tvplot plot` over 20 copies of a 10-frame drawing against
// the same over one copy, each run in a child process of its own so that its peak resident size
// is its own. A run that lets each drawing go before the next stays near the one-drawing figure.
//
// BM_MultiFilePeakRss/1   one drawing      BM_MultiFilePeakRss/20   twenty drawings
// Counters: peak_rss_mb of the child, and for 20 rss_ratio against the one-drawing run:
//   tvbench --benchmark_filter=MultiFilePeakRss
#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "bench/frame_set.h"
#include "cli/command_line.h"
#include "cli/plot_command.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kFrames = 10;

double& OneDrawingRssMb() {
  static double mb = 0;
  return mb;
}

// Runs `tvplot plot words…` in a child; its peak resident size in MB, or a negative value.
double ChildPeakRssMb(const std::vector<std::string>& words) {
  int fds[2];
  if (::pipe(fds) != 0) return -1;
  const pid_t pid = ::fork();
  if (pid == 0) {
    ::close(fds[0]);
    std::ostringstream out, err;
    tv::cli::CliStreams io{out, err};
    tv::cli::RunSubcommand(tv::cli::PlotSubcommand(), words, io);
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    const long kb = usage.ru_maxrss;
    [[maybe_unused]] const ssize_t n = ::write(fds[1], &kb, sizeof kb);
    ::_exit(0);
  }
  ::close(fds[1]);
  long kb = -1;
  if (pid < 0 || ::read(fds[0], &kb, sizeof kb) != static_cast<ssize_t>(sizeof kb)) kb = -1;
  ::close(fds[0]);
  if (pid > 0) ::waitpid(pid, nullptr, 0);
  return kb < 0 ? -1.0 : static_cast<double>(kb) / 1024.0;
}

void BM_MultiFilePeakRss(benchmark::State& state) {
  const std::size_t count = static_cast<std::size_t>(state.range(0));
  const fs::path root = fs::temp_directory_path() / "tarvex-bench";
  const fs::path source = tv::bench::FrameFilePath(kFrames);
  if (!tv::bench::EnsureFrameFile(kFrames, source)) {
    state.SkipWithError("could not write the frame set");
    return;
  }
  setenv("XDG_DATA_HOME", (root / "data").c_str(), 1);
  const fs::path folder = root / ("multi-" + std::to_string(count));
  const fs::path out = root / ("multi-out-" + std::to_string(count));
  std::error_code ec;
  fs::create_directories(folder, ec);
  for (std::size_t i = 0; i < count; ++i) {
    const fs::path copy = folder / ("d" + std::to_string(100 + i) + ".dxf");
    if (!fs::exists(copy, ec)) fs::copy_file(source, copy, ec);
  }
  double mb = 0;
  for (auto _ : state) {
    fs::remove_all(out, ec);
    mb = ChildPeakRssMb({folder.string(), "--out", out.string()});
    if (mb < 0) state.SkipWithError("the run did not report");
  }
  state.counters["peak_rss_mb"] = mb;
  if (count == 1) OneDrawingRssMb() = mb;
  else if (OneDrawingRssMb() > 0) state.counters["rss_ratio"] = mb / OneDrawingRssMb();
  fs::remove_all(out, ec);
}
BENCHMARK(BM_MultiFilePeakRss)->Arg(1)->Arg(20)->Iterations(1)->Unit(benchmark::kSecond);

}  // namespace
