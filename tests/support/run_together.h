#pragma once
// Runs several programs at the same moment, for tests of runs that share the user's files: all are
// started before any is waited for. Each child only redirects its output and execs, so nothing
// unsafe happens between fork and exec.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "run_program.h"

namespace tv::test_support {

// `commands` are whole argument lists, the program first (use /usr/bin/env to set variables).
inline std::vector<RunResult> RunTogether(const std::vector<std::vector<std::string>>& commands) {
  TempDir capture("tv_together");
  struct Child {
    pid_t pid = -1;
    std::string out, err;
  };
  std::vector<Child> children(commands.size());
  std::vector<std::vector<std::string>> storage = commands;
  for (std::size_t i = 0; i < commands.size(); ++i) {
    children[i].out = (capture / ("out" + std::to_string(i))).string();
    children[i].err = (capture / ("err" + std::to_string(i))).string();
    std::vector<char*> argv;
    for (std::string& a : storage[i]) argv.push_back(a.data());
    argv.push_back(nullptr);
    const pid_t pid = fork();
    if (pid == 0) {
      const int in = open("/dev/null", O_RDONLY);
      const int out = open(children[i].out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
      const int err = open(children[i].err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
      if (in < 0 || out < 0 || err < 0 || dup2(in, STDIN_FILENO) < 0 || dup2(out, STDOUT_FILENO) < 0 ||
          dup2(err, STDERR_FILENO) < 0)
        _exit(126);
      execv(argv[0], argv.data());
      _exit(127);
    }
    children[i].pid = pid;
  }
  std::vector<RunResult> results(commands.size());
  for (std::size_t i = 0; i < children.size(); ++i) {
    int status = 0;
    if (children[i].pid < 0 || waitpid(children[i].pid, &status, 0) != children[i].pid) continue;
    results[i].exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + (WIFSIGNALED(status) ? WTERMSIG(status) : 0);
    results[i].out = ReadFile(children[i].out);
    results[i].err = ReadFile(children[i].err);
  }
  return results;
}

}  // namespace tv::test_support
