#include "recognition/sheet_order.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <utility>

#include "recognition/sheet_geometry.h"

namespace tv::recognition {

namespace {

struct ModeDirections {
  int first;   // the band peeled off first: a row (top, bottom) or a column (left, right)
  int second;  // the direction read along it
};

// Modes 1..8.
constexpr std::array<ModeDirections, 8> kModeTable{{
    {kTop, kLeft},      // 1: rows from the top, each from the left
    {kTop, kRight},     // 2: rows from the top, each from the right
    {kBottom, kLeft},   // 3: rows from the bottom, each from the left
    {kBottom, kRight},  // 4: rows from the bottom, each from the right
    {kLeft, kBottom},   // 5: columns from the left, each from the bottom
    {kRight, kBottom},  // 6: columns from the right, each from the bottom
    {kLeft, kTop},      // 7: columns from the left, each from the top
    {kRight, kTop},     // 8: columns from the right, each from the top
}};

constexpr OrderMode kSequenceMode = 9;

bool IsBandMode(OrderMode mode) { return mode >= 1 && mode <= static_cast<OrderMode>(kModeTable.size()); }

struct Interval {
  double lo;
  double hi;
};

// The interval of a rectangle along the band axis of `direction`, seen from the band's own side:
// top and right are mirrored (negated) so that every band is grown as a bottom band is. Negation
// is exact, so the mirrored comparisons give the same answers as written-out ones would.
Interval BandInterval(const Point3d& a, const Point3d& b, int direction) {
  const bool alongY = direction == kTop || direction == kBottom;
  const double u = alongY ? a.y : a.x;
  const double v = alongY ? b.y : b.x;
  const double lo = std::min(u, v);
  const double hi = std::max(u, v);
  if (direction == kTop || direction == kRight) return {-hi, -lo};
  return {lo, hi};
}

std::size_t PairedSize(const std::vector<Point3d>& minCorners, const std::vector<Point3d>& maxCorners) {
  return std::min(minCorners.size(), maxCorners.size());
}

// A fault of the program, not of the drawing: there is nothing sensible to go on with.
Plot_Drawing1* CheckedAt(const std::vector<Plot_Drawing1*>& group, int index) {
  if (index < 0 || static_cast<std::size_t>(index) >= group.size()) std::abort();
  return group[static_cast<std::size_t>(index)];
}

template <class T>
void EraseAt(std::vector<T>& items, int index) {
  items.erase(items.begin() + index);
}

void OrderBySequence(std::vector<Plot_Drawing1*>& sheets) {
  // Stable, so sheets of one entity (or of none, -1) keep the order they were found in.
  std::stable_sort(sheets.begin(), sheets.end(),
                   [](const Plot_Drawing1* a, const Plot_Drawing1* b) { return a->sequence < b->sequence; });
}

// Rectangles of one space, picked one by one as PickNextSheet picks them, without looking at every
// rectangle left for every pick: the first band only ever takes rectangles from the near end, so
// they are kept sorted by their near edge along the first band's axis and the band is grown from
// there. What follows on the band (usually one row) runs as before.
class BandPicker {
 public:
  BandPicker(std::vector<Point3d> minCorners, std::vector<Point3d> maxCorners, OrderMode mode)
      : minCorners_(std::move(minCorners)), maxCorners_(std::move(maxCorners)), alive_(minCorners_.size(), true) {
    dirs_ = kModeTable[static_cast<std::size_t>(mode - 1)];
    for (std::size_t i = 0; i < minCorners_.size(); ++i) {
      spans_.push_back(BandInterval(minCorners_[i], maxCorners_[i], dirs_.first));
      byNearEdge_.push_back(i);
    }
    // Ties in the near edge keep the earlier rectangle, as the band's start does.
    std::stable_sort(byNearEdge_.begin(), byNearEdge_.end(),
                     [&](std::size_t a, std::size_t b) { return spans_[a].lo < spans_[b].lo; });
    left_ = minCorners_.size();
  }

  // Every coordinate a number: the sorted order is then a strict one.
  static bool Usable(const std::vector<Point3d>& minCorners, const std::vector<Point3d>& maxCorners) {
    const auto finite = [](const Point3d& p) { return std::isfinite(p.x) && std::isfinite(p.y); };
    return std::all_of(minCorners.begin(), minCorners.end(), finite) && std::all_of(maxCorners.begin(), maxCorners.end(), finite);
  }

  // The original index of the next rectangle; it is taken out.
  std::size_t pickNext() {
    const std::size_t picked = left_ < 2 ? firstAlive() : choose();
    alive_[picked] = false;
    --left_;
    return picked;
  }

 private:
  std::size_t firstAlive() {
    while (!alive_[byNearEdge_[start_]]) ++start_;
    return byNearEdge_[start_];
  }

