#pragma once
// Drawings of plain frames for end-to-end runs of the program.
#include <memory>
#include <utility>
#include <vector>

#include "cad/database.h"
#include "entity_builders.h"

namespace tv::test_support {

// A closed polyline frame in `space` from (x0, y0), `width` by `height`; with `across`, a line
// across its middle so that it is not blank.
inline cad::LwPolyline& AddFrame(cad::Database& db, cad::BlockRecord& space, double x0, double y0, double width,
                                 double height, bool across = true) {
  cad::LwPolyline& frame = db.append(
      space, MakeLwPolyline({{x0, y0}, {x0 + width, y0}, {x0 + width, y0 + height}, {x0, y0 + height}}, true));
  if (across)
    db.append(space, MakeLine({x0 + width * 0.1, y0 + height * 0.5, 0}, {x0 + width * 0.9, y0 + height * 0.5, 0}));
  return frame;
}

// Frames of the given sizes (drawing units) in one row of model space, 5000 apart, each with a
// line across.
inline cad::Database FramesInARow(const std::vector<std::pair<double, double>>& sizes) {
  cad::Database db = cad::Database::createDefault();
  double x = 0;
  for (const auto& [width, height] : sizes) {
    AddFrame(db, *db.modelSpace(), x, 0, width, height);
    x += width + 5000;
  }
  return db;
}

}  // namespace tv::test_support
