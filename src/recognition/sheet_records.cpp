#include "recognition/sheet_records.h"

#include "host/wrappers.h"
#include "recognition/sheet_geometry.h"

namespace tv::recognition {

bool listenForErase = true;

Plot_Drawing1::~Plot_Drawing1() { EraseMarker(markerId); }

void EraseMarker(ObjectId& markerId) {
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
