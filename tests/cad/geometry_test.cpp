#include "cad/geometry.h"

#include <gtest/gtest.h>

#include <limits>

namespace tv::cad {
namespace {

constexpr double kEps = 1e-12;

void ExpectPoint(Point3d actual, Point3d expected, double tol = 1e-9) {
  EXPECT_TRUE(actual.isEqualTo(expected, tol))
      << "got (" << actual.x << ", " << actual.y << ", " << actual.z << "), want (" << expected.x
      << ", " << expected.y << ", " << expected.z << ")";
}

void ExpectOrthonormalRightHanded(Vector3d x, Vector3d y, Vector3d z) {
  EXPECT_NEAR(x.length(), 1, kEps);
  EXPECT_NEAR(y.length(), 1, kEps);
  EXPECT_NEAR(z.length(), 1, kEps);
  EXPECT_NEAR(x.dot(y), 0, kEps);
  EXPECT_NEAR(x.dot(z), 0, kEps);
  EXPECT_NEAR(y.dot(z), 0, kEps);
  EXPECT_NEAR(x.cross(y).dot(z), 1, kEps);
}

TEST(GeometryMatrix, InverseRoundTripsAndSingular) {
  const Matrix3d xf = Matrix3d::translation({10, -3, 7}) * Matrix3d::rotation(0.7, {1, 1, 0}) *
                      Matrix3d::scaling(2.5, 0.5, 4);
  const auto inv = xf.inverse();
  ASSERT_TRUE(inv);
  EXPECT_TRUE((xf * *inv).isIdentity(1e-12));
  EXPECT_TRUE((*inv * xf).isIdentity(1e-12));
  const Point3d p{1.5, -2, 9};
  ExpectPoint(inv->transform(xf.transform(p)), p);
  EXPECT_NEAR(xf.determinant(), 2.5 * 0.5 * 4, 1e-12);
  // A zero on the diagonal forces a row swap.
  Matrix3d perm;
  perm.m[0] = {0, 1, 0, 1};
  perm.m[1] = {1, 0, 0, 2};
  EXPECT_NEAR(perm.determinant(), -1, kEps);
  ASSERT_TRUE(perm.inverse());
  EXPECT_TRUE((perm * *perm.inverse()).isIdentity());

  EXPECT_FALSE(Matrix3d::scaling(1, 1, 0).inverse());
  EXPECT_FALSE(Matrix3d::scaling(1e-120, 1e-120, 1e-120).inverse());
  Matrix3d flat = Matrix3d::rotation(0.4, {0, 1, 1});
  for (int i = 0; i < 3; ++i) flat.m[i][2] = flat.m[i][0] * 2;  // dependent columns
  EXPECT_FALSE(flat.inverse());
  Matrix3d bad;
  bad.m[1][2] = std::numeric_limits<double>::quiet_NaN();
  EXPECT_FALSE(bad.inverse());
}

TEST(GeometryPlane, ArbitraryAxisRule) {
  EXPECT_TRUE(ArbitraryXAxis({0, 0, 1}).isEqualTo({1, 0, 0}));
  EXPECT_TRUE(ArbitraryXAxis({0, 0, 7}).isEqualTo({1, 0, 0}));
  EXPECT_TRUE(ArbitraryXAxis({0, 0, -1}).isEqualTo({-1, 0, 0}));
  // Either side of the 1/64 threshold picks a different world axis.
  const Vector3d nearZ = Vector3d{0.01, 0.01, 1}.normalized();
  EXPECT_TRUE(ArbitraryXAxis(nearZ).isEqualTo(Vector3d::yAxis().cross(nearZ).normalized()));
  const Vector3d pastLimit = Vector3d{0.02, 0, 1}.normalized();
  EXPECT_TRUE(ArbitraryXAxis(pastLimit).isEqualTo(Vector3d::zAxis().cross(pastLimit).normalized()));

  for (Vector3d n :
       {Vector3d{1, 1, 1}, Vector3d{0, 0, -1}, Vector3d{-0.3, 0.8, -2}, Vector3d{1, 0, 0}}) {
    const Matrix3d ocs = Matrix3d::planeToWorld(n);
    ExpectOrthonormalRightHanded(ocs.transform(Vector3d::xAxis()), ocs.transform(Vector3d::yAxis()),
                                 ocs.transform(Vector3d::zAxis()));
    EXPECT_TRUE(ocs.transform(Vector3d::zAxis()).isEqualTo(n.normalized()));
    EXPECT_TRUE((ocs * Matrix3d::worldToPlane(n)).isIdentity(1e-12));
    EXPECT_TRUE((Matrix3d::worldToPlane(n) * ocs).isIdentity(1e-12));
  }
  // The classic mirrored entity: extrusion (0,0,-1) flips x and z.
  ExpectPoint(Matrix3d::planeToWorld({0, 0, -1}).transform(Point3d{1, 2, 3}), {-1, 2, -3});
}

TEST(GeometryExtents, TransformedEmptyAndQueries) {
  const Extents3d box({0, 0, 0}, {1, 1, 0});
  const Extents3d rot = box.transformed(Matrix3d::rotation(kPi / 4));
  const double h = std::sqrt(0.5);
  ExpectPoint(rot.min, {-h, 0, 0});
  ExpectPoint(rot.max, {h, 2 * h, 0});
  EXPECT_NEAR(rot.width(), 2 * h, kEps);
  const Extents3d box3({1, 2, 3}, {4, 6, 8});
  const Extents3d moved =
      box3.transformed(Matrix3d::translation({1, 1, 1}) * Matrix3d::scaling(-1, 1, 1));
  ExpectPoint(moved.min, {-3, 3, 4});
  ExpectPoint(moved.max, {0, 7, 9});

  Extents3d empty;
  EXPECT_TRUE(empty.isEmpty());
  EXPECT_TRUE(empty.transformed(Matrix3d::rotation(1)).isEmpty());
  EXPECT_EQ(empty.width(), 0);
  EXPECT_FALSE(empty.contains({0, 0, 0}, 1e9));
  EXPECT_FALSE(empty.intersects(box) || box.intersects(empty));
  Extents3d grown = box;
  grown.add(empty);
  EXPECT_EQ(grown.min, box.min);
  EXPECT_EQ(grown.max, box.max);
  empty.add(Point3d{5, 5, 5});
  EXPECT_FALSE(empty.isEmpty());
  EXPECT_EQ(empty.width(), 0);

  EXPECT_TRUE(box.contains({1, 0.5, 0}));
  EXPECT_FALSE(box.contains({1.05, 0.5, 0}));
  EXPECT_TRUE(box.contains({1.05, 0.5, 0}, 0.1));
  const Extents3d corner({1, 1, 0}, {2, 2, 0});  // touches at one corner only
  EXPECT_TRUE(box.intersects(corner) && corner.intersects(box));
  EXPECT_FALSE(box.intersects(Extents3d({1.001, 0, 0}, {2, 1, 0})));

  Extents3d shrunk = box;
  shrunk.expandBy(-1);
  EXPECT_TRUE(shrunk.isEmpty());
  shrunk.add(Point3d{3, 3, 3});
  EXPECT_EQ(shrunk.min, (Point3d{3, 3, 3}));
}

TEST(GeometryAngles, NormalizeAndBulgeArcs) {
  EXPECT_NEAR(NormalizeAngle(-kPi / 2), 1.5 * kPi, kEps);
  EXPECT_EQ(NormalizeAngle(2 * kPi), 0);
  EXPECT_NEAR(NormalizeAngle(5 * kPi), kPi, 1e-9);
  EXPECT_LT(NormalizeAngle(-1e-18), 2 * kPi);

  // Arcs run counter-clockwise from startAngle: bulge 1 is a half circle below the chord, -1 above;
  // tan(pi/8) a quarter circle, its negative the quarter the other way round.
  struct Arc {
    Point2d p1, p2;
    double bulge, cx, cy, radius, start, end;
  };
  const double quarter = std::tan(kPi / 8);
  const Arc arcs[] = {
      {{0, 0}, {2, 0}, 1, 1, 0, 1, kPi, 0},
      {{0, 0}, {2, 0}, -1, 1, 0, 1, 0, kPi},
      {{1, 0}, {0, 1}, quarter, 0, 0, 1, 0, kPi / 2},
      {{1, 0}, {0, 1}, -quarter, 1, 1, 1, kPi, 1.5 * kPi},
  };
  for (const Arc& c : arcs) {
    SCOPED_TRACE(c.bulge);
    const auto arc = ArcFromBulge(c.p1, c.p2, c.bulge);
    ASSERT_TRUE(arc);
    EXPECT_NEAR(arc->center.x, c.cx, kEps);
    EXPECT_NEAR(arc->center.y, c.cy, kEps);
    EXPECT_NEAR(arc->radius, c.radius, kEps);
    EXPECT_NEAR(arc->startAngle, c.start, kEps);
    EXPECT_NEAR(arc->endAngle, c.end, kEps);
  }
  // Three quarters of a circle: the centre lies on the other side of the chord.
  auto major = ArcFromBulge({1, 0}, {0, -1}, std::tan(3 * kPi / 8));
  ASSERT_TRUE(major);
  EXPECT_NEAR(major->center.x, 0, 1e-9);
  EXPECT_NEAR(major->center.y, 0, 1e-9);
  EXPECT_NEAR(major->radius, 1, 1e-9);
  EXPECT_NEAR(NormalizeAngle(major->endAngle - major->startAngle), 1.5 * kPi, 1e-9);

  EXPECT_FALSE(ArcFromBulge({0, 0}, {2, 0}, 1e-13));
  EXPECT_FALSE(ArcFromBulge({3, 3}, {3, 3}, 1));
  EXPECT_FALSE(ArcFromBulge({0, 0}, {2, 0}, std::numeric_limits<double>::quiet_NaN()));
  EXPECT_TRUE(ArcFromBulge({0, 0}, {2, 0}, 1e300));  // huge bulge must not overflow
}

}  // namespace
}  // namespace tv::cad
