// Rectangles from the segment families: sort both, keep only segments joined at both ends to the
// other family, then pair equal horizontals joined at both ends by verticals.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "host/command_prologue.h"
#include "recognition/loose_lines.h"
#include "recognition/loose_lines_internal.h"

namespace tv::recognition {

namespace {

// Found sheets are pruned and clear their insides from the families every this many.
constexpr std::size_t kFoundBatch = 300;

// Families whose arrays fell out of step are cut to their common length.
void CutToStep(ObjectIdArray& ids, std::vector<Point2d>& starts, std::vector<Point2d>& ends) {
  const std::size_t n = std::min({ids.size(), starts.size(), ends.size()});
  ids.resize(n);
  starts.resize(n);
  ends.resize(n);
}

// Keeps the horizontals with a vertical end at each of their ends, and marks the vertical ends met.
// The first vertical met at the left end decides: only from there on is the right end looked for.
void KeepJoinedHorizontals(SegmentArrays& s, std::vector<char>& lowTouched, std::vector<char>& highTouched) {
  const std::size_t nh = s.hStarts.size(), nv = s.vStarts.size();
  const double reach = loose::GreatestLean(s.vStarts, s.vEnds, false);
  const loose::KeyIndex byX(s.vStarts, false);
  const auto joined = [&](Point2d p, Point2d q) {
    const double t = (q.x - p.x) / 2000.0;
    std::ptrdiff_t low = -1, high = -1;
    bool leftHit = false, bothEnds = false;
    // The last vertical can't be the left one.
    for (std::size_t j = byX.scanFrom(p.x - t, reach); j + 1 < nv; ++j) {
      if (s.vStarts[j].x > p.x + t) break;
      if (loose::Within(p, s.vStarts[j], t)) low = static_cast<std::ptrdiff_t>(j);
      else if (loose::Within(p, s.vEnds[j], t)) high = static_cast<std::ptrdiff_t>(j);
      else continue;
      leftHit = true;
      for (std::size_t k = std::max(byX.scanFrom(q.x - t, reach), j + 1); k < nv; ++k) {
        if (s.vStarts[k].x > q.x + t) break;
        if (loose::Within(q, s.vStarts[k], t)) {
          low = static_cast<std::ptrdiff_t>(k);
          bothEnds = true;
          break;
        }
        if (loose::Within(q, s.vEnds[k], t)) {
          high = static_cast<std::ptrdiff_t>(k);
          bothEnds = true;
          break;
        }
      }
      break;
    }
    // Marks only spare the next stage a search, so one from a horizontal about to go does no harm.
    if (low >= 0) lowTouched[static_cast<std::size_t>(low)] = 1;
    if (high >= 0) highTouched[static_cast<std::size_t>(high)] = 1;
    return leftHit && bothEnds;
  };

  // Each horizontal is judged on its own, so they are judged from left to right: the searches then
  // walk the verticals, which are sorted by x, in order instead of jumping about in them. The
  // horizontals are first gathered in that order, all their reads being known in advance.
  const std::vector<std::size_t> byLeft = loose::KeyOrder(s.hStarts, 0, nh, false);
  struct Ends {
    Point2d p, q;
  };
  std::vector<Ends> ends(nh);
  for (std::size_t k = 0; k < nh; ++k) ends[k] = {s.hStarts[byLeft[k]], s.hEnds[byLeft[k]]};
  std::vector<char> keep(nh, 0);
  for (std::size_t k = 0; k < nh; ++k) keep[byLeft[k]] = joined(ends[k].p, ends[k].q) ? 1 : 0;
  loose::KeepWhere(nh, [&](std::size_t i) { return keep[i] != 0; }, s.hIds, s.hStarts, s.hEnds);
}

// Keeps the verticals with a horizontal end at each of their ends; a marked end needs no search.
void KeepJoinedVerticals(SegmentArrays& s, std::vector<char>& lowTouched, std::vector<char>& highTouched) {
  const std::size_t nh = s.hStarts.size();
  const double reach = loose::GreatestLean(s.hStarts, s.hEnds, true);
  const loose::KeyIndex byY(s.hStarts, true);
  const auto meets = [&](Point2d p, std::size_t j, double t) {
    return loose::Within(p, s.hStarts[j], t) || loose::Within(p, s.hEnds[j], t);
  };
  const auto joined = [&](std::size_t i) {
    const Point2d p = s.vStarts[i], q = s.vEnds[i];
    const double t = (q.y - p.y) / 2000.0;
    std::size_t from = 0;
    if (!lowTouched[i]) {
      bool lowOk = false;
      // The topmost horizontal can't be the one at a lower end.
      for (std::size_t j = byY.scanFrom(p.y - t, reach); j + 1 < nh; ++j) {
        if (s.hStarts[j].y > p.y + t) break;
        if (meets(p, j, t)) {
          lowOk = true;
          from = j + 1;
          break;
        }
      }
      if (!lowOk) return false;
    }
    if (!highTouched[i]) {
      for (std::size_t j = std::max(byY.scanFrom(q.y - t, reach), from); j < nh; ++j) {
        if (s.hStarts[j].y > q.y + t) break;
        if (meets(q, j, t)) return true;
      }
      return false;
    }
    return true;
  };
  loose::KeepWhere(s.vStarts.size(), joined, s.vIds, s.vStarts, s.vEnds, lowTouched, highTouched);
}

// Pairs each horizontal, as a bottom, with the horizontals above it of the same span, and takes
// the pair when a vertical joins the left ends and another the right ends.
void PairHorizontals(SegmentArrays& s, ObjectId spaceId, ObjectId layerId, SheetList& result,
                     const std::function<void()>& tick) {
  SheetList found;
  // Tops worth trying, with the left side that leads to each; see below.
  std::vector<std::pair<std::size_t, std::size_t>> tops;
  std::optional<loose::KeyIndex> byX(std::in_place, s.vStarts, false), byY(std::in_place, s.hStarts, true);
  // The families shrink whenever found sheets clear their insides, so the counts are read afresh.
  for (std::size_t i = 0; i + 1 < s.hStarts.size(); ++i) {
    const std::size_t nh = s.hStarts.size(), nv = s.vStarts.size();
    const Point2d a = s.hStarts[i], b = s.hEnds[i];
    const double t = (b.x - a.x) / 2000.0;
    const std::size_t leftFrom = byX->scanFrom(a.x - t, 0.0);
    const std::size_t rightFrom = byX->scanFrom(b.x - t, 0.0);

    // A top needs a left side that starts at `a` and ends at the top's start, the first such
    // vertical being the one taken. So instead of trying every horizontal above, the verticals at
    // `a` name the tops worth trying: those starting at a vertical's upper end. Sorted by top and
    // then by vertical, the first entry of each top holds its left side.
    tops.clear();
    for (std::size_t k = leftFrom; k + 1 < nv; ++k) {
      if (s.vStarts[k].x > a.x + t) break;
      if (!loose::Within(s.vStarts[k], a, t)) continue;
      const Point2d e = s.vEnds[k];
      const double slack = 1e-9 * (std::abs(e.y) + t);
      for (std::size_t j = byY->lower(e.y - t - slack, i + 1); j < nh; ++j) {
        if (s.hStarts[j].y > e.y + t + slack) break;
        if (loose::Within(e, s.hStarts[j], t)) tops.emplace_back(j, k);
      }
    }
    std::sort(tops.begin(), tops.end());

    for (std::size_t n = 0; n < tops.size(); ++n) {
      if (n > 0 && tops[n].first == tops[n - 1].first) continue;
      const auto [j, k] = tops[n];
      const Point2d c = s.hStarts[j], d = s.hEnds[j];
      // Equal lines on top of each other are no pair.
      if (!(std::abs(c.x - a.x) < t && std::abs(d.x - b.x) < t && std::abs(c.y - a.y) > t)) continue;
      std::optional<std::size_t> right;
      for (std::size_t m = std::max(k + 1, rightFrom); m < nv; ++m) {
        if (s.vStarts[m].x > b.x + t) break;
        if (loose::Within(s.vStarts[m], b, t) && loose::Within(s.vEnds[m], d, t)) {
          right = m;
          break;
        }
      }
      if (!right) continue;

      auto sheet = std::make_unique<Plot_Drawing1>();
      sheet->kind = SheetKind::Lines;
      sheet->sourceIds = {s.hIds[i], s.hIds[j], s.vIds[k], s.vIds[*right]};
      sheet->spaceId = spaceId;
      Extents3d box;
      for (Point2d corner : {a, b, c, d}) box.add(Point3d{corner});
      // One bottom may make several rectangles, as with a title strip ruled across a frame;
      // pruning keeps the outer one.
      if (AddMarker(*sheet, layerId, box, 1.0)) found.push_back(std::move(sheet));
    }

    // The horizontals up to i stay in place: this loop stands on them.
    if (found.size() >= kFoundBatch) {
      if (tick) tick();
      PruneSheets(found);
      DropSegmentsInSheets(i + 1, found, s);
      byX.emplace(s.vStarts, false);
      byY.emplace(s.hStarts, true);
      std::move(found.begin(), found.end(), std::back_inserter(result));
      found.clear();
    }
  }
  std::move(found.begin(), found.end(), std::back_inserter(result));
}

}  // namespace

void FindLooseRectangles(SegmentArrays& segments, ObjectId spaceId, ObjectId layerId, SheetList& result,
                         const std::function<void()>& tick) {
  SegmentArrays& s = segments;
  CutToStep(s.hIds, s.hStarts, s.hEnds);
  CutToStep(s.vIds, s.vStarts, s.vEnds);
  std::int64_t clock = host::TickCount();

  SortSegments(s.hStarts, 0, static_cast<std::ptrdiff_t>(s.hStarts.size()) - 1, true, s.hEnds, s.hIds);
  clock = host::StageTimer(clock, "\t\t横线从下到上排列");

  SortSegments(s.vStarts, 0, static_cast<std::ptrdiff_t>(s.vStarts.size()) - 1, false, s.vEnds, s.vIds);
  clock = host::StageTimer(clock, "\t\t竖线从左到右排列");

  std::vector<char> lowTouched(s.vStarts.size(), 0), highTouched(s.vStarts.size(), 0);
  KeepJoinedHorizontals(s, lowTouched, highTouched);
  clock = host::StageTimer(clock, "\t\t只保留两端均有竖线相连的横线");

  KeepJoinedVerticals(s, lowTouched, highTouched);
  clock = host::StageTimer(clock, "\t\t只保留两端均有横线相连的竖线");

  PairHorizontals(s, spaceId, layerId, result, tick);
  host::StageTimer(clock, "\t\t寻找矩形");
}

}  // namespace tv::recognition
