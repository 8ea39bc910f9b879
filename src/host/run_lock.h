#pragma once
// A lock that runs of this system in different processes of the user take on one file, for the
// files they share (the private plotter in the user's plotter folders). It is held while the
// object lives; a process that ends lets go of it, whatever way it ends.
#include <functional>
#include <optional>
#include <string>

namespace tv::host {

class RunLock {
 public:
  // Takes the lock of `path`, making the file when missing. While another process holds it,
  // `onWait` is called once and the call waits for it. nullopt when the file can't be opened or
  // locked: the caller goes on without the lock.
  static std::optional<RunLock> Acquire(const std::string& path, const std::function<void()>& onWait);

  RunLock(RunLock&& other) noexcept;
  RunLock& operator=(RunLock&& other) noexcept;
  RunLock(const RunLock&) = delete;
  RunLock& operator=(const RunLock&) = delete;
  ~RunLock();

  const std::string& path() const { return path_; }

 private:
  RunLock(int handle, std::string path) : handle_(handle), path_(std::move(path)) {}
  void release();

  int handle_ = -1;
  std::string path_;
};

}  // namespace tv::host
