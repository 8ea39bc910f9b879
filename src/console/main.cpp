#include "console/cli.h"
#include "console/heap_policy.h"

int main(int argc, char** argv) {
  tv::console::KeepHeapForBatch();
  return tv::console::RunCli(argc, argv);
}
