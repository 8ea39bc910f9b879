#include "cli/action_options.h"

namespace tv::cli {

namespace {

bool Takes(std::string_view actions, std::string_view action) {
  constexpr std::string_view kJoin = "、";
  while (!actions.empty()) {
    const std::size_t end = actions.find(kJoin);
    if (actions.substr(0, end) == action) return true;
    if (end == std::string_view::npos) break;
    actions.remove_prefix(end + kJoin.size());
  }
  return false;
}

}  // namespace

void AddActionOptions(CLI::App& app, std::span<const ActionOption> options) {
  for (const ActionOption& o : options) {
    if (o.value)
      AddValue(app, o.name, o.value, o.help);
    else
      AddFlag(app, o.name, o.help);
  }
}

std::optional<std::string> MisplacedOption(const ParsedArgs& args, std::string_view action,
                                           std::span<const ActionOption> options) {
  for (const ActionOption& o : options) {
    const bool given = o.value ? args.value(o.name).has_value() : args.has(o.name);
    if (given && !Takes(o.actions, action)) return std::string(o.name) + " 只用于 " + o.actions;
  }
  return std::nullopt;
}

}  // namespace tv::cli
