#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "recognition/holder_index_internal.h"

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

// The plain reading: the first sheet of all batches, in order, whose inner box holds both corners.
const Plot_Drawing1* FirstHolder(const std::vector<SheetList>& batches, const Temp_Id& c) {
  for (const SheetList& batch : batches)
    for (const auto& s : batch) {
      EnsureInnerBox(*s);
      const auto& b = s->innerBox;
      if (b[0] < c.minPt().x && c.minPt().x < b[1] && b[2] < c.minPt().y && c.minPt().y < b[3] && b[0] < c.maxPt().x &&
          c.maxPt().x < b[1] && b[2] < c.maxPt().y && c.maxPt().y < b[3])
        return s.get();
    }
  return nullptr;
}

TEST(HolderIndex, FindsTheFirstHolderInOrderAcrossManyBatchesOfOverlappingSheets) {
  // Batches of varied size, the later ones landing on and inside the earlier ones, so that the
  // first holder is often not the only one and the runs merge in every pattern.
  std::mt19937 random(7);
  std::uniform_real_distribution<double> at(0.0, 20000.0), side(200.0, 3000.0);
  std::vector<SheetList> batches;
  internal::HolderIndex index;
  std::int32_t tag = 0;
  for (int b = 0; b < 37; ++b) {
    SheetList batch;
    const int count = 1 + static_cast<int>(random() % 60);
    for (int k = 0; k < count; ++k) batch.push_back(Sheet(tag++, at(random), at(random), side(random), side(random)));
    index.add(batch);
    batches.push_back(std::move(batch));

    for (int q = 0; q < 200; ++q) {
      const Temp_Id c = Candidate(at(random), at(random), side(random) / 10, side(random) / 10);
      ASSERT_EQ(index.holder(c), FirstHolder(batches, c)) << "batch " << b << " query " << q;
    }
  }
}

TEST(HolderIndex, EdgesOfTheInnerBoxDoNotHold) {
  SheetList batch;
  batch.push_back(Sheet(0, 0, 0, 1000, 500));  // inner box 20..980 x 10..490
  internal::HolderIndex index;
  EXPECT_EQ(index.holder(Candidate(100, 100, 10, 10)), nullptr);  // nothing added yet
  index.add(batch);
  EXPECT_EQ(index.holder(Candidate(100, 100, 10, 10)), batch[0].get());
  EXPECT_EQ(index.holder(Candidate(20, 100, 10, 10)), nullptr);
  EXPECT_EQ(index.holder(Candidate(100, 100, 880, 10)), nullptr);  // reaches x 980
  EXPECT_EQ(index.holder(Candidate(100, 100, 879, 389)), batch[0].get());
}

TEST(HolderIndex, SheetsOfEverySizeAndDamagedCoordinatesAreHandled) {
  SheetList batch;
  batch.push_back(Sheet(0, -1e15, -1e15, 2e15, 2e15));  // the whole world
  batch.push_back(Sheet(1, 1e12, 1e12, 0.5, 0.5));      // tiny and far off
  batch.push_back(Sheet(2, 0, 0, std::nan(""), 10));    // damaged: holds nothing
  internal::HolderIndex index;
  index.add(batch);
  EXPECT_EQ(index.holder(Candidate(1e12 + 0.1, 1e12 + 0.1, 0.01, 0.01)), batch[0].get());
  EXPECT_EQ(index.holder(Candidate(std::nan(""), 0, 1, 1)), nullptr);
  EXPECT_EQ(index.holder(Candidate(1e300, 0, 1, 1)), nullptr);

  // Later sheets come after the world, however well they fit.
  SheetList later;
  later.push_back(Sheet(3, 0, 0, 100, 100));
  index.add(later);
  EXPECT_EQ(index.holder(Candidate(50, 50, 1, 1)), batch[0].get());
}

}  // namespace
}  // namespace tv::recognition
