// The files of a run on this platform: the drawing the console host opened and the files its
// external references were loaded from; private folders come from mkdtemp.
#include "host/run_files.h"

#include <stdlib.h>

#include <filesystem>
#include <system_error>

#include "host/cad_binding.h"
#include "host/editor.h"

namespace tv::host {

namespace fs = std::filesystem;

std::vector<std::string> DrawingFilesRead() {
  std::vector<std::string> files;
  if (!HasEditor()) return files;
  if (std::string path = CurrentEditor().documentPath(); !path.empty()) files.push_back(std::move(path));
  if (const cad::Database* db = WorkingDatabase())
    files.insert(files.end(), db->externalFiles.begin(), db->externalFiles.end());
  return files;
}

bool IsDrawingFileRead(const std::string& path) {
  std::error_code ec;
  if (!fs::exists(path, ec)) return false;
  for (const std::string& drawing : DrawingFilesRead())
    if (fs::equivalent(path, drawing, ec)) return true;
  return false;
}

std::string MakeRunFolder(const std::string& parent) {
  std::string pattern = (fs::path(parent) / "run-XXXXXX").string();
  if (!::mkdtemp(pattern.data())) return {};
  return pattern;
}

}  // namespace tv::host
