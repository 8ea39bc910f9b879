#pragma once
// Symbol names compare without regard to ASCII case, as CAD programs compare them; not part of the API.
#include <cstddef>
#include <string_view>

namespace tv::cad {

inline char AsciiUpper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

inline bool EqualsNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  if (a == b) return true;  // names are mostly spelled alike
  for (std::size_t i = 0; i < a.size(); ++i)
    if (AsciiUpper(a[i]) != AsciiUpper(b[i])) return false;
  return true;
}

inline bool StartsWithNoCase(std::string_view s, std::string_view prefix) {
  return s.size() >= prefix.size() && EqualsNoCase(s.substr(0, prefix.size()), prefix);
}

}  // namespace tv::cad
