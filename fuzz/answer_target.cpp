#include <cmath>
#include <cstdlib>

#include "console/answer_parse.h"
#include "fuzz/fuzz_targets.h"

namespace tv::fuzz {

namespace {

bool Finite(const Point3d& p) { return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z); }

}  // namespace

void RunAnswer(std::string_view bytes) {
  const auto integer = console::ParseInteger(bytes);
  const auto real = console::ParseReal(bytes);
  // Whatever reads as an integer reads as the same number; a number is always finite.
  if (integer && (!real || *real != *integer)) std::abort();
  if (real && !std::isfinite(*real)) std::abort();
  const auto absolute = console::ParsePoint(bytes);
  if (absolute && !Finite(*absolute)) std::abort();
  const Point3d base{1e6, -2.5, 0.125};
  console::ParsePoint(bytes, &base);
}

}  // namespace tv::fuzz
