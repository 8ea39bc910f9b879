// BPlot_Cfg.cfg: the file version, the default drawing record with a version of its own, the
// shortcuts, the single values in groups that later versions added, and the string map.
#include <algorithm>
#include <iterator>
#include <filesystem>
#include <system_error>

#include "host/text_files.h"
#include "settings/checked_write.h"
#include "settings/config.h"
#include "settings/field_table.h"
#include "settings/folders.h"
#include "settings/shared_files.h"
#include "settings/value_text.h"

namespace tv::settings {

namespace {

using C = Config;

const FieldSpec<C> kFields[] = {
    {"single_plot_pick_mode", &C::single_plot_pick_mode, kAlways, "单张打印先点选（0）或先窗选（1）"},
    {"merge_pdf", &C::merge_pdf, kAlways, "合并PDF"},
    {"choose_folder", &C::choose_folder, From(20210125), "自主选择文件存储"},
    {"save_as_block", &C::save_as_block, From(20210125), "DWG拆分时保存为图块"},
    {"sign_library_path", &C::sign_library_path, Above(20210212), "签名库文件；为空时取数据文件夹下的 Sign.tvlib1"},
    {"stamp_library_path", &C::stamp_library_path, Above(20210212), "印章库文件；为空时取数据文件夹下的 Stamp.tvlib2"},
    {"plot_lineweights", &C::plot_lineweights, From(20210401), "打印线宽"},
    {"plot_transparency", &C::plot_transparency, From(20210401), "打印透明度"},
    {"stamp_option_a", &C::stamp_option_a, From(20210415), "插入印章的选项一"},
    {"open_folder_after", &C::open_folder_after, From(20211226), "批量打印单张后，打开所在文件夹"},
    {"vector_dpi_step", &C::vector_dpi_step, From(20211226), "PDF、DWF分辨率（矢量）的滑块位置"},
    {"plot_stamp", &C::plot_stamp, From(20220410), "打印戳记"},
    {"text_as_graphics", &C::text_as_graphics, From(20220410), "文字转图形"},
    {"line_cover", &C::line_cover, From(20220410), "1 直线覆盖，0 直线合并"},
    {"frame_loose_lines", &C::frame_loose_lines, From(20220410), "零散直线组成的矩形视作打印外框"},
    {"frame_all_blocks", &C::frame_all_blocks, From(20220410), "所有的图块、外部参照视作打印外框"},
    {"frame_rect_blocks", &C::frame_rect_blocks, From(20220410), "仅最外框为矩形的图块、外部参照视作打印外框"},
    {"custom_paper_length", &C::custom_paper_length, Above(20220606), "上次自定义纸张的长度"},
    {"custom_paper_width", &C::custom_paper_width, Above(20220606), "上次自定义纸张的宽度"},
    {"pdf_open_after_merge", &C::pdf_open_after_merge, Above(20220606), "PDF合并完成后，打开该文件"},
    {"plot_outer_line", &C::plot_outer_line, Above(20220614), "不留白时，打印最外边线"},
    {"multi_option_1", &C::multi_option_1, Above(20220614), "多文件批打印的选项一"},
    {"multi_option_2", &C::multi_option_2, Above(20220614), "多文件批打印的选项二"},
    {"multi_option_3", &C::multi_option_3, Above(20220614), "多文件批打印的选项三"},
    {"multi_option_4", &C::multi_option_4, Above(20220614), "多文件批打印的选项四"},
    {"multi_option_5", &C::multi_option_5, Above(20220614), "多文件批打印的选项五"},
    {"multi_paper_length", &C::multi_paper_length, Above(20220614), "多文件批打印的纸张长度"},
    {"multi_paper_width", &C::multi_paper_width, Above(20220614), "多文件批打印的纸张宽度"},
    {"multi_option_6", &C::multi_option_6, Above(20220614), "多文件批打印的选项六"},
    {"skip_blank_rect", &C::skip_blank_rect, Above(20220711), "排除空白的矩形"},
    {"raster_dpi_step", &C::raster_dpi_step, Above(20220806), "PDF、DWF分辨率（格栅）的滑块位置"},
    {"ctb_colour_a", &C::ctb_colour_a, Above(20221003), "彩色打印样式的选择一"},
    {"ctb_colour_b", &C::ctb_colour_b, Above(20221003), "彩色打印样式的选择二"},
    {"stamp_option_b", &C::stamp_option_b, Above(20221003), "插入印章的选项二"},
    {"ctb_colour_c", &C::ctb_colour_c, Above(20221026), "彩色打印样式的选择三"},
    {"image_scale_step", &C::image_scale_step, Above(20221031), "JPG、PNG输出纸张放大系数的滑块位置（系数 = 位置 x 0.1 + 1）"},
    {"pdf_orientation", &C::pdf_orientation, Above(20221126), "PDF纸张方向：0 保持原始方向，1 全部转为横放，2 全部转为竖放"},
    {"pdf_rotate_side", &C::pdf_rotate_side, Above(20221126), "PDF页面的旋转方向：0 转 90°，1 转 270°"},
    {"last_plot_style", &C::last_plot_style, Above(20230509), "批打印对话框上次选用的打印样式"},
    {"frame_tool_mode", &C::frame_tool_mode, Above(20230526), "生成外框的方式"},
    {"frame_tool_width", &C::frame_tool_width, Above(20230526), "生成外框的宽度"},
    {"frame_tool_value", &C::frame_tool_value, Above(20230526), "生成外框的数值"},
    {"put_frame_mode", &C::put_frame_mode, Above(20230526), "套图框方式"},
    {"frame_folder", &C::frame_folder, Above(20230612), "图框所在文件夹；为空时取安装文件夹下的 Frame"},
    {"frame_tool_flag", &C::frame_tool_flag, Above(20230612), "生成外框的开关"},
};
static_assert(std::size(kFields) == 45);

constexpr VersionGate kRememberGate = Above(20231215);

// The paths take their defaults whenever they come out empty.
void RestoreEmptyPaths(Config& config) {
  if (config.sign_library_path.empty()) config.sign_library_path = DefaultSignLibraryPath();
  if (config.stamp_library_path.empty()) config.stamp_library_path = DefaultStampLibraryPath();
  if (config.frame_folder.empty()) config.frame_folder = DefaultFrameFolder();
}

// False when the file ends before the count says, or the count is none at all.
bool ReadShortcuts(Config& config, ValueReader& reader) {
  std::int32_t count = 0;
  if (!reader.read(count) || count < 0) return false;
  for (std::int32_t i = 0; i < count; ++i) {
    const auto id = reader.integer();
    const auto name = reader.token();
    if (!id || !name) return false;
    if (name->empty()) continue;
    config.shortcut_ids.push_back(*id);
    config.shortcut_names.push_back(*name);
  }
  return true;
}

bool ReadRemembered(Config& config, ValueReader& reader) {
  std::int32_t count = 0;
  if (!reader.read(count) || count < 0) return false;
  for (std::int32_t i = 0; i < count; ++i) {
    const auto key = reader.token();
    const auto value = reader.token();
    if (!key || !value) return false;
    if (key->empty() || value->empty()) continue;
    config.remember_keys.push_back(*key);
    config.remember_values.push_back(*value);
  }
  return true;
}

std::optional<std::string> AskPath(bool forSaving) {
  std::string path;
  const bool answered = forSaving ? AskSavePath("保存配置文件为...", "批打印配置文件.cfg", "cfg", path)
                                  : AskOpenPath("读取配置文件...", "cfg", path);
  if (!answered) return std::nullopt;
  return path;
}

// The defaults that stand before any file is read.
void PrepareForReading(Config& config) {
  config.sign_library_path = DefaultSignLibraryPath();
  config.stamp_library_path = DefaultStampLibraryPath();
  config.frame_folder = DefaultFrameFolder();
  std::error_code ec;
  if (!InstallFolder().empty()) std::filesystem::create_directories(config.frame_folder, ec);
}

// The arrays start empty; a file that can't be opened leaves the rest as it stands. What the user's
// own file held is noted, so that saving it unchanged won't undo another run's newer file.
bool ReadFile(Config& config, const std::string& path) {
  config.shortcut_ids.clear();
  config.shortcut_names.clear();
  config.remember_keys.clear();
  config.remember_values.clear();
  std::optional<std::string> bytes = path.empty() ? std::nullopt : host::ReadFileBytes(path);
  if (bytes) ReadConfigTokens(config, host::TextFileTokens(*bytes));
  if (!path.empty() && path == ConfigFilePath()) NoteFileAsRead(path, std::move(bytes), ConfigFileText(config));
  return bytes.has_value();
}

}  // namespace

std::span<const FieldSpec<Config>> ConfigFields() { return kFields; }

std::string ConfigFileText(const Config& config) {
  ValueWriter writer;
  writer.integer(kFileVersion);
  WritePlotSetting(config.plot_setting, writer);
  const std::size_t shortcuts = std::min(config.shortcut_ids.size(), config.shortcut_names.size());
  writer.integer(static_cast<std::int64_t>(shortcuts));
  for (std::size_t i = 0; i < shortcuts; ++i) {
    writer.integer(config.shortcut_ids[i]);
    // Names go as they stand: the form lets no blank into them. An empty one would leave no
    // token at all and shift every later value, so it is written as the empty token and dropped
    // on reading.
    const std::string& name = config.shortcut_names[i];
    writer.raw(name.empty() ? EncodeToken(name) : name);
  }
  for (const FieldSpec<Config>& field : kFields) WriteField(config, field, writer);
  const std::size_t pairs = std::min(config.remember_keys.size(), config.remember_values.size());
  writer.integer(static_cast<std::int64_t>(pairs));
  for (std::size_t i = 0; i < pairs; ++i) {
    writer.token(config.remember_keys[i]);
    writer.token(config.remember_values[i]);
  }
  return writer.text();
}

bool ReadConfigTokens(Config& config, std::vector<std::string> tokens) {
  ValueReader reader(std::move(tokens));
  // The first version decides for the file; the record reads its own.
  const std::optional<std::int32_t> version = reader.integer();
  bool complete = false;
  if (version && ReadPlotSetting(config.plot_setting, reader)) {
    complete = ReadShortcuts(config, reader) && IsFileVersion(*version);
    bool allRead = true;
    for (const FieldSpec<Config>& field : kFields) {
      if (!field.gate.holds(*version)) break;  // an older file: the rest keeps its values
      if (!ReadField(config, field, reader)) {
        allRead = complete = false;
        break;
      }
    }
    if (allRead && kRememberGate.holds(*version) && !ReadRemembered(config, reader)) complete = false;
  }
  RestoreEmptyPaths(config);
  return complete;
}

bool LoadConfig(Config& config, bool askUser) {
  PrepareForReading(config);
  std::string path;
  if (askUser) {
    const auto picked = AskPath(false);
    if (!picked) return false;
    path = *picked;
  } else {
    path = ConfigFilePath();
  }
  return ReadFile(config, path);
}

bool LoadConfigFrom(Config& config, const std::string& path) {
  PrepareForReading(config);
  return ReadFile(config, path);
}

bool SaveConfig(const Config& config, bool reportFailure, bool askUser) {
  if (!askUser) return SaveConfigTo(config, ConfigFilePath(), reportFailure);
  const auto picked = AskPath(true);
  if (!picked) return false;
  return SaveConfigTo(config, *picked, reportFailure);
}

bool SaveConfigTo(const Config& config, const std::string& path, bool reportFailure) {
  if (path.empty()) return false;
  return SaveSharedFile(path, ConfigFileText(config), reportFailure);
}

std::optional<Config> ReadCompleteConfig(const Config& current, const std::string& path) {
  std::optional<std::vector<std::string>> tokens = host::ReadTextFileTokens(path);
  if (!tokens) return std::nullopt;
  Config config = current;
  PrepareForReading(config);
  config.shortcut_ids.clear();
  config.shortcut_names.clear();
  config.remember_keys.clear();
  config.remember_values.clear();
  if (!ReadConfigTokens(config, std::move(*tokens))) return std::nullopt;
  return config;
}

}  // namespace tv::settings
