// Curves of the drawing as straight pieces: the count each class gives at a step length, and the
// pieces' place.
#include "host/curve_pieces.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "../support/shape_builders.h"
#include "host_test_support.h"

namespace tv::host {
namespace {

using testing::HostDrawingTest;
using CurvePieces = HostDrawingTest;
using test_support::MakeArc;

// An ellipse of axes 4 and 2 at the origin, from `from` to `to`.
std::unique_ptr<cad::Ellipse> PartEllipse(double from, double to) {
  auto e = test_support::MakeEllipse({0, 0, 0}, {4, 0, 0}, 0.5);
  e->startParam = from;
  e->endParam = to;
  return e;
}

std::unique_ptr<cad::Spline> MakeSpline(std::vector<Point3d> controls) {
  auto s = std::make_unique<cad::Spline>();
  s->degree = 3;
  s->controlPoints = std::move(controls);
  return s;
}

std::unique_ptr<cad::Polyline> MakeOldPolyline(std::vector<Point3d> points, bool closed) {
  auto p = std::make_unique<cad::Polyline>();
  for (const Point3d& q : points) {
    cad::PolylineVertex v;
    v.position = q;
    p->vertices.push_back(v);
  }
  if (closed) p->polyFlags |= cad::Polyline::kClosed;
  return p;
}

TEST_F(CurvePieces, EachClassGivesItsCountAtTheStepLength) {
  struct Case {
    const char* what;
    std::function<ObjectId()> add;
    double step;
    std::size_t pieces;
  };
  const std::vector<Case> cases = {
      {"line", [&] { return addLine({0, 0}, {10, 0}).id; }, 1, 1},
      {"line no longer than 0.00001", [&] { return addLine({0, 0}, {0.00001, 0}).id; }, 1, 0},
      {"circle, short: at least 12", [&] { return add(test_support::MakeCircle({0, 0}, 1)).id; }, 10, 12},
      {"circle, long: length / step", [&] { return add(test_support::MakeCircle({0, 0}, 10)).id; }, 1, 62},
      {"circle without a step", [&] { return add(test_support::MakeCircle({0, 0}, 10)).id; }, 0, 12},
      {"arc, short: at least 2", [&] { return add(MakeArc({0, 0}, 1, 0, kPi / 2)).id; }, 10, 2},
      {"arc without a step: 5", [&] { return add(MakeArc({0, 0}, 1, 0, kPi / 2)).id; }, 0, 5},
      {"arc across angle 0", [&] { return add(MakeArc({0, 0}, 10, 3 * kPi / 2, kPi / 2)).id; }, 1, 31},
      {"full ellipse: closed", [&] { return add(PartEllipse(0, 2 * kPi)).id; }, 100, 12},
      {"half ellipse", [&] { return add(PartEllipse(0, kPi)).id; }, 100, 2},
      {"spline: its control points", [&] { return add(MakeSpline({{0, 0}, {1, 1}, {2, 0}, {3, 1}, {4, 0}})).id; }, 100, 5},
      {"spline: length / step", [&] { return add(MakeSpline({{0, 0}, {10, 0}, {20, 0}, {30.5, 0}})).id; }, 1, 30},
      {"polyline: lines as they are",
       [&] { return add(test_support::MakeLwPolyline({{0, 0}, {10, 0}, {10, 10}}, true)).id; }, 1, 3},
      {"polyline: arcs of bulges by the step",
       [&] { return add(test_support::MakeLwPolyline({{0, 0}, {10, 0}}, true, {1, 1})).id; }, 1, 2 * 15},
      {"old 2D polyline: spans by the parameter",
       [&] { return add(MakeOldPolyline({{0, 0}, {10, 0}, {10, 10}, {0, 10}}, true)).id; }, 2, 20},
      {"old polyline with coinciding ends, not closed",
       [&] { return add(MakeOldPolyline({{0, 0}, {10, 0}, {0, 0}}, false)).id; }, 1, 0},
      {"text: no curve", [&] { return add(test_support::MakeText("A", {0, 0}, 1)).id; }, 1, 0},
  };
  for (const Case& c : cases) {
    const ObjectId id = c.add();
    std::vector<CurvePiece> pieces;
    FlattenCurve(id, c.step, pieces);
    EXPECT_EQ(pieces.size(), c.pieces) << c.what;
    EXPECT_EQ(CurveExtents(id).has_value(), std::string(c.what).find("no curve") == std::string::npos) << c.what;
  }
}

TEST_F(CurvePieces, PiecesFollowTheCurveInThePlaneZero) {
  const cad::Line& tilted = addLine({0, 0, 5}, {3, 4, -2});
  auto& circle = add(test_support::MakeCircle({1, 2, 7}, 3));
  std::vector<CurvePiece> pieces;
  FlattenCurve(tilted.id, 1, pieces);
  FlattenCurve(circle.id, 1, pieces);
  ASSERT_EQ(pieces.size(), 1u + 18u);
  EXPECT_EQ(pieces[0].start, (Point3d{0, 0, 0}));
  EXPECT_EQ(pieces[0].end, (Point3d{3, 4, 0}));
  for (std::size_t i = 1; i < pieces.size(); ++i) {
    EXPECT_EQ(pieces[i].start.z, 0);
    EXPECT_NEAR(pieces[i].start.distanceTo({1, 2, 0}), 3, 1e-9);
    if (i + 1 < pieces.size()) {
      EXPECT_EQ(pieces[i].end, pieces[i + 1].start);
    }
  }
  EXPECT_NEAR(pieces.back().end.distanceTo(pieces[1].start), 0, 1e-9);

  // A bulge of 1 between (0,0) and (10,0) is a half circle below the chord, going counter-clockwise.
  auto& polyline = add(test_support::MakeLwPolyline({{0, 0}, {10, 0}}, false, {1, 0}));
  pieces.clear();
  FlattenCurve(polyline.id, 1, pieces);
  ASSERT_EQ(pieces.size(), 15u);
  for (const CurvePiece& p : pieces) {
    EXPECT_NEAR(p.start.distanceTo({5, 0, 0}), 5, 1e-9);
    EXPECT_LE(p.start.y, 1e-9);
  }

  const std::optional<Extents3d> box = CurveExtents(circle.id);
  ASSERT_TRUE(box);
  EXPECT_NEAR(box->min.x, -2, 1e-9);
  EXPECT_NEAR(box->max.y, 5, 1e-9);
}

}  // namespace
}  // namespace tv::host
