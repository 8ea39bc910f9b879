#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

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
  def->setHasAlignPoint(true);
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

// ---- the frame set: content kept inside each frame's drawing area ----------------------------

constexpr double kFrameTileWidth = 90000, kFrameTileHeight = 65000;  // an A1 sheet at 1:100, with a gap
constexpr std::size_t kFramesPerRow = 10;

Point2d PointIn(Random& rnd, const Box& a) {
  return Snap(Point2d{a.min.x + rnd.uniform(0, a.width()), a.min.y + rnd.uniform(0, a.height())});
}

Box Shrunk(const Box& a, double left, double bottom, double right, double top) {
  return {{a.min.x + left, a.min.y + bottom}, {a.max.x - right, a.max.y - top}};
}

// Steps that would leave the area go the other way; the area is far wider than any step.
double Reflect(double v, double from, double lo, double hi) { return v < lo || v > hi ? 2 * from - v : v; }

void AddFrameLine(BigDrawing& b, const Box& a) {
  Point2d s = PointIn(b.rnd, a);
  double len = b.rnd.uniform(200, 6000);
  Point2d e;
  if (b.rnd.chance(0.8)) {
    e = b.rnd.chance(0.5) ? Point2d{s.x + len, s.y} : Point2d{s.x, s.y + len};
  } else {
    double angle = b.rnd.uniform(0, 2 * kPi);
    e = Point2d{s.x + len * std::cos(angle), s.y + len * std::sin(angle)};
  }
  e = {Reflect(e.x, s.x, a.min.x, a.max.x), Reflect(e.y, s.y, a.min.y, a.max.y)};
  AddLine(b.db, b.ms, s, Snap(e), b.anyLayer());
}

void AddFramePolyline(BigDrawing& b, const Box& area) {
  const Box a = Shrunk(area, 700, 700, 700, 700);  // room for a bulge and a width
  Point2d p = PointIn(b.rnd, a);
  std::size_t n = 4 + b.rnd.below(5);
  std::vector<Point2d> pts{p};
  for (std::size_t i = 1; i < n; ++i) {
    double step = Snap(b.rnd.uniform(-3000, 3000));
    p = i % 2 ? Point2d{Reflect(p.x + step, p.x, a.min.x, a.max.x), p.y} : Point2d{p.x, Reflect(p.y + step, p.y, a.min.y, a.max.y)};
    pts.push_back(p);
  }
  LwPolyline& pl = AddPolyline(b.db, b.ms, std::move(pts), b.rnd.chance(0.3), b.anyLayer(), b.rnd.chance(0.2) ? 200 : 0);
  if (b.rnd.chance(0.1)) {
    pl.bulges.assign(pl.points.size(), 0.0);
    pl.bulges[1] = 0.41421356;  // a quarter circle
  }
}

void AddFrameText(BigDrawing& b, const Box& area, std::size_t i) {
  static constexpr const char* kWords[] = {"办公室", "会议室", "走廊", "卫生间", "楼梯间", "KL1(2) 250×600", "C1",
                                           "M1021", "±0.000", "Φ10@200", "设备间", "LL-3", "A-A 剖面"};
  static constexpr double kHeights[] = {250, 350, 500, 700};
  std::string text = kWords[b.rnd.below(std::size(kWords))];
  if (b.rnd.chance(0.3)) {
    text += ' ';
    text += std::to_string(i % 1000);
  }
  // Room for the longest text either way up.
  Point2d at = PointIn(b.rnd, Shrunk(area, 0, 0, 10000, 10000));
  TextPlacement place{.height = kHeights[b.rnd.below(std::size(kHeights))], .rotation = b.rnd.chance(0.15) ? kPi / 2 : 0};
  AddText(b.db, b.ms, std::move(text), at, b.textLayer, b.style, place);
}

void AddFrameInsert(BigDrawing& b, const Box& area, std::size_t i) {
  const BlockRecord& block = *b.blocks[b.rnd.below(b.blocks.size())];
  Point2d at = PointIn(b.rnd, Shrunk(area, 1600, 1600, 1600, 1600));  // the largest block reaches 1500
  Insert& insert = AddInsert(b.db, b.ms, block, at, 1, b.anyLayer(), {{"编号", std::to_string(100 + i % 900)}});
  insert.rotation = static_cast<double>(b.rnd.below(4)) * kPi / 2;
}

// Layers (all of them drawn on), text layer and style, and the small blocks.
void SetUpBigDrawing(BigDrawing& b) {
  Database& db = b.db;
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
}

}  // namespace

Database BuildBigDrawing(std::size_t entityCount) {
  Database db = Database::createDefault();
  db.header.setInt("$INSUNITS", 4);
  db.header.setDouble("$LTSCALE", 100);
  BigDrawing b{db, *db.modelSpace()};
  SetUpBigDrawing(b);

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

Database BuildFrameSet(std::size_t frames, std::size_t contentPerFrame) {
  Database db = Database::createDefault();
  db.header.setInt("$INSUNITS", 4);
  db.header.setDouble("$LTSCALE", 100);
  BigDrawing b{db, *db.modelSpace()};
  SetUpBigDrawing(b);
  // Content goes on every layer but the frames' own.
  const ObjectId frameLayer = db.findLayer("图框")->id;
  std::erase(b.layers, frameLayer);
  const FrameStyle style{frameLayer, b.textLayer, b.style};
  const BlockRecord& frameBlock = MakeFrameBlock(db, style, "A1图框", kA1);

  for (std::size_t f = 0; f < frames; ++f) {
    const Point2d at{static_cast<double>(f % kFramesPerRow) * kFrameTileWidth,
                     static_cast<double>(f / kFramesPerRow) * kFrameTileHeight};
    const TitleValues values{"结施-" + std::to_string(f + 1), "标准层结构平面图", "1:100", "2024.05"};
    switch (f % 3) {
      case 0: DrawFrame(db, b.ms, style, at, kA1, 100, false, values); break;
      case 1: AddInsert(db, b.ms, frameBlock, at, 100, frameLayer, AttributeValues(values)); break;
      default: DrawFrame(db, b.ms, style, at, kA1, 100, true, values); break;
    }
    const Box area = DrawingArea(at, kA1, 100, 10);
    for (std::size_t i = 0; i < contentPerFrame; ++i) {
      // 8 lines, 5 polylines, 5 texts and 2 inserts in every twenty, as in the big plan.
      std::size_t k = i % 20;
      if (k < 8) AddFrameLine(b, area);
      else if (k < 13) AddFramePolyline(b, area);
      else if (k < 18) AddFrameText(b, area, i);
      else AddFrameInsert(b, area, i);
    }
  }
  if (frames == 0) return db;
  const std::size_t rows = (frames + kFramesPerRow - 1) / kFramesPerRow;
  db.header.setPoint("$EXTMIN", {0, 0, 0});
  db.header.setPoint("$EXTMAX", {static_cast<double>(std::min(frames, kFramesPerRow)) * kFrameTileWidth - 5900,
                                 static_cast<double>(rows) * kFrameTileHeight - 5600, 0});
  return db;
}

}  // namespace tv::samples
