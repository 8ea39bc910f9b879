#include "plot/typed_point.h"

#include <cmath>
#include <cstdlib>
#include <string>

namespace tv::plot {

std::string_view TrimTyped(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}

std::optional<Point3d> ParseTypedPoint(std::string_view text) {
  double v[3] = {0, 0, 0};
  int n = 0;
  while (n < 3) {
    const std::size_t comma = text.find(',');
    const std::string part(TrimTyped(text.substr(0, comma)));
    char* end = nullptr;
    v[n] = std::strtod(part.c_str(), &end);
    if (part.empty() || end != part.c_str() + part.size() || !std::isfinite(v[n])) return std::nullopt;
    ++n;
    if (comma == std::string_view::npos) break;
    text.remove_prefix(comma + 1);
  }
  if (n < 2) return std::nullopt;
  return Point3d{v[0], v[1], v[2]};
}

}  // namespace tv::plot
