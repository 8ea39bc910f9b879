#include "settings/folders.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace tv::settings {

namespace {
namespace fs = std::filesystem;

struct Folders {
  std::string install;
  std::string data;
  std::string documents;
};
Folders g_folders;

std::string Env(const char* name) {
  const char* v = std::getenv(name);
  return v ? std::string(v) : std::string();
}

std::string WithoutTrailingSlash(std::string path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

std::string ProgramFolder() {
  std::error_code ec;
  fs::path exe = fs::read_symlink("/proc/self/exe", ec);
  if (ec) return fs::current_path(ec).string();
  return exe.parent_path().string();
}
}  // namespace

void ComputeFolders() {
  std::string home = Env("HOME");
  if (home.empty()) home = "/tmp";

  std::string install = Env("TARVEX_HOME");
  g_folders.install = WithoutTrailingSlash(install.empty() ? ProgramFolder() : install);

  std::string dataRoot = Env("XDG_DATA_HOME");
  if (dataRoot.empty()) dataRoot = home + "/.local/share";
  g_folders.data = WithoutTrailingSlash(dataRoot) + "/Tarvex";
  std::error_code ec;
  fs::create_directories(g_folders.data, ec);  // a failure shows later, where a file is written

  std::string documents = Env("XDG_DOCUMENTS_DIR");
  if (documents.empty()) {
    documents = home + "/Documents";
    if (!fs::is_directory(documents, ec)) documents = home;
  }
  g_folders.documents = WithoutTrailingSlash(documents);
}

const std::string& InstallFolder() { return g_folders.install; }
const std::string& DataFolder() { return g_folders.data; }
const std::string& DocumentsFolder() { return g_folders.documents; }

}  // namespace tv::settings
