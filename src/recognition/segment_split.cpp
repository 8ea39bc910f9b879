// Lines and polyline segments become horizontal and vertical segments in working coordinates;
// those inside a found sheet are that sheet's content instead.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "host/entity.h"
#include "recognition/loose_lines.h"
#include "recognition/loose_lines_internal.h"
#include "recognition/rectangle_finder_internal.h"
#include "recognition/working_coordinates.h"

namespace tv::recognition {

namespace {

using loose::HoldsSegment;

// Shorter than this, a line or a polyline step is a point.
constexpr double kPointLength = 1e-05;

// A segment along an axis within a thousandth of its length joins its family; others are dropped.
void AppendToFamily(ObjectId id, Point2d p, Point2d q, SegmentArrays& segments) {
  const double dx = std::abs(q.x - p.x), dy = std::abs(q.y - p.y);
  const double t = (dy + dx) / 1000.0;
  if (dy < t) {
    const bool pFirst = p.x < q.x;
    segments.hIds.push_back(id);
    segments.hStarts.push_back(pFirst ? p : q);
    segments.hEnds.push_back(pFirst ? q : p);
  } else if (dx < t) {
    const bool pFirst = p.y < q.y;
    segments.vIds.push_back(id);
    segments.vStarts.push_back(pFirst ? p : q);
    segments.vEnds.push_back(pFirst ? q : p);
  }
}

// The first sheet, in list order, whose inner box strictly holds a segment. A drawing may hold a
// million segments and thousands of sheets, so the inner boxes are spread over a uniform grid and a
// segment meets only the sheets of the cell its first end falls in. Each cell keeps copies of its
// boxes next to each other: a segment is tried against them without visiting the sheets.
class InnerBoxGrid {
 public:
  explicit InnerBoxGrid(const SheetList& sheets) {
    for (const auto& sheet : sheets) {
      if (!sheet) continue;
      const auto& b = sheet->innerBox;
      if (b[0] < b[1] && b[2] < b[3]) sheets_.push_back(sheet.get());
    }
    if (sheets_.empty()) return;
    double x1 = sheets_.front()->innerBox[1], y1 = sheets_.front()->innerBox[3];
    x0_ = sheets_.front()->innerBox[0];
    y0_ = sheets_.front()->innerBox[2];
    for (const Plot_Drawing1* s : sheets_) {
      x0_ = std::min(x0_, s->innerBox[0]);
      x1 = std::max(x1, s->innerBox[1]);
      y0_ = std::min(y0_, s->innerBox[2]);
      y1 = std::max(y1, s->innerBox[3]);
    }
    // About four cells a sheet; coarser while sheets far larger than the rest would fill too many.
    const std::size_t count = sheets_.size();
    std::size_t n = std::clamp<std::size_t>(static_cast<std::size_t>(std::ceil(2.0 * std::sqrt(count))), 1, 1024);
    for (;; n /= 2) {
      nx_ = std::isfinite(x1 - x0_) ? n : 1;
      ny_ = std::isfinite(y1 - y0_) ? n : 1;
      cellW_ = (x1 - x0_) / static_cast<double>(nx_);
      cellH_ = (y1 - y0_) / static_cast<double>(ny_);
      std::uint64_t entries = 0;
      for (const Plot_Drawing1* s : sheets_) entries += cellsOf(*s);
      if (n == 1 || entries <= 8 * static_cast<std::uint64_t>(count) + 1024) break;
    }
    // Cells as ranges of one array; each cell lists its sheets in list order.
    cellStart_.assign(nx_ * ny_ + 1, 0);
    forEachCell([&](std::size_t cell, std::size_t) { ++cellStart_[cell + 1]; });
    for (std::size_t c = 1; c < cellStart_.size(); ++c) cellStart_[c] += cellStart_[c - 1];
    items_.resize(cellStart_.back());
    std::vector<std::size_t> fill(cellStart_.begin(), cellStart_.end() - 1);
    forEachCell([&](std::size_t cell, std::size_t sheet) {
      items_[fill[cell]++] = {sheets_[sheet]->innerBox, sheet};
    });
  }

  Plot_Drawing1* holderOf(Point2d p, Point2d q) const {
    if (sheets_.empty()) return nullptr;
    const std::size_t cell = Cell(p.y, y0_, cellH_, ny_) * nx_ + Cell(p.x, x0_, cellW_, nx_);
    for (std::size_t k = cellStart_[cell]; k < cellStart_[cell + 1]; ++k)
      if (HoldsSegment(items_[k].box, p, q)) return sheets_[items_[k].sheet];
    return nullptr;
  }

 private:
  struct Item {
    std::array<double, 4> box;  // the sheet's inner box
    std::size_t sheet;          // index into sheets_
  };

