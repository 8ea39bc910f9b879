// The view of the current space through the editor's system variables.
#include <algorithm>
#include <cmath>

#include "host/wrappers.h"

namespace tv::host {

namespace {

// Width and height of the drawing area in pixels; nullopt when unknown or degenerate.
std::optional<Point2d> ScreenSize() {
  const std::optional<Point3d> size = AsPoint(GetVar("SCREENSIZE"));
  if (!size || !(size->x > 0) || !(size->y > 0)) return std::nullopt;
  return Point2d{size->x, size->y};
}

}  // namespace

ViewRect ShowActiveView() {
  const Point3d centre = AsPoint(GetVar("VIEWCTR")).value_or(Point3d{});
  const double height = GetRealVar("VIEWSIZE", 0.0);
  const std::optional<Point2d> screen = ScreenSize();
  const double width = screen ? height * screen->x / screen->y : height;
  return ViewRect{{centre.x - width / 2, centre.y - height / 2}, {centre.x + width / 2, centre.y + height / 2}};
}

void ZoomView(Point2d lowerLeft, Point2d upperRight) {
  const Point3d centre{(lowerLeft.x + upperRight.x) / 2, (lowerLeft.y + upperRight.y) / 2, 0};
  const double dx = std::abs(upperRight.x - lowerLeft.x), dy = std::abs(upperRight.y - lowerLeft.y);
  // The view keeps the screen's proportion: a wide rectangle needs more height to fit.
  const std::optional<Point2d> screen = ScreenSize();
  const double height = screen ? std::max(dy, dx * screen->y / screen->x) : dy;
  CurrentEditor().setView(centre, height);
}

}  // namespace tv::host
