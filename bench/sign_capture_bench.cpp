// The cleaning of a traced signature: `letters` rings side by side, each an outer outline of 36
// segments traced twice and a counter of 24, merged, chained and made outlines with holes. All
// three steps are quadratic in the segments or loops; the counters say how many there were.
//   tvbench --benchmark_filter=SignOutlines
#include <benchmark/benchmark.h>

#include <cmath>

#include "host/null_editor.h"
#include "signing/sign_boundary.h"

namespace {

using namespace tv;

void AddRing(signing::SegmentList& segments, Point3d centre, double radius, int sides, int copies) {
  for (int copy = 0; copy < copies; ++copy)
    for (int i = 0; i < sides; ++i) {
      const double a = 2 * kPi * i / sides, b = 2 * kPi * (i + 1) / sides;
      segments.push_back({centre + Vector3d{radius * std::cos(a), radius * std::sin(a), 0},
                          centre + Vector3d{radius * std::cos(b), radius * std::sin(b), 0}});
    }
}

void BM_SignOutlines(benchmark::State& state) {
  host::NullEditor editor;
  host::SetEditor(&editor);
  const int letters = static_cast<int>(state.range(0));
  signing::SegmentList traced;
  for (int l = 0; l < letters; ++l) {
    AddRing(traced, {30.0 * l, 0}, 12, 36, 2);
    AddRing(traced, {30.0 * l, 0}, 5, 24, 1);
  }
  std::size_t shapes = 0;
  for (auto _ : state) {
    signing::SegmentList segments = traced, leftovers;
    signing::LoopList loops;
    signing::MergeCollinear(segments, signing::CaptureTol);
    signing::ChainLoops(segments, leftovers, loops, 0.00001);
    signing::TV_Sign sign;
    signing::BuildOutlines(loops, sign.shapes, {});
    shapes = sign.shapes.size();
  }
  host::SetEditor(nullptr);
  state.counters["segments"] = static_cast<double>(traced.size());
  state.counters["outlines"] = static_cast<double>(shapes);
  if (shapes != static_cast<std::size_t>(2 * letters)) state.SkipWithError("not every ring gave an outline and a hole");
}
BENCHMARK(BM_SignOutlines)->Arg(4)->Arg(16)->Unit(benchmark::kMillisecond);

}  // namespace
