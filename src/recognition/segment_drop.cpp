// The removal of the segments that turned out to lie inside found sheets.
//
// Each sheet walks the family in turn, and a removal lets the next segment pass
// untested by that sheet, as though it had slid into the removed one's place while the walk moved
// on. Removed segments are only marked while the sheets are walked, and the family is compacted
// once at the end.
#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "recognition/box_grid_internal.h"
#include "recognition/loose_lines.h"
#include "recognition/loose_lines_internal.h"

namespace tv::recognition {

namespace {

using loose::KeyLess;
using loose::KeyOf;

// Who removed each segment of a family: 0 for none, else the sheet's place in the list plus one.
using Removals = std::vector<std::uint32_t>;

// The band of a sheet along the key, and the range across it, from its inner box.
struct Band {
  double low, high, acrossLow, acrossHigh;
};
Band BandOf(const std::array<double, 4>& box, bool byY) {
  return byY ? Band{box[2], box[3], box[0], box[1]} : Band{box[0], box[1], box[2], box[3]};
}

// A family out of order: every sheet walks it from `first` to the end.
void WalkEach(const std::vector<Point2d>& starts, const std::vector<Point2d>& ends, std::size_t first, std::size_t n,
              bool byY, const SheetList& sheets, Removals& removed) {
  for (std::size_t k = 0; k < sheets.size(); ++k) {
    if (!sheets[k]) continue;
    const auto& box = sheets[k]->innerBox;
    const Band band = BandOf(box, byY);
    if (!(band.low < band.high)) continue;
    const auto me = static_cast<std::uint32_t>(k + 1);
    bool skipNext = false;
    for (std::size_t r = first; r < n; ++r) {
      if (removed[r]) continue;
      if (skipNext) {
        skipNext = false;
        continue;
      }
      if (loose::HoldsSegment(box, starts[r], ends[r])) {
        removed[r] = me;
        skipNext = true;
      }
    }
  }
}

// A sorted family, from `first` on, in cells: a column is a run of places, which in sorted order
// is a band of the key, and a row a quantile of the coordinate across it. A sheet's band spans
// every frame of a row (or a column) of frames, but only the few cells over the sheet can hold
// its inside.
class FamilyGrid {
 public:
  FamilyGrid(const std::vector<Point2d>& starts, std::size_t first, std::size_t n, bool byY)
      : first_(first), columns_((n - first + kRun - 1) / kRun) {
    const auto across = [&](std::size_t r) { return KeyOf(starts[r], !byY); };
    cuts_ = internal::QuantileCuts(n - first, kRows, [&](std::size_t i) { return across(first + i); });
    const std::size_t rows = cuts_.size() + 1;

    // Counted and filled one column at a time: a column's places and cells lie together.
    cellStart_.assign(columns_ * rows + 1, 0);
    std::vector<std::uint8_t> rowOf(n - first);
    for (std::size_t r = first; r < n; ++r) {
      rowOf[r - first] = static_cast<std::uint8_t>(internal::CellOf(cuts_, across(r)));
      ++cellStart_[((r - first) / kRun) * rows + rowOf[r - first] + 1];
    }
    for (std::size_t c = 1; c < cellStart_.size(); ++c) cellStart_[c] += cellStart_[c - 1];
    places_.resize(n - first);
    std::vector<std::uint32_t> fill(cellStart_.begin(), cellStart_.end() - 1);
    for (std::size_t r = first; r < n; ++r)
      places_[fill[((r - first) / kRun) * rows + rowOf[r - first]]++] = static_cast<std::uint32_t>(r);
  }

