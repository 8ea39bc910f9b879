#include <algorithm>
#include <cmath>

#include "recognition/box_grid_internal.h"

namespace tv::recognition::internal {

namespace {

// Cells per box on average before the grid gives up: a few boxes may cover it all.
constexpr std::size_t kCellsPerBox = 16;
constexpr std::size_t kMaxColumns = 512;

bool Finite(const Box& b) {
  return std::isfinite(b.minX) && std::isfinite(b.minY) && std::isfinite(b.maxX) && std::isfinite(b.maxY);
}

// Beyond this many values the quantiles are taken from an even sample: a sample costs only a little
// balance, while sorting every centre made rebuilding the grid of a growing list the dearest part
// of it.
constexpr std::size_t kSampledValues = 4096;

}  // namespace

std::size_t GridColumns(std::size_t n) {
  return std::clamp<std::size_t>(static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(n)))), 1,
                                 kMaxColumns);
}

std::vector<double> QuantileCuts(std::vector<double>& values, std::size_t columns) {
  if (values.size() > kSampledValues) {
    const std::size_t step = values.size() / kSampledValues;
    for (std::size_t k = 0; k < kSampledValues; ++k) values[k] = values[k * step];
    values.resize(kSampledValues);
  }
  std::vector<double> cuts;
  if (values.empty()) return cuts;
  std::sort(values.begin(), values.end());
  cuts.reserve(columns - 1);
  for (std::size_t k = 1; k < columns; ++k) cuts.push_back(values[k * values.size() / columns]);
  return cuts;
}

std::size_t BoxGrid::columnOf(double x) const { return CellOf(xCuts_, x); }

std::size_t BoxGrid::rowOf(double y) const { return CellOf(yCuts_, y); }

bool BoxGrid::build(const std::vector<Box>& boxes) {
  *this = BoxGrid{};
  if (!std::all_of(boxes.begin(), boxes.end(), Finite)) return false;

  const std::size_t n = boxes.size();
  columns_ = GridColumns(n);
  std::vector<double> cx, cy;
  cx.reserve(n);
  cy.reserve(n);
  for (const Box& b : boxes) {
    cx.push_back(b.minX + (b.maxX - b.minX) * 0.5);
    cy.push_back(b.minY + (b.maxY - b.minY) * 0.5);
  }
  xCuts_ = QuantileCuts(cx, columns_);
  yCuts_ = QuantileCuts(cy, columns_);

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
    spans[i] = c1 < c0 || r1 < r0 ? Span{1, 0, 1, 0} : Span{c0, c1, r0, r1};
    if (c1 < c0 || r1 < r0) continue;
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
