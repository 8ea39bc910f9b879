// What the plot engine draws: entities, layers, colours, blocks, viewports and text, checked on
// the pixels of small PNG pages.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>

#include "cad/dxf_reader.h"
#include "cad/dxf_writer.h"
#include "render/font_metrics.h"
#include "tests/render/plot_test_support.h"
#include "tests/support/shape_builders.h"

namespace tv::render::test {
namespace {

using cad::Point2d;
using cad::Point3d;
using test_support::TempDir;

class PlotDrawing : public ::testing::Test {
 protected:
  cad::Database db = cad::Database::createDefault();
  cad::BlockRecord& model = *db.modelSpace();
  TempDir dir{"tv_plot"};

  std::unique_ptr<Picture> plot(PlotRequest r) {
    const PlotResult result = PlotWindow(db, r);
    EXPECT_TRUE(result.ok) << result.message;
    auto pic = std::make_unique<Picture>(r.outputPath);
    EXPECT_TRUE(pic->ok());
    return pic;
  }
  std::unique_ptr<Picture> plot() { return plot(PngRequest(dir / "out.png")); }
  Rgb background() const { return {230, 240, 250}; }

  // A view of `viewHeight` model units around (500, 500), framed at `centre` on paper.
  cad::Viewport& viewport(cad::BlockRecord& paper, Point3d centre, double width, double height, std::int16_t number,
                          double viewHeight, cad::ObjectId layer = {}) {
    auto vp = std::make_unique<cad::Viewport>();
    vp->center = centre;
    vp->width = width;
    vp->height = height;
    vp->status = number - 1;
    vp->number = number;
    vp->viewCenter = {500, 500};
    vp->viewHeight = viewHeight;
    return Add(db, paper, std::move(vp), layer);
  }
  // An image of `pixels` square pixels of `size` at (10, 10), showing `file`.
  void image(const std::string& file, double pixels, double size) {
    auto def = std::make_unique<cad::ImageDef>();
    def->fileName = file;
    def->imageSize = {pixels, pixels};
    auto image = std::make_unique<cad::Image>();
    image->imageDef = db.addObject(std::move(def), db.rootDictionaryId).id;
    image->position = {10, 10, 0};
    image->uPixel = {size, 0, 0};
    image->vPixel = {0, size, 0};
    image->imageSize = {pixels, pixels};
    Add(db, model, std::move(image));
  }
};

TEST_F(PlotDrawing, HiddenLayersInvisibleEntitiesAndMarkersNeverPlot) {
  const auto layer = [&](const char* name) -> cad::Layer& { return db.addLayer(name); };
  layer("A");
  layer("OFF").on = false;
  layer("FROZEN").setFrozen(true);
  layer("NOPLOT").plottable = false;
  layer("Temp_PlotLayer");
  AddLine(db, model, {5, 10}, {95, 10}, db.findLayer("A")->id);
  AddLine(db, model, {5, 20}, {95, 20}, db.findLayer("OFF")->id);
  AddLine(db, model, {5, 25}, {95, 25}, db.findLayer("FROZEN")->id);
  AddLine(db, model, {5, 30}, {95, 30}, db.findLayer("NOPLOT")->id);
  AddLine(db, model, {5, 35}, {95, 35}, db.findLayer("temp_plotlayer")->id);
  AddLine(db, model, {5, 40}, {95, 40}, db.findLayer("A")->id).setVisible(false);
  // Broken coordinates are skipped; the rest of the drawing still plots.
  const double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
  AddLine(db, model, {nan, 5}, {95, 45});
  Add(db, model, test_support::MakeCircle({inf, 3, 0}, 2));
  Add(db, model, test_support::MakeLwPolyline({{1, 1}, {nan, 2}, {3, 3}}, false));

  const auto pic = plot();
  ASSERT_EQ(pic->width(), 200);
  ASSERT_EQ(pic->height(), 100);
  EXPECT_TRUE(IsDark(pic->darkestNear(Px(50), Py(10))));
  for (double y : {20, 25, 30, 35, 40}) EXPECT_EQ(pic->countNot(background(), 0, Py(y) - 2, 200, Py(y) + 3), 0) << y;
  EXPECT_EQ(pic->at(Px(50), Py(45)), background());
  EXPECT_EQ(pic->at(2, 2), background());
}

TEST_F(PlotDrawing, ColoursFollowThePlotStyle) {
  cad::Layer& red = db.addLayer("RED");
  red.colorIndex = 1;
  AddLine(db, model, {5, 10}, {95, 10}, red.id);  // ByLayer: red
  AddLine(db, model, {5, 20}, {95, 20}).colorIndex = 7;
  AddLine(db, model, {5, 30}, {95, 30}).trueColor = 0x00A000;

  PlotRequest r = PngRequest(dir / "colour.png");
  r.style = PlotStyle::objectColors();
  auto pic = plot(r);
  const Rgb redPixel = pic->inkNear(Px(50), Py(10), background());
  EXPECT_GT(redPixel.r, 200);
  EXPECT_LT(redPixel.g, 60);
  EXPECT_TRUE(IsDark(pic->darkestNear(Px(50), Py(20)))) << "colour 7 is black on paper";
  EXPECT_EQ(pic->inkNear(Px(50), Py(30), background()), (Rgb{0, 0xA0, 0}));

  r.style = PlotStyle::allBlue();
  pic = plot(r);
  for (double y : {10, 20, 30}) {
    const Rgb c = pic->inkNear(Px(50), Py(y), background());
    EXPECT_LT(c.r, 60) << y;
    EXPECT_LT(c.g, 60) << y;
    EXPECT_GT(c.b, 200) << y;
  }
  r.style = PlotStyle::allBlack();
  pic = plot(r);
  for (double y : {10, 20, 30}) EXPECT_TRUE(IsDark(pic->darkestNear(Px(50), Py(y)))) << y;
}

TEST_F(PlotDrawing, LineweightsWidenLinesUnlessSwitchedOff) {
  AddLine(db, model, {5, 25}, {95, 25}).lineweight = 200;  // 2 mm: four pixels
  PlotRequest r = PngRequest(dir / "lw.png");
  auto pic = plot(r);
  EXPECT_TRUE(IsDark(pic->at(Px(50), Py(25) - 1)));
  EXPECT_TRUE(IsDark(pic->at(Px(50), Py(25) + 1)));
  r.lineweights = false;
  pic = plot(r);
  EXPECT_EQ(pic->at(Px(50), Py(25) - 2), background());
  EXPECT_TRUE(IsDark(pic->darkestNear(Px(50), Py(25))));
}

TEST_F(PlotDrawing, CurvesWidthsAndBulges) {
  // A wide polyline band 4 units across, a half circle by bulge, a circle, a solid.
  auto wide = std::make_unique<cad::LwPolyline>();
  wide->points = {{5, 40}, {45, 40}};
  wide->setConstantWidth(4);
  Add(db, model, std::move(wide));
  // A counter-clockwise half circle: below the chord from left to right.
  Add(db, model, test_support::MakeLwPolyline({{60, 30}, {80, 30}}, false, {1, 0}));
  Add(db, model, test_support::MakeCircle({20, 15, 0}, 8));
  Add(db, model, test_support::MakeQuad<cad::Solid>({50, 5, 0}, {60, 5, 0}, {50, 12, 0}, {60, 12, 0}));

  const auto pic = plot();
  EXPECT_TRUE(IsDark(pic->at(Px(25), Py(41.5))));
  EXPECT_TRUE(IsDark(pic->at(Px(25), Py(38.5))));
  EXPECT_EQ(pic->at(Px(25), Py(43)), background());
  EXPECT_TRUE(IsDark(pic->darkestNear(Px(70), Py(20)))) << "the bulge's lowest point";
  EXPECT_EQ(pic->countNot(background(), Px(62), Py(40), Px(78), Py(31)), 0) << "nothing above the chord";
  EXPECT_TRUE(IsDark(pic->darkestNear(Px(28), Py(15))));
  EXPECT_EQ(pic->at(Px(20), Py(15)), background());
  EXPECT_TRUE(IsDark(pic->at(Px(55), Py(8))));
}

TEST_F(PlotDrawing, CurvesKeepTheirShapeUnderEveryTransform) {
  cad::Circle& whole = Add(db, model, test_support::MakeCircle({20, 25, 0}, 10));
  Add(db, model, test_support::MakeArc({50, 20, 0}, 10, 0, cad::kPi / 2));  // the upper right quarter
  Add(db, model, test_support::MakeEllipse({80, 25, 0}, {12, 0, 0}, 0.5));
  // A circle of radius 4 stretched twice as wide by its insert, and a quarter arc mirrored by its own.
  cad::BlockRecord& round = db.addBlock("ROUND");
  Add(db, round, test_support::MakeCircle({}, 4));
  cad::BlockRecord& quarter = db.addBlock("QUARTER");
  Add(db, quarter, test_support::MakeArc({}, 5, 0, cad::kPi / 2));
  const auto insert = [&](const cad::BlockRecord& block, Point3d at, cad::Vector3d scale) {
    Add(db, model, test_support::MakeInsert(block, at, scale));
  };
  insert(round, {50, 42, 0}, {2, 1, 1});
  insert(quarter, {85, 5, 0}, {-1, 1, 1});

  const auto pic = plot();
  const auto inked = [&](double x, double y) { return IsDark(pic->darkestNear(Px(x), Py(y))); };
  const auto bare = [&](double x, double y) { return pic->at(Px(x), Py(y)) == background(); };
  for (double a = 0; a < 2 * cad::kPi; a += cad::kPi / 6)
    EXPECT_TRUE(inked(20 + 10 * std::cos(a), 25 + 10 * std::sin(a))) << "circle at " << a;
  EXPECT_TRUE(bare(20, 25));
  EXPECT_TRUE(inked(50 + 10 * std::cos(0.8), 20 + 10 * std::sin(0.8))) << "arc";
  EXPECT_TRUE(bare(50 - 10 * std::cos(0.8), 20 - 10 * std::sin(0.8))) << "the arc's other side";
  EXPECT_TRUE(bare(50 + 10 * std::cos(0.8), 20 - 10 * std::sin(0.8))) << "the arc's other side";
  for (auto [x, y] : {std::pair{92.0, 25.0}, {68.0, 25.0}, {80.0, 31.0}, {80.0, 19.0}})
    EXPECT_TRUE(inked(x, y)) << "ellipse at " << x << ", " << y;
  EXPECT_TRUE(bare(80, 25));
  EXPECT_TRUE(bare(80, 35)) << "the ellipse is flat, not round";
  EXPECT_TRUE(inked(58, 42)) << "the stretched circle's wide end";
  EXPECT_TRUE(inked(50, 46));
  EXPECT_TRUE(bare(54, 42)) << "where the circle would be unstretched";
  EXPECT_TRUE(inked(85 - 5 * std::cos(0.8), 5 + 5 * std::sin(0.8))) << "the mirrored arc";
  EXPECT_TRUE(bare(85 + 5 * std::cos(0.8), 5 + 5 * std::sin(0.8))) << "where the arc would be unmirrored";

  // Dashed curves are cut along their length as lines are.
  cad::Linetype& dashed = db.addLinetype("DASHED");
  dashed.dashes = {{.length = 3}, {.length = -3}};
  dashed.patternLength = 6;
  whole.linetype = dashed.id;
  const auto dashedPic = plot();
  int inkedSteps = 0, steps = 0;
  for (double a = 0; a < 2 * cad::kPi; a += 0.05, ++steps)
    inkedSteps += IsDark(dashedPic->darkestNear(Px(20 + 10 * std::cos(a)), Py(25 + 10 * std::sin(a)), 0));
  EXPECT_GT(inkedSteps, steps / 4);
  EXPECT_LT(inkedSteps, steps * 3 / 4);
}

TEST_F(PlotDrawing, LaterPaintInAnotherColourLiesOnTop) {
  // Lines of one colour are stroked together: what comes later in another colour must still cover
  // them, and what comes later in the first colour must cover the other.
  cad::Layer& red = db.addLayer("RED");
  red.colorIndex = 1;
  const auto wide = [](cad::Line& l) { l.lineweight = 100; };
  wide(AddLine(db, model, {5, 10}, {95, 10}));
  wide(AddLine(db, model, {50, 5}, {50, 45}, red.id));
  wide(AddLine(db, model, {5, 30}, {95, 30}));
  cad::TextStyle& style = db.addTextStyle("HZ");
  style.fontFile = "hztxt.shx";
  const bool fonts = FontTextMeasurer().hasFont(&style);
  if (fonts) {
    const auto text = [&](double x, const char* s, cad::ObjectId layer) {
      auto t = std::make_unique<cad::Text>();
      t->text = s;
      t->position = {x, 15, 0};
      t->height = 10;
      t->style = style.id;
      Add(db, model, std::move(t), layer);
    };
    text(10, "HHH", {});                                // black text, then a red line through it
    wide(AddLine(db, model, {5, 19}, {45, 19}, red.id));
    wide(AddLine(db, model, {55, 19}, {95, 19}, red.id));  // a red line, then black text over it
    text(60, "HHH", {});
  }
  PlotRequest r = PngRequest(dir / "order.png");
  r.style = PlotStyle::objectColors();
  const auto pic = plot(r);
  const auto isRed = [](Rgb c) { return c.r > 200 && c.g < 80 && c.b < 80; };
  EXPECT_TRUE(isRed(pic->at(Px(50), Py(10)))) << "red over the black line before it";
  EXPECT_TRUE(IsDark(pic->at(Px(50), Py(30)))) << "black over the red line before it";
  if (!fonts) GTEST_SKIP() << "no CJK font installed";
  int darkOnRed = 0, darkOnText = 0;
  for (int x = Px(10); x < Px(40); ++x) {
    darkOnRed += IsDark(pic->at(x, Py(19)));
    darkOnText += IsDark(pic->at(x, Py(17)));
  }
  EXPECT_GT(darkOnText, 0) << "the first text shows beside the line";
  EXPECT_EQ(darkOnRed, 0) << "the red line covers the text drawn before it";
  int darkOnLine = 0;
  for (int x = Px(60); x < Px(90); ++x) darkOnLine += IsDark(pic->at(x, Py(19)));
  EXPECT_GT(darkOnLine, 0) << "the second text covers the red line drawn before it";
}

TEST_F(PlotDrawing, LinetypesBreakLinesIntoDashes) {
  cad::Linetype& dashed = db.addLinetype("DASHED");
  dashed.dashes = {{.length = 5}, {.length = -5}};
  dashed.patternLength = 10;
  AddLine(db, model, {0, 25}, {100, 25}).linetype = dashed.id;
  db.header.setDouble("$LTSCALE", 1.0);
  auto pic = plot();
  EXPECT_TRUE(IsDark(pic->darkestNear(Px(2.5), Py(25))));
  EXPECT_EQ(pic->darkestNear(Px(7.5), Py(25)), background());
  EXPECT_TRUE(IsDark(pic->darkestNear(Px(12.5), Py(25))));
  // LTSCALE 2 doubles the pattern.
  db.header.setDouble("$LTSCALE", 2.0);
  pic = plot();
  EXPECT_TRUE(IsDark(pic->darkestNear(Px(7.5), Py(25))));
  EXPECT_EQ(pic->darkestNear(Px(15), Py(25)), background());
}

TEST_F(PlotDrawing, ArrayedAndClippedInsertsWithAttributes) {
  cad::BlockRecord& block = db.addBlock("BOX");
  Add(db, block, test_support::MakeQuad<cad::Solid>({0, 0, 0}, {4, 0, 0}, {0, 4, 0}, {4, 4, 0})).colorIndex = cad::kColorByBlock;
  auto ins = test_support::MakeInsert(block, {10, 30, 0});
  ins->columnCount = 3;
  ins->columnSpacing = 10;
  ins->rowCount = 2;
  ins->rowSpacing = -20;
  ins->colorIndex = 5;
  ins->attribs.push_back(test_support::MakeAtt<cad::Attrib>("A", {}, 0));
  Add(db, model, std::move(ins));

  // A nested insert of the same block, clipped to its left half.
  cad::BlockRecord& outer = db.addBlock("OUTER");
  Add(db, outer, test_support::MakeInsert(block, {}, {2, 2, 2}));
  cad::Insert& c = Add(db, model, test_support::MakeInsert(outer, {70, 30, 0}));
  test_support::AddSpatialClip(db, c, {{69, 29}, {74, 39}}).inverseInsertTransform = *cad::InsertTransform(c, outer).inverse();

  const auto pic = plot();
  for (double x : {12, 22, 32})
    for (double y : {32, 12}) {
      const Rgb cell = pic->at(Px(x), Py(y));
      EXPECT_GT(cell.b, 200) << x << "," << y << ": ByBlock takes the insert's blue";
      EXPECT_LT(cell.r, 60) << x << "," << y;
    }
  EXPECT_EQ(pic->at(Px(17), Py(32)), background()) << "between the cells";
  EXPECT_TRUE(IsDark(pic->at(Px(72), Py(34))));
  EXPECT_EQ(pic->at(Px(76), Py(34)), background()) << "cut off by the clip";
}

TEST_F(PlotDrawing, HatchesAndWipeouts) {
  auto solidHatch = std::make_unique<cad::Hatch>();
  solidHatch->solidFill = true;
  cad::HatchPath square;
  square.flags = cad::HatchPath::kPolyline | cad::HatchPath::kExternal;
  square.vertices = {{5, 5}, {25, 5}, {25, 25}, {5, 25}};
  cad::HatchPath hole = square;
  hole.vertices = {{10, 10}, {20, 10}, {20, 20}, {10, 20}};
  solidHatch->paths = {square, hole};
  Add(db, model, std::move(solidHatch));

  auto pattern = std::make_unique<cad::Hatch>();
  cad::HatchPath area = square;
  area.vertices = {{40, 5}, {60, 5}, {60, 25}, {40, 25}};
  pattern->paths = {area};
  pattern->patternLines = {{.angle = 0, .base = {0, 0}, .offset = {0, 5}, .dashes = {}}};
  Add(db, model, std::move(pattern));

  AddLine(db, model, {70, 15}, {95, 15});
  auto wipeout = std::make_unique<cad::Wipeout>();
  wipeout->position = {80, 10, 0};
  wipeout->uPixel = {10, 0, 0};
  wipeout->vPixel = {0, 10, 0};
  wipeout->imageSize = {1, 1};
  wipeout->clipping = true;
  wipeout->clipVertices = {{-0.5, -0.5}, {0.5, 0.5}};
  Add(db, model, std::move(wipeout));

  const auto pic = plot();
  EXPECT_TRUE(IsDark(pic->at(Px(7), Py(7))));
  EXPECT_EQ(pic->at(Px(15), Py(15)), background()) << "the hole stays open";
  EXPECT_TRUE(IsDark(pic->darkestNear(Px(50), Py(10))));
  EXPECT_TRUE(IsDark(pic->darkestNear(Px(50), Py(20))));
  EXPECT_EQ(pic->at(Px(50), Py(12.5)), background()) << "between the pattern lines";
  EXPECT_EQ(pic->at(Px(30), Py(10)), background()) << "pattern lines stop at the boundary";
  EXPECT_TRUE(IsDark(pic->darkestNear(Px(75), Py(15))));
  EXPECT_EQ(pic->at(Px(85), Py(15)), background()) << "the wipeout covers the line";
}

TEST_F(PlotDrawing, TextPlotsInTheInstalledFont) {
  cad::TextStyle& style = db.addTextStyle("HZ");
  style.fontFile = "hztxt.shx";
  if (!FontTextMeasurer().hasFont(&style)) GTEST_SKIP() << "no CJK font installed";
  Add(db, model, test_support::MakeText("中文字", {10, 20, 0}, 10)).style = style.id;
  auto mtext = std::make_unique<cad::MText>();
  mtext->text = "图纸\\P目录";
  mtext->position = {60, 45, 0};
  mtext->height = 5;
  mtext->style = style.id;
  Add(db, model, std::move(mtext));

  // Right aligned: the text ends at its alignment point.
  cad::Text& right = Add(db, model, test_support::MakeText("ABC", {}, 5));
  right.setAlignPoint({95, 5, 0});
  right.hAlign = cad::TextHAlign::Right;
  right.style = style.id;

  PlotRequest r = PngRequest(dir / "text.png");
  for (bool outlines : {false, true}) {
    r.textAsGeometry = outlines;
    const auto pic = plot(r);
    // Glyphs ink their box (10..40 x 20..30) and nothing far outside it.
    EXPECT_GT(pic->countNot(background(), Px(10), Py(30), Px(40), Py(20)), 200);
    EXPECT_EQ(pic->countNot(background(), Px(0), Py(15), Px(50), Py(5)), 0);
    EXPECT_GT(pic->countNot(background(), Px(60), Py(45), Px(75), Py(40)), 20) << "first MTEXT line";
    EXPECT_GT(pic->countNot(background(), Px(60), Py(37), Px(75), Py(32)), 20) << "second MTEXT line";
    EXPECT_GT(pic->countNot(background(), Px(85), Py(10), Px(95), Py(5)), 20) << "right aligned";
    EXPECT_EQ(pic->countNot(background(), Px(95.5), Py(12), Px(100), Py(3)), 0) << "nothing past the alignment point";
  }
}

TEST_F(PlotDrawing, ViewportsShowModelSpaceInsideTheirFrameOnly) {
  cad::Layer& frozen = db.addLayer("FROZEN_HERE");
  AddLine(db, model, {0, 500}, {1000, 500});
  AddLine(db, model, {500, 0}, {500, 1000}, frozen.id);
  cad::Layout& layout = db.addLayout("图纸");
  cad::BlockRecord& paper = *db.blockOf(layout);
  viewport(paper, {50, 25, 0}, 40, 20, 2, 40).frozenLayers = {frozen.id};  // half scale: 80 x 40 model units show
  // A second view on a layer that does not plot: its edge stays off the paper, its view does not.
  cad::Layer& hidden = db.addLayer("VPORT");
  hidden.plottable = false;
  viewport(paper, {85, 42, 0}, 20, 10, 3, 10, hidden.id);

  // Through the DXF writer and back, as a drawing from disk comes.
  const auto path = dir / "layout.dxf";
  ASSERT_TRUE(cad::WriteDxf(db, path.string()).ok);
  auto read = cad::ReadDxf(path.string());
  ASSERT_TRUE(read.ok()) << read.error;
  const cad::Layout* readLayout = read.db->findLayout("图纸");
  ASSERT_NE(readLayout, nullptr);

  PlotRequest r = PngRequest(dir / "layout.png");
  r.spaceBlock = read.db->blockOf(*readLayout)->id;
  ASSERT_TRUE(PlotWindow(*read.db, r).ok);
  const Picture pic(r.outputPath);
  EXPECT_TRUE(IsDark(pic.darkestNear(Px(50), Py(25))));
  EXPECT_TRUE(IsDark(pic.darkestNear(Px(35), Py(25))));
  EXPECT_EQ(pic.darkestNear(Px(20), Py(25)), background()) << "clipped at the viewport's edge";
  EXPECT_TRUE(IsDark(pic.darkestNear(Px(30), Py(30)))) << "the viewport's border";
  EXPECT_EQ(pic.at(Px(50), Py(20)), background()) << "layer frozen in the viewport";
  EXPECT_TRUE(IsDark(pic.darkestNear(Px(85), Py(42))));
  EXPECT_EQ(pic.darkestNear(Px(76), Py(46)), background()) << "no edge on a layer that does not plot";
  EXPECT_EQ(pic.darkestNear(Px(85), Py(35)), background()) << "clipped below the second view";
  EXPECT_TRUE(IsDark(pic.darkestNear(Px(85), Py(44)))) << "the vertical line, frozen only in the first view";
}

TEST_F(PlotDrawing, TwistedViewsTurnTheModelAboutTheTarget) {
  AddLine(db, model, {500, 500}, {520, 500});
  cad::Layout& layout = db.addLayout("L");
  cad::Viewport& vp = viewport(*db.blockOf(layout), {50, 25, 0}, 40, 20, 2, 40);
  vp.viewCenter = {};
  vp.viewTarget = {500, 500, 0};
  vp.twist = cad::kPi / 2;  // the view turned a quarter: the model's x axis points up the paper
  PlotRequest r = PngRequest(dir / "twist.png");
  r.spaceBlock = db.blockOf(layout)->id;
  const auto pic = plot(r);
  EXPECT_TRUE(IsDark(pic->darkestNear(Px(50), Py(30))));
  EXPECT_EQ(pic->darkestNear(Px(58), Py(25)), background());
  EXPECT_EQ(pic->darkestNear(Px(50), Py(20)), background());
}

TEST_F(PlotDrawing, MissingImagesAreLeftOutWithANote) {
  image("C:\\pictures\\gone.png", 10, 1);
  AddLine(db, model, {5, 40}, {95, 40});
  PlotRequest r = PngRequest(dir / "img.png");
  const PlotResult result = PlotWindow(db, r);
  ASSERT_TRUE(result.ok) << result.message;
  ASSERT_EQ(result.notes.size(), 1u);
  EXPECT_NE(result.notes[0].find("gone.png"), std::string::npos);
}

TEST_F(PlotDrawing, ImagesBesideTheDrawingArePainted) {
  // A red 4 x 4 picture written with cairo, named as a Windows drawing would.
  cairo_surface_t* s = cairo_image_surface_create(CAIRO_FORMAT_RGB24, 4, 4);
  cairo_t* cr = cairo_create(s);
  cairo_set_source_rgb(cr, 1, 0, 0);
  cairo_paint(cr);
  cairo_destroy(cr);
  ASSERT_EQ(cairo_surface_write_to_png(s, (dir / "red.png").c_str()), CAIRO_STATUS_SUCCESS);
  cairo_surface_destroy(s);
  image("D:\\work\\red.png", 4, 5);
  PlotRequest r = PngRequest(dir / "img.png");
  r.drawingFolder = dir.path().string();
  const auto pic = plot(r);
  const Rgb c = pic->at(Px(20), Py(20));
  EXPECT_GT(c.r, 200);
  EXPECT_LT(c.g, 60);
  EXPECT_EQ(pic->at(Px(35), Py(20)), background());
}

}  // namespace
}  // namespace tv::render::test
