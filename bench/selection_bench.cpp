// Fence and box selection speed on the sample builder's big plan (built once per size).
//
// BM_FenceZigzag: a 182-point zigzag fence from the plan's left edge to its right edge, each
// segment running from near the bottom to near the top. Counters:
//   entities_per_second  model space entities examined per CPU second
//   selected             entities the fence crossed
// BM_CrossingBox / BM_WindowBox: a box over one sheet-sized tile of the plan.
// Run with --benchmark_filter=Fence or --benchmark_filter=Box.
#include <benchmark/benchmark.h>

#include <map>
#include <memory>
#include <vector>

#include "cad/selection_geometry.h"
#include "examples/sample_drawing.h"

namespace {

using tv::cad::Database;
using tv::cad::Point2d;

const Database& BigPlan(std::size_t entities) {
  static std::map<std::size_t, std::unique_ptr<Database>> plans;
  auto& slot = plans[entities];
  if (!slot) slot = std::make_unique<Database>(tv::samples::BuildBigDrawing(entities));
  return *slot;
}

// The plan's tiles: 90000 x 65000 each, twenty to a row, 2000 entities each.
Point2d PlanSize(std::size_t entities) {
  const std::size_t tiles = (entities + 1999) / 2000;
  return {static_cast<double>(std::min<std::size_t>(tiles, 20)) * 90000.0, static_cast<double>((tiles + 19) / 20) * 65000.0};
}

void BM_FenceZigzag(benchmark::State& state) {
  const auto entities = static_cast<std::size_t>(state.range(0));
  const Database& db = BigPlan(entities);
  const Point2d size = PlanSize(entities);
  constexpr int kPoints = 182;
  std::vector<Point2d> fence;
  for (int i = 0; i < kPoints; ++i)
    fence.push_back({size.x * i / (kPoints - 1) + 0.37, i % 2 ? size.y - 500.29 : 500.29});
  std::size_t selected = 0;
  for (auto _ : state) {
    const auto ids = tv::cad::SelectByFence(db, *db.modelSpace(), fence, {});
    selected = ids.size();
    benchmark::DoNotOptimize(ids.data());
  }
  state.counters["selected"] = static_cast<double>(selected);
  state.counters["entities_per_second"] = benchmark::Counter(static_cast<double>(entities), benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(BM_FenceZigzag)->Arg(100'000)->Arg(200'000)->Unit(benchmark::kMillisecond);

void BoxOverOneTile(benchmark::State& state, bool crossing) {
  const Database& db = BigPlan(100'000);
  std::size_t selected = 0;
  for (auto _ : state) {
    const auto ids = tv::cad::SelectByBox(db, *db.modelSpace(), {90000, 65000}, {180000, 130000}, crossing, {});
    selected = ids.size();
    benchmark::DoNotOptimize(ids.data());
  }
  state.counters["selected"] = static_cast<double>(selected);
  state.counters["entities_per_second"] = benchmark::Counter(100'000.0, benchmark::Counter::kIsIterationInvariantRate);
}
void BM_CrossingBox(benchmark::State& state) { BoxOverOneTile(state, true); }
void BM_WindowBox(benchmark::State& state) { BoxOverOneTile(state, false); }
BENCHMARK(BM_CrossingBox)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_WindowBox)->Unit(benchmark::kMillisecond);

}  // namespace
