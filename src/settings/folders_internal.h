#pragma once
// Small path and text helpers shared by the folder files.
#include <string>
#include <string_view>
#include <vector>

namespace tv::settings::internal {

inline bool IsSeparator(char c) { return c == '/' || c == '\\'; }

// Drops trailing separators but keeps a lone root "/".
inline std::string WithoutTrailingSeparator(std::string path) {
  while (path.size() > 1 && IsSeparator(path.back())) path.pop_back();
  return path;
}

inline char AsciiLower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
inline char AsciiUpper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

inline std::string AsciiLower(std::string_view text) {
  std::string out(text);
  for (char& c : out) c = AsciiLower(c);
  return out;
}
inline std::string AsciiUpper(std::string_view text) {
  std::string out(text);
  for (char& c : out) c = AsciiUpper(c);
  return out;
}

// The parts between the ";", empty ones included.
inline std::vector<std::string> SplitAtSemicolons(std::string_view text) {
  std::vector<std::string> parts;
  std::size_t start = 0;
  for (;;) {
    const std::size_t end = text.find(';', start);
    parts.emplace_back(text.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start));
    if (end == std::string_view::npos) return parts;
    start = end + 1;
  }
}

}  // namespace tv::settings::internal
