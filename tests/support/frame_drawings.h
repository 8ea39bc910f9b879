#pragma once
// Drawings of plain frames for end-to-end runs of the program.
#include <memory>
#include <utility>
#include <vector>

#include "cad/database.h"

namespace tv::test_support {

// Closed polyline frames of the given sizes (drawing units) in one row, 5000 apart, each with a
// line across its middle so that none is blank.
inline cad::Database FramesInARow(const std::vector<std::pair<double, double>>& sizes) {
  cad::Database db = cad::Database::createDefault();
  double x = 0;
  for (const auto& [width, height] : sizes) {
    auto pl = std::make_unique<cad::LwPolyline>();
    pl->points = {{x, 0}, {x + width, 0}, {x + width, height}, {x, height}};
    pl->polyFlags = cad::LwPolyline::kClosed;
    db.append(*db.modelSpace(), std::move(pl));
    auto line = std::make_unique<cad::Line>();
    line->start = {x + width * 0.1, height * 0.5, 0};
    line->end = {x + width * 0.9, height * 0.5, 0};
    db.append(*db.modelSpace(), std::move(line));
    x += width + 5000;
  }
  return db;
}

}  // namespace tv::test_support
