#pragma once
// Allocator settings for a process that reads and scans drawings of millions of entities.

namespace tv::console {

// Keeps freed memory in the process for the next stage instead of handing large blocks back to
// the system and faulting fresh pages in again a moment later. Does nothing where the C library
// offers no such settings.
void KeepFreedMemory();

}  // namespace tv::console
