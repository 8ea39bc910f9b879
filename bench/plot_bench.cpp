// Plot speed: the sample builder's big plan (lines, polylines, Chinese text, inserts) onto one
// PDF page of A1, the whole plan in the window. Counters:
//   entities_per_second  model space entities plotted per CPU second
//   bytes                size of the PDF written
// Run with --benchmark_filter=PlotPdf.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <map>
#include <memory>

#include "cad/entity_geometry.h"
#include "examples/sample_drawing.h"
#include "render/plot_engine.h"

namespace {

namespace fs = std::filesystem;
using tv::cad::Database;

const Database& Plan(std::size_t entities) {
  static std::map<std::size_t, std::unique_ptr<Database>> plans;
  auto& slot = plans[entities];
  if (!slot) slot = std::make_unique<Database>(tv::samples::BuildBigDrawing(entities));
  return *slot;
}

void BM_PlotPdf(benchmark::State& state) {
  const auto entities = static_cast<std::size_t>(state.range(0));
  const Database& db = Plan(entities);
  const fs::path folder = fs::temp_directory_path() / "tarvex-bench";
  fs::create_directories(folder);
  tv::render::PlotRequest r;
  r.medium = {841, 594, 0, 0, 0, 0, false};
  r.format = tv::render::PlotFormat::Pdf;
  r.outputPath = (folder / "plot.pdf").string();
  // The whole plan: the extents, measured once outside the timing.
  tv::cad::ExtentsCache cache;
  tv::cad::Extents3d all;
  db.forEachEntity(*db.modelSpace(), [&](const tv::cad::Entity& e) {
    if (auto ext = cache.entityExtents(e, db)) all.add(*ext);
  });
  r.windowMin = all.min.to2d();
  r.windowMax = all.max.to2d();
  for (auto _ : state) {
    const auto result = tv::render::PlotWindow(db, r);
    if (!result.ok) state.SkipWithError(result.message.c_str());
  }
  state.counters["entities_per_second"] =
      benchmark::Counter(static_cast<double>(entities), benchmark::Counter::kIsIterationInvariantRate);
  std::error_code ec;
  state.counters["bytes"] = static_cast<double>(fs::file_size(r.outputPath, ec));
}
BENCHMARK(BM_PlotPdf)->Arg(20000)->Unit(benchmark::kMillisecond);

}  // namespace
