#include "titleblock/tk_library.h"

#include <algorithm>
#include <cctype>
#include <string_view>

namespace tv::titleblock {

namespace {
constexpr double kAreaMinimum = 0.00001;

// Block names compare as CAD compares them: an R14 drawing spells every block name in capitals.
bool SameBlockName(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return std::toupper(static_cast<unsigned char>(x)) == std::toupper(static_cast<unsigned char>(y));
         });
}
}  // namespace

bool IsAreaSet(const Extents3d& area) {
  return area.max.x - area.min.x > kAreaMinimum && area.max.y - area.min.y > kAreaMinimum;
}

TK_Library& GlobalTkLibrary() {
  static TK_Library library;
  return library;
}

TK_Customization* FindDefinition(const TK_Library& library, const std::string& blockName) {
  for (const auto& d : library.definitions)
    if (SameBlockName(d->block_name, blockName)) return d.get();
  return nullptr;
}

void ClearLibrary(TK_Library& library) {
  library.definitions.clear();
  library.index_col_widths.clear();
  library.index_columns.clear();
}

}  // namespace tv::titleblock
