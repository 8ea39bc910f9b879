#pragma once
// The DWG converter: LibreDWG run by node through the bridge script tools/dwg/dwg2dxf.mjs, as a
// program of its own, bounded in time and memory. It writes a DXF of the DWG's own version into
// a folder the caller owns, with a report of what it repaired and what it could not carry over.
#include <filesystem>
#include <optional>
#include <string>

#include "cad/dwg_process.h"
#include "cad/dxf_reader.h"

namespace tv::cad {

// The bridge script: $TVPLOT_DWG_CONVERTER, else the one installed beside the program
// (../share/tvplot/dwg), else the source tree's tools/dwg. Empty when none is there.
std::string FindDwgBridge();

// node on PATH; empty when there is none.
std::string FindNode();

// The bounds, with the overrides $TVPLOT_DWG_TIMEOUT (seconds) and $TVPLOT_DWG_MAX_RSS_MB.
ProcessLimits DwgConverterLimits();

// "AC1032" → "R2018"; empty for a version this table does not know.
std::string DwgRelease(const std::string& version);

struct DwgConversion {
  std::filesystem::path dxf;   // set when the DXF was written
  std::string failure;         // why not, in words for the user (no file name)
  DrawingSource source;        // what the bridge reported
};

// Converts `dwg` (an absolute path) into `folder`/drawing.dxf.
DwgConversion ConvertDwg(const std::string& node, const std::string& bridge, const std::filesystem::path& dwg,
                         const std::filesystem::path& folder, const ProcessLimits& limits);

}  // namespace tv::cad
