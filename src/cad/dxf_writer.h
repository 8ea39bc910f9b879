#pragma once
// Writes a drawing database as an ASCII DXF that CAD programs open.
#include <string>

#include "cad/database.h"
#include "cad/status.h"

namespace tv::cad {

struct DxfWriteOptions {
  DxfVersion version = DxfVersion::R2018;  // R2013 or R2018
};

// Writes through a temporary file in the same folder and renames it over `path`, so an existing
// file is never left half written.
Status WriteDxf(const Database& db, const std::string& path, const DxfWriteOptions& options = {});
std::string WriteDxfToString(const Database& db, const DxfWriteOptions& options = {});

}  // namespace tv::cad
