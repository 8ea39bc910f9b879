#pragma once
// The interrupt key ("中 断 打 印") while sheets plot. The key arrives as a signal, so its handler
// only marks lock-free flags; the loops move the mark into their form's cancel flag before each
// sheet.

namespace tv::plot {

// From the signal handler: asks the running loop to stop before its next sheet. False when no
// loop runs, so the key keeps its usual meaning.
bool InterruptPlot();

// Moves an interrupt into `cancel`; whether the run was asked to stop.
bool CancelAsked(bool& cancel);

// Marks a loop as running for its lifetime.
class PlotRunScope {
 public:
  PlotRunScope();
  ~PlotRunScope();
  PlotRunScope(const PlotRunScope&) = delete;
  PlotRunScope& operator=(const PlotRunScope&) = delete;
};

}  // namespace tv::plot
