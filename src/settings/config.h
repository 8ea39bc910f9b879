#pragma once
// The global settings and the first-use flags, kept in BPlot_Cfg.cfg and Tarvex.Ini in the data folder.
#include <cstdint>
#include <string>
#include <vector>

namespace tv::settings {

struct Config {
  // The user's command shortcuts: command numbers and names, same index.
  std::vector<std::int32_t> shortcut_ids;
  std::vector<std::string> shortcut_names;
  std::int32_t plot_stamp = 0;  // "打印戳记"
  // What recognition takes for a sheet; closed rectangular polylines always count.
  std::int32_t frame_loose_lines = 1;  // " 零散直线组成的矩形"
  std::int32_t frame_all_blocks = 1;   // " 所有的图块、外部参照"; wins over frame_rect_blocks
  std::int32_t frame_rect_blocks = 0;  // " 仅最外框为矩形的图块、外部参照"
  std::int32_t skip_blank_rect = 1;    // " 排除空白的矩形"
  // Library files; empty means the default file in the data folder.
  std::string sign_library_path;
  std::string stamp_library_path;
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

// The library paths in use: the configured ones, or "Sign.tvlib1" and "Stamp.tvlib2" in the data folder.
std::string SignLibraryPath();
std::string StampLibraryPath();

// Reading starts from the defaults, so a missing file is no error. The file formats are not read
// or written yet: the defaults stand and writing succeeds without a file.
bool LoadConfig(Config& config, bool askUser);
bool SaveConfig(const Config& config, bool reportFailure, bool askUser);
bool LoadIni(Ini& ini);
bool SaveIni(const Ini& ini);
// The steps of a first load; they end with writing the configuration.
void RunFirstRunSteps();

}  // namespace tv::settings
