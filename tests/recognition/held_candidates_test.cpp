#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include "recognition/held_candidates_internal.h"

namespace tv::recognition {
namespace {

std::unique_ptr<Plot_Drawing1> Sheet(std::int32_t tag, double minX, double minY, double w, double h) {
  auto s = std::make_unique<Plot_Drawing1>();
  s->sequence = tag;
  s->minX = minX;
  s->minY = minY;
  s->maxX = minX + w;
  s->maxY = minY + h;
  return s;
}

Temp_Id Candidate(double minX, double minY, double w, double h) {
  Temp_Id c;
  c.extents = {{minX, minY, 0}, {minX + w, minY + h, 0}};
  return c;
}

// The plain reading: the first sheet of the first `count` batches, in order, whose inner box holds
// both corners.
const Plot_Drawing1* FirstHolder(const std::vector<SheetList>& batches, std::size_t count, const Temp_Id& c) {
  for (std::size_t b = 0; b < count && b < batches.size(); ++b)
    for (const auto& s : batches[b]) {
      EnsureInnerBox(*s);
      const auto& b = s->innerBox;
      if (b[0] < c.minPt().x && c.minPt().x < b[1] && b[2] < c.minPt().y && c.minPt().y < b[3] && b[0] < c.maxPt().x &&
          c.maxPt().x < b[1] && b[2] < c.maxPt().y && c.maxPt().y < b[3])
        return s.get();
    }
  return nullptr;
}

TEST(HeldCandidates, FindsTheFirstHolderInOrderAcrossManyBatchesOfOverlappingSheets) {
  // Batches of varied size come in as the loop moves on, the later ones landing on and inside the
  // earlier ones, so that the first holder is often not the only one; a batch marks only the
  // candidates after the loop's place.
  std::mt19937 random(7);
  std::uniform_real_distribution<double> at(0.0, 20000.0), side(200.0, 3000.0);
  TempIdArray candidates;
  for (int k = 0; k < 6000; ++k) candidates.push_back(Candidate(at(random), at(random), side(random) / 10, side(random) / 10));
  internal::HeldCandidates held(candidates);

  std::vector<SheetList> batches;
  std::vector<std::size_t> batchStart;  // the loop's place when each batch came in
  std::int32_t tag = 0;
  std::size_t place = 0;
  for (int b = 0; b < 37; ++b) {
    SheetList batch;
    const int count = 1 + static_cast<int>(random() % 60);
    for (int k = 0; k < count; ++k) batch.push_back(Sheet(tag++, at(random), at(random), side(random), side(random)));
    held.markBy(batch, place);
    batches.push_back(std::move(batch));
    batchStart.push_back(place);
    place += random() % 300;
  }
  std::size_t seen = 0;  // the batches in before candidate i came up
  for (std::size_t i = 0; i < candidates.size(); ++i) {
    while (seen < batches.size() && batchStart[seen] <= i) ++seen;
    ASSERT_EQ(held.holder(i), FirstHolder(batches, seen, candidates[i])) << "candidate " << i;
  }
}

TEST(HeldCandidates, EdgesOfTheInnerBoxDoNotHold) {
  SheetList batch;
  batch.push_back(Sheet(0, 0, 0, 1000, 500));  // inner box 20..980 x 10..490
  const TempIdArray candidates{Candidate(100, 100, 10, 10), Candidate(100, 100, 10, 10), Candidate(20, 100, 10, 10),
                               Candidate(100, 100, 880, 10), Candidate(100, 100, 879, 389)};
  internal::HeldCandidates held(candidates);
  EXPECT_EQ(held.holder(1), nullptr);  // nothing marked yet
  held.markBy(batch, 1);
  EXPECT_EQ(held.holder(0), nullptr);  // passed already
  EXPECT_EQ(held.holder(1), batch[0].get());
  EXPECT_EQ(held.holder(2), nullptr);
  EXPECT_EQ(held.holder(3), nullptr);  // reaches x 980
  EXPECT_EQ(held.holder(4), batch[0].get());
  EXPECT_EQ(held.holder(99), nullptr);
}

TEST(HeldCandidates, SheetsOfEverySizeAndDamagedCoordinatesAreHandled) {
  SheetList batch;
  batch.push_back(Sheet(0, -1e15, -1e15, 2e15, 2e15));  // the whole world
  batch.push_back(Sheet(1, 1e12, 1e12, 0.5, 0.5));      // tiny and far off
  batch.push_back(Sheet(2, 0, 0, std::nan(""), 10));    // damaged: holds nothing
  const TempIdArray candidates{Candidate(1e12 + 0.1, 1e12 + 0.1, 0.01, 0.01), Candidate(std::nan(""), 0, 1, 1),
                               Candidate(1e300, 0, 1, 1), Candidate(50, 50, 1, 1),
                               Candidate(-std::numeric_limits<double>::infinity(), 0, 1, 1)};
  internal::HeldCandidates held(candidates);
  held.markBy(batch, 0);
  EXPECT_EQ(held.holder(0), batch[0].get());
  EXPECT_EQ(held.holder(1), nullptr);
  EXPECT_EQ(held.holder(2), nullptr);
  EXPECT_EQ(held.holder(4), nullptr);

  // Later sheets come after the world, however well they fit.
  SheetList later;
  later.push_back(Sheet(3, 0, 0, 100, 100));
  held.markBy(later, 0);
  EXPECT_EQ(held.holder(3), batch[0].get());
}

TEST(HeldCandidates, IndexesOnlyFromItsStartAndSurvivesTheListChanging) {
  SheetList sheets;
  sheets.push_back(Sheet(0, 0, 0, 1000, 1000));
  TempIdArray candidates{Candidate(100, 100, 10, 10), Candidate(200, 200, 10, 10), Candidate(5000, 5000, 10, 10)};
  internal::HeldCandidates held(candidates, 1);
  candidates.clear();  // the index keeps its own copies
  held.markBy(sheets, 0);
  EXPECT_EQ(held.holder(0), nullptr);  // before its start
  EXPECT_EQ(held.holder(1), sheets[0].get());
  EXPECT_EQ(held.holder(2), nullptr);
}

}  // namespace
}  // namespace tv::recognition
