#include "render/plot_shapes.h"

#include <algorithm>
#include <cmath>

namespace tv::render {

using cad::Point2d;
using cad::Vector2d;

std::vector<Polyline2d> ApplyDashes(const Polyline2d& points, bool closed, const std::vector<double>& pattern, double finestMm) {
  Polyline2d line = points;
  if (closed && line.size() > 1 && !(line.front() == line.back())) line.push_back(line.front());
  double period = 0;
  bool anyDash = false;
  for (double d : pattern) {
    period += std::abs(d);
    anyDash = anyDash || d >= 0;
  }
  if (pattern.empty() || !anyDash || !(period > finestMm * static_cast<double>(pattern.size())) || !std::isfinite(period))
    return {std::move(line)};
  // Lines that would break into very many pieces are drawn whole: on paper they look solid anyway.
  double total = 0;
  for (std::size_t i = 1; i < line.size(); ++i) total += line[i].distanceTo(line[i - 1]);
  if (total / period > 100000) return {std::move(line)};

  std::vector<Polyline2d> out;
  std::size_t k = 0;             // current pattern element
  double left = std::abs(pattern[0]);  // what remains of it
  bool drawing = pattern[0] >= 0;
  Polyline2d current;
  if (drawing) current.push_back(line.empty() ? Point2d{} : line[0]);
  const auto nextElement = [&](Point2d at) {
    if (drawing && !current.empty()) {
      current.push_back(at);
      out.push_back(std::move(current));
      current.clear();
    }
    k = (k + 1) % pattern.size();
    left = std::abs(pattern[k]);
    drawing = pattern[k] >= 0;
    if (drawing) current.push_back(at);
  };
  for (std::size_t i = 1; i < line.size(); ++i) {
    Point2d a = line[i - 1];
    const Point2d b = line[i];
    double segment = a.distanceTo(b);
    const Vector2d dir = segment > 0 ? (b - a) * (1.0 / segment) : Vector2d{};
    int guard = 0;
    while (segment >= left && ++guard < 1000000) {
      a = a + dir * left;
      segment -= left;
      nextElement(a);
    }
    left -= segment;
    if (drawing) current.push_back(b);
  }
  if (drawing && current.size() > 1) out.push_back(std::move(current));
  return out;
}

bool InsidePolygon(const Polyline2d& polygon, Point2d p) {
  bool inside = false;
  const std::size_t n = polygon.size();
  for (std::size_t i = 0, j = n - 1; i < n; j = i++) {
    const Point2d& a = polygon[i];
    const Point2d& b = polygon[j];
    if ((a.y > p.y) != (b.y > p.y) && p.x < (b.x - a.x) * (p.y - a.y) / (b.y - a.y) + a.x) inside = !inside;
  }
  return inside;
}

namespace {

// Parameter along a-b where it crosses c-d, if it does.
bool Crossing(Point2d a, Point2d b, Point2d c, Point2d d, double& t) {
  const Vector2d r = b - a, s = d - c;
  const double den = r.cross(s);
  if (std::abs(den) < 1e-15) return false;
  const Vector2d ac = c - a;
  t = ac.cross(s) / den;
  const double u = ac.cross(r) / den;
  return t > 0 && t < 1 && u >= 0 && u <= 1;
}

}  // namespace

std::vector<Polyline2d> ClipLineToPolygon(const Polyline2d& line, const Polyline2d& polygon) {
  std::vector<Polyline2d> out;
  if (polygon.size() < 3) return out;
  Polyline2d current;
  const auto flushCurrent = [&] {
    if (current.size() > 1) out.push_back(std::move(current));
    current.clear();
  };
  if (line.size() == 1) {
    if (InsidePolygon(polygon, line[0])) out.push_back(line);
    return out;
  }
  for (std::size_t i = 1; i < line.size(); ++i) {
    const Point2d a = line[i - 1], b = line[i];
    std::vector<double> cuts{0.0, 1.0};
    for (std::size_t k = 0; k < polygon.size(); ++k) {
      double t = 0;
      if (Crossing(a, b, polygon[k], polygon[(k + 1) % polygon.size()], t)) cuts.push_back(t);
    }
    std::sort(cuts.begin(), cuts.end());
    for (std::size_t c = 1; c < cuts.size(); ++c) {
      const double t0 = cuts[c - 1], t1 = cuts[c];
      if (t1 - t0 <= 0) continue;
      const Point2d p0 = a + (b - a) * t0, p1 = a + (b - a) * t1;
      const Point2d mid = a + (b - a) * ((t0 + t1) / 2);
      if (InsidePolygon(polygon, mid)) {
        if (current.empty() || !(current.back() == p0)) {
          flushCurrent();
          current.push_back(p0);
        }
        current.push_back(p1);
      } else {
        flushCurrent();
      }
    }
  }
  flushCurrent();
  return out;
}

bool IsConvex(const Polyline2d& polygon) {
  const std::size_t n = polygon.size();
  if (n < 3) return false;
  int sign = 0;
  for (std::size_t i = 0; i < n; ++i) {
    const Vector2d e1 = polygon[(i + 1) % n] - polygon[i];
    const Vector2d e2 = polygon[(i + 2) % n] - polygon[(i + 1) % n];
    const double c = e1.cross(e2);
    if (std::abs(c) < 1e-12) continue;
    const int s = c > 0 ? 1 : -1;
    if (sign == 0) sign = s;
    else if (s != sign) return false;
  }
  return sign != 0;
}

Polyline2d ClipPolygonToConvex(const Polyline2d& subject, const Polyline2d& convexClip) {
  Polyline2d output = subject;
  const std::size_t n = convexClip.size();
  double area = 0;
  for (std::size_t i = 0; i < n; ++i) area += convexClip[i].x * convexClip[(i + 1) % n].y - convexClip[(i + 1) % n].x * convexClip[i].y;
  const double orientation = area >= 0 ? 1 : -1;
  for (std::size_t i = 0; i < n && !output.empty(); ++i) {
    const Point2d c0 = convexClip[i], c1 = convexClip[(i + 1) % n];
    const auto side = [&](Point2d p) { return orientation * (c1 - c0).cross(p - c0); };
    Polyline2d input = std::move(output);
    output.clear();
    for (std::size_t k = 0; k < input.size(); ++k) {
      const Point2d cur = input[k], prev = input[(k + input.size() - 1) % input.size()];
      const double sc = side(cur), sp = side(prev);
      if (sc >= 0) {
        if (sp < 0) output.push_back(prev + (cur - prev) * (sp / (sp - sc)));
        output.push_back(cur);
      } else if (sp >= 0) {
        output.push_back(prev + (cur - prev) * (sp / (sp - sc)));
      }
    }
  }
  // Corners of the clip that the subject passes through come out twice.
  Polyline2d unique;
  for (const Point2d& p : output)
    if (unique.empty() || p.distanceTo(unique.back()) > 1e-12) unique.push_back(p);
  while (unique.size() > 1 && unique.front().distanceTo(unique.back()) <= 1e-12) unique.pop_back();
  if (unique.size() < 3) unique.clear();
  return unique;
}

void ForEachFamilyLine(const std::vector<Polyline2d>& rings, Point2d base, Vector2d dir, Vector2d offset, double maxLines,
                       const std::function<void(Point2d origin, const std::vector<std::pair<double, double>>& spans)>& line) {
  const Vector2d normal{-dir.y, dir.x};
  const double spacing = normal.dot(offset);
  if (!std::isfinite(spacing) || std::abs(spacing) < 1e-12) return;
  double lo = 1e300, hi = -1e300;
  for (const auto& ring : rings)
    for (Point2d p : ring) {
      const double d = normal.dot(p - base);
      lo = std::min(lo, d);
      hi = std::max(hi, d);
    }
  const double k0 = std::ceil(std::min(lo / spacing, hi / spacing)), k1 = std::floor(std::max(lo / spacing, hi / spacing));
  if (!(k1 - k0 < maxLines)) return;
  for (double k = k0; k <= k1; ++k) {
    const Point2d origin = base + offset * k;
    line(origin, SpansInside(rings, origin, dir));
  }
}

std::vector<std::pair<double, double>> SpansInside(const std::vector<Polyline2d>& rings, Point2d origin, Vector2d dir) {
  std::vector<double> ts;
  const Vector2d normal{-dir.y, dir.x};
  for (const auto& ring : rings) {
    const std::size_t n = ring.size();
    for (std::size_t i = 0; i < n; ++i) {
      const Point2d a = ring[i], b = ring[(i + 1) % n];
      const double da = normal.dot(a - origin), db = normal.dot(b - origin);
      // Half-open rule: a vertex on the line counts for one of its two edges only.
      if ((da > 0) == (db > 0)) continue;
      const double s = da / (da - db);
      ts.push_back(dir.dot((a + (b - a) * s) - origin));
    }
  }
  std::sort(ts.begin(), ts.end());
  std::vector<std::pair<double, double>> spans;
  for (std::size_t i = 0; i + 1 < ts.size(); i += 2)
    if (ts[i + 1] > ts[i]) spans.emplace_back(ts[i], ts[i + 1]);
  return spans;
}

Polyline2d ArcPoints(const PageArc& arc, double toleranceMm) {
  const double r = std::max(arc.u.length(), arc.v.length());
  const double span = arc.end - arc.start;
  if (!(r > 0) || !std::isfinite(r) || !std::isfinite(span)) return {arc.center};
  const double tol = toleranceMm > 0 ? toleranceMm : r * 1e-3;
  // A chord over the angle step deviates from the circle by r (1 - cos(step / 2)).
  const double step = tol >= r ? cad::kPi / 2 : 2 * std::acos(1 - tol / r);
  const int minCount = std::abs(span) >= 2 * cad::kPi - 1e-9 ? 8 : 1;
  const int count = std::clamp(static_cast<int>(std::ceil(std::abs(span) / std::max(step, 1e-9))), minCount, 4096);
  Polyline2d points;
  points.reserve(static_cast<std::size_t>(count) + 1);
  for (int i = 0; i <= count; ++i) {
    const double t = i == count ? arc.end : arc.start + span * i / count;
    points.push_back(arc.center + arc.u * std::cos(t) + arc.v * std::sin(t));
  }
  if (arc.closed && points.size() > 1) points.pop_back();  // the stroke closes it
  return points;
}

bool AllFinite(const Polyline2d& points) {
  return std::all_of(points.begin(), points.end(), [](const Point2d& p) { return std::isfinite(p.x) && std::isfinite(p.y); });
}

}  // namespace tv::render
