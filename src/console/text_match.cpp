#include "console/text_match.h"

#include <cstddef>

#include "cad/utf8.h"

namespace tv::console {

namespace {

char32_t FoldCase(char32_t c) { return c >= U'a' && c <= U'z' ? c - U'a' + U'A' : c; }

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f'; }

// One pattern element: a literal code point, or a wildcard.
struct PatternChar {
  enum class Kind { Literal, AnyRun, AnyOne } kind = Kind::Literal;
  char32_t cp = 0;
};

std::vector<char32_t> CodePoints(std::string_view s) {
  std::vector<char32_t> cps;
  for (std::size_t i = 0; i < s.size();) cps.push_back(FoldCase(cad::NextCodePoint(s, i)));
  return cps;
}

// Classic two-pointer glob matching with backtracking to the last "*": linear in practice and
// never worse than quadratic, whatever the pattern.
bool GlobMatch(const std::vector<PatternChar>& pattern, const std::vector<char32_t>& text) {
  std::size_t p = 0, t = 0;
  std::size_t starP = std::string_view::npos, starT = 0;
  while (t < text.size()) {
    if (p < pattern.size() && pattern[p].kind == PatternChar::Kind::AnyRun) {
      starP = p++;
      starT = t;
    } else if (p < pattern.size() &&
               (pattern[p].kind == PatternChar::Kind::AnyOne || pattern[p].cp == text[t])) {
      ++p;
      ++t;
    } else if (starP != std::string_view::npos) {
      p = starP + 1;
      t = ++starT;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p].kind == PatternChar::Kind::AnyRun) ++p;
  return p == pattern.size();
}

}  // namespace

std::string AsciiUpper(std::string_view text) {
  std::string s(text);
  for (char& c : s)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return s;
}

bool EqualsNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    char x = a[i], y = b[i];
    if (x >= 'a' && x <= 'z') x = static_cast<char>(x - 'a' + 'A');
    if (y >= 'a' && y <= 'z') y = static_cast<char>(y - 'a' + 'A');
    if (x != y) return false;
  }
  return true;
}

bool WildcardMatch(std::string_view pattern, std::string_view text) {
  const std::vector<char32_t> subject = CodePoints(text);
  const std::vector<char32_t> cps = CodePoints(pattern);
  // Split into alternatives at commas that are not escaped.
  std::vector<PatternChar> alt;
  bool negated = false;
  auto finish = [&]() {
    bool m = GlobMatch(alt, subject);
    alt.clear();
    return negated ? !m : m;
  };
  bool atStart = true;
  for (std::size_t i = 0; i < cps.size(); ++i) {
    char32_t c = cps[i];
    if (atStart) {
      negated = c == U'~';
      atStart = false;
      if (negated) continue;
    }
    if (c == U',') {
      if (finish()) return true;
      atStart = true;
      negated = false;
      continue;
    }
    if (c == U'`' && i + 1 < cps.size()) {
      alt.push_back({PatternChar::Kind::Literal, cps[++i]});
    } else if (c == U'*') {
      alt.push_back({PatternChar::Kind::AnyRun, 0});
    } else if (c == U'?') {
      alt.push_back({PatternChar::Kind::AnyOne, 0});
    } else {
      alt.push_back({PatternChar::Kind::Literal, c});
    }
  }
  return finish();
}

std::vector<std::string> SplitBlanks(std::string_view line) {
  std::vector<std::string> words;
  std::size_t i = 0;
  while (i < line.size()) {
    while (i < line.size() && IsBlank(line[i])) ++i;
    std::size_t start = i;
    while (i < line.size() && !IsBlank(line[i])) ++i;
    if (i > start) words.emplace_back(line.substr(start, i - start));
  }
  return words;
}

std::string_view TrimBlanks(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

}  // namespace tv::console
