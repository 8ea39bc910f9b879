#include "examples/sample_drawing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <string>
#include <vector>

#include "cad/entity_geometry.h"
#include "examples/sample_kit.h"

namespace tv::samples {

using namespace tv::cad;
using namespace tv::samples::kit;

namespace {

struct Sample {
  explicit Sample(Database& d) : db(d), ms(*d.modelSpace()) {}

  Database& db;
  BlockRecord& ms;
  ObjectId frame, axis, axisText, wall, column, hatch, text, dim, beam, door, defpoints, vport, construction, obsolete,
      base;
  ObjectId hz, dimStyle;

  DimensionStyle dimensionStyle(double scale) const { return {dim, defpoints, hz, dimStyle, scale}; }
  FrameStyle frameStyle() const { return {frame, text, hz}; }
};

// ---- set-up ----------------------------------------------------------------------------------

void SetUpHeader(Database& db, Point3d extMin, Point3d extMax) {
  Header& h = db.header;
  h.setInt("$INSUNITS", 4);
  h.setInt("$MEASUREMENT", 1);
  h.setInt("$LUNITS", 2);
  h.setDouble("$LTSCALE", 100);
  h.setDouble("$CELTSCALE", 1);
  h.setDouble("$DIMSCALE", 100);
  h.setInt("$PSLTSCALE", 1);
  h.setInt("$TILEMODE", 1);
  h.setPoint("$EXTMIN", extMin);
  h.setPoint("$EXTMAX", extMax);
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
  // Tiny ones: a socket symbol left empty, and a sliver a slip of the mouse left behind.
  AddRectangle(s.db, s.ms, {145000, -35000}, {145100, -34900}, s.door);
  AddRectangle(s.db, s.ms, {145500, -35000}, {145800, -34999.9996}, {});
}

// ---- contents of the further sheets ----------------------------------------------------------
// Each fills `a`, a sheet's drawing area, at `k` drawing units per paper millimetre.

void DrawTitleLine(Sample& s, const Box& a, std::string title, double k) {
  Point2d at = a.at(0.5, 0);
  at.y += 4 * k;
  AddText(s.db, s.ms, std::move(title), at, s.text, s.hz, {.height = 5 * k, .hAlign = TextHAlign::Center});
  AddPolyline(s.db, s.ms, {{at.x - 40 * k, at.y - 1.5 * k}, {at.x + 40 * k, at.y - 1.5 * k}}, false, s.text, 0.5 * k);
}

// A structural plan: axes with their bubbles, square columns, beams between them.
void DrawGridPlan(Sample& s, const Box& a, int nx, int ny, double k, std::string title) {
  const double gx0 = a.min.x + 16 * k, gx1 = a.max.x - 8 * k, gy0 = a.min.y + 20 * k, gy1 = a.max.y - 16 * k;
  std::vector<double> xs, ys;
  for (int i = 0; i <= nx; ++i) xs.push_back(gx0 + (gx1 - gx0) * i / nx);
  for (int j = 0; j <= ny; ++j) ys.push_back(gy0 + (gy1 - gy0) * j / ny);
  const double r = 4 * k, half = 2.5 * k;
  const TextPlacement bubbleText{.height = 5 * k, .hAlign = TextHAlign::Middle};
  for (std::size_t i = 0; i < xs.size(); ++i) {
    AddLine(s.db, s.ms, {xs[i], gy0 - 4 * k}, {xs[i], gy1 + 5 * k}, s.axis);
    Point2d c{xs[i], gy1 + 5 * k + r};
    AddCircle(s.db, s.ms, c, r, s.axisText);
    AddText(s.db, s.ms, std::to_string(i + 1), c, s.axisText, s.hz, bubbleText);
  }
  for (std::size_t j = 0; j < ys.size(); ++j) {
    AddLine(s.db, s.ms, {gx0 - 5 * k, ys[j]}, {gx1 + 4 * k, ys[j]}, s.axis);
    Point2d c{gx0 - 5 * k - r, ys[j]};
    AddCircle(s.db, s.ms, c, r, s.axisText);
    AddText(s.db, s.ms, std::string(1, static_cast<char>('A' + j)), c, s.axisText, s.hz, bubbleText);
  }
  for (double x : xs)
    for (double y : ys) {
      AddRectangle(s.db, s.ms, {x - half, y - half}, {x + half, y + half}, s.column);
      AddSolidPolygon(s.db, s.ms, {{x - half, y - half}, {x + half, y - half}, {x + half, y + half}, {x - half, y + half}},
                      s.hatch);
    }
  const double b = 1.25 * k;
  for (std::size_t j = 0; j < ys.size(); ++j) {
    AddLine(s.db, s.ms, {gx0 + half, ys[j] - b}, {gx1 - half, ys[j] - b}, s.beam);
    AddLine(s.db, s.ms, {gx0 + half, ys[j] + b}, {gx1 - half, ys[j] + b}, s.beam);
    AddText(s.db, s.ms, "KL" + std::to_string(j + 1) + "(" + std::to_string(nx) + ") 250×600",
            {gx0 + 8 * k, ys[j] + 3 * k}, s.text, s.hz, {.height = 3.5 * k});
  }
  for (double x : xs) {
    AddLine(s.db, s.ms, {x - b, gy0 + half}, {x - b, gy1 - half}, s.beam);
    AddLine(s.db, s.ms, {x + b, gy0 + half}, {x + b, gy1 - half}, s.beam);
  }
  DrawTitleLine(s, a, std::move(title), k);
}

// An elevation (or section) of `floors` storeys and `bays` window bays, with level marks.
void DrawElevation(Sample& s, const Box& a, int floors, int bays, double k, std::string title) {
  const double x0 = a.min.x + 30 * k, x1 = a.max.x - 10 * k, y0 = a.min.y + 20 * k;
  const double h = (a.max.y - 12 * k - y0) / (floors + 0.4), bay = (x1 - x0) / bays;
  AddPolyline(s.db, s.ms, {{a.min.x + 5 * k, y0}, {a.max.x - 5 * k, y0}}, false, s.wall, 1 * k);
  const double top = y0 + floors * h, parapet = top + 0.3 * h;
  AddPolyline(s.db, s.ms, {{x0, y0}, {x1, y0}, {x1, parapet}, {x0, parapet}}, true, s.wall, 0.5 * k);
  const TextPlacement level{.height = 2.5 * k};
  char buf[32];
  for (int f = 0; f <= floors; ++f) {
    const double y = y0 + f * h;
    if (f > 0) AddLine(s.db, s.ms, {x0, y}, {x1, y}, s.wall);
    AddPolyline(s.db, s.ms, {{x0 - 8 * k, y}, {x0 - 6 * k, y + 2 * k}, {x0 - 10 * k, y + 2 * k}}, true, s.text);
    std::snprintf(buf, sizeof buf, f == 0 ? "±0.000" : "%.3f", f * 3.6);
    AddText(s.db, s.ms, buf, {x0 - 24 * k, y + 2.5 * k}, s.text, s.hz, level);
    if (f == floors) break;
    for (int i = 0; i < bays; ++i) {
      Point2d w0{x0 + (i + 0.25) * bay, y + 0.3 * h}, w1{x0 + (i + 0.75) * bay, y + 0.8 * h};
      AddRectangle(s.db, s.ms, w0, w1, s.door);
      AddLine(s.db, s.ms, {(w0.x + w1.x) / 2, w0.y}, {(w0.x + w1.x) / 2, w1.y}, s.door);
    }
  }
  DrawTitleLine(s, a, std::move(title), k);
}

// A stair at 1:50 in real millimetres: section of two storeys, and the plan above it.
void DrawStairDetail(Sample& s, const Box& a, double k) {
  const int steps = 12;
  const double riser = 150, tread = 280, landing = 1500, storey = 2 * steps * riser;
  const Point2d o = a.at(0.08, 0.12);
  const double xL = o.x + landing, xR = xL + (steps - 1) * tread;
  // Four flights, turning at the landings: up to the right, then back to the left.
  for (int f = 0; f < 4; ++f) {
    const int dir = f % 2 == 0 ? 1 : -1;
    Point2d p{dir > 0 ? xL : xR, o.y + f * steps * riser};
    std::vector<Point2d> flight{p};
    for (int i = 0; i < steps; ++i) {
      p.y += riser;
      flight.push_back(p);
      if (i + 1 == steps) break;
      p.x += dir * tread;
      flight.push_back(p);
    }
    AddPolyline(s.db, s.ms, std::move(flight), false, s.wall, 0.3 * k);
  }
  auto slab = [&](double x0, double x1, double y) {
    std::vector<Point2d> outline{{x0, y - 120}, {x1, y - 120}, {x1, y}, {x0, y}};
    AddRectangle(s.db, s.ms, outline[0], outline[2], s.wall);
    AddAnsi31(s.db, s.ms, std::move(outline), 10, s.hatch);
  };
  static constexpr const char* kLevels[] = {"±0.000", "3.600", "7.200"};
  for (int i = 0; i < 3; ++i) {
    const double y = o.y + i * storey;
    slab(o.x, xL, y);
    if (i < 2) slab(xR, xR + landing, y + storey / 2);
    AddText(s.db, s.ms, kLevels[i], {o.x - 3 * k, y + 1 * k}, s.text, s.hz, {.height = 2.5 * k, .hAlign = TextHAlign::Right});
  }
  AddLine(s.db, s.ms, {xL, o.y + 900}, {xR, o.y + steps * riser + 900}, s.beam);  // handrail
  AddText(s.db, s.ms, "楼梯剖面图  1:50", {(o.x + xR + landing) / 2, o.y - 10 * k}, s.text, s.hz,
          {.height = 5 * k, .hAlign = TextHAlign::Center});

  const Point2d q = a.at(0.1, 0.72);
  const double width = 2 * 1200 + 100, length = 2 * landing + (steps - 1) * tread;
  AddRectangle(s.db, s.ms, q, {q.x + length, q.y + width}, s.wall, 200);
  for (int i = 0; i < steps; ++i) {
    const double x = q.x + landing + i * tread;
    AddLine(s.db, s.ms, {x, q.y}, {x, q.y + width}, s.wall);
  }
  AddLine(s.db, s.ms, {q.x + landing, q.y + width / 2}, {q.x + length - landing, q.y + width / 2}, s.wall);
  AddText(s.db, s.ms, "上", {q.x + length / 2, q.y + width / 4}, s.text, s.hz, {.height = 3.5 * k});
  AddText(s.db, s.ms, "楼梯平面图  1:50", {q.x + length / 2, q.y - 10 * k}, s.text, s.hz,
          {.height = 5 * k, .hAlign = TextHAlign::Center});
}

// A wall and slab joint, drawn `k / 20` times real size (1:20 on paper).
void DrawNodeDetail(Sample& s, const Box& a, double k, std::string title) {
  const double m = k / 20;
  Point2d o = a.at(0.2, 0.15);
  auto P = [&](double x, double y) { return Point2d{o.x + x * m, o.y + y * m}; };
  std::vector<Point2d> wall{P(0, 0), P(200, 0), P(200, 2400), P(0, 2400)};
  std::vector<Point2d> slab{P(200, 1500), P(2200, 1500), P(2200, 1620), P(200, 1620)};
  AddPolyline(s.db, s.ms, wall, true, s.wall);
  AddAnsi31(s.db, s.ms, wall, 10 * m, s.hatch);
  AddPolyline(s.db, s.ms, slab, true, s.wall);
  AddAnsi31(s.db, s.ms, slab, 10 * m, s.hatch);
  for (int i = 0; i < 8; ++i) {
    AddSolidDisc(s.db, s.ms, P(35, 150 + i * 300), 6 * m, s.hatch);
    AddSolidDisc(s.db, s.ms, P(165, 150 + i * 300), 6 * m, s.hatch);
  }
  AddPolyline(s.db, s.ms, {P(35, 1585), P(2150, 1585)}, false, s.beam, 8 * m);
  AddPolyline(s.db, s.ms, {P(1200, 1560), P(1500, 1900), P(2300, 1900)}, false, s.text);
  AddText(s.db, s.ms, "Φ8@200", P(1550, 1950), s.text, s.hz, {.height = 2.5 * k});
  AddPolyline(s.db, s.ms, {P(100, 600), P(500, 800), P(1300, 800)}, false, s.text);
  AddText(s.db, s.ms, "C30混凝土墙", P(550, 850), s.text, s.hz, {.height = 2.5 * k});
  DrawTitleLine(s, a, std::move(title), k);
}

// A site plan: the boundary, roads, the buildings with their names, trees and the north arrow.
void DrawSitePlan(Sample& s, const Box& a, double k) {
  AddPolyline(s.db, s.ms, {a.at(0.08, 0.18), a.at(0.92, 0.16), a.at(0.95, 0.6), a.at(0.85, 0.95), a.at(0.1, 0.92)}, true,
              s.axis, 0.6 * k);
  for (double v : {0.06, 0.1}) AddLine(s.db, s.ms, a.at(0.02, v), a.at(0.98, v), s.wall);
  AddLine(s.db, s.ms, a.at(0.02, 0.08), a.at(0.98, 0.08), s.axis);
  AddText(s.db, s.ms, "建设路", a.at(0.5, 0.065), s.text, s.hz, {.height = 6 * k, .hAlign = TextHAlign::Center});
  struct Building {
    double u0, v0, u1, v1;
    const char* name;
  };
  static constexpr Building kBuildings[] = {{0.15, 0.3, 0.55, 0.5, "1#办公楼  5F"},
                                            {0.15, 0.6, 0.4, 0.85, "2#宿舍楼  6F"},
                                            {0.62, 0.3, 0.85, 0.45, "3#食堂  2F"},
                                            {0.6, 0.2, 0.65, 0.24, "门卫"}};
  for (const Building& b : kBuildings) {
    AddRectangle(s.db, s.ms, a.at(b.u0, b.v0), a.at(b.u1, b.v1), s.wall, 0.5 * k);
    AddText(s.db, s.ms, b.name, a.at((b.u0 + b.u1) / 2, (b.v0 + b.v1) / 2), s.text, s.hz,
            {.height = 4 * k, .hAlign = TextHAlign::Middle});
  }
  for (int i = 0; i < 12; ++i) AddCircle(s.db, s.ms, a.at(0.14 + i * 0.06, 0.25), 3 * k, s.hatch);
  AddSolidPolygon(s.db, s.ms, {a.at(0.5, 0.6), a.at(0.8, 0.6), a.at(0.8, 0.85), a.at(0.5, 0.85)}, s.hatch);
  Point2d north = a.at(0.93, 0.85);
  AddCircle(s.db, s.ms, north, 10 * k, s.text);
  AddPolyline(s.db, s.ms, {{north.x, north.y + 10 * k}, {north.x + 3 * k, north.y - 10 * k}, {north.x - 3 * k, north.y - 10 * k}},
              true, s.text);
  AddText(s.db, s.ms, "北", {north.x, north.y + 13 * k}, s.text, s.hz, {.height = 5 * k, .hAlign = TextHAlign::Center});
  DrawTitleLine(s, a, "场地平面图  1:100", k);
}

// A small location map: streets and the site.
void DrawLocationMap(Sample& s, const Box& a, double k) {
  for (double u : {0.2, 0.7}) AddLine(s.db, s.ms, a.at(u, 0.15), a.at(u, 0.95), s.wall);
  for (double v : {0.3, 0.8}) AddLine(s.db, s.ms, a.at(0.05, v), a.at(0.95, v), s.wall);
  AddSolidPolygon(s.db, s.ms, {a.at(0.3, 0.4), a.at(0.6, 0.4), a.at(0.6, 0.7), a.at(0.3, 0.7)}, s.hatch);
  AddText(s.db, s.ms, "本工程", a.at(0.45, 0.75), s.text, s.hz, {.height = 4 * k, .hAlign = TextHAlign::Center});
  AddText(s.db, s.ms, "建设路", a.at(0.8, 0.32), s.text, s.hz, {.height = 3.5 * k});
  DrawTitleLine(s, a, "区位示意图", k);
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

// A4 detail frame (insert of a portrait frame block) on 布局1 and a loose-line A3 frame on 布局2, each
// beside the layout's main sheet with a viewport of its own, as offices put several sheets on one
// layout.
void SetUpLayouts(Sample& s, const BlockRecord& titleBlock, const BlockRecord& a4Portrait) {
  Database& db = s.db;
  const FrameStyle style = s.frameStyle();
  // The default drawing's first layout becomes 布局1.
  Layout* first = db.findLayout("Layout1");
  if (!first) first = &db.addLayout("Layout1");
  if (Dictionary* layouts = db.namedDictionary("ACAD_LAYOUT")) {
    layouts->remove(first->name);
    layouts->set("布局1", first->id);
  }
  first->name = "布局1";
  SetPaper(*first, kA1, "Tarvex PDF.pc3", "ISO_full_bleed_A1_(841.00_x_594.00_MM)", 0);
  first->extentsMax = {1080, 594, 0};
  BlockRecord& paper1 = *db.blockOf(*first);
  AddViewport(s, paper1, 1, {540, 297}, 1296, 712.8, {540, 297}, 712.8);
  Point2d corner1 = DrawBorder(db, paper1, style, {0, 0}, kA1, 1, false);
  AddInsert(db, paper1, titleBlock, corner1, 1, s.frame, AttributeValues({"建施-01A", "一层平面图（布局）", "1:100", "2024.03"}));
  AddViewport(s, paper1, 2, {380, 320}, 680, 460, {39400, 26400}, 46000);   // 1:100
  AddViewport(s, paper1, 3, {775, 330}, 90, 110, {39400, 30200}, 5500);     // stair core at 1:50
  AddInsert(db, paper1, a4Portrait, {870, 0}, 1, s.frame, AttributeValues({"建施-15A", "楼梯详图（布局）", "1:50", "2024.03"}));
  AddViewport(s, paper1, 4, {985, 166}, 160, 220, {106040, -25000}, 11000);  // the stair section at 1:50

  Layout& second = db.addLayout("布局2");
  SetPaper(second, kA3, "None", "ISO_A3_(420.00_x_297.00_MM)", 7.5);
  second.extentsMax = {870, 297, 0};
  BlockRecord& paper2 = *db.blockOf(second);
  AddViewport(s, paper2, 1, {435, 148.5}, 1044, 356.4, {435, 148.5}, 356.4);
  Point2d corner2 = DrawBorder(db, paper2, style, {0, 0}, kA3, 1, false);
  AddInsert(db, paper2, titleBlock, corner2, 1, s.frame, AttributeValues({"结施-02A", "二层梁平法配筋图（布局）", "1:200", "2024.03"}));
  AddViewport(s, paper2, 2, {220, 170}, 370, 230, {114000, 20000}, 46000);  // 1:200
  DrawFrame(db, paper2, style, {450, 0}, kA3, 1, true, {"结施-21A", "节点详图一（布局）", "1:20", "2024.03"});
  AddViewport(s, paper2, 3, {640, 170}, 200, 160, {127800, -32350}, 3200);  // the wall joint at 1:20
}

void AddTarvexDictionary(Database& db) {
  Dictionary& tarvex = db.ensureDictionary(*db.rootDictionary(), "TARVEX");
  db.ensureXrecord(tarvex, "VERSION").data = {Group{90, std::int64_t{20240329}}};
  Dictionary& plot = db.ensureDictionary(tarvex, "PLOT");
  db.ensureXrecord(plot, "DEFAULT").data = {Group{1, std::string("A1")}, Group{1, std::string("monochrome.ctb")},
                                            Group{40, 100.0}, Group{70, std::int64_t{1}}};
}

// ---- the drawing in a turned UCS --------------------------------------------------------------

// Moves everything drawn into `block` since `mark` from UCS coordinates into world coordinates.
// What can't carry the turn goes rather than stand square to the wrong system.
void ToWorldSince(Database& db, BlockRecord& block, std::size_t mark, const Matrix3d& ucsToWorld) {
  std::vector<ObjectId> refused;
  for (std::size_t i = mark; i < block.entities.size(); ++i)
    if (!TransformBy(*block.entities[i], ucsToWorld)) refused.push_back(block.entities[i]->id);
  for (ObjectId id : refused) db.erase(id);
  if (!refused.empty()) db.purgeErased();
}

// The current UCS in the header, and in the active viewport as CAD programs save it there too;
// the view shows `box` (world, untwisted).
void SetCurrentUcs(Database& db, const CoordSystem& ucs, const Extents3d& box) {
  Header& h = db.header;
  h.setPoint("$UCSORG", ucs.origin);
  h.setPoint("$UCSXDIR", Point3d{} + ucs.xAxis);
  h.setPoint("$UCSYDIR", Point3d{} + ucs.yAxis);
  if (TableRecord* vp = db.activeViewport()) {
    const Point3d c = box.center();
    vp->groups = {Group{10, 0.0},   Group{20, 0.0},   Group{11, 1.0},  Group{21, 1.0},
                  Group{12, c.x},   Group{22, c.y},   Group{40, box.height() * 1.1},
                  Group{41, std::max(1.0, box.width() / box.height())},
                  Group{110, ucs.origin.x}, Group{120, ucs.origin.y}, Group{130, ucs.origin.z},
                  Group{111, ucs.xAxis.x},  Group{121, ucs.xAxis.y},  Group{131, ucs.xAxis.z},
                  Group{112, ucs.yAxis.x},  Group{122, ucs.yAxis.y},  Group{132, ucs.yAxis.z},
                  Group{79, std::int64_t{0}}, Group{146, 0.0}};
  }
}

}  // namespace

Database BuildSampleDrawing() {
  Database db = Database::createDefault();
  SetUpHeader(db, {0, -35000, 0}, {324100, 188900, 0});
  Sample s(db);
  SetUpTables(s);
  const FrameStyle style = s.frameStyle();

  BlockRecord& a2 = MakeFrameBlock(db, style, "A2图框", kA2);
  BlockRecord& a3 = MakeFrameBlock(db, style, "A3图框", kA3);
  BlockRecord& title = MakeTitleBlock(db, style);
  BlockRecord& a0 = MakeFrameBlock(db, style, "A0图框", kA0);
  BlockRecord& a1Portrait = MakeFrameBlock(db, style, "A1竖图框", kA1.portrait());
  BlockRecord& a4Portrait = MakeFrameBlock(db, style, "A4竖图框", kA4.portrait());

  DrawFrame(db, s.ms, style, {0, 0}, kA1, 100, false, {"建施-01", "一层平面图", "1:100", "2024.03"});
  DrawFloorPlan(s);

  AddInsert(db, s.ms, a2, {90000, 0}, 100, s.frame, AttributeValues({"结施-02", "二层梁平法配筋图", "1:100", "2024.03"}));
  DrawBeamPlan(s, {90000, 0});

  AddInsert(db, s.ms, a3, {155000, 0}, 100, s.frame, AttributeValues({"结施-05", "柱、梁截面详图", "1:20", "2024.03"}));
  DrawSectionDetails(s, {155000, 0});

  DrawFrame(db, s.ms, style, {200000, 0}, kA3.portrait(), 100, false, {"建施-09", "门窗表", "1:100", "2024.03"});
  DrawDoorSchedule(s, {200000, 0});

  DrawFrame(db, s.ms, style, {0, -35000}, kA3, 100, true, {"建施-00", "设计说明", "-", "2024.03"});
  DrawNotesSheet(s, {0, -35000});

  DrawStrayRectangles(s);

  // The upper row: A0 both ways, A1 and the lengthened A2 upright.
  AddInsert(db, s.ms, a0, {0, 70000}, 100, s.frame, AttributeValues({"总施-01", "场地平面图", "1:100", "2024.03"}));
  const Box site = DrawingArea({0, 70000}, kA0, 100);
  DrawSitePlan(s, {site.min, site.at(0.68, 1)}, 100);
  // A location map with its own A4 frame, drawn inside the site plan's sheet.
  DrawFrame(db, s.ms, style, {84000, 129000}, kA4, 100, false, {"总施-02", "区位示意图", "1:100", "2024.03"});
  DrawLocationMap(s, DrawingArea({84000, 129000}, kA4, 100), 100);

  DrawFrame(db, s.ms, style, {125000, 70000}, kA0.portrait(), 100, true, {"结施-01", "基础平面布置图", "1:100", "2024.03"});
  DrawGridPlan(s, DrawingArea({125000, 70000}, kA0.portrait(), 100), 4, 7, 100, "基础平面布置图  1:100");

  AddInsert(db, s.ms, a1Portrait, {215000, 70000}, 100, s.frame, AttributeValues({"结施-03", "三层结构平面图", "1:100", "2024.03"}));
  DrawGridPlan(s, DrawingArea({215000, 70000}, kA1.portrait(), 100), 3, 6, 100, "三层结构平面图  1:100");

  DrawFrame(db, s.ms, style, {280000, 70000}, kA2Plus.portrait(), 100, true, {"建施-12", "1-1剖面图", "1:100", "2024.03"});
  DrawElevation(s, DrawingArea({280000, 70000}, kA2Plus.portrait(), 100), 12, 3, 100, "1-1剖面图  1:100");

  // The lengthened A2 lying down, right of the first row.
  DrawFrame(db, s.ms, style, {235000, 0}, kA2Plus, 100, false, {"建施-10", "南立面图", "1:100", "2024.03"});
  DrawElevation(s, DrawingArea({235000, 0}, kA2Plus, 100), 5, 10, 100, "南立面图  1:100");

  // Details in the lower row: A2 upright at 1:50, A4 both ways at 1:20.
  DrawFrame(db, s.ms, style, {100000, -35000}, kA2.portrait(), 50, false, {"建施-15", "楼梯详图", "1:50", "2024.03"});
  DrawStairDetail(s, DrawingArea({100000, -35000}, kA2.portrait(), 50), 50);

  DrawFrame(db, s.ms, style, {125000, -35000}, kA4, 20, true, {"结施-21", "节点详图一", "1:20", "2024.03"});
  DrawNodeDetail(s, DrawingArea({125000, -35000}, kA4, 20), 20, "节点详图一  1:20");

  AddInsert(db, s.ms, a4Portrait, {135000, -35000}, 20, s.frame, AttributeValues({"结施-22", "节点详图二", "1:20", "2024.03"}));
  DrawNodeDetail(s, DrawingArea({135000, -35000}, kA4.portrait(), 20), 20, "节点详图二  1:20");

  SetUpLayouts(s, title, a4Portrait);
  AddTarvexDictionary(db);
  return db;
}

namespace {

// The values of a plain frame, written over its title grid as an office would: `o` is the grid's
// lower-left corner, `k` drawing units per mm.
void WriteLooseTitle(Sample& s, Point2d o, double k, std::string number, std::string title, std::string date) {
  auto P = [&](double x, double y) { return Point2d{o.x + x * k, o.y + y * k}; };
  AddMText(s.db, s.ms, std::move(number), P(kCellDrawingNo.min.x + 6, kCellDrawingNo.max.y - 1), 3 * k, 50 * k, s.text, s.hz);
  AddMText(s.db, s.ms, std::move(title), P(kCellTitle.min.x + 4, kCellTitle.max.y - 1), 3 * k, 76 * k, s.text, s.hz);
  AddText(s.db, s.ms, std::move(date), P(kCellDate.min.x + 8, kCellDate.min.y + 3), s.text, s.hz, {.height = 3.5 * k});
}

}  // namespace

Database BuildTitleBlockDrawing() {
  Database db = Database::createDefault();
  Sample s(db);
  SetUpTables(s);
  const FrameStyle style = s.frameStyle();
  BlockRecord& a1 = MakeFrameBlock(db, style, kTitleFrameA1, kA1);
  BlockRecord& a2 = MakePlainFrameBlock(db, style, kTitleFrameA2, kA2);

  // Inserted twice at one place, as happens when a frame is pasted onto itself: one sheet.
  const auto first = AttributeValues({"结施-01", "基础平面图", "1:100", "2026.11"});
  AddInsert(db, s.ms, a1, {0, 0}, 100, s.frame, first);
  AddInsert(db, s.ms, a1, {0, 0}, 100, s.frame, first);
  DrawGridPlan(s, DrawingArea({0, 0}, kA1, 100), 6, 4, 100, "基础平面图  1:100");

  // Drawn upright, then turned 90 degrees about the insertion point into place.
  const std::size_t mark = s.ms.entities.size();
  const Point2d turned{150000, 0};
  AddInsert(db, s.ms, a1, turned, 100, s.frame, AttributeValues({"结施-02", "一层梁配筋图", "1:100", "2026.11"}));
  DrawGridPlan(s, DrawingArea(turned, kA1, 100), 6, 4, 100, "一层梁配筋图  1:100");
  ToWorldSince(db, s.ms, mark, Matrix3d::rotation(std::numbers::pi / 2, Vector3d::zAxis(), Point3d(turned)));

  const Point2d plain{0, -60000};
  AddInsert(db, s.ms, a2, plain, 100, s.frame);
  WriteLooseTitle(s, plain + Vector2d{TitleGridOrigin(kA2).x * 100, TitleGridOrigin(kA2).y * 100}, 100, "建施\\P-03",
                  "\\L一层平面图\\l\\P（局部）", "2026.11.25");
  DrawGridPlan(s, DrawingArea(plain, kA2, 100), 5, 3, 100, "一层平面图  1:100");

  const Point2d half{70000, -60000};
  AddInsert(db, s.ms, a2, half, 50, s.frame);
  WriteLooseTitle(s, half + Vector2d{TitleGridOrigin(kA2).x * 50, TitleGridOrigin(kA2).y * 50}, 50, "建施\\P-04",
                  "{\\fSimHei|b1|i0;楼梯详图}", "2026.11.25");
  DrawGridPlan(s, DrawingArea(half, kA2, 50), 3, 2, 50, "楼梯详图  1:50");

  SetUpHeader(db, {0, -60000, 0}, {150000, 84100, 0});
  return db;
}

Database BuildUcsDrawing() {
  Database db = Database::createDefault();
  Sample s(db);
  SetUpTables(s);
  const FrameStyle style = s.frameStyle();
  BlockRecord& a3 = MakeFrameBlock(db, style, "A3图框", kA3);

  const double angle = DegToRad(30);
  const CoordSystem ucs{{20000, 10000, 0}, {std::cos(angle), std::sin(angle), 0}, {-std::sin(angle), std::cos(angle), 0}};
  const Matrix3d ucsToWorld = ucs.toWorld();

  // Drawn in UCS coordinates, then turned into place.
  const std::size_t mark = s.ms.entities.size();
  DrawFrame(db, s.ms, style, {0, 0}, kA3, 100, false, {"结施-31", "四层结构平面图", "1:100", "2024.05"});
  DrawGridPlan(s, DrawingArea({0, 0}, kA3, 100), 4, 3, 100, "四层结构平面图  1:100");
  AddInsert(db, s.ms, a3, {50000, 0}, 100, s.frame, AttributeValues({"结施-32", "墙板节点详图", "1:20", "2024.05"}));
  DrawNodeDetail(s, DrawingArea({50000, 0}, kA3, 100), 100, "墙板节点详图  1:20");
  DrawFrame(db, s.ms, style, {0, 37000}, kA3, 100, true, {"建施-31", "东立面图", "1:100", "2024.05"});
  DrawElevation(s, DrawingArea({0, 37000}, kA3, 100), 4, 8, 100, "东立面图  1:100");
  ToWorldSince(db, s.ms, mark, ucsToWorld);

  // Square to World: drawn before the UCS was turned.
  const Point2d world{-60000, -50000};
  DrawFrame(db, s.ms, style, world, kA3, 100, false, {"建施-30", "屋顶平面图", "1:100", "2024.05"});
  DrawGridPlan(s, DrawingArea(world, kA3, 100), 4, 3, 100, "屋顶平面图  1:100");

  Extents3d box(Point3d(world), Point3d{world.x + kA3.width * 100, world.y + kA3.height * 100, 0});
  const Point2d far{50000 + kA3.width * 100, 37000 + kA3.height * 100};  // of the turned frames, in the UCS
  for (Point2d corner : {Point2d{0, 0}, Point2d{far.x, 0}, far, Point2d{0, far.y}})
    box.add(ucsToWorld.transform(Point3d(corner)));
  SetUpHeader(db, {box.min.x, box.min.y, 0}, {box.max.x, box.max.y, 0});
  db.header.setPoint("$LIMMIN", {box.min.x, box.min.y}, false);
  db.header.setPoint("$LIMMAX", {box.max.x, box.max.y}, false);
  SetCurrentUcs(db, ucs, box);
  return db;
}

}  // namespace tv::samples
