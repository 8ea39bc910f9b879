#pragma once
// The library of title-block definitions, BPlot_TK.tk in the data folder.
#include <cstdint>
#include <memory>
#include <vector>

namespace tv::titleblock {

struct TK_Customization {};

struct TK_Library {
  std::vector<std::unique_ptr<TK_Customization>> definitions;
  std::int32_t PaperNameStyle = 0;  // how lengthened paper names are written, 0 to 6
};

// The process-wide library, alive from load to unload.
TK_Library& GlobalTkLibrary();

// A missing file leaves the library empty; the tk format is not read yet.
bool LoadTkFile(TK_Library& library, bool askUser);
// Removes and deletes every definition.
void ClearLibrary(TK_Library& library);

}  // namespace tv::titleblock
