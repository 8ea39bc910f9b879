// The shipped sample drawings hold what recognition is tried on: frames of every size, both ways
// up and of every kind, each with a drawing inside; a nested frame and stray rectangles; frames in
// layouts; a turned UCS; and the benchmark's frame set.
// Frames are found here from the geometry alone, the way a person would read the drawing.
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "cad/dxf_writer.h"
#include "cad/entity_geometry.h"
#include "examples/sample_drawing.h"

namespace tv::samples {
namespace {

using namespace tv::cad;

enum class Kind { Polyline, Block, Lines };

struct Paper {
  const char* name;
  double longSide, shortSide;
};
constexpr Paper kPapers[] = {{"A0", 1189, 841}, {"A1", 841, 594}, {"A2", 594, 420},
                             {"A3", 420, 297},  {"A4", 297, 210}, {"A2加长", 891, 420}};
constexpr double kScales[] = {1, 20, 50, 100};

struct Frame {
  Kind kind;
  Extents3d box;  // in the coordinates the frames were looked for in
  std::string paper;
  double scale = 0;
  bool portrait = false;
};

bool Near(double a, double b) { return std::abs(a - b) <= 1e-6 * std::max(1.0, std::abs(b)); }

// The paper and scale whose sheet the box is, if any.
bool MatchPaper(Frame& f) {
  const double w = f.box.width(), h = f.box.height();
  for (const Paper& p : kPapers)
    for (double scale : kScales)
      if (Near(std::max(w, h), p.longSide * scale) && Near(std::min(w, h), p.shortSide * scale)) {
        f.paper = p.name;
        f.scale = scale;
        f.portrait = h > w;
        return true;
      }
  return false;
}

// Corners in order, in frame coordinates: true when every side runs along an axis.
bool AxisAligned(const std::vector<Point3d>& corners) {
  for (std::size_t i = 0; i < corners.size(); ++i) {
    const Point3d a = corners[i], b = corners[(i + 1) % corners.size()];
    const double tol = 1e-6 * std::max(1.0, std::hypot(b.x - a.x, b.y - a.y));
    if (std::abs(b.x - a.x) > tol && std::abs(b.y - a.y) > tol) return false;
  }
  return true;
}

// Reads the frames of one space: closed four-vertex polylines, inserts of frame blocks and four
// loose lines drawn one after the other, on the frame layer, that are a sheet at a usual scale
// and square to the coordinates given by `worldToFrame`.
class FrameReader {
 public:
  FrameReader(const Database& db, const BlockRecord& space, Matrix3d worldToFrame = Matrix3d::identity())
      : db_(db), space_(space), toFrame_(worldToFrame) {
    const Layer* layer = db.findLayer("图框");
    frameLayer_ = layer ? layer->id : ObjectId{};
    read();
  }

  const std::vector<Frame>& frames() const { return frames_; }

  // Entities other than the frames' own lines and plain text whose centre lies strictly inside
  // the frame shrunk by a fiftieth of each side (the paper space's own view left out).
  std::size_t contentOf(const Frame& f, bool withText = false) const {
    const double dx = f.box.width() / 50, dy = f.box.height() / 50;
    std::size_t n = 0;
    db_.forEachEntity(space_, [&](const Entity& e) {
      if (e.layer == frameLayer_) return;
      if (!withText && (As<Text>(&e) || As<Attrib>(&e))) return;
      if (const auto* vp = As<Viewport>(&e); vp && vp->number <= 1) return;
      auto ext = EntityExtents(e, db_);
      if (!ext) return;
      const Point3d c = toFrame_.transform(ext->center());
      n += c.x > f.box.min.x + dx && c.x < f.box.max.x - dx && c.y > f.box.min.y + dy && c.y < f.box.max.y - dy;
    });
    return n;
  }

