// Batches that find their sheets through many small selections, on the sets of
// bench/sparse_frame_sets.h.
//
// BM_LoadBareFrames/N        reads the DXF file of N bare frames.
// BM_RecogniseBareFrames/N   the generic batch's recognition on it, as BM_RecogniseFrameSet runs it:
//                            every sheet takes the empty-sheet fence test.
// BM_RecogniseManyFrames/N   the same on N small frames with a line and a text each: the sheet
//                            count's own cost, which must grow no faster than the frames.
// BM_PlotBareFrames          the whole generic batch of the 100 bare frames to vector PDF, as
//                            BM_PlotFrameSet runs it.
// BM_PlotBareFramesDwf       the same to DWF (DWFx packages, text as Glyphs over embedded font
//                            subsets); meant to stay within 1.5 times the PDF.
// BM_PlotTitleFrames         the generic batch of 100 title-block frames (more text: the title
// BM_PlotTitleFramesDwf      block's and the sheet's) to vector PDF, and to DWF.
// BM_LoadTitleFrames/N       reads the DXF file of N title-block inserts.
// BM_ScanTitleFrames/N       the title-block batch's scan of it with every field read, as
//                            `tvplot titleblock` runs it with the sample library.
// One iteration each, the drawing read outside the timing of the batch; run each case in a process
// of its own:
//   for c in LoadBareFrames/100 RecogniseBareFrames/100 LoadBareFrames/1000 RecogniseBareFrames/1000
//            RecogniseManyFrames/2500 RecogniseManyFrames/10000
//            PlotBareFrames PlotBareFramesDwf PlotTitleFrames PlotTitleFramesDwf LoadTitleFrames/50 ScanTitleFrames/50 LoadTitleFrames/200 ScanTitleFrames/200
//            LoadTitleFrames/1000 ScanTitleFrames/1000; do tvbench --benchmark_filter="$c\$|$c/"; done
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>
#include <sstream>

#include "bench/batch_runs.h"
#include "bench/sparse_frame_sets.h"
#include "console/console_editor.h"
#include "console/session.h"
#include "examples/sample_library.h"
#include "host/module_entry.h"
#include "host/wrappers.h"
#include "plot/output_paths.h"
#include "plot/title_review.h"
#include "recognition/sheet_order.h"
#include "recognition/sheet_records.h"
#include "recognition/sheet_traversal.h"
#include "settings/config.h"
#include "settings/plot_setting.h"
#include "titleblock/tk_library.h"

namespace {

using namespace tv;
using bench::SparseSet;

void Load(benchmark::State& state, SparseSet set) {
  const auto frames = static_cast<std::size_t>(state.range(0));
  const bench::fs::path path = bench::SparseFilePath(set, frames);
  if (!bench::EnsureSparseFile(set, frames, path)) {
    state.SkipWithError("could not write the frame set");
    return;
  }
  const std::size_t entities = bench::TimeLoad(state, path);
  state.counters["entities"] = static_cast<double>(entities);
}

void BM_LoadBareFrames(benchmark::State& state) { Load(state, SparseSet::BareFrames); }
BENCHMARK(BM_LoadBareFrames)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond)->Iterations(1);

void BM_LoadTitleFrames(benchmark::State& state) { Load(state, SparseSet::TitleFrames); }
BENCHMARK(BM_LoadTitleFrames)->Arg(50)->Arg(200)->Arg(1000)->Unit(benchmark::kMillisecond)->Iterations(1);

void BM_RecogniseBareFrames(benchmark::State& state) {
  const auto frames = static_cast<std::size_t>(state.range(0));
  std::size_t found = 0, kept = 0;
  for (auto _ : state) {
    state.PauseTiming();
    std::optional<cad::Database> db = bench::LoadSparseSet(state, SparseSet::BareFrames, frames);
    if (!db) break;
    const bench::RecognisedSheets sheets = bench::RecogniseModelSpace(state, std::move(*db), "bare-frames.dxf");
    found = sheets.found;
    kept = sheets.kept;
  }
  state.counters["sheets"] = static_cast<double>(found);
  state.counters["kept"] = static_cast<double>(kept);
  if (kept != frames) state.SkipWithError("the set did not give one sheet per frame");
}
BENCHMARK(BM_RecogniseBareFrames)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond)->Iterations(1);

