#pragma once
// The global settings and the first-use flags, kept in BPlot_Cfg.cfg and Tarvex.Ini in the data folder.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "settings/plot_setting.h"

namespace tv::settings {

inline constexpr std::string_view kConfigFileName = "BPlot_Cfg.cfg";
inline constexpr std::string_view kIniFileName = "Tarvex.Ini";

// Fields in file order; flags are 0 or 1.
struct Config {
  // The default for drawings without a record of their own.
  PlotSettingRec plot_setting;
  // The user's command shortcuts: command numbers and names, same index.
  std::vector<std::int32_t> shortcut_ids;
  std::vector<std::string> shortcut_names;
  std::int32_t single_plot_pick_mode = 0;  // the single plot starts with a point or a window pick
  std::int32_t merge_pdf = 0;              // "合并PDF"
  std::int32_t choose_folder = 0;          // "自主选择文件存储"
  std::int32_t save_as_block = 1;          // "DWG拆分时保存为图块"
  // Library files; LoadConfig puts the defaults in the data folder here, and an empty value
  // means those defaults.
  std::string sign_library_path;
  std::string stamp_library_path;
  std::int32_t plot_lineweights = 1;   // "打印线宽"
  std::int32_t plot_transparency = 0;  // "打印透明度"
  std::int32_t stamp_option_a = 0;     // read by stamp placement
  std::int32_t open_folder_after = 1;  // "批量打印单张后，打开所在文件夹"
  std::int32_t vector_dpi_step = 43;   // slider step of the vector resolution
  std::int32_t plot_stamp = 0;         // "打印戳记"
  std::int32_t text_as_graphics = 0;   // "文字转图形"
  std::int32_t line_cover = 1;         // "直线覆盖" when set, else "直线合并"
  // What recognition takes for a sheet; closed rectangular polylines always count.
  std::int32_t frame_loose_lines = 1;  // " 零散直线组成的矩形"
  std::int32_t frame_all_blocks = 1;   // " 所有的图块、外部参照"; wins over frame_rect_blocks
  std::int32_t frame_rect_blocks = 0;  // " 仅最外框为矩形的图块、外部参照"
  std::int32_t custom_paper_length = 841;  // the last custom paper
  std::int32_t custom_paper_width = 594;
  std::int32_t pdf_open_after_merge = 1;   // "PDF合并完成后，打开该文件"
  std::int32_t plot_outer_line = 0;        // "不留白时，打印最外边线"
  // Stored choices of the multi-file form.
  std::int32_t multi_option_1 = 0;
  std::int32_t multi_option_2 = 0;
  std::int32_t multi_option_3 = 0;
  std::int32_t multi_option_4 = 0;
  std::int32_t multi_option_5 = 0;
  std::int32_t multi_paper_length = 841;
  std::int32_t multi_paper_width = 594;
  std::int32_t multi_option_6 = 0;
  std::int32_t skip_blank_rect = 1;   // " 排除空白的矩形"
  std::int32_t raster_dpi_step = 10;  // slider step of the raster resolution
  // Colour plot table choices and a stamp option, read where they are used.
  std::int32_t ctb_colour_a = 0;
  std::int32_t ctb_colour_b = 0;
  std::int32_t stamp_option_b = 0;
  std::int32_t ctb_colour_c = 0;
  std::int32_t image_scale_step = 10;  // JPG/PNG paper factor: step x 0.1 + 1
  std::int32_t pdf_orientation = 0;    // 0 "保持原始方向", 1 "全部转为横放", 2 "全部转为竖放"
  std::int32_t pdf_rotate_side = 0;    // which way a page turns for choices 1 and 2
  std::string last_plot_style;         // the plot style last chosen in a batch form
  // Stored for the frame tool's settings form.
  std::int32_t frame_tool_mode = 0;
  double frame_tool_width = 0.0;
  double frame_tool_value = 5.0;
  std::int32_t put_frame_mode = 0;  // "套图框方式："
  // "图框所在文件夹："; LoadConfig puts the default under the installation folder here.
  std::string frame_folder;
  std::int32_t frame_tool_flag = 0;
  // A small string map: keys and values, same index.
  std::vector<std::string> remember_keys;
  std::vector<std::string> remember_values;
};

struct Ini {
  std::int32_t first_run_done = 0;
  std::int32_t single_scale_asked = 0;
  std::int32_t batch_scale_asked = 0;
};

// The process-wide settings, alive from load to unload.
Config& GlobalConfig();
Ini& GlobalIni();

// The shortcut of a command number, empty when it has none.
std::string ShortcutOf(std::int32_t commandNumber);

// The defaults of the paths: "Sign.tvlib1" and "Stamp.tvlib2" in the data folder, "Frame" in the
// installation folder.
std::string DefaultSignLibraryPath();
std::string DefaultStampLibraryPath();
std::string DefaultFrameFolder();
// The paths in use: the configured ones, or the defaults when empty.
std::string SignLibraryPath();
std::string StampLibraryPath();
std::string FrameFolder();

// The user's files in the data folder; empty while the folders are not computed.
std::string ConfigFilePath();
std::string IniFilePath();

// The string map: the value of a key (exact comparison), and setting one (replaced when the key
// is there, appended otherwise).
std::optional<std::string> GetRemembered(const Config& config, std::string_view key);
void SetRemembered(Config& config, std::string_view key, std::string_view value);
// The same on the global configuration.
std::optional<std::string> GetRemembered(std::string_view key);
void SetRemembered(std::string_view key, std::string_view value);

// The configuration from the user's file, or with `askUser` from a file the user picks. The
// default paths are set first and the arrays emptied, so a missing file keeps defaults. False when
// the user cancelled or the file could not be read.
bool LoadConfig(Config& config, bool askUser);
// The same from a named file.
bool LoadConfigFrom(Config& config, const std::string& path);
// Writes the configuration to the user's file, or with `askUser` to a file the user names, under
// the file's lock. A write is taken as failed when the file does not hold the text afterwards;
// with `reportFailure` that is shown. A configuration saved unchanged from what this run read
// leaves a file another run wrote since in place. False on failure or cancel.
bool SaveConfig(const Config& config, bool reportFailure, bool askUser);
// The same to a named file.
bool SaveConfigTo(const Config& config, const std::string& path, bool reportFailure);

// The text of BPlot_Cfg.cfg, and reading it back from its tokens. True when the tokens were a
// whole configuration: a date for a version, and every value that version holds.
std::string ConfigFileText(const Config& config);
bool ReadConfigTokens(Config& config, std::vector<std::string> tokens);

// `current` with a configuration file read over it, as LoadConfigFrom reads it; nullopt when the
// file cannot be read or is no whole configuration (a drawing, a file cut short).
std::optional<Config> ReadCompleteConfig(const Config& current, const std::string& path);

// Tarvex.Ini: missing or short files leave the flags as they are.
bool LoadIni(Ini& ini);
bool SaveIni(const Ini& ini);

// The steps of a first load, which bring the files of an older installation to current defaults;
// they end with writing the configuration.
void RunFirstRunSteps();

}  // namespace tv::settings
