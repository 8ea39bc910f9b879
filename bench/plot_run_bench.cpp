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
#include <memory>
#include <sstream>
#include <string>

#include "bench/frame_set.h"
#include "console/console_editor.h"
#include "console/session.h"
#include "host/module_entry.h"
#include "plot/output_paths.h"
#include "settings/config.h"
#include "settings/plot_setting.h"

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
  std::size_t written = 0;
  for (auto _ : state) {
    state.PauseTiming();
    std::error_code ec;
    fs::remove_all(out, ec);
    fs::create_directories(out, ec);
    std::optional<cad::Database> db = bench::LoadFrameSet(state, kFrames);
    if (!db) break;
    std::ostringstream transcript;
    console::SessionOptions options;
    options.out = &transcript;
    options.yesNoAnswer = true;
    auto session = std::make_unique<console::Session>(std::move(*db), (root / "frames.dxf").string(), options);
    host::OnLoad();
    settings::GlobalConfig().open_folder_after = 0;
    settings::PlotSettingRec rec = settings::CurrentPlotSetting();
    rec.format = format;
    rec.path_mode = plot::kPathCustom;
    rec.custom_path = out.string();
    settings::SaveDwgPlotSetting(rec);
    session->editor().answers().pushFront({"", "1", "", "^C"});
    state.ResumeTiming();

    session->runCommandLine("TV_BatchPlot_2");

    state.PauseTiming();
    written = 0;
    for (const auto& p : session->editor().plots()) written += p.ok ? 1 : 0;
    host::OnUnload();
    session.reset();
    state.ResumeTiming();
  }
  state.counters["sheets"] = static_cast<double>(written);
  state.counters["sheets_per_second"] =
      benchmark::Counter(static_cast<double>(written), benchmark::Counter::kIsIterationInvariantRate);
  state.counters["peak_MB"] = PeakMegabytes();
  if (written != kFrames) state.SkipWithError("not every sheet of the frame set was plotted");
}
BENCHMARK(BM_PlotFrameSet)->Arg(0)->Arg(3)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();

}  // namespace
