#include "titleblock/tk_library.h"

namespace tv::titleblock {

namespace {
constexpr double kAreaMinimum = 0.00001;
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
    if (d->block_name == blockName) return d.get();
  return nullptr;
}

void ClearLibrary(TK_Library& library) {
  library.definitions.clear();
  library.index_col_widths.clear();
  library.index_columns.clear();
}

}  // namespace tv::titleblock
