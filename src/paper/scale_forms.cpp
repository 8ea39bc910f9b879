#include "paper/scale_forms.h"

#include <cmath>

namespace tv::paper {

namespace {

constexpr std::string_view kScaleMessage = "打印比例应大于 0 !";
constexpr std::string_view kFilterMessage = "过滤比例应在 0 ~ 30 % 之间 !";

FormCheck ScaleCheck(double scale) {
  if (scale > 0.0 && std::isfinite(scale)) return {};
  return {false, std::string(kScaleMessage), ScaleField::Scale};
}

FormCheck FilterCheck(double ratio) {
  if (ratio >= 0.0 && ratio <= kMaxFilterRatio) return {};
  return {false, std::string(kFilterMessage), ScaleField::Filter};
}

}  // namespace

FormCheck Dlg_Sc_Set::check() const { return ScaleCheck(scale); }

Dlg_Sc_SetW::Dlg_Sc_SetW(const settings::PlotSettingRec& rec)
    : defaultScale(rec.default_scale), autoScale(rec.auto_scale != 0), filterRatio(rec.filter_ratio) {}

FormCheck Dlg_Sc_SetW::check() const {
  if (!autoScale) {
    FormCheck scale = ScaleCheck(defaultScale);
    if (!scale.ok) return scale;
  }
  return FilterCheck(filterRatio);
}

void Dlg_Sc_SetW::store(settings::PlotSettingRec& rec) const {
  // With automatic scales the field may be left at 0; the former default then stays.
  if (defaultScale > 0.0) rec.default_scale = defaultScale;
  rec.auto_scale = autoScale ? 1 : 0;
  rec.filter_ratio = filterRatio;
}

FormCheck Dlg_Filter::check() const { return FilterCheck(filterRatio); }

}  // namespace tv::paper
