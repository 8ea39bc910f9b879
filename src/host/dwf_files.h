#pragma once
// DWF files the plot has written, joined into one.
#include <string>
#include <vector>

namespace tv::host {

// Joins the pages of the DWF files, in order, into one file at `target` (replaced whole). False,
// with the reason shown, when one of them can't be read or the target can't be written.
bool MergeDwfFiles(const std::vector<std::string>& sources, const std::string& target);

}  // namespace tv::host
