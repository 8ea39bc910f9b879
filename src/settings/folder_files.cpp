// Files in folders, and the host's file dialogs.
#include <algorithm>
#include <filesystem>
#include <system_error>

#include "host/editor.h"
#include "settings/folders.h"
#include "settings/folders_internal.h"

namespace tv::settings {

namespace {
namespace fs = std::filesystem;
}  // namespace

void ListFiles(const std::string& folder, const std::string& extension, std::vector<std::string>& list) {
  list.clear();
  // Only the exact extension counts: "a.pc3x" and "a.pc3.bak" are no "pc3" files.
  const std::string ending = internal::AsciiUpper("." + extension);
  std::error_code ec;
  for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
    if (!it->is_regular_file(ec)) continue;
    const std::string name = it->path().filename().string();
    if (internal::AsciiUpper(name).ends_with(ending)) list.push_back(name);
  }
  std::sort(list.begin(), list.end());
}

bool FolderExists(const std::string& path) {
  std::error_code ec;
  return !path.empty() && fs::is_directory(path, ec);
}

bool RemoveFile(const std::string& path) {
  std::error_code ec;
  if (path.empty() || fs::is_directory(path, ec)) return false;
  return fs::remove(path, ec) && !ec;
}

bool AskOpenPath(const std::string& title, const std::string& extension, std::string& path) {
  auto answer = host::CurrentEditor().askOpenPath(title, extension);
  if (!answer) return false;
  path = std::move(*answer);
  return true;
}

bool AskSavePath(const std::string& title, const std::string& defaultName, const std::string& extension,
                 std::string& path) {
  auto answer = host::CurrentEditor().askSavePath(title, defaultName, extension);
  if (!answer) return false;
  path = std::move(*answer);
  return true;
}

bool AskFolder(const std::string& title, std::string& path) {
  auto answer = host::CurrentEditor().askFolder(title, path);
  if (!answer) return false;
  path = std::move(*answer);
  return true;
}

}  // namespace tv::settings
