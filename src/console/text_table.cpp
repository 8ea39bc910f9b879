#include "console/text_table.h"

#include <algorithm>

#include "cad/utf8.h"

namespace tv::console {

namespace {

bool IsWide(char32_t cp) {
  return (cp >= 0x1100 && cp <= 0x115F) || (cp >= 0x2E80 && cp <= 0x303E) || (cp >= 0x3041 && cp <= 0x33FF) ||
         (cp >= 0x3400 && cp <= 0x4DBF) || (cp >= 0x4E00 && cp <= 0x9FFF) || (cp >= 0xA000 && cp <= 0xA4CF) ||
         (cp >= 0xAC00 && cp <= 0xD7A3) || (cp >= 0xF900 && cp <= 0xFAFF) || (cp >= 0xFE30 && cp <= 0xFE4F) ||
         (cp >= 0xFF00 && cp <= 0xFF60) || (cp >= 0xFFE0 && cp <= 0xFFE6) || (cp >= 0x20000 && cp <= 0x3FFFD);
}

}  // namespace

std::size_t DisplayWidth(std::string_view s) {
  std::size_t width = 0;
  for (std::size_t i = 0; i < s.size();) width += IsWide(cad::NextCodePoint(s, i)) ? 2 : 1;
  return width;
}

std::string Printable(std::string_view text) {
  std::string out(text);
  for (char& c : out)
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = '?';
  return out;
}

void TextTable::print(std::ostream& out, std::string_view indent) const {
  std::vector<std::size_t> widths;
  for (const auto& row : rows_) {
    if (widths.size() < row.size()) widths.resize(row.size(), 0);
    for (std::size_t c = 0; c < row.size(); ++c) widths[c] = std::max(widths[c], DisplayWidth(row[c]));
  }
  for (const auto& row : rows_) {
    std::string line(indent);
    for (std::size_t c = 0; c < row.size(); ++c) {
      line += row[c];
      if (c + 1 < row.size()) line.append(widths[c] - DisplayWidth(row[c]) + 2, ' ');
    }
    while (!line.empty() && line.back() == ' ') line.pop_back();
    out << line << '\n';
  }
}

std::string OneLine(std::string message) {
  for (char& c : message)
    if (c == '\n' || c == '\r') c = ' ';
  return Printable(message);
}

}  // namespace tv::console
