// The sorted segment families: ordering and the first index of a band.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "recognition/key_order_internal.h"
#include "recognition/loose_lines.h"
#include "recognition/loose_lines_internal.h"

namespace tv::recognition {

namespace loose {

std::size_t LowerIndex(const std::vector<Point2d>& starts, double value, bool byY, std::size_t from) {
  from = std::min(from, starts.size());
  const auto it = std::partition_point(starts.begin() + static_cast<std::ptrdiff_t>(from), starts.end(),
                                       [&](Point2d p) { return KeyLess(KeyOf(p, byY), value); });
  return static_cast<std::size_t>(it - starts.begin());
}

std::size_t ScanFrom(const std::vector<Point2d>& starts, double value, bool byY, double reach) {
  return ScanFromBy([&](double v) { return LowerIndex(starts, v, byY); }, starts.size(), value, reach);
}

std::vector<std::size_t> KeyOrder(const std::vector<Point2d>& starts, std::size_t first, std::size_t last, bool byY) {
  std::vector<internal::BitsKeyed> keyed;
  keyed.reserve(last > first ? last - first : 0);
  for (std::size_t i = first; i < last; ++i) {
    const double key = KeyOf(starts[i], byY);
    // NaN sorts after everything, every NaN alike.
    keyed.push_back({std::isnan(key) ? std::numeric_limits<std::uint64_t>::max() : internal::OrderedBits(key), i});
  }
  internal::SortByBits(keyed);
  std::vector<std::size_t> order;
  order.reserve(keyed.size());
  for (const internal::BitsKeyed& k : keyed) order.push_back(k.place);
  return order;
}

KeyIndex::KeyIndex(const std::vector<Point2d>& starts, bool byY) : starts_(&starts), byY_(byY) {
  finite_ = starts.size();
  while (finite_ > 0 && !std::isfinite(KeyOf(starts[finite_ - 1], byY))) --finite_;
  if (finite_ < 2) return;
  low_ = KeyOf(starts[0], byY);
  const double high = KeyOf(starts[finite_ - 1], byY);
  if (!std::isfinite(low_) || !(high > low_)) return;
  scale_ = static_cast<double>(finite_) / (high - low_);
  if (!std::isfinite(scale_)) {
    scale_ = 0.0;
    return;
  }
  buckets_.resize(finite_ + 1);
  std::size_t i = 0;
  for (std::size_t b = 0; b < buckets_.size(); ++b) {
    const double edge = low_ + static_cast<double>(b) / scale_;
    while (i < finite_ && KeyLess(KeyOf(starts[i], byY), edge)) ++i;
    buckets_[b] = static_cast<std::uint32_t>(i);
  }
}

std::size_t KeyIndex::lower(double value, std::size_t from) const {
  const std::vector<Point2d>& starts = *starts_;
  if (buckets_.empty() || !std::isfinite(value)) return LowerIndex(starts, value, byY_, from);
  if (!(value > low_)) return std::min(from, starts.size());
  const double b = std::floor((value - low_) * scale_);
  // Beyond the last bucket every finite start lies below the value.
  if (!(b < static_cast<double>(buckets_.size()))) return LowerIndex(starts, value, byY_, std::max(from, finite_));
  std::size_t bucket = static_cast<std::size_t>(b);
  // A bucket's edge may round to either side of the value: step back until it lies below.
  while (bucket > 0 && !KeyLess(low_ + static_cast<double>(bucket) / scale_, value)) --bucket;
  std::size_t i = buckets_[bucket];
  const std::size_t end = bucket + 1 < buckets_.size() ? buckets_[bucket + 1] : finite_;
  const auto below = [&](Point2d p) { return KeyLess(KeyOf(p, byY_), value); };
  // Most buckets hold a start or two; a crowded one (many starts on one line) is searched.
  if (end - i > 16) {
    i = static_cast<std::size_t>(std::partition_point(starts.begin() + static_cast<std::ptrdiff_t>(i),
                                                      starts.begin() + static_cast<std::ptrdiff_t>(end), below) -
                                 starts.begin());
  } else {
    while (i < end && below(starts[i])) ++i;
  }
  // Rounding may put the value past the bucket's upper edge; only then is the rest searched.
  if (i == end && end < finite_ && below(starts[end])) i = LowerIndex(starts, value, byY_, end);
  return std::max(std::min(from, starts.size()), i);
}

std::size_t KeyIndex::scanFrom(double value, double reach) const {
  return ScanFromBy([this](double v) { return lower(v); }, starts_->size(), value, reach);
}

double GreatestLean(const std::vector<Point2d>& starts, const std::vector<Point2d>& ends, bool byY) {
  double lean = 0.0;
  const std::size_t n = std::min(starts.size(), ends.size());
  for (std::size_t i = 0; i < n; ++i) {
    const double d = std::abs(KeyOf(ends[i], byY) - KeyOf(starts[i], byY));
    if (d > lean) lean = d;
    else if (std::isnan(d)) lean = std::numeric_limits<double>::infinity();  // damaged: no shortcut is safe
  }
  return lean;
}

}  // namespace loose

std::size_t FirstAtX(const std::vector<Point2d>& starts, double value) {
  const std::size_t first = loose::LowerIndex(starts, value, false);
  return first < starts.size() ? first : 0;
}

std::size_t FirstAtY(const std::vector<Point2d>& starts, double value) {
  const std::size_t first = loose::LowerIndex(starts, value, true);
  return first < starts.size() ? first : 0;
}

void SortSegments(std::vector<Point2d>& starts, std::ptrdiff_t lo, std::ptrdiff_t hi, bool byY,
                  std::vector<Point2d>& ends, ObjectIdArray& ids) {
  const auto n = static_cast<std::ptrdiff_t>(std::min({starts.size(), ends.size(), ids.size()}));
  lo = std::max<std::ptrdiff_t>(lo, 0);
  hi = std::min(hi, n - 1);
  if (lo >= hi) return;

  // Sort the keys with their places, then apply the order to the three arrays; equal keys keep
  // their order.
  const std::vector<std::size_t> order =
      loose::KeyOrder(starts, static_cast<std::size_t>(lo), static_cast<std::size_t>(hi) + 1, byY);

  // One array at a time: a loop of one load and one store keeps many reads of a large family in
  // flight at once.
  std::vector<Point2d> sortedStarts(order.size()), sortedEnds(order.size());
  ObjectIdArray sortedIds(order.size());
  for (std::size_t k = 0; k < order.size(); ++k) sortedStarts[k] = starts[order[k]];
  for (std::size_t k = 0; k < order.size(); ++k) sortedEnds[k] = ends[order[k]];
  for (std::size_t k = 0; k < order.size(); ++k) sortedIds[k] = ids[order[k]];
  std::copy(sortedStarts.begin(), sortedStarts.end(), starts.begin() + lo);
  std::copy(sortedEnds.begin(), sortedEnds.end(), ends.begin() + lo);
  std::copy(sortedIds.begin(), sortedIds.end(), ids.begin() + lo);
}

}  // namespace tv::recognition
