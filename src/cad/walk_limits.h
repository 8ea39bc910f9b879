#pragma once
// Walks over block contents (extents, selection, explode, plotting) are bounded in nesting and
// work, so that a drawing built to multiply its content cannot hang a run. A walk that stops short
// notes it here; the run tells the user once, at its end.
#include <cstddef>

namespace tv::cad {

// Copies of one plot's MINSERT grids drawn at most; the rest are left out.
inline constexpr std::size_t kMaxGridCopies = 100'000;

void NoteContentLeftOut();
// True once any walk since the start (or the last clear) left content out.
bool ContentLeftOut();
void ClearContentLeftOut();

// The columns or rows of a MINSERT grid that stand apart: a grid whose whole span vanishes beside
// the size of the coordinates (spacing 1e-300, or 0) puts every copy on one point, and that is one
// copy. `count` below 1 is taken as 1.
int DistinctCells(int count, double spacing, double size);

}  // namespace tv::cad
