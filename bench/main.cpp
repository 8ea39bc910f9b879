#include <benchmark/benchmark.h>

#include "console/memory_tuning.h"

// The benchmarks run with the allocator settings tvplot runs with.
int main(int argc, char** argv) {
  tv::console::KeepFreedMemory();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
