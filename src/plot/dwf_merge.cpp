#include "plot/dwf_merge.h"

#include <filesystem>
#include <system_error>

#include "host/dwf_files.h"
#include "host/editor.h"
#include "plot/output_paths.h"
#include "plot/pdf_merge.h"
#include "plot/plot_job.h"
#include "settings/plot_setting.h"

namespace tv::plot {

bool MergeDwfs(const std::string& folder, const std::vector<std::string>& names) {
  const std::string& target = Job().MergedPdfPath;
  if (names.empty() || target.empty()) return false;
  std::vector<std::string> sources;
  for (std::size_t i = 0; i < names.size(); ++i) {
    std::string path = MergeSheetPath(folder, static_cast<std::int32_t>(i) + 1, settings::kFormatDwf);
    if (std::error_code ec; std::filesystem::is_regular_file(path, ec)) sources.push_back(std::move(path));
  }
  if (!sources.empty() && host::MergeDwfFiles(sources, target)) return true;
  if (host::HasEditor()) host::CurrentEditor().messageBox(kDwfMergeFailedMessage, kMergeFailedTitle, host::MessageButtons::Ok);
  return false;
}

}  // namespace tv::plot
