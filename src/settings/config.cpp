#include "settings/config.h"

#include "settings/folders.h"

namespace tv::settings {

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

std::string SignLibraryPath() {
  const std::string& p = GlobalConfig().sign_library_path;
  return p.empty() ? DataFolder() + "/Sign.tvlib1" : p;
}

std::string StampLibraryPath() {
  const std::string& p = GlobalConfig().stamp_library_path;
  return p.empty() ? DataFolder() + "/Stamp.tvlib2" : p;
}

bool LoadConfig(Config& config, bool) {
  config = Config{};
  return true;
}
bool SaveConfig(const Config&, bool, bool) { return true; }
bool LoadIni(Ini& ini) {
  ini = Ini{};
  return true;
}
bool SaveIni(const Ini&) { return true; }

void RunFirstRunSteps() {
  GlobalIni().first_run_done = 1;
  SaveConfig(GlobalConfig(), false, false);
}

}  // namespace tv::settings
