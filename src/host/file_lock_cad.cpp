#include "host/file_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <map>
#include <mutex>
#include <thread>

namespace tv::host {

namespace {

// The locks this process holds, by lock file: the open lock file and how many holders share it.
struct HeldLock {
  int fd = -1;
  int holders = 0;
};
struct HeldLocks {
  std::mutex mutex;
  pid_t owner = 0;
  std::map<std::string, HeldLock> locks;
};

// The caller holds `mutex`. A child made by fork inherits the parent's list but not its turn: it
// starts with none of its own (the inherited descriptors stay open, so the parent keeps its locks).
std::map<std::string, HeldLock>& LocksOfThisProcess(HeldLocks& held) {
  if (held.owner != ::getpid()) {
    held.owner = ::getpid();
    held.locks.clear();
  }
  return held.locks;
}

HeldLocks& Held() {
  static HeldLocks held;
  return held;
}

// The lock file may have been removed and made anew by its last holder between our open and our
// lock: only a lock on the file that still stands under the name counts.
bool StillNamed(int fd, const std::string& path) {
  struct stat mine {}, named {};
  return ::fstat(fd, &mine) == 0 && ::stat(path.c_str(), &named) == 0 && mine.st_dev == named.st_dev &&
         mine.st_ino == named.st_ino;
}

}  // namespace

std::string LockedFilePath(const std::string& path) {
  std::error_code ec;
  std::filesystem::path real = std::filesystem::weakly_canonical(std::filesystem::absolute(path, ec), ec);
  return ec ? path : real.string();
}

FileLock::FileLock(const std::string& path, std::chrono::milliseconds patience)
    : lockPath_(LockedFilePath(path) + ".lock") {
  {
    HeldLocks& held = Held();
    std::lock_guard<std::mutex> guard(held.mutex);
    auto& locks = LocksOfThisProcess(held);
    if (auto it = locks.find(lockPath_); it != locks.end()) {
      ++it->second.holders;
      held_ = true;
      return;
    }
  }
  const auto deadline = std::chrono::steady_clock::now() + patience;
  auto pause = std::chrono::milliseconds(1);
  int handle = -1;
  while (handle < 0) {
    const int fd = ::open(lockPath_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0) return;  // the folder takes no file: no update can be made there either
    for (;;) {
      if (::flock(fd, LOCK_EX | LOCK_NB) == 0) {
        if (StillNamed(fd, lockPath_)) handle = fd;
        else ::close(fd);
        break;
      }
      if ((errno != EWOULDBLOCK && errno != EINTR) || std::chrono::steady_clock::now() >= deadline) {
        ::close(fd);
        return;
      }
      std::this_thread::sleep_for(pause);
      pause = std::min(pause * 2, std::chrono::milliseconds(20));
    }
  }
  HeldLocks& held = Held();
  std::lock_guard<std::mutex> guard(held.mutex);
  LocksOfThisProcess(held)[lockPath_] = HeldLock{handle, 1};
  held_ = true;
}

FileLock::~FileLock() {
  if (!held_) return;
  HeldLocks& held = Held();
  std::lock_guard<std::mutex> guard(held.mutex);
  auto& locks = LocksOfThisProcess(held);
  auto it = locks.find(lockPath_);
  if (it == locks.end() || --it->second.holders > 0) return;
  // Removed while still locked, so that no folder keeps lock files; a waiter that then locks the
  // removed file sees that it is no longer named and tries the new one.
  ::unlink(lockPath_.c_str());
  ::close(it->second.fd);
  locks.erase(it);
}

}  // namespace tv::host
