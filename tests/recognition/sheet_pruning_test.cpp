#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

#include "recognition/rectangle_finder.h"

namespace tv::recognition {
namespace {

// Sheets without markers: pruning is pure arithmetic on the records. `sequence` tags each one.
std::unique_ptr<Plot_Drawing1> Sheet(std::int32_t tag, double minX, double minY, double maxX, double maxY) {
  auto s = std::make_unique<Plot_Drawing1>();
  s->sequence = tag;
  s->minX = minX;
  s->minY = minY;
  s->maxX = maxX;
  s->maxY = maxY;
  s->sizeX = maxX - minX;
  s->sizeY = maxY - minY;
  return s;
}

Temp_Id Candidate(std::int32_t tag, double minX, double minY, double maxX, double maxY) {
  Temp_Id c;
  c.kind = TempKind::Polyline;
  c.id = ObjectId{static_cast<std::uint64_t>(tag)};
  c.extents = Extents3d(Point3d(minX, minY, 0), Point3d(maxX, maxY, 0));
  return c;
}

std::vector<std::int32_t> Tags(const SheetList& sheets) {
  std::vector<std::int32_t> tags;
  for (const auto& s : sheets) tags.push_back(s->sequence);
  return tags;
}

std::vector<std::uint64_t> Ids(const TempIdArray& candidates) {
  std::vector<std::uint64_t> ids;
  for (const Temp_Id& c : candidates) ids.push_back(c.id.value);
  return ids;
}

// A deterministic scatter of numbers in [0, 1).
class Scatter {
 public:
  double next() {
    state_ = state_ * 6364136223846793005ULL + 1442695040888963407ULL;
    return static_cast<double>(state_ >> 11) / 9007199254740992.0;
  }

