// Outer outlines and holes from closed loops, by the areas of regions and their differences.
#include <boost/geometry.hpp>
#include <boost/geometry/geometries/multi_polygon.hpp>
#include <boost/geometry/geometries/point_xy.hpp>
#include <boost/geometry/geometries/polygon.hpp>
#include <optional>

#include "host/editor.h"
#include "signing/progress_scope.h"
#include "signing/sign_boundary.h"

namespace tv::signing {

namespace {

namespace bg = boost::geometry;
using XY = bg::model::d2::point_xy<double>;
using Polygon = bg::model::polygon<XY>;
using Region = bg::model::multi_polygon<Polygon>;

constexpr double kAreaStep = 0.000000001;

// The region a loop encloses; nullopt when it encloses none (too few points, crossing itself).
std::optional<Region> RegionOf(const PointLoop& loop) {
  Polygon polygon;
  for (const Point3d& p : loop) bg::append(polygon.outer(), XY(p.x, p.y));
  bg::correct(polygon);
  if (!bg::is_valid(polygon) || !(bg::area(polygon) > 0)) return std::nullopt;
  return Region{polygon};
}

// `r` minus `cut`; nullopt when the operation fails on the pair. As with the region operations of
// a CAD host, a difference that leaves nothing fails too: a loop that lies inside the one
// subtracted keeps its area, which is what makes a counter that comes before its letter an outline
// of its own.
std::optional<Region> Subtract(const Region& r, const Region& cut) {
  try {
    Region result;
    bg::difference(r, cut, result);
    if (result.empty()) return std::nullopt;
    return result;
  } catch (const bg::exception&) {
    return std::nullopt;
  }
}

MyShape ShapeOf(const PointLoop& loop, bool outer, Point3d centre) {
  MyShape shape;
  shape.is_outer = outer ? 1 : 0;
  for (const Point3d& p : loop) {
    shape.xs.push_back(p.x - centre.x);
    shape.ys.push_back(p.y - centre.y);
  }
  return shape;
}

}  // namespace

bool BuildOutlines(LoopList& loops, std::vector<std::unique_ptr<MyShape>>& shapes, Point3d centre) {
  std::vector<Region> regions;
  LoopList kept;
  for (PointLoop& loop : loops)
    if (std::optional<Region> region = RegionOf(loop)) {
      regions.push_back(std::move(*region));
      kept.push_back(std::move(loop));
    }
  loops = std::move(kept);
  if (regions.empty()) {
    host::Print("\n签名边线不封闭或签名边线不在X-Y平面内!\n");
    return false;
  }

  ProgressScope bar("签名边界计算......", static_cast<int>(regions.size()));
  std::vector<bool> used(loops.size(), false);
  for (std::size_t i = 0; i < loops.size(); ++i) {
    bar.set(static_cast<int>(i));
    if (used[i]) continue;
    // No sorting by size: a counter that comes before its letter makes an outline of its own.
    Region r = regions[i];
    double area = bg::area(r);
    std::vector<std::size_t> group{i};
    for (std::size_t j = 0; j < loops.size(); ++j) {
      if (j == i || used[j]) continue;
      std::optional<Region> rest = Subtract(r, regions[j]);
      if (!rest) continue;
      r = std::move(*rest);
      const double b = bg::area(r);
      if (b < area - kAreaStep) {
        area = b;
        if (b <= 0) break;
        group.push_back(j);
      }
    }
    if (area <= 0) continue;
    for (std::size_t k = 0; k < group.size(); ++k) {
      shapes.push_back(std::make_unique<MyShape>(ShapeOf(loops[group[k]], k == 0, centre)));
      used[group[k]] = true;
    }
  }
  return true;
}

}  // namespace tv::signing
