#include "console/user_box_selection.h"

#include <algorithm>
#include <cmath>

#include "cad/selection_geometry.h"

namespace tv::console {

namespace {

constexpr double kEps = 1e-9;

struct Box {
  double x0, y0, x1, y1;
  double tol() const { return kEps * std::max({1.0, std::abs(x0), std::abs(x1), std::abs(y0), std::abs(y1)}); }
  bool contains(Point2d p) const {
    const double t = tol();
    return p.x >= x0 - t && p.x <= x1 + t && p.y >= y0 - t && p.y <= y1 + t;
  }
};

// True when the axes of the UCS lie along the world's (turned by a multiple of 90 degrees or
// mirrored): its boxes are then world boxes.
bool AxisAligned(const Matrix3d& ucsToWorld) {
  const Vector3d x = ucsToWorld.transform(Vector3d::xAxis()).normalized();
  const Vector3d z = ucsToWorld.transform(Vector3d::zAxis()).normalized();
  const bool xFlat = std::abs(x.x) < 1e-12 || std::abs(x.y) < 1e-12;
  return xFlat && std::abs(x.z) < 1e-12 && std::abs(std::abs(z.z) - 1) < 1e-12;
}

// Liang-Barsky: does the segment meet the box?
bool SegmentMeetsBox(Point2d a, Point2d b, const Box& box) {
  const double t = box.tol();
  double lo = 0, hi = 1;
  const double dx = b.x - a.x, dy = b.y - a.y;
  const double p[4] = {-dx, dx, -dy, dy};
  const double q[4] = {a.x - (box.x0 - t), (box.x1 + t) - a.x, a.y - (box.y0 - t), (box.y1 + t) - a.y};
  for (int i = 0; i < 4; ++i) {
    if (p[i] == 0) {
      if (q[i] < 0) return false;
      continue;
    }
    const double r = q[i] / p[i];
    if (p[i] < 0) lo = std::max(lo, r);
    else hi = std::min(hi, r);
    if (lo > hi) return false;
  }
  return true;
}

bool PolygonContains(const std::vector<Point2d>& poly, Point2d p) {
  bool inside = false;
  for (std::size_t i = 0, j = poly.size() - 1; i < poly.size(); j = i++) {
    const Point2d& a = poly[i];
    const Point2d& b = poly[j];
    if ((a.y > p.y) != (b.y > p.y) && p.x < (b.x - a.x) * (p.y - a.y) / (b.y - a.y) + a.x) inside = !inside;
  }
  return inside;
}

std::vector<Point2d> ToUser(const std::vector<Point2d>& world, const Matrix3d& worldToUcs) {
  std::vector<Point2d> user;
  user.reserve(world.size());
  for (Point2d p : world) user.push_back(worldToUcs.transform(Point3d(p)).to2d());
  return user;
}

bool Inside(const cad::SelectionShape& shape, const Box& box, const Matrix3d& worldToUcs) {
  bool any = false;
  for (const auto* list : {&shape.paths, &shape.areas})
    for (const auto& path : *list)
      for (Point2d p : ToUser(path, worldToUcs)) {
        if (!box.contains(p)) return false;
        any = true;
      }
  return any;
}

bool Touches(const cad::SelectionShape& shape, const Box& box, const Matrix3d& worldToUcs) {
  for (const auto& path : shape.paths) {
    const std::vector<Point2d> p = ToUser(path, worldToUcs);
    if (p.size() == 1 && box.contains(p[0])) return true;
    for (std::size_t i = 1; i < p.size(); ++i)
      if (SegmentMeetsBox(p[i - 1], p[i], box)) return true;
  }
  for (const auto& area : shape.areas) {
    const std::vector<Point2d> p = ToUser(area, worldToUcs);
    if (p.empty()) continue;
    for (std::size_t i = 0; i < p.size(); ++i)
      if (SegmentMeetsBox(p[i], p[(i + 1) % p.size()], box)) return true;
    if (PolygonContains(p, {(box.x0 + box.x1) / 2, (box.y0 + box.y1) / 2})) return true;
  }
  return false;
}

}  // namespace

std::vector<ObjectId> SelectByUserBox(const cad::Database& db, cad::SelectionIndex& index, Point3d corner1,
                                      Point3d corner2, bool crossing, const Matrix3d& ucsToWorld,
                                      const std::function<bool(const cad::Entity&)>& accept) {
  if (AxisAligned(ucsToWorld)) {
    return cad::SelectByBox(db, index, ucsToWorld.transform(corner1).to2d(), ucsToWorld.transform(corner2).to2d(),
                            crossing, accept);
  }
  const Box box{std::min(corner1.x, corner2.x), std::min(corner1.y, corner2.y), std::max(corner1.x, corner2.x),
                std::max(corner1.y, corner2.y)};
  Extents3d worldBox;
  for (Point3d c : {Point3d{box.x0, box.y0}, Point3d{box.x1, box.y0}, Point3d{box.x1, box.y1}, Point3d{box.x0, box.y1}})
    worldBox.add(ucsToWorld.transform(c));
  const Matrix3d worldToUcs = ucsToWorld.inverse().value_or(Matrix3d::identity());
  // Whatever the turned box selects meets the world box around it.
  std::vector<ObjectId> found;
  for (ObjectId id : cad::SelectByBox(db, index, worldBox.min.to2d(), worldBox.max.to2d(), true, accept)) {
    const cad::Entity* e = db.entity(id);
    if (!e) continue;
    const cad::SelectionShape shape = cad::SelectionShapeOf(*e, db, index.measurer());
    if (crossing ? Touches(shape, box, worldToUcs) : Inside(shape, box, worldToUcs)) found.push_back(id);
  }
  return found;
}

}  // namespace tv::console