  // Calls f(r) for every place r of [from, to) whose start may lie strictly between acrossLow and
  // acrossHigh across the key, and some others; in no set order.
  template <class F>
  void near(std::size_t from, std::size_t to, double acrossLow, double acrossHigh, F&& f) const {
    if (from >= to) return;
    const std::size_t rows = cuts_.size() + 1;
    const std::size_t rowLow = internal::CellOf(cuts_, acrossLow), rowHigh = internal::CellOf(cuts_, acrossHigh);
    for (std::size_t c = (from - first_) / kRun; c <= (to - 1 - first_) / kRun; ++c) {
      for (std::size_t row = rowLow; row <= rowHigh; ++row) {
        for (std::uint32_t i = cellStart_[c * rows + row]; i < cellStart_[c * rows + row + 1]; ++i) {
          const std::size_t r = places_[i];
          if (from <= r && r < to) f(r);
        }
      }
    }
  }

 private:
  static constexpr std::size_t kRun = 256;
  static constexpr std::size_t kRows = 64;  // a row index fits a byte

  std::size_t first_, columns_;
  std::vector<double> cuts_;
  std::vector<std::uint32_t> cellStart_;  // per cell, column by column; one more at the end
  std::vector<std::uint32_t> places_;     // ascending within each cell
};

// A sorted family: a sheet's walk meets only the run of its band, and of that removes only
// segments strictly inside, which the grid finds. Whether the walk spares one of them follows
// from the segment it met just before: the nearest earlier place of the band not removed by an
// earlier sheet, since those the walk passes over. The walk spares it when this sheet removed that
// one.
void WalkSorted(const std::vector<Point2d>& starts, const std::vector<Point2d>& ends, std::size_t first,
                std::size_t n, bool byY, const SheetList& sheets, Removals& removed) {
  const FamilyGrid grid(starts, first, n, byY);
  std::vector<std::size_t> inside;
  for (std::size_t k = 0; k < sheets.size(); ++k) {
    if (!sheets[k]) continue;
    const auto& box = sheets[k]->innerBox;
    const Band band = BandOf(box, byY);
    if (!(band.low < band.high)) continue;
    const std::size_t from = loose::LowerIndex(starts, band.low, byY, first);
    const std::size_t to = loose::LowerIndex(starts, band.high, byY, from);
    inside.clear();
    grid.near(from, to, band.acrossLow, band.acrossHigh, [&](std::size_t r) {
      if (!removed[r] && loose::HoldsSegment(box, starts[r], ends[r]))
        inside.push_back(r);
    });
    std::sort(inside.begin(), inside.end());
    const auto me = static_cast<std::uint32_t>(k + 1);
    for (const std::size_t r : inside) {
      bool spared = false;
      for (std::size_t p = r; p > from;) {
        const std::uint32_t who = removed[--p];
        if (who == 0 || who == me) {
          spared = who == me;
          break;
        }
      }
      if (!spared) removed[r] = me;
    }
  }
}

void DropFamily(std::vector<Point2d>& starts, std::vector<Point2d>& ends, ObjectIdArray& ids, std::size_t first,
                bool byY, const SheetList& sheets) {
  const std::size_t n = std::min({starts.size(), ends.size(), ids.size()});
  if (first >= n) return;
  const bool sorted = std::is_sorted(starts.begin() + static_cast<std::ptrdiff_t>(first),
                                     starts.begin() + static_cast<std::ptrdiff_t>(n),
                                     [byY](Point2d a, Point2d b) { return KeyLess(KeyOf(a, byY), KeyOf(b, byY)); });
  Removals removed(n, 0);
  if (sorted) WalkSorted(starts, ends, first, n, byY, sheets, removed);
  else WalkEach(starts, ends, first, n, byY, sheets, removed);
  loose::KeepWhere(n, [&](std::size_t i) { return removed[i] == 0; }, starts, ends, ids);
}

}  // namespace

void DropSegmentsInSheets(std::size_t firstH, SheetList& sheets, SegmentArrays& segments) {
  for (auto& sheet : sheets)
    if (sheet) EnsureInnerBox(*sheet);
  DropFamily(segments.hStarts, segments.hEnds, segments.hIds, firstH, true, sheets);
  DropFamily(segments.vStarts, segments.vEnds, segments.vIds, 0, false, sheets);
}

}  // namespace tv::recognition
