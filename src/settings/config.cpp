#include "settings/config.h"

#include <algorithm>

#include "host/text_files.h"
#include "settings/folders.h"
#include "settings/shared_files.h"
#include "settings/value_text.h"
#include "titleblock/tk_library.h"

namespace tv::settings {

namespace {

// A file in the data folder; nothing while the folders are unknown, so that no file lands in the
// root folder by accident.
std::string DataFile(std::string_view name) {
  const std::string& folder = DataFolder();
  return folder.empty() ? std::string() : folder + "/" + std::string(name);
}

// The first load clears the title-block library's centring flags and writes the tk file, as it
// stands on disk then: another run may have saved it since this one read it.
void ClearTitleBlockCentring() {
  titleblock::UpdateTkFile(
      titleblock::GlobalTkLibrary(),
      [](titleblock::TK_Library& library) {
        library.CentreInArea.fill(0);
        return true;
      },
      true);
}

std::string IniText(const Ini& ini) {
  ValueWriter writer;
  writer.integer(kFileVersion);
  writer.integer(ini.first_run_done);
  writer.integer(ini.single_scale_asked);
  writer.integer(ini.batch_scale_asked);
  return writer.text();
}

}  // namespace

Config& GlobalConfig() {
  static Config config;
  return config;
}

Ini& GlobalIni() {
  static Ini ini;
  return ini;
}

std::string ShortcutOf(std::int32_t commandNumber) {
  const Config& c = GlobalConfig();
  for (std::size_t i = 0; i < c.shortcut_ids.size() && i < c.shortcut_names.size(); ++i)
    if (c.shortcut_ids[i] == commandNumber) return c.shortcut_names[i];
  return {};
}

std::string DefaultSignLibraryPath() { return DataFolder() + "/Sign.tvlib1"; }
std::string DefaultStampLibraryPath() { return DataFolder() + "/Stamp.tvlib2"; }
std::string DefaultFrameFolder() { return InstallFolder() + "/Frame"; }

std::string SignLibraryPath() {
  const std::string& p = GlobalConfig().sign_library_path;
  return p.empty() ? DefaultSignLibraryPath() : p;
}

std::string StampLibraryPath() {
  const std::string& p = GlobalConfig().stamp_library_path;
  return p.empty() ? DefaultStampLibraryPath() : p;
}

std::string FrameFolder() {
  const std::string& p = GlobalConfig().frame_folder;
  return p.empty() ? DefaultFrameFolder() : p;
}

std::string ConfigFilePath() { return DataFile(kConfigFileName); }
std::string IniFilePath() { return DataFile(kIniFileName); }

std::optional<std::string> GetRemembered(const Config& config, std::string_view key) {
  const std::size_t n = std::min(config.remember_keys.size(), config.remember_values.size());
  for (std::size_t i = 0; i < n; ++i)
    if (config.remember_keys[i] == key) return config.remember_values[i];
  return std::nullopt;
}

void SetRemembered(Config& config, std::string_view key, std::string_view value) {
  // The two arrays go in step; a stray key without a value is dropped first.
  const std::size_t n = std::min(config.remember_keys.size(), config.remember_values.size());
  config.remember_keys.resize(n);
  config.remember_values.resize(n);
  for (std::size_t i = 0; i < n; ++i)
    if (config.remember_keys[i] == key) {
      config.remember_values[i] = value;
      return;
    }
  config.remember_keys.emplace_back(key);
  config.remember_values.emplace_back(value);
}

std::optional<std::string> GetRemembered(std::string_view key) { return GetRemembered(GlobalConfig(), key); }
void SetRemembered(std::string_view key, std::string_view value) { SetRemembered(GlobalConfig(), key, value); }

bool LoadIni(Ini& ini) {
  const std::string path = IniFilePath();
  std::optional<std::string> bytes = path.empty() ? std::nullopt : host::ReadFileBytes(path);
  bool whole = false;
  if (bytes) {
    ValueReader reader(host::TextFileTokens(*bytes));
    reader.integer();  // the version says nothing about these three
    reader.read(ini.first_run_done);
    reader.read(ini.single_scale_asked);
    reader.read(ini.batch_scale_asked);
    whole = !reader.failed();
  }
  if (!path.empty()) NoteFileAsRead(path, std::move(bytes), IniText(ini));
  return whole;
}

bool SaveIni(const Ini& ini) {
  const std::string path = IniFilePath();
  if (path.empty()) return false;
  return SaveSharedFile(path, IniText(ini), false);
}

void RunFirstRunSteps() {
  GlobalIni().first_run_done = 1;
  ClearTitleBlockCentring();
  Config& config = GlobalConfig();
  config.plot_lineweights = 1;
  config.vector_dpi_step = std::max(config.vector_dpi_step, Config{}.vector_dpi_step);
  config.plot_setting.filter_ratio = 0.0;
  config.line_cover = 1;
  SaveConfig(config, false, false);
}

}  // namespace tv::settings
