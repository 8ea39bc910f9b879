#include "console/host_folders.h"

#include <filesystem>
#include <system_error>

#include "settings/folders.h"

namespace tv::console {

namespace {
namespace fs = std::filesystem;

constexpr const char* kPlotters = "Plotters";
constexpr const char* kPlotterDescriptions = "Plotters/PMP Files";
constexpr const char* kPlotStyles = "Plot Styles";
}  // namespace

HostFolders CurrentHostFolders() {
  const settings::FolderSet folders = settings::FoldersFromEnvironment();
  return {folders.data + "/", folders.install + "/drivers"};
}

std::vector<std::pair<std::string, std::string>> HostFolderPreferences(const HostFolders& folders) {
  const std::string root = "%roamablerootfolder%/";
  return {{"ACADDRV", folders.driverFolder},
          {"PrinterConfigDir", root + kPlotters},
          {"PrinterDescDir", root + kPlotterDescriptions},
          {"PrinterStyleSheetDir", root + kPlotStyles}};
}

void CreateHostFolders(const HostFolders& folders) {
  std::error_code ec;
  fs::create_directories(folders.driverFolder, ec);
  for (const char* sub : {kPlotterDescriptions, kPlotStyles}) fs::create_directories(folders.userRoot + sub, ec);
}

}  // namespace tv::console
