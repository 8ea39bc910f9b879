#pragma once
// What a command changed in a drawing: the records of the DXF file before and after, by handle.
#include <map>
#include <set>
#include <sstream>
#include <string>

#include "../support/run_program.h"

namespace tv::test_support {

// Every record of a DXF file named by a handle (group 5, or 105 for dimension styles, right after
// its 0 group), as its text.
inline std::map<std::string, std::string> RecordsByHandle(const std::string& path) {
  std::istringstream in(ReadFile(path));
  std::map<std::string, std::string> records;
  std::string code, value, text, handle;
  int groups = 0;
  const auto close = [&] {
    if (!handle.empty()) records[handle] = text;
    text.clear();
    handle.clear();
  };
  const auto trim = [](std::string s) {
    const auto first = s.find_first_not_of(" \r");
    return first == std::string::npos ? std::string() : s.substr(first, s.find_last_not_of(" \r") - first + 1);
  };
  while (std::getline(in, code) && std::getline(in, value)) {
    code = trim(code);
    if (!value.empty() && value.back() == '\r') value.pop_back();
    if (code == "0") {
      close();
      groups = 0;
    }
    if (++groups == 2 && (code == "5" || code == "105")) handle = value;
    text += code + "=" + value + "\n";
  }
  close();
  return records;
}

// Handles of `before` whose record `after` lacks or holds otherwise.
inline std::set<std::string> ChangedHandles(const std::map<std::string, std::string>& before,
                                            const std::map<std::string, std::string>& after) {
  std::set<std::string> changed;
  for (const auto& [handle, text] : before) {
    const auto it = after.find(handle);
    if (it == after.end() || it->second != text) changed.insert(handle);
  }
  return changed;
}

// Handles that `after` has and `before` hasn't.
inline std::set<std::string> AddedHandles(const std::map<std::string, std::string>& before,
                                          const std::map<std::string, std::string>& after) {
  std::set<std::string> added;
  for (const auto& [handle, text] : after)
    if (!before.count(handle)) added.insert(handle);
  return added;
}

}  // namespace tv::test_support
