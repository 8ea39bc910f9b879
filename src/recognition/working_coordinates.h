#pragma once
// Working coordinates: every rectangle recognition finds is axis-aligned in them. They are the
// current UCS when one other than World is active in model space, else World.
#include "host/geometry.h"

namespace tv::recognition {

struct UcsState {
  bool active = false;  // working coordinates differ from World
  Matrix3d ucsToWorld;  // the current UCS as the editor gave it
  Matrix3d worldToUcs;  // its inverse
};

// The one record of the process.
UcsState& Ucs();
// Back to World: inactive, both matrices identity.
void ResetUcs();

// World to working coordinates and back; unchanged while the state is inactive.
Point3d ToWorking(Point3d point);
Point3d ToWorld(Point3d point);
// The same for directions: only the rotation applies.
Vector3d ToWorking(Vector3d vector);
Vector3d ToWorld(Vector3d vector);

}  // namespace tv::recognition
