#include "plot/interrupt_flag.h"

#include <atomic>

namespace tv::plot {

namespace {

std::atomic<bool> running{false};
std::atomic<bool> pending{false};
static_assert(std::atomic<bool>::is_always_lock_free, "the signal handler needs a lock-free flag");

}  // namespace

bool InterruptPlot() {
  if (!running.load()) return false;
  pending.store(true);
  return true;
}

bool CancelAsked(bool& cancel) {
  if (pending.exchange(false)) cancel = true;
  return cancel;
}

PlotRunScope::PlotRunScope() {
  pending.store(false);
  running.store(true);
}

PlotRunScope::~PlotRunScope() {
  running.store(false);
  pending.store(false);
}

}  // namespace tv::plot
