// Capturing a definition from a picked insert: the block's name (a dynamic block's own), placement,
// extents about the pick centre and the paper, on drawings built in code and picked through the
// console's selection prompt.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "../console/console_test_support.h"
#include "cad/dxf_reader.h"
#include "cad/dxf_writer.h"
#include "recognition/working_coordinates.h"
#include "settings/plot_setting.h"
#include "titleblock/tk_library.h"

namespace tv::titleblock {
namespace {

bool Has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

class FramePickTest : public ::testing::Test {
 protected:
  void SetUp() override {
    recognition::ResetUcs();
    savedScale_ = settings::CurrentPlotSetting().default_scale;
    settings::CurrentPlotSetting().default_scale = 100;
  }
  void TearDown() override {
    settings::CurrentPlotSetting().default_scale = savedScale_;
    recognition::ResetUcs();
  }

  // A block whose content is a w x h rectangle with its lower left corner at the base point.
  cad::BlockRecord& FrameBlock(const std::string& name, double w, double h) {
    cad::BlockRecord& block = db_.addBlock(name);
    console::testing::AddRectangle(db_, block, {0, 0}, {w, h});
    return block;
  }

  ObjectId Insert(const cad::BlockRecord& block, Point3d at, Vector3d scale = {1, 1, 1}, double rotation = 0) {
    auto insert = std::make_unique<cad::Insert>();
    insert->block = block.id;
    insert->position = at;
    insert->scale = scale;
    insert->rotation = rotation;
    return db_.append(*db_.modelSpace(), std::move(insert)).id;
  }

  // Picks with `answer` at the selection prompt; the session's command line goes to `transcript_`.
  bool Pick(const std::string& answer, TK_Customization& definition) {
    console::testing::ScriptedSession session(std::move(db_), {answer});
    const bool picked = PickFrameBlock(definition);
    transcript_ = session.out();
    return picked;
  }
  bool PickId(ObjectId id, TK_Customization& definition) { return Pick("H " + id.handleText(), definition); }

