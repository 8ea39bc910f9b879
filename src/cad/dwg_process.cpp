#include "cad/dwg_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>

extern char** environ;

namespace tv::cad {

namespace {

// VmRSS of a process in bytes, 0 when it cannot be read (the process is gone).
std::uint64_t ResidentBytes(pid_t pid) {
  std::ifstream status("/proc/" + std::to_string(pid) + "/status");
  std::string line;
  while (std::getline(status, line))
    if (line.rfind("VmRSS:", 0) == 0) return std::strtoull(line.c_str() + 6, nullptr, 10) * 1024;
  return 0;
}

struct Pipe {
  int fd[2] = {-1, -1};
  Pipe() {
    if (::pipe2(fd, O_CLOEXEC) != 0) fd[0] = fd[1] = -1;
  }
  ~Pipe() {
    for (int f : fd)
      if (f >= 0) ::close(f);
  }
  void closeEnd(int i) {
    if (fd[i] >= 0) ::close(fd[i]);
    fd[i] = -1;
  }
};

// Reads what is there without blocking, at most 256 KB a call so that a program writing without
// end cannot keep the watchdog from looking; keeps up to `cap` bytes.
void Drain(int fd, std::string& kept, std::size_t cap, bool& open) {
  char buf[4096];
  for (int reads = 0; reads < 64; ++reads) {
    ssize_t n = ::read(fd, buf, sizeof buf);
    if (n > 0) {
      if (kept.size() < cap) kept.append(buf, std::min<std::size_t>(static_cast<std::size_t>(n), cap - kept.size()));
      continue;
    }
    if (n == 0) open = false;
    if (n < 0 && errno == EINTR) continue;
    return;
  }
}

}  // namespace

ProcessOutcome RunBounded(const std::vector<std::string>& args, const ProcessLimits& limits) {
  ProcessOutcome out;
  if (args.empty()) return out;
  std::vector<char*> argv;
  for (const auto& a : args) argv.push_back(const_cast<char*>(a.c_str()));
  argv.push_back(nullptr);

  Pipe err;
  if (err.fd[0] < 0) {
    out.startError = errno;
    return out;
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, err.fd[1], STDERR_FILENO);
  posix_spawnattr_t attr;
  posix_spawnattr_init(&attr);
  // A group of its own, so that the limits end whatever the program started too.
  posix_spawnattr_setpgroup(&attr, 0);
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_setsigmask(&attr, &none);
  posix_spawnattr_setflags(&attr, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK);
  pid_t pid = 0;
  const int rc = posix_spawn(&pid, argv[0], &actions, &attr, argv.data(), environ);
  posix_spawnattr_destroy(&attr);
  posix_spawn_file_actions_destroy(&actions);
  err.closeEnd(1);
  if (rc != 0) {
    out.startError = rc;
    return out;
  }
  out.started = true;
  ::fcntl(err.fd[0], F_SETFL, O_NONBLOCK);

  using Clock = std::chrono::steady_clock;
  const auto deadline = Clock::now() + limits.time;
  bool open = true;
  siginfo_t info{};
  for (;;) {
    // Looked at without reaping, so the group id stays the program's until the group is ended.
    info.si_pid = 0;
    if (::waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid == pid) break;
    const std::uint64_t rss = ResidentBytes(pid);
    out.peakResident = std::max(out.peakResident, rss);
    if (rss > limits.residentBytes) out.memoryExceeded = true;
    else if (Clock::now() >= deadline) out.timedOut = true;
    if (out.memoryExceeded || out.timedOut) {
      ::kill(-pid, SIGKILL);
      break;
    }
    pollfd p{err.fd[0], POLLIN, 0};
    // Short waits: the memory watchdog looks every 50 ms.
    if (::poll(&p, open ? 1 : 0, 50) > 0) Drain(err.fd[0], out.stderrText, limits.stderrBytes, open);
  }
  // Whatever the program left running in its group goes with it.
  ::kill(-pid, SIGKILL);
  int status = 0;
  while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  if (open) {
    // Helpers still holding the pipe were ended above; what is buffered is read.
    ::fcntl(err.fd[0], F_SETFL, O_NONBLOCK);
    Drain(err.fd[0], out.stderrText, limits.stderrBytes, open);
  }
  if (WIFEXITED(status) && !out.timedOut && !out.memoryExceeded) out.exitCode = WEXITSTATUS(status);
  else if (WIFSIGNALED(status)) out.signal = WTERMSIG(status);
  return out;
}

}  // namespace tv::cad
