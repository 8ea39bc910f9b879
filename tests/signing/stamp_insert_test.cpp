// Stamps put on a drawing behind the seam: size, place, turn, layer, draw order, and nothing
// left once the run's stamps are taken away.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <numbers>

#include "../host/host_test_support.h"
#include "../support/run_program.h"
#include "cad/dxf_writer.h"
#include "examples/sample_stamps.h"
#include "host/wrappers.h"
#include "settings/config.h"
#include "signing/stamp_library.h"
#include "signing/stamp_placement.h"
#include "titleblock/title_sheets.h"

namespace tv::signing {
namespace {

namespace fs = std::filesystem;

class StampInsert : public host::testing::HostDrawingTest {
 protected:
  StampInsert() {
    auto red = std::make_unique<TV_Stamp>();
    red->name = "红章";
    red->image = samples::SolidRedPicture(124, 56);
    red->image_size = static_cast<std::int32_t>(red->image.size());
    red->width = 62;
    red->height = 28;
    SaveStampImage(*red, file_);
    GlobalStampLibrary().stamps.push_back(std::move(red));
    run_.image_files[1] = file_;
  }
  ~StampInsert() override {
    ClearStampLibrary(GlobalStampLibrary());
    settings::GlobalConfig() = saved_;
  }

  std::vector<const cad::Image*> images() const {
    std::vector<const cad::Image*> out;
    db.forEachEntity(*db.modelSpace(), [&](const cad::Entity& e) {
      if (const auto* i = cad::As<cad::Image>(&e)) out.push_back(i);
    });
    return out;
  }
  std::size_t imageDefinitions() const {
    std::size_t n = 0;
    for (const auto& o : db.objects) n += cad::As<cad::ImageDef>(o.get()) != nullptr;
    return n;
  }

