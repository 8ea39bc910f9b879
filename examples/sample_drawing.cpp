#include "examples/sample_drawing.h"

#include <array>
#include <string>
#include <vector>

#include "examples/sample_kit.h"

namespace tv::samples {

using namespace tv::cad;
using namespace tv::samples::kit;

namespace {

// A-series sheets with the binding margin on the left and the other margins, in mm.
struct Sheet {
  double width, height, binding, margin;
  Sheet portrait() const { return {height, width, binding, margin}; }
};
constexpr Sheet kA1{841, 594, 25, 10};
constexpr Sheet kA2{594, 420, 25, 10};
constexpr Sheet kA3{420, 297, 25, 5};

constexpr double kTitleWidth = 180, kTitleHeight = 40;  // title block, mm

struct TitleValues {
  std::string number, name, scale, date;
};

struct Sample {
  explicit Sample(Database& d) : db(d), ms(*d.modelSpace()) {}

  Database& db;
  BlockRecord& ms;
  ObjectId frame, axis, axisText, wall, column, hatch, text, dim, beam, door, defpoints, vport, construction, obsolete,
      base;
  ObjectId hz, dimStyle;

  DimensionStyle dimensionStyle(double scale) const { return {dim, defpoints, hz, dimStyle, scale}; }
};

// ---- set-up ----------------------------------------------------------------------------------

void SetUpHeader(Database& db) {
  Header& h = db.header;
  h.setInt("$INSUNITS", 4);
  h.setInt("$MEASUREMENT", 1);
  h.setInt("$LUNITS", 2);
  h.setDouble("$LTSCALE", 100);
  h.setDouble("$CELTSCALE", 1);
  h.setDouble("$DIMSCALE", 100);
  h.setInt("$PSLTSCALE", 1);
  h.setInt("$TILEMODE", 1);
  h.setPoint("$EXTMIN", {0, -35000, 0});
  h.setPoint("$EXTMAX", {229700, 59400, 0});
  h.setPoint("$LIMMIN", {0, 0}, false);
  h.setPoint("$LIMMAX", {84100, 59400}, false);
  h.setString("$TEXTSTYLE", "HZ", 7);
  h.setString("$CLAYER", "0", 8);
}

void SetUpTables(Sample& s) {
  Database& db = s.db;
  AddStandardLinetypes(db);
  s.frame = AddLayer(db, "图框", 7, "Continuous", 50).id;
  s.axis = AddLayer(db, "AXIS", 1, "DASHED", 18).id;
  s.axisText = AddLayer(db, "AXIS_TEXT", 3).id;
  s.wall = AddLayer(db, "WALL", 2, "Continuous", 50).id;
  s.column = AddLayer(db, "COLUMN", 4, "Continuous", 35).id;
  s.hatch = AddLayer(db, "HATCH", 8, "Continuous", 13).id;
  s.text = AddLayer(db, "TEXT", 7).id;
  s.dim = AddLayer(db, "DIM", 3, "Continuous", 18).id;
  s.beam = AddLayer(db, "BEAM", 5, "HIDDEN", 25).id;
  s.door = AddLayer(db, "门窗", 6).id;
  s.base = AddLayer(db, "底图", 9).id;
  db.findLayer("底图")->setLocked(true);
  Layer& construction = AddLayer(db, "辅助线", 140);
  construction.on = false;
  s.construction = construction.id;
  Layer& obsolete = AddLayer(db, "旧版本", 30);
  obsolete.setFrozen(true);
  s.obsolete = obsolete.id;
  Layer& vport = AddLayer(db, "VPORT", 8);
  vport.plottable = false;
  s.vport = vport.id;
  Layer& defpoints = AddLayer(db, "Defpoints", 7);
  defpoints.plottable = false;
  s.defpoints = defpoints.id;

  TextStyle& hz = db.addTextStyle("HZ");
  hz.fontFile = "gbenor.shx";
  hz.bigFontFile = "gbcbig.shx";
  hz.widthFactor = 0.7;
  s.hz = hz.id;

  TableRecord& dimStyle = db.addTableRecord("DIMSTYLE", "DIM100");
  // DIMSCALE, DIMASZ, DIMEXO, DIMEXE, DIMTXT, DIMGAP, DIMTSZ (ticks instead of arrows)
  dimStyle.groups = {Group{40, 100.0}, Group{41, 2.0}, Group{42, 2.0}, Group{44, 2.0},
                     Group{140, 3.5},  Group{147, 1.0}, Group{142, 1.0}};
  s.dimStyle = dimStyle.id;
}

// ---- frames ----------------------------------------------------------------------------------

// Outer and inner border of a sheet at `scale`, lower-left corner at `at`; returns the inner
// border's lower-right corner, where the title block goes.
Point2d DrawBorder(Sample& s, BlockRecord& block, Point2d at, const Sheet& sheet, double scale, bool looseLines) {
  Point2d outerMax{at.x + sheet.width * scale, at.y + sheet.height * scale};
  Point2d innerMin{at.x + sheet.binding * scale, at.y + sheet.margin * scale};
  Point2d innerMax{outerMax.x - sheet.margin * scale, outerMax.y - sheet.margin * scale};
  if (looseLines) {
    AddRectangleLines(s.db, block, at, outerMax, s.frame);
    AddRectangleLines(s.db, block, innerMin, innerMax, s.frame);
  } else {
    AddRectangle(s.db, block, at, outerMax, s.frame);
    AddRectangle(s.db, block, innerMin, innerMax, s.frame, 0.9 * scale);
  }
  return {innerMax.x, innerMin.y};
}

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

// The title block's grid and fixed labels; its lower-right corner at `corner`.
Point2d DrawTitleGrid(Sample& s, BlockRecord& block, Point2d corner, double k) {
  Point2d o{corner.x - kTitleWidth * k, corner.y};
  auto P = [&](double x, double y) { return Point2d{o.x + x * k, o.y + y * k}; };
  AddRectangle(s.db, block, P(0, 0), P(kTitleWidth, kTitleHeight), s.frame);
  AddLine(s.db, block, P(0, 10), P(180, 10), s.frame);
  AddLine(s.db, block, P(0, 20), P(180, 20), s.frame);
  AddLine(s.db, block, P(100, 30), P(180, 30), s.frame);
  AddLine(s.db, block, P(100, 0), P(100, 40), s.frame);
  AddLine(s.db, block, P(120, 0), P(120, 40), s.frame);
  AddLine(s.db, block, P(20, 0), P(20, 20), s.frame);
  const TextPlacement mid{.height = 3.5 * k, .hAlign = TextHAlign::Middle};
  AddText(s.db, block, "某建筑设计研究院", P(50, 30), s.text, s.hz, {.height = 6 * k, .hAlign = TextHAlign::Middle});
  AddText(s.db, block, "图名", P(10, 15), s.text, s.hz, mid);
  AddText(s.db, block, "设计", P(10, 5), s.text, s.hz, mid);
  AddText(s.db, block, "张工    审核  李工", P(24, 3.5), s.text, s.hz, {.height = 3.5 * k});
  AddText(s.db, block, "图号", P(110, 35), s.text, s.hz, mid);
  AddText(s.db, block, "比例", P(110, 25), s.text, s.hz, mid);
  AddText(s.db, block, "日期", P(110, 15), s.text, s.hz, mid);
  AddText(s.db, block, "版本", P(110, 5), s.text, s.hz, mid);
  AddText(s.db, block, "A", P(150, 5), s.text, s.hz, mid);
  return o;
}

const std::string& FieldValue(const TitleValues& v, std::string_view tag) {
  if (tag == "图号") return v.number;
  if (tag == "图名") return v.name;
  if (tag == "比例") return v.scale;
  return v.date;
}

// A frame drawn in place: border, title grid and the values as plain TEXT.
void DrawFrame(Sample& s, Point2d at, const Sheet& sheet, double scale, bool looseLines, const TitleValues& values) {
  Point2d corner = DrawBorder(s, s.ms, at, sheet, scale, looseLines);
  Point2d o = DrawTitleGrid(s, s.ms, corner, scale);
  for (const TitleField& f : kTitleFields)
    AddText(s.db, s.ms, FieldValue(values, f.tag), {o.x + f.at.x * scale, o.y + f.at.y * scale}, s.text, s.hz,
            {.height = f.height * scale, .hAlign = TextHAlign::Middle});
}

void AddTitleAttDefs(Sample& s, BlockRecord& block, Point2d titleOrigin) {
  for (const TitleField& f : kTitleFields) {
    auto def = std::make_unique<AttDef>();
    def->tag = f.tag;
    std::string prompt("输入");
    def->prompt = prompt.append(f.tag);
    def->text.assign(1, '-');  // default value
    Point3d at{titleOrigin.x + f.at.x, titleOrigin.y + f.at.y, 0};
    def->position = at;
    def->alignPoint = at;
    def->hasAlignPoint = true;
    def->hAlign = TextHAlign::Middle;
    def->height = f.height;
    def->widthFactor = 0.7;
    def->style = s.hz;
    def->layer = s.text;
    s.db.append(block, std::move(def));
  }
  block.blockFlags |= BlockRecord::kHasAttributes;
}

// A whole sheet frame as a block in paper millimetres, base point at its lower-left corner.
BlockRecord& MakeFrameBlock(Sample& s, std::string name, const Sheet& sheet) {
  BlockRecord& block = s.db.addBlock(std::move(name));
  block.insertUnits = 4;
  Point2d corner = DrawBorder(s, block, {0, 0}, sheet, 1, false);
  AddTitleAttDefs(s, block, DrawTitleGrid(s, block, corner, 1));
  return block;
}

// The title block alone, base point at its lower-right corner (the inner border's corner).
BlockRecord& MakeTitleBlock(Sample& s) {
  BlockRecord& block = s.db.addBlock("标题栏");
  block.insertUnits = 4;
  AddTitleAttDefs(s, block, DrawTitleGrid(s, block, {0, 0}, 1));
  return block;
}

std::vector<std::pair<std::string, std::string>> AttributeValues(const TitleValues& v) {
  return {{"图号", v.number}, {"图名", v.name}, {"比例", v.scale}, {"日期", v.date}};
}

// ---- contents --------------------------------------------------------------------------------

void DrawAxisGrid(Sample& s, const std::vector<double>& xs, const std::vector<double>& ys, double over) {
  const double r = 400, h = 500;
  const TextPlacement bubbleText{.height = h, .hAlign = TextHAlign::Middle};
  for (std::size_t i = 0; i < xs.size(); ++i) {
    Point2d top{xs[i], ys.back() + over};
    AddLine(s.db, s.ms, {xs[i], ys.front() - 1500}, top, s.axis);
    Point2d c{top.x, top.y + r};
    AddCircle(s.db, s.ms, c, r, s.axisText);
    AddText(s.db, s.ms, std::to_string(i + 1), c, s.axisText, s.hz, bubbleText);
  }
  for (std::size_t j = 0; j < ys.size(); ++j) {
    Point2d left{xs.front() - over, ys[j]};
    AddLine(s.db, s.ms, left, {xs.back() + 1500, ys[j]}, s.axis);
    Point2d c{left.x - r, left.y};
    AddCircle(s.db, s.ms, c, r, s.axisText);
    AddText(s.db, s.ms, std::string(1, static_cast<char>('A' + j)), c, s.axisText, s.hz, bubbleText);
  }
}

void DrawFloorPlan(Sample& s) {
  std::vector<double> xs, ys;
  for (int i = 0; i < 8; ++i) xs.push_back(10000 + i * 8400);
  for (int j = 0; j < 5; ++j) ys.push_back(12000 + j * 7200);
  DrawAxisGrid(s, xs, ys, 6000);

  const double x0 = xs.front(), x1 = xs.back(), y0 = ys.front(), y1 = ys.back();
  const double corridorLow = 24600, corridorHigh = 27000;
  AddRectangle(s.db, s.ms, {x0, y0}, {x1, y1}, s.wall, 200);
  AddPolyline(s.db, s.ms, {{x0, corridorLow}, {x1, corridorLow}}, false, s.wall, 200);
  AddPolyline(s.db, s.ms, {{x0, corridorHigh}, {x1, corridorHigh}}, false, s.wall, 200);
  for (std::size_t i = 1; i + 1 < xs.size(); ++i) {
    AddPolyline(s.db, s.ms, {{xs[i], y0}, {xs[i], corridorLow}}, false, s.wall, 200);
    AddPolyline(s.db, s.ms, {{xs[i], corridorHigh}, {xs[i], y1}}, false, s.wall, 200);
  }
  // Doors: a leaf and its swing on each office off the corridor.
  for (std::size_t i = 0; i + 1 < xs.size(); ++i) {
    double x = xs[i] + 1200;
    AddLine(s.db, s.ms, {x, corridorLow}, {x, corridorLow - 1000}, s.door);
    auto& swing = s.db.append(s.ms, std::make_unique<Arc>());
    swing.layer = s.door;
    swing.center = {x, corridorLow, 0};
    swing.radius = 1000;
    swing.startAngle = 3 * kPi / 2;
    swing.endAngle = 0;
  }

  for (double x : xs)
    for (double y : ys) {
      AddCircle(s.db, s.ms, {x, y}, 300, s.column);
      AddSolidDisc(s.db, s.ms, {x, y}, 300, s.hatch);
    }

  // Stair core between axes 4 and 5 above the corridor: concrete walls, treads.
  const double cx0 = xs[3], cx1 = xs[4];
  AddAnsi31(s.db, s.ms, {{cx0, 33400}, {cx1, 33400}, {cx1, 34000}, {cx0, 34000}}, 50, s.hatch);
  AddAnsi31(s.db, s.ms, {{cx0, corridorHigh}, {cx0 + 600, corridorHigh}, {cx0 + 600, 33400}, {cx0, 33400}}, 50, s.hatch);
  for (double y = corridorHigh + 1500; y < 33000; y += 280) AddLine(s.db, s.ms, {cx0 + 800, y}, {cx1 - 800, y}, s.wall);
  AddSolidPolygon(s.db, s.ms, {{60000, 28000}, {61200, 28000}, {61200, 29200}, {60000, 29200}}, s.hatch);

  static constexpr const char* kRooms[] = {"办公室", "会议室", "档案室", "办公室", "办公室", "卫生间", "设备间"};
  const TextPlacement room{.height = 500, .hAlign = TextHAlign::Middle};
  for (std::size_t i = 0; i + 1 < xs.size(); ++i) {
    double x = (xs[i] + xs[i + 1]) / 2;
    AddText(s.db, s.ms, kRooms[i], {x, (y0 + corridorLow) / 2}, s.text, s.hz, room);
    AddText(s.db, s.ms, i == 3 ? "楼梯间" : kRooms[(i + 3) % 7], {x, (corridorHigh + y1) / 2}, s.text, s.hz, room);
  }
  AddText(s.db, s.ms, "走廊", {(x0 + x1) / 2, (corridorLow + corridorHigh) / 2}, s.text, s.hz, room);
  AddText(s.db, s.ms, "一层平面图  1:100", {(x0 + x1) / 2, 6500}, s.text, s.hz, {.height = 700, .hAlign = TextHAlign::Center});
  AddMText(s.db, s.ms,
           "说明：\\P1. 本图尺寸以毫米为单位，标高以米为单位。\\P2. 未注明墙体厚度均为200。\\P3. 柱混凝土强度等级C30。",
           {72000, 40000}, 350, 10000, s.text, s.hz);

  const DimensionStyle ds = s.dimensionStyle(100);
  for (std::size_t i = 0; i + 1 < xs.size(); ++i) AddLinearDimension(s.db, s.ms, {xs[i], y1}, {xs[i + 1], y1}, true, 2500, ds);
  AddLinearDimension(s.db, s.ms, {x0, y1}, {x1, y1}, true, 4000, ds);
  for (std::size_t j = 0; j + 1 < ys.size(); ++j) AddLinearDimension(s.db, s.ms, {x0, ys[j]}, {x0, ys[j + 1]}, false, 2500, ds);
  AddLinearDimension(s.db, s.ms, {x0, y0}, {x0, y1}, false, 4000, ds);

  // Layers in other states: construction lines (off), a dropped scheme (frozen), the site (locked).
  AddLine(s.db, s.ms, {x0, y0}, {x1, y1}, s.construction);
  AddLine(s.db, s.ms, {x0, y1}, {x1, y0}, s.construction);
  AddText(s.db, s.ms, "作废方案", {20000, 45000}, s.obsolete, s.hz, {.height = 1000});
  AddRectangle(s.db, s.ms, {18000, 44000}, {30000, 47000}, s.obsolete);
  AddRectangle(s.db, s.ms, {4000, 2500}, {64000, 50000}, s.base);
}

void DrawBeamPlan(Sample& s, Point2d o) {
  std::vector<double> xs, ys;
  for (int i = 0; i < 5; ++i) xs.push_back(o.x + 6000 + i * 9000);
  for (int j = 0; j < 4; ++j) ys.push_back(o.y + 8000 + j * 8000);
  for (double x : xs)
    for (double y : ys) {
      AddRectangle(s.db, s.ms, {x - 250, y - 250}, {x + 250, y + 250}, s.column);
      AddSolidPolygon(s.db, s.ms, {{x - 250, y - 250}, {x + 250, y - 250}, {x + 250, y + 250}, {x - 250, y + 250}}, s.hatch);
    }
  for (double y : ys) {
    AddLine(s.db, s.ms, {xs.front(), y - 125}, {xs.back(), y - 125}, s.beam);
    AddLine(s.db, s.ms, {xs.front(), y + 125}, {xs.back(), y + 125}, s.beam);
    AddText(s.db, s.ms, "KL1(4) 250×600", {xs.front() + 1000, y + 300}, s.text, s.hz, {.height = 350});
  }
  for (double x : xs) {
    AddLine(s.db, s.ms, {x - 125, ys.front()}, {x - 125, ys.back()}, s.beam);
    AddLine(s.db, s.ms, {x + 125, ys.front()}, {x + 125, ys.back()}, s.beam);
  }
  AddText(s.db, s.ms, "二层梁平法配筋图  1:100", {(xs.front() + xs.back()) / 2, o.y + 3500}, s.text, s.hz,
          {.height = 700, .hAlign = TextHAlign::Center});
}

void DrawSectionDetails(Sample& s, Point2d o) {
  // Drawn at 1:20 on a 1:100 sheet: five times the real size.
  const double k = 5;
  Point2d c0{o.x + 8000, o.y + 10000};
  AddRectangle(s.db, s.ms, c0, {c0.x + 600 * k, c0.y + 600 * k}, s.column);
  AddAnsi31(s.db, s.ms, {c0, {c0.x + 600 * k, c0.y}, {c0.x + 600 * k, c0.y + 600 * k}, {c0.x, c0.y + 600 * k}}, 50, s.hatch);
  AddRectangle(s.db, s.ms, {c0.x + 30 * k, c0.y + 30 * k}, {c0.x + 570 * k, c0.y + 570 * k}, s.beam);
  for (int i = 0; i < 4; ++i)
    for (int j = 0; j < 4; ++j) {
      if (i != 0 && i != 3 && j != 0 && j != 3) continue;
      Point2d bar{c0.x + (60 + i * 160) * k, c0.y + (60 + j * 160) * k};
      AddSolidDisc(s.db, s.ms, bar, 12.5 * k, s.hatch);
    }
  AddText(s.db, s.ms, "KZ1 600×600", {c0.x, c0.y - 1000}, s.text, s.hz, {.height = 350});
  AddText(s.db, s.ms, "12Φ25  Φ10@100/200", {c0.x, c0.y - 1600}, s.text, s.hz, {.height = 350});

  Point2d b0{o.x + 18000, o.y + 10000};
  AddRectangle(s.db, s.ms, b0, {b0.x + 250 * k, b0.y + 600 * k}, s.column);
  AddAnsi31(s.db, s.ms, {b0, {b0.x + 250 * k, b0.y}, {b0.x + 250 * k, b0.y + 600 * k}, {b0.x, b0.y + 600 * k}}, 50, s.hatch);
  AddText(s.db, s.ms, "KL1 250×600", {b0.x, b0.y - 1000}, s.text, s.hz, {.height = 350});
  AddText(s.db, s.ms, "柱、梁截面详图  1:20", {o.x + 17000, o.y + 5000}, s.text, s.hz, {.height = 700, .hAlign = TextHAlign::Center});
}

void DrawDoorSchedule(Sample& s, Point2d o) {
  static constexpr std::array<std::array<const char*, 4>, 6> kRows{{
      {"编号", "尺寸(宽×高)", "数量", "备注"},
      {"M1", "1000×2100", "14", "木门"},
      {"M2", "1500×2100", "2", "乙级防火门"},
      {"C1", "1800×1500", "22", "断桥铝合金窗"},
      {"C2", "1200×1500", "6", "断桥铝合金窗"},
      {"FM1", "1000×2100", "2", "甲级防火门"},
  }};
  const double left = o.x + 4000, top = o.y + 36000, rowH = 900;
  const std::array<double, 5> cols{0, 3000, 9000, 12000, 21000};
  AddText(s.db, s.ms, "门窗表", {left + 10500, top + 800}, s.text, s.hz, {.height = 700, .hAlign = TextHAlign::Center});
  for (std::size_t r = 0; r <= kRows.size(); ++r)
    AddLine(s.db, s.ms, {left, top - r * rowH}, {left + cols.back(), top - r * rowH}, s.text);
  for (double c : cols) AddLine(s.db, s.ms, {left + c, top}, {left + c, top - kRows.size() * rowH}, s.text);
  for (std::size_t r = 0; r < kRows.size(); ++r)
    for (std::size_t c = 0; c < 4; ++c)
      AddText(s.db, s.ms, kRows[r][c], {left + cols[c] + 200, top - (r + 1) * rowH + 250}, s.text, s.hz, {.height = 350});
}

void DrawNotesSheet(Sample& s, Point2d o) {
  AddText(s.db, s.ms, "设计说明", {o.x + 21000, o.y + 26500}, s.text, s.hz, {.height = 1000, .hAlign = TextHAlign::Center});
  AddMText(s.db, s.ms,
           "一、工程概况\\P本工程为某办公楼，地上五层，框架结构，设计使用年限50年。\\P"
           "二、设计依据\\P1. 建设单位提供的设计任务书。\\P2. 国家现行有关规范、规程。\\P"
           "三、其他\\P{\\fSimSun|b1;所有尺寸以现场复核为准。}",
           {o.x + 4000, o.y + 25000}, 500, 32000, s.text, s.hz);
}

void DrawStrayRectangles(Sample& s) {
  AddRectangle(s.db, s.ms, {50000, -30000}, {56000, -26000}, s.wall);  // a room outline
  AddRectangle(s.db, s.ms, {60000, -30000}, {60297, -29790}, {});       // A4 proportions, but 1:1
  AddRectangle(s.db, s.ms, {70000, -30000}, {90000, -27000}, s.construction);
}

// ---- layouts ---------------------------------------------------------------------------------

Viewport& AddViewport(Sample& s, BlockRecord& paper, std::int16_t number, Point2d center, double width, double height,
                      Point2d viewCenter, double viewHeight) {
  auto vp = std::make_unique<Viewport>();
  vp->layer = s.vport;
  vp->number = number;
  vp->status = number;
  vp->center = Point3d(center);
  vp->width = width;
  vp->height = height;
  vp->viewCenter = viewCenter;
  vp->viewHeight = viewHeight;
  return s.db.append(paper, std::move(vp));
}

void SetPaper(Layout& layout, const Sheet& sheet, std::string plotter, std::string media, double margin) {
  PlotSettings& p = layout.plot;
  p.plotterName = std::move(plotter);
  p.paperSize = std::move(media);
  p.paperWidth = sheet.width;
  p.paperHeight = sheet.height;
  p.marginLeft = p.marginRight = p.marginBottom = p.marginTop = margin;
  p.styleSheet = "monochrome.ctb";
  p.plotType = 5;
  p.standardScaleType = 16;
  layout.limitsMin = {0, 0};
  layout.limitsMax = {sheet.width, sheet.height};
  layout.extentsMin = {0, 0, 0};
  layout.extentsMax = {sheet.width, sheet.height, 0};
}

void SetUpLayouts(Sample& s, const BlockRecord& titleBlock) {
  Database& db = s.db;
  // The default drawing's first layout becomes 布局1.
  Layout* first = db.findLayout("Layout1");
  if (!first) first = &db.addLayout("Layout1");
  if (Dictionary* layouts = db.namedDictionary("ACAD_LAYOUT")) {
    layouts->remove(first->name);
    layouts->set("布局1", first->id);
  }
  first->name = "布局1";
  SetPaper(*first, kA1, "Tarvex PDF.pc3", "ISO_full_bleed_A1_(841.00_x_594.00_MM)", 0);
  BlockRecord& paper1 = *db.blockOf(*first);
  AddViewport(s, paper1, 1, {420.5, 297}, 1009.2, 712.8, {420.5, 297}, 712.8);
  Point2d corner1 = DrawBorder(s, paper1, {0, 0}, kA1, 1, false);
  AddInsert(db, paper1, titleBlock, corner1, 1, s.frame, AttributeValues({"建施-01A", "一层平面图（布局）", "1:100", "2024.03"}));
  AddViewport(s, paper1, 2, {380, 320}, 680, 460, {39400, 26400}, 46000);   // 1:100
  AddViewport(s, paper1, 3, {775, 330}, 90, 110, {39400, 30200}, 5500);     // stair core at 1:50

  Layout& second = db.addLayout("布局2");
  SetPaper(second, kA3, "None", "ISO_A3_(420.00_x_297.00_MM)", 7.5);
  BlockRecord& paper2 = *db.blockOf(second);
  AddViewport(s, paper2, 1, {210, 148.5}, 504, 356.4, {210, 148.5}, 356.4);
  Point2d corner2 = DrawBorder(s, paper2, {0, 0}, kA3, 1, false);
  AddInsert(db, paper2, titleBlock, corner2, 1, s.frame, AttributeValues({"结施-02A", "二层梁平法配筋图（布局）", "1:200", "2024.03"}));
  AddViewport(s, paper2, 2, {220, 170}, 370, 230, {114000, 20000}, 46000);  // 1:200
}

void AddTarvexDictionary(Database& db) {
  Dictionary& tarvex = db.ensureDictionary(*db.rootDictionary(), "TARVEX");
  db.ensureXrecord(tarvex, "VERSION").data = {Group{90, std::int64_t{20240329}}};
  Dictionary& plot = db.ensureDictionary(tarvex, "PLOT");
  db.ensureXrecord(plot, "DEFAULT").data = {Group{1, std::string("A1")}, Group{1, std::string("monochrome.ctb")},
                                            Group{40, 100.0}, Group{70, std::int64_t{1}}};
}

}  // namespace

Database BuildSampleDrawing() {
  Database db = Database::createDefault();
  SetUpHeader(db);
  Sample s(db);
  SetUpTables(s);

  BlockRecord& a2 = MakeFrameBlock(s, "A2图框", kA2);
  BlockRecord& a3 = MakeFrameBlock(s, "A3图框", kA3);
  BlockRecord& title = MakeTitleBlock(s);

  DrawFrame(s, {0, 0}, kA1, 100, false, {"建施-01", "一层平面图", "1:100", "2024.03"});
  DrawFloorPlan(s);

  AddInsert(db, s.ms, a2, {90000, 0}, 100, s.frame, AttributeValues({"结施-02", "二层梁平法配筋图", "1:100", "2024.03"}));
  DrawBeamPlan(s, {90000, 0});

  AddInsert(db, s.ms, a3, {155000, 0}, 100, s.frame, AttributeValues({"结施-05", "柱、梁截面详图", "1:20", "2024.03"}));
  DrawSectionDetails(s, {155000, 0});

  DrawFrame(s, {200000, 0}, kA3.portrait(), 100, false, {"建施-09", "门窗表", "1:100", "2024.03"});
  DrawDoorSchedule(s, {200000, 0});

  DrawFrame(s, {0, -35000}, kA3, 100, true, {"建施-00", "设计说明", "-", "2024.03"});
  DrawNotesSheet(s, {0, -35000});

  DrawStrayRectangles(s);
  SetUpLayouts(s, title);
  AddTarvexDictionary(db);
  return db;
}

}  // namespace tv::samples
