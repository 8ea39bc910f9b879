#pragma once
// Reads a DXF file (ASCII or binary, R12 to R2018) into a drawing database.
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "cad/database.h"

namespace tv::cad {

struct DxfReadOptions {
  // Called now and then with the bytes read so far and the file size.
  std::function<void(std::uint64_t done, std::uint64_t total)> progress;
};

struct DxfReadResult {
  std::optional<Database> db;     // set when the file was read
  std::string error;              // why not, naming the file and the line
  std::vector<std::string> warnings;  // what was repaired or skipped
  bool ok() const { return db.has_value(); }
};

DxfReadResult ReadDxf(const std::string& path, const DxfReadOptions& options = {});
// `name` stands for the file in messages.
DxfReadResult ReadDxfFromBytes(std::string bytes, const std::string& name = "<memory>");

}  // namespace tv::cad
