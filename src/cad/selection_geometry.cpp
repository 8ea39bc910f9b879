// Fences, windows and crossing boxes over the entities of a space.
#include "cad/selection_geometry.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <type_traits>

#include "cad/layout_viewport.h"
#include "cad/selection_index.h"
#include "cad/selection_shape_internal.h"

namespace tv::cad {

using namespace selection_internal;

namespace {

// Geometry closer than this fraction of the coordinates' size counts as touching.
constexpr double kRelativeTolerance = 1e-9;

double Dist2PointSegment(Point2d p, Point2d a, Point2d b) {
  const Vector2d ab = b - a, ap = p - a;
  const double len2 = ab.dot(ab);
  const double t = len2 > 0 ? std::clamp(ap.dot(ab) / len2, 0.0, 1.0) : 0.0;
  const Vector2d d = p - (a + ab * t);
  return d.dot(d);
}

bool BoxesMeet(const Box2& a, const Box2& b) { return a.minX <= b.maxX && b.minX <= a.maxX && a.minY <= b.maxY && b.minY <= a.maxY; }
bool BoxInside(const Box2& inner, const Box2& outer) {
  return inner.minX >= outer.minX && inner.maxX <= outer.maxX && inner.minY >= outer.minY && inner.maxY <= outer.maxY;
}
bool PointInside(Point2d p, const Box2& b) { return p.x >= b.minX && p.x <= b.maxX && p.y >= b.minY && p.y <= b.maxY; }

// Segments ab and cd crossing or within `tol` of each other.
bool SegmentsMeet(Point2d a, Point2d b, Point2d c, Point2d d, double tol) {
  const Vector2d ab = b - a, cd = d - c;
  const double d1 = ab.cross(c - a), d2 = ab.cross(d - a), d3 = cd.cross(a - c), d4 = cd.cross(b - c);
  if (((d1 > 0 && d2 < 0) || (d1 < 0 && d2 > 0)) && ((d3 > 0 && d4 < 0) || (d3 < 0 && d4 > 0))) return true;
  // Both ends of one segment farther than tol on the same side of the other's line: apart.
  // (d / |ab| is the distance from the line; compared squared.)
  const double t2 = tol * tol;
  const auto apart = [t2](double e1, double e2, Vector2d v) {
    return ((e1 > 0 && e2 > 0) || (e1 < 0 && e2 < 0)) && std::min(e1 * e1, e2 * e2) > t2 * v.dot(v);
  };
  if (apart(d1, d2, ab) || apart(d3, d4, cd)) return false;
  return Dist2PointSegment(c, a, b) <= t2 || Dist2PointSegment(d, a, b) <= t2 || Dist2PointSegment(a, c, d) <= t2 ||
         Dist2PointSegment(b, c, d) <= t2;
}

// Liang-Barsky: does any part of segment pq lie in the box?
bool SegmentMeetsBox(Point2d p, Point2d q, const Box2& b) {
  double t0 = 0, t1 = 1;
  const auto clip = [&](double den, double num) {
    if (den == 0) return num >= 0;
    const double r = num / den;
    if (den < 0) {
      if (r > t1) return false;
      t0 = std::max(t0, r);
    } else {
      if (r < t0) return false;
      t1 = std::min(t1, r);
    }
    return true;
  };
  const double dx = q.x - p.x, dy = q.y - p.y;
  return clip(-dx, p.x - b.minX) && clip(dx, b.maxX - p.x) && clip(-dy, p.y - b.minY) && clip(dy, b.maxY - p.y);
}

// The segments of a piece: consecutive points, and the closing edge of an area.
template <class F>
bool AnyEdge(const Point2d* pts, std::size_t n, bool area, F f) {
  for (std::size_t i = 0; i + 1 < n; ++i)
    if (f(pts[i], pts[i + 1])) return true;
  return area && n > 2 && f(pts[n - 1], pts[0]);
}

struct FenceSegment {
  Point2d a, b;
  double tol = 0;
  Box2 box;  // grown by tol
};

// The fence's segments binned in a uniform grid over their bounds, so that an entity meets only
// the few segments that pass near it.
class FenceIndex {
 public:
  explicit FenceIndex(const std::vector<Point2d>& fence) {
    const auto finite = [](Point2d p) { return std::isfinite(p.x) && std::isfinite(p.y); };
    for (std::size_t i = 0; i + 1 < fence.size(); ++i) {
      const Point2d a = fence[i], b = fence[i + 1];
      // A segment of no length crosses nothing.
      if (!finite(a) || !finite(b) || a == b) continue;
      const double size = std::max({std::abs(a.x), std::abs(a.y), std::abs(b.x), std::abs(b.y), a.distanceTo(b)});
      const double tol = size * kRelativeTolerance;
      segments_.push_back({a, b, tol, {std::min(a.x, b.x) - tol, std::min(a.y, b.y) - tol, std::max(a.x, b.x) + tol, std::max(a.y, b.y) + tol}});
    }
    if (segments_.empty()) return;
    bounds_ = segments_[0].box;
    for (const auto& s : segments_) {
      bounds_.minX = std::min(bounds_.minX, s.box.minX);
      bounds_.minY = std::min(bounds_.minY, s.box.minY);
      bounds_.maxX = std::max(bounds_.maxX, s.box.maxX);
      bounds_.maxY = std::max(bounds_.maxY, s.box.maxY);
    }
    buildGrid();
    stamps_.assign(segments_.size(), 0);
  }

