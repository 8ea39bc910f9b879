#pragma once
// "打印设置" of the single plot, on the host's command line: the choices listed by number, a
// number changes its choice, Enter is OK and a cancel drops the form.
#include <optional>

#include "settings/plot_setting.h"

namespace tv::plot {

inline constexpr std::string_view kSinglePlotFormTitle = "打印设置";
inline constexpr std::string_view kSinglePlotFormName = "Dlg_SinglePlot_Setting";

// The single plot's own settings, kept apart from the batch forms' while the host runs; taken from
// the drawing's settings the first time.
settings::PlotSettingRec& SinglePlotSetting();

// Shows the form over SinglePlotSetting(). On OK the choices go to it and into the drawing's
// "TPLOT_SETTING2"; true for OK.
bool Dlg_SinglePlot_Setting();

}  // namespace tv::plot
