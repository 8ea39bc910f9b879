#pragma once
// Which of a fixed set of boxes may hold a point. Pruning asks it for every sheet, so that it
// needn't try every sheet against every other.
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
// Cut values at the quantiles of `values` (or of an even sample of them), which it reorders; any
// cuts in ascending order make a correct grid. Fewer when there are no values.
std::vector<double> QuantileCuts(std::vector<double>& values, std::size_t columns);
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
