// Field extraction on title blocks built in code: where the areas land under every placement,
// how texts are cleaned and ordered, and which source gives a field.
#include <gtest/gtest.h>

#include <cmath>

#include "../recognition/drawing_fixture.h"
#include "host/entity.h"
#include "recognition/sheet_geometry.h"
#include "titleblock/field_extraction.h"
#include "titleblock/field_extraction_internal.h"

namespace tv::titleblock {
namespace {

using recognition::test::ExpectBox;

TEST(FieldText, StripMTextCodesKeepsTheWordsOfFormattedText) {
  EXPECT_EQ(StripMTextCodes("{\\fSimSun|b0|i0|c134;总平面图}"), "总平面图");
  EXPECT_EQ(StripMTextCodes("\\L图名\\l"), "图名");
  EXPECT_EQ(StripMTextCodes("\\O\\H2.5;A\\o"), "A");
  // A break is kept unless a semicolon follows it somewhere; then it goes with what lies between.
  EXPECT_EQ(StripMTextCodes("A\\PB"), "A\\PB");
  EXPECT_EQ(StripMTextCodes("A\\PB\\H2;C"), "AC");
  EXPECT_EQ(StripMTextCodes("{A}{B"), "A{B");
}

TEST(FieldText, CleaningMarksLinesAndTrimsOnlyAsciiBlanks) {
  EXPECT_EQ(CleanText("  A\\PB\nC ", true), "A[++}B[++}C");
  EXPECT_EQ(CleanText("A\\PB", false), "A\\PB");
  EXPECT_EQ(CleanText(" \xE3\x80\x80X ", false), "\xE3\x80\x80X");  // a full-width blank stays
  EXPECT_FALSE(CleanText("   ", false));
  EXPECT_FALSE(CleanText("{\\H2;}", true));
}

TEST(FieldText, ZigzagFenceRunsAlongTheLongerSide) {
  const auto wide = ZigzagFence({0, 0, 0}, {80, 8, 0}, 8);
  ASSERT_EQ(wide.size(), 18u);
  EXPECT_EQ(wide[2], (Point3d{0, 1, 0}));
  EXPECT_EQ(wide[3], (Point3d{80, 1, 0}));
  const auto tall = ZigzagFence({0, 0, 0}, {8, 80, 0}, 8);
  ASSERT_EQ(tall.size(), 18u);
  EXPECT_EQ(tall[16], (Point3d{8, 0, 0}));
  EXPECT_EQ(tall[17], (Point3d{8, 80, 0}));
}

// A 420 x 297 frame with its fields along the lower right, areas about the frame's centre.
class FieldTest : public recognition::test::DrawingTest {
 protected:
  void SetUp() override {
    DrawingTest::SetUp();
    savedCentring_ = GlobalTkLibrary().CentreInArea;
    def_.block_name = "TK";
    def_.frame_extents = {{-210, -148.5, 0}, {210, 148.5, 0}};
    def_.area_drawing_no = {{110, -148.5, 0}, {210, -128.5, 0}};
    def_.area_title = {{10, -148.5, 0}, {110, -108.5, 0}};
    def_.area_date = {{110, -108.5, 0}, {210, -88.5, 0}};
    def_.stamp_project = def_.stamp_completed = {{-50, -50, 0}, {50, 50, 0}};
  }
  void TearDown() override {
    GlobalTkLibrary().CentreInArea = savedCentring_;
    DrawingTest::TearDown();
  }

