#pragma once
// Where the console host keeps its own files: plotter configurations, their media descriptions and
// plot style tables under the user's data folder (its local and roamable root), drivers in the
// installation. Its preferences name these folders the way a CAD host's do, with the root tokens.
#include <string>
#include <utility>
#include <vector>

namespace tv::console {

struct HostFolders {
  std::string userRoot;  // LOCALROOTPREFIX and ROAMABLEROOTPREFIX, with a trailing "/"
  std::string driverFolder;
};

// From the environment as it is now: the data folder and the installation folder of the program.
HostFolders CurrentHostFolders();

// ACADDRV, PrinterConfigDir, PrinterDescDir and PrinterStyleSheetDir with their values.
std::vector<std::pair<std::string, std::string>> HostFolderPreferences(const HostFolders& folders);

// Creates the folders the preferences name; one that can't be made is left for the module's
// checks to report.
void CreateHostFolders(const HostFolders& folders);

}  // namespace tv::console
