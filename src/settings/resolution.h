#pragma once
// The sliders of the settings form: resolution steps and the factor of image paper.
#include <cstdint>
#include <string>

namespace tv::settings {

inline constexpr std::int32_t kMaxDpiStep = 93;
inline constexpr std::int32_t kMaxImageScaleStep = 20;

// Dots per inch of a resolution step: 300 below step 1, 4800 above step 93, and in between
// finer steps at low resolutions than at high ones.
std::int32_t ResolutionDpi(std::int32_t step);
// "矢量%ddpi" and "格栅%ddpi" of a step.
std::string VectorDpiLabel(std::int32_t step);
std::string RasterDpiLabel(std::int32_t step);

// How much larger JPG and PNG paper is made: step x 0.1 + 1.
double ImageScaleFactor(std::int32_t step);
// "放大系数%.1f".
std::string ImageScaleLabel(std::int32_t step);

}  // namespace tv::settings