  cad::BlockRecord& Frame(double width = 420, const std::string& name = "TK") {
    cad::BlockRecord& block = db().addBlock(name);
    AddLw({{0, 0}, {width, 0}, {width, 297}, {0, 297}}, true, &block);
    return block;
  }
  using Attributes = std::vector<std::unique_ptr<cad::Attrib>>;
  cad::Insert& Place(cad::BlockRecord& block, Point3d at, double rotation = 0, Vector3d scale = {1, 1, 1},
                     Attributes attributes = {}) {
    auto insert = std::make_unique<cad::Insert>();
    insert->block = block.id;
    insert->position = at;
    insert->rotation = rotation;
    insert->scale = scale;
    insert->attribs = std::move(attributes);
    return Append(std::move(insert));
  }
  // Where a point of the frame's block lies for an insert at `at` turned by `rotation`.
  static Point3d OnFrame(Point3d at, double rotation, Point2d local) {
    return Matrix3d::rotation(rotation, Vector3d::zAxis(), at).transform(Point3d{local.x + at.x, local.y + at.y, 0});
  }
  static std::unique_ptr<cad::Attrib> Attribute(std::string tag, std::string text, Point3d at, ObjectId layer = {}) {
    auto a = std::make_unique<cad::Attrib>();
    a->tag = std::move(tag);
    a->text = std::move(text);
    a->position = at;
    a->height = 4;
    a->layer = layer;
    return a;
  }
  static ObjectId OpenFirstAttribute(ObjectId insert) { return host::OpenEntity(insert).attributeIds().front(); }
  Extents3d Area(ObjectId insert, int index) {
    Extents3d area;
    double rotation = -1;
    EXPECT_TRUE(AreaOnDrawing(&def_, insert, index, area, rotation));
    return area;
  }
  std::string Field(ObjectId insert, int index) {
    RefreshLiveLayers();
    return ReadAreaField(&def_, insert, index, ids_);
  }

