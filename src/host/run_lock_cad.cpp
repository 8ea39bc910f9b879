// Locks between processes on this platform: flock on a file that stays in place, so that no
// process ever removes a lock file another is waiting on.
#include "host/run_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace tv::host {

std::optional<RunLock> RunLock::Acquire(const std::string& path, const std::function<void()>& onWait) {
  const int handle = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
  if (handle < 0) return std::nullopt;
  if (::flock(handle, LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK) {
      ::close(handle);
      return std::nullopt;
    }
    if (onWait) onWait();
    int rc = 0;
    while ((rc = ::flock(handle, LOCK_EX)) != 0 && errno == EINTR) {
    }
    if (rc != 0) {
      ::close(handle);
      return std::nullopt;
    }
  }
  return RunLock(handle, path);
}

RunLock::RunLock(RunLock&& other) noexcept
    : handle_(std::exchange(other.handle_, -1)), path_(std::move(other.path_)) {}

RunLock& RunLock::operator=(RunLock&& other) noexcept {
  if (this != &other) {
    release();
    handle_ = std::exchange(other.handle_, -1);
    path_ = std::move(other.path_);
  }
  return *this;
}

RunLock::~RunLock() { release(); }

void RunLock::release() {
  if (handle_ < 0) return;
  ::flock(handle_, LOCK_UN);
  ::close(handle_);
  handle_ = -1;
}

}  // namespace tv::host
