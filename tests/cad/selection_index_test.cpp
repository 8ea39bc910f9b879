// Indexed selections against the walk over the whole space: random drawings of every kind of
// entity, random fences, windows and crossing boxes, with the drawing edited between them.
#include "cad/selection_index.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <random>

#include "cad/dxf_reader.h"
#include "cad/selection_geometry.h"
#include "../support/corpus.h"
#include "../support/entity_builders.h"
#include "../support/half_em_measurer.h"
#include "../support/test_content.h"

namespace tv::cad {
namespace {

using test_support::kHalfEm;

using test_support::TestContent;

// A random drawing over a square of side `kSide`, edited at random and selected in at random.
class RandomDrawing {
 public:
  static constexpr double kSide = 1000;

  explicit RandomDrawing(unsigned seed) : rng_(seed) {
    db.addLayer("A");
    db.addLayer("B");
    // Blocks: a plain one, one inserting the first turned, one with a far-off piece, an empty one.
    BlockRecord& plain = db.addBlock("PLAIN");
    add(line({0, 0}, {20, 0}), &plain);
    add(circle({10, 10}, 5), &plain);
    add(text("块", {0, 15}, 3), &plain);
    BlockRecord& nested = db.addBlock("NESTED");
    add(insertOf(plain, {5, 5}, 0.5, 0.7), &nested);
    add(line({0, 0}, {0, 30}), &nested);
    BlockRecord& far = db.addBlock("FAR");
    add(line({0, 0}, {1, 1}), &far);
    add(line({1e6, 1e6}, {1e6 + 1, 1e6}), &far);
    BlockRecord& empty = db.addBlock("EMPTY");
    blocks_ = {&plain, &nested, &far, &empty};
    scratch_ = &db.addBlock("SCRATCH");
    for (int i = 0; i < 400; ++i) addRandom();
  }

  Database db = Database::createDefault();
  BlockRecord& model = *db.modelSpace();

  double real(double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(rng_); }
  int pick(int n) { return std::uniform_int_distribution<int>(0, n - 1)(rng_); }
  Point2d point() { return {real(-50, kSide + 50), real(-50, kSide + 50)}; }

  // One random entity appended to model space (through `index` when there is one: it is told nothing).
  const Entity& addRandom() {
    const Point2d p = point();
    const double size = std::pow(10.0, real(-3, 2.5));
    std::unique_ptr<Entity> e;
    switch (pick(16)) {
      case 0: e = line(p, {p.x + real(-size, size), p.y + real(-size, size)}); break;
      case 1: e = line(p, p); break;  // no length
      case 2: {
        auto l = std::make_unique<LwPolyline>();
        for (int i = 0, n = 2 + pick(5); i < n; ++i) l->points.push_back({p.x + real(-size, size), p.y + real(-size, size)});
        l->bulges.assign(l->points.size(), 0.0);
        l->bulges[0] = real(-1, 1);
        if (pick(2)) l->polyFlags |= LwPolyline::kClosed;
        e = std::move(l);
        break;
      }
      case 3: e = circle(p, size); break;
      case 4: {
        auto a = std::make_unique<Arc>();
        a->center = Point3d{p};
        a->radius = size;
        a->startAngle = real(0, 6);
        a->endAngle = real(0, 6);
        e = std::move(a);
        break;
      }
      case 5: e = text("文字 text", p, size, real(0, 6)); break;
      case 6: {
        auto m = std::make_unique<MText>();
        m->text = "一行\\P二行";
        m->position = Point3d{p};
        m->height = size;
        m->referenceWidth = size * 5;
        e = std::move(m);
        break;
      }
      case 7:
      case 8: e = insertOf(*blocks_[pick(static_cast<int>(blocks_.size()))], p, real(0.2, 5), real(0, 6)); break;
      case 9: {
        auto ins = insertOf(*blocks_[0], p, real(0.2, 2), 0);
        ins->columnCount = static_cast<std::int16_t>(1 + pick(4));
        ins->rowCount = static_cast<std::int16_t>(1 + pick(4));
        ins->columnSpacing = real(-40, 40);
        ins->rowSpacing = real(-40, 40);
        e = std::move(ins);
        break;
      }
      case 10: {
        auto h = std::make_unique<Hatch>();
        h->solidFill = pick(2) == 0;
        h->patternName = h->solidFill ? "SOLID" : "ANSI31";
        HatchPath path;
        path.flags = HatchPath::kPolyline | HatchPath::kExternal;
        path.vertices = {p, {p.x + size, p.y}, {p.x + size, p.y + size}, {p.x, p.y + size}};
        h->paths.push_back(path);
        e = std::move(h);
        break;
      }
      case 11: {
        auto pt = std::make_unique<PointEntity>();
        pt->position = Point3d{p};
        e = std::move(pt);
        break;
      }
      case 12: e = line({-1e9, p.y}, {1e9, p.y + size}); break;  // huge
      case 13: {
        const bool transient = pick(2) == 0;
        auto c = std::make_unique<CustomEntity>();
        CustomPrimitive prim;
        prim.points = {Point3d{p}, Point3d{p.x + size, p.y + size}};
        c->content = std::make_unique<TestContent>(transient, std::vector<CustomPrimitive>{prim});
        e = std::move(c);
        break;
      }
      case 14: {
        auto l = line(p, {p.x + size, p.y});
        l->setVisible(false);
        e = std::move(l);
        break;
      }
      default: {
        // Off the XY plane and turned out of it: projected.
        auto c = circle(p, size);
        c->normal = Vector3d{real(-1, 1), real(-1, 1), real(0.1, 1)}.normalized();
        c->center = Point3d{p.x, p.y, real(-100, 100)};
        e = std::move(c);
        break;
      }
    }
    if (pick(3) == 0) e->layer = db.findLayer(pick(2) ? "A" : "B")->id;
    return add(std::move(e));
  }

