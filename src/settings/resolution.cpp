#include "settings/resolution.h"

#include <cstdio>

namespace tv::settings {

std::int32_t ResolutionDpi(std::int32_t s) {
  if (s < 1) return 300;
  if (s <= 20) return (s + 30) * 10;
  if (s <= 35) return (s + 5) * 20;
  if (s <= 71) return (s - 19) * 50;
  if (s <= kMaxDpiStep) return (s - 45) * 100;
  return 4800;
}

std::string VectorDpiLabel(std::int32_t step) { return "矢量" + std::to_string(ResolutionDpi(step)) + "dpi"; }
std::string RasterDpiLabel(std::int32_t step) { return "格栅" + std::to_string(ResolutionDpi(step)) + "dpi"; }

double ImageScaleFactor(std::int32_t step) { return step * 0.1 + 1.0; }

std::string ImageScaleLabel(std::int32_t step) {
  char text[48];
  std::snprintf(text, sizeof text, "放大系数%.1f", ImageScaleFactor(step));
  return text;
}

}  // namespace tv::settings
