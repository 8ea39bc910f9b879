// The generic batch on drawings of other programs (TV_CORPUS_DIR): text-heavy sheets whose fonts
// and layout our own generator doesn't make, to PDF and to DWF.
//   BM_PlotCorpus/<file>/pdf, BM_PlotCorpus/<file>/dwf   one batch over the drawing's sheets
// Cases whose file is missing are not registered. Run with --benchmark_filter=PlotCorpus.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

#include "bench/batch_runs.h"
#include "cad/dxf_reader.h"

namespace {

namespace fs = std::filesystem;
using namespace tv;

fs::path Corpus() {
#ifdef TV_CORPUS_DIR
  return fs::path(TV_CORPUS_DIR);
#else
  return {};
#endif
}

void PlotCorpus(benchmark::State& state, const fs::path& drawing, std::int32_t format) {
  const fs::path root = fs::temp_directory_path() / "tarvex-bench";
  // The benchmark's settings live beside its output, never in the user's data folder; their
  // default scale suits these drawings, which are drawn in millimetres at 1:100.
  setenv("XDG_DATA_HOME", (root / "data").c_str(), 1);
  std::size_t written = 0;
  for (auto _ : state) {
    state.PauseTiming();
    cad::DxfReadResult r = cad::ReadDxf(drawing.string());
    if (!r.ok()) {
      state.SkipWithError(r.error.c_str());
      break;
    }
    written = bench::PlotGenericBatch(state, std::move(*r.db), drawing, root / "corpus-plot", format);
  }
  state.counters["sheets"] = static_cast<double>(written);
  if (written == 0) state.SkipWithError("no sheet was plotted");
}

const bool kRegistered = [] {
  for (const char* file : {"ezdxf/examples_dxf/text.dxf", "ezdxf/examples_dxf/text_fonts.dxf", "acadsharp/sample_AC1032_ascii.dxf"}) {
    const fs::path path = Corpus() / file;
    std::error_code ec;
    if (!fs::exists(path, ec)) continue;
    for (const auto& [name, format] : {std::pair{"pdf", settings::kFormatPdf}, std::pair{"dwf", settings::kFormatDwf}})
      benchmark::RegisterBenchmark(("BM_PlotCorpus/" + path.filename().string() + "/" + name).c_str(), PlotCorpus, path, format)
          ->Unit(benchmark::kMillisecond)
          ->UseRealTime()
          ->Iterations(3);
  }
  return true;
}();

}  // namespace
