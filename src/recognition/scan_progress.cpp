#include "host/editor.h"
#include "recognition/sheet_traversal.h"

namespace tv::recognition {

namespace {
int position = 0;
}  // namespace

void BeginScanProgress() {
  position = 0;
  host::CurrentEditor().progressBegin("计算图框............", 10);
}

void TickScanProgress() {
  // The range is a guess at the number of stages; a long scan just sits at the end.
  if (position < 10) ++position;
  host::CurrentEditor().progressSet(position);
}

void EndScanProgress() { host::CurrentEditor().progressEnd(); }

}  // namespace tv::recognition
