#pragma once
// Several runs of the program may update one of the user's files at once (two imports, an import
// beside a plot run). Each update holds the file's lock from reading it to replacing it, so that
// the runs take turns and none undoes another's work.
#include <chrono>
#include <string>

namespace tv::host {

// An advisory lock on `path`, kept on a lock file beside it ("<name>.lock", removed again when the
// lock is let go). Within one process a second lock of a path already held is a nested one and
// costs nothing, so an update may call writers that lock the same file themselves.
class FileLock {
 public:
  static constexpr std::chrono::milliseconds kDefaultPatience{20000};

  // Waits at most `patience` for the lock; `held()` says whether it was had. A run that keeps a
  // lock longer than that (stopped in a debugger, say) makes the others fail, never hang.
  explicit FileLock(const std::string& path, std::chrono::milliseconds patience = kDefaultPatience);
  ~FileLock();
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

  bool held() const { return held_; }

 private:
  std::string lockPath_;
  bool held_ = false;
};

// The path a lock of `path` is kept on: the real file behind links, so that every name of one file
// shares one lock.
std::string LockedFilePath(const std::string& path);

}  // namespace tv::host
