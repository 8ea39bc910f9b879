#pragma once
// Runs a helper program under bounds, for the DWG converter: no shell, its own process group,
// standard input closed, a wall-clock limit and a resident-memory watchdog that end the whole
// group, and standard error kept up to a size.
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tv::cad {

struct ProcessLimits {
  std::chrono::milliseconds time{60'000};
  std::uint64_t residentBytes = std::uint64_t{1} << 30;  // VmRSS of the program
  std::size_t stderrBytes = 16 * 1024;                    // kept; the rest is read and dropped
};

struct ProcessOutcome {
  bool started = false;        // false: the program could not be started (errno in `startError`)
  int startError = 0;
  int exitCode = -1;           // set when the program exited by itself
  int signal = 0;              // set when a signal ended it (ours included)
  bool timedOut = false;       // ended by us: the time limit
  bool memoryExceeded = false; // ended by us: the memory limit
  std::uint64_t peakResident = 0;  // the largest VmRSS seen, in bytes
  std::string stderrText;
  bool ok() const { return started && exitCode == 0; }
};

// `args[0]` is the program's path; it is not looked up on PATH.
ProcessOutcome RunBounded(const std::vector<std::string>& args, const ProcessLimits& limits);

}  // namespace tv::cad
