#pragma once
// Runs several programs at the same moment, for tests of runs that share the user's files: all are
// started before any is waited for.
#include <string>
#include <vector>

#include "run_program.h"

namespace tv::test_support {

// `commands` are whole argument lists, the program first (use /usr/bin/env to set the variables
// that name the user's folders: they override the private home each program gets).
inline std::vector<RunResult> RunTogether(const std::vector<std::vector<std::string>>& commands) {
  std::vector<StartedProgram> started;
  for (const auto& command : commands)
    started.push_back(StartProgram(command.front(), {command.begin() + 1, command.end()}));
  std::vector<RunResult> results;
  for (StartedProgram& program : started) results.push_back(WaitProgram(program));
  return results;
}

}  // namespace tv::test_support