void BM_RecogniseManyFrames(benchmark::State& state) {
  const auto frames = static_cast<std::size_t>(state.range(0));
  std::size_t kept = 0;
  for (auto _ : state) {
    state.PauseTiming();
    std::optional<cad::Database> db = bench::LoadSparseSet(state, SparseSet::ManyFrames, frames);
    if (!db) break;
    kept = bench::RecogniseModelSpace(state, std::move(*db), "many-frames.dxf").kept;
  }
  state.counters["kept"] = static_cast<double>(kept);
  if (kept != frames) state.SkipWithError("the set did not give one sheet per frame");
}
BENCHMARK(BM_RecogniseManyFrames)->Arg(2500)->Arg(10000)->Unit(benchmark::kMillisecond)->Iterations(1);

// The generic batch of 100 frames of the set in one output format.
void PlotSparseSet(benchmark::State& state, SparseSet set, std::int32_t format, const char* folder) {
  constexpr std::size_t kFrames = 100;
  const bench::fs::path root = bench::fs::temp_directory_path() / "tarvex-bench";
  const bench::fs::path out = root / folder;
  // The benchmark's settings live beside its drawings, never in the user's data folder.
  setenv("XDG_DATA_HOME", (root / "data").c_str(), 1);
  std::size_t written = 0;
  for (auto _ : state) {
    state.PauseTiming();
    std::optional<cad::Database> db = bench::LoadSparseSet(state, set, kFrames);
    if (!db) break;
    written = bench::PlotGenericBatch(state, std::move(*db), root / (set == SparseSet::BareFrames ? "bare-frames.dxf" : "title-frames.dxf"),
                                      out, format);
  }
  state.counters["sheets"] = static_cast<double>(written);
  state.counters["sheets_per_second"] =
      benchmark::Counter(static_cast<double>(written), benchmark::Counter::kIsIterationInvariantRate);
  if (written != kFrames) state.SkipWithError("not every sheet of the set was plotted");
}

void BM_PlotBareFrames(benchmark::State& state) { PlotSparseSet(state, SparseSet::BareFrames, settings::kFormatPdf, "plot-bare"); }
BENCHMARK(BM_PlotBareFrames)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();

void BM_PlotBareFramesDwf(benchmark::State& state) {
  PlotSparseSet(state, SparseSet::BareFrames, settings::kFormatDwf, "plot-bare-dwf");
}
BENCHMARK(BM_PlotBareFramesDwf)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();

void BM_PlotTitleFrames(benchmark::State& state) { PlotSparseSet(state, SparseSet::TitleFrames, settings::kFormatPdf, "plot-title"); }
BENCHMARK(BM_PlotTitleFrames)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();

void BM_PlotTitleFramesDwf(benchmark::State& state) {
  PlotSparseSet(state, SparseSet::TitleFrames, settings::kFormatDwf, "plot-title-dwf");
}
BENCHMARK(BM_PlotTitleFramesDwf)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();

void BM_ScanTitleFrames(benchmark::State& state) {
  const auto frames = static_cast<std::size_t>(state.range(0));
  std::size_t rows = 0;
  bool fieldsRead = false;
  for (auto _ : state) {
    state.PauseTiming();
    std::optional<cad::Database> db = bench::LoadSparseSet(state, SparseSet::TitleFrames, frames);
    if (!db) break;
    std::ostringstream transcript;
    console::SessionOptions options;
    options.out = &transcript;
    auto session = std::make_unique<console::Session>(std::move(*db), "title-frames.dxf", options);
    host::OnLoad();
    titleblock::GlobalTkLibrary() = samples::BuildTitleBlockLibrary();
    session->editor().answers().pushFront({"", "1"});  // model space
    state.ResumeTiming();

    plot::Dlg_BPlot2* form = plot::RecogniseTitleBatch();

    state.PauseTiming();
    rows = form ? form->rows.size() : 0;
    fieldsRead = form && !form->rows.empty() && !form->rows.back().sheet->field_text[0].empty();
    host::OnUnload();
    session.reset();
    state.ResumeTiming();
  }
  state.counters["sheets"] = static_cast<double>(rows);
  if (rows != frames || !fieldsRead) state.SkipWithError("the set did not give one sheet with its fields per insert");
}
BENCHMARK(BM_ScanTitleFrames)->Arg(50)->Arg(200)->Arg(1000)->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace
