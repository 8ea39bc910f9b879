// DWF merging on this platform: the plot engine's DWFx packages, joined page by page.
#include "host/dwf_files.h"
#include "host/editor.h"
#include "render/xps_package.h"

namespace tv::host {

bool MergeDwfFiles(const std::vector<std::string>& sources, const std::string& target) {
  std::string error;
  if (render::MergeXpsPackages(sources, target, error)) return true;
  if (HasEditor()) CurrentEditor().print("\n文件 " + target + " 无法合并：" + error);
  return false;
}

}  // namespace tv::host
