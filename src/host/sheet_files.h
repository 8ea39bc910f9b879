#pragma once
// One sheet of the working drawing written as a drawing file of its own, and what cutting a sheet
// out needs to know about the drawing: the layouts' own viewports, the clips of viewports, the
// "Standard" styles that are put aside while sheets are cut.
#include <string>
#include <utility>
#include <vector>

#include "host/geometry.h"
#include "host/object_id.h"
#include "host/xrecords.h"

namespace tv::host {

// The extension of the drawing files this host writes (".dxf").
std::string DrawingFileExtension();

// The viewports of the current space that are layouts' own (the sheet of paper itself).
ObjectIdArray OverallViewportIds();
// The entity a viewport is clipped by; null when it has no clip or isn't a viewport.
ObjectId ViewportClipOf(ObjectId viewportId);

// Renames the dimension style `from` and the entries `from` of the multiline style and the
// multileader style dictionaries to `to`. An entry that isn't there is skipped.
void RenameStandardStyles(const std::string& from, const std::string& to);

struct SheetFile {
  ObjectIdArray ids;            // the sheet's entities in the current space
  Point3d base;                 // lands on the origin of the file
  bool asBlock = true;          // the sheet as one block reference
  std::string blockName;        // that block's name
  std::string layoutName;       // a layout sheet's layout name in the file; empty keeps it
  bool withModelSpace = false;  // model space too, for the sheet's viewports
  double viewWidth = 0, viewHeight = 0;
  Point2d limitsMin, limitsMax;  // the sheet's rectangle in the file
  std::string sourceFolder;      // pictures named relative to the drawing are found from here
  // Named records the file gets (by key), such as its own plot settings.
  std::vector<std::pair<std::string, std::vector<XrecordItem>>> namedRecords;
};

// Tells the host of a sheet file written, or not written and why, so that it lists it with the
// plotted files.
void NoteSheetFile(const std::string& path, bool written, const std::string& why);

// Writes the sheet to `path`, the working drawing untouched. False with the reason in `why`.
bool WriteSheetFile(const SheetFile& sheet, const std::string& path, std::string& why);

}  // namespace tv::host
