#include "cli/cli.h"
#include "cli/interrupt_key.h"
#include "console/heap_policy.h"

int main(int argc, char** argv) {
  tv::console::KeepHeapForBatch();
  const tv::cli::InterruptKey interruptKey;
  return tv::cli::RunCli(argc, argv);
}
