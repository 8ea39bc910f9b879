#pragma once
// A print server of the tests' own: Debian's cupsd with a private configuration folder, listening
// on a private port of 127.0.0.1, started once per test process on first use and stopped when the
// process's tests end (or the program ends). The machine's own CUPS configuration and default printer are never read
// or written. Its queues write every job as a file of its own ("job-N.pdf") into a folder per
// queue; their PPD offers A4 to A0 and passes PDF through untouched.
#include <filesystem>
#include <string>

namespace tv::test_support {

// The queues of the private server.
inline constexpr const char* kPaperQueue = "tv_paper";        // the default, idle and accepting
inline constexpr const char* kRefusingQueue = "tv_refusing";  // rejects jobs
inline constexpr const char* kPausedQueue = "tv_paused";      // stopped: holds jobs
inline constexpr const char* kFullQueue = "tv_full";          // a quota of 1 KB: takes one job, then refuses

class PrivateCupsd {
 public:
  // The server, started at the first call; null when cupsd can't start here, with the reason in
  // `why` (for GTEST_SKIP).
  static PrivateCupsd* Get(std::string& why);

  // "127.0.0.1:PORT", for CUPS_SERVER.
  const std::string& server() const { return server_; }
  // Where a queue's jobs land.
  std::filesystem::path outputOf(const std::string& queue) const { return root_ / "out" / queue; }
  // Empties the output folders of every queue.
  void clearOutputs() const;
  // Waits (at most `seconds`) until `count` finished files are in the queue's folder; true when they are.
  bool waitForFiles(const std::string& queue, std::size_t count, double seconds) const;

  void stop();
  // Stops the server Get started, if any; the tests' environment calls it when they end.
  static void StopShared();
  ~PrivateCupsd();

 private:
  PrivateCupsd() = default;
  bool start(std::string& why);

  std::filesystem::path root_;
  std::string server_;
  int pid_ = -1;
};

}  // namespace tv::test_support