  // A random live entity of model space, or nullptr.
  Entity* randomLive() {
    for (int tries = 0; tries < 20; ++tries) {
      Entity& e = *model.entities[static_cast<std::size_t>(pick(static_cast<int>(model.entities.size())))];
      if (!e.isErased()) return &e;
    }
    return nullptr;
  }

  // Edits the drawing at random, telling the index as the host does.
  void edit(SelectionIndex& index) {
    switch (pick(6)) {
      case 0:
      case 1: addRandom(); break;
      case 2:
        if (Entity* e = randomLive()) {
          index.noteChanged(*e);
          db.erase(e->id);
        }
        break;
      case 3:
        if (Entity* e = randomLive()) {
          const Matrix3d xf = Matrix3d::translation(Vector3d{real(-300, 300), real(-300, 300), 0}) *
                              Matrix3d::rotation(real(0, 6), Vector3d::zAxis(), Point3d{point()});
          TransformBy(*e, xf);
          index.noteChanged(*e);
        }
        break;
      case 4: {
        // The shown block grows: every insert of it, nested ones included, reaches farther.
        BlockRecord& plain = *blocks_[0];
        const Entity& added = add(line({real(-100, 100), real(-100, 100)}, {real(-100, 100), real(-100, 100)}), &plain);
        index.noteChanged(added);
        break;
      }
      default: {
        // Scratch work in a block nothing shows.
        const Entity& added = add(line(point(), point()), scratch_);
        index.noteChanged(added);
        index.noteChanged(added);
        db.erase(added.id);
        break;
      }
    }
  }

  std::vector<Point2d> randomFence() {
    std::vector<Point2d> fence;
    const Point2d start = point();
    const double reach = std::pow(10.0, real(-1, 3));
    fence.push_back(start);
    for (int i = 0, n = pick(8); i < n; ++i) fence.push_back({start.x + real(-reach, reach), start.y + real(-reach, reach)});
    return fence;
  }

 private:
  const Entity& add(std::unique_ptr<Entity> e, BlockRecord* in = nullptr) { return db.appendEntity(in ? *in : model, std::move(e)); }
  static std::unique_ptr<Line> line(Point2d a, Point2d b) { return test_support::MakeLine(Point3d{a}, Point3d{b}); }
  static std::unique_ptr<Circle> circle(Point2d c, double r) { return test_support::MakeCircle(Point3d{c}, r); }
  static std::unique_ptr<Text> text(std::string s, Point2d at, double height, double rotation = 0) {
    return test_support::MakeText(std::move(s), Point3d{at}, height, rotation);
  }
  static std::unique_ptr<Insert> insertOf(const BlockRecord& block, Point2d at, double scale, double rotation) {
    return test_support::MakeInsert(block, Point3d{at}, {scale, scale, 1}, rotation);
  }

