#pragma once
// The values of subcommand options: numbers, and the options every batch listing shares.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "cli/command_line.h"

namespace tv::cli {

// The whole text as a finite number; nullopt for anything else ("12a", "", "inf").
std::optional<double> ParseNumber(std::string_view text);
// A whole number from `low` to `high`.
std::optional<std::int32_t> ParseWhole(std::string_view text, std::int32_t low, std::int32_t high);

// --range, --order and --scale, as `tvplot sheets` and `tvplot plot` take them.
struct SheetOptions {
  std::string range = "all";          // model, layouts, all, current
  std::optional<std::int32_t> order;  // 1 to 9
  std::optional<double> scale;        // above 0
};
// Reads them from the arguments; the message for the user when one is bad.
std::optional<std::string> ReadSheetOptions(const ParsedArgs& args, SheetOptions& options);

}  // namespace tv::cli
