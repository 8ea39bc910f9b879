// The view that fence selections need: they see only what the screen shows.
#include <algorithm>
#include <cmath>

#include "host/wrappers.h"
#include "recognition/sheet_traversal.h"

namespace tv::recognition {

void ShowExtents(const Extents3d& box) {
  if (box.isEmpty()) return;
  const host::ViewRect view = host::ShowActiveView();
  if (view.lowerLeft.x <= box.min.x && view.lowerLeft.y <= box.min.y && box.max.x <= view.upperRight.x &&
      box.max.y <= view.upperRight.y)
    return;
  Extents3d grown = box;
  grown.expandBy(std::min(box.width(), box.height()) / 40.0);
  grown.add(Point3d{view.lowerLeft.x, view.lowerLeft.y, grown.min.z});
  grown.add(Point3d{view.upperRight.x, view.upperRight.y, grown.max.z});
  SetView(grown.min, grown.max);
}

void SetView(Point3d lowerLeft, Point3d upperRight) {
  host::ZoomView(lowerLeft.to2d(), upperRight.to2d());
}

void ZigzagPoints(std::vector<Point3d>& points, Point3d p0, Point3d p1, int n) {
  points.clear();
  if (n <= 0) return;
  const double dx = p1.x - p0.x;
  const double dy = p1.y - p0.y;
  points.reserve(2 * static_cast<std::size_t>(n) + 2);
  if (std::abs(dx) <= std::abs(dy)) {
    for (int i = 0; i <= n; ++i) {
      const double x = p0.x + i * dx / n;
      points.push_back({x, p0.y, 0.0});
      points.push_back({x, p1.y, 0.0});
    }
  } else {
    for (int i = 0; i <= n; ++i) {
      const double y = p0.y + i * dy / n;
      points.push_back({p0.x, y, 0.0});
      points.push_back({p1.x, y, 0.0});
    }
  }
}

}  // namespace tv::recognition
