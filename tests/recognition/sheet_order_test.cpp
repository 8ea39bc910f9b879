// Reading order of sheets: bands of rectangles, the pick of the next sheet, and the ordering of a
// job's kept sheets with their marker numbers.
#include "recognition/sheet_order.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "drawing_fixture.h"
#include "host/entity.h"
#include "host/wrappers.h"
#include "recognition/plot_marker.h"
#include "recognition/sheet_geometry.h"

namespace tv::recognition {
namespace {

struct Rect {
  double x0, y0, x1, y1;
};

struct Corners {
  std::vector<Point3d> min, max;
};

Corners CornersOf(const std::vector<Rect>& rects) {
  Corners c;
  for (const Rect& r : rects) {
    c.min.emplace_back(r.x0, r.y0);
    c.max.emplace_back(r.x1, r.y1);
  }
  return c;
}

int Pick(const std::vector<Rect>& rects, OrderMode mode) {
  const Corners c = CornersOf(rects);
  return PickNextSheet(c.min, c.max, mode);
}

// The incoming indexes BandSelect keeps; its corner outputs must be those of the same rectangles.
std::vector<int> Band(const std::vector<Rect>& rects, int direction, std::vector<int> indexes = {}) {
  const Corners c = CornersOf(rects);
  if (indexes.empty())
    for (int i = 0; i < static_cast<int>(rects.size()); ++i) indexes.push_back(i);
  std::vector<Point3d> outMin{{9, 9}}, outMax{{9, 9}};
  std::vector<int> outIndexes{99};
  const int count = BandSelect(c.min, c.max, indexes, direction, outMin, outMax, outIndexes);
  EXPECT_EQ(count, static_cast<int>(outIndexes.size()));
  EXPECT_EQ(outMin.size(), outIndexes.size());
  EXPECT_EQ(outMax.size(), outIndexes.size());
  for (std::size_t k = 0; k < outIndexes.size() && k < outMin.size() && k < outMax.size(); ++k) {
    const auto at = std::find(indexes.begin(), indexes.end(), outIndexes[k]);
    if (at == indexes.end()) {
      ADD_FAILURE() << "index " << outIndexes[k] << " was not passed in";
      continue;
    }
    const auto i = static_cast<std::size_t>(at - indexes.begin());
    EXPECT_EQ(outMin[k], c.min[i]);
    EXPECT_EQ(outMax[k], c.max[i]);
  }
  return outIndexes;
}

using Indexes = std::vector<int>;

// ---- bands ---------------------------------------------------------------------------------------

// A rectangle laid out as for a bottom band (span [lo, hi] along the band axis, [c0, c1] across),
// turned so that the same picture faces `direction`.
Rect Facing(int direction, double lo, double hi, double c0, double c1) {
  switch (direction) {
    case kTop: return {c0, -hi, c1, -lo};
    case kLeft: return {lo, c0, hi, c1};
    case kRight: return {-hi, c0, -lo, c1};
    default: return {c0, lo, c1, hi};
  }
}

class BandSelectTest : public ::testing::TestWithParam<int> {
 protected:
  Rect At(double lo, double hi, double c0 = 0, double c1 = 100) const { return Facing(GetParam(), lo, hi, c0, c1); }
};

TEST_P(BandSelectTest, BandGrowsThroughOverlappingNeighboursWhateverTheirOrder) {
  const std::vector<Rect> rects{
      At(0, 100),                // 0: the outermost: seeds the band [0, 100]
      At(120, 220, 500, 600),    // 1: reached only once 2 has grown the band
      At(50, 150, 200, 300),     // 2: overlaps by 50 of 100
      At(200, 1000, 700, 800),   // 3: overlaps the grown band by 20 of 800: stays out
      At(300, 400, 900, 1000),   // 4: beyond the band
      At(0, 60, 1100, 1200),     // 5: inside
  };
  EXPECT_EQ(Band(rects, GetParam()), (Indexes{0, 1, 2, 5}));
  // The indexes travel with their rectangles.
  EXPECT_EQ(Band(rects, GetParam(), {10, 11, 12, 13, 14, 15}), (Indexes{10, 11, 12, 15}));
}

TEST_P(BandSelectTest, OverlapOfExactlyAQuarterStaysOut) {
  EXPECT_EQ(Band({At(0, 400), At(300, 700, 500, 600)}, GetParam()), (Indexes{0}));
  EXPECT_EQ(Band({At(0, 400), At(299.5, 699.5, 500, 600)}, GetParam()), (Indexes{0, 1}));
  // The quarter is of the neighbour's own size, not of the band's.
  EXPECT_EQ(Band({At(0, 100), At(90, 125, 500, 600)}, GetParam()), (Indexes{0, 1}));
  EXPECT_EQ(Band({At(0, 100), At(90, 200, 500, 600)}, GetParam()), (Indexes{0}));
}

TEST_P(BandSelectTest, EqualEdgesKeepTheEarlierSeed) {
  // Seeded by the short one, the tall one overlaps by only 100 of 500.
  EXPECT_EQ(Band({At(0, 100), At(0, 500, 500, 600)}, GetParam()), (Indexes{0}));
  // Seeded by the tall one, the short one lies inside.
  EXPECT_EQ(Band({At(0, 500, 500, 600), At(0, 100)}, GetParam()), (Indexes{0, 1}));
}

std::string DirectionName(const ::testing::TestParamInfo<int>& info) {
  switch (info.param) {
    case kTop: return "Top";
    case kBottom: return "Bottom";
    case kRight: return "Right";
    default: return "Left";
  }
}

INSTANTIATE_TEST_SUITE_P(AllDirections, BandSelectTest, ::testing::Values(kTop, kBottom, kRight, kLeft),
                         DirectionName);

TEST(BandSelectEdgeTest, EmptySetAndReversedCorners) {
  EXPECT_TRUE(Band({}, kBottom).empty());
  // Corners given the other way round span the same interval.
  EXPECT_EQ(Band({{100, 100, 0, 0}, {300, 150, 200, 20}}, kBottom), (Indexes{0, 1}));
  EXPECT_EQ(Band({{100, 100, 0, 0}, {300, 150, 200, 90}}, kBottom), (Indexes{0}));
}

TEST(BandSelectEdgeTest, BandTooFarOutToStepDoesNotGrow) {
  // At 2^60 a unit step is lost, so the neighbour that would join nearer the origin stays out.
  const double big = std::ldexp(1.0, 60);
  EXPECT_EQ(Band({{0, big, 100, big * 2}, {200, big * 1.5, 300, big * 3}}, kBottom), (Indexes{0}));
  const double inf = std::numeric_limits<double>::infinity();
  EXPECT_EQ(Band({{0, -inf, 100, 10}, {200, 0, 300, inf}}, kBottom), (Indexes{0}));
}

// ---- extremes ------------------------------------------------------------------------------------

TEST(ExtremeOfTest, FirstRectangleReachingFurthest) {
  const Corners c = CornersOf({
      {0, 0, 100, 100},
      {-50, 10, 40, 60},    // 1: furthest left
      {20, -30, 60, 50},    // 2: lowest
      {10, 0, 90, 150},     // 3: highest
      {30, 20, 180, 80},    // 4: furthest right
      {-50, -30, 0, 150},   // 5: ties 1, 2 and 3
      {150, 0, 180, 10},    // 6: ties 4
  });
  EXPECT_EQ(ExtremeOf(c.min, c.max, kTop), 3);
  EXPECT_EQ(ExtremeOf(c.min, c.max, kBottom), 2);
  EXPECT_EQ(ExtremeOf(c.min, c.max, kRight), 4);
  EXPECT_EQ(ExtremeOf(c.min, c.max, kLeft), 1);
  EXPECT_EQ(ExtremeOf(c.min, c.max, 0), 1);  // anything else reads as left
  EXPECT_EQ(ExtremeOf(c.min, c.max, 7), 1);

  const Corners one = CornersOf({{500, 500, 600, 600}});
  EXPECT_EQ(ExtremeOf(one.min, one.max, kLeft), 0);
  EXPECT_EQ(ExtremeOf({}, {}, kTop), 0);
}

// ---- the next sheet ------------------------------------------------------------------------------

TEST(PickNextSheetTest, OutsideTheModesOrWithFewSheetsTheFirstComes) {
  const std::vector<Rect> rects{{1000, 0, 1400, 300}, {0, 1000, 400, 1300}};
  EXPECT_EQ(Pick(rects, 1), 1);
  for (OrderMode mode : {0, -1, 9, 10}) EXPECT_EQ(Pick(rects, mode), 0) << mode;
  EXPECT_EQ(Pick({}, 1), 0);
  EXPECT_EQ(Pick({{1000, 0, 1400, 300}}, 1), 0);
  // A band that takes nothing.
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(Pick({{nan, nan, nan, nan}, {0, 0, 10, 10}}, 1), -1);
}

TEST(PickNextSheetTest, ReturnsTheCallersIndexAfterNarrowing) {
  const std::vector<Rect> rects{{0, 0, 400, 300}, {500, 400, 900, 700}, {0, 400, 400, 700}, {-500, 0, -100, 300}};
  EXPECT_EQ(Pick(rects, 1), 2);  // top row, then its left end
  EXPECT_EQ(Pick(rects, 3), 3);  // bottom row, then its left end
  EXPECT_EQ(Pick(rects, 4), 0);
}

TEST(PickNextSheetTest, RowWithASheetStickingOutSortsItselfOut) {
  // The tall sheet pulls the top band down onto the lower row; crosswise the left end of that band
  // is a column of two, of which the upper one leads.
  const std::vector<Rect> rects{{0, 0, 400, 300}, {500, 0, 900, 300}, {0, 400, 400, 700}, {500, 100, 900, 700}};
  EXPECT_EQ(Pick(rects, 1), 2);
}

TEST(PickNextSheetTest, IdenticalSheetsRunOutThePassesAndGiveTheFirst) {
  const std::vector<Rect> same{{10, 10, 430, 307}, {10, 10, 430, 307}, {10, 10, 430, 307}};
  for (OrderMode mode = 1; mode <= 8; ++mode) EXPECT_EQ(Pick(same, mode), 0) << mode;
  // Near twins never narrow the band either; the last word is the reading direction's.
  const std::vector<Rect> twins{{0, 0, 100, 100}, {-1, 0, 99, 100}};
  EXPECT_EQ(Pick(twins, 1), 1);
  EXPECT_EQ(Pick(twins, 2), 0);
  EXPECT_EQ(Pick(twins, 3), 1);
  EXPECT_EQ(Pick(twins, 4), 0);
}

// ---- ordering a job ------------------------------------------------------------------------------

// A job of sheets without markers, each labelled so that an order reads as a list of labels.
class SheetList {
 public:
  Plot_Drawing1& Add(int label, Rect r, ObjectId space = {}, std::int32_t sequence = 0) {
    auto sheet = std::make_unique<Plot_Drawing1>();
    sheet->minX = r.x0;
    sheet->minY = r.y0;
    sheet->maxX = r.x1;
    sheet->maxY = r.y1;
    sheet->sizeX = r.x1 - r.x0;
    sheet->sizeY = r.y1 - r.y0;
    sheet->spaceId = space;
    sheet->sequence = sequence;
    labels_[sheet.get()] = label;
    job_.keptSheets.push_back(sheet.get());
    job_.allSheets.push_back(std::move(sheet));
    return *job_.allSheets.back();
  }