  bool empty() const { return segments_.empty(); }
  // Every segment lies in this box, grown by its tolerance.
  const Box2& bounds() const { return bounds_; }
  const FenceSegment& segment(std::uint32_t i) const { return segments_[i]; }

  // The segments passing through `box` (within their tolerance), into `out`; false when there are none.
  bool query(const Box2& box, std::vector<std::uint32_t>& out) {
    out.clear();
    if (!box.finite() || !BoxesMeet(box, bounds_)) return false;
    const int c0 = column(box.minX), c1 = column(box.maxX), r0 = row(box.minY), r1 = row(box.maxY);
    const std::size_t cells = static_cast<std::size_t>(c1 - c0 + 1) * static_cast<std::size_t>(r1 - r0 + 1);
    if (cells >= segments_.size()) {
      for (std::uint32_t i = 0; i < segments_.size(); ++i)
        if (passes(segments_[i], box)) out.push_back(i);
      return !out.empty();
    }
    if (++tick_ == 0) {
      std::fill(stamps_.begin(), stamps_.end(), 0);
      tick_ = 1;
    }
    for (int r = r0; r <= r1; ++r)
      for (int c = c0; c <= c1; ++c) {
        const std::size_t cell = static_cast<std::size_t>(r) * static_cast<std::size_t>(nx_) + static_cast<std::size_t>(c);
        for (std::uint32_t k = cellStart_[cell]; k < cellStart_[cell + 1]; ++k) {
          const std::uint32_t i = cellItems_[k];
          if (stamps_[i] == tick_) continue;
          stamps_[i] = tick_;
          if (passes(segments_[i], box)) out.push_back(i);
        }
      }
    return !out.empty();
  }

 private:
  // A long slanted segment has a big box but passes few of the boxes inside it.
  static bool passes(const FenceSegment& s, const Box2& box) {
    return BoxesMeet(s.box, box) && SegmentMeetsBox(s.a, s.b, {box.minX - s.tol, box.minY - s.tol, box.maxX + s.tol, box.maxY + s.tol});
  }

  static int Cell(double v, double origin, double size, int count) {
    double f = std::floor((v - origin) / size);
    if (!(f >= 0)) f = 0;
    if (f > count - 1) f = count - 1;
    return static_cast<int>(f);
  }
  int column(double x) const { return Cell(x, bounds_.minX, cw_, nx_); }
  int row(double y) const { return Cell(y, bounds_.minY, ch_, ny_); }

  // Calls f(cell) for every cell the segment (grown by its tolerance) passes through.
  template <class F>
  void forCells(const FenceSegment& s, F f) const {
    const double dy = s.b.y - s.a.y;
    const int r0 = row(s.box.minY), r1 = row(s.box.maxY);
    for (int r = r0; r <= r1; ++r) {
      const double bandLo = r == 0 ? s.box.minY : std::max(s.box.minY, bounds_.minY + ch_ * r);
      const double bandHi = r == ny_ - 1 ? s.box.maxY : std::min(s.box.maxY, bounds_.minY + ch_ * (r + 1));
      double x0 = s.box.minX, x1 = s.box.maxX;
      if (std::abs(dy) > s.tol) {
        const double t0 = std::clamp((bandLo - s.tol - s.a.y) / dy, 0.0, 1.0), t1 = std::clamp((bandHi + s.tol - s.a.y) / dy, 0.0, 1.0);
        const double xa = s.a.x + (s.b.x - s.a.x) * t0, xb = s.a.x + (s.b.x - s.a.x) * t1;
        const double margin = s.tol + cw_ * 1e-9;
        x0 = std::max(x0, std::min(xa, xb) - margin);
        x1 = std::min(x1, std::max(xa, xb) + margin);
      }
      for (int c = column(x0), c1 = column(x1); c <= c1; ++c) f(static_cast<std::size_t>(r) * static_cast<std::size_t>(nx_) + static_cast<std::size_t>(c));
    }
  }

