#pragma once
// One DWF for the whole set: the sheets are plotted as numbered files into a folder of the run,
// as for a PDF merge, and their pages are joined into the job's target here, no program needed.
#include <string>
#include <string_view>
#include <vector>

namespace tv::plot {

inline constexpr std::string_view kMergedDwfTitle = "合并后的DWF文件保存为...";
inline constexpr std::string_view kDwfMergeFailedMessage = "DWF文件合并出错 !\n\n";

// The numbered DWF files of `folder` (one per name, in order; a sheet that didn't plot is left
// out) into the job's target. True when the target was written; false, after saying so, when not.
bool MergeDwfs(const std::string& folder, const std::vector<std::string>& names);

}  // namespace tv::plot
