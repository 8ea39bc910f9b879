#include "console/memory_tuning.h"

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace tv::console {

void KeepFreedMemory() {
#if defined(__GLIBC__)
  // A scan allocates arrays of hundreds of megabytes stage after stage; served from the heap,
  // the pages one stage frees are the pages the next one fills.
  mallopt(M_MMAP_THRESHOLD, 1 << 30);
  mallopt(M_TRIM_THRESHOLD, 1 << 30);
#endif
}

}  // namespace tv::console
