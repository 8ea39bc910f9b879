// Opening a DWG against opening the DXF of the same drawing, on the corpus (TV_CORPUS_DIR,
// acadsharp/sample_*): BM_OpenDwg/<version> includes the converter's start-up (node, the
// WebAssembly module), LibreDWG's read and DXF write, the bridge's repairs and our DXF read;
// BM_OpenDxf/<version> reads the corpus DXF of that version. Wall time, since the work is in a
// child process; converter_cpu_s is the converter's own CPU time per open. Cases whose file is
// missing are not registered.
// Run with --benchmark_filter=Open.
#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <filesystem>
#include <string>

#include "cad/drawing_file.h"

namespace {

namespace fs = std::filesystem;

fs::path Corpus() {
#ifdef TV_CORPUS_DIR
  return fs::path(TV_CORPUS_DIR) / "acadsharp";
#else
  return {};
#endif
}

double ChildCpuSeconds() {
  rusage u{};
  getrusage(RUSAGE_CHILDREN, &u);
  return static_cast<double>(u.ru_utime.tv_sec + u.ru_stime.tv_sec) + 1e-6 * static_cast<double>(u.ru_utime.tv_usec + u.ru_stime.tv_usec);
}

void Open(benchmark::State& state, const std::string& path) {
  const double childCpu = ChildCpuSeconds();
  for (auto _ : state) {
    tv::cad::DxfReadResult r = tv::cad::ReadDrawing(path);
    if (!r.ok()) {
      state.SkipWithError(r.error.c_str());
      break;
    }
    benchmark::DoNotOptimize(r);
  }
  // The converter's CPU time (user and system), which the CPU column leaves out.
  state.counters["converter_cpu_s"] = (ChildCpuSeconds() - childCpu) / static_cast<double>(state.iterations());
  std::error_code ec;
  state.counters["file_MB"] = static_cast<double>(fs::file_size(path, ec)) / 1e6;
}

const bool kRegistered = [] {
  for (const char* version : {"AC1014", "AC1015", "AC1018", "AC1021", "AC1024", "AC1027", "AC1032"}) {
    const fs::path dwg = Corpus() / ("sample_" + std::string(version) + ".dwg");
    const fs::path dxf = Corpus() / ("sample_" + std::string(version) + "_ascii.dxf");
    std::error_code ec;
    if (fs::exists(dwg, ec))
      benchmark::RegisterBenchmark(("BM_OpenDwg/" + std::string(version)).c_str(), Open, dwg.string())
          ->Unit(benchmark::kMillisecond)
          ->UseRealTime()
          ->Iterations(3);
    if (fs::exists(dxf, ec))
      benchmark::RegisterBenchmark(("BM_OpenDxf/" + std::string(version)).c_str(), Open, dxf.string())
          ->Unit(benchmark::kMillisecond)
          ->UseRealTime()
          ->Iterations(10);
  }
  return true;
}();

}  // namespace
