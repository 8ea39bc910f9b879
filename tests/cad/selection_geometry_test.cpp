#include "cad/selection_geometry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>

#include "cad/dxf_reader.h"
#include "cad/layout_viewport.h"
#include "../support/corpus.h"
#include "../support/entity_builders.h"
#include "../support/half_em_measurer.h"
#include "../support/shape_builders.h"
#include "../support/test_content.h"
#include "examples/sample_drawing.h"

namespace tv::cad {
namespace {

using namespace test_support;

// Every character half an em wide: text boxes become simple numbers.
using test_support::kHalfEm;

using test_support::TestContent;

bool Has(const std::vector<ObjectId>& ids, ObjectId id) { return std::find(ids.begin(), ids.end(), id) != ids.end(); }

struct Drawing {
  Database db = Database::createDefault();
  BlockRecord& model = *db.modelSpace();

  template <class T>
  T& add(std::unique_ptr<T> e, BlockRecord* in = nullptr) { return db.append(in ? *in : model, std::move(e)); }
  Line& line(Point3d a, Point3d b, BlockRecord* in = nullptr) { return add(test_support::MakeLine(a, b), in); }
  LwPolyline& lwpolyline(std::vector<Point2d> pts, bool closed, std::vector<double> bulges = {}, BlockRecord* in = nullptr) {
    return add(test_support::MakeLwPolyline(std::move(pts), closed, std::move(bulges)), in);
  }
  Circle& circle(Point3d c, double r, BlockRecord* in = nullptr) { return add(test_support::MakeCircle(c, r), in); }
  Text& text(std::string s, Point3d at, double height, double rotation = 0, BlockRecord* in = nullptr) {
    return add(test_support::MakeText(std::move(s), at, height, rotation), in);
  }
  Insert& insert(const BlockRecord& block, Point3d at, Vector3d scale = {1, 1, 1}, double rotation = 0, BlockRecord* in = nullptr) {
    return add(test_support::MakeInsert(block, at, scale, rotation), in);
  }
  template <class T>
  T& add(std::unique_ptr<T> e, BlockRecord& in) { return db.append(in, std::move(e)); }
  Hatch& solidSquare(Point2d min, double size, bool solid) {
    auto h = std::make_unique<Hatch>();
    h->solidFill = solid;
    h->patternName = solid ? "SOLID" : "ANSI31";
    HatchPath path;
    path.flags = HatchPath::kPolyline | HatchPath::kExternal;
    path.vertices = {min, {min.x + size, min.y}, {min.x + size, min.y + size}, {min.x, min.y + size}};
    h->paths.push_back(path);
    return add(std::move(h));
  }