  // Monotone in `v`, so a box's cells cover the cell of every point inside it.
  static std::size_t Cell(double v, double origin, double size, std::size_t count) {
    const double f = (v - origin) / size;
    if (!(f >= 0.0)) return 0;
    if (f >= static_cast<double>(count)) return count - 1;
    return std::min(static_cast<std::size_t>(f), count - 1);
  }
  std::uint64_t cellsOf(const Plot_Drawing1& s) const {
    const auto& b = s.innerBox;
    const std::uint64_t w = Cell(b[1], x0_, cellW_, nx_) - Cell(b[0], x0_, cellW_, nx_) + 1;
    const std::uint64_t h = Cell(b[3], y0_, cellH_, ny_) - Cell(b[2], y0_, cellH_, ny_) + 1;
    return w * h;
  }
  template <class F>
  void forEachCell(F&& f) const {
    for (std::size_t i = 0; i < sheets_.size(); ++i) {
      const auto& b = sheets_[i]->innerBox;
      const std::size_t c0 = Cell(b[0], x0_, cellW_, nx_), c1 = Cell(b[1], x0_, cellW_, nx_);
      const std::size_t r0 = Cell(b[2], y0_, cellH_, ny_), r1 = Cell(b[3], y0_, cellH_, ny_);
      for (std::size_t r = r0; r <= r1; ++r)
        for (std::size_t c = c0; c <= c1; ++c) f(r * nx_ + c, i);
    }
  }

  std::vector<Plot_Drawing1*> sheets_;  // those with a non-empty inner box, in list order
  double x0_ = 0.0, y0_ = 0.0, cellW_ = 1.0, cellH_ = 1.0;
  std::size_t nx_ = 1, ny_ = 1;
  std::vector<std::size_t> cellStart_;
  std::vector<Item> items_;
};

// The vertices of a polyline in order, the first again at the end when it is closed, with steps
// shorter than a point merged into the vertex that follows.
std::vector<Point2d> PolylinePath(const host::Entity& polyline) {
  std::vector<Point2d> v = polyline.vertices();
  if (v.empty()) return v;
  if (polyline.closed()) v.push_back(v.front());
  std::size_t kept = 0;
  for (std::size_t i = 0; i < v.size(); ++i)
    if (i + 1 == v.size() || !(v[i].distanceTo(v[i + 1]) < kPointLength)) v[kept++] = v[i];
  v.resize(kept);
  return v;
}

}  // namespace

void AddSegment(ObjectId id, Point3d p, Point3d q, SheetList& sheets, SegmentArrays& segments) {
  const Point2d a = ToWorking(p).to2d(), b = ToWorking(q).to2d();
  for (auto& sheet : sheets) {
    if (!sheet) continue;
    EnsureInnerBox(*sheet);
    if (HoldsSegment(sheet->innerBox, a, b)) {
      sheet->hasContent = true;
      return;
    }
  }
  AppendToFamily(id, a, b, segments);
}

void SplitIntoSegments(SheetList& sheets, const TempIdArray& remaining, SegmentArrays& segments) {
  SplitIntoSegments(sheets, remaining, TempIdArray{}, segments);
}

void SplitIntoSegments(SheetList& sheets, const TempIdArray& remaining, const TempIdArray& lines,
                       SegmentArrays& segments) {
  for (auto& sheet : sheets)
    if (sheet) EnsureInnerBox(*sheet);
  const InnerBoxGrid grid(sheets);
  // Mostly one segment an entity, of either family: room for all of them in both leaves the pages
  // the families never reach untouched and spares growing arrays of a million points.
  const std::size_t count = remaining.size() + lines.size();
  for (auto* ids : {&segments.hIds, &segments.vIds}) ids->reserve(ids->size() + count);
  for (auto* points : {&segments.hStarts, &segments.hEnds, &segments.vStarts, &segments.vEnds})
    points->reserve(points->size() + count);

  // World points are taken to working coordinates here, once each.
  const auto add = [&](ObjectId id, Point3d p, Point3d q) {
    const Point2d a = ToWorking(p).to2d(), b = ToWorking(q).to2d();
    if (Plot_Drawing1* holder = grid.holderOf(a, b)) {
      holder->hasContent = true;
      return;
    }
    AppendToFamily(id, a, b, segments);
  };

  // Outside a UCS a line's extents are its ends' own coordinates, so the line needn't be opened
  // again; in one, its box was taken around a turned copy, which needn't match the ends to the bit.
  const bool linesFromExtents = !Ucs().active;
  const auto opened = [&](const Temp_Id& temp) { return !linesFromExtents || temp.kind != TempKind::Line; };
  const auto split = [&](const TempIdArray& list) {
    for (std::size_t r = 0; r < list.size(); ++r) {
      // The polylines left by the area order lie all over the drawing: they are fetched ahead.
      internal::FetchAhead(list, r, [&](std::size_t k) { return opened(list[k]); });
      const Temp_Id& temp = list[r];
      if (!opened(temp)) {
        const Extents3d& e = temp.extents;
        const Point3d p{e.min.x, temp.rising ? e.min.y : e.max.y, e.min.z};
        const Point3d q{e.max.x, temp.rising ? e.max.y : e.min.y, e.max.z};
        if (p.distanceTo(q) > kPointLength) add(temp.id, p, q);
        continue;
      }
      const host::Entity entity = host::OpenEntity(temp.id);
      if (!entity) continue;
      if (entity.kind() == host::EntityClass::Line) {
        const Point3d p = entity.startPoint(), q = entity.endPoint();
        if (p.distanceTo(q) > kPointLength) add(temp.id, p, q);
      } else if (host::IsPolylineClass(entity.kind())) {
        const std::vector<Point2d> path = PolylinePath(entity);
        for (std::size_t i = 0; i + 1 < path.size(); ++i) add(temp.id, Point3d{path[i]}, Point3d{path[i + 1]});
      }
    }
  };
  split(remaining);
  split(lines);
}

}  // namespace tv::recognition
