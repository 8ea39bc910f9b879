// Rendering an internal paper name in the naming style the user chose.
#include <cstdio>

#include "paper/paper.h"
#include "paper/paper_tables_internal.h"
#include "titleblock/tk_library.h"

namespace tv::paper {
namespace {

constexpr std::string_view kDivisionSlash = "\u2215";

void ReplaceAll(std::string& text, std::string_view key, std::string_view by) {
  if (key.empty()) return;
  for (std::size_t at = text.find(key); at != std::string::npos; at = text.find(key, at + by.size())) {
    text.replace(at, key.size(), by);
  }
}

// A position above 0: a name that starts with the key has no series before it.
bool FoundAfterStart(const std::string& text, std::string_view key) {
  const std::size_t at = text.find(key);
  return at != std::string::npos && at > 0;
}

std::string_view ReplacementFor(const internal::StyleRow& row, std::int32_t style, bool isA3) {
  switch (style) {
    case 1: return row.style1;
    case 3: return isA3 ? row.style3A3 : row.style3;
    case 4: return row.style4;
    case 6: return isA3 ? row.style3A3 : row.style6;
    default: return {};
  }
}

}  // namespace

std::int32_t CurrentPaperNameStyle() { return titleblock::GlobalTkLibrary().PaperNameStyle; }

void RenderPaperName(std::string& name, std::int32_t style) {
  ReplaceAll(name, "TV_", "");

  if (style == 5) {
    if (FoundAfterStart(name, "_Plus_")) {
      name.erase(name.find("_Plus_"));
      name += "+";
      return;
    }
  }
  if (!FoundAfterStart(name, "_Plus_1+")) {
    ReplaceAll(name, "_Plus", "加长");
    return;
  }

  if (style == 2) {
    for (const internal::StyleRow& row : internal::NameStyleRows()) {
      const std::size_t at = name.find(row.key);
      if (at == std::string::npos) continue;
      name.erase(at, row.key.size());
      name.insert(0, row.style2);
      return;
    }
    return;
  }

  if (style == 1 || style == 3 || style == 4 || style == 6) {
    const bool isA3 = name.find("A3") != std::string::npos;
    for (const internal::StyleRow& row : internal::NameStyleRows()) {
      const std::string_view by = ReplacementFor(row, style, isA3);
      if (style == 4 && by.empty()) continue;  // that style has no row for the odd eighths above 7/8
      ReplaceAll(name, row.key, by);
    }
    return;
  }

  // Style 0, and any value out of range: the fraction as it is, with a division slash.
  ReplaceAll(name, "_Plus_1", "");
  ReplaceAll(name, "-", kDivisionSlash);
}

void RenderPaperName(std::string& name) { RenderPaperName(name, CurrentPaperNameStyle()); }

std::string PaperDisplayName(const MyPaper& paper, bool withSize, bool swapSides) {
  std::string name = PaperNameOf(paper);
  RenderPaperName(name);
  if (!withSize) return name;
  const std::int32_t first = swapSides ? paper.width : paper.length;
  const std::int32_t second = swapSides ? paper.length : paper.width;
  const std::string size = std::to_string(first) + "x" + std::to_string(second);
  if (name.find('A') == std::string::npos && name.find('B') == std::string::npos) return size;
  return name + " (" + size + ")";
}

}  // namespace tv::paper
