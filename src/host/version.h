#pragma once
#include <string_view>

namespace tv::host {
inline constexpr std::string_view kProductVersion = "0.1.0";
}  // namespace tv::host
