#pragma once
// Where the file of an external reference is: the path the referencing drawing saved, taken as it
// is when absolute and from the referencing drawing's folder when relative; failing that, the
// file name alone beside the referencing drawing, as offices move sets of drawings between
// machines and drive letters.
#include <string>
#include <vector>

namespace tv::cad {

// The places to look, in order, for a saved path (`\` or `/` separated) of a drawing in `folder`.
std::vector<std::string> XrefCandidates(const std::string& savedPath, const std::string& folder);

// True when `path` names a regular file whose name says it is a drawing (.dxf or .dwg).
bool IsDrawingFileName(const std::string& path);

// The first candidate that is a drawing file; empty when none is.
std::string ResolveXrefPath(const std::string& savedPath, const std::string& folder);

}  // namespace tv::cad
