#pragma once
// A spline read at its parameter, for callers that sample it evenly rather than by chord.
#include <cstddef>
#include <vector>

#include "cad/entities.h"

namespace tv::cad {

// `steps` + 1 points of the NURBS at equal steps of its parameter, from the start of its domain to
// its end; empty when the spline has no usable control points or `steps` is 0.
std::vector<Point3d> SplineAtEqualParameters(const Spline& spline, std::size_t steps);

}  // namespace tv::cad
