#pragma once
// The module loaded into a session without a drawing, for the commands that manage the user's
// libraries: the data folder is known and the libraries are read as at start-up; unloaded again
// at the end. Questions and messages go to the error stream, where the user reads messages.
#include <istream>
#include <string>
#include <vector>

#include "cli/subcommand.h"
#include "console/session.h"

namespace tv::cli {

// The module loaded into a session the caller made, for the life of the scope: unloaded also when
// the work throws.
class ModuleScope {
 public:
  ModuleScope();
  ~ModuleScope();
  ModuleScope(const ModuleScope&) = delete;
  ModuleScope& operator=(const ModuleScope&) = delete;
};

class LoadedModule {
 public:
  // `answers` answer the questions first; then `terminal`, when given.
  LoadedModule(CliStreams& io, std::vector<std::string> answers, std::istream* terminal);
  ~LoadedModule();
  LoadedModule(const LoadedModule&) = delete;
  LoadedModule& operator=(const LoadedModule&) = delete;

  console::Session& session() { return session_; }

 private:
  console::Session session_;
  ModuleScope module_;
};

}  // namespace tv::cli
