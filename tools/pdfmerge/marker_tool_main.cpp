// The merging program that reads no text file: the count and the bookmarks come from the names of
// the marker files in the data folder's "Tarvex_Temp", the sheets are 1.pdf to n.pdf of the merge
// folder, and the result is 0.pdf there.
#include <iostream>

#include "merge_files.h"
#include "tool_folders.h"

int main() {
  const std::string markers = tv::pdfmerge::ToolDataFolder() + "/Tarvex_Temp";
  const std::string folder = tv::pdfmerge::EnvOr("TARVEX_MERGE_FOLDER", markers);
  std::vector<tv::pdfmerge::MergeEntry> entries;
  if (!tv::pdfmerge::ReadMarkers(markers, folder, entries)) {
    std::cerr << "未找到合并标记 " << markers << '\n';
    return 2;
  }
  std::string error;
  std::vector<std::string> skipped;
  const bool ok = tv::pdfmerge::MergeFiles(entries, folder + "/0.pdf", error, &skipped);
  for (const std::string& s : skipped) std::cerr << "未合并 " << s << '\n';
  if (!ok) {
    std::cerr << "合并失败：" << error << '\n';
    return 1;
  }
  return 0;
}
