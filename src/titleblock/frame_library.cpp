#include "titleblock/frame_library.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <system_error>

#include "host/editor.h"
#include "settings/config.h"

namespace tv::titleblock {

namespace {

constexpr const char* kTitle = "套图框设置";
constexpr const char* kModes[2] = {"点取放置图框的两个角点", "选取需要套图框的图形"};
constexpr const char* kPrompt = "\n输入要修改的项目编号，确定(O)/取消(C) <确定>: ";

bool IsFrameFile(const std::filesystem::path& p) {
  std::string ext = p.extension().string();
  std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return ext == ".dwg" || ext == ".dxf";
}

void Show(const std::vector<FrameEntry>& frames, int mode, const std::string& folder) {
  std::string text = std::string("\n") + kTitle + "\n   序号   图    框";
  for (std::size_t i = 0; i < frames.size(); ++i) {
    char number[16];
    std::snprintf(number, sizeof number, "%2d", static_cast<int>(i + 1));
    text += "\n   " + std::string(number) + "     " + ShownFrameName(frames[i]);
  }
  if (frames.empty()) text += "\n   （文件夹中没有图框）";
  text += "\n套图框方式：";
  for (int i = 0; i < 2; ++i) text += "\n  " + std::to_string(i + 1) + ". " + (mode == i ? "(●) " : "(  ) ") + kModes[i];
  text += "\n  3. 图框所在文件夹：" + folder;
  host::Print(text);
}

}  // namespace

std::vector<FrameEntry> FillFrameList(const std::string& folder) {
  std::vector<FrameEntry> frames;
  std::error_code ec;
  for (std::filesystem::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
    std::error_code kind;
    if (!it->is_regular_file(kind) || !IsFrameFile(it->path())) continue;
    frames.push_back({it->path().string(), it->path().filename().string()});
  }
  std::sort(frames.begin(), frames.end(), [](const FrameEntry& a, const FrameEntry& b) { return a.file_name < b.file_name; });
  return frames;
}

std::string ShownFrameName(const FrameEntry& entry) {
  return entry.file_name.size() > 4 ? entry.file_name.substr(0, entry.file_name.size() - 4) : std::string();
}

bool PutFrameSettingForm() {
  settings::Config& config = settings::GlobalConfig();
  int mode = config.put_frame_mode == 1 ? 1 : 0;
  std::string folder = settings::FrameFolder();
  Show(FillFrameList(folder), mode, folder);
  host::Editor& editor = host::CurrentEditor();
  for (;;) {
    std::string answer;
    if (editor.getString(kPrompt, answer) != host::RTNORM) return false;
    const auto first = answer.find_first_not_of(" \t");
    answer = first == std::string::npos ? std::string() : answer.substr(first, answer.find_last_not_of(" \t") - first + 1);
    if (answer.empty() || answer == "O" || answer == "o" || answer == "确定") break;
    if (answer == "C" || answer == "c" || answer == "取消") return false;
    if (answer == "1" || answer == "2") {
      mode = answer == "1" ? 0 : 1;
    } else if (answer == "3") {
      // A new folder refills the list.
      if (std::optional<std::string> chosen = editor.askFolder("请选择图框文件所在文件夹...", folder)) folder = *chosen;
    } else if (answer != "?" && answer != "？") {
      host::Print("\n无效的编号。");
      continue;
    }
    Show(FillFrameList(folder), mode, folder);
  }
  config.put_frame_mode = mode;
  config.frame_folder = folder;
  settings::SaveConfig(config, true, false);
  return true;
}

}  // namespace tv::titleblock