  TK_Customization def_;
  ObjectIdArray ids_;
  std::array<std::int32_t, 6> savedCentring_{};
};

TEST_F(FieldTest, AreasFollowThePlacementOfTheInsert) {
  const ObjectId plain = Place(Frame(), {0, 0, 0}).id;
  const ObjectId scaled = Place(*db().findBlock("TK"), {0, 1000, 0}, 0, {2, 2, 1}).id;
  const ObjectId mirrored = Place(*db().findBlock("TK"), {420, 3000, 0}, 0, {-1, 1, 1}).id;
  const ObjectId turned = Place(*db().findBlock("TK"), {1000, 0, 0}, kPi / 2).id;
  Open();
  // Fields lose 5 % at each side; the print area does not.
  ExpectBox(Area(plain, kAreaTitle), {225, 2}, {315, 38}, 1e-6);
  Extents3d area;
  double rotation = 0;
  EXPECT_FALSE(AreaOnDrawing(&def_, plain, kAreaPrint, area, rotation));
  def_.print_extents = def_.frame_extents;
  ExpectBox(Area(plain, kAreaPrint), {0, 0}, {420, 297}, 1e-6);
  // Scaled by the ratio of the larger sides, about the insert's centre.
  ExpectBox(Area(scaled, kAreaTitle), {450, 1004}, {630, 1076}, 1e-6);
  // A mirrored insert gets the area of the unmirrored frame.
  ExpectBox(Area(mirrored, kAreaTitle), {225, 3002}, {315, 3038}, 1e-6);
  ASSERT_TRUE(AreaOnDrawing(&def_, turned, kAreaTitle, area, rotation));
  EXPECT_DOUBLE_EQ(rotation, kPi / 2);
  ExpectBox(area, {962, 225}, {998, 315}, 1e-6);
  EXPECT_FALSE(AreaOnDrawing(nullptr, plain, kAreaTitle, area, rotation));
  EXPECT_FALSE(AreaOnDrawing(&def_, plain, kAreaInfo1, area, rotation));
}

TEST_F(FieldTest, AStretchedDynamicFrameKeepsItsFieldsAtTheLowerRightCorner) {
  def_.is_dynamic = 1;
  const ObjectId stretched = Place(Frame(520), {0, 0, 0}).id;
  Open();
  ExpectBox(Area(stretched, kAreaDate), {425, 41}, {515, 59}, 1e-6);
  // The print area takes the stretched size.
  def_.print_extents = def_.frame_extents;
  ExpectBox(Area(stretched, kAreaPrint), {0, 0}, {520, 297}, 1e-6);
}

TEST_F(FieldTest, UnderAUcsOnlyTheFirstThreeStampsGoBackToWorld) {
  const ObjectId insert = Place(Frame(), {100, 50, 0}).id;
  Open();
  UseUcs(Matrix3d::translation({100, 50, 0}));
  ExpectBox(Area(insert, kStampProject), {265, 153.5}, {355, 243.5}, 1e-6);
  ExpectBox(Area(insert, kStampCompleted), {165, 103.5}, {255, 193.5}, 1e-6);
  ExpectBox(Area(insert, kAreaTitle), {225, 2}, {315, 38}, 1e-6);
}

TEST_F(FieldTest, ANumberSplitOverLinesIsOneWordWhileATitleKeepsItsLines) {
  const ObjectId insert = Place(Frame(), {0, 0, 0}).id;
  AddMText("A-\\P101", {330, 16, 0}, 3, 80);
  AddMText("{\\fSimSun|b0;总平面图}\\P\\L一期\\l", {230, 34, 0}, 4, 80);
  Open();
  EXPECT_EQ(Field(insert, kAreaDrawingNo), "A-101");
  EXPECT_EQ(ids_.size(), 1u);
  EXPECT_EQ(Field(insert, kAreaTitle), "总平面图[++}一期");
}

TEST_F(FieldTest, TextsAreJoinedInReadingOrderHoweverTheFrameIsTurned) {
  ObjectIdArray inserts;
  for (const double rotation : {0.0, kPi / 2}) {
    const Point3d at{rotation == 0.0 ? 0.0 : 1000.0, 0, 0};
    const ObjectId insert = Place(rotation == 0.0 ? Frame() : *db().findBlock("TK"), at, rotation).id;
    // Created lower line first.
    AddText("第二行", OnFrame(at, rotation, {230, 9}), 4).rotation = rotation;
    AddText("第一行", OnFrame(at, rotation, {230, 23}), 4).rotation = rotation;
    inserts.push_back(insert);
  }
  Open();
  for (const ObjectId insert : inserts) {
    EXPECT_EQ(Field(insert, kAreaTitle), "第一行[++}第二行");
    EXPECT_EQ(ids_.size(), 2u);
  }
}

TEST_F(FieldTest, AttributesGiveTheNearestLiveValueAndABlankOneFallsThrough) {
  cad::Layer& off = db().addLayer("OFF");
  off.on = false;
  Attributes attributes;
  attributes.push_back(Attribute("NO", "HIDDEN", {360, 8, 0}, off.id));
  attributes.push_back(Attribute("NO", "A-01", {330, 8, 0}));
  attributes.push_back(Attribute("NO", "A-02", {328, 8, 0}));  // farther from the centre
  attributes.push_back(Attribute("DATE", "  ", {360, 48, 0}));
  const ObjectId id = Place(Frame(), {0, 0, 0}, 0, {1, 1, 1}, std::move(attributes)).id;
  AddText("2024.05.06", {340, 48, 0}, 4);
  Open();
  EXPECT_EQ(Field(id, kAreaDrawingNo), "A-01");
  EXPECT_EQ(Field(id, kAreaDate), "2024.05.06");
}

TEST_F(FieldTest, AttributesOfAnInsertLaidOverTheFrameFillItsFields) {
  const ObjectId frame = Place(Frame(), {0, 0, 0}).id;
  cad::BlockRecord& label = db().addBlock("LABEL");
  AddLine({0, 0, 0}, {100, 0, 0}, &label);
  Attributes attributes;
  attributes.push_back(Attribute("NO", "B-12", {330, 8, 0}));
  attributes.push_back(Attribute("T2", "二层平面", {230, 9, 0}));
  attributes.push_back(Attribute("T1", "结构", {230, 23, 0}));
  const ObjectId over = Place(label, {225, 20, 0}, 0, {1, 1, 1}, std::move(attributes)).id;
  Open();
  EXPECT_EQ(Field(frame, kAreaDrawingNo), "B-12");
  EXPECT_EQ(ids_, ObjectIdArray{OpenFirstAttribute(over)});
  // A title joins every attribute in the area, in reading order.
  EXPECT_EQ(Field(frame, kAreaTitle), "结构[++}二层平面");
}

TEST_F(FieldTest, ACentredFieldMovesItsAttributeToTheAreaCentre) {
  GlobalTkLibrary().CentreInArea[kAreaDrawingNo - 1] = 1;
  Attributes attributes;
  attributes.push_back(Attribute("NO", "A-01", {330, 3, 0}));
  const ObjectId id = Place(Frame(), {0, 0, 0}, 0, {1, 1, 1}, std::move(attributes)).id;
  Open();
  ASSERT_EQ(Field(id, kAreaDrawingNo), "A-01");
  ASSERT_EQ(ids_.size(), 1u);
  const Point3d centre = recognition::CentreOf(recognition::EntityExtents(ids_[0]));
  EXPECT_NEAR(centre.x, 370, 1e-6);
  EXPECT_NEAR(centre.y, 10, 1e-6);
}

TEST_F(FieldTest, AttributeDefinitionsAndTextsInsideBlocksAreLaterSources) {
  const ObjectId frame = Place(Frame(), {0, 0, 0}).id;
  auto tag = std::make_unique<cad::AttDef>();
  tag->tag = "2024-01";
  tag->text = "default";
  tag->position = {340, 46, 0};
  tag->height = 4;
  Append(std::move(tag));
  // A text on a switched-off layer inside the block is no piece of the field.
  cad::Layer& off = db().addLayer("OFF");
  off.on = false;
  cad::BlockRecord& note = db().addBlock("NOTE");
  AddText("S-07", {2, 2, 0}, 4, &note);
  AddText("OLD", {50, 2, 0}, 4, &note).layer = off.id;
  AddInsert(note, {330, 4, 0});
  Open();
  EXPECT_EQ(Field(frame, kAreaDate), "2024-01");
  EXPECT_EQ(Field(frame, kAreaDrawingNo), "S-07");
  EXPECT_TRUE(ids_.empty());  // exploded pieces are no entities of the drawing
  EXPECT_EQ(db().findBlock("TV_Scratch"), nullptr);  // no vendor text needed the scratch space
}

TEST_F(FieldTest, AVendorTextLosesItsCentringMark) {
  auto proxy = std::make_unique<cad::ProxyEntity>();
  proxy->name = "TCH_TEXT";
  proxy->groups = {{100, std::string("TDbText")}, {1, std::string("^C图号\r\nA")}, {1, std::string("other")}};
  const ObjectId id = Append(std::move(proxy)).id;
  Open();
  std::string text;
  EXPECT_EQ(TextOfEntity(host::OpenEntity(id), text), kVendorText);
  EXPECT_EQ(text, "图号\\PA");
}

TEST_F(FieldTest, VendorTextsAreFoundByTheFenceAndInsideBlocks) {
  // Texts of another application, kept as proxies: position 10, height 40, text 1.
  const auto vendorText = [&](const char* name, std::string text, Point3d at, cad::BlockRecord* block = nullptr) {
    auto proxy = std::make_unique<cad::ProxyEntity>();
    proxy->name = name;
    proxy->groups = {{100, std::string("TDbText")}, {10, at.x}, {20, at.y}, {30, at.z}, {40, 4.0},
                     {1, std::move(text)}, {7, std::string("Standard")}, {50, 0.0}};
    return Append(std::move(proxy), block).id;
  };
  const ObjectId frame = Place(Frame(), {0, 0, 0}).id;
  // Loose over the fields: the fence of "Text,MText,TCH_TEXT,TCH_MTEXT" catches them.
  const ObjectId number = vendorText("TCH_TEXT", "^CJ-05", {330, 8, 0});
  const ObjectId title = vendorText("TCH_MTEXT", "给排水\r\n平面图", {230, 30, 0});
  // Inside a small block laid over the date field: found by its extents once exploded.
  cad::BlockRecord& note = db().addBlock("NOTE");
  vendorText("TCH_TEXT", "2025.03", {2, 2, 0}, &note);
  AddInsert(note, {330, 44, 0});
  Open();
  struct Case {
    const char* name;
    int area;
    std::string expected;
    ObjectIdArray ids;  // the texts taken, when they are entities of the drawing
  };
  for (const Case& c : {Case{"TCH_TEXT", kAreaDrawingNo, "J-05", {number}},
                        Case{"TCH_MTEXT", kAreaTitle, "给排水[++}平面图", {title}},
                        Case{"in a block", kAreaDate, "2025.03", {}}}) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(Field(frame, c.area), c.expected);
    EXPECT_EQ(ids_, c.ids);
  }
  // Measured as the text box they show.
  const Extents3d box = recognition::EntityExtents(number);
  ASSERT_FALSE(box.isEmpty());
  EXPECT_NEAR(box.min.x, 330, 1e-6);
  EXPECT_GT(box.max.x, 335);
  EXPECT_NEAR(box.min.y, 8, 0.5);
  EXPECT_NEAR(box.max.y, 12, 0.5);
}

}  // namespace
}  // namespace tv::titleblock