  void buildGrid() {
    const double w = bounds_.maxX - bounds_.minX, h = bounds_.maxY - bounds_.minY;
    const double target = static_cast<double>(std::clamp<std::size_t>(segments_.size() * 4, 1, 1 << 16));
    if (!(w > 0) && !(h > 0)) {
      nx_ = ny_ = 1;
    } else if (!(h > w * 1e-6)) {
      nx_ = static_cast<int>(target);
      ny_ = 1;
    } else if (!(w > h * 1e-6)) {
      nx_ = 1;
      ny_ = static_cast<int>(target);
    } else {
      nx_ = static_cast<int>(std::clamp(std::round(std::sqrt(target * w / h)), 1.0, target));
      ny_ = static_cast<int>(std::clamp(std::round(target / nx_), 1.0, target));
    }
    cw_ = w > 0 ? w / nx_ : 1;
    ch_ = h > 0 ? h / ny_ : 1;
    const std::size_t cells = static_cast<std::size_t>(nx_) * static_cast<std::size_t>(ny_);
    cellStart_.assign(cells + 1, 0);
    for (const auto& s : segments_) forCells(s, [&](std::size_t cell) { ++cellStart_[cell + 1]; });
    for (std::size_t i = 0; i < cells; ++i) cellStart_[i + 1] += cellStart_[i];
    cellItems_.resize(cellStart_[cells]);
    std::vector<std::uint32_t> fill(cellStart_.begin(), cellStart_.end() - 1);
    for (std::uint32_t i = 0; i < segments_.size(); ++i) forCells(segments_[i], [&](std::size_t cell) { cellItems_[fill[cell]++] = i; });
  }

  std::vector<FenceSegment> segments_;
  Box2 bounds_;
  int nx_ = 1, ny_ = 1;
  double cw_ = 1, ch_ = 1;
  std::vector<std::uint32_t> cellStart_, cellItems_;
  std::vector<std::uint32_t> stamps_;
  std::uint32_t tick_ = 0;
};

// Whether a fence segment may come within its tolerance of a circle's outline: false only when it
// passes wholly outside the circle or wholly inside the ring its chords keep to, so that the circle
// need not be flattened to learn it. Circles off the XY plane are always "may".
bool MayMeetCircle(const Circle& c, const FenceSegment& s) {
  const double r = std::abs(c.radius);
  if (!(c.normal == Vector3d::zAxis()) || !std::isfinite(r) || !(r > 0) || !std::isfinite(c.center.x) || !std::isfinite(c.center.y))
    return true;
  const Point2d centre{c.center.x, c.center.y};
  const double slack = s.tol + 1e-9 * (r + std::abs(centre.x) + std::abs(centre.y));
  const double nearest = std::sqrt(Dist2PointSegment(centre, s.a, s.b));
  if (nearest > r + slack) return false;
  // The chords keep within a ten-thousandth of the radius of the circle; twice that is room enough.
  const double farthest = std::max(centre.distanceTo(s.a), centre.distanceTo(s.b));
  return farthest >= r * (1 - 2e-4) - slack;
}

bool FenceCrosses(const Point2d* pts, std::size_t n, bool area, const FenceSegment& s) {
  const double t2 = s.tol * s.tol;
  if (n == 1) return Dist2PointSegment(pts[0], s.a, s.b) <= t2;
  const bool edge = AnyEdge(pts, n, area, [&](Point2d p, Point2d q) {
    if (std::max(p.x, q.x) < s.box.minX || std::min(p.x, q.x) > s.box.maxX || std::max(p.y, q.y) < s.box.minY || std::min(p.y, q.y) > s.box.maxY)
      return false;
    return SegmentsMeet(p, q, s.a, s.b, s.tol);
  });
  // A segment meeting no edge lies wholly inside or wholly outside.
  return edge || (area && InsidePolygon(s.a, pts, n));
}

struct FenceVisitor {
  FenceIndex& index;
  std::vector<std::uint32_t> candidates;
  bool hit = false;

