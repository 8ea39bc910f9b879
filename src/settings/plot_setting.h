#pragma once
// How a drawing is plotted: the per-drawing settings record. For now it holds the fields the
// scale and paper fitting reads; the rest of the record joins it later.
#include <cstdint>

namespace tv::settings {

// Output formats of `format`.
inline constexpr std::int32_t kFormatPdf = 0;
inline constexpr std::int32_t kFormatDwf = 1;
inline constexpr std::int32_t kFormatJpg = 2;
inline constexpr std::int32_t kFormatPng = 3;
inline constexpr std::int32_t kFormatPlt = 4;
inline constexpr std::int32_t kFormatEps = 5;
inline constexpr std::int32_t kFormatDwg = 6;

struct PlotSettingRec {
  std::int32_t format = kFormatPdf;  // "输出格式"
  double default_scale = 100.0;      // drawing units per plotted millimetre
  std::int32_t auto_scale = 0;       // "自动识别"; a session value
  double filter_ratio = 0.0;         // percent of the largest sheet's area, 0 to 30
  std::int32_t sort_style = 1;       // sheet order, 1 to 9
};

// The record of the drawing being worked on, alive from load to unload.
PlotSettingRec& CurrentPlotSetting();

// Keeps the current record for the next run: the configuration and the first-use flags are
// written back.
bool SaveCurrentPlotSetting();

}  // namespace tv::settings