 private:
  void read() {
    std::vector<const Line*> run;  // loose frame lines, in drawing order
    db_.forEachEntity(space_, [&](const Entity& e) {
      const auto* line = As<Line>(&e);
      if (line && line->layer == frameLayer_) {
        run.push_back(line);
        if (run.size() == 4) tryLines(run);
        return;
      }
      run.clear();
      if (const auto* pl = As<LwPolyline>(&e); pl && pl->layer == frameLayer_ && pl->points.size() == 4 &&
                                                (pl->polyFlags & LwPolyline::kClosed) && pl->constantWidth() == 0) {
        std::vector<Point3d> corners;
        for (Point2d p : pl->points) corners.push_back(toFrame_.transform(Point3d(p)));
        add(Kind::Polyline, corners);
      } else if (const auto* ins = As<Insert>(&e)) {
        const auto* block = db_.objectAs<BlockRecord>(ins->block);
        const auto ext = block ? BlockExtents(*block, db_) : std::nullopt;
        if (!ext || !block->name.ends_with("图框")) return;
        const Matrix3d xf = toFrame_ * InsertTransform(*ins, *block);
        add(Kind::Block, {xf.transform(ext->min), xf.transform(Point3d{ext->max.x, ext->min.y, 0}),
                          xf.transform(ext->max), xf.transform(Point3d{ext->min.x, ext->max.y, 0})});
      }
    });
  }

  void tryLines(std::vector<const Line*>& run) {
    bool chained = true;
    for (std::size_t i = 0; i < 4; ++i) chained = chained && run[i]->end.distanceTo(run[(i + 1) % 4]->start) < 1e-9;
    if (!chained) {
      run.erase(run.begin());
      return;
    }
    std::vector<Point3d> corners;
    for (const Line* l : run) corners.push_back(toFrame_.transform(l->start));
    add(Kind::Lines, corners);
    run.clear();
  }

  void add(Kind kind, const std::vector<Point3d>& corners) {
    if (!AxisAligned(corners)) return;
    Frame f{kind, {}};
    for (const Point3d& c : corners) f.box.add(c);
    if (MatchPaper(f)) frames_.push_back(f);
  }

  const Database& db_;
  const BlockRecord& space_;
  Matrix3d toFrame_;
  ObjectId frameLayer_;
  std::vector<Frame> frames_;
};

bool StrictlyInside(const Extents3d& inner, const Extents3d& outer) {
  return inner.min.x > outer.min.x && inner.min.y > outer.min.y && inner.max.x < outer.max.x && inner.max.y < outer.max.y;
}

std::size_t CountOf(const std::vector<Frame>& frames, Kind kind) {
  std::size_t n = 0;
  for (const Frame& f : frames) n += f.kind == kind;
  return n;
}

const BlockRecord& LayoutSpace(const Database& db, std::string_view name) {
  const Layout* layout = db.findLayout(name);
  EXPECT_NE(layout, nullptr) << name;
  const BlockRecord* block = layout ? db.blockOf(*layout) : nullptr;
  return block ? *block : *db.modelSpace();
}

// ---- sample.dxf ------------------------------------------------------------------------------

class SampleDrawingTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { db_ = new Database(BuildSampleDrawing()); }
  static void TearDownTestSuite() {
    delete db_;
    db_ = nullptr;
  }
  static const Database& db() { return *db_; }

