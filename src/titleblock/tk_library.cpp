#include "titleblock/tk_library.h"

namespace tv::titleblock {

TK_Library& GlobalTkLibrary() {
  static TK_Library library;
  return library;
}

bool LoadTkFile(TK_Library& library, bool) {
  ClearLibrary(library);
  return true;
}

void ClearLibrary(TK_Library& library) { library.definitions.clear(); }

}  // namespace tv::titleblock
