#include <cmath>
#include <cstdint>
#include <string>

#include "examples/sample_drawing.h"
#include "examples/sample_kit.h"

namespace tv::samples {

using namespace tv::cad;
using namespace tv::samples::kit;

namespace {

// splitmix64: the same sequence on every platform, unlike the standard distributions.
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}
  std::uint64_t next() {
    std::uint64_t z = (state_ += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
  }
  double uniform(double lo, double hi) { return lo + (hi - lo) * static_cast<double>(next() >> 11) * 0x1.0p-53; }
  std::size_t below(std::size_t n) { return static_cast<std::size_t>(next() % n); }
  bool chance(double p) { return uniform(0, 1) < p; }

 private:
  std::uint64_t state_;
};

// Coordinates as drawn by hand: to a hundredth of a millimetre.
double Snap(double v) { return std::round(v * 100) / 100; }
Point2d Snap(Point2d p) { return {Snap(p.x), Snap(p.y)}; }

struct BigDrawing {
  Database& db;
  BlockRecord& ms;
  Random rnd{20240329};
  std::vector<ObjectId> layers;
  std::vector<const BlockRecord*> blocks;
  ObjectId textLayer, style;

  ObjectId anyLayer() { return layers[rnd.below(layers.size())]; }
};

constexpr double kTileWidth = 90000, kTileHeight = 65000;  // one A1 sheet at 1:100, with a gap
constexpr std::size_t kEntitiesPerTile = 2000, kTilesPerRow = 20;

void MakeBlocks(BigDrawing& b) {
  Database& db = b.db;
  BlockRecord& column = db.addBlock("COL500");
  AddRectangle(db, column, {-250, -250}, {250, 250}, {});
  AddLine(db, column, {-250, -250}, {250, 250}, {});
  AddLine(db, column, {-250, 250}, {250, -250}, {});

  BlockRecord& door = db.addBlock("DOOR900");
  AddLine(db, door, {0, 0}, {0, 900}, {});
  auto swing = std::make_unique<Arc>();
  swing->radius = 900;
  swing->endAngle = kPi / 2;
  db.append(door, std::move(swing));

  BlockRecord& window = db.addBlock("WIN1500");
  AddRectangleLines(db, window, {0, 0}, {1500, 200}, {});
  AddLine(db, window, {0, 100}, {1500, 100}, {});

  BlockRecord& tag = db.addBlock("ROOMTAG");
  AddCircle(db, tag, {0, 0}, 400, {});
  auto def = std::make_unique<AttDef>();
  def->tag = "编号";
  def->prompt = "房间编号";
  def->text = "000";
  def->height = 300;
  def->hAlign = TextHAlign::Middle;
  def->hasAlignPoint = true;
  def->style = b.style;
  db.append(tag, std::move(def));
  tag.blockFlags |= BlockRecord::kHasAttributes;

  b.blocks = {&column, &door, &window, &tag};
}

void AddBigLine(BigDrawing& b, Point2d o) {
  Point2d a = Snap(Point2d{o.x + b.rnd.uniform(0, 84000), o.y + b.rnd.uniform(0, 59000)});
  double len = b.rnd.uniform(200, 6000);
  Point2d e;
  if (b.rnd.chance(0.8)) {
    e = b.rnd.chance(0.5) ? Point2d{a.x + len, a.y} : Point2d{a.x, a.y + len};
  } else {
    double angle = b.rnd.uniform(0, 2 * kPi);
    e = Snap(Point2d{a.x + len * std::cos(angle), a.y + len * std::sin(angle)});
  }
  AddLine(b.db, b.ms, a, Snap(e), b.anyLayer());
}

void AddBigPolyline(BigDrawing& b, Point2d o) {
  Point2d p = Snap(Point2d{o.x + b.rnd.uniform(0, 80000), o.y + b.rnd.uniform(0, 55000)});
  if (b.rnd.chance(0.4)) {
    double w = Snap(b.rnd.uniform(300, 4000)), h = Snap(b.rnd.uniform(300, 4000));
    AddRectangle(b.db, b.ms, p, {p.x + w, p.y + h}, b.anyLayer());
    return;
  }
  std::size_t n = 4 + b.rnd.below(5);
  std::vector<Point2d> pts{p};
  for (std::size_t i = 1; i < n; ++i) {
    double step = Snap(b.rnd.uniform(-3000, 3000));
    p = i % 2 ? Point2d{p.x + step, p.y} : Point2d{p.x, p.y + step};
    pts.push_back(p);
  }
  LwPolyline& pl = AddPolyline(b.db, b.ms, std::move(pts), b.rnd.chance(0.3), b.anyLayer(), b.rnd.chance(0.2) ? 200 : 0);
  if (b.rnd.chance(0.1)) {
    pl.bulges.assign(pl.points.size(), 0.0);
    pl.bulges[1] = 0.41421356;  // a quarter circle
  }
}

void AddBigText(BigDrawing& b, Point2d o, std::size_t i) {
  static constexpr const char* kWords[] = {"办公室", "会议室", "走廊", "卫生间", "楼梯间", "KL1(2) 250×600", "C1",
                                           "M1021", "±0.000", "Φ10@200", "设备间", "LL-3", "A-A 剖面"};
  static constexpr double kHeights[] = {250, 350, 500, 700};
  std::string text = kWords[b.rnd.below(std::size(kWords))];
  if (b.rnd.chance(0.3)) {
    text += ' ';
    text += std::to_string(i % 1000);
  }
  Point2d at = Snap(Point2d{o.x + b.rnd.uniform(0, 82000), o.y + b.rnd.uniform(0, 58000)});
  TextPlacement place{.height = kHeights[b.rnd.below(std::size(kHeights))], .rotation = b.rnd.chance(0.15) ? kPi / 2 : 0};
  AddText(b.db, b.ms, std::move(text), at, b.textLayer, b.style, place);
}

void AddBigInsert(BigDrawing& b, Point2d o, std::size_t i) {
  const BlockRecord& block = *b.blocks[b.rnd.below(b.blocks.size())];
  Point2d at = Snap(Point2d{o.x + b.rnd.uniform(0, 82000), o.y + b.rnd.uniform(0, 58000)});
  Insert& insert = AddInsert(b.db, b.ms, block, at, 1, b.anyLayer(), {{"编号", std::to_string(100 + i % 900)}});
  insert.rotation = static_cast<double>(b.rnd.below(4)) * kPi / 2;
}

}  // namespace

