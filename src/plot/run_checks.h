#pragma once
// The questions the OK of a file list asks before a run: signatures that will not plot, and
// stamps without a library. Each returns false when the user stops the run.
#include "settings/plot_setting.h"

namespace tv::plot {

inline constexpr const char* kUnapprovedSignQuestion =
    "文件中存在未授权的签名 !\n\n未经授权的签名将无法打印，是否继续打印 ?";
inline constexpr const char* kEmptyStampLibraryQuestion = "印章库为空，无法打印印章，是否继续打印 ?";

bool SignatureCheckPasses(const settings::PlotSettingRec& setting);
// With stamps on and a format that can carry them: an empty library asks whether to go on without
// them; `stampsOff` then tells the run to leave them out.
bool StampCheckPasses(const settings::PlotSettingRec& setting, bool& stampsOff);

}  // namespace tv::plot
