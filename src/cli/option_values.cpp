#include "cli/option_values.h"

#include <charconv>
#include <cmath>

#include "console/text_table.h"

namespace tv::cli {

using console::Printable;

std::optional<double> ParseNumber(std::string_view text) {
  if (text.empty()) return std::nullopt;
  double value = 0.0;
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (ec != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) return std::nullopt;
  return value;
}

std::optional<std::int32_t> ParseWhole(std::string_view text, std::int32_t low, std::int32_t high) {
  const auto n = ParseNumber(text);
  if (!n || *n != std::floor(*n) || *n < low || *n > high) return std::nullopt;
  return static_cast<std::int32_t>(*n);
}

std::optional<std::string> ReadSheetOptions(const ParsedArgs& args, SheetOptions& options) {
  if (auto v = args.value("--range")) {
    if (*v != "model" && *v != "layouts" && *v != "all" && *v != "current")
      return "范围 " + Printable(*v) + " 无效，应为 model、layouts、all 或 current";
    options.range = *v;
  }
  if (auto v = args.value("--order")) {
    options.order = ParseWhole(*v, 1, 9);
    if (!options.order) return "打印顺序 " + Printable(*v) + " 无效，应为 1 到 9 的整数";
  }
  if (auto v = args.value("--scale")) {
    options.scale = ParseNumber(*v);
    if (!options.scale || !(*options.scale > 0.0)) return "比例 " + Printable(*v) + " 无效，应为大于 0 的数";
  }
  return std::nullopt;
}

}  // namespace tv::cli
