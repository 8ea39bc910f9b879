#pragma once
// The drawing's plot settings as the named record stores them, for a drawing the system makes
// itself (a sheet cut into a file of its own).
#include <vector>

#include "host/xrecords.h"
#include "settings/plot_setting.h"

namespace tv::settings {

// The values SaveDwgPlotSetting stores under kDwgPlotSettingKey.
std::vector<host::XrecordItem> DwgPlotSettingItems(const PlotSettingRec& rec);

}  // namespace tv::settings
