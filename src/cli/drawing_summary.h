#pragma once
// What `tvplot info` tells about a drawing, gathered from the database once and then shown as
// text or JSON.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cad/database.h"
#include "cad/dxf_reader.h"

namespace tv::cli {

struct ClassCount {
  std::string name;  // DXF name: "LINE", "TCH_TEXT" …
  std::size_t count = 0;
};

// Entities of one space (or of all block definitions together), counted by class.
struct SpaceCounts {
  std::string label;  // layout name ("Model" for model space); empty for the block total
  std::string block;  // "*Model_Space", "*Paper_Space0" …
  bool modelSpace = false;
  std::vector<ClassCount> counts;  // most frequent first
  std::size_t total = 0;
  std::size_t blockCount = 0;  // block definitions in the total (the block total only)
};

struct LayerSummary {
  std::string name;
  bool on = true, frozen = false, locked = false, plottable = true;
  std::int16_t colorIndex = 7;
  std::int32_t trueColor = -1;  // 0x00RRGGBB, -1 none
  std::string linetype;
  std::int16_t lineweight = -3;  // hundredths of a mm; -1 ByLayer, -2 ByBlock, -3 default
};

struct LayoutSummary {
  std::string name;
  int tab = 0;
  std::string block;
  std::string paperSize;  // canonical media name
  double paperWidth = 0, paperHeight = 0;  // mm
  std::string plotter;
  std::string styleSheet;
  std::size_t viewports = 0;  // floating viewports; the paper space view itself is not counted
};

struct BlockSummary {
  std::string name;
  bool anonymous = false, xref = false, hasAttributes = false;
  std::string xrefPath;
  std::size_t entities = 0;
};

// An external reference and the file it was loaded from.
struct XrefSummary {
  std::string name;
  std::string savedPath;
  std::string resolvedPath;  // empty when no file was found
  std::string state;         // "loaded", "notFound", "unreadable", "cycle", "tooDeep", "overlay"
  bool overlay = false;
  int depth = 1;             // 1 = referenced by the drawing itself
};

// Anonymous blocks of one kind ("*D", "*U" …) when there are too many to list.
struct AnonymousBlockGroup {
  std::string prefix;
  std::size_t count = 0;
  std::size_t entities = 0;
};

struct DictionaryNode {
  std::string key;   // entry name in the parent; empty for the root
  std::string type;  // DXF name of the object: "DICTIONARY", "XRECORD" …; "?" when missing
  std::string handle;
  std::size_t entries = 0;   // dictionaries: all entries; Xrecords: groups
  std::size_t xrecords = 0;  // dictionaries: entries that are Xrecords
  std::vector<DictionaryNode> children;  // sub-dictionaries and Xrecords, depth-limited
  std::size_t omittedChildren = 0;       // beyond the depth or count limit
};

struct DrawingSummary {
  std::string file;
  std::string acadver;      // as in the file ("AC1032")
  std::string release;      // "R2018"
  std::optional<std::string> codePage;
  std::optional<int> insUnits;
  std::optional<int> measurement;
  std::optional<double> ltscale, celtscale;
  std::optional<int> tilemode;
  std::optional<cad::Point3d> extMin, extMax;

  std::vector<SpaceCounts> spaces;  // model space, then each layout's paper space in tab order
  SpaceCounts blockDefinitions;     // every other block together
  std::vector<LayerSummary> layers;
  std::vector<LayoutSummary> layouts;
  std::vector<BlockSummary> blocks;  // named blocks, and anonymous ones unless summarised
  std::vector<AnonymousBlockGroup> anonymousGroups;  // set when anonymous blocks are summarised
  std::optional<DictionaryNode> dictionaries;
  std::vector<XrefSummary> xrefs;  // set by the caller that loaded them; empty without xrefs
  std::size_t warningCount = 0;
  std::vector<std::string> firstWarnings;
  std::optional<cad::DrawingSource> source;  // set for a drawing converted from DWG
};

struct SummaryLimits {
  std::size_t anonymousListLimit = 20;  // more anonymous blocks than this are counted by kind
  int dictionaryDepth = 4;              // levels below the named-object dictionary
  std::size_t dictionaryChildren = 50;  // listed children per dictionary
  std::size_t warnings = 10;            // warnings kept verbatim
};

DrawingSummary SummarizeDrawing(const cad::Database& db, std::string file, const std::vector<std::string>& warnings,
                                const SummaryLimits& limits = {});

// $INSUNITS as "毫米" and "mm"; nullopt past the known codes.
struct UnitName {
  std::string_view chinese;
  std::string_view symbol;
};
std::optional<UnitName> InsUnitsName(int insunits);

}  // namespace tv::cli
