#pragma once
// The module's commands: the numbered commands TV_BatchPlot_1 … TV_BatchPlot_20, the user's
// shortcuts for them and the fixed commands the module sends to itself, all in one group.
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/editor.h"

namespace tv::host {

inline constexpr std::string_view kCommandGroup = "TV_Soft_BatchPlot";
inline constexpr int kNumberedCommandCount = 20;

// The caption of a numbered command in the menu; empty for 18, which has none, and for unknown numbers.
std::string_view MenuTextOf(int number);
// "TV_BatchPlot_<n>".
std::string NumberedCommandName(int number);

// The body of a numbered command; nullopt for unknown numbers.
std::optional<CommandBody> LookupCommand(int number);

struct FixedCommand {
  std::string_view name;
  CommandBody body;
};
// The nine fixed commands, in the order they are registered.
const std::vector<FixedCommand>& FixedCommands();

// Adds a command to the group under `name` (global and local name alike).
void AddCommand(int flags, const std::string& name, CommandBody body);
// Removes the group and adds the fixed commands, then every numbered command and its shortcut.
void RegisterCommands();

}  // namespace tv::host
