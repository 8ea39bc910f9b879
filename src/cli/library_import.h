#pragma once
// What `tvplot sign` and `tvplot stamp` share: the file argument of export and import, and the
// keep question of an import answered by --keep, --replace or the terminal.
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "cli/command_line.h"

namespace tv::cli {

inline constexpr int kExitWriteFailed = 4;

// The one file after the action; nullopt with `error` set when it is missing or not alone.
std::optional<std::string> LibraryFileArgument(const ParsedArgs& args, const std::string& what, std::string& error);

// The answers --keep ("Y") or --replace ("N") give to the keep question; empty for neither.
std::vector<std::string> KeepAnswers(const ParsedArgs& args);

// Runs `change` on the user's library file under its lock, so that another run's save in the
// meantime is the starting point. False when the lock can't be had or `change` declines.
bool UnderFileLock(const std::string& path, const std::function<bool()>& change);

}  // namespace tv::cli
