#pragma once
// The files a run must leave alone and the folders it works in alone.
#include <string>
#include <vector>

namespace tv::host {

// The files the open drawing was read from: the drawing itself, and the external references it
// loaded. A run may read them but never write, replace or delete them.
std::vector<std::string> DrawingFilesRead();
// True when `path` names one of those files, compared by file identity, so that another spelling
// of the path or a link to the file counts as well. A path where no file is counts as none.
bool IsDrawingFileRead(const std::string& path);

// A new, empty folder under `parent` that belongs to this run alone, so that a run can empty its
// own working files without touching another run's. Empty when none could be made.
std::string MakeRunFolder(const std::string& parent);

}  // namespace tv::host
