// Working coordinates at run time, and a view turned to plan so that fences see axis-aligned
// rectangles.
#include <cmath>

#include "host/editor.h"
#include "host/wrappers.h"
#include "recognition/sheet_traversal.h"
#include "recognition/working_coordinates.h"

namespace tv::recognition {

namespace {

constexpr double kTwistTolerance = 1e-08;
constexpr double kDirectionTolerance = 1e-05;

// With UCSFOLLOW on, making a UCS current turns the view to its plan.
void SetUcsFollowingView(const Matrix3d& ucsToWorld) {
  const std::int32_t follow = host::GetIntVar("UCSFOLLOW", 0);
  host::SetVar("UCSFOLLOW", std::int32_t{1});
  host::CurrentEditor().setCurrentUcs(ucsToWorld);
  host::SetVar("UCSFOLLOW", follow);
}

bool Codirectional(Vector3d a, Vector3d b) {
  return a.normalized().isEqualTo(b.normalized(), kDirectionTolerance);
}

// Whether the view looks straight down on the current UCS with its x axis to the right.
bool ViewIsPlanOfUcs(double twist) {
  const Vector3d x = host::AsPoint(host::GetVar("UCSXDIR")).value_or(Point3d{1, 0, 0}).asVector().normalized();
  const Vector3d y = host::AsPoint(host::GetVar("UCSYDIR")).value_or(Point3d{0, 1, 0}).asVector().normalized();
  const Vector3d z = (-x.cross(y)).normalized();
  // The screen's x direction: the arbitrary axis of the viewing direction, turned by the twist.
  const Vector3d u = -(Matrix3d::rotation(twist, z).transform(ArbitraryXAxis(z)));
  const Vector3d v = u.cross(z);
  return Codirectional(x, u) && Codirectional(y, v);
}

}  // namespace

void RefreshUcs(bool repairView) {
  ResetUcs();
  const std::int32_t worldUcs = host::GetIntVar("WORLDUCS", 1);
  const double twist = host::GetRealVar("VIEWTWIST", 0.0);

  if (host::IsPaperSpace()) {
    // In a layout the working system is World, always.
    if (worldUcs == 0 || std::abs(twist) > kTwistTolerance) SetUcsFollowingView(Matrix3d::identity());
    return;
  }

  if (worldUcs == 0) {
    UcsState& ucs = Ucs();
    ucs.active = true;
    ucs.ucsToWorld = host::CurrentEditor().currentUcs();
    ucs.worldToUcs = ucs.ucsToWorld.inverse().value_or(Matrix3d::identity());
    if (repairView && !ViewIsPlanOfUcs(twist)) SetUcsFollowingView(ucs.ucsToWorld);
    return;
  }
  if (repairView && std::abs(twist) > kTwistTolerance) SetUcsFollowingView(Matrix3d::identity());
}

}  // namespace tv::recognition
