#pragma once
// Opens a drawing file of any kind this platform knows: DXF directly, DWG through a converter.
#include <string>

#include "cad/dxf_reader.h"

namespace tv::cad {

// True when the file starts like a DWG ("AC10xx" version magic).
bool LooksLikeDwg(const std::string& path);

// Reads a DXF, or a DWG converted to DXF by the DWG converter (dwg_converter.h) when it is
// installed; the result's `source` then says so. The conversion goes to a private temporary
// folder, removed before this returns, never next to the drawing.
DxfReadResult ReadDrawing(const std::string& path, const DxfReadOptions& options = {});

}  // namespace tv::cad
