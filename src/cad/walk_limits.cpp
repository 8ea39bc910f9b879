#include "cad/walk_limits.h"

#include <algorithm>
#include <atomic>
#include <cmath>

namespace tv::cad {

namespace {
std::atomic<bool> g_leftOut{false};
}

void NoteContentLeftOut() { g_leftOut.store(true, std::memory_order_relaxed); }

bool ContentLeftOut() { return g_leftOut.load(std::memory_order_relaxed); }

void ClearContentLeftOut() { g_leftOut.store(false, std::memory_order_relaxed); }

int DistinctCells(int count, double spacing, double size) {
  if (count <= 1) return 1;
  const double span = std::abs(spacing) * (count - 1);
  // Far below the rounding of coordinates of that size: the copies coincide.
  const double unit = std::max(std::abs(size), 1.0) * 1e-12;
  return std::isfinite(span) && span <= unit ? 1 : count;
}

}  // namespace tv::cad
