#pragma once
// Where the program lives and where it keeps the user's files.
#include <string>

namespace tv::settings {

// Computes the folders once, at load: the installation folder (TARVEX_HOME, else the folder of the
// running program), the per-user data folder (created) and the documents folder.
void ComputeFolders();

const std::string& InstallFolder();
// Per-user data: BPlot_Cfg.cfg, BPlot_TK.tk, Tarvex.Ini and the libraries. $XDG_DATA_HOME/Tarvex,
// else ~/.local/share/Tarvex.
const std::string& DataFolder();
// $XDG_DOCUMENTS_DIR, else ~/Documents when it exists, else the home folder.
const std::string& DocumentsFolder();

}  // namespace tv::settings
