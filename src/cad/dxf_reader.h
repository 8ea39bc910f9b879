#pragma once
// Reads a DXF file (ASCII or binary, R12 to R2018) into a drawing database.
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cad/database.h"

namespace tv::cad {

struct DxfReadOptions {
  // Called now and then with the bytes read so far and the file size.
  std::function<void(std::uint64_t done, std::uint64_t total)> progress;
};

// Where a drawing read through a converter came from, and what the converter said of it.
struct DrawingSource {
  std::string format;     // "DWG"
  std::string version;    // "AC1032"
  std::string release;    // "R2018"; empty when the version is not known
  std::string converter;  // "LibreDWG 0.13.3 (@mlightcad/libredwg-web 0.7.14)"
  std::vector<std::string> readProblems;  // the converter's read errors it went past ("UNHANDLEDCLASS" …)
  // Kinds the converter could not carry over, with their counts: entities, and non-graphical objects.
  std::vector<std::pair<std::string, std::size_t>> droppedEntities, droppedObjects;
  std::vector<std::pair<std::string, std::size_t>> stubs;    // records written without content
  std::size_t layerStatesRepaired = 0, trueColoursDropped = 0, lineBreaksRepaired = 0;
  bool layerStatesKnown = true;  // false: the converter could not read which layers are off
};

struct DxfReadResult {
  std::optional<Database> db;     // set when the file was read
  std::string error;              // why not, naming the file and the line
  std::vector<std::string> warnings;  // what was repaired or skipped
  std::optional<DrawingSource> source;  // set when the file was converted (DWG) before reading
  bool ok() const { return db.has_value(); }
};

DxfReadResult ReadDxf(const std::string& path, const DxfReadOptions& options = {});
// `name` stands for the file in messages.
DxfReadResult ReadDxfFromBytes(std::string bytes, const std::string& name = "<memory>");

}  // namespace tv::cad
