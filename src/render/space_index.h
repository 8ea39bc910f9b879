#pragma once
// Where the entities of one space lie, so that a plot of a window draws only what can reach it.
// A batch plots hundreds of windows of one model space: measuring every entity once and looking
// the window up keeps each page to the cost of its own content.
#include <cstddef>
#include <vector>

#include "cad/box_grid.h"
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
  const cad::BlockRecord* space_;
  const void* listData_;
  std::size_t listSize_;
  std::vector<const cad::Entity*> entities_;  // drawing order
  cad::BoxGrid grid_;                          // by position in entities_
  mutable std::vector<std::uint32_t> hits_;
};

}  // namespace tv::render