  std::mt19937 rng_;
  std::vector<BlockRecord*> blocks_;
  BlockRecord* scratch_ = nullptr;
};

TEST(SelectionIndex, AgreesWithTheWholeSpaceWalkWhileTheDrawingIsEdited) {
  for (unsigned seed : {1u, 2u, 3u}) {
    SCOPED_TRACE(seed);
    RandomDrawing d(seed);
    SelectionIndex index(d.db, d.model, &kHalfEm);
    const Layer* layerA = d.db.findLayer("A");
    const std::function<bool(const Entity&)> filters[] = {
        {},
        [&](const Entity& e) { return e.layer != layerA->id; },
        [](const Entity& e) { return e.type() == ObjectType::Insert || e.type() == ObjectType::Text; },
    };
    int selected = 0;
    for (int round = 0; round < 300; ++round) {
      SCOPED_TRACE(round);
      for (int edits = d.pick(4); edits > 0; --edits) d.edit(index);
      const auto& accept = filters[round % 3];
      const std::vector<Point2d> fence = d.randomFence();
      const std::vector<ObjectId> fenced = SelectByFence(d.db, d.model, fence, accept, &kHalfEm);
      ASSERT_EQ(SelectByFence(d.db, index, fence, accept), fenced);
      const Point2d a = d.point(), b = d.randomFence().back();
      for (bool crossing : {false, true}) {
        const std::vector<ObjectId> boxed = SelectByBox(d.db, d.model, a, b, crossing, accept, &kHalfEm);
        ASSERT_EQ(SelectByBox(d.db, index, a, b, crossing, accept), boxed) << "crossing " << crossing;
        selected += static_cast<int>(boxed.size());
      }
      selected += static_cast<int>(fenced.size());
    }
    // The comparison means something only when the selections take things.
    EXPECT_GT(selected, 1000);
  }
}

// Real drawings: every layout space of the corpus, fences and boxes scattered over its extents.
// Fences near a circle's ring, where the index may answer without flattening the circle: inside
// the ring its chords keep to, across it, tangent within the tolerance and just outside.
TEST(SelectionIndex, FencesByACircleAgreeWithTheWalk) {
  struct Case {
    const char* what;
    std::vector<Point2d> fence;
    bool crosses;
  };
  const Point2d c{1000, -500};
  const double r = 250;
  const Case cases[] = {
      {"deep inside", {{c.x - 100, c.y}, {c.x + 100, c.y + 50}}, false},
      {"inside, near the ring", {{c.x - r * 0.999, c.y}, {c.x, c.y}}, false},
      {"from the centre out", {{c.x, c.y}, {c.x + 2 * r, c.y}}, true},
      {"a chord of the circle", {{c.x - r, c.y - 300}, {c.x - r + 10, c.y + 300}}, true},
      {"tangent at the first point of the ring", {{c.x + r, c.y - 300}, {c.x + r, c.y + 300}}, true},
      {"just outside", {{c.x + r * 1.001, c.y - 300}, {c.x + r * 1.001, c.y + 300}}, false},
      {"zigzag through the box only", {{c.x - r, c.y - r}, {c.x - r * 0.8, c.y - r}, {c.x - r, c.y - r * 0.8}}, false},
  };
  Database db = Database::createDefault();
  BlockRecord& model = *db.modelSpace();
  auto circle = std::make_unique<Circle>();
  circle->center = {c.x, c.y, 0};
  circle->radius = r;
  db.append(model, std::move(circle));
  SelectionIndex index(db, model, &kHalfEm);
  for (const Case& k : cases) {
    SCOPED_TRACE(k.what);
    const std::vector<ObjectId> walked = SelectByFence(db, model, k.fence, {}, &kHalfEm);
    EXPECT_EQ(walked.size(), k.crosses ? 1u : 0u);
    EXPECT_EQ(SelectByFence(db, index, k.fence, {}), walked);
  }
}

TEST(SelectionIndex, AgreesWithTheWholeSpaceWalkOnCorpusDrawings) {
  namespace fs = std::filesystem;
  const fs::path root = test_support::CorpusDir();
  TV_SKIP_WITHOUT_CORPUS(root);
  std::mt19937 rng(7);
  const auto real = [&](double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(rng); };
  int spaces = 0;
  for (const fs::path& file : test_support::CorpusDxfFiles(root)) {
    const DxfReadResult read = ReadDxf(file.string());
    if (!read.ok()) continue;
    SCOPED_TRACE(file.string());
    const Database& db = *read.db;
    for (const auto& block : db.blocks) {
      if (!block->isLayout()) continue;
      Extents3d all;
      db.forEachEntity(*block, [&](const Entity& e) {
        if (auto ext = EntityExtents(e, db); ext && !ext->isEmpty() && std::isfinite(ext->min.x + ext->max.x + ext->min.y + ext->max.y))
          all.add(*ext);
      });
      if (all.isEmpty()) continue;
      ++spaces;
      SelectionIndex index(db, *block);
      const double w = std::max(all.width(), 1.0), h = std::max(all.height(), 1.0);
      const auto point = [&] { return Point2d{all.min.x + real(0, w), all.min.y + real(0, h)}; };
      for (int i = 0; i < 12; ++i) {
        const Point2d a = point();
        const double reach = std::max(w, h) * std::pow(10.0, real(-3, -0.5));
        const Point2d b{a.x + real(-reach, reach), a.y + real(-reach, reach)};
        const std::vector<Point2d> fence{a, b, {b.x + real(-reach, reach), b.y}};
        ASSERT_EQ(SelectByFence(db, index, fence, {}), SelectByFence(db, *block, fence, {}));
        ASSERT_EQ(SelectByBox(db, index, a, b, i % 2 == 0, {}), SelectByBox(db, *block, a, b, i % 2 == 0, {}));
      }
    }
  }
  EXPECT_GT(spaces, 20);
}

}  // namespace
}  // namespace tv::cad
