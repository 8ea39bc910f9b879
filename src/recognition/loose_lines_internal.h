#pragma once
// Helpers shared by the files of the loose-line finder; not part of its interface.
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "host/geometry.h"

namespace tv::recognition::loose {

// The sort key of a segment start: x for verticals, y for horizontals.
inline double KeyOf(Point2d p, bool byY) { return byY ? p.y : p.x; }

// Ascending order with NaN after everything, so that a damaged coordinate can't break the sort.
inline bool KeyLess(double a, double b) { return std::isnan(b) ? !std::isnan(a) : a < b; }

// The places [first, last) of `starts` in KeyLess order of their keys, equal keys keeping their
// order.
std::vector<std::size_t> KeyOrder(const std::vector<Point2d>& starts, std::size_t first, std::size_t last, bool byY);

// The first index from `from` on whose key is at least `value`; the size when there is none.
// [from, size) must be in KeyLess order.
std::size_t LowerIndex(const std::vector<Point2d>& starts, double value, bool byY, std::size_t from = 0);

// Where a band scan for `value` begins. FirstAtX/FirstAtY fall back to 0 when no start reaches
// `value`; a scan from 0 can then only meet segments whose far end leans into the band, so it is
// begun at the first start within `reach` (the greatest lean of the family along the key) instead.
// `lower(v)` is LowerIndex of v over the family's `size` starts, by whatever search.
template <class Lower>
std::size_t ScanFromBy(Lower&& lower, std::size_t size, double value, double reach) {
  const std::size_t first = lower(value);
  if (first < size) return first;
  // The slack keeps a start that rounding puts just short of the band.
  const double slack = 1e-9 * (std::abs(value) + reach);
  return lower(value - reach - slack);
}
// As above by binary search.
std::size_t ScanFrom(const std::vector<Point2d>& starts, double value, bool byY, double reach);

// LowerIndex over a sorted family by a table of buckets along the key: a lookup touches a bucket
// and the few starts after it rather than the twenty of a binary search, each of which misses the
// caches once a family outgrows them. Valid until the family changes.
class KeyIndex {
 public:
  KeyIndex(const std::vector<Point2d>& starts, bool byY);
  // As LowerIndex(starts, value, byY, from).
  std::size_t lower(double value, std::size_t from = 0) const;
  // As ScanFrom(starts, value, byY, reach).
  std::size_t scanFrom(double value, double reach) const;

 private:
  const std::vector<Point2d>* starts_;
  bool byY_;
  std::size_t finite_ = 0;  // starts before the damaged ones, which sort last
  double low_ = 0.0, scale_ = 0.0;
  std::vector<std::uint32_t> buckets_;  // first index whose key reaches each bucket's lower edge
};

// The greatest |end - start| of the family along the key; 0 for none.
double GreatestLean(const std::vector<Point2d>& starts, const std::vector<Point2d>& ends, bool byY);

// p.distanceTo(q) < t, decided alike. Most pairs a search meets lie far apart along one axis, which
// settles it without the square root: the distance is never below either difference.
inline bool Within(Point2d p, Point2d q, double t) {
  if (std::abs(p.x - q.x) >= 2 * t || std::abs(p.y - q.y) >= 2 * t) return false;
  return p.distanceTo(q) < t;
}

// Strictly inside an inner box (minX, maxX, minY, maxY).
inline bool StrictlyInside(const std::array<double, 4>& box, Point2d p) {
  return box[0] < p.x && p.x < box[1] && box[2] < p.y && p.y < box[3];
}

// A segment with both ends strictly inside an inner box: content of that box's sheet.
inline bool HoldsSegment(const std::array<double, 4>& box, Point2d p, Point2d q) {
  return StrictlyInside(box, p) && StrictlyInside(box, q);
}

// Keeps, in one pass, the elements i of [0, count) for which keep(i) holds, moving them down in
// every array; keep is asked once per element, in order, with the original index. Returns the
// new count, to which every array is cut.
template <class Keep, class... Arrays>
std::size_t KeepWhere(std::size_t count, Keep&& keep, Arrays&... arrays) {
  std::size_t w = 0;
  for (std::size_t r = 0; r < count; ++r) {
    if (!keep(r)) continue;
    if (w != r) ((arrays[w] = std::move(arrays[r])), ...);
    ++w;
  }
  (arrays.resize(w), ...);
  return w;
}

}  // namespace tv::recognition::loose
