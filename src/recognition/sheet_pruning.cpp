// Duplicate and nested sheets, and the purge of what found sheets hold from the candidate list.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "recognition/box_grid_internal.h"
#include "recognition/holder_index_internal.h"
#include "recognition/rectangle_finder.h"

namespace tv::recognition {

namespace {

using internal::Box;
using internal::BoxGrid;

// Up to this many sheets every pair is tried; a grid isn't worth building for a batch.
constexpr std::size_t kPairwiseLimit = 64;
// Beyond this a sheet's centre, on which the grid search rests, is no longer exact enough.
constexpr double kGridCoordinateLimit = 1e9;

// Whether `a` lies in `c`, both widened by the smaller margin; when it lies well inside, `c` has
// content.
bool LiesIn(const Plot_Drawing1& a, Plot_Drawing1& c) {
  const double t = std::min(a.margin, c.margin);
  if (!(c.minX - t <= a.minX && c.minY - t <= a.minY && a.maxX <= c.maxX + t && a.maxY <= c.maxY + t)) return false;
  if (!c.hasContent && c.minX + t <= a.minX && c.minY + t <= a.minY && a.maxX <= c.maxX - t && a.maxY <= c.maxY - t)
    c.hasContent = true;
  return true;
}

bool FitsGrid(const Plot_Drawing1& s) {
  return std::abs(s.minX) <= kGridCoordinateLimit && std::abs(s.minY) <= kGridCoordinateLimit &&
         std::abs(s.maxX) <= kGridCoordinateLimit && std::abs(s.maxY) <= kGridCoordinateLimit;
}

// Marks every sheet that lies in another one not marked yet; the first such container in list
// order decides. A container holds the centre of what it holds (the margin is a hundredth of the
// short side), so with a grid only the sheets over that centre are tried, in the same order.
void MarkContained(SheetList& sheets) {
  const std::size_t n = sheets.size();
  BoxGrid grid;
  bool indexed = false;
  if (n > kPairwiseLimit && std::all_of(sheets.begin(), sheets.end(), [](const auto& s) { return FitsGrid(*s); })) {
    std::vector<Box> boxes;
    boxes.reserve(n);
    for (const auto& s : sheets) boxes.push_back({s->minX, s->minY, s->maxX, s->maxY});
    indexed = grid.build(boxes);
  }

  for (std::size_t a = 0; a < n; ++a) {
    Plot_Drawing1& sheet = *sheets[a];
    const auto tryContainer = [&](std::size_t c) {
      if (c == a || sheets[c]->redundant || !LiesIn(sheet, *sheets[c])) return false;
      sheet.redundant = true;
      return true;
    };
    if (indexed) {
      const double cx = sheet.minX + (sheet.maxX - sheet.minX) * 0.5;
      const double cy = sheet.minY + (sheet.maxY - sheet.minY) * 0.5;
      for (std::uint32_t c : grid.near(cx, cy))
        if (tryContainer(c)) break;
    } else {
      for (std::size_t c = 0; c < n; ++c)
        if (tryContainer(c)) break;
    }
  }
}

}  // namespace

void EnsureInnerBox(Plot_Drawing1& sheet) {
  if (sheet.innerReady) return;
  sheet.innerReady = true;
  const double dx = (sheet.maxX - sheet.minX) / 50.0;
  const double dy = (sheet.maxY - sheet.minY) / 50.0;
  sheet.innerBox = {sheet.minX + dx, sheet.maxX - dx, sheet.minY + dy, sheet.maxY - dy};
}

void PruneSheets(SheetList& sheets) {
  std::erase_if(sheets, [](const auto& s) { return !s; });
  for (auto& s : sheets) {
    const double side = std::min(s->maxX - s->minX, s->maxY - s->minY);
    s->margin = side * 0.01;
  }
  // Too small to plot; the comparison also drops inverted rectangles.
  std::erase_if(sheets, [](const auto& s) { return std::min(s->maxX - s->minX, s->maxY - s->minY) < 0.001; });
  MarkContained(sheets);
  std::erase_if(sheets, [](const auto& s) { return s->redundant; });
}

void DropContainedIds(SheetList& sheets, TempIdArray& candidates, std::size_t start) {
  std::erase_if(sheets, [](const auto& s) { return !s; });
  internal::HolderIndex holders;
  holders.add(sheets);
  if (start >= candidates.size()) return;
  const auto first = candidates.begin() + static_cast<std::ptrdiff_t>(start);
  const auto kept = std::remove_if(first, candidates.end(), [&](const Temp_Id& c) {
    Plot_Drawing1* sheet = holders.holder(c);
    if (sheet) sheet->hasContent = true;
    return sheet != nullptr;
  });
  candidates.erase(kept, candidates.end());
}

}  // namespace tv::recognition
