#include "fuzz/fuzz_targets.h"
#include "fuzz/scratch_file.h"
#include "settings/config.h"

namespace tv::fuzz {

void RunConfigFile(std::string_view bytes) {
  const std::string path = WriteScratchFile("BPlot_Cfg.cfg", bytes);
  if (path.empty()) return;
  settings::Config config;
  settings::LoadConfigFrom(config, path);
  // What was read must write back and read again.
  const std::string again = WriteScratchFile("BPlot_Cfg_again.cfg", settings::ConfigFileText(config));
  if (again.empty()) return;
  settings::Config reread;
  settings::LoadConfigFrom(reread, again);
}

}  // namespace tv::fuzz
