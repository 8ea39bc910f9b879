#pragma once
// Drawing helpers shared by the sample builders: one call per entity, with its layer.
#include <string>
#include <vector>

#include "cad/database.h"

namespace tv::samples::kit {

cad::Layer& AddLayer(cad::Database& db, std::string name, std::int16_t color, std::string_view linetype = "Continuous",
                     std::int16_t lineweight = cad::kLineweightDefault);
// DASHED, CENTER and HIDDEN with their usual dash patterns (mm).
void AddStandardLinetypes(cad::Database& db);

cad::Line& AddLine(cad::Database& db, cad::BlockRecord& block, cad::Point2d a, cad::Point2d b, cad::ObjectId layer);
cad::LwPolyline& AddPolyline(cad::Database& db, cad::BlockRecord& block, std::vector<cad::Point2d> points, bool closed,
                             cad::ObjectId layer, double width = 0);
cad::LwPolyline& AddRectangle(cad::Database& db, cad::BlockRecord& block, cad::Point2d min, cad::Point2d max,
                              cad::ObjectId layer, double width = 0);
// The same rectangle as four loose lines.
void AddRectangleLines(cad::Database& db, cad::BlockRecord& block, cad::Point2d min, cad::Point2d max, cad::ObjectId layer);
cad::Circle& AddCircle(cad::Database& db, cad::BlockRecord& block, cad::Point2d center, double radius, cad::ObjectId layer);

struct TextPlacement {
  double height = 3.5;
  cad::TextHAlign hAlign = cad::TextHAlign::Left;
  cad::TextVAlign vAlign = cad::TextVAlign::Baseline;
  double rotation = 0;  // radians
  double widthFactor = 0.7;
};
// `at` is the insertion point for left/baseline text, else the alignment point.
cad::Text& AddText(cad::Database& db, cad::BlockRecord& block, std::string text, cad::Point2d at, cad::ObjectId layer,
                   cad::ObjectId style, const TextPlacement& place = {});
cad::MText& AddMText(cad::Database& db, cad::BlockRecord& block, std::string text, cad::Point2d topLeft, double height,
                     double width, cad::ObjectId layer, cad::ObjectId style);

// Hatches: a solid disc, a solid or ANSI31 polygon.
cad::Hatch& AddSolidDisc(cad::Database& db, cad::BlockRecord& block, cad::Point2d center, double radius, cad::ObjectId layer);
cad::Hatch& AddSolidPolygon(cad::Database& db, cad::BlockRecord& block, std::vector<cad::Point2d> boundary, cad::ObjectId layer);
cad::Hatch& AddAnsi31(cad::Database& db, cad::BlockRecord& block, std::vector<cad::Point2d> boundary, double scale,
                      cad::ObjectId layer);

// An insert with attribute values for the block's ATTDEFs by tag (tags without a value keep the
// ATTDEF's default). Scale is uniform, rotation zero.
cad::Insert& AddInsert(cad::Database& db, cad::BlockRecord& owner, const cad::BlockRecord& block, cad::Point2d at,
                       double scale, cad::ObjectId layer, const std::vector<std::pair<std::string, std::string>>& values = {});

// A linear dimension from p1 to p2, horizontal or vertical, its line `offset` away (+y / -x side
// for positive offsets), with its own *D block of lines, ticks, points and text, as CAD programs
// store them. `scale` is the drawing scale (100 for 1:100): text 3.5 mm and ticks 2 mm on paper.
struct DimensionStyle {
  cad::ObjectId layer, defpointsLayer, textStyle, dimStyle;
  double scale = 100;
};
cad::Dimension& AddLinearDimension(cad::Database& db, cad::BlockRecord& owner, cad::Point2d p1, cad::Point2d p2,
                                   bool horizontal, double offset, const DimensionStyle& style);

}  // namespace tv::samples::kit
