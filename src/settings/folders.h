#pragma once
// Where the host and the program live, where the user's files and the host's plotter files are,
// and which folder the program may really write its temporary files to. Computed once at load.
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tv::settings {

// ---- the folders of this process ------------------------------------------------------------------

// Computes every folder below, once, at load and before anything else: the program's and the
// installation's folders, the data folder (created), the documents folder, the host's version and
// roots, the host's plotter folders (warning about each preference that names no existing folder)
// and the working folder. Nothing here stops the load.
void ComputeFolders();

// The running program's folder.
const std::string& HostFolder();
// TARVEX_HOME, else the folder of the running program.
const std::string& InstallFolder();
// Per-user data: BPlot_Cfg.cfg, BPlot_TK.tk, Tarvex.Ini and the libraries. $XDG_DATA_HOME/Tarvex,
// else ~/.local/share/Tarvex.
const std::string& DataFolder();
// $XDG_DOCUMENTS_DIR, else ~/Documents when it exists, else the home folder.
const std::string& DocumentsFolder();
// The host's version as major + minor / 10 (25.0); 0 when the host doesn't tell.
double HostVersion();
// The host's LOCALROOTPREFIX and ROAMABLEROOTPREFIX without a trailing separator.
const std::string& LocalRoot();
const std::string& RoamableRoot();

// The existing folders the host's preferences name, joined by ";" in their order; empty when the
// preference names none. Plotter configurations (PC3) go to the first usable one of
// PrinterConfigFolders, their media descriptions (PMP) to PrinterDescFolders, plot style tables
// (CTB) to PrinterStyleFolders.
const std::string& DriverFolders();         // ACADDRV
const std::string& PrinterConfigFolders();  // PrinterConfigDir
const std::string& PrinterDescFolders();    // PrinterDescDir
const std::string& PrinterStyleFolders();   // PrinterStyleSheetDir

// Which root took the working folder: 0 documents, 1 installation, 2 data; 3 when none was
// writable.
int WorkRootIndex();
// "Tarvex_Temp" under the root WorkRootIndex names; under the documents folder when none was
// writable.
std::string TempFolder();

// The folders as the environment gives them right now; nothing is created. ComputeFolders keeps
// these, and the console host roots its own preferences in the same places.
struct FolderSet {
  std::string host;
  std::string install;
  std::string data;
  std::string documents;
};
FolderSet FoldersFromEnvironment();

// ---- the steps, usable on their own -----------------------------------------------------------------

// The host's version from an ACADVER text: of its first four characters the first two are the
// major and the fourth the minor ("25.0s" gives 25.0, "24.3" 24.3). Characters that are no digits
// count as 0.
double HostVersionOf(std::string_view acadver);

// The host hands its preferences over in a buffer of this many characters; longer values are cut.
inline constexpr std::size_t kHostValueLength = 780;

// The entries of a host folder preference: the value cut to kHostValueLength characters, put
// into lower case (ASCII), the "%localrootfolder%" and "%roamablerootfolder%" tokens (and the
// separator after them) replaced by the roots with a separator, split at ";", each entry without
// a trailing separator. Windows separators ("\") become "/".
std::vector<std::string> FolderEntries(std::string_view value, std::string_view localRoot,
                                       std::string_view roamableRoot);
// Those entries that are existing folders, joined by ";" in their order. The value was put into
// lower case, so an entry is matched without regard to case, folder by folder, and is kept as it
// is spelt on disk.
std::string ExistingFolders(const std::vector<std::string>& entries);

// The first folder of a ";"-joined list that exists once it has been created, if need be; the
// first entry when none does.
std::string FirstUsableFolder(const std::string& folders);

// Proves by writing that `root` takes files: creates root/Tarvex_Temp, writes a fresh random
// number to its test.txt, reads it back and deletes the file. False on any failure.
bool WritableTempFolder(const std::string& root);

// ---- files and dialogs -------------------------------------------------------------------------------

// The names of the files in `folder` with the extension `extension` (without the dot), in any
// case, sorted; "x.pc3x" is no "pc3" file. `list` is replaced.
void ListFiles(const std::string& folder, const std::string& extension, std::vector<std::string>& list);
bool FolderExists(const std::string& path);
// Deletes a file (never a folder); false when there was none or it stays.
bool RemoveFile(const std::string& path);

// The host's file dialogs; false on cancel, `path` unchanged then. `extension` without the dot.
bool AskOpenPath(const std::string& title, const std::string& extension, std::string& path);
bool AskSavePath(const std::string& title, const std::string& defaultName, const std::string& extension,
                 std::string& path);
// `path` is the folder the dialog starts from and, on an answer, the folder chosen.
bool AskFolder(const std::string& title, std::string& path);

}  // namespace tv::settings
