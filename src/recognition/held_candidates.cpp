#include "recognition/held_candidates_internal.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tv::recognition::internal {

namespace {

constexpr std::uint32_t kNoCell = std::numeric_limits<std::uint32_t>::max();

bool Finite(const Temp_Id& c) {
  return std::isfinite(c.extents.min.x) && std::isfinite(c.extents.min.y) && std::isfinite(c.extents.max.x) &&
         std::isfinite(c.extents.max.y);
}

}  // namespace

HeldCandidates::HeldCandidates(const TempIdArray& candidates, std::size_t from) : first_(from) {
  if (from >= candidates.size()) return;
  const std::size_t n = candidates.size() - from;
  holders_.assign(n, nullptr);
  columns_ = GridColumns(n);

  xCuts_ = QuantileCuts(n, columns_, [&](std::size_t i) { return candidates[from + i].extents.min.x; });
  yCuts_ = QuantileCuts(n, columns_, [&](std::size_t i) { return candidates[from + i].extents.min.y; });

  // Items go to their columns first and are then ordered by row within each column: a scatter
  // over every cell at once would miss the cache at nearly every item.
  std::vector<std::uint32_t> columnStart(columns_ + 1, 0);
  std::vector<std::uint32_t> rowOfItem(n, kNoCell);
  std::vector<std::uint32_t> columnOfItem(n, 0);
  for (std::size_t i = 0; i < n; ++i) {
    const Temp_Id& c = candidates[from + i];
    if (!Finite(c)) continue;
    columnOfItem[i] = static_cast<std::uint32_t>(columnOf(c.extents.min.x));
    rowOfItem[i] = static_cast<std::uint32_t>(rowOf(c.extents.min.y));
    ++columnStart[columnOfItem[i] + 1];
  }
  for (std::size_t k = 1; k <= columns_; ++k) columnStart[k] += columnStart[k - 1];
  items_.resize(columnStart[columns_]);
  std::vector<std::uint32_t> fill(columnStart.begin(), columnStart.end() - 1);
  for (std::size_t i = 0; i < n; ++i) {
    if (rowOfItem[i] == kNoCell) continue;
    const Extents3d& e = candidates[from + i].extents;
    items_[fill[columnOfItem[i]]++] = {e.min.x, e.min.y, e.max.x, e.max.y, static_cast<std::uint32_t>(i), rowOfItem[i]};
  }

  // Cells are column-major: a column's rows follow each other.
  cellStart_.assign(columns_ * columns_ + 1, 0);
  std::vector<Item> scratch;
  std::vector<std::uint32_t> rowFill(columns_ + 1);
  for (std::size_t col = 0; col < columns_; ++col) {
    const std::uint32_t begin = columnStart[col], end = columnStart[col + 1];
    std::fill(rowFill.begin(), rowFill.end(), 0);
    for (std::uint32_t k = begin; k < end; ++k) ++rowFill[items_[k].row + 1];
    for (std::size_t r = 1; r <= columns_; ++r) rowFill[r] += rowFill[r - 1];
    for (std::size_t r = 0; r < columns_; ++r) cellStart_[col * columns_ + r] = begin + rowFill[r];
    scratch.resize(end - begin);
    for (std::uint32_t k = begin; k < end; ++k) scratch[rowFill[items_[k].row]++] = items_[k];
    std::copy(scratch.begin(), scratch.end(), items_.begin() + begin);
  }
  cellStart_.back() = static_cast<std::uint32_t>(items_.size());
}

std::size_t HeldCandidates::columnOf(double x) const { return CellOf(xCuts_, x); }

std::size_t HeldCandidates::rowOf(double y) const { return CellOf(yCuts_, y); }

void HeldCandidates::markBy(Plot_Drawing1& sheet, std::size_t next) {
  if (items_.empty()) return;
  EnsureInnerBox(sheet);
  const auto& b = sheet.innerBox;
  if (!(b[0] < b[1] && b[2] < b[3])) return;
  const std::size_t start = next > first_ ? next - first_ : 0;
  // A candidate inside has its lower left corner inside, so it sits in a cell the box covers.
  const std::size_t c0 = columnOf(b[0]), c1 = columnOf(b[1]);
  const std::size_t r0 = rowOf(b[2]), r1 = rowOf(b[3]);
  for (std::size_t c = c0; c <= c1; ++c) {
    for (std::size_t k = cellStart_[c * columns_ + r0]; k < cellStart_[c * columns_ + r1 + 1]; ++k) {
      const Item& it = items_[k];
      if (it.index < start || holders_[it.index]) continue;
      if (b[0] < it.minX && it.minX < b[1] && b[2] < it.minY && it.minY < b[3] && b[0] < it.maxX && it.maxX < b[1] &&
          b[2] < it.maxY && it.maxY < b[3])
        holders_[it.index] = &sheet;
    }
  }
}

void HeldCandidates::markBy(const SheetList& sheets, std::size_t next) {
  for (const auto& sheet : sheets)
    if (sheet) markBy(*sheet, next);
}

}  // namespace tv::recognition::internal
