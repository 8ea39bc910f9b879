#pragma once
// Splits a subcommand's arguments into positional arguments, flags and options with a value.
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tv::console {

struct KnownOptions {
  std::vector<std::string_view> flags;         // "--json"
  std::vector<std::string_view> valueOptions;  // "--out" (given as "--out X" or "--out=X")
};

struct ParsedArgs {
  std::vector<std::string> positional;
  std::vector<std::string> flags;  // as given, each once
  std::vector<std::pair<std::string, std::string>> values;

  bool has(std::string_view flag) const;
  // The last value given for the option.
  std::optional<std::string> value(std::string_view option) const;
};

struct ArgParseResult {
  std::optional<ParsedArgs> args;
  std::string error;  // set when `args` is not: "未知选项 --x", "选项 --out 缺少值"
};

// "--" ends the options; "-" and negative numbers ("-5", "-0.5") are positional.
ArgParseResult ParseArgs(const std::vector<std::string>& args, const KnownOptions& known);

}  // namespace tv::console
