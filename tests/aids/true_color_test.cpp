// True colours to index colours: the nearest-colour rule, and the command on a drawing, saved and
// compared record by record with the drawing it started from.
#include <gtest/gtest.h>

#include "../support/corpus.h"
#include "../support/entity_builders.h"
#include "../support/tvplot_test.h"
#include "cad/drawing_file.h"
#include "drawing_diff.h"
#include "host/colors.h"

namespace tv::aids {
namespace {

using namespace test_support;

TEST(NearestColorIndex, TakesTheClosestColourOfThePalette) {
  const struct {
    std::int32_t rgb;
    int index;
  } cases[] = {
      {0xFF0000, 1}, {0xF80404, 1}, {0xFFFF00, 2}, {0x00FF00, 3}, {0x00FFFF, 4}, {0x0000FF, 5}, {0xFF00FF, 6},
      // Index 7 is white on the screen and black on paper: both turn into it.
      {0xFFFFFF, 7}, {0x000000, 7}, {0x050505, 7},
      {0x808080, 8}, {0xC0C0C0, 9}, {0x00007F, 174}, {0x333333, 250},
  };
  for (const auto& c : cases) EXPECT_EQ(host::NearestColorIndex(c.rgb), c.index) << std::hex << c.rgb;
}

class TrueColorCommandTest : public TvplotTest {
 protected:
  void SetUp() override {
    TvplotTest::SetUp();
    cad::Database db = cad::Database::createDefault();
    cad::BlockRecord& ms = *db.modelSpace();
    cad::Layer& green = db.addLayer("TC");
    green.trueColor = 0x00FF00;
    cad::Layer& blue = db.addLayer("KEEP");
    blue.trueColor = 0x0000FF;
    cad::Layer& locked = db.addLayer("LK");
    locked.setLocked(true);
    greenLayer_ = green.id.handleText();
    blueLayer_ = blue.id.handleText();

    // Inside the window from (-5, -5) to (150, 150).
    cad::Line& red = db.append(ms, MakeLine({10, 10, 0}, {20, 10, 0}));
    red.trueColor = 0xFE0000;
    red.extras().colorBookName = "BOOK$RED";
    red_ = red.id.handleText();
    db.append(ms, MakeLine({10, 20, 0}, {20, 20, 0})).layer = green.id;  // ByLayer: its layer turns
    db.append(ms, MakeLine({10, 30, 0}, {20, 30, 0})).colorIndex = cad::kColorByBlock;
    cad::Line& onLocked = db.append(ms, MakeLine({10, 40, 0}, {20, 40, 0}));
    onLocked.layer = locked.id;
    onLocked.trueColor = 0xFFFF01;
    onLocked_ = onLocked.id.handleText();
    // A circle three blocks deep.
    cad::BlockRecord& inner = db.addBlock("INNER");
    cad::Circle& circle = db.append(inner, MakeCircle({0, 0, 0}, 1));
    circle.trueColor = 0x0000FE;
    circle_ = circle.id.handleText();
    cad::BlockRecord& middle = db.addBlock("MIDDLE");
    db.append(middle, MakeInsert(inner, {0, 0, 0}));
    cad::BlockRecord& outer = db.addBlock("OUTER");
    db.append(outer, MakeInsert(middle, {0, 0, 0}));
    db.append(ms, MakeInsert(outer, {50, 50, 0}));

    // Outside it.
    db.append(ms, MakeLine({200, 10, 0}, {220, 10, 0})).layer = blue.id;
    cad::Line& grey = db.append(ms, MakeLine({200, 20, 0}, {220, 20, 0}));
    grey.trueColor = 0x808080;
    grey_ = grey.id.handleText();
    drawing_ = Write("colours.dxf", db);
  }

  struct Outcome {
    RunResult run;
    std::set<std::string> changed;
    cad::DxfReadResult saved;
  };
  Outcome Convert(std::vector<std::string> answers) {
    const std::string out = Path("converted.dxf").string();
    std::vector<std::string> args{"run", drawing_, "TV_BatchPlot_19", "--save-as", out};
    for (const std::string& a : answers) args.insert(args.end(), {"--answer", a});
    Outcome o{Run(args), {}, {}};
    EXPECT_EQ(o.run.exitCode, 0) << o.run.out << o.run.err;
    o.changed = ChangedHandles(RecordsByHandle(drawing_), RecordsByHandle(out));
    o.saved = cad::ReadDrawing(out);
    EXPECT_TRUE(o.saved.ok()) << o.saved.error;
    return o;
  }