  std::size_t choose() {
    // The first pass of PickNextSheet over the rectangles left: the band starts at the one reaching
    // furthest out and grows by the neighbours overlapping it enough. Only rectangles whose near
    // edge lies inside the band can grow it or belong to it.
    const std::size_t first = firstAlive();
    const double edge = spans_[first].lo;
    double far = spans_[first].hi;
    std::size_t end = start_;
    if (far - 1.0 != far) {
      for (bool grew = true; grew;) {
        grew = false;
        while (end < byNearEdge_.size() && spans_[byNearEdge_[end]].lo < far) ++end;
        for (std::size_t k = start_; k < end; ++k) {
          const std::size_t i = byNearEdge_[k];
          const Interval& s = spans_[i];
          if (alive_[i] && s.hi > far && (s.hi - s.lo) * kBandOverlap < far - s.lo) {
            far = s.hi;
            grew = true;
          }
        }
      }
    }
    while (end < byNearEdge_.size() && spans_[byNearEdge_[end]].lo <= far) ++end;
    std::vector<std::size_t> band;
    for (std::size_t k = start_; k < end; ++k) {
      const std::size_t i = byNearEdge_[k];
      if (alive_[i] && spans_[i].lo >= edge && spans_[i].hi <= far) band.push_back(i);
    }
    std::sort(band.begin(), band.end());
    if (band.size() == 1) return band.front();

    // The passes after the first, on the band alone.
    std::vector<Point3d> minCorners, maxCorners, outMin, outMax;
    std::vector<int> indexes, outIndexes;
    for (std::size_t i : band) {
      minCorners.push_back(minCorners_[i]);
      maxCorners.push_back(maxCorners_[i]);
      indexes.push_back(static_cast<int>(i));
    }
    for (int pass = 2;; ++pass) {
      if (pass > kPassLimit)
        return static_cast<std::size_t>(indexes[static_cast<std::size_t>(ExtremeOf(minCorners, maxCorners, dirs_.second))]);
      const int direction = pass % 2 == 1 ? dirs_.first : dirs_.second;
      const int count = BandSelect(minCorners, maxCorners, indexes, direction, outMin, outMax, outIndexes);
      if (count <= 1) return static_cast<std::size_t>(count == 1 ? outIndexes.front() : indexes.front());
      std::swap(minCorners, outMin);
      std::swap(maxCorners, outMax);
      std::swap(indexes, outIndexes);
    }
  }

