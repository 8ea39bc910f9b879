#pragma once
// Which of a fixed set of boxes may hold a point. Pruning asks it for every sheet, so that it
// needn't try every sheet against every other.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tv::recognition::internal {

struct Box {
  double minX = 0.0, minY = 0.0, maxX = 0.0, maxY = 0.0;
};

// Columns (and rows) of a quantile grid over n points: about one point a cell, within bounds.
std::size_t GridColumns(std::size_t n);
// The most values a grid's cuts are read from: an even sample is as good as all of them, while
// sorting every value made rebuilding the grid of a growing list the dearest part of it.
inline constexpr std::size_t kSampledValues = 4096;
// Cut values at the quantiles of `sample`, which it sorts; fewer when it is empty.
std::vector<double> CutsOf(std::vector<double>& sample, std::size_t columns);
// Cut values at the quantiles of value(i) for i in [0, n), read from an even sample of at most
// kSampledValues of them; values that aren't finite are left out. Any cuts in ascending order
// make a correct grid.
template <class Value>
std::vector<double> QuantileCuts(std::size_t n, std::size_t columns, Value&& value) {
  const std::size_t step = std::max<std::size_t>(1, (n + kSampledValues - 1) / kSampledValues);
  std::vector<double> sample;
  sample.reserve(n / step + 1);
  for (std::size_t i = 0; i < n; i += step)
    if (const double v = value(i); std::isfinite(v)) sample.push_back(v);
  return CutsOf(sample, columns);
}
// The column of `v` among ascending cuts: the number of cuts not above it, as std::upper_bound
// counts them. The halving carries no branch: grids place hundreds of thousands of points whose
// columns no predictor guesses.
inline std::size_t CellOf(const std::vector<double>& cuts, double v) {
  if (cuts.empty()) return 0;
  // The count lies in [first, first + length]; each step halves the range by a select, not a jump.
  std::size_t first = 0, length = cuts.size();
  while (length > 1) {
    const std::size_t half = length / 2;
    first += !(v < cuts[first + half]) ? half : 0;
    length -= half;
  }
  return first + (!(v < cuts[first]) ? 1 : 0);
}

// A grid whose lines stand at quantiles of the box centres, so that a crowded corner and one
// stray box far off cost no more than an even spread of sheets.
class BoxGrid {
 public:
  // False when a coordinate isn't finite or the boxes would fill too many cells (many huge boxes
  // over many small ones); the caller then tries every box.
  bool build(const std::vector<Box>& boxes);
  // Indices, ascending, of the boxes in the cell of (x, y): every box that holds the point, edges
  // included, is among them. Nothing for a point that isn't finite.
  std::span<const std::uint32_t> near(double x, double y) const;

 private:
  std::size_t columnOf(double x) const;
  std::size_t rowOf(double y) const;

  std::vector<double> xCuts_, yCuts_;
  std::size_t columns_ = 0;
  std::vector<std::uint32_t> cellStart_;  // per cell (row-major), where its indices begin; one more at the end
  std::vector<std::uint32_t> items_;
};

}  // namespace tv::recognition::internal