  static const cad::Entity& EntityOf(const Outcome& o, const std::string& handle) {
    static const cad::Line missing;
    const cad::Entity* e = o.saved.db ? o.saved.db->entity(ObjectId::fromHandleText(handle)) : nullptr;
    EXPECT_NE(e, nullptr) << handle;
    return e ? *e : missing;
  }

  std::string drawing_, red_, onLocked_, circle_, grey_, greenLayer_, blueLayer_;
};

TEST_F(TrueColorCommandTest, ConvertsTheSelectionItsBlocksAndLayersAndNothingElse) {
  const Outcome o = Convert({"W -5,-5 150,150", ""});
  EXPECT_EQ(o.changed, (std::set<std::string>{red_, onLocked_, circle_, greenLayer_}));
  for (const auto& [handle, index] : {std::pair{red_, 1}, {onLocked_, 2}, {circle_, 5}}) {
    const cad::Entity& e = EntityOf(o, handle);
    EXPECT_EQ(e.colorIndex, index) << handle;
    EXPECT_FALSE(e.hasTrueColor()) << handle;
    EXPECT_TRUE(!e.extrasIfAny() || e.extrasIfAny()->colorBookName.empty()) << handle;
  }
  const cad::Layer* green = o.saved.db->findLayer("TC");
  ASSERT_NE(green, nullptr);
  EXPECT_EQ(green->colorIndex, 3);
  EXPECT_EQ(green->trueColor, -1);
  EXPECT_TRUE(o.saved.db->findLayer("LK")->isLocked());
  EXPECT_NE(o.run.out.find("已转为索引色：图形 3 个，图层 1 个。"), std::string::npos) << o.run.out;
}

TEST_F(TrueColorCommandTest, EnterAtTheFirstPromptConvertsTheWholeDrawingAndEnds) {
  const Outcome o = Convert({""});
  EXPECT_EQ(o.changed, (std::set<std::string>{red_, onLocked_, circle_, grey_, greenLayer_, blueLayer_}));
  EXPECT_EQ(EntityOf(o, grey_).colorIndex, 8);
  EXPECT_EQ(o.saved.db->findLayer("KEEP")->colorIndex, 5);
  EXPECT_NE(o.run.out.find("图形 4 个，图层 2 个。"), std::string::npos) << o.run.out;
}

// A real drawing with true colours in model space, in blocks it inserts and in blocks it doesn't,
// and in visual styles: Enter converts what model space shows and touches no other record.
TEST_F(TrueColorCommandTest, ARealDrawingLosesItsTrueColoursWhereTheyShowAndNowhereElse) {
  const std::filesystem::path drawing = CorpusDir() / "ezdxf/examples_dxf/colors.dxf";
  TV_SKIP_WITHOUT_CORPUS(drawing);
  // The drawing as this program saves it, and converted.
  const std::string base = Path("base.dxf").string(), out = Path("converted.dxf").string();
  ASSERT_EQ(Run({"run", drawing.string(), "TV_BatchPlot_19", "--answer", "^C", "--save-as", base}).exitCode, 0);
  const RunResult r = Run({"run", drawing.string(), "TV_BatchPlot_19", "--answer", "", "--save-as", out});
  ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
  const auto before = RecordsByHandle(base);
  const std::set<std::string> changed = ChangedHandles(before, RecordsByHandle(out));
  EXPECT_FALSE(changed.empty());
  for (const std::string& h : changed)
    EXPECT_TRUE(before.at(h).find("\n420=") != std::string::npos || before.at(h).find("\n430=") != std::string::npos)
        << before.at(h);
  cad::DxfReadResult saved = cad::ReadDrawing(out);
  ASSERT_TRUE(saved.ok()) << saved.error;
  saved.db->forEachEntity(*saved.db->modelSpace(), [&](const cad::Entity& e) {
    EXPECT_FALSE(e.hasTrueColor()) << e.dxfName() << " " << e.id.handleText();
    if (const auto* insert = cad::As<cad::Insert>(&e))
      if (const auto* block = saved.db->objectAs<cad::BlockRecord>(insert->block))
        saved.db->forEachEntity(*block, [&](const cad::Entity& inner) { EXPECT_FALSE(inner.hasTrueColor()) << inner.id.handleText(); });
  });
}

}  // namespace
}  // namespace tv::aids
