#pragma once
// Which found sheet first holds a candidate. Sheets arrive a batch at a time while the candidate
// loop runs; asking the sheets of finished batches when a candidate comes up drops the same
// candidates, with the same holders, as purging the list after every batch, without sweeping the
// rest of the list once per batch.
#include <cstddef>
#include <vector>

#include "recognition/box_grid_internal.h"
#include "recognition/rectangle_finder.h"

namespace tv::recognition::internal {

class HolderIndex {
 public:
  // Appends the sheets after those added before; their inner boxes are made ready.
  void add(const SheetList& sheets);
  // The first sheet, in the order they were added, whose inner box holds both corners of the
  // candidate strictly inside; null when none does.
  Plot_Drawing1* holder(const Temp_Id& candidate) const;

 private:
  // Runs of sheets in order; a run is merged into the one before it once it is as large, so a
  // lookup visits at most a logarithm of the sheet count of them.
  struct Run {
    std::vector<Plot_Drawing1*> sheets;
    BoxGrid grid;
    bool indexed = false;
    void index();
  };
  std::vector<Run> runs_;
};

}  // namespace tv::recognition::internal
