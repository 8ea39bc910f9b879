#pragma once
// "TPLOT_SETTING2": the single plot form's choices kept in the drawing, so that the form opens
// again as the user left it. Written only when the form is confirmed.
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tv::plot {

inline constexpr std::string_view kSinglePlotRecord = "TPLOT_SETTING2";

struct SinglePlotChoices {
  // format, style index, margin, plot signatures (or blocks for DWG), auto scale.
  std::array<std::int32_t, 5> values{};
  double scale = 100.0;
  std::string formName;
  std::vector<std::string> blocks;
  std::vector<std::string> layers;
  bool operator==(const SinglePlotChoices&) const = default;
};

// Replaces the record of the working drawing. False without a drawing.
bool WriteSinglePlotRecord(const SinglePlotChoices& choices);
// The record of the working drawing; block and layer names the drawing no longer has are
// dropped. Nothing when the record is missing or cut short.
std::optional<SinglePlotChoices> ReadSinglePlotRecord();

}  // namespace tv::plot
