// Help, about and uninstall: the commands that only tell the user something.
#include <cstdio>
#include <filesystem>
#include <string>

#include "host/command_bodies.h"
#include "host/editor.h"
#include "host/version.h"
#include "settings/folders.h"

namespace tv::host {

namespace {
constexpr std::string_view kCaption = "Tarvex打印";

std::string Format(const char* format, const std::string& value) {
  const int n = std::snprintf(nullptr, 0, format, value.c_str());
  std::string out(static_cast<std::size_t>(n > 0 ? n : 0), '\0');
  std::snprintf(out.data(), out.size() + 1, format, value.c_str());
  return out;
}
}  // namespace

void TV_BatchPlot_10() {
  const std::string path = settings::InstallFolder() + "/BPHelp.pdf";
  std::error_code ec;
  if (!std::filesystem::is_regular_file(path, ec)) {
    CurrentEditor().messageBox(Format("找不到帮助文件：\n\n%s", path), kCaption, MessageButtons::Ok);
    return;
  }
  if (!CurrentEditor().shellOpen(path))
    CurrentEditor().messageBox(Format("无法打开帮助文件：\n\n%s", path), kCaption, MessageButtons::Ok);
}

void TV_BatchPlot_11() {
  CurrentEditor().messageBox("Tarvex打印 —— 批量打印\n版本 " + std::string(kProductVersion), "关于", MessageButtons::Ok);
}

void TV_BatchPlot_12() {
  CurrentEditor().messageBox(Format("本软件为绿色软件，关闭CAD后将以下安装文件夹删除即可：\n\n%s", settings::InstallFolder()),
                             kCaption, MessageButtons::Ok);
}

}  // namespace tv::host
