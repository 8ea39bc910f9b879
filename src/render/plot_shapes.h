#pragma once
// Plane geometry of the plot engine on page coordinates: dash patterns, clipping, polygons.
#include <functional>
#include <vector>

#include "render/plot_canvas.h"

namespace tv::render {

// Cuts a line into the dashes of a pattern (lengths on the page: above 0 a dash, below 0 a gap,
// 0 a dot), the pattern running on along the whole line. A pattern with no dash, or one whose
// dashes would be finer than `finestMm` on average, gives the line whole.
std::vector<Polyline2d> ApplyDashes(const Polyline2d& points, bool closed, const std::vector<double>& pattern,
                                    double finestMm = 0.05);

// Even-odd inside test.
bool InsidePolygon(const Polyline2d& polygon, cad::Point2d p);

// The parts of a line inside a polygon (even-odd), in order along the line.
std::vector<Polyline2d> ClipLineToPolygon(const Polyline2d& line, const Polyline2d& polygon);

// A polygon cut to a convex polygon (Sutherland–Hodgman); empty when nothing stays.
Polyline2d ClipPolygonToConvex(const Polyline2d& subject, const Polyline2d& convexClip);
bool IsConvex(const Polyline2d& polygon);

// The segments of a line inside the rings of an area (even-odd), for hatch pattern lines:
// pairs of points along the infinite line through `origin` in direction `dir` (unit), as
// parameters t along it, sorted.
std::vector<std::pair<double, double>> SpansInside(const std::vector<Polyline2d>& rings, cad::Point2d origin, cad::Vector2d dir);

// The lines of one hatch pattern family across the rings: each line through base + k * offset
// (k whole, in increasing order) along `dir` (unit) that meets the rings' extent, with its spans
// inside them. A family of `maxLines` lines or more, or of no spacing, gives none.
void ForEachFamilyLine(const std::vector<Polyline2d>& rings, cad::Point2d base, cad::Vector2d dir, cad::Vector2d offset,
                       double maxLines,
                       const std::function<void(cad::Point2d origin, const std::vector<std::pair<double, double>>& spans)>& line);

// True when every coordinate is a finite number.
bool AllFinite(const Polyline2d& points);

}  // namespace tv::render
