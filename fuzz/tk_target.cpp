#include "fuzz/fuzz_targets.h"
#include "fuzz/scratch_file.h"
#include "titleblock/tk_library.h"

namespace tv::fuzz {

void RunTkLibrary(std::string_view bytes) {
  const std::string path = WriteScratchFile("BPlot_TK.tk", bytes);
  if (path.empty()) return;
  titleblock::InspectTkFile(path);
  titleblock::TK_Library library;
  if (!titleblock::LoadTkFileFrom(library, path, false)) return;
  // What was read must write back and read again.
  const std::string again = WriteScratchFile("BPlot_TK_again.tk", "");
  if (again.empty() || !titleblock::SaveTkFileTo(library, again, false)) return;
  titleblock::TK_Library reread;
  titleblock::LoadTkFileFrom(reread, again, false);
}

}  // namespace tv::fuzz
