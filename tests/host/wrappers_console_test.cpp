// The editor-backed wrappers against the console host, with real fences and views.
#include <gtest/gtest.h>

#include <memory>
#include <sstream>

#include "console/session.h"
#include "host/wrappers.h"
#include "host_test_support.h"

namespace tv::host {
namespace {

using testing::SquareMarker;

class HostConsoleWrappers : public ::testing::Test {
 protected:
  cad::Line& line(Point3d a, Point3d b, cad::BlockRecord* block = nullptr) {
    return db_.append(block ? *block : *db_.modelSpace(), test_support::MakeLine(a, b));
  }
  void start() {
    console::SessionOptions options;
    options.out = &out_;
    options.screenWidth = 1600;
    options.screenHeight = 800;
    session_ = std::make_unique<console::Session>(std::move(db_), "/tmp/host_wrappers.dxf", std::move(options));
  }
  cad::Database& db() { return session_->database(); }

  cad::Database db_ = cad::Database::createDefault();
  std::ostringstream out_;
  std::unique_ptr<console::Session> session_;
};

TEST_F(HostConsoleWrappers, FencesSelectWhatTheyCrossOnceAndOfTheRequestedType) {
  const ObjectId vertical = line({5, -5, 0}, {5, 5, 0}).id;
  const ObjectId far = line({50, -5, 0}, {50, 5, 0}).id;
  const ObjectId round = db_.append(*db_.modelSpace(), test_support::MakeCircle({20, 0, 0}, 3)).id;
  start();
  // A marker lies on the fence too, but markers are no content.
  const ObjectId marker = AppendToSpace(NewCustomEntity(std::make_unique<SquareMarker>(Point3d{9, -1, 0}, 2)), 1, {});
  ASSERT_FALSE(marker.isNull());

  std::vector<Point3d> points{{0, 0, 0}, {30, 0, 0}};
  ObjectIdArray ids{round};
  EXPECT_TRUE(SelectFence(points, ids));
  EXPECT_TRUE(points.empty());
  EXPECT_EQ(ids, (ObjectIdArray{round, vertical}));

  points = {{0, 0, 0}, {60, 0, 0}};
  ObjectIdArray lines;
  EXPECT_TRUE(SelectFenceOfType("LINE", points, lines));
  EXPECT_EQ(lines, (ObjectIdArray{vertical, far}));

  points = {{0, 100, 0}, {60, 100, 0}};
  EXPECT_FALSE(SelectFence(points, lines));
  EXPECT_TRUE(points.empty());
  EXPECT_EQ(lines.size(), 2u);
}

TEST_F(HostConsoleWrappers, PaperSpaceIsWhatTheEditorsViewportSays) {
  start();
  EXPECT_FALSE(IsPaperSpace());
  ActivateLayoutOf(db().paperSpace()->id);
  EXPECT_TRUE(IsPaperSpace());
  EXPECT_EQ(GetIntVar("CVPORT"), 1);
  ActivateLayoutOf(ModelSpaceId());
  EXPECT_FALSE(IsPaperSpace());
  ASSERT_TRUE(SetVar("CVPORT", std::int32_t{1}));
  EXPECT_TRUE(IsPaperSpace());
  EXPECT_EQ(OpenCurrentSpace(), db().paperSpace()->id);
}

TEST_F(HostConsoleWrappers, ZoomedRectangleIsWhatTheActiveViewShows) {
  start();
  ZoomView({0, 0}, {160, 80});  // the screen's own proportion
  ViewRect r = ShowActiveView();
  EXPECT_NEAR(r.lowerLeft.x, 0, 1e-9);
  EXPECT_NEAR(r.lowerLeft.y, 0, 1e-9);
  EXPECT_NEAR(r.upperRight.x, 160, 1e-9);
  EXPECT_NEAR(r.upperRight.y, 80, 1e-9);

  ZoomView({0, 0}, {100, 100});  // taller than the screen: the height fits, the width grows
  r = ShowActiveView();
  EXPECT_NEAR(r.lowerLeft.y, 0, 1e-9);
  EXPECT_NEAR(r.upperRight.y, 100, 1e-9);
  EXPECT_NEAR(r.lowerLeft.x, -50, 1e-9);
  EXPECT_NEAR(r.upperRight.x, 150, 1e-9);
  EXPECT_NEAR(GetRealVar("VIEWSIZE"), 100, 1e-9);
}

}  // namespace
}  // namespace tv::host
