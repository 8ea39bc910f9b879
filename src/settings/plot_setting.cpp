#include "settings/plot_setting.h"
#include "settings/plot_setting_record.h"

#include <iterator>
#include <vector>

#include "host/xrecords.h"
#include "settings/config.h"
#include "settings/field_table.h"

namespace tv::settings {

namespace {

using R = PlotSettingRec;

constexpr std::int32_t kMarginLimit = 100;

// The drawing reader says "above 20220607" where the stream reader says "from 20220608"; for whole
// numbers that is one gate, so both readers share the table.
const FieldSpec<R> kFields[] = {
    {"format", &R::format, kAlways, "输出格式：0 PDF，1 DWF，2 JPG，3 PNG，4 PLT，5 EPS，6 DWG"},
    {"path_mode", &R::path_mode, kAlways, "存储路径"},
    {"custom_path", &R::custom_path, kAlways, "自定义存储路径的文件夹"},
    {"margin", &R::margin, kAlways, "周边留白（-100 到 100）"},
    {"back_red", &R::back_red, kAlways, "图片输出的背景色：红"},
    {"back_green", &R::back_green, kAlways, "图片输出的背景色：绿"},
    {"back_blue", &R::back_blue, kAlways, "图片输出的背景色：蓝"},
    {"default_scale", &R::default_scale, kAlways, "打印比例 1mm ＝ n CAD单位"},
    {"name_prefix", &R::name_prefix, kAlways, "通用型文件名前缀；??? 为图纸文件名"},
    {"name_start", &R::name_start, kAlways, "起始序号"},
    {"name_suffix", &R::name_suffix, kAlways, "通用型文件名后缀"},
    {"name_digits", &R::name_digits, kAlways, "序号位数"},
    {"sort_style", &R::sort_style, kAlways, "打印顺序（1 到 9）"},
    {"legacy_flag_a", &R::legacy_flag_a, From(20200711), "保留值，不起作用"},
    {"auto_scale", &R::auto_scale, From(20210125), "自动识别比例（仅本次使用）"},
    {"filter_ratio", &R::filter_ratio, From(20210129), "排除小图框：面积小于最大图框面积的 n% 时自动过滤"},
    {"plot_signatures", &R::plot_signatures, Above(20210212), "打印签名"},
    {"stamp_register_on", &R::stamp_register_on, Above(20210212), "打印注册章"},
    {"stamp_issue_on", &R::stamp_issue_on, Above(20210212), "打印出图章"},
    {"stamp_register_name", &R::stamp_register_name, Above(20210212), "注册章名称"},
    {"stamp_issue_name", &R::stamp_issue_name, Above(20210212), "出图章名称"},
    {"stamp_authorised", &R::stamp_authorised, From(20210401), "印章已授权（仅本次使用）"},
    {"stamp_project_on", &R::stamp_project_on, Above(20220607), "打印项目章"},
    {"stamp_completed_on", &R::stamp_completed_on, Above(20220607), "打印竣工章"},
    {"stamp_project_name", &R::stamp_project_name, Above(20220607), "项目章名称"},
    {"stamp_completed_name", &R::stamp_completed_name, Above(20220607), "竣工章名称"},
    {"plot_stamps", &R::plot_stamps, Above(20220607), "打印印章"},
    {"paper_device", &R::paper_device, Above(20230509), "批打到纸张的打印设备"},
    {"paper_mode", &R::paper_mode, Above(20230509), "0 打印到纸张，1 输出为PLT"},
    {"paper_collate", &R::paper_collate, Above(20230509), "逐份打印"},
    {"plt_folder", &R::plt_folder, Above(20230515), "批打到纸张的PLT文件夹"},
    {"paper_option", &R::paper_option, Above(20230628), "批打到纸张的选项"},
};
static_assert(std::size(kFields) == 32);

template <class T>
bool Is(const FieldSpec<R>& field, T R::*member) {
  const auto* m = std::get_if<T R::*>(&field.member);
  return m && *m == member;
}

// What a stored record may not carry on: a margin out of range, a session value.
void AfterRead(R& rec, const FieldSpec<R>& field, bool resetsSessionValue) {
  if (Is(field, &R::margin) && (rec.margin < -kMarginLimit || rec.margin > kMarginLimit)) rec.margin = 0;
  if (resetsSessionValue && Is(field, &R::auto_scale)) rec.auto_scale = 0;
}

host::XrecordItem ToItem(const R& rec, const FieldSpec<R>& field) {
  return std::visit(
      [&](auto member) -> host::XrecordItem {
        const auto& v = rec.*member;
        using T = std::decay_t<decltype(v)>;
        if constexpr (std::is_same_v<T, std::int32_t>)
          return {90, v};
        else if constexpr (std::is_same_v<T, double>)
          return {40, v};
        else
          return {1, EncodeToken(v)};
      },
      field.member);
}

// Takes one value of the chain; false when it is of another kind than the field.
bool FromItem(R& rec, const FieldSpec<R>& field, const host::XrecordValue& value) {
  return std::visit(
      [&](auto member) -> bool {
        auto& v = rec.*member;
        using T = std::decay_t<decltype(v)>;
        const T* stored = std::get_if<T>(&value);
        if (!stored) return false;
        if constexpr (std::is_same_v<T, std::string>)
          v = DecodeToken(*stored);
        else
          v = *stored;
        return true;
      },
      field.member);
}

}  // namespace

std::span<const FieldSpec<PlotSettingRec>> PlotSettingFields() { return kFields; }

void ResetPlotSetting(PlotSettingRec& rec) { rec = PlotSettingRec{}; }

void CopyPlotSetting(PlotSettingRec& target, const PlotSettingRec& source) {
  target = source;
  target.auto_scale = 0;
  target.stamp_authorised = 0;
}

bool ReadPlotSetting(PlotSettingRec& rec, ValueReader& reader) {
  const std::optional<std::int32_t> version = reader.integer();
  if (!version) return false;
  for (const FieldSpec<R>& field : kFields) {
    if (!field.gate.holds(*version)) break;
    if (!ReadField(rec, field, reader)) return false;
    AfterRead(rec, field, true);
  }
  return true;
}

void WritePlotSetting(const PlotSettingRec& rec, ValueWriter& writer) {
  writer.integer(kFileVersion);
  for (const FieldSpec<R>& field : kFields) WriteField(rec, field, writer);
}

bool LoadDwgPlotSetting(PlotSettingRec& rec) {
  ResetPlotSetting(rec);
  const auto items = host::ReadNamedXrecord(std::string(kDwgPlotSettingKey));
  if (!items) {
    // A drawing without a record of its own begins with the user's last settings.
    CopyPlotSetting(rec, GlobalConfig().plot_setting);
    return false;
  }
  if (items->empty()) return true;
  const auto* version = std::get_if<std::int32_t>(&items->front().value);
  if (!version) return true;
  // A chain may end before its version says, or hold a value of another kind: reading stops
  // there rather than run past it.
  std::size_t at = 1;
  for (const FieldSpec<R>& field : kFields) {
    if (!field.gate.holds(*version) || at >= items->size()) break;
    if (!FromItem(rec, field, (*items)[at++].value)) break;
    AfterRead(rec, field, false);
  }
  return true;
}

std::vector<host::XrecordItem> DwgPlotSettingItems(const PlotSettingRec& rec) {
  std::vector<host::XrecordItem> items;
  items.reserve(std::size(kFields) + 1);
  items.push_back({90, kFileVersion});
  for (const FieldSpec<R>& field : kFields) items.push_back(ToItem(rec, field));
  return items;
}

bool SaveDwgPlotSetting(const PlotSettingRec& rec) {
  const bool written = host::WriteNamedXrecord(std::string(kDwgPlotSettingKey), DwgPlotSettingItems(rec));
  // The next new drawing starts from this one.
  CopyPlotSetting(GlobalConfig().plot_setting, rec);
  return written;
}

PlotSettingRec& CurrentPlotSetting() {
  static PlotSettingRec rec;
  return rec;
}

bool SaveCurrentPlotSetting() {
  SaveDwgPlotSetting(CurrentPlotSetting());
  return SaveConfig(GlobalConfig(), false, false);
}

}  // namespace tv::settings
