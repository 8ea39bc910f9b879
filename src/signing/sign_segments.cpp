// Cleaning of the traced segments: collinear overlaps merged, then chains closed into loops.
#include <array>
#include <cstdio>

#include "host/editor.h"
#include "signing/progress_scope.h"
#include "signing/sign_boundary.h"

namespace tv::signing {

namespace {

constexpr double kShortVector = 0.000001;
constexpr double kTouching = 0.00001;
constexpr std::size_t kProgressAbove = 1000;

// Both directions unit vectors; opposite directions are parallel too.
bool Parallel(Vector3d a, Vector3d b, const GeomTolerance& tol) { return a.cross(b).length() <= tol.equalVector; }

Vector3d DirectionOr(Vector3d v, Vector3d fallback) { return v.length() < kShortVector ? fallback : v.normalized(); }

// Replaces `a` by the union of `a` and `b` when both lie on one line and overlap or touch.
bool MergeInto(Segment& a, const Segment& b, const GeomTolerance& tol) {
  const Vector3d d = (a.end - a.start).normalized();
  const Vector3d p = DirectionOr(b.start - a.start, d), q = DirectionOr(b.end - a.start, d);
  if (!Parallel(p, d, tol) || !Parallel(q, d, tol)) return false;
  const std::array<Segment, 6> pairs{{{a.start, b.start}, {a.start, b.end}, {a.end, b.start},
                                      {a.end, b.end}, {a.start, a.end}, {b.start, b.end}}};
  const Segment* farthest = &pairs[0];
  for (const Segment& s : pairs)
    if (s.start.distanceTo(s.end) > farthest->start.distanceTo(farthest->end)) farthest = &s;
  const double longest = farthest->start.distanceTo(farthest->end);
  if (longest > b.start.distanceTo(b.end) + a.start.distanceTo(a.end) + kTouching) return false;
  a = *farthest;
  return true;
}

}  // namespace

void MergeCollinear(SegmentList& segments, const GeomTolerance& tol) {
  const std::size_t before = segments.size();
  ProgressScope bar("签名边界直线整理......", static_cast<int>(before), before > kProgressAbove);
  for (std::size_t i = 0; i + 1 < segments.size(); ++i) {
    bar.set(static_cast<int>(i));
    // After a merge the grown segment is tested against all the others again.
    for (std::size_t j = i + 1; j < segments.size();) {
      if (MergeInto(segments[i], segments[j], tol)) {
        segments.erase(segments.begin() + static_cast<std::ptrdiff_t>(j));
        j = i + 1;
      } else {
        ++j;
      }
    }
  }
  if (segments.size() != before) {
    char text[160];
    std::snprintf(text, sizeof text, "\n签名图形中原来的%d条直线被合并为%d条直线\n", static_cast<int>(before),
                  static_cast<int>(segments.size()));
    host::Print(text);
  }
}

void ChainLoops(SegmentList& segments, SegmentList& leftovers, LoopList& loops, double tolerance) {
  while (!segments.empty()) {
    const Segment seed = segments.front();
    segments.erase(segments.begin());
    leftovers.push_back(seed);
    const Point3d head = seed.start;
    Point3d tail = seed.end;
    PointLoop chain{head, tail};
    SegmentList taken;
    bool closed = false;
    for (std::size_t k = 0; k < segments.size();) {
      const Segment& s = segments[k];
      if (s.start.distanceTo(tail) < tolerance) tail = s.end;
      else if (s.end.distanceTo(tail) < tolerance) tail = s.start;
      else {
        ++k;
        continue;
      }
      chain.push_back(tail);
      if (tail.distanceTo(head) < tolerance) {
        segments.erase(segments.begin() + static_cast<std::ptrdiff_t>(k));
        closed = true;
        break;
      }
      taken.push_back(s);
      segments.erase(segments.begin() + static_cast<std::ptrdiff_t>(k));
      k = 0;
    }
    if (closed) {
      chain.back() = head;
      loops.push_back(std::move(chain));
      leftovers.pop_back();
    } else {
      segments.insert(segments.end(), taken.begin(), taken.end());
    }
  }
}

}  // namespace tv::signing
