#pragma once
// Where the selectable entities of one space lie, so that a fence or a box looks only at the
// entities whose selection outline can reach it. A batch asks hundreds of small selections of one
// space; measuring every entity once and looking each selection up keeps it to the cost of what it
// passes over.
//
// The index files every entity of the space under the x, y box of its selection outline (the box
// SelectionShapeOf's outline lies in). It follows the space as the command edits it:
// - entities appended to the space are measured when the next selection asks;
// - erased entities keep their box and are skipped by the selections, as the plain walk skips them;
// - an entity moved or reshaped in place, or about to be erased, is told through noteChanged().
//   A change inside a block that the space's inserts show makes the index measure everything
//   again at the next selection; a change in any other block (a scratch block) costs nothing.
// Anything that edits the drawing without telling the index must drop it.
#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "cad/box_grid.h"
#include "cad/database.h"
#include "cad/entity_geometry.h"

namespace tv::cad {

class SelectionIndex {
 public:
  // `measurer` (nullptr = ApproximateTextMeasurer()) sizes text as the selections do with it; the
  // drawing and the measurer must outlive the index.
  SelectionIndex(const Database& db, const BlockRecord& space, const TextMeasurer* measurer = nullptr);
  ~SelectionIndex();
  SelectionIndex(const SelectionIndex&) = delete;
  SelectionIndex& operator=(const SelectionIndex&) = delete;

  const BlockRecord& space() const { return *space_; }
  const TextMeasurer* measurer() const { return measurer_; }

  // `e` (of any block) was moved or reshaped in place, or is about to be erased.
  void noteChanged(const Entity& e);

  // The space's own viewport (see LayoutViewportOf), looked up again only when viewports come or go.
  ObjectId layoutViewport();

  // An entity and the box its outline lies in (none when the outline is not finite).
  struct Candidate {
    const Entity* entity = nullptr;
    double minX = 0, minY = 0, maxX = 0, maxY = 0;
    bool bounded = false;
  };
  // The entities of the space whose outline box meets the box [minX, maxX] x [minY, maxY], and
  // those whose box is not finite, in drawing order. Entities whose outline is empty are left out;
  // erased ones may be in.
  void candidates(double minX, double minY, double maxX, double maxY, std::vector<Candidate>& out);

 private:
  class Measurer;

  void rebuild();
  void catchUp();
  // The box of the entity at `at`: false when its outline is empty, `box` untouched and `bounded`
  // false when its outline is not finite.
  bool measure(std::uint32_t at, Measurer& m, BoxGrid::Box& box, bool& bounded);
  void refile(std::uint32_t at, Measurer& m);
  // Adds the block an insert or dimension shows, and every block that one shows in turn.
  void noteShownBlocks(const Entity& e);
  void noteShownBlock(ObjectId blockId);

  const Database& db_;
  const BlockRecord* space_;
  const TextMeasurer* measurer_;
  bool stale_ = false;        // a shown block changed: measure everything again
  std::size_t measured_ = 0;  // entities of the space's list looked at
  BoxGrid grid_;              // by position in the space's list
  std::unordered_map<std::uint64_t, std::uint32_t> at_;  // entity id -> position
  std::unordered_set<std::uint64_t> shownBlocks_;        // block ids the space's inserts show
  std::vector<std::uint32_t> hits_;
  std::optional<ObjectId> layoutViewport_;
};

}  // namespace tv::cad
