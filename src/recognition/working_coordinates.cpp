#include "recognition/working_coordinates.h"

#include "host/editor.h"

namespace tv::recognition {

namespace {
UcsState g_ucs;

Vector3d TransVector(Vector3d v, int from, int to) {
  const Point3d p = host::Trans(Point3d{v.x, v.y, v.z}, from, to, true);
  return {p.x, p.y, p.z};
}
}  // namespace

UcsState& Ucs() { return g_ucs; }

void ResetUcs() { g_ucs = UcsState{}; }

Point3d ToWorking(Point3d point) {
  return g_ucs.active ? host::Trans(point, host::kWorld, host::kUser) : point;
}

Point3d ToWorld(Point3d point) {
  return g_ucs.active ? host::Trans(point, host::kUser, host::kWorld) : point;
}

Vector3d ToWorking(Vector3d vector) {
  return g_ucs.active ? TransVector(vector, host::kWorld, host::kUser) : vector;
}

Vector3d ToWorld(Vector3d vector) {
  return g_ucs.active ? TransVector(vector, host::kUser, host::kWorld) : vector;
}

}  // namespace tv::recognition
