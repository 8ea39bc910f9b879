#pragma once
// What the plot engine is asked to draw: a window of one space of a drawing, fitted onto one page
// of a medium, in one output format, with one plot style. Plain values; the caller fills them from
// the layout's plot settings and the plotter files.
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cad/geometry.h"
#include "cad/object_id.h"

namespace tv::render {

struct PlotStyleTable;
class SpaceIndex;

enum class PlotFormat { Pdf, Png, Jpg, Eps, Plt, Dwf };  // DWF is written as DWFx

struct Rgb {
  std::uint8_t r = 0, g = 0, b = 0;
  constexpr bool operator==(const Rgb&) const = default;
};

// The paper of the page. Bounds in millimetres, as the medium is listed (long side across for
// landscape media). A turned medium is fed the other way round: the page is heightMm wide.
struct PlotMedium {
  double widthMm = 0, heightMm = 0;
  double printableLlx = 0, printableLly = 0, printableUrx = 0, printableUry = 0;  // all 0 = the whole paper
  bool turned = false;
};

// How colours and lineweights come out on paper.
struct PlotStyle {
  enum class Kind { AllBlack, ObjectColors, AllBlue, Table };
  Kind kind = Kind::ObjectColors;
  // Kind::Table: per colour index 1..255 (at 0..254), the pen colour (nullopt = the object's) and
  // the lineweight in mm (nullopt = the object's).
  struct Pen {
    std::optional<Rgb> color;
    std::optional<double> lineweightMm;
  };
  std::vector<Pen> pens;

  static PlotStyle allBlack() { return {Kind::AllBlack, {}}; }
  static PlotStyle objectColors() { return {Kind::ObjectColors, {}}; }
  static PlotStyle allBlue() { return {Kind::AllBlue, {}}; }
};

// The pens of a colour-dependent style table as read from its file. A pen colour of pure white
// stands for "the object's colour": white pens on white paper would lose the drawing, and the
// colour table of the plotting system is written that way.
PlotStyle PlotStyleFromTable(const PlotStyleTable& table);

struct PlotRequest {
  // The space to plot: model space, or the paper space block of a layout. A null id plots model space.
  cad::ObjectId spaceBlock;
  // The window in view coordinates: the space's coordinates turned by -viewTwist (radians), as a
  // plan view twisted on screen shows them. An empty window (min == max) plots the space's extents.
  cad::Point2d windowMin, windowMax;
  double viewTwist = 0;
  PlotMedium medium;
  bool fitToPrintable = true;   // else `scale` paper mm per drawing unit
  double scale = 1;
  bool centered = true;         // else the window's lower left corner sits on the printable area's
  PlotFormat format = PlotFormat::Pdf;
  double rasterDpi = 150;       // PNG and JPG
  double enlarge = 1;           // rasters get this many more pixels each way
  Rgb background{255, 255, 255};  // rasters and DWF; PDF, EPS and PLT pages stay unpainted
  PlotStyle style;
  bool lineweights = true;      // false: every line at the thinnest pen
  bool textAsGeometry = false;  // text as filled outlines instead of searchable text
  int jpegQuality = 90;
  std::string outputPath;
  std::string drawingFolder;    // where image files named without a usable path are looked for
  // Where the space's entities lie, when the caller keeps one for many windows of the space; an
  // index that no longer describes the space is ignored.
  const SpaceIndex* index = nullptr;
};

struct PlotResult {
  bool ok = false;
  std::string message;             // why it failed, in the words shown to the user
  std::vector<std::string> notes;  // what was left out (a missing image file …)
  int widthPx = 0, heightPx = 0;   // rasters
  std::size_t entitiesDrawn = 0;
};

}  // namespace tv::render