Database BuildBigDrawing(std::size_t entityCount) {
  Database db = Database::createDefault();
  db.header.setInt("$INSUNITS", 4);
  db.header.setDouble("$LTSCALE", 100);
  BigDrawing b{db, *db.modelSpace()};
  AddStandardLinetypes(db);
  static constexpr const char* kLayers[] = {"WALL", "AXIS", "COLUMN", "DOOR", "WINDOW", "FURNITURE",
                                            "EQUIP", "PIPE", "图框", "标注", "DIM", "HATCH"};
  for (std::size_t i = 0; i < std::size(kLayers); ++i)
    b.layers.push_back(AddLayer(db, kLayers[i], static_cast<std::int16_t>(1 + i % 9), i == 1 ? "CENTER" : "Continuous").id);
  b.textLayer = AddLayer(db, "TEXT", 7).id;
  TextStyle& hz = db.addTextStyle("HZ");
  hz.fontFile = "gbenor.shx";
  hz.bigFontFile = "gbcbig.shx";
  hz.widthFactor = 0.7;
  b.style = hz.id;
  MakeBlocks(b);

  for (std::size_t i = 0; i < entityCount; ++i) {
    std::size_t tile = i / kEntitiesPerTile;
    Point2d o{static_cast<double>(tile % kTilesPerRow) * kTileWidth, static_cast<double>(tile / kTilesPerRow) * kTileHeight};
    // 8 lines, 5 polylines, 5 texts and 2 inserts in every twenty.
    std::size_t k = i % 20;
    if (k < 8) AddBigLine(b, o);
    else if (k < 13) AddBigPolyline(b, o);
    else if (k < 18) AddBigText(b, o, i);
    else AddBigInsert(b, o, i);
  }
  std::size_t tiles = (entityCount + kEntitiesPerTile - 1) / kEntitiesPerTile;
  db.header.setPoint("$EXTMIN", {0, 0, 0});
  db.header.setPoint("$EXTMAX", {static_cast<double>(std::min(tiles, kTilesPerRow)) * kTileWidth,
                                 static_cast<double>((tiles + kTilesPerRow - 1) / kTilesPerRow) * kTileHeight, 0});
  return db;
}

}  // namespace tv::samples