  std::vector<Point3d> minCorners_, maxCorners_;
  ModeDirections dirs_{};
  std::vector<Interval> spans_;          // along the first band's axis, seen from its side
  std::vector<std::size_t> byNearEdge_;  // indexes by the near edge of their span
  std::vector<bool> alive_;
  std::size_t start_ = 0;  // in byNearEdge_: everything before it is taken
  std::size_t left_ = 0;
};

// Appends the sheets of `group` to `out` in reading order.
void OrderGroup(std::vector<Plot_Drawing1*> group, OrderMode mode, std::vector<Plot_Drawing1*>& out) {
  std::vector<Point3d> minCorners;
  std::vector<Point3d> maxCorners;
  minCorners.reserve(group.size());
  maxCorners.reserve(group.size());
  for (const Plot_Drawing1* sheet : group) {
    minCorners.emplace_back(sheet->minX, sheet->minY);
    maxCorners.emplace_back(sheet->maxX, sheet->maxY);
  }
  const auto take = [&](Plot_Drawing1* sheet) {
    out.push_back(sheet);
    SetMarker(*sheet, static_cast<std::int32_t>(out.size()), -1);
  };
  if (IsBandMode(mode) && BandPicker::Usable(minCorners, maxCorners)) {
    BandPicker picker(std::move(minCorners), std::move(maxCorners), mode);
    for (std::size_t n = group.size(); n > 0; --n) take(group[picker.pickNext()]);
    return;
  }
  while (!group.empty()) {
    const int picked = PickNextSheet(minCorners, maxCorners, mode);
    take(CheckedAt(group, picked));
    EraseAt(group, picked);
    EraseAt(minCorners, picked);
    EraseAt(maxCorners, picked);
  }
}

}  // namespace

void OrderSheets(SheetJob& job, OrderMode mode) {
  if (mode == kSequenceMode) {
    OrderBySequence(job.keptSheets);
    for (std::size_t i = 0; i < job.keptSheets.size(); ++i)
      SetMarker(*job.keptSheets[i], static_cast<std::int32_t>(i + 1), -1);
    return;
  }

  std::vector<Plot_Drawing1*> pending = std::move(job.keptSheets);
  job.keptSheets.clear();
  job.keptSheets.reserve(pending.size());
  // One space at a time, in the order the spaces first appear, so that a layout's sheets are never
  // numbered among another's.
  while (!pending.empty()) {
    const ObjectId space = pending.front()->spaceId;
    const auto rest = std::stable_partition(pending.begin(), pending.end(),
                                            [&](const Plot_Drawing1* s) { return s->spaceId == space; });
    std::vector<Plot_Drawing1*> group(pending.begin(), rest);
    pending.erase(pending.begin(), rest);
    OrderGroup(std::move(group), mode, job.keptSheets);
  }
}

int PickNextSheet(std::vector<Point3d> minCorners, std::vector<Point3d> maxCorners, OrderMode mode) {
  if (!IsBandMode(mode)) return 0;
  const std::size_t n = PairedSize(minCorners, maxCorners);
  if (n < 2) return 0;
  const ModeDirections dirs = kModeTable[static_cast<std::size_t>(mode - 1)];

  std::vector<int> indexes(n);
  for (std::size_t i = 0; i < n; ++i) indexes[i] = static_cast<int>(i);
  minCorners.resize(n);
  maxCorners.resize(n);

  std::vector<Point3d> bandMin;
  std::vector<Point3d> bandMax;
  std::vector<int> bandIndexes;
  // Alternate passes: the outermost row, then its first end crosswise, then along again, so that a
  // sheet sticking out of a row sorts itself out.
  for (int pass = 1;; ++pass) {
    const int direction = pass % 2 == 1 ? dirs.first : dirs.second;
    const int count = BandSelect(minCorners, maxCorners, indexes, direction, bandMin, bandMax, bandIndexes);
    if (count == 0) return -1;
    if (count == 1) return bandIndexes.front();
    std::swap(minCorners, bandMin);
    std::swap(maxCorners, bandMax);
    std::swap(indexes, bandIndexes);
    // Identical rectangles never narrow the band.
    if (pass >= kPassLimit) return indexes[static_cast<std::size_t>(ExtremeOf(minCorners, maxCorners, dirs.second))];
  }
}

int BandSelect(const std::vector<Point3d>& minCorners, const std::vector<Point3d>& maxCorners,
               const std::vector<int>& indexes, int direction, std::vector<Point3d>& outMin,
               std::vector<Point3d>& outMax, std::vector<int>& outIndexes) {
  outMin.clear();
  outMax.clear();
  outIndexes.clear();
  const std::size_t n = std::min(PairedSize(minCorners, maxCorners), indexes.size());
  if (n == 0) return 0;

  std::vector<Interval> spans;
  spans.reserve(n);
  for (std::size_t i = 0; i < n; ++i) spans.push_back(BandInterval(minCorners[i], maxCorners[i], direction));

  // The band starts as the rectangle reaching furthest out; ties keep the earlier.
  double edge = spans[0].lo;
  double far = spans[0].hi;
  for (std::size_t i = 1; i < n; ++i) {
    if (spans[i].lo < edge) {
      edge = spans[i].lo;
      far = spans[i].hi;
    }
  }

  // A neighbour overlapping the band by more than a quarter of its own size belongs to the row and
  // pulls the band out to its far side. Beyond 2^53 the band can't be stepped, so leave it.
  if (far - 1.0 != far) {
    bool grew = true;
    while (grew) {
      grew = false;
      for (const Interval& s : spans) {
        if (s.hi > far && (s.hi - s.lo) * kBandOverlap < far - s.lo) {
          far = s.hi;
          grew = true;
        }
      }
    }
  }

  for (std::size_t i = 0; i < n; ++i) {
    if (spans[i].lo >= edge && spans[i].hi <= far) {
      outMin.push_back(minCorners[i]);
      outMax.push_back(maxCorners[i]);
      outIndexes.push_back(indexes[i]);
    }
  }
  return static_cast<int>(outIndexes.size());
}

int ExtremeOf(const std::vector<Point3d>& minCorners, const std::vector<Point3d>& maxCorners, int direction) {
  const std::size_t n = PairedSize(minCorners, maxCorners);
  if (n < 2) return 0;
  // Any direction but top, bottom and right counts as left.
  const int dir = direction == kTop || direction == kBottom || direction == kRight ? direction : kLeft;
  // Seen from its own side every direction looks for the smallest lo.
  int best = 0;
  double bestLo = BandInterval(minCorners[0], maxCorners[0], dir).lo;
  for (std::size_t i = 1; i < n; ++i) {
    const double lo = BandInterval(minCorners[i], maxCorners[i], dir).lo;
    if (lo < bestLo) {
      bestLo = lo;
      best = static_cast<int>(i);
    }
  }
  return best;
}

}  // namespace tv::recognition
