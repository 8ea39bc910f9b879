#pragma once
// Text replacing shared by the naming files of this folder; not part of its interface.
#include <string>
#include <string_view>

#include "titleblock/file_naming.h"

namespace tv::titleblock::internal {

// Every occurrence, left to right; what was put in is not searched again.
inline void ReplaceAll(std::string& text, std::string_view key, std::string_view by) {
  if (key.empty()) return;
  for (std::size_t at = text.find(key); at != std::string::npos; at = text.find(key, at + by.size()))
    text.replace(at, key.size(), by);
}

// The words for the paper in a prefix or suffix: the long word first, for it holds the short one.
inline void ReplacePaperWords(std::string& text, std::string_view paper, std::string_view paperSize) {
  ReplaceAll(text, kPaperSizeWord, paperSize);
  ReplaceAll(text, kPaperWord, paper);
}

}  // namespace tv::titleblock::internal