  Verdict box(const Box2& b) { return index.query(b, candidates) ? Verdict::Descend : Verdict::Skip; }
  bool piece(const Point2d* pts, std::size_t n, bool area) {
    for (std::uint32_t i : candidates)
      if (FenceCrosses(pts, n, area, index.segment(i))) return hit = true;
    return false;
  }
};

// Whole outline inside the window.
struct WindowVisitor {
  Box2 window;
  bool any = false, outside = false;

  Verdict box(const Box2& b) {
    if (BoxInside(b, window)) {
      any = true;
      return Verdict::Skip;
    }
    if (!BoxesMeet(b, window)) {  // also when the box is not finite
      outside = true;
      return Verdict::Stop;
    }
    return Verdict::Descend;
  }
  bool piece(const Point2d* pts, std::size_t n, bool) {
    any = true;
    for (std::size_t i = 0; i < n; ++i)
      if (!PointInside(pts[i], window)) return outside = true;
    return false;
  }
};

// Any part of the outline in the box, or the box inside an area.
struct CrossingVisitor {
  Box2 window;
  bool hit = false;

  Verdict box(const Box2& b) {
    if (!BoxesMeet(b, window)) return Verdict::Skip;
    if (BoxInside(b, window)) {
      hit = true;
      return Verdict::Stop;
    }
    return Verdict::Descend;
  }
  bool piece(const Point2d* pts, std::size_t n, bool area) {
    if (n == 1) return hit = PointInside(pts[0], window);
    if (AnyEdge(pts, n, area, [&](Point2d p, Point2d q) { return SegmentMeetsBox(p, q, window); })) return hit = true;
    const Point2d centre{(window.minX + window.maxX) / 2, (window.minY + window.maxY) / 2};
    return hit = area && InsidePolygon(centre, pts, n);
  }
};

struct CollectVisitor {
  SelectionShape& out;
  Verdict box(const Box2&) { return Verdict::Descend; }
  bool piece(const Point2d* pts, std::size_t n, bool area) {
    (area ? out.areas : out.paths).emplace_back(pts, pts + n);
    return false;
  }
};

// What a selection walks: every entity of the space in drawing order, or the index's candidates.
struct WholeSpace {
  const Database& db;
  const BlockRecord& space;
  ObjectId layoutViewport() const { return LayoutViewportOf(db, space); }
  template <class F>
  void forEach(const Box2&, F f) const {
    db.forEachEntity(space, f);
  }
};
// The index's candidates; `near` (may be empty) turns down an entity by its box before its outline is built.
struct IndexedSpace {
  SelectionIndex& index;
  std::function<bool(const Entity&, const Box2&)> near;
  ObjectId layoutViewport() const { return index.layoutViewport(); }
  template <class F>
  void forEach(const Box2& box, F f) const {
    std::vector<SelectionIndex::Candidate> found;
    index.candidates(box.minX, box.minY, box.maxX, box.maxY, found);
    for (const SelectionIndex::Candidate& c : found) {
      if (c.entity->isErased()) continue;
      if (near && c.bounded && !near(*c.entity, {c.minX, c.minY, c.maxX, c.maxY})) continue;
      f(*c.entity);
    }
  }
};

// Runs `f(entity, shape)` for the entities of `source` a selection may take whose outline may
// reach `reach`, in drawing order.
template <class Source, class F>
void ForEachSelectable(const Database& db, const Source& source, const Box2& reach, const std::function<bool(const Entity&)>& accept,
                       const TextMeasurer* measurer, F f) {
  ShapeBuilder builder(db, measurer ? *measurer : ApproximateTextMeasurer());
  Shape shape;
  const ObjectId sheet = source.layoutViewport();
  source.forEach(reach, [&](const Entity& e) {
    if (!e.isVisible()) return;
    // Markers and previews are not drawing content; the paper space's own viewport is the sheet.
    if (const auto* custom = As<CustomEntity>(&e); custom && custom->isTransient()) return;
    if (!sheet.isNull() && e.id == sheet) return;
    if (accept && !accept(e)) return;
    builder.build(e, shape);
    if (!shape.empty()) f(e, shape);
  });
}

template <class Source>
std::vector<ObjectId> FenceSelection(const Database& db, Source source, const std::vector<Point2d>& fence,
                                     const std::function<bool(const Entity&)>& accept, const TextMeasurer* measurer) {
  std::vector<ObjectId> ids;
  FenceIndex index(fence);
  if (index.empty()) return ids;
  if constexpr (std::is_same_v<Source, IndexedSpace>) {
    // Only entities whose box a segment passes through can be crossed: the rest of the fence's
    // bounds (most of a zigzag's) is left alone.
    std::vector<std::uint32_t> near;
    source.near = [&index, near](const Entity& e, const Box2& b) mutable {
      if (!index.query(b, near)) return false;
      const auto* circle = As<Circle>(&e);
      return !circle || std::any_of(near.begin(), near.end(), [&](std::uint32_t i) { return MayMeetCircle(*circle, index.segment(i)); });
    };
  }
  FenceVisitor v{index, {}};
  std::vector<Point2d> scratch;
  const Matrix3d identity;
  ForEachSelectable(db, source, index.bounds(), accept, measurer, [&](const Entity& e, const Shape& shape) {
    v.hit = false;
    // One box test for the whole entity first, unless it is a single piece (tested anyway).
    if (shape.own.pieces.size() + shape.placements.size() > 1 && v.box(ProjectBox(shape.box, identity)) == Verdict::Skip) return;
    std::size_t work = 0;
    Walk(shape, identity, v, scratch, work);
    if (v.hit) ids.push_back(e.id);
  });
  return ids;
}

template <class Source>
std::vector<ObjectId> BoxSelection(const Database& db, const Source& source, Point2d corner1, Point2d corner2, bool crossing,
                                   const std::function<bool(const Entity&)>& accept, const TextMeasurer* measurer) {
  std::vector<ObjectId> ids;
  Box2 window{std::min(corner1.x, corner2.x), std::min(corner1.y, corner2.y), std::max(corner1.x, corner2.x), std::max(corner1.y, corner2.y)};
  if (!window.finite()) return ids;
  // Edges count as inside: grow the box by the rounding noise of its coordinates.
  const double tol = kRelativeTolerance * std::max({std::abs(window.minX), std::abs(window.minY), std::abs(window.maxX),
                                                    std::abs(window.maxY), window.maxX - window.minX, window.maxY - window.minY});
  window = {window.minX - tol, window.minY - tol, window.maxX + tol, window.maxY + tol};
  std::vector<Point2d> scratch;
  const Matrix3d identity;
  ForEachSelectable(db, source, window, accept, measurer, [&](const Entity& e, const Shape& shape) {
    std::size_t work = 0;
    bool selected = false;
    if (crossing) {
      CrossingVisitor v{window};
      Walk(shape, identity, v, scratch, work);
      selected = v.hit;
    } else {
      WindowVisitor v{window};
      const bool stopped = Walk(shape, identity, v, scratch, work);
      // A walk cut short by the work limit proved nothing.
      selected = v.any && !v.outside && !(stopped && work > kMaxWalk);
    }
    if (selected) ids.push_back(e.id);
  });
  return ids;
}

}  // namespace

SelectionShape SelectionShapeOf(const Entity& e, const Database& db, const TextMeasurer* measurer) {
  SelectionShape out;
  ShapeBuilder builder(db, measurer ? *measurer : ApproximateTextMeasurer());
  Shape shape;
  builder.build(e, shape);
  CollectVisitor v{out};
  std::vector<Point2d> scratch;
  std::size_t work = 0;
  Walk(shape, Matrix3d{}, v, scratch, work);
  return out;
}

std::vector<ObjectId> SelectByFence(const Database& db, const BlockRecord& space, const std::vector<Point2d>& fence,
                                    const std::function<bool(const Entity&)>& accept, const TextMeasurer* measurer) {
  return FenceSelection(db, WholeSpace{db, space}, fence, accept, measurer);
}

std::vector<ObjectId> SelectByBox(const Database& db, const BlockRecord& space, Point2d corner1, Point2d corner2, bool crossing,
                                  const std::function<bool(const Entity&)>& accept, const TextMeasurer* measurer) {
  return BoxSelection(db, WholeSpace{db, space}, corner1, corner2, crossing, accept, measurer);
}

std::vector<ObjectId> SelectByFence(const Database& db, SelectionIndex& index, const std::vector<Point2d>& fence,
                                    const std::function<bool(const Entity&)>& accept) {
  return FenceSelection(db, IndexedSpace{index, {}}, fence, accept, index.measurer());
}

std::vector<ObjectId> SelectByBox(const Database& db, SelectionIndex& index, Point2d corner1, Point2d corner2, bool crossing,
                                  const std::function<bool(const Entity&)>& accept) {
  return BoxSelection(db, IndexedSpace{index, {}}, corner1, corner2, crossing, accept, index.measurer());
}

}  // namespace tv::cad
