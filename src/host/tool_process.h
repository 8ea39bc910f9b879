#pragma once
// Outside programs the system starts and waits for (the PDF merging programs).
#include <string>
#include <utility>
#include <vector>

namespace tv::host {

// Starts `program` with no arguments in `workingFolder`, with `environment` added to this
// process's, and waits, without a limit, until it ends. False when it couldn't be started.
bool RunProgramAndWait(const std::string& program, const std::string& workingFolder,
                       const std::vector<std::pair<std::string, std::string>>& environment);

}  // namespace tv::host