  std::vector<ObjectId> fence(const std::vector<Point2d>& pts, const std::function<bool(const Entity&)>& accept = {}) const {
    return SelectByFence(db, model, pts, accept, &kHalfEm);
  }
  bool crossed(const Entity& e, const std::vector<Point2d>& pts) const { return Has(fence(pts), e.id); }
  bool window(const Entity& e, Point2d a, Point2d b) const { return Has(SelectByBox(db, model, a, b, false, {}, &kHalfEm), e.id); }
  bool crossing(const Entity& e, Point2d a, Point2d b) const { return Has(SelectByBox(db, model, a, b, true, {}, &kHalfEm), e.id); }
};

// A short fence segment centred on `p` along direction `angle`, half length `half`.
std::vector<Point2d> Dash(Point2d p, double angle, double half) {
  const Vector2d d{std::cos(angle) * half, std::sin(angle) * half};
  return {p - d, p + d};
}

Extents3d BoxOf(const std::vector<Point2d>& pts) {
  Extents3d e;
  for (Point2d p : pts) e.add(Point3d{p});
  return e;
}

// ---- curves --------------------------------------------------------------------------------------

TEST(SelectByFence, LinesAndStraightPolylines) {
  Drawing d;
  const Line& l = d.line({0, 0}, {10, 0});
  EXPECT_TRUE(d.crossed(l, {{5, -1}, {5, 1}}));
  EXPECT_TRUE(d.crossed(l, {{10, -1}, {10, 1}}));  // through the end point
  EXPECT_FALSE(d.crossed(l, {{10.01, -1}, {10.01, 1}}));
  EXPECT_FALSE(d.crossed(l, {{1, 0.01}, {9, 0.01}}));  // parallel, beside it

  // The closing segment of a closed polyline is part of it; of an open one it is not.
  const LwPolyline& closed = d.lwpolyline({{100, 0}, {110, 0}, {110, 10}, {100, 10}}, true);
  const LwPolyline& open = d.lwpolyline({{200, 0}, {210, 0}, {210, 10}, {200, 10}}, false);
  EXPECT_TRUE(d.crossed(closed, {{99, 5}, {101, 5}}));
  EXPECT_FALSE(d.crossed(open, {{199, 5}, {201, 5}}));
  EXPECT_FALSE(d.crossed(closed, {{102, 2}, {108, 8}}));  // inside: a polyline is no area

  // A multi-segment fence crosses with any of its segments.
  EXPECT_TRUE(d.crossed(open, {{150, 50}, {150, 5}, {205, 5}, {205, 50}}));
}

TEST(SelectByFence, BulgesAreArcsNotChords) {
  Drawing d;
  // A half circle below the chord from (0,0) to (10,0): centre (5,0), radius 5.
  const LwPolyline& p = d.lwpolyline({{0, 0}, {10, 0}}, false, {1, 0});
  EXPECT_FALSE(d.crossed(p, {{5, 0.5}, {5, -1}}));  // crosses the chord only
  EXPECT_TRUE(d.crossed(p, {{5, -4}, {5, -6}}));
  // A thousandth of the radius beside the curve, outside and inside, at several angles.
  const double r = 5, delta = r * 1e-3;
  for (double a = kPi + 0.05; a < 2 * kPi; a += 0.173) {
    const Point2d outside{5 + (r + delta) * std::cos(a), (r + delta) * std::sin(a)};
    const Point2d inside{5 + (r - delta) * std::cos(a), (r - delta) * std::sin(a)};
    EXPECT_FALSE(d.crossed(p, Dash(outside, a + kPi / 2, 1))) << "angle " << a;
    // Short enough not to reach the curve on either side.
    EXPECT_FALSE(d.crossed(p, Dash(inside, a + kPi / 2, 0.1))) << "angle " << a;
    EXPECT_TRUE(d.crossed(p, Dash(inside, a, 2 * delta))) << "angle " << a;  // across the curve
  }

  // The same through a 2D POLYLINE, clockwise (negative bulge): the arc is above the chord.
  const Polyline& poly = d.add(MakePolyline({{100, 0, 0}, {110, 0, 0}}, 0, 0, -1));
  EXPECT_TRUE(d.crossed(poly, {{105, 4}, {105, 6}}));
  EXPECT_FALSE(d.crossed(poly, {{105, -4}, {105, -6}}));
  EXPECT_FALSE(d.crossed(poly, {{105, 5.01}, {105, 6}}));
}

TEST(SelectByFence, CirclesArcsEllipsesAndSplines) {
  Drawing d;
  const Circle& c = d.circle({0, 0, 0}, 10);
  EXPECT_TRUE(d.crossed(c, {{9, 0}, {11, 0}}));
  EXPECT_FALSE(d.crossed(c, {{-5, -5}, {5, 5}}));  // inside, a circle is no area
  for (double a = 0; a < 2 * kPi; a += 0.29) {
    const Point2d inside{9.99 * std::cos(a), 9.99 * std::sin(a)};
    const Point2d outside{10.01 * std::cos(a), 10.01 * std::sin(a)};
    EXPECT_FALSE(d.crossed(c, Dash(inside, a + kPi / 2, 0.3))) << a;
    EXPECT_FALSE(d.crossed(c, Dash(outside, a + kPi / 2, 3))) << a;
  }

  // The upper half circle: crossing its chord is not crossing the arc.
  const Arc& a = d.add(MakeArc({100, 0, 0}, 5, 0, kPi));
  EXPECT_FALSE(d.crossed(a, {{100, -1}, {100, 4.99}}));
  EXPECT_TRUE(d.crossed(a, {{100, -1}, {100, 5.01}}));
  EXPECT_FALSE(d.crossed(a, {{100, -4}, {100, -6}}));  // where the missing half would be

  const Ellipse& e = d.add(MakeEllipse({200, 0, 0}, {20, 0, 0}, 0.25));
  EXPECT_TRUE(d.crossed(e, {{200, 4}, {200, 6}}));
  EXPECT_FALSE(d.crossed(e, {{200, 5.01}, {200, 6}}));
  EXPECT_FALSE(d.crossed(e, {{190, 0}, {210, 0}}));

  // A clamped quadratic: (300,0) (305,10) (310,0) peaks at (305,5).
  auto sp = std::make_unique<Spline>();
  sp->degree = 2;
  sp->knots = {0, 0, 0, 1, 1, 1};
  sp->controlPoints = {{300, 0, 0}, {305, 10, 0}, {310, 0, 0}};
  const Spline& s = d.add(std::move(sp));
  EXPECT_TRUE(d.crossed(s, {{305, 4.9}, {305, 5.1}}));
  EXPECT_FALSE(d.crossed(s, {{305, 5.01}, {305, 9}}));  // between the curve and its control point
}

TEST(SelectByFence, PolylinesIn3dAndOcsNormals) {
  Drawing d;
  const Polyline& poly3 = d.add(MakePolyline({{0, 0, 5}, {10, 0, -5}, {10, 10, 50}}, Polyline::k3dPolyline, 32));
  EXPECT_TRUE(d.crossed(poly3, {{9, 5}, {11, 5}}));
  EXPECT_FALSE(d.crossed(poly3, {{5, 5}, {6, 6}}));

  // Extrusion -Z flips the OCS x axis: the circle's centre (10,0) lies at x = -10 in the WCS.
  Circle& c = d.circle({10, 0, 0}, 2);
  c.normal = {0, 0, -1};
  EXPECT_TRUE(d.crossed(c, {{-7, 0}, {-9, 0}}));
  EXPECT_FALSE(d.crossed(c, {{7, 0}, {9, 0}}));
  // A tilted plane is seen along z: a circle in the XZ plane is a segment in x, y.
  Circle& tilted = d.circle({0, 0, 0}, 3);
  tilted.normal = {0, 1, 0};
  EXPECT_TRUE(d.crossed(tilted, {{2, -1}, {2, 1}}));
  EXPECT_FALSE(d.crossed(tilted, {{4, -1}, {4, 1}}));
}

TEST(SelectByFence, PolyfaceAndMeshEdges) {
  Drawing d;
  // The edge from corner 4 back to corner 1 is hidden.
  const Polyline& polyface = d.add(MakePolyface({{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {0, 10, 0}}, {{1, 2, 3, -4}}));
  EXPECT_TRUE(d.crossed(polyface, {{5, -1}, {5, 1}}));
  EXPECT_TRUE(d.crossed(polyface, {{5, 9}, {5, 11}}));  // edge 3-4
  EXPECT_FALSE(d.crossed(polyface, {{-1, 5}, {1, 5}}));  // the hidden edge only
  EXPECT_FALSE(d.crossed(polyface, {{3, 3}, {7, 7}}));

  auto mesh = MakePolyline({{100, 0, 0}, {110, 0, 1}, {120, 0, 2}, {100, 10, 0}, {110, 10, 1}, {120, 10, 2}}, Polyline::k3dMesh, 64);
  mesh->meshM = 2;
  mesh->meshN = 3;
  const Polyline& m = d.add(std::move(mesh));
  EXPECT_TRUE(d.crossed(m, {{115, -1}, {115, 1}}));  // along a row
  EXPECT_TRUE(d.crossed(m, {{109, 5}, {111, 5}}));   // the middle column
  EXPECT_FALSE(d.crossed(m, {{103, 3}, {107, 7}}));  // inside a cell
}

// ---- points, filled quads, faces ---------------------------------------------------------------------

TEST(SelectByFence, PointsNeedTheFenceThroughThem) {
  Drawing d;
  const PointEntity& p = d.add(MakePoint({3, 4, 7}));
  EXPECT_TRUE(d.crossed(p, {{0, 0}, {6, 8}}));
  EXPECT_TRUE(d.crossed(p, {{3, 4}, {9, 9}}));   // from the point itself
  EXPECT_FALSE(d.crossed(p, {{0, 1e-6}, {6, 8 + 1e-6}}));
  EXPECT_FALSE(d.crossed(p, {{3.01, 0}, {3.01, 8}}));
}

TEST(SelectByFence, SolidsAndTracesAreFilledFacesAreNot) {
  Drawing d;
  // Filled 1, 2, 4, 3: a square.
  const Solid& solid = d.add(MakeQuad<Solid>({0, 0, 0}, {10, 0, 0}, {0, 10, 0}, {10, 10, 0}));
  EXPECT_TRUE(d.crossed(solid, {{2, 2}, {8, 3}}));  // wholly inside
  EXPECT_TRUE(d.crossed(solid, {{-1, 5}, {1, 5}}));
  EXPECT_FALSE(d.crossed(solid, {{-1, 11}, {11, 10.01}}));

  const Trace& trace = d.add(MakeQuad<Trace>({100, 0, 0}, {110, 0, 0}, {100, 2, 0}, {110, 2, 0}));
  EXPECT_TRUE(d.crossed(trace, {{104, 1}, {106, 1}}));
  EXPECT_FALSE(d.crossed(trace, {{104, 2.5}, {106, 3}}));

  auto fc = MakeQuad<Face3d>({200, 0, 0}, {210, 0, 0}, {210, 10, 5}, {200, 10, 5});
  fc->invisibleEdges = 2;  // the edge from corner 2 to corner 3
  const Face3d& face = d.add(std::move(fc));
  EXPECT_TRUE(d.crossed(face, {{205, -1}, {205, 1}}));
  EXPECT_FALSE(d.crossed(face, {{209, 5}, {211, 5}}));  // the hidden edge
  EXPECT_FALSE(d.crossed(face, {{202, 2}, {208, 8}}));  // inside: a face is its edges
}

// ---- text ----------------------------------------------------------------------------------------------

TEST(SelectByFence, TextBoxesAreAreasMatchingTheirExtents) {
  Drawing d;
  // "ABCD" at height 2: four half-em characters, the box (10,10)-(14,12).
  const Text& t = d.text("ABCD", {10, 10, 0}, 2);
  EXPECT_TRUE(d.crossed(t, {{11, 11}, {13, 11.5}}));  // only the interior
  EXPECT_TRUE(d.crossed(t, {{12, 9}, {12, 10.5}}));
  EXPECT_FALSE(d.crossed(t, {{9, 12.05}, {15, 12.05}}));
  EXPECT_FALSE(d.crossed(t, {{14.05, 9}, {14.05, 13}}));

  // Rotated by 30 degrees: a rotated rectangle, not its axis-aligned extents.
  const double a = kPi / 6, c = std::cos(a), s = std::sin(a);
  const Text& r = d.text("ABCD", {100, 0, 0}, 2, a);
  const Point2d centre{100 + 2 * c - s, 2 * s + c};
  EXPECT_TRUE(d.crossed(r, Dash(centre, 0, 0.1)));
  const auto box = EntityExtents(r, d.db, &kHalfEm);
  ASSERT_TRUE(box);
  const Point2d corner{box->max.x - 0.2, box->min.y + 0.3};  // inside the extents, outside the text
  EXPECT_FALSE(d.crossed(r, Dash(corner, 0, 0.1)));
  EXPECT_TRUE(d.crossed(r, {corner, centre}));

  // The area spans exactly what EntityExtents measures, for every text class.
  auto mt = std::make_unique<MText>();
  mt->text = "ABCD\\PEF";
  mt->position = {300, 50, 0};
  mt->height = 2.5;
  mt->attachment = 5;
  mt->rotation = 0.4;
  const MText& mtext = d.add(std::move(mt));
  auto def = MakeAtt<AttDef>("TAG VALUE", {400, 0, 0}, 3);
  def->setAlignPoint({400, 0, 0});
  def->hAlign = TextHAlign::Center;
  def->vAlign = TextVAlign::Middle;
  def->setOblique(0.2);
  const AttDef& attdef = d.add(std::move(def));
  for (const Entity* e : std::vector<const Entity*>{&t, &r, &mtext, &attdef}) {
    const SelectionShape shape = SelectionShapeOf(*e, d.db, &kHalfEm);
    ASSERT_EQ(shape.areas.size(), 1u) << e->dxfName();
    EXPECT_TRUE(shape.paths.empty());
    const Extents3d got = BoxOf(shape.areas[0]);
    const auto want = EntityExtents(*e, d.db, &kHalfEm);
    ASSERT_TRUE(want);
    EXPECT_NEAR(got.min.x, want->min.x, 1e-9) << e->dxfName();
    EXPECT_NEAR(got.min.y, want->min.y, 1e-9) << e->dxfName();
    EXPECT_NEAR(got.max.x, want->max.x, 1e-9) << e->dxfName();
    EXPECT_NEAR(got.max.y, want->max.y, 1e-9) << e->dxfName();
  }
  const Point3d mc = mtext.position;
  EXPECT_TRUE(d.crossed(mtext, Dash(mc.to2d(), 1, 0.2)));  // middle centre attachment: the box's centre

  // Empty text shows nothing to cross.
  const Text& empty = d.text("", {500, 0, 0}, 2);
  EXPECT_FALSE(d.crossed(empty, {{499, 0}, {501, 1}}));
}

// ---- inserts ---------------------------------------------------------------------------------------------

TEST(SelectByFence, NestedInsertWithRotatedMirroredBlock) {
  Drawing d;
  BlockRecord& inner = d.db.addBlock("INNER");
  d.line({0, 0, 0}, {10, 0, 0}, &inner);
  BlockRecord& outer = d.db.addBlock("OUTER");
  outer.basePoint = {0, 0, 0};
  // Mirrored in x, then turned a quarter: (x, 0) goes to (100, -x).
  d.insert(inner, {100, 0, 0}, {-1, 1, 1}, kPi / 2, &outer);
  // Doubled and moved: the line runs from (1200, 1000) down to (1200, 980).
  const Insert& ins = d.insert(outer, {1000, 1000, 0}, {2, 2, 2});
  EXPECT_TRUE(d.crossed(ins, {{1199, 990}, {1201, 990}}));
  EXPECT_FALSE(d.crossed(ins, {{1199, 1010}, {1201, 1010}}));  // where it would be unmirrored
  EXPECT_FALSE(d.crossed(ins, {{1199, 979}, {1201, 979}}));
}

TEST(SelectByFence, MInsertCellsAndAttributes) {
  Drawing d;
  BlockRecord& sq = d.db.addBlock("SQ");
  d.lwpolyline({{0, 0}, {1, 0}, {1, 1}, {0, 1}}, true, {}, &sq);
  Insert& grid = d.insert(sq, {0, 0, 0});
  grid.columnCount = 3;
  grid.columnSpacing = 10;
  EXPECT_TRUE(d.crossed(grid, {{10.5, -1}, {10.5, 2}}));  // the second cell
  EXPECT_TRUE(d.crossed(grid, {{20.5, -1}, {20.5, 2}}));
  EXPECT_FALSE(d.crossed(grid, {{5, -1}, {5, 2}}));       // between cells
  EXPECT_FALSE(d.crossed(grid, {{30.5, -1}, {30.5, 2}}));  // no fourth cell

  // Cells follow the insert's rotation: turned a quarter, the second cell sits at y 10..11.
  Insert& turned = d.insert(sq, {1000, 0, 0}, {1, 1, 1}, kPi / 2);
  turned.columnCount = 2;
  turned.rowCount = 2;
  turned.columnSpacing = 10;
  turned.rowSpacing = 20;
  EXPECT_TRUE(d.crossed(turned, {{998, 10.5}, {1001, 10.5}}));
  EXPECT_TRUE(d.crossed(turned, {{978, 10.5}, {981, 10.5}}));  // row 2, column 2
  EXPECT_FALSE(d.crossed(turned, {{1009, 10.5}, {1012, 10.5}}));

  // Attributes count with their insert; invisible ones do not.
  Insert& tagged = d.insert(sq, {500, 0, 0});
  tagged.attribs.push_back(MakeAtt<Attrib>("AB", {600, 0, 0}, 2));  // box (600,0)-(602,2)
  tagged.attribs.push_back(MakeAtt<Attrib>("AB", {700, 0, 0}, 2, kAttInvisible));
  EXPECT_TRUE(d.crossed(tagged, {{601, 0.5}, {601.5, 1}}));
  EXPECT_FALSE(d.crossed(tagged, {{701, 0.5}, {701.5, 1}}));
}

TEST(SelectByFence, InsertsSeeWhatTheBlockShows) {
  Drawing d;
  BlockRecord& b = d.db.addBlock("PARTS");
  d.line({0, 0, 0}, {10, 0, 0}, &b);
  d.line({0, 5, 0}, {10, 5, 0}, &b).setVisible(false);
  d.add(MakeAtt<AttDef>("X", {0, 20, 0}, 2), b);  // a variable ATTDEF is only the attribute's template
  const Insert& ins = d.insert(b, {0, 0, 0});
  EXPECT_TRUE(d.crossed(ins, {{5, -1}, {5, 1}}));
  EXPECT_FALSE(d.crossed(ins, {{5, 4}, {5, 6}}));
  EXPECT_FALSE(d.crossed(ins, {{0.2, 20.5}, {0.8, 21}}));

  // A block holding only a marker shows nothing to a fence.
  BlockRecord& marked = d.db.addBlock("MARKED");
  auto marker = std::make_unique<CustomEntity>();
  marker->content = std::make_unique<TestContent>(true, std::vector<CustomPrimitive>{{CustomPrimitive::Kind::Polyline, 1, false, {{0, 0, 0}, {10, 10, 0}}}});
  d.add(std::move(marker), &marked);
  const Insert& mi = d.insert(marked, {100, 0, 0});
  EXPECT_FALSE(d.crossed(mi, {{100, 10}, {110, 0}}));
  EXPECT_TRUE(SelectionShapeOf(mi, d.db).paths.empty());

  // A block inserting itself is cut at the repeat.
  BlockRecord& loop = d.db.addBlock("LOOP");
  d.line({0, 0, 0}, {1, 0, 0}, &loop);
  d.insert(loop, {0, 1, 0}, {1, 1, 1}, 0, &loop);
  const Insert& li = d.insert(loop, {200, 0, 0});
  EXPECT_TRUE(d.crossed(li, {{200.5, -1}, {200.5, 0.5}}));
}

TEST(SelectByFence, ClippedInsertsShowOnlyTheirClip) {
  Drawing d;
  BlockRecord& b = d.db.addBlock("CLIPPED");
  d.line({0, 2, 0}, {10, 2, 0}, &b);
  d.line({7, 0, 0}, {7, 10, 0}, &b);
  d.add(MakeQuad<Solid>({-5, -5, 0}, {2, -5, 0}, {-5, 1, 0}, {2, 1, 0}), b);
  Insert& ins = d.insert(b, {0, 0, 0});
  AddSpatialClip(d.db, ins, {{0, 0}, {5, 5}});
  EXPECT_TRUE(d.crossed(ins, {{3, 1.5}, {3, 2.5}}));
  EXPECT_FALSE(d.crossed(ins, {{8, 1.5}, {8, 2.5}}));    // the clipped-away part of the line
  EXPECT_FALSE(d.crossed(ins, {{6, 7}, {8, 7}}));        // a line wholly outside the clip
  EXPECT_TRUE(d.crossed(ins, {{0.5, 0.5}, {1, 0.8}}));   // inside the solid and the clip
  EXPECT_FALSE(d.crossed(ins, {{-3, -3}, {-2, -2}}));    // inside the solid, outside the clip
}

// ---- the other classes ------------------------------------------------------------------------------------

TEST(SelectByFence, DimensionsHatchesLeadersAndFrames) {
  Drawing d;
  BlockRecord& dimBlock = d.db.addBlock("*D");
  d.line({0, 0, 0}, {0, 10, 0}, &dimBlock);
  auto dim = std::make_unique<Dimension>();
  dim->block = dimBlock.id;
  const Dimension& dimension = d.add(std::move(dim));
  EXPECT_TRUE(d.crossed(dimension, {{-1, 5}, {1, 5}}));
  EXPECT_FALSE(d.crossed(dimension, {{-1, 11}, {1, 11}}));

  const Hatch& solid = d.solidSquare({100, 0}, 10, true);
  const Hatch& pattern = d.solidSquare({200, 0}, 10, false);
  EXPECT_TRUE(d.crossed(solid, {{102, 2}, {108, 8}}));
  EXPECT_FALSE(d.crossed(pattern, {{202, 2}, {208, 8}}));
  EXPECT_TRUE(d.crossed(pattern, {{209, 5}, {211, 5}}));
  EXPECT_FALSE(d.crossed(solid, {{111, 5}, {112, 5}}));
  // An edge path: a full circle of radius 5 around (300, 0).
  const Hatch& disc = d.add(MakeDiscHatch({300, 0}, 5));
  EXPECT_TRUE(d.crossed(disc, Dash({300, 0}, 0.3, 1)));
  EXPECT_FALSE(d.crossed(disc, Dash({304, 4}, 0.3, 0.2)));  // inside the disc's box, outside the disc

  auto ld = std::make_unique<Leader>();
  ld->vertices = {{400, 0, 0}, {410, 10, 0}, {430, 10, 0}};
  const Leader& leader = d.add(std::move(ld));
  EXPECT_TRUE(d.crossed(leader, {{420, 9}, {420, 11}}));
  EXPECT_FALSE(d.crossed(leader, {{420, 8}, {425, 8}}));

  auto img = std::make_unique<Image>();
  img->position = {500, 0, 0};
  img->uPixel = {1, 0, 0};
  img->vPixel = {0, 1, 0};
  img->imageSize = {100, 50};
  const Image& image = d.add(std::move(img));
  EXPECT_TRUE(d.crossed(image, {{599, 25}, {601, 25}}));
  EXPECT_TRUE(d.crossed(image, {{550, 49}, {550, 51}}));
  EXPECT_FALSE(d.crossed(image, {{510, 10}, {590, 40}}));  // the frame, not the picture

  // A wipeout is its clip polygon: a triangle (700,10) (710,10) (700,0) with rows counted from the top.
  auto wo = std::make_unique<Wipeout>();
  wo->position = {700, 0, 0};
  wo->uPixel = {10, 0, 0};
  wo->vPixel = {0, 10, 0};
  wo->imageSize = {1, 1};
  wo->clipping = true;
  wo->clipType = 2;
  wo->clipVertices = {{-0.5, -0.5}, {0.5, -0.5}, {-0.5, 0.5}};
  const Wipeout& wipeout = d.add(std::move(wo));
  EXPECT_TRUE(d.crossed(wipeout, {{706, 5}, {706, 7}}));   // the slanted side
  EXPECT_TRUE(d.crossed(wipeout, {{705, 9}, {705, 11}}));  // the top
  EXPECT_FALSE(d.crossed(wipeout, {{705, -1}, {705, 1}}));  // the frame's bottom is not part of it

  auto px = std::make_unique<ProxyEntity>();
  px->name = "ACAD_TABLE";
  const ProxyEntity& proxy = d.add(std::move(px));
  EXPECT_TRUE(SelectionShapeOf(proxy, d.db).paths.empty());
}

TEST(SelectByFence, ViewportsInPaperSpace) {
  Drawing d;
  BlockRecord& paper = *d.db.paperSpace();
  auto sheet = std::make_unique<Viewport>();
  sheet->center = {200, 150, 0};
  sheet->width = 420;
  sheet->height = 297;
  sheet->number = 1;  // the paper space's own view
  const Viewport& own = d.db.append(paper, std::move(sheet));
  auto vp = std::make_unique<Viewport>();
  vp->center = {50, 50, 0};
  vp->width = 40;
  vp->height = 20;
  vp->number = 2;
  const Viewport& view = d.db.append(paper, std::move(vp));
  const auto ids = SelectByFence(d.db, paper, {{69, 50}, {71, 50}, {-10, 0}, {-10, 300}}, {});
  EXPECT_TRUE(Has(ids, view.id));
  EXPECT_FALSE(Has(ids, own.id));
  EXPECT_FALSE(Has(SelectByFence(d.db, paper, {{45, 45}, {55, 55}}, {}), view.id));
  EXPECT_EQ(SelectionShapeOf(own, d.db).paths.size(), 1u);
}

TEST(SelectByFence, ApplicationEntitiesAndMarkers) {
  Drawing d;
  auto sig = std::make_unique<CustomEntity>();
  sig->content = std::make_unique<TestContent>(
      false, std::vector<CustomPrimitive>{{CustomPrimitive::Kind::Polygon, 1, true, {{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {0, 10, 0}}},
                                          {CustomPrimitive::Kind::Polyline, 1, false, {{20, 0, 0}, {30, 0, 0}}},
                                          {CustomPrimitive::Kind::Polygon, 1, false, {{40, 0, 0}, {50, 0, 0}, {50, 10, 0}}}});
  const CustomEntity& kept = d.add(std::move(sig));
  EXPECT_TRUE(d.crossed(kept, {{2, 2}, {3, 3}}));      // inside the filled polygon
  EXPECT_TRUE(d.crossed(kept, {{25, -1}, {25, 1}}));
  EXPECT_TRUE(d.crossed(kept, {{42, 3}, {44, 3}}));    // the closing side of the unfilled polygon
  EXPECT_FALSE(d.crossed(kept, {{48, 2}, {49, 3}}));   // inside the unfilled one

  auto mk = std::make_unique<CustomEntity>();
  mk->content = std::make_unique<TestContent>(true, std::vector<CustomPrimitive>{{CustomPrimitive::Kind::Polyline, 1, false, {{100, 0, 0}, {110, 0, 0}}}});
  const CustomEntity& marker = d.add(std::move(mk));
  EXPECT_FALSE(d.crossed(marker, {{105, -1}, {105, 1}}));
  EXPECT_EQ(SelectionShapeOf(marker, d.db).paths.size(), 1u);  // it has a shape, it is just not content
}

// ---- fences as a whole -----------------------------------------------------------------------------------

TEST(SelectByFence, DegenerateFencesSelectNothing) {
  Drawing d;
  d.line({0, 0, 0}, {10, 0, 0});
  d.add(MakePoint({5, 5, 0}));
  EXPECT_TRUE(d.fence({}).empty());
  EXPECT_TRUE(d.fence({{5, 0}}).empty());
  EXPECT_TRUE(d.fence({{5, 5}}).empty());
  EXPECT_TRUE(d.fence({{5, 0}, {5, 0}}).empty());
  EXPECT_TRUE(d.fence({{NAN, 0}, {5, 1}}).empty());
  EXPECT_EQ(d.fence({{5, -1}, {NAN, 0}, {5, -1}, {5, 1}}).size(), 1u);  // the finite segment still counts
}

TEST(SelectByFence, DrawingOrderFilterAndSkippedEntities) {
  Drawing d;
  const ObjectId wall = d.db.addLayer("WALL").id;
  Line& a = d.line({0, 10, 0}, {10, 10, 0});
  Line& b = d.line({0, 0, 0}, {10, 0, 0});
  Line& c = d.line({0, 5, 0}, {10, 5, 0});
  b.layer = wall;
  Line& erased = d.line({0, 6, 0}, {10, 6, 0});
  d.db.erase(erased.id);
  d.line({0, 7, 0}, {10, 7, 0}).setVisible(false);
  const std::vector<Point2d> fence{{5, -1}, {5, 11}};
  EXPECT_EQ(d.fence(fence), (std::vector<ObjectId>{a.id, b.id, c.id}));
  int asked = 0;
  const auto onWall = [&](const Entity& e) {
    ++asked;
    return e.layer == wall;
  };
  EXPECT_EQ(d.fence(fence, onWall), (std::vector<ObjectId>{b.id}));
  EXPECT_EQ(asked, 3);  // erased and invisible entities are never offered
}

// Brute force over every entity's outline: the binned fence must find exactly the same.
bool NaiveCrosses(const SelectionShape& s, const std::vector<Point2d>& fence) {
  const auto meet = [](Point2d a, Point2d b, Point2d c, Point2d e) {
    const auto orient = [](Point2d p, Point2d q, Point2d r) { return (q - p).cross(r - p); };
    const double d1 = orient(a, b, c), d2 = orient(a, b, e), d3 = orient(c, e, a), d4 = orient(c, e, b);
    return ((d1 > 0) != (d2 > 0)) && ((d3 > 0) != (d4 > 0));
  };
  const auto inside = [](Point2d p, const std::vector<Point2d>& poly) {
    bool in = false;
    for (std::size_t i = 0, j = poly.size() - 1; i < poly.size(); j = i++)
      if ((poly[i].y > p.y) != (poly[j].y > p.y) && p.x < poly[i].x + (p.y - poly[i].y) * (poly[j].x - poly[i].x) / (poly[j].y - poly[i].y))
        in = !in;
    return in;
  };
  for (std::size_t k = 0; k + 1 < fence.size(); ++k) {
    const Point2d a = fence[k], b = fence[k + 1];
    for (const auto& path : s.paths)
      for (std::size_t i = 0; i + 1 < path.size(); ++i)
        if (meet(a, b, path[i], path[i + 1])) return true;
    for (const auto& area : s.areas) {
      if (inside(a, area)) return true;
      for (std::size_t i = 0; i < area.size(); ++i)
        if (meet(a, b, area[i], area[(i + 1) % area.size()])) return true;
    }
  }
  return false;
}

TEST(SelectByFence, BinnedFenceAgreesWithBruteForceOnABigPlan) {
  const Database db = samples::BuildBigDrawing(6000);
  const BlockRecord& model = *db.modelSpace();
  // A zigzag over three tiles, its corners off the drawing's 0.01 grid.
  std::vector<Point2d> fence;
  for (int i = 0; i <= 40; ++i) fence.push_back({i * 6750.0 + 0.37, (i % 2 ? 64000.0 : 1000.0) + 0.29});
  const auto ids = SelectByFence(db, model, fence, {});
  std::vector<ObjectId> want;
  db.forEachEntity(model, [&](const Entity& e) {
    if (NaiveCrosses(SelectionShapeOf(e, db), fence)) want.push_back(e.id);
  });
  EXPECT_GT(want.size(), 100u);
  EXPECT_EQ(ids, want);
}

TEST(SelectByFence, HostileNestingAndGridsFinish) {
  Drawing d;
  BlockRecord& leaf = d.db.addBlock("LEAF");
  d.line({0, 0, 0}, {1, 1, 0}, &leaf);
  // Ten copies a level, twelve levels: 10^12 lines if walked naively.
  const BlockRecord* below = &leaf;
  for (int level = 0; level < 12; ++level) {
    BlockRecord& b = d.db.addBlock("L" + std::to_string(level));
    for (int k = 0; k < 10; ++k) d.insert(*below, {0.001 * k, 0, 0}, {1, 1, 1}, 0, &b);
    below = &b;
  }
  const Insert& deep = d.insert(*below, {0, 0, 0});
  Insert& huge = d.insert(leaf, {100, 0, 0});
  huge.columnCount = 30000;
  huge.rowCount = 30000;
  huge.columnSpacing = 2;
  huge.rowSpacing = 2;
  const auto ids = d.fence({{0.5, 0}, {0.5, 1}});
  EXPECT_TRUE(Has(ids, deep.id));
  // Above every copy of the line but inside their box: the walk gives up rather than hang.
  EXPECT_FALSE(Has(d.fence({{0.5, 0.52}, {0.6, 0.62}}), deep.id));
  EXPECT_TRUE(d.crossed(huge, {{100.5, 0}, {100.5, 1}}));
  EXPECT_FALSE(d.crossed(huge, {{90, 0}, {90, 1}}));
}

// ---- windows and crossing boxes ---------------------------------------------------------------------------

TEST(SelectByBox, WindowTakesWholeEntitiesCrossingTouchingOnes) {
  Drawing d;
  const Line& l = d.line({0, 0, 0}, {10, 0, 0});
  EXPECT_TRUE(d.window(l, {-1, -1}, {11, 1}));
  EXPECT_TRUE(d.window(l, {11, 1}, {-1, -1}));  // corners in any order
  EXPECT_TRUE(d.window(l, {0, 0}, {10, 1}));    // edges count as inside
  EXPECT_FALSE(d.window(l, {1, -1}, {11, 1}));
  EXPECT_TRUE(d.crossing(l, {1, -1}, {11, 1}));
  EXPECT_TRUE(d.crossing(l, {4, -1}, {6, 1}));  // through the middle, no end point inside
  EXPECT_FALSE(d.crossing(l, {4, 0.1}, {6, 1}));

  // Inside a circle, a box meets nothing; inside a solid hatch, it meets the fill.
  const Circle& c = d.circle({100, 0, 0}, 10);
  const Hatch& h = d.solidSquare({200, 0}, 10, true);
  EXPECT_FALSE(d.crossing(c, {99, -1}, {101, 1}));
  EXPECT_FALSE(d.window(c, {99, -1}, {101, 1}));
  EXPECT_TRUE(d.crossing(c, {109, -1}, {111, 1}));
  EXPECT_FALSE(d.window(c, {89, -9}, {111, 11}));  // misses the bottom
  EXPECT_TRUE(d.window(c, {89, -11}, {111, 11}));
  EXPECT_TRUE(d.crossing(h, {204, 4}, {206, 6}));
  EXPECT_FALSE(d.window(h, {204, 4}, {206, 6}));
  EXPECT_TRUE(d.window(h, {199, -1}, {211, 11}));

  // Text: its box (10,10)-(14,12).
  const Text& t = d.text("ABCD", {10, 10, 0}, 2);
  EXPECT_TRUE(d.crossing(t, {12, 11}, {20, 20}));
  EXPECT_FALSE(d.window(t, {12, 11}, {20, 20}));
  EXPECT_TRUE(d.window(t, {9, 9}, {15, 13}));
  EXPECT_FALSE(d.crossing(t, {14.1, 9}, {15, 13}));

  // Inserts: every cell must lie inside a window.
  BlockRecord& sq = d.db.addBlock("SQ");
  d.lwpolyline({{0, 0}, {1, 0}, {1, 1}, {0, 1}}, true, {}, &sq);
  Insert& grid = d.insert(sq, {500, 0, 0});
  grid.columnCount = 3;
  grid.columnSpacing = 10;
  EXPECT_TRUE(d.window(grid, {499, -1}, {522, 2}));
  EXPECT_FALSE(d.window(grid, {499, -1}, {519, 2}));
  EXPECT_FALSE(d.crossing(grid, {515, -1}, {519, 2}));  // between the second and third cell
  EXPECT_TRUE(d.crossing(grid, {519, -1}, {520.5, 0.5}));

  const PointEntity& p = d.add(MakePoint({1000, 1000, 0}));
  EXPECT_TRUE(d.window(p, {999, 999}, {1001, 1001}));
  EXPECT_TRUE(d.crossing(p, {1000, 1000}, {1001, 1001}));
  EXPECT_FALSE(d.crossing(p, {1000.01, 999}, {1001, 1001}));
}

TEST(SelectByBox, FilterAndOrder) {
  Drawing d;
  const ObjectId keep = d.db.addLayer("KEEP").id;
  Line& a = d.line({0, 0, 0}, {1, 1, 0});
  Line& b = d.line({2, 2, 0}, {3, 3, 0});
  Line& c = d.line({4, 4, 0}, {5, 5, 0});
  a.layer = keep;
  c.layer = keep;
  const auto onKeep = [&](const Entity& e) { return e.layer == keep; };
  EXPECT_EQ(SelectByBox(d.db, d.model, {-1, -1}, {6, 6}, false, onKeep), (std::vector<ObjectId>{a.id, c.id}));
  EXPECT_EQ(SelectByBox(d.db, d.model, {-1, -1}, {6, 6}, true, {}), (std::vector<ObjectId>{a.id, b.id, c.id}));
}

// ---- real drawings -----------------------------------------------------------------------------------------

// Outlines never reach beyond what EntityExtents measures (splines: both flatten, to different
// tolerances), and a window or crossing box around every outline of a space takes them all.
TEST(SelectionShape, CorpusOutlinesStayWithinExtentsAndBoxesTakeThem) {
  namespace fs = std::filesystem;
  const fs::path root = test_support::CorpusDir();
  TV_SKIP_WITHOUT_CORPUS(root);
  int files = 0, outlines = 0;
  for (const fs::path& file : test_support::CorpusDxfFiles(root)) {
    const DxfReadResult read = ReadDxf(file.string());
    if (!read.ok()) continue;
    SCOPED_TRACE(file.string());
    ++files;
    const Database& db = *read.db;
    for (const auto& block : db.blocks) {
      if (!block->isLayout()) continue;
      Extents3d all;
      std::vector<ObjectId> shown;
      db.forEachEntity(*block, [&](const Entity& e) {
        const SelectionShape shape = SelectionShapeOf(e, db);
        Extents3d box;
        for (const auto* list : {&shape.paths, &shape.areas})
          for (const auto& piece : *list)
            for (Point2d p : piece) box.add(Point3d{p});
        if (box.isEmpty()) return;
        ++outlines;
        const auto extents = EntityExtents(e, db);
        ASSERT_TRUE(extents) << e.dxfName();
        const double size = std::hypot(extents->width(), extents->height());
        const double tol = 2e-3 * size + 1e-9 * std::max({std::abs(box.min.x), std::abs(box.min.y), std::abs(box.max.x), std::abs(box.max.y)});
        EXPECT_TRUE(box.min.x >= extents->min.x - tol && box.min.y >= extents->min.y - tol && box.max.x <= extents->max.x + tol &&
                    box.max.y <= extents->max.y + tol)
            << e.dxfName() << " outline (" << box.min.x << ", " << box.min.y << ")-(" << box.max.x << ", " << box.max.y << ") extents ("
            << extents->min.x << ", " << extents->min.y << ")-(" << extents->max.x << ", " << extents->max.y << ")";
        const auto* vp = As<Viewport>(&e);
        if (e.isVisible() && !(vp && IsLayoutViewport(db, *vp))) {
          all.add(box);
          shown.push_back(e.id);
        }
      });
      if (shown.empty()) continue;
      SCOPED_TRACE(block->name);
      EXPECT_EQ(SelectByBox(db, *block, all.min.to2d(), all.max.to2d(), false, {}), shown);
      EXPECT_EQ(SelectByBox(db, *block, all.max.to2d(), all.min.to2d(), true, {}), shown);
    }
  }
  EXPECT_GT(files, 50);
  EXPECT_GT(outlines, 1000);
}

}  // namespace
}  // namespace tv::cad
