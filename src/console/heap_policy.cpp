#include "console/heap_policy.h"

#include <cstddef>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace tv::console {

void KeepHeapForBatch() {
#if defined(__GLIBC__)
  // By default every block of more than 128 KB is a mapping of its own, returned on free, and the
  // heap's top is handed back as soon as it is free. A scan's lists would then fault in and zero
  // new pages for every list, while the reader's buffers have just been let go; at two million
  // entities that is a tenth of the scan. The pad grows the heap in steps fewer system calls take.
  constexpr int kNoLimit = 1 << 30;
  mallopt(M_MMAP_THRESHOLD, kNoLimit);
  mallopt(M_TRIM_THRESHOLD, kNoLimit);
  mallopt(M_TOP_PAD, 64 << 20);
#endif
}

}  // namespace tv::console
