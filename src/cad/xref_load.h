#pragma once
// Loads the external references of a drawing: the model space of each referenced file becomes the
// content of its xref block, and the file's layers, linetypes, text styles, dimension styles and
// named blocks join the drawing under the xref's name ("XREF|NAME"). Layer "0" and "Defpoints" and
// the linetypes ByBlock, ByLayer and Continuous stay the drawing's own, as in CAD programs.
//
// Nested references attached in a referenced file are loaded too (their block joins as
// "XREF|NESTED" and their own names as "NESTED|NAME"); nested overlays are not. A file is read
// once per load, however many blocks, layouts or nesting paths reach it; a reference back into a
// file already on the path is refused.
#include <cstddef>
#include <string>
#include <vector>

#include "cad/database.h"

namespace tv::cad {

// Referenced files nested deeper than this are left out.
inline constexpr int kMaxXrefDepth = 16;
// Entities copied out of referenced files in one load at most; the rest are left out.
inline constexpr std::size_t kMaxXrefEntities = 20'000'000;

enum class XrefState {
  Loaded,
  NotFound,    // no drawing file at the saved path, beside the drawing or under its name
  Unreadable,  // found, but not readable as a drawing
  Cycle,       // refers back to a file on its own path
  TooDeep,     // nested past kMaxXrefDepth
  Overlay,     // a nested overlay: not carried into the referencing drawing
};

struct XrefInfo {
  std::string name;          // the xref block's name in the drawing ("A|B" for one nested in A)
  std::string savedPath;     // as the referencing drawing saved it
  std::string resolvedPath;  // the file read; empty unless found
  bool overlay = false;
  int depth = 1;             // 1 = referenced by the drawing itself
  XrefState state = XrefState::NotFound;
};

struct XrefLoadResult {
  std::vector<XrefInfo> xrefs;         // in the order met, parents before their nested ones
  std::vector<std::string> notices;    // what the user must learn, each once
  std::vector<std::string> filesRead;  // every file read, once each
  std::size_t fileReads = 0;           // drawings read and parsed
};

// Loads the references of `db`, read from `drawingPath`. A drawing without xref blocks is left
// untouched. The files read are noted in db.externalFiles as well.
XrefLoadResult LoadXrefs(Database& db, const std::string& drawingPath);

}  // namespace tv::cad
