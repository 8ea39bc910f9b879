#include "console/args.h"

#include <algorithm>

namespace tv::console {

namespace {

bool IsOption(const std::string& a) {
  if (a.size() < 2 || a[0] != '-') return false;
  // Negative numbers are values, not options.
  char c = a[1];
  return !((c >= '0' && c <= '9') || c == '.');
}

bool Contains(const std::vector<std::string_view>& list, std::string_view s) {
  return std::find(list.begin(), list.end(), s) != list.end();
}

}  // namespace

bool ParsedArgs::has(std::string_view flag) const { return std::find(flags.begin(), flags.end(), flag) != flags.end(); }

std::optional<std::string> ParsedArgs::value(std::string_view option) const {
  for (auto it = values.rbegin(); it != values.rend(); ++it)
    if (it->first == option) return it->second;
  return std::nullopt;
}

ArgParseResult ParseArgs(const std::vector<std::string>& args, const KnownOptions& known) {
  ParsedArgs parsed;
  bool optionsEnded = false;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    if (optionsEnded || !IsOption(a)) {
      parsed.positional.push_back(a);
      continue;
    }
    if (a == "--") {
      optionsEnded = true;
      continue;
    }
    std::string name = a;
    std::optional<std::string> inlineValue;
    if (auto eq = a.find('='); eq != std::string::npos && a.starts_with("--")) {
      name = a.substr(0, eq);
      inlineValue = a.substr(eq + 1);
    }
    if (Contains(known.flags, name) && !inlineValue) {
      if (!parsed.has(name)) parsed.flags.push_back(name);
    } else if (Contains(known.valueOptions, name)) {
      if (inlineValue) {
        parsed.values.emplace_back(name, *inlineValue);
      } else if (i + 1 < args.size()) {
        parsed.values.emplace_back(name, args[++i]);
      } else {
        return {std::nullopt, "选项 " + name + " 缺少值"};
      }
    } else {
      return {std::nullopt, "未知选项 " + a};
    }
  }
  return {std::move(parsed), {}};
}

}  // namespace tv::console