  std::vector<int> Order(OrderMode mode) {
    OrderSheets(job_, mode);
    return Labels();
  }

  std::vector<int> Labels() const {
    std::vector<int> out;
    for (const Plot_Drawing1* s : job_.keptSheets) out.push_back(labels_.at(s));
    return out;
  }

  SheetJob& job() { return job_; }

 private:
  SheetJob job_;
  std::map<const Plot_Drawing1*, int> labels_;
};

TEST(OrderSheetsTest, RowsStayApartWhenOneSags) {
  SheetList list;
  // Lower row 1 2 3 level; upper row 4 5 6 sagging into it by 50, 30 and 10 of 400.
  list.Add(5, {610, 380, 1010, 780});
  list.Add(2, {600, 0, 1000, 400});
  list.Add(6, {1210, 390, 1610, 790});
  list.Add(1, {0, 0, 400, 400});
  list.Add(4, {-15, 350, 385, 750});
  list.Add(3, {1200, 0, 1600, 400});
  EXPECT_EQ(list.Order(1), (Indexes{4, 5, 6, 1, 2, 3}));
  EXPECT_EQ(list.Order(3), (Indexes{1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(list.Order(2), (Indexes{6, 5, 4, 3, 2, 1}));
}

TEST(OrderSheetsTest, SmallSheetBesideABigOneJoinsItsRow) {
  SheetList list;
  list.Add(4, {0, -900, 841, -306});     // the row below
  list.Add(3, {1400, 297, 1820, 594});   // A3 hung from the top line of the A1
  list.Add(2, {500, 0, 1341, 594});      // A1
  list.Add(1, {0, 0, 420, 297});         // A3 standing on the A1's bottom line, left of it
  EXPECT_EQ(list.Order(1), (Indexes{1, 2, 3, 4}));
  EXPECT_EQ(list.Order(3), (Indexes{4, 1, 2, 3}));
}

TEST(OrderSheetsTest, ModeOutsideTheRangeKeepsTheOrder) {
  for (OrderMode mode : {0, 10, -3}) {
    SheetList list;
    list.Add(1, {1000, 0, 1400, 300});
    list.Add(2, {0, 1000, 400, 1300});
    list.Add(3, {500, 500, 900, 800});
    list.Add(4, {1000, 0, 1400, 300});
    EXPECT_EQ(list.Order(mode), (Indexes{1, 2, 3, 4})) << mode;
  }
}

TEST(OrderSheetsTest, SequenceModeSortsStablyByScanOrder) {
  SheetList list;
  list.Add(1, {0, 0, 100, 100}, ObjectId{7}, 5);
  list.Add(2, {200, 0, 300, 100}, ObjectId{8}, -1);
  list.Add(3, {0, 200, 100, 300}, ObjectId{7}, 5);
  list.Add(4, {200, 200, 300, 300}, ObjectId{8}, 2);
  list.Add(5, {400, 0, 500, 100}, ObjectId{7}, -1);
  list.Add(6, {400, 200, 500, 300}, ObjectId{7}, 2);
  EXPECT_EQ(list.Order(9), (Indexes{2, 5, 4, 6, 1, 3}));
}

TEST(OrderSheetsTest, SpacesNeverInterleaveWhateverTheMode) {
  const ObjectId model{1}, layoutA{2}, layoutB{3};
  for (OrderMode mode = -1; mode <= 10; ++mode) {
    SheetList list;
    // Every space has the same two rows of sheets, so only the spaces can keep them apart. The
    // scan numbers keep each space together, as a scan does.
    const ObjectId spaces[] = {layoutA, model, layoutB};
    const std::int32_t firstSequence[] = {100, 0, 200};
    for (int k = 0; k < 4; ++k) {
      for (int s = 0; s < 3; ++s) {
        const double x = (k % 2) * 500.0, y = (k / 2) * 400.0;
        list.Add(s * 10 + k, {x, y, x + 400, y + 300}, spaces[s], firstSequence[s] + 3 - k);
      }
    }
    const std::vector<int> order = list.Order(mode);
    ASSERT_EQ(order.size(), 12u);
    std::vector<int> spaceRuns;
    for (int l : order)
      if (spaceRuns.empty() || spaceRuns.back() != l / 10) spaceRuns.push_back(l / 10);
    // Bands and other modes take spaces as they first appear; the scan order puts the model first.
    const std::vector<int> expected = mode == 9 ? std::vector<int>{1, 0, 2} : std::vector<int>{0, 1, 2};
    EXPECT_EQ(spaceRuns, expected) << "mode " << mode;
  }
}

TEST(OrderSheetsTest, EmptyJobAndOwnershipUntouched) {
  SheetJob empty;
  for (OrderMode mode : {1, 9}) {
    OrderSheets(empty, mode);
    EXPECT_TRUE(empty.keptSheets.empty());
  }
  SheetList list;
  list.Add(1, {0, 0, 100, 100});
  list.Add(2, {0, 200, 100, 300});
  list.Add(3, {0, 400, 100, 500});
  const Plot_Drawing1* dropped = list.job().keptSheets[1];
  list.job().keptSheets.erase(list.job().keptSheets.begin() + 1);
  EXPECT_EQ(list.Order(1), (Indexes{3, 1}));
  // The owning list is not the order's business.
  ASSERT_EQ(list.job().allSheets.size(), 3u);
  EXPECT_EQ(list.job().allSheets[1].get(), dropped);
}

// ---- the nine modes on a grid --------------------------------------------------------------------

struct ModeCase {
  OrderMode mode;
  std::vector<int> expected;  // cells as on a numeric keypad: 7 8 9 / 4 5 6 / 1 2 3
};

void PrintTo(const ModeCase& c, std::ostream* os) { *os << "mode " << c.mode; }

class ReadingOrderTest : public ::testing::TestWithParam<ModeCase> {};

// The order a scan met the cells in; mode 9 reads it back.
const std::vector<int> kScanOrder{5, 3, 8, 1, 9, 2, 7, 4, 6};

TEST_P(ReadingOrderTest, RoughGridReadsInTheModesOrder) {
  SheetList list;
  // Sheets about 400 x 300 on a 500 x 400 pitch, each shifted and resized a little, as drawn.
  const double jitter[9][4] = {
      {13, -7, 4, -9}, {-18, 4, -6, 8},  {7, 19, 10, 0},   {-3, -16, -10, 5}, {20, 11, 0, -4},
      {-11, 2, 8, 10}, {5, -20, -3, -8}, {-20, -1, 6, 3},  {16, 15, -8, 7},
  };
  for (int cell : {6, 2, 9, 4, 1, 8, 3, 7, 5}) {
    const int col = (cell - 1) % 3, row = (cell - 1) / 3;
    const double* j = jitter[cell - 1];
    const double x = col * 500.0 + j[0], y = row * 400.0 + j[1];
    const auto seq = std::find(kScanOrder.begin(), kScanOrder.end(), cell) - kScanOrder.begin();
    list.Add(cell, {x, y, x + 400 + j[2], y + 300 + j[3]}, {}, static_cast<std::int32_t>(seq));
  }
  EXPECT_EQ(list.Order(GetParam().mode), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    AllModes, ReadingOrderTest,
    ::testing::Values(ModeCase{1, {7, 8, 9, 4, 5, 6, 1, 2, 3}}, ModeCase{2, {9, 8, 7, 6, 5, 4, 3, 2, 1}},
                      ModeCase{3, {1, 2, 3, 4, 5, 6, 7, 8, 9}}, ModeCase{4, {3, 2, 1, 6, 5, 4, 9, 8, 7}},
                      ModeCase{5, {1, 4, 7, 2, 5, 8, 3, 6, 9}}, ModeCase{6, {3, 6, 9, 2, 5, 8, 1, 4, 7}},
                      ModeCase{7, {7, 4, 1, 8, 5, 2, 9, 6, 3}}, ModeCase{8, {9, 6, 3, 8, 5, 2, 7, 4, 1}},
                      ModeCase{9, kScanOrder}),
    [](const ::testing::TestParamInfo<ModeCase>& info) { return "Mode" + std::to_string(info.param.mode); });

// Picking a sheet at a time from all that are left is what the order means; ordering a job must
// give exactly that order, on regular grids, rough ones, overlapping and identical sheets.
TEST(OrderSheetsTest, OrderIsThatOfPickingTheNextSheetAgainAndAgain) {
  std::mt19937 rng(20261125);
  std::uniform_real_distribution<double> u(0.0, 1.0);
  for (int layout = 0; layout < 40; ++layout) {
    const int count = 2 + layout * 3;
    std::vector<Rect> rects;
    for (int i = 0; i < count; ++i) {
      const int col = i % 7, row = i / 7;
      switch (layout % 4) {
        case 0: rects.push_back({col * 500.0, row * 400.0, col * 500.0 + 400, row * 400.0 + 300}); break;  // a grid
        case 1: {  // a rough grid
          const double x = col * 500.0 + 60 * u(rng) - 30, y = row * 400.0 + 160 * u(rng) - 80;
          rects.push_back({x, y, x + 300 + 150 * u(rng), y + 200 + 150 * u(rng)});
          break;
        }
        case 2: {  // anywhere, overlapping, in all sizes
          const double x = 3000 * u(rng), y = 3000 * u(rng);
          rects.push_back({x, y, x + 50 + 900 * u(rng), y + 50 + 900 * u(rng)});
          break;
        }
        default: rects.push_back(i % 3 ? Rect{0, 0, 400, 300} : Rect{100.0 * (i % 5), 0, 100.0 * (i % 5) + 400, 300}); break;
      }
    }
    for (OrderMode mode = 1; mode <= 8; ++mode) {
      SheetList list;
      Corners left;
      std::vector<int> labels, expected;
      for (int i = 0; i < count; ++i) {
        list.Add(i, rects[static_cast<std::size_t>(i)]);
        left.min.emplace_back(rects[static_cast<std::size_t>(i)].x0, rects[static_cast<std::size_t>(i)].y0);
        left.max.emplace_back(rects[static_cast<std::size_t>(i)].x1, rects[static_cast<std::size_t>(i)].y1);
        labels.push_back(i);
      }
      while (!labels.empty()) {
        const int picked = PickNextSheet(left.min, left.max, mode);
        ASSERT_GE(picked, 0);
        expected.push_back(labels[static_cast<std::size_t>(picked)]);
        labels.erase(labels.begin() + picked);
        left.min.erase(left.min.begin() + picked);
        left.max.erase(left.max.begin() + picked);
      }
      EXPECT_EQ(list.Order(mode), expected) << "layout " << layout << " mode " << mode;
    }
  }
}

// ---- marker numbers ------------------------------------------------------------------------------

class SheetOrderMarkerTest : public test::DrawingTest {
 protected:
  void SetUp() override {
    DrawingTest::SetUp();
    source_ = AddLw({{0, 0}, {400, 0}, {400, 300}, {0, 300}}, true);
    Open();
    layer_ = host::FindOrAddLayer("Temp_PlotLayer");
  }
  void TearDown() override {
    job_.Clear();
    DrawingTest::TearDown();
  }

  Plot_Drawing1& AddSheet(Rect r, std::int32_t sequence, bool marked = true) {
    auto sheet = std::make_unique<Plot_Drawing1>();
    sheet->sourceIds[0] = source_;
    sheet->sequence = sequence;
    if (marked) {
      EXPECT_TRUE(AddMarker(*sheet, layer_, Extents3d{Point3d{r.x0, r.y0}, Point3d{r.x1, r.y1}}, 1.0));
    } else {
      sheet->minX = r.x0;
      sheet->minY = r.y0;
      sheet->maxX = r.x1;
      sheet->maxY = r.y1;
    }
    job_.keptSheets.push_back(sheet.get());
    job_.allSheets.push_back(std::move(sheet));
    return *job_.allSheets.back();
  }

  // What the markers of the sheets, in the order they were added, show; -1 for none.
  std::vector<std::int32_t> Shown(std::int32_t* stateOfFirst = nullptr) const {
    std::vector<std::int32_t> numbers;
    for (const auto& sheet : job_.allSheets) {
      const host::Entity e = host::OpenEntity(sheet->markerId);
      const auto* marker = e ? dynamic_cast<const Temp_PlotRec*>(e.custom()) : nullptr;
      numbers.push_back(marker ? marker->number : -1);
      if (marker && stateOfFirst && numbers.size() == 1) *stateOfFirst = marker->state;
    }
    return numbers;
  }

  ObjectId source_;
  ObjectId layer_;
  SheetJob job_;
};

TEST_F(SheetOrderMarkerTest, MarkersShowThePlaceInTheList) {
  AddSheet({0, 0, 400, 300}, 3);       // lower left
  AddSheet({500, 400, 900, 700}, 1);   // upper right
  AddSheet({500, 0, 900, 300}, 0, false);
  AddSheet({0, 400, 400, 700}, 2);     // upper left
  ASSERT_TRUE(SetMarker(*job_.allSheets[0], -1, kMarkerHighlighted));

  OrderSheets(job_, 1);
  std::int32_t state = -1;
  EXPECT_EQ(Shown(&state), (std::vector<std::int32_t>{3, 2, -1, 1}));
  EXPECT_EQ(state, kMarkerHighlighted);  // numbering leaves the state alone

  OrderSheets(job_, 5);
  EXPECT_EQ(Shown(), (std::vector<std::int32_t>{1, 4, -1, 2}));

  OrderSheets(job_, 9);
  EXPECT_EQ(Shown(), (std::vector<std::int32_t>{4, 2, -1, 3}));
  EXPECT_EQ(job_.keptSheets[0], job_.allSheets[2].get());
}

}  // namespace
}  // namespace tv::recognition
