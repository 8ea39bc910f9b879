#pragma once
// One sheet of a drawing carried into a drawing of its own: the sheet's entities with the blocks,
// layers, linetypes, text styles and dimension styles they use, and nothing else of the source.
// The source is only read.
#include <string>
#include <vector>

#include "cad/database.h"

namespace tv::cad {

struct SheetCopyRequest {
  ObjectId space;               // the block record the entities lie in (model space or a layout's)
  std::vector<ObjectId> ids;    // the sheet's entities, in drawing order
  Point3d base;                 // the sheet's mid-point: it lands on the origin of the copy
  bool asBlock = true;          // one reference of block `blockName`; else the entities themselves
  std::string blockName;
  std::string layoutName;       // a layout sheet's layout in the copy; empty keeps the source's name
  bool withModelSpace = false;  // the whole model space too, for the sheet's viewports to show
  double viewWidth = 0, viewHeight = 0;  // the view of the copy, centred at the origin
  Point2d limitsMin, limitsMax;  // the sheet's rectangle in the copy (none when equal)
  std::string sourceFolder;      // where pictures named relative to the source are looked for
};

// A new drawing holding the sheet. The copy keeps the source's code page, linetype scales and
// "Standard" text style, the image definitions, groups and dictionary styles its entities use;
// a layout sheet goes to the copy's current layout, with the source layout's plot settings.
// Extents and limits are the copy's own, and its view (the layout's own viewport for a layout
// sheet) looks at the sheet.
Database CopySheet(const Database& src, const SheetCopyRequest& request);

}  // namespace tv::cad
