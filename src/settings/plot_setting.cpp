#include "settings/plot_setting.h"

#include "settings/config.h"

namespace tv::settings {

PlotSettingRec& CurrentPlotSetting() {
  static PlotSettingRec rec;
  return rec;
}

bool SaveCurrentPlotSetting() { return SaveConfig(GlobalConfig(), false, false); }

}  // namespace tv::settings
