#pragma once
// What fences, windows and crossing boxes select among the entities of a space, and the outline
// each entity offers them. Coordinates are x, y of the space's WCS: entities off the XY plane are
// projected onto it, z is ignored.
#include <functional>
#include <vector>

#include "cad/database.h"
#include "cad/entity_geometry.h"

namespace tv::cad {

class SelectionIndex;

// The outline of one entity as a selection sees it, in x, y of its space's WCS: polylines (a
// closed one repeats its first point; a POINT is a one-point path) and filled areas (polygons,
// implicitly closed). Curves are flattened to within 1/10000 of their radius (size for splines).
// - Text, attributes and MTEXT are the area of their box, the same box EntityExtents measures;
//   SOLID and TRACE are their quad as an area; a solid-fill hatch is the area of each boundary
//   path (other hatches: the paths); 3DFACE, polyface and mesh give their visible edges.
// - INSERT: its block's content through the insert transform (every MINSERT cell, a spatial clip
//   applied), then its visible attributes; DIMENSION: its block; VIEWPORT: its rectangle;
//   IMAGE/WIPEOUT: their frame (the clip boundary when clipping is on); LEADER: its vertices;
//   application entities: their primitives (filled polygons are areas). Proxies give nothing.
// - Inside blocks, what an insert does not show is left out (erased and invisible entities,
//   invisible attributes, non-constant ATTDEFs) and so are transient application entities.
// - Self-inserting blocks are cut at the repeat and nesting at 32 levels; an entity whose content
//   needs more than a few million pieces and cells (hostile nesting, huge MINSERT grids) is
//   looked at only that far.
// `measurer` (nullptr = ApproximateTextMeasurer()) sizes text as EntityExtents does with it.
struct SelectionShape {
  std::vector<std::vector<Point2d>> paths;
  std::vector<std::vector<Point2d>> areas;
};
SelectionShape SelectionShapeOf(const Entity& e, const Database& db, const TextMeasurer* measurer = nullptr);

// The entities of `space` a fence of straight segments through `fence` crosses: a segment crosses
// an entity when it meets one of its paths (a POINT within 1e-9 of the coordinates' size), or
// meets or lies inside one of its areas. Fewer than two points select nothing. Ids in drawing
// order. `accept` (may be empty) filters before any geometry is done. Erased and invisible
// entities, transient application entities (markers, previews) and the paper space's own
// viewport are never selected.
std::vector<ObjectId> SelectByFence(const Database& db, const BlockRecord& space, const std::vector<Point2d>& fence,
                                    const std::function<bool(const Entity&)>& accept, const TextMeasurer* measurer = nullptr);

// Window selection (`crossing` false): entities whose whole outline lies inside the box, edges
// included. Crossing selection: entities whose outline lies inside or meets the box, or whose
// areas contain it. Same filtering and order as SelectByFence.
std::vector<ObjectId> SelectByBox(const Database& db, const BlockRecord& space, Point2d corner1, Point2d corner2, bool crossing,
                                  const std::function<bool(const Entity&)>& accept, const TextMeasurer* measurer = nullptr);

// The same selections through an index of the space: the same ids in the same order as the walk
// over the whole space gives, text sized by the index's measurer.
std::vector<ObjectId> SelectByFence(const Database& db, SelectionIndex& index, const std::vector<Point2d>& fence,
                                    const std::function<bool(const Entity&)>& accept);
std::vector<ObjectId> SelectByBox(const Database& db, SelectionIndex& index, Point2d corner1, Point2d corner2, bool crossing,
                                  const std::function<bool(const Entity&)>& accept);

}  // namespace tv::cad
