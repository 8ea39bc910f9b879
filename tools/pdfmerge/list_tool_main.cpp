// The merging program that reads the list "plot3.tm" of the data folder.
#include <fstream>
#include <iostream>
#include <sstream>

#include "merge_files.h"
#include "tool_folders.h"

int main() {
  const std::string listPath = tv::pdfmerge::ToolDataFolder() + "/plot3.tm";
  std::ifstream in(listPath, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  std::string target;
  std::vector<tv::pdfmerge::MergeEntry> entries;
  if (!in || !tv::pdfmerge::ParseMergeList(text.str(), target, entries)) {
    std::cerr << "无法读取合并清单 " << listPath << '\n';
    return 2;
  }
  std::string error;
  std::vector<std::string> skipped;
  const bool ok = tv::pdfmerge::MergeFiles(entries, target, error, &skipped);
  for (const std::string& s : skipped) std::cerr << "未合并 " << s << '\n';
  if (!ok) {
    std::cerr << "合并失败：" << error << '\n';
    return 1;
  }
  return 0;
}
