#pragma once
// How a drawing is plotted: the per-drawing settings record. It travels with the drawing (an
// Xrecord DWG_PLOT_SETTING in the named-object dictionary), and a copy at the head of the
// configuration is the default for drawings that have none.
#include <cstdint>
#include <string>
#include <string_view>

#include "settings/value_text.h"

namespace tv::settings {

// Output formats of `format`.
inline constexpr std::int32_t kFormatPdf = 0;
inline constexpr std::int32_t kFormatDwf = 1;
inline constexpr std::int32_t kFormatJpg = 2;
inline constexpr std::int32_t kFormatPng = 3;
inline constexpr std::int32_t kFormatPlt = 4;
inline constexpr std::int32_t kFormatEps = 5;
inline constexpr std::int32_t kFormatDwg = 6;

// Name of both the dictionary and the Xrecord in the drawing.
inline constexpr std::string_view kDwgPlotSettingKey = "DWG_PLOT_SETTING";

// Fields in stored order; both stored forms keep it.
struct PlotSettingRec {
  std::int32_t format = kFormatPdf;      // "输出格式"
  std::int32_t path_mode = 1;            // "存储路径"
  std::string custom_path = " ";         // folder of the custom path choice
  std::int32_t margin = 0;               // "周边留白", -100 to 100
  std::int32_t back_red = 255;           // background of image output
  std::int32_t back_green = 255;
  std::int32_t back_blue = 255;
  double default_scale = 100.0;          // drawing units per plotted millimetre
  std::string name_prefix = "???";       // "???" stands for the drawing's name
  std::int32_t name_start = 1;
  std::string name_suffix;
  std::int32_t name_digits = 2;
  std::int32_t sort_style = 1;           // sheet order, 1 to 9
  std::int32_t legacy_flag_a = 0;        // carried along, no effect
  std::int32_t auto_scale = 0;           // "自动识别"; a session value
  double filter_ratio = 0.0;             // percent of the largest sheet's area, 0 to 30
  std::int32_t plot_signatures = 1;      // "打印签名"
  std::int32_t stamp_register_on = 0;    // "注册章"
  std::int32_t stamp_issue_on = 0;       // "出图章"
  std::string stamp_register_name;
  std::string stamp_issue_name;
  std::int32_t stamp_authorised = 0;     // a session value: stamps were cleared once
  std::int32_t stamp_project_on = 0;     // "项目章"
  std::int32_t stamp_completed_on = 0;   // "竣工章"
  std::string stamp_project_name;
  std::string stamp_completed_name;
  std::int32_t plot_stamps = 0;          // "打印印章"
  std::string paper_device;              // "打印设备" of the paper batch
  std::int32_t paper_mode = 0;           // 0 "打印到纸张", 1 "输出为PLT"
  std::int32_t paper_collate = 1;        // "逐份打印"
  std::string plt_folder;                // PLT files of the paper batch
  std::int32_t paper_option = 1;

  bool operator==(const PlotSettingRec&) const = default;
};

// The defaults of every field.
void ResetPlotSetting(PlotSettingRec& rec);
// Member by member; the two session values start afresh in the copy.
void CopyPlotSetting(PlotSettingRec& target, const PlotSettingRec& source);

// The stream form inside BPlot_Cfg.cfg: its own version, then the fields one a line. Reading stops
// at the first field the version read doesn't hold (or the first that fails); those keep their
// values. False when a read failed.
bool ReadPlotSetting(PlotSettingRec& rec, ValueReader& reader);
void WritePlotSetting(const PlotSettingRec& rec, ValueWriter& writer);

// The record of the working drawing; without one (or without a drawing) the configuration's
// record. True when the drawing had a record.
bool LoadDwgPlotSetting(PlotSettingRec& rec);
// Replaces the drawing's record with `rec` and makes it the configuration's default. False when
// there is no drawing to write into; the default is taken all the same.
bool SaveDwgPlotSetting(const PlotSettingRec& rec);

// The record of the drawing being worked on, alive from load to unload.
PlotSettingRec& CurrentPlotSetting();

// Keeps the current record for the next run: written into the drawing, taken as the default and
// the configuration written back.
bool SaveCurrentPlotSetting();

}  // namespace tv::settings
