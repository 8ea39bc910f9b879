#include <algorithm>
#include <cmath>
#include <numeric>

#include "recognition/box_grid_internal.h"

namespace tv::recognition::internal {

namespace {

// Cells per box on average before the grid gives up: a few boxes may cover it all.
constexpr std::size_t kCellsPerBox = 16;
constexpr std::size_t kMaxColumns = 512;

bool Finite(const Box& b) {
  return std::isfinite(b.minX) && std::isfinite(b.minY) && std::isfinite(b.maxX) && std::isfinite(b.maxY);
}


}  // namespace

std::size_t GridColumns(std::size_t n) {
  return std::clamp<std::size_t>(static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(n)))), 1,
                                 kMaxColumns);
}

std::vector<double> CutsOf(std::vector<double>& sample, std::size_t columns) {
  std::vector<double> cuts;
  if (sample.empty()) return cuts;
  std::sort(sample.begin(), sample.end());
  cuts.reserve(columns - 1);
  for (std::size_t k = 1; k < columns; ++k) cuts.push_back(sample[k * sample.size() / columns]);
  return cuts;
}

std::size_t BoxGrid::columnOf(double x) const { return CellOf(xCuts_, x); }

std::size_t BoxGrid::rowOf(double y) const { return CellOf(yCuts_, y); }

bool BoxGrid::build(const std::vector<Box>& boxes) {
  *this = BoxGrid{};
  if (!std::all_of(boxes.begin(), boxes.end(), Finite)) return false;

  const std::size_t n = boxes.size();
  columns_ = GridColumns(n);
  // The lines stand at quantiles of the box centres.
  xCuts_ = QuantileCuts(n, columns_, [&](std::size_t i) { return std::midpoint(boxes[i].minX, boxes[i].maxX); });
  yCuts_ = QuantileCuts(n, columns_, [&](std::size_t i) { return std::midpoint(boxes[i].minY, boxes[i].maxY); });

  // Two passes, counting then filling, so each cell's indices lie together and ascend. The cell
  // ranges of the first pass serve the second.
  struct Span {
    std::uint32_t c0, c1, r0, r1;
  };
  std::vector<Span> spans(n);
  const std::size_t cells = columns_ * columns_;
  const std::size_t limit = kCellsPerBox * n + cells;
  std::vector<std::uint32_t> count(cells + 1, 0);
  std::size_t total = 0;
  for (std::size_t i = 0; i < n; ++i) {
    const Box& b = boxes[i];
    const auto c0 = static_cast<std::uint32_t>(columnOf(b.minX)), c1 = static_cast<std::uint32_t>(columnOf(b.maxX));
    const auto r0 = static_cast<std::uint32_t>(rowOf(b.minY)), r1 = static_cast<std::uint32_t>(rowOf(b.maxY));
    // An inverted box holds no point: an empty span.
    if (c1 < c0 || r1 < r0) {
      spans[i] = Span{1, 0, 1, 0};
      continue;
    }
    spans[i] = Span{c0, c1, r0, r1};
    total += std::size_t{c1 - c0 + 1} * (r1 - r0 + 1);
    if (total > limit) {
      *this = BoxGrid{};
      return false;
    }
    for (std::size_t r = r0; r <= r1; ++r)
      for (std::size_t c = c0; c <= c1; ++c) ++count[r * columns_ + c + 1];
  }
  for (std::size_t i = 1; i <= cells; ++i) count[i] += count[i - 1];
  cellStart_ = count;
  items_.resize(total);
  for (std::uint32_t i = 0; i < n; ++i) {
    const Span& sp = spans[i];
    for (std::size_t r = sp.r0; r <= sp.r1; ++r)
      for (std::size_t c = sp.c0; c <= sp.c1; ++c) items_[count[r * columns_ + c]++] = i;
  }
  return true;
}

std::span<const std::uint32_t> BoxGrid::near(double x, double y) const {
  if (cellStart_.empty() || !std::isfinite(x) || !std::isfinite(y)) return {};
  const std::size_t cell = rowOf(y) * columns_ + columnOf(x);
  return {items_.data() + cellStart_[cell], items_.data() + cellStart_[cell + 1]};
}

}  // namespace tv::recognition::internal
