#include "examples/sample_kit.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

namespace tv::samples::kit {

using namespace tv::cad;

namespace {

template <class T>
T& Append(Database& db, BlockRecord& block, ObjectId layer) {
  auto e = std::make_unique<T>();
  e->layer = layer;
  return db.append(block, std::move(e));
}

HatchPath PolygonPath(std::vector<Point2d> boundary) {
  HatchPath path;
  path.flags = HatchPath::kExternal | HatchPath::kPolyline;
  path.vertices = std::move(boundary);
  path.closed = true;
  return path;
}

Point2d Centroid(const std::vector<Point2d>& pts) {
  Point2d c;
  for (const Point2d& p : pts) c = {c.x + p.x / static_cast<double>(pts.size()), c.y + p.y / static_cast<double>(pts.size())};
  return c;
}

}  // namespace

Layer& AddLayer(Database& db, std::string name, std::int16_t color, std::string_view linetype, std::int16_t lineweight) {
  Layer& l = db.addLayer(std::move(name));
  l.colorIndex = color;
  if (Linetype* lt = db.findLinetype(linetype)) l.linetype = lt->id;
  l.lineweight = lineweight;
  return l;
}

void AddStandardLinetypes(Database& db) {
  struct Def {
    const char* name;
    const char* description;
    std::vector<double> dashes;
  };
  const Def defs[] = {
      {"DASHED", "Dashed __ __ __ __ __", {12.7, -6.35}},
      {"CENTER", "Center ____ _ ____ _ ____", {31.75, -6.35, 6.35, -6.35}},
      {"HIDDEN", "Hidden __ __ __ __ __", {6.35, -3.175}},
  };
  for (const Def& d : defs) {
    Linetype& lt = db.addLinetype(d.name);
    lt.description = d.description;
    lt.dashes.clear();
    lt.patternLength = 0;
    for (double len : d.dashes) {
      lt.dashes.push_back(LinetypeDash{.length = len});
      lt.patternLength += std::abs(len);
    }
  }
}

Line& AddLine(Database& db, BlockRecord& block, Point2d a, Point2d b, ObjectId layer) {
  Line& l = Append<Line>(db, block, layer);
  l.start = Point3d(a);
  l.end = Point3d(b);
  return l;
}

LwPolyline& AddPolyline(Database& db, BlockRecord& block, std::vector<Point2d> points, bool closed, ObjectId layer,
                        double width) {
  LwPolyline& p = Append<LwPolyline>(db, block, layer);
  p.points = std::move(points);
  p.polyFlags = closed ? LwPolyline::kClosed : 0;
  p.setConstantWidth(width);
  return p;
}

LwPolyline& AddRectangle(Database& db, BlockRecord& block, Point2d min, Point2d max, ObjectId layer, double width) {
  return AddPolyline(db, block, {min, {max.x, min.y}, max, {min.x, max.y}}, true, layer, width);
}

void AddRectangleLines(Database& db, BlockRecord& block, Point2d min, Point2d max, ObjectId layer) {
  const Point2d c[4] = {min, {max.x, min.y}, max, {min.x, max.y}};
  for (int i = 0; i < 4; ++i) AddLine(db, block, c[i], c[(i + 1) % 4], layer);
}

Circle& AddCircle(Database& db, BlockRecord& block, Point2d center, double radius, ObjectId layer) {
  Circle& c = Append<Circle>(db, block, layer);
  c.center = Point3d(center);
  c.radius = radius;
  return c;
}

Text& AddText(Database& db, BlockRecord& block, std::string text, Point2d at, ObjectId layer, ObjectId style,
              const TextPlacement& place) {
  Text& t = Append<Text>(db, block, layer);
  t.text = std::move(text);
  t.position = Point3d(at);
  t.height = place.height;
  t.rotation = place.rotation;
  t.widthFactor = place.widthFactor;
  t.style = style;
  t.hAlign = place.hAlign;
  t.vAlign = place.vAlign;
  if (place.hAlign != TextHAlign::Left || place.vAlign != TextVAlign::Baseline) {
    t.setAlignPoint(Point3d(at));
  }
  return t;
}

MText& AddMText(Database& db, BlockRecord& block, std::string text, Point2d topLeft, double height, double width,
                ObjectId layer, ObjectId style) {
  MText& m = Append<MText>(db, block, layer);
  m.text = std::move(text);
  m.position = Point3d(topLeft);
  m.height = height;
  m.referenceWidth = width;
  m.attachment = 1;
  m.style = style;
  return m;
}

Hatch& AddSolidDisc(Database& db, BlockRecord& block, Point2d center, double radius, ObjectId layer) {
  Hatch& h = Append<Hatch>(db, block, layer);
  h.patternName = "SOLID";
  h.solidFill = true;
  HatchPath path;
  path.flags = HatchPath::kExternal;
  HatchEdge arc;
  arc.kind = HatchEdge::Kind::Arc;
  arc.start = center;
  arc.radius = radius;
  arc.startAngle = 0;
  arc.endAngle = 360;
  path.edges.push_back(arc);
  h.paths.push_back(std::move(path));
  h.seedPoints.push_back(center);
  return h;
}

Hatch& AddSolidPolygon(Database& db, BlockRecord& block, std::vector<Point2d> boundary, ObjectId layer) {
  Hatch& h = Append<Hatch>(db, block, layer);
  h.patternName = "SOLID";
  h.solidFill = true;
  h.seedPoints.push_back(Centroid(boundary));
  h.paths.push_back(PolygonPath(std::move(boundary)));
  return h;
}

Hatch& AddAnsi31(Database& db, BlockRecord& block, std::vector<Point2d> boundary, double scale, ObjectId layer) {
  Hatch& h = Append<Hatch>(db, block, layer);
  h.patternName = "ANSI31";
  h.patternType = 1;
  h.patternScale = scale;
  // ANSI31 is one family of 45° lines 3.175 apart; DXF stores the offset already scaled and
  // turned into drawing coordinates.
  const double step = 3.175 * scale / std::sqrt(2.0);
  h.patternLines.push_back(HatchPatternLine{.angle = 45, .base = {}, .offset = {-step, step}, .dashes = {}});
  h.seedPoints.push_back(Centroid(boundary));
  h.paths.push_back(PolygonPath(std::move(boundary)));
  return h;
}

Insert& AddInsert(Database& db, BlockRecord& owner, const BlockRecord& block, Point2d at, double scale, ObjectId layer,
                  const std::vector<std::pair<std::string, std::string>>& values) {
  auto insert = std::make_unique<Insert>();
  insert->block = block.id;
  insert->position = Point3d(at);
  insert->scale = {scale, scale, scale};
  insert->layer = layer;
  auto place = [&](Point3d p) { return Point3d{at.x + p.x * scale, at.y + p.y * scale, 0}; };
  for (const auto& e : block.entities) {
    const auto* def = As<AttDef>(e.get());
    if (!def) continue;
    auto att = std::make_unique<Attrib>();
    att->tag = def->tag;
    att->text = def->text;
    for (const auto& [tag, value] : values)
      if (tag == def->tag) att->text = value;
    att->position = place(def->position);
    if (def->hasAlignPoint()) att->setAlignPoint(place(def->alignPoint()));
    att->height = def->height * scale;
    att->widthFactor = def->widthFactor;
    att->style = def->style;
    att->hAlign = def->hAlign;
    att->vAlign = def->vAlign;
    att->attFlags = def->attFlags;
    att->layer = layer;
    insert->attribs.push_back(std::move(att));
  }
  return db.append(owner, std::move(insert));
}

Dimension& AddLinearDimension(Database& db, BlockRecord& owner, Point2d p1, Point2d p2, bool horizontal, double offset,
                              const DimensionStyle& style) {
  const double s = style.scale;
  const double exo = 2.0 * s, exe = 2.0 * s, tick = 1.0 * s, textGap = 1.0 * s, textHeight = 3.5 * s;

  // Points on the dimension line, and the direction from the measured points towards it.
  Point2d d1, d2;
  Vector2d away;
  if (horizontal) {
    double y = p1.y + offset;
    d1 = {p1.x, y}, d2 = {p2.x, y};
    away = {0, offset >= 0 ? 1.0 : -1.0};
  } else {
    double x = p1.x - offset;
    d1 = {x, p1.y}, d2 = {x, p2.y};
    away = {offset >= 0 ? -1.0 : 1.0, 0};
  }
  const double measurement = horizontal ? std::abs(p2.x - p1.x) : std::abs(p2.y - p1.y);

  BlockRecord& block = db.addBlock("*D");
  auto line = [&](Point2d a, Point2d b) { AddLine(db, block, a, b, {}).colorIndex = kColorByBlock; };
  line(p1 + away * exo, d1 + away * exe);
  line(p2 + away * exo, d2 + away * exe);
  line(d1, d2);
  for (Point2d d : {d1, d2}) line(d - Vector2d{tick, tick}, d + Vector2d{tick, tick});  // architectural ticks

  Point2d mid{(d1.x + d2.x) / 2, (d1.y + d2.y) / 2};
  Point2d textAt = mid + away * textGap;
  TextPlacement place{.height = textHeight, .hAlign = TextHAlign::Center, .rotation = horizontal ? 0 : kPi / 2};
  AddText(db, block, std::to_string(std::lround(measurement)), textAt, {}, style.textStyle, place).colorIndex = kColorByBlock;
  for (Point2d p : {p1, p2, d2}) {
    auto pt = std::make_unique<PointEntity>();
    pt->position = Point3d(p);
    pt->layer = style.defpointsLayer;
    db.append(block, std::move(pt));
  }

  auto dim = std::make_unique<Dimension>();
  dim->layer = style.layer;
  dim->block = block.id;
  dim->dimStyle = style.dimStyle;
  dim->definitionPoint = Point3d(d2);
  dim->textMidPoint = Point3d(textAt + away * (textHeight / 2));
  dim->dimType = 32;  // rotated; the block belongs to this dimension alone
  dim->measurement = measurement;
  dim->subclassData = {Group{100, std::string("AcDbAlignedDimension")},
                       Group{13, p1.x}, Group{23, p1.y}, Group{33, 0.0},
                       Group{14, p2.x}, Group{24, p2.y}, Group{34, 0.0},
                       Group{100, std::string("AcDbRotatedDimension")},
                       Group{50, horizontal ? 0.0 : 90.0}};
  return db.append(owner, std::move(dim));
}

// ---- sheet frames ----------------------------------------------------------------------------

namespace {

// Where the four attribute values sit in the title block, relative to its lower-left corner (mm).
struct TitleField {
  const char* tag;
  Point2d at;
  double height;
};
constexpr std::array<TitleField, 4> kTitleFields{{
    {"图号", {150, 33}, 3.5},
    {"比例", {150, 23}, 3.5},
    {"日期", {150, 13}, 3.5},
    {"图名", {60, 13}, 5},
}};

const std::string& FieldValue(const TitleValues& v, std::string_view tag) {
  if (tag == "图号") return v.number;
  if (tag == "图名") return v.name;
  if (tag == "比例") return v.scale;
  return v.date;
}

void AddTitleAttDefs(Database& db, BlockRecord& block, const FrameStyle& style, Point2d titleOrigin) {
  for (const TitleField& f : kTitleFields) {
    auto def = std::make_unique<AttDef>();
    def->tag = f.tag;
    std::string prompt("输入");
    def->prompt = prompt.append(f.tag);
    def->text.assign(1, '-');  // default value
    Point3d at{titleOrigin.x + f.at.x, titleOrigin.y + f.at.y, 0};
    def->position = at;
    def->setAlignPoint(at);
    def->hAlign = TextHAlign::Middle;
    def->height = f.height;
    def->widthFactor = 0.7;
    def->style = style.textStyle;
    def->layer = style.textLayer;
    db.append(block, std::move(def));
  }
  block.blockFlags |= BlockRecord::kHasAttributes;
}

}  // namespace

Point2d DrawBorder(Database& db, BlockRecord& block, const FrameStyle& style, Point2d at, const Sheet& sheet, double scale,
                   bool looseLines) {
  Point2d outerMax{at.x + sheet.width * scale, at.y + sheet.height * scale};
  Point2d innerMin{at.x + sheet.binding * scale, at.y + sheet.margin * scale};
  Point2d innerMax{outerMax.x - sheet.margin * scale, outerMax.y - sheet.margin * scale};
  if (looseLines) {
    AddRectangleLines(db, block, at, outerMax, style.frameLayer);
    AddRectangleLines(db, block, innerMin, innerMax, style.frameLayer);
  } else {
    AddRectangle(db, block, at, outerMax, style.frameLayer);
    AddRectangle(db, block, innerMin, innerMax, style.frameLayer, 0.9 * scale);
  }
  return {innerMax.x, innerMin.y};
}

Point2d DrawTitleGrid(Database& db, BlockRecord& block, const FrameStyle& style, Point2d corner, double k) {
  Point2d o{corner.x - kTitleWidth * k, corner.y};
  auto P = [&](double x, double y) { return Point2d{o.x + x * k, o.y + y * k}; };
  const ObjectId frame = style.frameLayer, text = style.textLayer, hz = style.textStyle;
  AddRectangle(db, block, P(0, 0), P(kTitleWidth, kTitleHeight), frame);
  AddLine(db, block, P(0, 10), P(180, 10), frame);
  AddLine(db, block, P(0, 20), P(180, 20), frame);
  AddLine(db, block, P(100, 30), P(180, 30), frame);
  AddLine(db, block, P(100, 0), P(100, 40), frame);
  AddLine(db, block, P(120, 0), P(120, 40), frame);
  AddLine(db, block, P(20, 0), P(20, 20), frame);
  const TextPlacement mid{.height = 3.5 * k, .hAlign = TextHAlign::Middle};
  AddText(db, block, "某建筑设计研究院", P(50, 30), text, hz, {.height = 6 * k, .hAlign = TextHAlign::Middle});
  AddText(db, block, "图名", P(10, 15), text, hz, mid);
  AddText(db, block, "设计", P(10, 5), text, hz, mid);
  AddText(db, block, "张工    审核  李工", P(24, 3.5), text, hz, {.height = 3.5 * k});
  AddText(db, block, "图号", P(110, 35), text, hz, mid);
  AddText(db, block, "比例", P(110, 25), text, hz, mid);
  AddText(db, block, "日期", P(110, 15), text, hz, mid);
  AddText(db, block, "版本", P(110, 5), text, hz, mid);
  AddText(db, block, "A", P(150, 5), text, hz, mid);
  return o;
}

void DrawFrame(Database& db, BlockRecord& block, const FrameStyle& style, Point2d at, const Sheet& sheet, double scale,
               bool looseLines, const TitleValues& values) {
  Point2d corner = DrawBorder(db, block, style, at, sheet, scale, looseLines);
  Point2d o = DrawTitleGrid(db, block, style, corner, scale);
  for (const TitleField& f : kTitleFields)
    AddText(db, block, FieldValue(values, f.tag), {o.x + f.at.x * scale, o.y + f.at.y * scale}, style.textLayer,
            style.textStyle, {.height = f.height * scale, .hAlign = TextHAlign::Middle});
}

BlockRecord& MakeFrameBlock(Database& db, const FrameStyle& style, std::string name, const Sheet& sheet) {
  BlockRecord& block = db.addBlock(std::move(name));
  block.insertUnits = 4;
  Point2d corner = DrawBorder(db, block, style, {0, 0}, sheet, 1, false);
  AddTitleAttDefs(db, block, style, DrawTitleGrid(db, block, style, corner, 1));
  return block;
}

BlockRecord& MakePlainFrameBlock(Database& db, const FrameStyle& style, std::string name, const Sheet& sheet) {
  BlockRecord& block = db.addBlock(std::move(name));
  block.insertUnits = 4;
  DrawTitleGrid(db, block, style, DrawBorder(db, block, style, {0, 0}, sheet, 1, false), 1);
  return block;
}

BlockRecord& MakeTitleBlock(Database& db, const FrameStyle& style) {
  BlockRecord& block = db.addBlock("标题栏");
  block.insertUnits = 4;
  AddTitleAttDefs(db, block, style, DrawTitleGrid(db, block, style, {0, 0}, 1));
  return block;
}

std::vector<std::pair<std::string, std::string>> AttributeValues(const TitleValues& v) {
  return {{"图号", v.number}, {"图名", v.name}, {"比例", v.scale}, {"日期", v.date}};
}

Box DrawingArea(Point2d at, const Sheet& sheet, double scale, double gap) {
  // Inside the inner border and inside the sheet shrunk by a fiftieth of each side, where
  // recognition looks for a sheet's content.
  const double fx = sheet.width / 50, fy = sheet.height / 50;
  const double left = std::max(sheet.binding, fx) + gap, right = std::max(sheet.margin, fx) + gap;
  const double bottom = std::max(sheet.margin + kTitleHeight, fy) + gap, top = std::max(sheet.margin, fy) + gap;
  return {{at.x + left * scale, at.y + bottom * scale},
          {at.x + (sheet.width - right) * scale, at.y + (sheet.height - top) * scale}};
}

Box SheetBox(Point2d at, const Sheet& sheet, double scale) {
  return {at, {at.x + sheet.width * scale, at.y + sheet.height * scale}};
}

}  // namespace tv::samples::kit
