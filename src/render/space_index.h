#pragma once
// Where the entities of one space lie, so that a plot of a window draws only what can reach it.
// A batch plots hundreds of windows of one model space: measuring every entity once and looking
// the window up keeps each page to the cost of its own content.
#include <cstddef>
#include <vector>

#include "cad/database.h"

namespace tv::render {

class SpaceIndex {
 public:
  // Measures every entity of `space` (its extents with the engine's fonts) and files it under the
  // cells of a grid over the space's extents. The index holds pointers into the drawing: it is
  // valid while the space's entities are neither added, removed nor moved.
  SpaceIndex(const cad::Database& db, const cad::BlockRecord& space);

  // Whether the index was made of this space as it stands: same block, same entity list.
  bool describes(const cad::BlockRecord& space) const;

  // The entities whose extents meet the box, and those without extents, in drawing order.
  void query(cad::Point2d min, cad::Point2d max, std::vector<const cad::Entity*>& out) const;

  std::size_t size() const { return entities_.size(); }

 private:
  struct Box {
    double minX, minY, maxX, maxY;
  };
  void cellRange(double minX, double minY, double maxX, double maxY, int& c0, int& r0, int& c1, int& r1) const;

  const cad::BlockRecord* space_;
  const void* listData_;
  std::size_t listSize_;
  std::vector<const cad::Entity*> entities_;  // drawing order
  std::vector<Box> boxes_;                    // beside entities_
  std::vector<std::size_t> unbounded_;        // entities without extents: always drawn
  std::vector<std::size_t> large_;            // entities spanning many cells
  double originX_ = 0, originY_ = 0, cellW_ = 1, cellH_ = 1;
  int columns_ = 0, rows_ = 0;
  std::vector<std::vector<std::size_t>> cells_;  // row-major, entity positions in drawing order
  mutable std::vector<std::size_t> seen_;        // query stamp per entity
  mutable std::size_t stamp_ = 0;
};

}  // namespace tv::render
