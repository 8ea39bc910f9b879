// How signatures draw: in full, as a skeleton, and while being dragged into place.
#include <algorithm>

#include "host/hatch_lines.h"
#include "signing/sign_entity.h"
#include "signing/sign_placing.h"

namespace tv::signing {

namespace {

// Primitives take the entity's own colour.
constexpr std::int16_t kByLayer = 256;

}  // namespace

void DrawSignFull(const Sign_Base& sign, host::WorldDraw& draw) {
  const Extents3d box = sign.extents();
  if (box.isEmpty()) return;
  const double m = std::min(box.width(), box.height());
  draw.setColor(kByLayer);
  draw.setFill(false);
  const std::vector<std::vector<Point3d>> loops = sign.loops();
  for (const auto& loop : loops) {
    std::vector<Point3d> ring = loop;
    ring.push_back(loop.front());
    draw.polyline(ring);
  }
  // The hatch spacing is a two-hundredth of the smaller side, whatever the signature's size.
  for (const host::Segment3d& s : host::HatchPatternSegments(loops, "ANSI31", (m / 200) / 3.175))
    draw.polyline({s[0], s[1]});
}

void DrawSignSkeleton(const Sign_Base& sign, host::WorldDraw& draw) {
  draw.setColor(kByLayer);
  draw.setFill(false);
  for (const auto& loop : sign.loops())
    for (std::size_t i = 0; i + 1 < loop.size(); i += 3) draw.polyline({loop[i], loop[i + 1]});
}

void Temp_Sign::worldDraw(host::WorldDraw& draw) const {
  std::vector<Point3d> fitted = points;
  FitSignPoints(fitted, first_point, current_point, size_x, size_y, centre);
  Sign_Base shape;
  shape.loop_sizes = loop_sizes;
  shape.points = std::move(fitted);
  draw.setColor(kByLayer);
  draw.setFill(false);
  // The closing edges are left out while dragging.
  for (const auto& loop : shape.loops())
    if (loop.size() >= 2) draw.polyline(loop);
}

}  // namespace tv::signing