  cad::Database db_ = cad::Database::createDefault();
  std::string transcript_;
  double savedScale_ = 100;
};

TEST_F(FramePickTest, AnInsertGivesItsBlockPlacementExtentsAboutTheCentreAndPaper) {
  const ObjectId id = Insert(FrameBlock("TK-A3", 420, 297), {1000, 2000, 0}, {100, 100, 1});
  TK_Customization d;
  ASSERT_TRUE(PickId(id, d)) << transcript_;
  EXPECT_TRUE(Has(transcript_, "选择图框对应的图块：")) << transcript_;
  EXPECT_EQ(d.block_name, "TK-A3");
  EXPECT_EQ(d.is_dynamic, 0);
  EXPECT_DOUBLE_EQ(d.rotation, 0);
  EXPECT_DOUBLE_EQ(d.scale, 100);
  EXPECT_NEAR(d.pick_centre.x, 22000, 1e-6);
  EXPECT_NEAR(d.pick_centre.y, 16850, 1e-6);
  EXPECT_EQ(d.pick_centre.z, 0);
  EXPECT_NEAR(d.frame_extents.min.x, -21000, 1e-6);
  EXPECT_NEAR(d.frame_extents.min.y, -14850, 1e-6);
  EXPECT_NEAR(d.frame_extents.max.x, 21000, 1e-6);
  EXPECT_NEAR(d.frame_extents.max.y, 14850, 1e-6);
  // 42000 x 29700 at 1:100 and scale 100 is 4.2 x 2.97, brought up by tens to 420 x 297.
  EXPECT_EQ(d.paper, (paper::MyPaper{420, 297, true}));
}

TEST_F(FramePickTest, RotationAndAMirroredScaleAreTakenAsTheyAreAndThePaperStaysLongSideFirst) {
  const ObjectId id = Insert(FrameBlock("A1", 841, 594), {0, 0, 0}, {-1, 1, 1}, kPi / 2);
  TK_Customization d;
  ASSERT_TRUE(PickId(id, d)) << transcript_;
  EXPECT_DOUBLE_EQ(d.rotation, kPi / 2);
  EXPECT_DOUBLE_EQ(d.scale, 1);
  EXPECT_NEAR(d.frame_extents.max.x - d.frame_extents.min.x, 594, 1e-6);
  EXPECT_NEAR(d.frame_extents.max.y - d.frame_extents.min.y, 841, 1e-6);
  EXPECT_NEAR(d.frame_extents.min.x, -d.frame_extents.max.x, 1e-6);
  EXPECT_EQ(d.paper, (paper::MyPaper{841, 594, true}));
}

TEST_F(FramePickTest, FramesOfOtherUnitsLandInTheRangeOfRealPaper) {
  settings::CurrentPlotSetting().default_scale = 1;
  const ObjectId big = Insert(FrameBlock("BIG", 84100, 59400), {0, 0, 0});
  TK_Customization d;
  ASSERT_TRUE(PickId(big, d)) << transcript_;
  EXPECT_EQ(d.paper, (paper::MyPaper{841, 594, true}));

  // A strip: the short side is fine, the long one is brought under 5080.
  db_ = cad::Database::createDefault();
  const ObjectId strip = Insert(FrameBlock("STRIP", 60000, 500), {0, 0, 0});
  TK_Customization s;
  ASSERT_TRUE(PickId(strip, s)) << transcript_;
  EXPECT_EQ(s.paper.length, 600);
  EXPECT_EQ(s.paper.width, 5);
}

TEST_F(FramePickTest, ADefaultScaleOfZeroCountsAsOneToAHundred) {
  settings::CurrentPlotSetting().default_scale = 0;
  const ObjectId id = Insert(FrameBlock("F", 42000, 29700), {0, 0, 0});
  TK_Customization d;
  ASSERT_TRUE(PickId(id, d)) << transcript_;
  EXPECT_EQ(d.paper, (paper::MyPaper{420, 297, true}));
}

TEST_F(FramePickTest, NothingPickedOrNoInsertIsShown) {
  TK_Customization d;
  EXPECT_FALSE(Pick("", d));
  EXPECT_TRUE(Has(transcript_, "未选择到图框对应的图块 !")) << transcript_;
  EXPECT_EQ(d.block_name, "");

  db_ = cad::Database::createDefault();
  const ObjectId line = console::testing::AddLine(db_, *db_.modelSpace(), {0, 0, 0}, {100, 100, 0});
  EXPECT_FALSE(PickId(line, d));
  EXPECT_TRUE(Has(transcript_, "未选择到图框对应的图块 !")) << transcript_;
}

TEST_F(FramePickTest, AFlatBlockHasNoPaper) {
  cad::BlockRecord& flat = db_.addBlock("FLAT");
  console::testing::AddLine(db_, flat, {0, 0, 0}, {420, 0, 0});
  const ObjectId id = Insert(flat, {0, 0, 0});
  TK_Customization d;
  EXPECT_FALSE(PickId(id, d));
  EXPECT_TRUE(Has(transcript_, "图框图块对应的范围无效 !")) << transcript_;
  EXPECT_FALSE(Has(transcript_, "未选择到图框对应的图块 !"));
}

TEST_F(FramePickTest, AnAnonymousCopyOfADynamicBlockIsKnownByItsOriginalAfterADxfRoundTrip) {
  cad::BlockRecord& dynamic = FrameBlock("DYN-A2", 594, 420);
  db_.ensureDictionary(db_.ensureExtensionDictionary(dynamic), "ACAD_ENHANCEDBLOCK");
  cad::BlockRecord& copy = FrameBlock("*U", 700, 420);
  copy.extras().xdata = {cad::Group{1001, std::string("AcDbBlockRepBTag")}, cad::Group{1070, std::int64_t{1}},
                         cad::Group{1005, dynamic.id}};
  cad::BlockRecord& plainCopy = FrameBlock("*U", 594, 420);
  const std::string plainName = plainCopy.name;
  const ObjectId stretched = Insert(copy, {0, 0, 0}, {1, 1, 1});
  const ObjectId original = Insert(dynamic, {5000, 0, 0}, {1, 1, 1});
  const ObjectId anonymous = Insert(plainCopy, {10000, 0, 0}, {1, 1, 1});

  // Through the file, as a drawing reaches the program.
  const std::string dxf = cad::WriteDxfToString(db_);
  auto pick = [&](ObjectId id, TK_Customization& d) {
    cad::DxfReadResult back = cad::ReadDxfFromBytes(dxf);
    if (!back.ok()) {
      ADD_FAILURE() << back.error;
      return false;
    }
    db_ = std::move(*back.db);
    return PickId(id, d);
  };
  TK_Customization d;
  ASSERT_TRUE(pick(stretched, d)) << transcript_;
  EXPECT_EQ(d.block_name, "DYN-A2");
  EXPECT_EQ(d.is_dynamic, 1);
  EXPECT_EQ(d.paper.length, 700);
  EXPECT_EQ(d.paper.width, 420);

  TK_Customization o;
  ASSERT_TRUE(pick(original, o)) << transcript_;
  EXPECT_EQ(o.block_name, "DYN-A2");
  EXPECT_EQ(o.is_dynamic, 1);

  // Without the tag an anonymous block keeps its own name and is no dynamic block.
  TK_Customization a;
  ASSERT_TRUE(pick(anonymous, a)) << transcript_;
  EXPECT_EQ(a.block_name, plainName);
  EXPECT_EQ(a.block_name.rfind("*U", 0), 0u);
  EXPECT_EQ(a.is_dynamic, 0);
}

}  // namespace
}  // namespace tv::titleblock
