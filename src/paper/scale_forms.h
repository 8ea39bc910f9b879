#pragma once
// The models of the scale forms: titles, labels, fields and the checks made on OK. The host shows
// them; a failed check names its message and the field the focus returns to.
#include <cstdint>
#include <string>
#include <string_view>

#include "settings/plot_setting.h"

namespace tv::paper {

// Which field a failed check returns to.
enum class ScaleField { None, Scale, Filter };

struct FormCheck {
  bool ok = true;
  std::string message;  // shown in a message box when not ok
  ScaleField field = ScaleField::None;
};

inline constexpr std::string_view kScaleLabel = "打印比例 1mm ＝";
inline constexpr std::string_view kScaleUnit = "CAD单位";
inline constexpr std::string_view kFilterLabel = " 过滤系数 ";
inline constexpr std::string_view kFilterTextBefore = "排除小图框：面积小于最大图框面积的";
inline constexpr std::string_view kFilterTextAfter = "% 时自动过滤";

inline constexpr double kMaxFilterRatio = 30.0;

// The scale of one sheet, or of all at once (the unified form).
class Dlg_Sc_Set {
 public:
  explicit Dlg_Sc_Set(double scale = 100.0, bool unified = false) : scale(scale), unified_(unified) {}
  std::string_view title() const { return unified_ ? "统一修改打印比例" : "修改打印比例"; }
  FormCheck check() const;

  double scale;  // drawing units per plotted millimetre

 private:
  bool unified_;
};

// The default scale and the sheet filter of a drawing.
class Dlg_Sc_SetW {
 public:
  Dlg_Sc_SetW() = default;
  explicit Dlg_Sc_SetW(const settings::PlotSettingRec& rec);
  static constexpr std::string_view title() { return "修改默认打印比例、图纸过滤设置"; }
  static constexpr std::string_view scaleLabel() { return "默认打印比例 1mm ＝"; }
  static constexpr std::string_view autoScaleLabel() { return "自动识别"; }
  FormCheck check() const;
  // Copies the fields into the record; call after a passed check.
  void store(settings::PlotSettingRec& rec) const;

  double defaultScale = 100.0;
  bool autoScale = false;    // the scale is found per sheet, so the field may stay 0
  double filterRatio = 0.0;  // percent
};

// The sheet filter alone.
class Dlg_Filter {
 public:
  Dlg_Filter() = default;
  explicit Dlg_Filter(double filterRatio) : filterRatio(filterRatio) {}
  static constexpr std::string_view title() { return "修改图纸过滤系数"; }
  FormCheck check() const;

  double filterRatio = 0.0;
};

}  // namespace tv::paper
