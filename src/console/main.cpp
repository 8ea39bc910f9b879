#include "console/cli.h"
#include "console/memory_tuning.h"

int main(int argc, char** argv) {
  tv::console::KeepFreedMemory();
  return tv::console::RunCli(argc, argv);
}
