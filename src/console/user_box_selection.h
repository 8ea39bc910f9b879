#pragma once
// Window and crossing selection with a box given in user coordinates. The drawing model selects
// with boxes along the world axes; under a turned UCS the user's box is a turned rectangle, so its
// candidates are refined against the entities' outlines in user coordinates.
#include <functional>
#include <vector>

#include "cad/database.h"
#include "cad/selection_index.h"

namespace tv::console {

// The index's space is searched.
std::vector<ObjectId> SelectByUserBox(const cad::Database& db, cad::SelectionIndex& index, Point3d corner1,
                                      Point3d corner2, bool crossing, const Matrix3d& ucsToWorld,
                                      const std::function<bool(const cad::Entity&)>& accept);

}  // namespace tv::console
