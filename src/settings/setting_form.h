#pragma once
// The settings form "打印设置": the lasting options of output, resolution, PDF orientation, image
// size and what counts as a sheet. A plain model of the form's controls; whoever shows it lets the
// user change values through setValue and presses OK with store.
#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "settings/config.h"

namespace tv::settings {

class Dlg_Setting {
 public:
  static constexpr std::string_view kTitle = "打印设置";
  static constexpr std::array<std::string_view, 6> kGroups{
      "1、打印设置", "2、PDF、DWF分辨率", "3、PDF纸张方向", "4、JPG、PNG输出纸张放大系数", "5、输出设置",
      "6、通用型批打 / 批打到纸张：以下图形视作打印外框"};
  static constexpr std::string_view kTextAsGraphicsTip =
      "ACAD2016/2017由于打印驱动有bug\nPDF输出时会忽略字符宽度比例\n所以ACAD2016/2017下输出PDF时软件会强制文字转图形";
  static constexpr std::string_view kImageScaleTip = "由于输出的图片分辨率较低\n为使图片内容清晰\n可将输出纸张尺寸放大";

  enum class Kind {
    Check,   // on or off
    Choice,  // one of `choices`, by index
    Slider,  // an integer from `minimum` to `maximum`, its label showing what it means
    Fixed,   // shown always on, and never enabled
  };

  struct Control {
    std::size_t group = 0;  // index into kGroups
    Kind kind = Kind::Check;
    std::string_view label;  // the caption; for a slider, what it adjusts
    std::int32_t Config::*field = nullptr;  // null for Fixed
    std::vector<std::string_view> choices;  // of a Choice
    std::int32_t minimum = 0, maximum = 1;
    std::string_view tooltip;
  };

  // The form's controls in the order they are shown, group by group.
  static std::span<const Control> Controls();

  // Opens with the values of `config`.
  explicit Dlg_Setting(const Config& config);

  std::int32_t value(std::size_t control) const { return values_.at(control); }
  // What a control says now: a check's caption, the chosen item, a slider's refreshed label.
  std::string valueText(std::size_t control) const;
  // Moves a slider, picks a choice or sets a check; false (nothing changed) for a value out of
  // range or for the fixed control.
  bool setValue(std::size_t control, std::int32_t value);

  // OK: every value goes to `config`. Cancel simply drops the form.
  void store(Config& config) const;

  // The label of a slider at `step`: "矢量%ddpi", "格栅%ddpi" or "放大系数%.1f".
  static std::string SliderLabel(const Control& control, std::int32_t step);

 private:
  std::vector<std::int32_t> values_;
};

// Command "打印设置": shows the form on the command line; on OK the values go to the global
// configuration, which is written at once.
void SettingCommand();

}  // namespace tv::settings
