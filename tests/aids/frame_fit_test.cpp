// A frame of the drawing fitted around content: its drawing area (inside the border, not the
// edge) placed on two corners, turned by Tab, as copies; the frame itself left as it was.
#include <gtest/gtest.h>

#include "../support/entity_builders.h"
#include "aids_drawings.h"
#include "../support/tvplot_test.h"
#include "cad/drawing_file.h"
#include "drawing_diff.h"

namespace tv::aids {
namespace {

using namespace test_support;

class FrameFitTest : public TvplotTest {
 protected:
  void SetUp() override {
    TvplotTest::SetUp();
    cad::Database db = cad::Database::createDefault();
    cad::BlockRecord& ms = *db.modelSpace();
    AddA3Frame(db);
    // Its title block, with an attribute.
    auto title = MakeInsert(TitleBlock(db), {300, 10, 0});
    title->attribs.push_back(MakeAttribute("图号", "A-01", {310, 9, 0}));
    db.append(ms, std::move(title));
    db.append(ms, MakeLine({1000, -100, 0}, {1100, -100, 0}));
    drawing_ = Write("frame.dxf", db);
  }
  std::string drawing_;
};

TEST_F(FrameFitTest, PlacesACopyWithItsDrawingAreaBetweenTheCorners) {
  const struct {
    const char* what;
    std::vector<std::string> corners;
    double x0, x1;  // of the copied border; it always runs from y 500 to 1500
  } cases[] = {
      {"as drawn", {"1000,500", "3000,1500"}, 2000 - 195 * 1000 / 287.0, 2000 + 195 * 1000 / 287.0},
      {"turned a quarter by Tab", {"TAB", "1000,500", "3000,1500"}, 2000 - 143.5 * 1000 / 390.0, 2000 + 143.5 * 1000 / 390.0},
  };
  for (const auto& c : cases) {
    const std::string out = Path("fitted.dxf").string();
    std::vector<std::string> args{"run", drawing_, "TV_BatchPlot_18", "--answer", "2", "--answer", "W -1,-1 421,298"};
    for (const std::string& a : c.corners) args.insert(args.end(), {"--answer", a});
    args.insert(args.end(), {"--save-as", out});
    const RunResult r = Run(args);
    ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
    const auto before = RecordsByHandle(drawing_), after = RecordsByHandle(out);
    EXPECT_TRUE(ChangedHandles(before, after).empty()) << c.what;
    cad::DxfReadResult saved = cad::ReadDrawing(out);
    ASSERT_TRUE(saved.ok()) << saved.error;
    int lines = 0, polylines = 0, inserts = 0;
    Extents3d border;
    cad::Point3d attributeAt{};
    for (const std::string& h : AddedHandles(before, after)) {
      const cad::DbObject* o = saved.db->object(ObjectId::fromHandleText(h));
      if (cad::As<cad::LwPolyline>(o)) ++polylines;
      if (const auto* i = cad::As<cad::Insert>(o)) {
        ++inserts;
        ASSERT_EQ(i->attribs.size(), 1u) << c.what;
        EXPECT_EQ(i->attribs[0]->text, "A-01") << c.what;
        attributeAt = i->attribs[0]->position;
      }
      if (const auto* l = cad::As<cad::Line>(o)) {
        ++lines;
        border.add(l->start);
        border.add(l->end);
      }
    }
    EXPECT_EQ(polylines, 1) << c.what;
    EXPECT_EQ(inserts, 1) << c.what;  // the copy keeps its attributes
    ASSERT_EQ(lines, 4) << c.what;
    EXPECT_NEAR(border.min.y, 500, 1e-6) << c.what;
    EXPECT_NEAR(border.max.y, 1500, 1e-6) << c.what;
    EXPECT_NEAR(border.min.x, c.x0, 1e-6) << c.what;
    EXPECT_NEAR(border.max.x, c.x1, 1e-6) << c.what;
    EXPECT_TRUE(border.contains(attributeAt)) << c.what;  // the attribute went with its block
  }
}

TEST_F(FrameFitTest, ALineAloneGivesNoDrawingArea) {
  const RunResult r = Run({"run", drawing_, "TV_BatchPlot_18", "--answer", "2", "--answer", "W 990,-110 1110,-90"});
  EXPECT_EQ(r.exitCode, 0) << r.err;
  EXPECT_NE(r.out.find("未能获得图框的绘图区域，退出 !"), std::string::npos) << r.out;
}

TEST_F(FrameFitTest, TheSettingsChooseTheFrameFolderWhoseFramesTheChoiceThenOffers) {
  const std::filesystem::path frames = Path("frames");
  std::filesystem::create_directories(frames);
  for (const char* name : {"A3.dwg", "A2.dxf", "notes.txt"}) WriteText(frames / name, "x");
  const std::string home = Path("home").string();
  const RunResult r = Run({"run", drawing_, "TV_BatchPlot_18", "--answer", "1", "--answer", "2", "--answer", "3",
                           "--answer", frames.string(), "--answer", "", "--answer", "^C"},
                          {}, home);
  EXPECT_EQ(r.exitCode, 0) << r.err;
  // The second showing of the choice, after the settings.
  const std::string after = r.out.substr(r.out.rfind("选 择 图 框"));
  EXPECT_NE(after.find("3. A2"), std::string::npos) << after;
  EXPECT_NE(after.find("4. A3"), std::string::npos) << after;
  EXPECT_EQ(after.find("notes"), std::string::npos) << after;
  const std::string config = ReadFile(std::filesystem::path(home) / ".local/share/Tarvex/BPlot_Cfg.cfg");
  EXPECT_NE(config.find(frames.string()), std::string::npos);
}

}  // namespace
}  // namespace tv::aids
