#pragma once
// Memory for the records of a drawing database.
#include <cstddef>

namespace tv::cad {

// A drawing holds hundreds of thousands of small records of a few sizes. They are carved from
// slabs, with a free list per size class, so a record costs its own size and no more: the general
// allocator adds a header to every block and rounds it up, a tenth of a loaded drawing. Freed
// records are kept for the next record of their class (the next drawing of the run).
// Thread-safe. Sizes above the largest class go to the general allocator.
void* AllocateRecord(std::size_t size);
void FreeRecord(void* p, std::size_t size) noexcept;

}  // namespace tv::cad
