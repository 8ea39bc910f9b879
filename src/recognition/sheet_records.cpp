#include "recognition/sheet_records.h"

#include "host/wrappers.h"

namespace tv::recognition {

bool listenForErase = true;

Plot_Drawing1::~Plot_Drawing1() {
  if (markerId.isNull()) return;
  listenForErase = false;
  host::EraseEntity(markerId);
  markerId = ObjectId{};
  listenForErase = true;
}

void SheetJob::Clear() {
  keptSheets.clear();
  allSheets.clear();
  largestSizeX = 0;
  largestSizeY = 0;
}

}  // namespace tv::recognition
