#pragma once
// The drawing model speaks the shared geometry vocabulary; these names keep `cad::Point3d` and
// friends valid for code written against the model.
#include "host/geometry.h"

namespace tv::cad {
using tv::ArbitraryXAxis;
using tv::ArcFromBulge;
using tv::BulgeArc;
using tv::CoordSystem;
using tv::DegToRad;
using tv::Extents3d;
using tv::kPi;
using tv::kTol;
using tv::Matrix3d;
using tv::NormalizeAngle;
using tv::Point2d;
using tv::Point3d;
using tv::RadToDeg;
using tv::Vector2d;
using tv::Vector3d;
}  // namespace tv::cad
