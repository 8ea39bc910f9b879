#pragma once
// Options of a subcommand whose first word is an action ("tvplot sign place …"): one table says
// which actions take each option, so the help and the usage check can't drift apart.
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "cli/command_line.h"

namespace tv::cli {

struct ActionOption {
  const char* name;
  const char* value;  // placeholder of the value; nullptr for a flag
  const char* help;
  const char* actions;  // the actions that take it, joined by "、"
};

void AddActionOptions(CLI::App& app, std::span<const ActionOption> options);

// "NAME 只用于 ACTIONS" for the first option given that `action` doesn't take; nullopt when none.
std::optional<std::string> MisplacedOption(const ParsedArgs& args, std::string_view action,
                                           std::span<const ActionOption> options);

}  // namespace tv::cli
