#pragma once
// Drawing helpers shared by the sample builders: one call per entity, with its layer.
#include <string>
#include <utility>
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

// ---- sheet frames ----------------------------------------------------------------------------

// A paper sheet, long side first for landscape, with the binding margin on the left and the
// other margins, in mm.
struct Sheet {
  double width, height, binding, margin;
  constexpr Sheet portrait() const { return {height, width, binding, margin}; }
};
inline constexpr Sheet kA0{1189, 841, 25, 10};
inline constexpr Sheet kA1{841, 594, 25, 10};
inline constexpr Sheet kA2{594, 420, 25, 10};
inline constexpr Sheet kA3{420, 297, 25, 5};
inline constexpr Sheet kA4{297, 210, 25, 5};
// A2 lengthened by half its long side (加长).
inline constexpr Sheet kA2Plus{891, 420, 25, 10};

// The title block (mm): 180 wide so that it fills an A4 portrait sheet's inner width.
inline constexpr double kTitleWidth = 180, kTitleHeight = 40;

// Layers and text style of frames and their title blocks.
struct FrameStyle {
  cad::ObjectId frameLayer, textLayer, textStyle;
};

struct TitleValues {
  std::string number, name, scale, date;
};

// A rectangle of the drawing, lower-left and upper-right corners.
struct Box {
  cad::Point2d min, max;
  double width() const { return max.x - min.x; }
  double height() const { return max.y - min.y; }
  // The point at fractions (u, v) of the box.
  cad::Point2d at(double u, double v) const { return {min.x + u * width(), min.y + v * height()}; }
};

// Cells of the title grid that hold values, relative to the grid's lower-left corner (mm).
inline constexpr Box kCellDrawingNo{{120, 30}, {180, 40}};
inline constexpr Box kCellScale{{120, 20}, {180, 30}};
inline constexpr Box kCellDate{{120, 10}, {180, 20}};
inline constexpr Box kCellRevision{{120, 0}, {180, 10}};
inline constexpr Box kCellTitle{{20, 10}, {100, 20}};
// The lower-left corner of a sheet's title grid, in the sheet's own millimetres.
constexpr cad::Point2d TitleGridOrigin(const Sheet& sheet) {
  return {sheet.width - sheet.margin - kTitleWidth, sheet.margin};
}

// How a frame is drawn.
enum class FrameKind { Polyline, Block, Lines };

// Outer and inner border of a sheet at `scale`, lower-left corner at `at`; returns the inner
// border's lower-right corner, where the title block goes.
cad::Point2d DrawBorder(cad::Database& db, cad::BlockRecord& block, const FrameStyle& style, cad::Point2d at,
                        const Sheet& sheet, double scale, bool looseLines);
// The title block's grid and fixed labels, its lower-right corner at `corner`, `k` drawing units
// per mm; returns its lower-left corner.
cad::Point2d DrawTitleGrid(cad::Database& db, cad::BlockRecord& block, const FrameStyle& style, cad::Point2d corner, double k);
// A frame drawn in place: border (polylines or loose lines), title grid and the values as TEXT.
void DrawFrame(cad::Database& db, cad::BlockRecord& block, const FrameStyle& style, cad::Point2d at, const Sheet& sheet,
               double scale, bool looseLines, const TitleValues& values);
// A whole sheet frame as a block in paper millimetres, base point at its lower-left corner, with
// ATTDEFs 图号/图名/比例/日期 in the title block.
cad::BlockRecord& MakeFrameBlock(cad::Database& db, const FrameStyle& style, std::string name, const Sheet& sheet);
// The same frame without ATTDEFs: its values are written over it in the drawing.
cad::BlockRecord& MakePlainFrameBlock(cad::Database& db, const FrameStyle& style, std::string name, const Sheet& sheet);
// The title block alone, base point at its lower-right corner (the inner border's corner).
cad::BlockRecord& MakeTitleBlock(cad::Database& db, const FrameStyle& style);
std::vector<std::pair<std::string, std::string>> AttributeValues(const TitleValues& v);
// Where a sheet's drawing goes: inside the inner border and inside the sheet shrunk by a fiftieth
// of each side, less `gap` mm all round, above the title block's height.
Box DrawingArea(cad::Point2d at, const Sheet& sheet, double scale, double gap = 5);
// The sheet's outer rectangle.
Box SheetBox(cad::Point2d at, const Sheet& sheet, double scale);

}  // namespace tv::samples::kit