 private:
  std::uint64_t state_ = 12345;
};

// ---- duplicates and nesting ------------------------------------------------------------------------

TEST(PruneSheetsTest, OfEqualRectanglesTheLaterSurvives) {
  SheetList two;
  two.push_back(Sheet(1, 0, 0, 420, 297));
  two.push_back(Sheet(2, 0, 0, 420, 297));
  PruneSheets(two);
  EXPECT_EQ(Tags(two), std::vector<std::int32_t>{2});
  EXPECT_FALSE(two[0]->hasContent) << "an equal rectangle isn't content";

  SheetList three;
  for (std::int32_t tag : {1, 2, 3}) three.push_back(Sheet(tag, 10, 10, 30, 20));
  PruneSheets(three);
  EXPECT_EQ(Tags(three), std::vector<std::int32_t>{3});
}

TEST(PruneSheetsTest, WithinAHundredthOfTheShortSideIsTheSameFrame) {
  // The short side is 500, so the margin is 5; a copy 4 inside or 3 outside on every side is the
  // same frame drawn twice, whichever comes first, and the later copy stays.
  for (double offset : {4.0, -3.0}) {
    for (bool frameFirst : {true, false}) {
      SheetList sheets;
      auto frame = Sheet(1, 0, 0, 1000, 500);
      auto copy = Sheet(2, offset, offset, 1000 - offset, 500 - offset);
      const std::int32_t later = frameFirst ? 2 : 1;
      if (frameFirst) std::swap(frame, copy);
      sheets.push_back(std::move(copy));
      sheets.push_back(std::move(frame));
      PruneSheets(sheets);
      ASSERT_EQ(Tags(sheets), std::vector<std::int32_t>{later}) << "offset " << offset << " frame first " << frameFirst;
      EXPECT_FALSE(sheets[0]->hasContent);
      EXPECT_NEAR(sheets[0]->margin, later == 1 ? 5.0 : (500 - 2 * offset) * 0.01, 1e-9);
    }
  }

  // One side well inside is not enough to be content: all four must be.
  SheetList oneSide;
  oneSide.push_back(Sheet(1, 0, 0, 1000, 500));
  oneSide.push_back(Sheet(2, 4, 4, 996, 480));
  PruneSheets(oneSide);
  EXPECT_EQ(Tags(oneSide), std::vector<std::int32_t>{1});
  EXPECT_FALSE(oneSide[0]->hasContent);

  // Beyond the margin on every side it is a frame inside a frame.
  SheetList inside;
  inside.push_back(Sheet(1, 0, 0, 1000, 500));
  inside.push_back(Sheet(2, 6, 6, 994, 494));
  PruneSheets(inside);
  EXPECT_EQ(Tags(inside), std::vector<std::int32_t>{1});
  EXPECT_TRUE(inside[0]->hasContent);
}

TEST(PruneSheetsTest, TheOutermostOfNestedFramesWinsAndHoldsContent) {
  for (bool outerFirst : {true, false}) {
    SheetList sheets;
    auto outer = Sheet(1, 0, 0, 841, 594);
    auto middle = Sheet(2, 100, 100, 520, 397);
    auto inner = Sheet(3, 200, 200, 300, 280);
    if (outerFirst) {
      sheets.push_back(std::move(outer));
      sheets.push_back(std::move(middle));
      sheets.push_back(std::move(inner));
    } else {
      sheets.push_back(std::move(inner));
      sheets.push_back(std::move(middle));
      sheets.push_back(std::move(outer));
    }
    PruneSheets(sheets);
    ASSERT_EQ(Tags(sheets), std::vector<std::int32_t>{1}) << "outer first: " << outerFirst;
    EXPECT_TRUE(sheets[0]->hasContent);
  }
}

TEST(PruneSheetsTest, NeighboursAndOverlapsStay) {
  SheetList sheets;
  sheets.push_back(Sheet(1, 0, 0, 420, 297));
  sheets.push_back(Sheet(2, 420, 0, 840, 297));    // shares the right edge of 1
  sheets.push_back(Sheet(3, 0, 297, 420, 594));    // shares the top edge of 1
  sheets.push_back(Sheet(4, 600, 200, 1000, 500)); // overlaps 2
  PruneSheets(sheets);
  EXPECT_EQ(Tags(sheets), (std::vector<std::int32_t>{1, 2, 3, 4}));
  for (const auto& s : sheets) EXPECT_FALSE(s->hasContent);
}

TEST(PruneSheetsTest, SheetsWithASideUnderAThousandthGo) {
  SheetList sheets;
  sheets.push_back(Sheet(1, 0, 0, 100, 0.0005));
  sheets.push_back(Sheet(2, 0, 0, 0.0005, 100));
  sheets.push_back(Sheet(3, 500, 0, 500.002, 100));
  sheets.push_back(Sheet(4, 0, 0, 100, -50));  // upside down
  PruneSheets(sheets);
  EXPECT_EQ(Tags(sheets), std::vector<std::int32_t>{3});
  EXPECT_NEAR(sheets[0]->margin, 0.00002, 1e-9);
}

// The grid that large lists use must give what trying every pair gives. The reference below is the
// plain rule: each sheet in order, against every other unmarked one in order.
void PruneByPairs(SheetList& sheets) {
  std::erase_if(sheets, [](const auto& s) { return std::min(s->maxX - s->minX, s->maxY - s->minY) < 0.001; });
  for (auto& s : sheets) s->margin = std::min(s->maxX - s->minX, s->maxY - s->minY) * 0.01;
  for (auto& a : sheets) {
    for (auto& c : sheets) {
      if (c == a || c->redundant) continue;
      const double t = std::min(a->margin, c->margin);
      if (c->minX - t <= a->minX && c->minY - t <= a->minY && a->maxX <= c->maxX + t && a->maxY <= c->maxY + t) {
        a->redundant = true;
        if (!c->hasContent && c->minX + t <= a->minX && c->minY + t <= a->minY && a->maxX <= c->maxX - t &&
            a->maxY <= c->maxY - t)
          c->hasContent = true;
        break;
      }
    }
  }
  std::erase_if(sheets, [](const auto& s) { return s->redundant; });
}

// Sheets in a grid of pages, with title-block frames inside, copies, near copies, frames around
// groups, a crowded corner of tiny ones and one page far off.
SheetList Layout(Scatter& rnd, std::int32_t pages) {
  SheetList sheets;
  std::int32_t tag = 0;
  for (std::int32_t p = 0; p < pages; ++p) {
    const double x = (p % 20) * 900.0, y = (p / 20) * 700.0;
    sheets.push_back(Sheet(++tag, x, y, x + 841, y + 594));
    if (rnd.next() < 0.5) sheets.push_back(Sheet(++tag, x + 25, y + 10, x + 831, y + 584));
    if (rnd.next() < 0.2) sheets.push_back(Sheet(++tag, x, y, x + 841, y + 594));
    if (rnd.next() < 0.2) sheets.push_back(Sheet(++tag, x + 3 * rnd.next(), y + 3 * rnd.next(), x + 841, y + 594));
    if (rnd.next() < 0.1) sheets.push_back(Sheet(++tag, x + 600, y + 400, x + 1500, y + 1000));  // straddles
  }
  sheets.push_back(Sheet(++tag, -10, -10, 20 * 900.0, 1400.0));  // around the first rows
  for (int k = 0; k < 40; ++k) {
    const double x = -500 + rnd.next(), y = -500 + rnd.next();
    sheets.push_back(Sheet(++tag, x, y, x + 0.5 + rnd.next(), y + 0.5 + rnd.next()));
  }
  sheets.push_back(Sheet(++tag, 5e7, 5e7, 5e7 + 420, 5e7 + 297));
  // Shuffle deterministically so that containers come before and after what they hold.
  for (std::size_t i = sheets.size(); i > 1; --i)
    std::swap(sheets[i - 1], sheets[static_cast<std::size_t>(rnd.next() * static_cast<double>(i))]);
  return sheets;
}

SheetList Copy(const SheetList& sheets) {
  SheetList copy;
  for (const auto& s : sheets) copy.push_back(Sheet(s->sequence, s->minX, s->minY, s->maxX, s->maxY));
  return copy;
}

TEST(PruneSheetsTest, LongListsGiveWhatEveryPairGives) {
  Scatter rnd;
  SheetList sheets = Layout(rnd, 300);
  ASSERT_GT(sheets.size(), 400u);
  SheetList reference = Copy(sheets);
  PruneSheets(sheets);
  PruneByPairs(reference);
  ASSERT_EQ(Tags(sheets), Tags(reference));
  for (std::size_t i = 0; i < sheets.size(); ++i)
    EXPECT_EQ(sheets[i]->hasContent, reference[i]->hasContent) << "sheet " << sheets[i]->sequence;
  EXPECT_LT(sheets.size(), 400u) << "the layout must actually hold duplicates and nesting";

  // Far beyond the grid's exact range the pairs are tried directly; the rule is the same.
  SheetList far;
  for (std::int32_t k = 0; k < 80; ++k) far.push_back(Sheet(k + 1, 1e12 + k * 1000.0, 0, 1e12 + k * 1000.0 + 841, 594));
  far.push_back(Sheet(100, 1e12, 0, 1e12 + 841, 594));
  PruneSheets(far);
  EXPECT_EQ(far.size(), 80u);
  EXPECT_EQ(far[0]->sequence, 2);
}

// ---- the inner box and the purge of the candidate list ------------------------------------------------

TEST(PruneSheetsTest, PurgeTakesWhatLiesStrictlyInsideFromStartOn) {
  SheetList sheets;
  sheets.push_back(Sheet(1, 0, 0, 500, 500));  // inner box 10..490
  TempIdArray candidates = {
      Candidate(1, 100, 100, 200, 200),  // before start: stays though inside
      Candidate(2, 100, 100, 200, 200),  // inside: goes
      Candidate(3, 0, 0, 500, 500),      // the frame itself
      Candidate(4, 10, 100, 200, 200),   // on the inner box's edge
      Candidate(5, 400, 400, 495, 480),  // reaches the margin strip
      Candidate(6, 11, 11, 489, 489),    // just inside: goes
      Candidate(7, 600, 100, 700, 200),  // outside
  };
  DropContainedIds(sheets, candidates, 1);
  EXPECT_EQ(Ids(candidates), (std::vector<std::uint64_t>{1, 3, 4, 5, 7}));
  EXPECT_TRUE(sheets[0]->hasContent);
  EXPECT_TRUE(sheets[0]->innerReady);

  // Nothing inside: no content.
  SheetList empty;
  empty.push_back(Sheet(1, 1000, 1000, 1100, 1100));
  DropContainedIds(empty, candidates, 0);
  EXPECT_EQ(candidates.size(), 5u);
  EXPECT_FALSE(empty[0]->hasContent);
}

TEST(PruneSheetsTest, PurgeOfManyCandidatesKeepsTheOrderOfTheRest) {
  Scatter rnd;
  SheetList sheets = Layout(rnd, 60);
  TempIdArray candidates;
  for (std::uint64_t k = 1; k <= 5000; ++k) {
    const double x = -600 + 20000 * rnd.next(), y = -600 + 3500 * rnd.next();
    const double w = 400 * rnd.next() * rnd.next(), h = 300 * rnd.next() * rnd.next();
    candidates.push_back(Candidate(static_cast<std::int32_t>(k), x, y, x + w, y + h));
  }
  // Reference: each sheet in order takes what lies strictly in its inner box; the first that
  // holds a candidate is credited with it.
  SheetList reference = Copy(sheets);
  std::vector<std::uint64_t> expectedIds;
  std::vector<bool> expectedContent(reference.size(), false);
  for (std::size_t k = 0; k < candidates.size(); ++k) {
    const Temp_Id& c = candidates[k];
    bool taken = false;
    for (std::size_t i = 0; k >= 100 && i < reference.size() && !taken; ++i) {
      EnsureInnerBox(*reference[i]);
      const auto& b = reference[i]->innerBox;
      taken = b[0] < c.minPt().x && c.maxPt().x < b[1] && b[2] < c.minPt().y && c.maxPt().y < b[3];
      if (taken) expectedContent[i] = true;
    }
    if (!taken) expectedIds.push_back(c.id.value);
  }
  DropContainedIds(sheets, candidates, 100);
  EXPECT_EQ(Ids(candidates), expectedIds);
  ASSERT_LT(expectedIds.size(), 4900u) << "the candidates must actually fall in sheets";
  for (std::size_t i = 0; i < sheets.size(); ++i)
    EXPECT_EQ(sheets[i]->hasContent, expectedContent[i]) << "sheet " << sheets[i]->sequence;
}

}  // namespace
}  // namespace tv::recognition
