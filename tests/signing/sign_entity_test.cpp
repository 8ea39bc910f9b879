// Placed signatures: their approval against the library, how they fit between two corners, and
// what they draw on screen and on paper.
#include <gtest/gtest.h>

#include <cmath>

#include "host/custom_entity.h"
#include "signing/sign_approval.h"
#include "signing/sign_entity.h"
#include "signing/sign_globals.h"
#include "signing/sign_library.h"
#include "signing/sign_placing.h"

namespace tv::signing {
namespace {

constexpr std::int32_t kCode = 123456;

// The global library holds one person with `code` for the life of the test.
class SignEntityTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ClearSignLibrary(GlobalSignLibrary());
    SignsVisible = 1;
    PlotRunning = 0;
    SignDirection = 0;
    SignJigActive = 0;
  }
  void TearDown() override { SetUp(); }

  static void AddPerson(std::int32_t id, std::int32_t code) {
    auto s = std::make_unique<TV_Sign>();
    s->person_id = id;
    s->person_name = "张 三";
    s->auth_code = code;
    GlobalSignLibrary().signs.push_back(std::move(s));
  }

  // A 2 x 1 rectangle with a square hole, around the origin.
  static TV_Sign_Class Placed(std::int32_t id) {
    TV_Sign_Class e;
    e.person_id = id;
    e.loop_sizes = {4, -4};
    e.points = {{-10, -5}, {10, -5}, {10, 5}, {-10, 5}, {-2, -2}, {2, -2}, {2, 2}, {-2, 2}};
    return e;
  }
};

