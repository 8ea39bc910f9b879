#include <benchmark/benchmark.h>

#include "console/heap_policy.h"

// The cases run in a process set up as tvplot's own.
int main(int argc, char** argv) {
  tv::console::KeepHeapForBatch();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