 private:
  static inline Database* db_ = nullptr;
};

TEST_F(SampleDrawingTest, ModelSpaceHasEveryPaperBothWaysInEveryKindEachWithADrawing) {
  FrameReader reader(db(), *db().modelSpace());
  const std::vector<Frame>& frames = reader.frames();
  ASSERT_EQ(frames.size(), 14u);

  std::set<std::pair<std::string, bool>> papers;
  std::set<std::pair<Kind, bool>> kinds;
  std::set<double> scales;
  for (const Frame& f : frames) {
    papers.insert({f.paper, f.portrait});
    kinds.insert({f.kind, f.portrait});
    scales.insert(f.scale);
    EXPECT_GE(reader.contentOf(f, true), 5u) << f.paper << " at " << f.box.min.x << "," << f.box.min.y;
  }
  for (const Paper& p : kPapers) {
    EXPECT_TRUE(papers.count({p.name, false})) << p.name << " landscape";
    EXPECT_TRUE(papers.count({p.name, true})) << p.name << " portrait";
  }
  for (Kind k : {Kind::Polyline, Kind::Block, Kind::Lines}) {
    EXPECT_TRUE(kinds.count({k, false})) << static_cast<int>(k);
    EXPECT_TRUE(kinds.count({k, true})) << static_cast<int>(k);
  }
  EXPECT_EQ(scales, (std::set<double>{20, 50, 100}));

  // Frames don't overlap unless one lies wholly in the other (the nested one).
  std::size_t nested = 0;
  for (const Frame& a : frames)
    for (const Frame& b : frames) {
      if (&a == &b) continue;
      if (StrictlyInside(a.box, b.box)) {
        ++nested;
        EXPECT_LT(a.box.width(), b.box.width() / 2);
      } else if (!StrictlyInside(b.box, a.box)) {
        EXPECT_TRUE(a.box.max.x <= b.box.min.x || b.box.max.x <= a.box.min.x || a.box.max.y <= b.box.min.y ||
                    b.box.max.y <= a.box.min.y)
            << a.paper << " and " << b.paper << " overlap";
      }
    }
  EXPECT_EQ(nested, 1u);
}

TEST_F(SampleDrawingTest, StrayRectanglesStandOutsideTheFramesAndHoldNothing) {
  const Database& d = db();
  FrameReader reader(d, *d.modelSpace());
  const ObjectId frameLayer = d.findLayer("图框")->id;
  std::vector<Extents3d> entityBoxes;
  d.forEachEntity(*d.modelSpace(), [&](const Entity& e) {
    if (auto ext = EntityExtents(e, d)) entityBoxes.push_back(*ext);
  });

  std::vector<Extents3d> strays;
  d.forEachEntity(*d.modelSpace(), [&](const Entity& e) {
    const auto* pl = As<LwPolyline>(&e);
    if (!pl || pl->layer == frameLayer || pl->points.size() != 4 || !(pl->polyFlags & LwPolyline::kClosed)) return;
    std::vector<Point3d> corners;
    Extents3d box;
    for (Point2d p : pl->points) {
      corners.emplace_back(p);
      box.add(Point3d(p));
    }
    if (!AxisAligned(corners)) return;
    for (const Frame& f : reader.frames())
      if (box.intersects(f.box)) return;
    strays.push_back(box);
  });
  ASSERT_GE(strays.size(), 5u);

  std::size_t empty = 0, tiny = 0, sliver = 0;
  for (const Extents3d& box : strays) {
    const double shortSide = std::min(box.width(), box.height());
    tiny += shortSide <= 100;
    sliver += shortSide < 0.001;
    bool holds = false;
    for (const Extents3d& other : entityBoxes) holds = holds || StrictlyInside(other, box);
    empty += !holds;
  }
  EXPECT_EQ(empty, strays.size());
  EXPECT_GE(tiny, 2u);
  EXPECT_EQ(sliver, 1u);
}

TEST_F(SampleDrawingTest, EachLayoutCarriesTwoFramesOfDifferentKindsWithAViewportInEach) {
  struct Expected {
    const char* layout;
    std::multiset<std::string> papers;
    std::set<Kind> kinds;
  };
  const Expected expected[] = {{"布局1", {"A1", "A4"}, {Kind::Polyline, Kind::Block}},
                               {"布局2", {"A3", "A3"}, {Kind::Polyline, Kind::Lines}}};
  for (const Expected& e : expected) {
    SCOPED_TRACE(e.layout);
    FrameReader reader(db(), LayoutSpace(db(), e.layout));
    std::multiset<std::string> papers;
    std::set<Kind> kinds;
    for (const Frame& f : reader.frames()) {
      papers.insert(f.paper);
      kinds.insert(f.kind);
      EXPECT_EQ(f.scale, 1);
      EXPECT_GE(reader.contentOf(f), 1u) << f.paper;  // a viewport onto model space
    }
    EXPECT_EQ(papers, e.papers);
    EXPECT_EQ(kinds, e.kinds);
  }
}

TEST_F(SampleDrawingTest, LayoutViewportsLookAtModelSpaceDrawings) {
  // Every floating viewport's view centre falls in a frame of model space.
  FrameReader model(db(), *db().modelSpace());
  std::size_t viewports = 0;
  for (const char* name : {"布局1", "布局2"})
    db().forEachEntity(LayoutSpace(db(), name), [&](const Entity& e) {
      const auto* vp = As<Viewport>(&e);
      if (!vp || vp->number <= 1) return;
      ++viewports;
      bool seen = false;
      for (const Frame& f : model.frames()) seen = seen || f.box.contains(Point3d(vp->viewCenter));
      EXPECT_TRUE(seen) << name << " viewport " << vp->number;
    });
  EXPECT_EQ(viewports, 5u);
}

// ---- sample_ucs.dxf --------------------------------------------------------------------------

TEST(UcsDrawing, ThreeFramesAreSquareToTheUcsAndOneToWorld) {
  const Database db = BuildUcsDrawing();
  const Header& h = db.header;
  const CoordSystem ucs{h.getPoint("$UCSORG"), h.getPoint("$UCSXDIR").asVector(), h.getPoint("$UCSYDIR").asVector()};

  FrameReader turned(db, *db.modelSpace(), ucs.fromWorld());
  ASSERT_EQ(turned.frames().size(), 3u);
  for (Kind k : {Kind::Polyline, Kind::Block, Kind::Lines}) EXPECT_EQ(CountOf(turned.frames(), k), 1u);
  for (const Frame& f : turned.frames()) {
    EXPECT_EQ(f.paper, "A3");
    EXPECT_EQ(f.scale, 100);
    EXPECT_GE(turned.contentOf(f), 10u) << static_cast<int>(f.kind);
  }
  db.forEachEntity(*db.modelSpace(), [&](const Entity& e) {
    if (const auto* ins = As<Insert>(&e)) {
      EXPECT_NEAR(RadToDeg(ins->rotation), 30, 1e-9);
    }
  });

  FrameReader world(db, *db.modelSpace());
  ASSERT_EQ(world.frames().size(), 1u);
  EXPECT_EQ(world.frames()[0].kind, Kind::Polyline);
  EXPECT_GE(world.contentOf(world.frames()[0]), 10u);

  // Everything is drawn square to one system or the other: no line runs at another angle.
  std::size_t lines = 0;
  db.forEachEntity(*db.modelSpace(), [&](const Entity& e) {
    const auto* l = As<Line>(&e);
    if (!l) return;
    ++lines;
    const Vector3d d = l->end - l->start;
    const Vector3d u{d.dot(ucs.xAxis), d.dot(ucs.yAxis), 0};
    const double len = d.length(), tol = 1e-6 * len;
    const bool squareToUcs = std::abs(u.x) < tol || std::abs(u.y) < tol;
    const bool squareToWorld = std::abs(d.x) < tol || std::abs(d.y) < tol;
    EXPECT_TRUE(squareToUcs || squareToWorld) << l->start.x << "," << l->start.y;
  });
  EXPECT_GT(lines, 50u);
}

// ---- frames.dxf ------------------------------------------------------------------------------

TEST(FrameSet, HoldsTheFramesAskedForInThirdsWithTheirContentInside) {
  constexpr std::size_t kFrames = 12, kContent = 200;
  const Database db = BuildFrameSet(kFrames, kContent);
  FrameReader reader(db, *db.modelSpace());
  const std::vector<Frame>& frames = reader.frames();
  ASSERT_EQ(frames.size(), kFrames);
  for (Kind k : {Kind::Polyline, Kind::Block, Kind::Lines}) EXPECT_EQ(CountOf(frames, k), kFrames / 3);
  for (const Frame& f : frames) {
    EXPECT_EQ(f.paper, "A1");
    EXPECT_EQ(f.scale, 100);
    EXPECT_FALSE(f.portrait);
    EXPECT_GE(reader.contentOf(f, true), kContent);
  }

  // About frames x content entities, and none of the content strays out of a frame's inner box.
  const ObjectId frameLayer = db.findLayer("图框")->id;
  std::size_t entities = 0, outside = 0;
  std::map<std::string, std::size_t> byType;
  db.forEachEntity(*db.modelSpace(), [&](const Entity& e) {
    ++entities;
    ++byType[e.dxfName()];
    if (e.layer == frameLayer) return;
    const auto ext = EntityExtents(e, db);
    ASSERT_TRUE(ext);
    bool inside = false;
    for (const Frame& f : frames) {
      Extents3d inner = f.box;
      inner.min.x += f.box.width() / 50, inner.max.x -= f.box.width() / 50;
      inner.min.y += f.box.height() / 50, inner.max.y -= f.box.height() / 50;
      inside = inside || StrictlyInside(*ext, inner);
    }
    outside += !inside;
  });
  EXPECT_EQ(outside, 0u);
  EXPECT_GE(entities, kFrames * kContent);
  EXPECT_LE(entities, kFrames * (kContent + 30));
  for (const char* type : {"LINE", "LWPOLYLINE", "TEXT", "INSERT"}) EXPECT_GE(byType[type], kFrames * kContent / 20) << type;
}

TEST(FrameSet, SameArgumentsGiveTheSameDrawing) {
  EXPECT_EQ(WriteDxfToString(BuildFrameSet(4, 60)), WriteDxfToString(BuildFrameSet(4, 60)));
  EXPECT_NE(WriteDxfToString(BuildFrameSet(4, 60)), WriteDxfToString(BuildFrameSet(4, 61)));
}

}  // namespace
}  // namespace tv::samples
