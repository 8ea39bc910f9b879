// Hatch pattern lines through the plot engine's own hatching of areas.
#include <cmath>

#include "host/hatch_lines.h"
#include "render/plot_shapes.h"

namespace tv::host {

namespace {

// One family of a predefined pattern at scale 1, as the pattern file gives it.
struct PatternFamily {
  double angleDeg;
  Point2d base;
  Vector2d offset;  // in the family's own frame: along the line, then across
};

std::vector<PatternFamily> PredefinedPattern(std::string_view name) {
  if (name == "ANSI31") return {{45, {0, 0}, {0, 3.175}}};
  return {};
}

// More lines than this in one family would only cost time: the area looks solid long before.
constexpr double kMaxLines = 20000;

}  // namespace

std::vector<Segment3d> HatchPatternSegments(const std::vector<std::vector<Point3d>>& loops, std::string_view pattern,
                                            double scale) {
  std::vector<Segment3d> out;
  if (!(scale > 0) || !std::isfinite(scale)) return out;
  std::vector<render::Polyline2d> rings;
  for (const auto& loop : loops) {
    if (loop.size() < 3) continue;
    render::Polyline2d ring;
    for (const Point3d& p : loop) ring.push_back(p.to2d());
    ring.push_back(ring.front());
    rings.push_back(std::move(ring));
  }
  if (rings.empty()) return out;
  for (const PatternFamily& family : PredefinedPattern(pattern)) {
    const double a = family.angleDeg * kPi / 180;
    const Vector2d dir{std::cos(a), std::sin(a)}, across{-dir.y, dir.x};
    const Vector2d offset = dir * (family.offset.x * scale) + across * (family.offset.y * scale);
    render::ForEachFamilyLine(rings, family.base, dir, offset, kMaxLines,
                              [&](Point2d origin, const std::vector<std::pair<double, double>>& spans) {
                                for (const auto& [t0, t1] : spans)
                                  out.push_back({Point3d{origin + dir * t0}, Point3d{origin + dir * t1}});
                              });
  }
  return out;
}

}  // namespace tv::host
