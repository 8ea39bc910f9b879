#include "recognition/plot_marker.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "host/editor.h"

namespace tv::recognition {

namespace {

// Seven-segment strokes in a cell 1 wide and 2 high, origin at the lower left. Each digit is a
// few polylines, so that the figure reads with plain lines.
struct Stroke {
  std::array<Point2d, 6> points;
  int count = 0;
};
using Glyph = std::array<Stroke, 2>;

constexpr Point2d kBL{0, 0}, kBR{1, 0}, kML{0, 1}, kMR{1, 1}, kTL{0, 2}, kTR{1, 2};

constexpr std::array<Glyph, 10> kDigits = {{
    {{{{kBL, kBR, kTR, kTL, kBL}, 5}, {}}},                         // 0
    {{{{kTR, kBR}, 2}, {}}},                                         // 1
    {{{{kTL, kTR, kMR, kML, kBL, kBR}, 6}, {}}},                     // 2
    {{{{kTL, kTR, kBR, kBL}, 4}, {{kML, kMR}, 2}}},                  // 3
    {{{{kTL, kML, kMR}, 3}, {{kTR, kBR}, 2}}},                       // 4
    {{{{kTR, kTL, kML, kMR, kBR, kBL}, 6}, {}}},                     // 5
    {{{{kTR, kTL, kBL, kBR, kMR, kML}, 6}, {}}},                     // 6
    {{{{kTL, kTR, kBR}, 3}, {}}},                                    // 7
    {{{{kBL, kBR, kTR, kTL, kBL}, 5}, {{kML, kMR}, 2}}},             // 8
    {{{{kBL, kBR, kTR, kTL, kML, kMR}, 6}, {}}},                     // 9
}};

// Digits most significant first, leading zeros dropped.
std::vector<int> DigitsOf(std::int32_t number) {
  std::vector<int> digits;
  std::int32_t rest = number;
  for (std::int32_t divisor : {10000, 1000, 100, 10}) {
    const int d = static_cast<int>((rest / divisor) % 10);
    rest %= divisor;
    if (d != 0 || !digits.empty()) digits.push_back(d);
  }
  digits.push_back(static_cast<int>(rest % 10));
  return digits;
}

class MarkerPainter {
 public:
  MarkerPainter(host::WorldDraw& draw, bool inUcs, double z) : draw_(draw), inUcs_(inUcs), z_(z) {}

  void polygon(std::initializer_list<Point2d> points) { draw_.polygon(Place(points)); }
  void polyline(std::initializer_list<Point2d> points) { draw_.polyline(Place(points)); }
  void polyline(const std::vector<Point2d>& points) { draw_.polyline(Place(points)); }

 private:
  template <class Range>
  std::vector<Point3d> Place(const Range& points) const {
    std::vector<Point3d> out;
    out.reserve(points.size());
    for (const Point2d& p : points) {
      const Point3d q{p.x, p.y, z_};
      out.push_back(inUcs_ ? host::Trans(q, host::kUser, host::kWorld) : q);
    }
    return out;
  }

  host::WorldDraw& draw_;
  bool inUcs_;
  double z_;
};

void DrawNumber(MarkerPainter& paint, std::int32_t number, Point2d centre, double boxWidth, double boxHeight) {
  const std::vector<int> digits = DigitsOf(number);
  const double n = static_cast<double>(digits.size());
  // A cell per digit; the figure keeps a 1:2 shape and leaves a gap of a third of its width.
  double glyphWidth = boxWidth / n / (1.0 + 1.0 / 3.0);
  double glyphHeight = 2.0 * glyphWidth;
  if (glyphHeight > boxHeight) {
    glyphHeight = boxHeight;
    glyphWidth = glyphHeight / 2.0;
  }
  if (!(glyphWidth > 0.0)) return;
  const double pitch = glyphWidth * (1.0 + 1.0 / 3.0);
  const double totalWidth = pitch * n - glyphWidth / 3.0;
  const double unit = glyphWidth;  // the stroke table is 1 wide
  double left = centre.x - totalWidth / 2.0;
  const double bottom = centre.y - glyphHeight / 2.0;
  for (int d : digits) {
    for (const Stroke& stroke : kDigits[static_cast<std::size_t>(d)]) {
      if (stroke.count == 0) continue;
      std::vector<Point2d> points;
      for (int i = 0; i < stroke.count; ++i)
        points.push_back({left + stroke.points[i].x * unit, bottom + stroke.points[i].y * unit});
      paint.polyline(points);
    }
    left += pitch;
  }
}

}  // namespace

void Temp_PlotRec::worldDraw(host::WorldDraw& draw) const {
  if (state == kMarkerHidden) return;
  const double w = corner1.x - corner0.x;
  const double h = corner1.y - corner0.y;
  double t = std::min(std::abs(w), std::abs(h)) / 75.0;
  if (number < 1) t /= 6.0;

  draw.setColor(state == kMarkerActive ? 1 : 6);
  draw.setFill(true);

  // The ring follows the signs of the sides, so a marker drawn from any corner stays inside.
  const double tx = w < 0 ? -t : t;
  const double ty = h < 0 ? -t : t;
  const double x0 = corner0.x, y0 = corner0.y, x1 = corner1.x, y1 = corner1.y;
  MarkerPainter paint(draw, inUcs, corner0.z);
  // Left, top and right strips down to the bottom strip, the inner edge cut in on the left.
  paint.polygon({{x0, y0 + ty},
                 {x0, y1},
                 {x1, y1},
                 {x1, y0 + ty},
                 {x1 - tx, y0 + ty},
                 {x1 - tx, y1 - ty},
                 {x0 + tx, y1 - ty},
                 {x0 + tx, y0 + ty},
                 {x0, y0 + ty}});
  // The bottom strip.
  paint.polygon({{x0, y0}, {x1, y0}, {x1, y0 + ty}, {x0, y0 + ty}, {x0, y0}});

  if (number < 1) {
    paint.polyline({{x0, y0}, {x1, y1}});
    paint.polyline({{x0, y1}, {x1, y0}});
    return;
  }
  const Point2d centre{(x0 + x1) / 2.0, (y0 + y1) / 2.0};
  DrawNumber(paint, number, centre, (std::abs(w) - 2.0 * t) * 0.9, (std::abs(h) - 2.0 * t) * 0.9);
}

}  // namespace tv::recognition
