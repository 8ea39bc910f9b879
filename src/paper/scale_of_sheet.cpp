// The scale a sheet or a list of sheets was drawn at, and the offer to make it the default.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "host/editor.h"
#include "paper/scale_fitting.h"
#include "paper/scale_fitting_internal.h"
#include "settings/config.h"
#include "settings/plot_setting.h"

namespace tv::paper {

namespace {

constexpr double kNoScale = 1e-05;

constexpr std::string_view kSingleTooBig =
    "打印比例：纸张尺寸与图面尺寸的比例\n\n现默认打印比例为 %s ,据此算出来的纸张尺寸过大 ！\n\n是否将默认打印比例改为 %s ?";
constexpr std::string_view kSingleTooSmall =
    "打印比例：纸张尺寸与图面尺寸的比例\n\n现默认打印比例为 %s ,据此算出来的纸张尺寸过小 ！\n\n是否将默认打印比例改为 %s ?";
constexpr std::string_view kBatchTooBig =
    "打印比例：纸张尺寸与图面尺寸的比例\n\n现默认打印比例为 %s ,据此算出来的大部分纸张尺寸过大 ！\n\n是否将默认打印比例改为 %s ?";
constexpr std::string_view kBatchTooSmall =
    "打印比例：纸张尺寸与图面尺寸的比例\n\n现默认打印比例为 %s ,据此算出来的大部分纸张尺寸过小 ！\n\n是否将默认打印比例改为 %s ?";

std::string FormatNumber(const char* format, double value) {
  char buf[64];
  std::snprintf(buf, sizeof buf, format, value);
  return buf;
}

// The shortest of "%.0f", "%.1f", "%.2f" that gives the number back.
std::string ShortNumber(double value) {
  for (const char* format : {"%.0f", "%.1f"}) {
    std::string text = FormatNumber(format, value);
    if (std::fabs(std::strtod(text.c_str(), nullptr) - value) < 1e-6) return text;
  }
  return FormatNumber("%.2f", value);
}

// The default moved by whole powers of ten until the estimate lies within a factor of 5 of it.
double ScaleNear(double estimate, double defaultScale) {
  double s = defaultScale;
  if (!(s > 0.0) || !std::isfinite(s) || !std::isfinite(estimate)) return s;
  // 700 steps take any finite double from one end of the range to the other.
  for (int i = 0; i < 700; ++i) {
    const double r = estimate / s;
    if (r <= 0.2)
      s *= 0.1;
    else if (r >= 5.0)
      s *= 10.0;
    else
      break;
  }
  return s;
}

// The first time the scale differs from the default the new one is taken without a word; from then
// on the user is asked. `firstUseFlag` is the Ini flag of this kind of plot.
void OfferDefaultScale(double s, std::int32_t settings::Ini::*firstUseFlag, std::string_view tooBig,
                       std::string_view tooSmall) {
  settings::PlotSettingRec& rec = settings::CurrentPlotSetting();
  settings::Ini& ini = settings::GlobalIni();
  if (ini.*firstUseFlag == 0) {
    ini.*firstUseFlag = 1;
    rec.default_scale = s;
    settings::SaveCurrentPlotSetting();
  } else {
    const std::string_view format = s > rec.default_scale ? tooBig : tooSmall;
    const std::string text = internal::FillIn(format, {ScaleText(rec.default_scale), ScaleText(s)});
    if (host::HasEditor() &&
        host::CurrentEditor().messageBox(text, internal::kCaption, host::MessageButtons::YesNo) ==
            host::MessageAnswer::Yes) {
      rec.default_scale = s;
      settings::SaveCurrentPlotSetting();
    }
  }
  settings::SaveIni(ini);
}

}  // namespace

std::string ScaleText(double scale) {
  if (scale >= 1.0) return "1:" + ShortNumber(scale);
  if (scale > kNoScale) return ShortNumber(1.0 / scale) + ":1";
  return {};
}

double ScaleOfSheet(const Plot_Drawing1& sheet, bool ask) {
  const double defaultScale = settings::CurrentPlotSetting().default_scale;
  // The mean side is taken to be 500 mm of paper.
  double estimate = sheet.unitFactor > 0.0 ? ((sheet.sizeX + sheet.sizeY) * 0.5 / sheet.unitFactor) / 500.0 : 0.0;
  if (!(estimate > kNoScale)) estimate = defaultScale;
  const double s = ScaleNear(estimate, defaultScale);
  if (ask && s != defaultScale) OfferDefaultScale(s, &settings::Ini::single_scale_asked, kSingleTooBig, kSingleTooSmall);
  return s;
}

double ScaleOfSheets(const std::vector<Plot_Drawing1*>& sheets, bool ask) {
  const double defaultScale = settings::CurrentPlotSetting().default_scale;
  std::vector<std::pair<double, int>> tally{{defaultScale, 0}};
  for (const Plot_Drawing1* sheet : sheets) {
    if (!sheet) continue;
    const double s = ScaleOfSheet(*sheet, false);
    auto it = std::find_if(tally.begin(), tally.end(),
                           [&](const auto& entry) { return std::fabs(entry.first - s) <= internal::kPointTolerance; });
    if (it != tally.end())
      ++it->second;
    else
      tally.emplace_back(s, 1);
  }
  // Only a higher count displaces the leader, so a tie goes to the value met first.
  std::size_t best = 0;
  for (std::size_t i = 1; i < tally.size(); ++i)
    if (tally[i].second > tally[best].second) best = i;
  const double s = tally[best].first;
  if (ask && s != defaultScale) OfferDefaultScale(s, &settings::Ini::batch_scale_asked, kBatchTooBig, kBatchTooSmall);
  return s;
}

}  // namespace tv::paper
