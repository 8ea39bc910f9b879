// The form "套图框设置" on the command line: its list, its actions and its two settings.
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>

#include "host/editor.h"
#include "settings/config.h"
#include "settings/folders.h"
#include "titleblock/frame_library.h"

namespace tv::titleblock {

namespace {

constexpr const char* kTitle = "套图框设置";
constexpr const char* kModes[2] = {"点取放置图框的两个角点", "选取需要套图框的图形"};
constexpr const char* kFolderTitle = "请选择图框文件所在文件夹...";
constexpr const char* kPrompt =
    "\n输入要修改的项目编号，录入(A)/删除(D)/重定义(R)/改名(N)/预览(P)/确定(O)/取消(C) <确定>: ";

std::string Trimmed(const std::string& s) {
  const auto first = s.find_first_not_of(" \t");
  return first == std::string::npos ? std::string() : s.substr(first, s.find_last_not_of(" \t") - first + 1);
}

void Report(const std::optional<FrameFailure>& failure) {
  if (failure) host::CurrentEditor().messageBox(failure->text, failure->caption, host::MessageButtons::Ok);
}

// What the form hides itself for: a selection in the drawing. Empty when nothing was chosen.
ObjectIdArray Pick(const std::string& prompt) {
  ObjectIdArray ids;
  if (host::CurrentEditor().select("_:$", {prompt, ""}, {}, {}, ids) != host::RTNORM) ids.clear();
  return ids;
}

// The small name form; nullopt on cancel or an empty name.
std::optional<std::string> AskName(const std::string& current) {
  std::string answer;
  const std::string prompt = current.empty() ? "\n图框名称: " : "\n图框名称 <" + current + ">: ";
  if (host::CurrentEditor().getString(prompt, answer) != host::RTNORM) return std::nullopt;
  answer = Trimmed(answer);
  if (answer.empty()) answer = current;
  if (answer.empty()) return std::nullopt;
  return answer;
}

std::optional<std::size_t> AskRow(const FrameLibrary& library) {
  if (library.entries().empty()) return std::nullopt;
  std::int32_t row = 0;
  const std::string prompt = "\n行号 (1 - " + std::to_string(library.entries().size()) + "): ";
  if (host::CurrentEditor().getInteger(prompt, row) != host::RTNORM) return std::nullopt;
  if (row < 1 || static_cast<std::size_t>(row) > library.entries().size()) {
    host::Print("\n无效的行号。");
    return std::nullopt;
  }
  return static_cast<std::size_t>(row - 1);
}

void PickAndAddFrame(FrameLibrary& library) {
  const ObjectIdArray ids = Pick("\n选择图框：");
  if (ids.empty()) return;
  if (const std::optional<std::string> name = AskName("")) Report(library.AddFrame(ids, *name));
}

void PickAndRedefineFrame(FrameLibrary& library, std::size_t index) {
  const ObjectIdArray ids = Pick("\n选择用来重新定义图框的图形：");
  if (!ids.empty()) Report(library.RedefineFrame(index, ids));
}

void AskAndRenameFrame(FrameLibrary& library, std::size_t index) {
  if (const std::optional<std::string> name = AskName(ShownFrameName(library.entries()[index])))
    Report(library.RenameFrame(index, *name));
}

// A terminal has no picture box: the preview goes to the scratch folder and its path is told.
void ShowFramePreview(const FrameLibrary& library) {
  std::error_code ec;
  const std::filesystem::path folder = settings::TempFolder();
  std::filesystem::create_directories(folder, ec);
  const std::string png = (folder / "frame_preview.png").string();
  if (library.DrawFramePreview(png)) host::Print("\n图框预览：" + png);
}

void Show(const FrameLibrary& library, int mode) {
  host::Editor& editor = host::CurrentEditor();
  std::vector<std::vector<std::string>> rows;
  for (const auto& r : library.rows()) rows.push_back({r.begin(), r.end()});
  editor.showList(kTitle, FrameListColumns(), rows);
  std::string text = std::string("\n") + kFrameListTip + "（录入(A)）";
  text += "\n套图框方式：";
  for (int i = 0; i < 2; ++i) text += "\n  " + std::to_string(i + 1) + ". " + (mode == i ? "(●) " : "(  ) ") + kModes[i];
  text += "\n  3. 图框所在文件夹：" + library.folder();
  host::Print(text);
}

}  // namespace

bool PutFrameSettingForm() {
  settings::Config& config = settings::GlobalConfig();
  int mode = config.put_frame_mode == 1 ? 1 : 0;
  FrameLibrary library(settings::FrameFolder());
  Show(library, mode);
  host::Editor& editor = host::CurrentEditor();
  for (;;) {
    std::string answer;
    if (editor.getString(kPrompt, answer) != host::RTNORM) return false;
    answer = Trimmed(answer);
    if (answer.empty() || answer == "O" || answer == "o" || answer == "确定") break;
    if (answer == "C" || answer == "c" || answer == "取消") return false;
    const char key = answer.size() == 1 ? static_cast<char>(std::toupper(static_cast<unsigned char>(answer[0]))) : '\0';
    if (answer == "1" || answer == "2") {
      mode = answer == "1" ? 0 : 1;
    } else if (answer == "3") {
      if (std::optional<std::string> chosen = editor.askFolder(kFolderTitle, library.folder())) library.ChooseFrameFolder(*chosen);
    } else if (key == 'A') {
      PickAndAddFrame(library);
    } else if (key == 'D' || key == 'R' || key == 'N' || key == 'P') {
      const std::optional<std::size_t> row = AskRow(library);
      if (!row) continue;
      library.selected = static_cast<int>(*row);
      if (key == 'D') Report(library.DeleteFrame(*row));
      else if (key == 'R') PickAndRedefineFrame(library, *row);
      else if (key == 'N') AskAndRenameFrame(library, *row);
      if (key == 'P' || key == 'R') ShowFramePreview(library);
    } else if (answer != "?" && answer != "？") {
      host::Print("\n无效的编号。");
      continue;
    }
    Show(library, mode);
  }
  config.put_frame_mode = mode;
  config.frame_folder = library.folder();
  settings::SaveConfig(config, true, false);
  return true;
}

}  // namespace tv::titleblock
