#pragma once
// How the process's allocator treats memory in a batch run.

namespace tv::console {

// One run reads a drawing of up to millions of entities and then builds large temporary lists
// over it. Large blocks are taken from the heap rather than from fresh mappings, and freed
// memory stays with the process for the next list. Call once, before anything is allocated.
void KeepHeapForBatch();

}  // namespace tv::console
