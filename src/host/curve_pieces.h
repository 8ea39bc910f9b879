#pragma once
// Curves of the drawing broken into straight pieces, as the capture of a signature from traced
// lines reads them: every curve by the rule of its class, at one step length for the whole capture.
#include <optional>
#include <vector>

#include "host/geometry.h"
#include "host/object_id.h"

namespace tv::host {

// A straight piece in the X-Y plane: both ends have Z 0.
struct CurvePiece {
  Point3d start;
  Point3d end;
};

// The extents of a curve of the drawing: a line, polyline (a mesh or polyface is none), arc,
// circle, ellipse or spline; nullopt for other entities and for a curve that shows nothing.
std::optional<Extents3d> CurveExtents(ObjectId id);

// Appends the pieces of the curve `id`, flattened at the step length `step`:
// - a line is one piece;
// - a lightweight polyline is exploded: its lines are taken as they are, its arcs as curves below;
// - a spline gives the larger of its control point count and length / `step` pieces, of equal
//   steps of its parameter;
// - any other curve gives length / `step` pieces of equal parameter steps, at least 2, and at
//   least 12 when it is closed (5 when `step` is 0 or less); a curve whose ends meet without it
//   being closed gives none.
// Points are put at Z 0, and pieces no longer than 0.00001 are left out. Nothing for entities that
// are no curves.
void FlattenCurve(ObjectId id, double step, std::vector<CurvePiece>& pieces);

}  // namespace tv::host