TEST_F(SignEntityTest, ApprovalFollowsTheLibraryCodeAndThePeriod) {
  const std::int32_t today = TodayNumber();
  struct Case {
    const char* what;
    std::optional<std::int32_t> libraryCode;  // none: the person is missing from the library
    std::int32_t code, startIn, endIn;          // the entity's code and period, in days from today
    bool result, codeOk, dateOk;
    int daysLeft;
  } cases[] = {
      {"record without a code needs no approval", 0, 0, 0, 0, true, true, true, 1},
      {"record without a code, whatever the entity holds", 0, 99, -9, -5, true, true, true, 0},
      {"person missing from the library", std::nullopt, kCode, 0, 5, false, false, true, 0},
      {"expired yesterday", kCode, kCode, -10, -1, false, true, false, 0},
      {"one day granted: valid until midnight", kCode, kCode, 0, 0, true, true, true, 1},
      {"thirty days granted", kCode, kCode, 0, 29, true, true, true, 30},
      {"period not begun", kCode, kCode, 1, 3, false, true, false, 0},
      {"code changed in the library since", kCode, 111111, 0, 5, false, false, true, 0},
      {"never approved", kCode, 0, 0, 0, false, false, true, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    ClearSignLibrary(GlobalSignLibrary());
    if (c.libraryCode) AddPerson(7, *c.libraryCode);
    TV_Sign_Class e = Placed(7);
    e.auth_code = c.code;
    e.auth_start = AddDays(today, c.startIn);
    e.auth_end = AddDays(today, c.endIn);
    e.library_generation = SignGeneration - 1;
    EXPECT_EQ(EvaluateSignAuth(e), c.result);
    EXPECT_EQ(e.code_ok, c.codeOk);
    EXPECT_EQ(e.date_ok, c.dateOk);
    EXPECT_EQ(e.library_generation, SignGeneration);
    if (c.libraryCode && *c.libraryCode > 0) {
      EXPECT_EQ(SignDaysLeft(e), c.daysLeft);
    }
  }
}

TEST_F(SignEntityTest, DaysLeftCountTheLastDayAndCrossMonthsAndYears) {
  TV_Sign_Class e = Placed(7);
  struct Case {
    std::int32_t start, end, today;
    int left;
  } cases[] = {
      {20240101, 20240131, 20240131, 1},  {20240101, 20240301, 20240228, 3},  // 2024 is a leap year
      {20231201, 20240105, 20231231, 6},  {20240101, 20240131, 20240201, 0},
      {20240110, 20240131, 20240109, 0},  {-1, -1, 20240109, 0},
  };
  for (const Case& c : cases) {
    e.auth_start = c.start;
    e.auth_end = c.end;
    EXPECT_EQ(SignDaysLeft(e, c.today), c.left) << c.start << ".." << c.end << " on " << c.today;
  }
  e.code_ok = false;
  EXPECT_EQ(SignDaysLeft(e, 20240131), 0) << "no days without a good code";
}

TEST_F(SignEntityTest, PointsFitBetweenTheCornersTurnedByTheDirection) {
  // A 2 x 1 outline fitted into the 10 x 10 square from (0, 0).
  struct Case {
    std::int32_t direction;
    Point3d first;  // where the outline's (-1, -0.5) corner lands
    double width, height;
  } cases[] = {
      {0, {0, 2.5}, 10, 5},
      {1, {7.5, 0}, 5, 10},   // a quarter turn counter-clockwise
      {2, {2.5, 10}, 5, 10},  // clockwise
  };
  for (const Case& c : cases) {
    SignDirection = c.direction;
    std::vector<Point3d> points{{-1, -0.5}, {1, -0.5}, {1, 0.5}, {-1, 0.5}};
    FitSignPoints(points, {0, 0}, {10, 10}, 2, 1, {});
    Extents3d box;
    for (const Point3d& p : points) box.add(p);
    EXPECT_TRUE(points[0].isEqualTo(c.first, 1e-9)) << c.direction << ": " << points[0].x << "," << points[0].y;
    EXPECT_NEAR(box.width(), c.width, 1e-9) << c.direction;
    EXPECT_NEAR(box.height(), c.height, 1e-9) << c.direction;
    EXPECT_TRUE(box.center().isEqualTo({5, 5}, 1e-9)) << c.direction;
  }
  // Both corners on one vertical line: scale 0, every point in the middle.
  SignDirection = 0;
  std::vector<Point3d> flat{{-1, -0.5}, {1, 0.5}};
  FitSignPoints(flat, {3, 0}, {3, 8}, 2, 1, {});
  for (const Point3d& p : flat) EXPECT_TRUE(p.isEqualTo({3, 4}, 1e-9));
}

TEST_F(SignEntityTest, TabTurnsOnlyWhileTheSecondCornerIsPicked) {
  RaiseSignDirection();
  EXPECT_EQ(SignDirection, 0) << "Tab counts only during the drag";
  SignJigActive = 1;
  const int expected[] = {1, 2, 0, 1};
  for (int e : expected) {
    RaiseSignDirection();
    EXPECT_EQ(SignDirection, e);
  }
}

TEST_F(SignEntityTest, FlatteningKeepsOutlinesWithVerticesAndMarksHoles) {
  TV_Sign sign;
  for (auto [outer, n] : {std::pair{1, 3}, {0, 0}, {0, 4}}) {
    auto shape = std::make_unique<MyShape>();
    shape->is_outer = outer;
    for (int i = 0; i < n; ++i) {
      shape->xs.push_back(i);
      shape->ys.push_back(-i);
    }
    sign.shapes.push_back(std::move(shape));
  }
  std::vector<std::int32_t> sizes;
  std::vector<Point3d> points;
  FlattenSign(sign, sizes, points);
  EXPECT_EQ(sizes, (std::vector<std::int32_t>{3, -4}));
  ASSERT_EQ(points.size(), 7u);
  EXPECT_EQ(points[4], (Point3d{1, -1, 0}));
}

TEST_F(SignEntityTest, ApprovedSignaturesDrawHatchedOthersAsSkeletonOnScreenAndNothingOnPaper) {
  AddPerson(7, kCode);
  const std::int32_t today = TodayNumber();
  enum class Shows { Full, Skeleton, Nothing };
  struct Case {
    const char* what;
    bool approved;
    std::int32_t visible, plotting;
    Shows shows;
  } cases[] = {
      {"approved on screen", true, 1, 0, Shows::Full},
      {"approved in a plot", true, 1, 1, Shows::Full},
      {"approved, signatures switched off", true, 0, 1, Shows::Nothing},
      {"unapproved on screen", false, 1, 0, Shows::Skeleton},
      {"unapproved in a plot", false, 1, 1, Shows::Nothing},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    TV_Sign_Class e = Placed(7);
    if (c.approved) {
      e.auth_code = kCode;
      e.auth_start = e.auth_end = today;
    }
    ++SignGeneration;  // the flags are recomputed at drawing
    SignsVisible = c.visible;
    PlotRunning = c.plotting;
    host::PrimitiveRecorder drawn;
    e.worldDraw(drawn);
    const auto& prims = drawn.primitives();
    switch (c.shows) {
      case Shows::Nothing: EXPECT_TRUE(prims.empty()); break;
      case Shows::Skeleton:
        // Edges 0-1 of each 4-vertex loop, and 3-4 would be the closing edge: one line each.
        ASSERT_EQ(prims.size(), 2u);
        EXPECT_EQ(prims[0].points, (std::vector<Point3d>{{-10, -5}, {10, -5}}));
        break;
      case Shows::Full: {
        ASSERT_GT(prims.size(), 100u) << "outlines and hatching at a two-hundredth of the height";
        EXPECT_EQ(prims[0].points.size(), 5u) << "the outline closed";
        // No hatch line crosses the hole.
        for (std::size_t i = 2; i < prims.size(); ++i) {
          const Point3d mid{(prims[i].points[0].x + prims[i].points[1].x) / 2, (prims[i].points[0].y + prims[i].points[1].y) / 2};
          EXPECT_FALSE(std::abs(mid.x) < 1.9 && std::abs(mid.y) < 1.9) << mid.x << "," << mid.y;
        }
        const Extents3d box = drawn.extents();
        EXPECT_TRUE(box.min.isEqualTo({-10, -5}, 1e-9) && box.max.isEqualTo({10, 5}, 1e-9));
        break;
      }
    }
  }
}

TEST_F(SignEntityTest, SavedGroupsBringTheEntityBackWithItsApprovalEvaluated) {
  AddPerson(7, kCode);
  TV_Sign_Class e = Placed(7);
  e.person_name = "李 四";
  e.auth_code = kCode;
  e.auth_start = e.auth_end = TodayNumber();
  e.points[1].x = 0.1 + 0.2;  // not a short decimal: kept to the last bit
  e.code_ok = e.date_ok = false;  // stale flags as a copy of the drawing shows them
  std::unique_ptr<TV_Sign_Class> back = TV_Sign_Class::FromGroups(e.dxfGroups());
  ASSERT_TRUE(back);
  EXPECT_EQ(back->loop_sizes, e.loop_sizes);
  EXPECT_EQ(back->points, e.points);
  EXPECT_EQ(back->person_name, "李 四");
  EXPECT_EQ(back->auth_code, kCode);
  EXPECT_EQ(back->auth_end, e.auth_end);
  EXPECT_TRUE(back->code_ok && back->date_ok) << "evaluated on reading";

  host::DxfGroupList cut = e.dxfGroups();
  cut.resize(cut.size() / 2);
  EXPECT_FALSE(TV_Sign_Class::FromGroups(cut)) << "groups cut short make no entity";

  const std::string listing = back->listing();
  EXPECT_NE(listing.find("人员编号 7\n"), std::string::npos);
  EXPECT_NE(listing.find("是否通过有效期限认证 1\n"), std::string::npos);
  EXPECT_EQ(listing.find("授权码 "), std::string::npos) << "the code is never listed";
}

}  // namespace
}  // namespace tv::signing
