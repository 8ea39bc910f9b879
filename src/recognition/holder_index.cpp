#include "recognition/holder_index_internal.h"

#include <array>
#include <cstdint>
#include <utility>

namespace tv::recognition::internal {

namespace {

// Up to this many sheets a run is tried sheet by sheet; a grid isn't worth building for it.
constexpr std::size_t kLinearRun = 16;

bool StrictlyInside(const std::array<double, 4>& box, Point3d p) {
  return box[0] < p.x && p.x < box[1] && box[2] < p.y && p.y < box[3];
}

bool Holds(const Plot_Drawing1& sheet, const Temp_Id& c) {
  return StrictlyInside(sheet.innerBox, c.minPt()) && StrictlyInside(sheet.innerBox, c.maxPt());
}

}  // namespace

void HolderIndex::Run::index() {
  indexed = false;
  if (sheets.size() <= kLinearRun) return;
  std::vector<Box> boxes;
  boxes.reserve(sheets.size());
  for (const Plot_Drawing1* s : sheets) boxes.push_back({s->innerBox[0], s->innerBox[2], s->innerBox[1], s->innerBox[3]});
  indexed = grid.build(boxes);
}

void HolderIndex::add(const SheetList& sheets) {
  Run run;
  for (const auto& s : sheets) {
    if (!s) continue;
    EnsureInnerBox(*s);
    run.sheets.push_back(s.get());
  }
  if (run.sheets.empty()) return;
  run.index();
  runs_.push_back(std::move(run));
  while (runs_.size() >= 2 && runs_.back().sheets.size() >= runs_[runs_.size() - 2].sheets.size()) {
    Run newer = std::move(runs_.back());
    runs_.pop_back();
    Run& older = runs_.back();
    older.sheets.insert(older.sheets.end(), newer.sheets.begin(), newer.sheets.end());
    older.index();
  }
}

Plot_Drawing1* HolderIndex::holder(const Temp_Id& candidate) const {
  for (const Run& run : runs_) {
    if (run.indexed) {
      for (std::uint32_t i : run.grid.near(candidate.extents.min.x, candidate.extents.min.y))
        if (Holds(*run.sheets[i], candidate)) return run.sheets[i];
    } else {
      for (Plot_Drawing1* s : run.sheets)
        if (Holds(*s, candidate)) return s;
    }
  }
  return nullptr;
}

}  // namespace tv::recognition::internal
