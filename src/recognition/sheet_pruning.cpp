// Duplicate and nested sheets, and the purge of what found sheets hold from the candidate list.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "recognition/box_grid_internal.h"
#include "recognition/held_candidates_internal.h"
#include "recognition/rectangle_finder.h"

namespace tv::recognition {

namespace {

using internal::Box;
using internal::BoxGrid;

// Up to this many sheets every pair is tried; a grid isn't worth building for a batch.
constexpr std::size_t kPairwiseLimit = 64;
// Beyond this a sheet's centre, on which the grid search rests, is no longer exact enough.
constexpr double kGridCoordinateLimit = 1e9;

// A sheet's rectangle and margin, copied side by side so that the pairs are tried without visiting
// the sheets.
struct Frame {
  double minX, minY, maxX, maxY, margin;
};

// Whether `a` lies in `c`, both widened by the smaller margin; `wellInside` tells whether it also
// lies in `c` narrowed by it, which gives `c` content.
bool LiesIn(const Frame& a, const Frame& c, bool& wellInside) {
  const double t = std::min(a.margin, c.margin);
  if (!(c.minX - t <= a.minX && c.minY - t <= a.minY && a.maxX <= c.maxX + t && a.maxY <= c.maxY + t)) return false;
  wellInside = c.minX + t <= a.minX && c.minY + t <= a.minY && a.maxX <= c.maxX - t && a.maxY <= c.maxY - t;
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
  std::vector<Frame> frames;
  std::vector<char> redundant;
  frames.reserve(n);
  redundant.reserve(n);
  for (const auto& s : sheets) {
    frames.push_back({s->minX, s->minY, s->maxX, s->maxY, s->margin});
    redundant.push_back(s->redundant ? 1 : 0);
  }

  BoxGrid grid;
  bool indexed = false;
  if (n > kPairwiseLimit && std::all_of(sheets.begin(), sheets.end(), [](const auto& s) { return FitsGrid(*s); })) {
    std::vector<Box> boxes;
    boxes.reserve(n);
    for (const Frame& f : frames) boxes.push_back({f.minX, f.minY, f.maxX, f.maxY});
    indexed = grid.build(boxes);
  }

  for (std::size_t a = 0; a < n; ++a) {
    const Frame& sheet = frames[a];
    const auto tryContainer = [&](std::size_t c) {
      bool wellInside = false;
      if (c == a || redundant[c] || !LiesIn(sheet, frames[c], wellInside)) return false;
      if (wellInside) sheets[c]->hasContent = true;
      redundant[a] = 1;
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
  for (std::size_t a = 0; a < n; ++a)
    if (redundant[a]) sheets[a]->redundant = true;
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
  if (sheets.empty() || start >= candidates.size()) return;
  internal::HeldCandidates held(candidates, start);
  held.markBy(sheets, start);
  std::size_t kept = start;
  for (std::size_t i = start; i < candidates.size(); ++i) {
    if (Plot_Drawing1* sheet = held.holder(i)) {
      sheet->hasContent = true;
      continue;
    }
    if (kept != i) candidates[kept] = std::move(candidates[i]);
    ++kept;
  }
  candidates.resize(kept);
}

}  // namespace tv::recognition
