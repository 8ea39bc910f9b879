#include "fuzz/fuzz_targets.h"

#include <array>

namespace tv::fuzz {

std::span<const FuzzTarget> FuzzTargets() {
  static constexpr std::array<FuzzTarget, 4> kTargets{{
      {"dxf", &RunDrawingSheets},
      {"tk", &RunTkLibrary},
      {"config", &RunConfigFile},
      {"answers", &RunAnswer},
  }};
  return kTargets;
}

}  // namespace tv::fuzz
