#pragma once
// Opens a drawing file of any kind this platform knows: DXF directly, DWG through a converter.
#include <string>

#include "cad/dxf_reader.h"

namespace tv::cad {

// True when the file starts like a DWG ("AC10xx" version magic).
bool LooksLikeDwg(const std::string& path);

// Reads a DXF, or a DWG converted to DXF by `dwg2dxf` when that program is installed. The
// conversion goes to a private temporary folder, never next to the drawing.
DxfReadResult ReadDrawing(const std::string& path, const DxfReadOptions& options = {});

}  // namespace tv::cad
