#include "settings/setting_form.h"

#include "settings/resolution.h"

namespace tv::settings {

namespace {

using Kind = Dlg_Setting::Kind;
using C = Config;

const std::vector<Dlg_Setting::Control>& AllControls() {
  static const std::vector<Dlg_Setting::Control> controls{
      {0, Kind::Check, "打印线宽", &C::plot_lineweights},
      {0, Kind::Check, "打印透明度", &C::plot_transparency},
      {0, Kind::Check, "打印戳记", &C::plot_stamp},
      {0, Kind::Check, "文字转图形", &C::text_as_graphics, {}, 0, 1, Dlg_Setting::kTextAsGraphicsTip},
      {0, Kind::Check, "不留白时，打印最外边线", &C::plot_outer_line},
      {1, Kind::Slider, "矢量", &C::vector_dpi_step, {}, 0, kMaxDpiStep},
      {1, Kind::Slider, "格栅", &C::raster_dpi_step, {}, 0, kMaxDpiStep},
      {2, Kind::Choice, "纸张方向", &C::pdf_orientation, {"保持原始方向", "全部转为横放", "全部转为竖放"}, 0, 2},
      {2, Kind::Choice, "旋转方向", &C::pdf_rotate_side, {"转90°", "转270°"}, 0, 1},
      {3, Kind::Slider, "放大系数", &C::image_scale_step, {}, 0, kMaxImageScaleStep, Dlg_Setting::kImageScaleTip},
      {4, Kind::Check, "合并PDF", &C::merge_pdf},
      {4, Kind::Check, "PDF合并完成后，打开该文件", &C::pdf_open_after_merge},
      {4, Kind::Check, "自主选择文件存储", &C::choose_folder},
      {4, Kind::Check, "DWG拆分时保存为图块", &C::save_as_block},
      {4, Kind::Check, "批量打印单张后，打开所在文件夹", &C::open_folder_after},
      {5, Kind::Fixed, " PLine线形成的矩形 （必选）", nullptr, {}, 1, 1},
      {5, Kind::Check, " 零散直线组成的矩形", &C::frame_loose_lines},
      {5, Kind::Choice, "零散直线", &C::line_cover, {"直线合并", "直线覆盖"}, 0, 1},
      {5, Kind::Check, " 所有的图块、外部参照", &C::frame_all_blocks},
      {5, Kind::Check, " 仅最外框为矩形的图块、外部参照", &C::frame_rect_blocks},
      {5, Kind::Check, " 排除空白的矩形", &C::skip_blank_rect},
  };
  return controls;
}

}  // namespace

std::span<const Dlg_Setting::Control> Dlg_Setting::Controls() { return AllControls(); }

Dlg_Setting::Dlg_Setting(const Config& config) {
  for (const Control& c : Controls()) values_.push_back(c.field ? config.*c.field : 1);
}

std::string Dlg_Setting::SliderLabel(const Control& control, std::int32_t step) {
  if (control.field == &C::vector_dpi_step) return VectorDpiLabel(step);
  if (control.field == &C::raster_dpi_step) return RasterDpiLabel(step);
  return ImageScaleLabel(step);
}

std::string Dlg_Setting::valueText(std::size_t control) const {
  const Control& c = Controls()[control];
  const std::int32_t v = values_.at(control);
  switch (c.kind) {
    case Kind::Slider: return SliderLabel(c, v);
    case Kind::Choice:
      return v >= 0 && static_cast<std::size_t>(v) < c.choices.size() ? std::string(c.choices[v]) : std::to_string(v);
    default: return std::string(c.label);
  }
}

bool Dlg_Setting::setValue(std::size_t control, std::int32_t value) {
  if (control >= values_.size()) return false;
  const Control& c = Controls()[control];
  if (c.kind == Kind::Fixed || value < c.minimum || value > c.maximum) return false;
  values_[control] = value;
  return true;
}

void Dlg_Setting::store(Config& config) const {
  const auto controls = Controls();
  for (std::size_t i = 0; i < controls.size(); ++i)
    if (controls[i].field) config.*controls[i].field = values_[i];
}

}  // namespace tv::settings
