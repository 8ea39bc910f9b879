#pragma once
// Plain-text tables for the terminal: columns padded by display width, so that Chinese names
// (two cells wide) line up with Latin ones.
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace tv::console {

// Terminal cells taken by UTF-8 text: East Asian wide and full-width characters count 2.
std::size_t DisplayWidth(std::string_view utf8);

// Text safe to print on one terminal line: control characters become '?'.
std::string Printable(std::string_view text);
// The same for a message that may span lines: its line breaks become blanks.
std::string OneLine(std::string message);

class TextTable {
 public:
  void addRow(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }
  bool empty() const { return rows_.empty(); }
  // Each row on its own line, after `indent`; columns two spaces apart, the last one unpadded.
  void print(std::ostream& out, std::string_view indent = "  ") const;

 private:
  std::vector<std::vector<std::string>> rows_;
};

}  // namespace tv::console
