#include "cli/cli.h"
#include "console/heap_policy.h"

int main(int argc, char** argv) {
  tv::console::KeepHeapForBatch();
  return tv::cli::RunCli(argc, argv);
}