  host::testing::RecordingEditor editor_;
  test_support::TempDir dir_{"tv_stamp"};
  const std::string file_ = (dir_.path() / "B260101120000").string();
  PlotStamps run_;
  const settings::Config saved_ = settings::GlobalConfig();
};

TEST_F(StampInsert, SizeIsTheScaledStampInWholeUnitsAroundThePoint) {
  struct Case {
    double scale, rotation;
    double width, height;  // whole drawing units
  };
  const Case cases[] = {
      {100, 0, 6200, 2800},             // 62 mm at 1:100
      {33.3, 0, 2064, 932},             // 2064.6 and 932.4 cut to whole units
      {50, std::numbers::pi / 2, 3100, 1400},
  };
  const Point2d centre{1000, 500};
  for (const Case& c : cases) {
    InsertStamp(run_, 1, "红章", centre, c.scale, c.rotation);
    ASSERT_FALSE(run_.inserted.empty());
    const auto* image = db.objectAs<cad::Image>(run_.inserted.back());
    ASSERT_NE(image, nullptr);
    const Vector3d u = image->uPixel * image->imageSize.x, v = image->vPixel * image->imageSize.y;
    EXPECT_NEAR(u.length(), c.width, 1e-6) << c.scale;
    EXPECT_NEAR(v.length(), c.height, 1e-6) << c.scale;
    EXPECT_NEAR(std::atan2(u.y, u.x), c.rotation, 1e-9) << c.scale;
    // The corner lies half the whole-unit sizes (divided as integers) off the point, turned with it.
    const Point3d middle = image->position + u * 0.5 + v * 0.5;
    const double offX = static_cast<double>(static_cast<std::int64_t>(c.width) / 2) - c.width / 2;
    const double offY = static_cast<double>(static_cast<std::int64_t>(c.height) / 2) - c.height / 2;
    const Vector3d ux = u / u.length(), vy = v / v.length();
    const Point3d expected = Point3d{centre.x, centre.y, 0} - ux * offX - vy * offY;
    EXPECT_NEAR(middle.x, expected.x, 1e-6) << c.scale;
    EXPECT_NEAR(middle.y, expected.y, 1e-6) << c.scale;
    EXPECT_EQ(image->displayFlags & 8, 8);  // transparent
  }
  // No position, or no such stamp: nothing.
  const std::size_t before = run_.inserted.size();
  InsertStamp(run_, 1, "红章", titleblock::kNoStampPoint, 100, 0);
  InsertStamp(run_, 1, "没有的章", centre, 100, 0);
  EXPECT_EQ(run_.inserted.size(), before);
  // The definition of the first sheet serves every later one.
  EXPECT_EQ(imageDefinitions(), 1u);
}

TEST_F(StampInsert, LayerKeepsItsStatesAndTheImagesGoWhenTheRunEnds) {
  const ObjectId layer = host::FindOrAddLayer(kStampLayerName);
  host::SetLayerFlag(layer, host::kLayerLocked, true);
  host::SetLayerFlag(layer, host::kLayerOff, true);
  addLine({0, 0, 0}, {10, 10, 0});
  InsertStamp(run_, 1, "红章", {100, 100}, 1, 0);
  InsertStamp(run_, 1, "红章", {300, 100}, 1, 0);
  ASSERT_EQ(images().size(), 2u);
  EXPECT_EQ(images()[0]->layer, layer);
  EXPECT_TRUE(host::GetLayerFlag(layer, host::kLayerLocked));
  EXPECT_TRUE(host::GetLayerFlag(layer, host::kLayerOff));

  EndPlotStamps(run_);
  EXPECT_TRUE(images().empty());
  EXPECT_EQ(imageDefinitions(), 0u);
  EXPECT_TRUE(host::GetLayerFlag(layer, host::kLayerLocked));
  // Saved, the drawing names neither an image nor a definition nor a key of the run.
  const fs::path saved = dir_.path() / "saved.dxf";
  ASSERT_TRUE(cad::WriteDxf(db, saved.string()).ok);
  const std::string text = test_support::ReadFile(saved);
  for (const char* gone : {"\nIMAGE\n", "\nIMAGEDEF\n", "IMAGEDEF_REACTOR", "Temp_Pic"})
    EXPECT_EQ(text.find(gone), std::string::npos) << gone;
}

TEST_F(StampInsert, NewLayerColourDrawOrderAndTheRandomTurn) {
  addLine({0, 0, 0}, {10, 10, 0});
  InsertStamp(run_, 1, "红章", {100, 100}, 1, 0);
  const cad::Layer* layer = db.findLayer(kStampLayerName);
  ASSERT_NE(layer, nullptr);
  EXPECT_EQ(layer->colorIndex, kStampLayerColor);
  EXPECT_EQ(db.modelSpace()->entities.back()->id, run_.inserted.back());  // in front by default

  settings::GlobalConfig().stamp_option_b = 1;  // "印章后置"
  InsertStamp(run_, 1, "红章", {100, 100}, 1, 0);
  EXPECT_EQ(db.modelSpace()->entities.front()->id, run_.inserted.back());

  // The sheet's turn first, then a whole number of degrees from -15 to 14 of its own.
  settings::GlobalConfig().stamp_option_a = 1;  // "印章随机旋转微小角度"
  const double sheet = 0.5;
  for (int i = 0; i < 20; ++i) {
    InsertStamp(run_, 1, "红章", {100, 100}, 1, sheet);
    const auto* image = db.objectAs<cad::Image>(run_.inserted.back());
    const double degrees = (std::atan2(image->uPixel.y, image->uPixel.x) - sheet) * 180 / std::numbers::pi;
    EXPECT_NEAR(degrees, std::round(degrees), 1e-6);
    EXPECT_GE(std::round(degrees), -15);
    EXPECT_LE(std::round(degrees), 14);
  }
}

TEST_F(StampInsert, APictureThatDoesNotLoadIsSaidAndLeftOut) {
  test_support::WriteFile(file_, "no picture");
  InsertStamp(run_, 1, "红章", {100, 100}, 100, 0);
  EXPECT_TRUE(run_.inserted.empty());
  EXPECT_EQ(imageDefinitions(), 0u);
}

}  // namespace
}  // namespace tv::signing
