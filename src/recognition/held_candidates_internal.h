#pragma once
// Which found sheet first holds each candidate of a list. Sheets arrive a batch at a time while the
// candidate loop runs; each new sheet marks the candidates still to come that lie in it, so that
// the loop reads a candidate's holder instead of asking every sheet found so far.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "recognition/box_grid_internal.h"
#include "recognition/rectangle_finder.h"

namespace tv::recognition::internal {

class HeldCandidates {
 public:
  // Indexes candidates[from..]. It keeps copies of their extents, so the list may be reordered or
  // compacted afterwards; indices stay those of this moment.
  explicit HeldCandidates(const TempIdArray& candidates, std::size_t from = 0);

  // Makes `sheet` the holder of every candidate from `next` on that has none yet and lies strictly
  // inside its inner box, both corners. Sheets marking in turn make the first of them the holder.
  void markBy(Plot_Drawing1& sheet, std::size_t next);
  void markBy(const SheetList& sheets, std::size_t next);

  // The holder of candidate `i`, null when none; null too for one before `from`.
  Plot_Drawing1* holder(std::size_t i) const {
    return i >= first_ && i - first_ < holders_.size() ? holders_[i - first_] : nullptr;
  }

 private:
  // A candidate's corners, kept side by side with their cell's other candidates.
  struct Item {
    double minX, minY, maxX, maxY;
    std::uint32_t index;  // from `first_`
    std::uint32_t row;    // of the grid
  };

  std::size_t columnOf(double x) const;
  std::size_t rowOf(double y) const;

  std::size_t first_ = 0;
  std::vector<Plot_Drawing1*> holders_;
  // A grid over the lower left corners, its lines at quantiles of them so that a crowded corner
  // and one stray far off cost no more than an even spread.
  std::vector<double> xCuts_, yCuts_;
  std::size_t columns_ = 1;
  std::vector<std::uint32_t> cellStart_;  // per cell (column-major), where its items begin; one more at the end
  std::vector<Item> items_;
};

}  // namespace tv::recognition::internal
