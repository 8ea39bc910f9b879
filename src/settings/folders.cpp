#include "settings/folders.h"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "host/editor.h"
#include "settings/folders_internal.h"

namespace tv::settings {

namespace {
namespace fs = std::filesystem;
using internal::WithoutTrailingSeparator;

constexpr std::string_view kWarningTitle = "CAD设置错误提醒";

struct Folders {
  FolderSet paths;
  double hostVersion = 0;
  std::string localRoot;
  std::string roamableRoot;
  std::string driverFolders;
  std::string printerConfigFolders;
  std::string printerDescFolders;
  std::string printerStyleFolders;
  int workRootIndex = 3;
};
Folders g_folders;

// A host preference naming plotter folders, where its existing folders go and what is said when
// there are none.
struct FolderPreference {
  std::string_view name;
  std::string Folders::*target;
  std::string_view warning;
};
constexpr std::array<FolderPreference, 4> kFolderPreferences{{
    {"ACADDRV", &Folders::driverFolders, "CAD驱动文件路径无效 !"},
    {"PrinterConfigDir", &Folders::printerConfigFolders, "CAD打印机文件路径无效 !"},
    {"PrinterDescDir", &Folders::printerDescFolders, "CAD打印机配置文件路径无效 !"},
    {"PrinterStyleSheetDir", &Folders::printerStyleFolders, "CAD打印样式文件路径无效 !"},
}};

std::string Env(const char* name) {
  const char* v = std::getenv(name);
  return v ? std::string(v) : std::string();
}

std::string ProgramFolder() {
  std::error_code ec;
  fs::path exe = fs::read_symlink("/proc/self/exe", ec);
  if (ec) return fs::current_path(ec).string();
  return exe.parent_path().string();
}

std::string HostText(std::string_view variable) { return host::AsText(host::GetVar(variable)).value_or(""); }

}  // namespace

FolderSet FoldersFromEnvironment() {
  std::string home = Env("HOME");
  if (home.empty()) home = "/tmp";

  FolderSet f;
  f.host = ProgramFolder();
  const std::string install = Env("TARVEX_HOME");
  f.install = WithoutTrailingSeparator(install.empty() ? f.host : install);

  std::string dataRoot = Env("XDG_DATA_HOME");
  if (dataRoot.empty()) dataRoot = home + "/.local/share";
  f.data = WithoutTrailingSeparator(dataRoot) + "/Tarvex";
  // A value put together by hand may double a separator; the folder is compared as text later.
  for (std::size_t at = f.data.find("//"); at != std::string::npos; at = f.data.find("//", at)) f.data.erase(at, 1);

  std::string documents = Env("XDG_DOCUMENTS_DIR");
  if (documents.empty()) {
    documents = home + "/Documents";
    std::error_code ec;
    if (!fs::is_directory(documents, ec)) documents = home;
  }
  f.documents = WithoutTrailingSeparator(documents);
  return f;
}

void ComputeFolders() {
  Folders f;
  f.paths = FoldersFromEnvironment();
  std::error_code ec;
  fs::create_directories(f.paths.data, ec);  // a failure shows later, where a file is written

  f.hostVersion = HostVersionOf(HostText("ACADVER"));
  f.localRoot = WithoutTrailingSeparator(HostText("LOCALROOTPREFIX"));
  f.roamableRoot = WithoutTrailingSeparator(HostText("ROAMABLEROOTPREFIX"));

  // A host that makes its per-user folders on demand makes them now, so that a fresh
  // installation passes the checks below.
  host::CurrentEditor().prepareUserFolders();
  for (const FolderPreference& preference : kFolderPreferences) {
    const std::string value = host::CurrentEditor().getEnv(preference.name).value_or("");
    f.*preference.target = ExistingFolders(FolderEntries(value, f.localRoot, f.roamableRoot));
    if ((f.*preference.target).empty())
      host::CurrentEditor().messageBox(preference.warning, kWarningTitle, host::MessageButtons::Ok);
  }

  const std::array<const std::string*, 3> roots{&f.paths.documents, &f.paths.install, &f.paths.data};
  f.workRootIndex = static_cast<int>(roots.size());
  for (std::size_t i = 0; i < roots.size(); ++i)
    if (WritableTempFolder(*roots[i])) {
      f.workRootIndex = static_cast<int>(i);
      break;
    }

  g_folders = std::move(f);
}

const std::string& HostFolder() { return g_folders.paths.host; }
const std::string& InstallFolder() { return g_folders.paths.install; }
const std::string& DataFolder() { return g_folders.paths.data; }
const std::string& DocumentsFolder() { return g_folders.paths.documents; }
double HostVersion() { return g_folders.hostVersion; }
const std::string& LocalRoot() { return g_folders.localRoot; }
const std::string& RoamableRoot() { return g_folders.roamableRoot; }
const std::string& DriverFolders() { return g_folders.driverFolders; }
const std::string& PrinterConfigFolders() { return g_folders.printerConfigFolders; }
const std::string& PrinterDescFolders() { return g_folders.printerDescFolders; }
const std::string& PrinterStyleFolders() { return g_folders.printerStyleFolders; }
int WorkRootIndex() { return g_folders.workRootIndex; }

std::string TempFolder() {
  switch (g_folders.workRootIndex) {
    case 1:
      return g_folders.paths.install + "/Tarvex_Temp";
    case 2:
      return g_folders.paths.data + "/Tarvex_Temp";
    default:
      return g_folders.paths.documents + "/Tarvex_Temp";
  }
}

}  // namespace tv::settings
