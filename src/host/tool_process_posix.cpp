// Outside programs on this platform: posix_spawn in the program's folder, the environment built
// before the spawn so that nothing of this process changes.
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "host/tool_process.h"

extern char** environ;

namespace tv::host {

bool RunProgramAndWait(const std::string& program, const std::string& workingFolder,
                       const std::vector<std::pair<std::string, std::string>>& environment) {
  std::vector<std::string> env;
  for (char** e = environ; *e; ++e) {
    bool replaced = false;
    for (const auto& [name, value] : environment)
      replaced = replaced || (std::strncmp(*e, name.c_str(), name.size()) == 0 && (*e)[name.size()] == '=');
    if (!replaced) env.emplace_back(*e);
  }
  for (const auto& [name, value] : environment) env.push_back(name + "=" + value);
  std::vector<char*> envp;
  for (std::string& e : env) envp.push_back(e.data());
  envp.push_back(nullptr);
  std::string path = program;
  char* argv[] = {path.data(), nullptr};

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  if (!workingFolder.empty()) posix_spawn_file_actions_addchdir_np(&actions, workingFolder.c_str());
  pid_t pid = 0;
  const int rc = posix_spawn(&pid, path.c_str(), &actions, nullptr, argv, envp.data());
  posix_spawn_file_actions_destroy(&actions);
  if (rc != 0) return false;
  int status = 0;
  while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  return true;
}

}  // namespace tv::host
