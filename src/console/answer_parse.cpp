#include "console/answer_parse.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "console/text_match.h"

namespace tv::console {

std::optional<std::int32_t> ParseInteger(std::string_view text) {
  text = TrimBlanks(text);
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  std::int32_t value = 0;
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || ec != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::optional<double> ParseReal(std::string_view text) {
  text = TrimBlanks(text);
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  // "inf" and "nan" parse but are no answer to a number prompt.
  double value = 0;
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value, std::chars_format::general);
  if (text.empty() || ec != std::errc() || end != text.data() + text.size() || !std::isfinite(value))
    return std::nullopt;
  return value;
}

std::optional<Point3d> ParsePoint(std::string_view text, const Point3d* base) {
  text = TrimBlanks(text);
  bool relative = false;
  if (!text.empty() && text.front() == '@') {
    relative = true;
    text.remove_prefix(1);
  }
  std::vector<double> coords;
  while (true) {
    const std::size_t comma = text.find(',');
    auto value = ParseReal(text.substr(0, comma));
    if (!value) return std::nullopt;
    coords.push_back(*value);
    if (comma == std::string_view::npos) break;
    text.remove_prefix(comma + 1);
  }
  if (coords.size() < 2 || coords.size() > 3) return std::nullopt;
  Point3d p{coords[0], coords[1], coords.size() == 3 ? coords[2] : 0.0};
  if (relative) {
    const Point3d origin = base ? *base : Point3d{};
    p = origin + p.asVector();
  }
  return p;
}

}  // namespace tv::console
