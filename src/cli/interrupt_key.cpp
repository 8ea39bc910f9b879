#include "cli/interrupt_key.h"

#include <csignal>

#include "plot/interrupt_flag.h"

namespace tv::cli {

namespace {

struct sigaction previous {};

// Only marks the running loop, which looks before each sheet.
extern "C" void OnInterrupt(int signal) {
  if (plot::InterruptPlot()) return;
  sigaction(signal, &previous, nullptr);
  std::raise(signal);
}

}  // namespace

InterruptKey::InterruptKey() {
  struct sigaction action {};
  action.sa_handler = OnInterrupt;
  sigemptyset(&action.sa_mask);
  action.sa_flags = SA_RESTART;
  sigaction(SIGINT, &action, &previous);
}

InterruptKey::~InterruptKey() { sigaction(SIGINT, &previous, nullptr); }

}  // namespace tv::cli
