// PDF edits on this platform: the plot engine's qpdf pass.
#include "host/editor.h"
#include "host/pdf_files.h"
#include "render/pdf_pages.h"

namespace tv::host {

bool RotatePdfPages(const std::string& path, int degrees) {
  std::string error;
  if (render::RotatePdfPages(path, degrees, error)) return true;
  if (HasEditor()) CurrentEditor().print("\n文件 " + path + " 的页面无法旋转：" + error);
  return false;
}

bool SetFirstPageRotation(const std::string& path, int degrees) {
  std::string error;
  if (render::SetFirstPageRotation(path, degrees, error)) return true;
  if (HasEditor()) CurrentEditor().print("\n文件 " + path + " 的页面无法旋转：" + error);
  return false;
}

}  // namespace tv::host
