#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "paper/paper.h"

namespace tv::paper {
namespace {

struct Size {
  std::int32_t length, width;
};

MyPaper Normalized(std::int32_t length, std::int32_t width) {
  MyPaper paper{length, width, false};
  NormalizePaperSize(paper);
  return paper;
}

// Every catalogue row, written out here so that a row lost or mistyped in the catalogue shows.
const std::vector<Size> kCatalogue = {
    {210, 148},  {297, 210},  {420, 297},  {594, 420},  {841, 594},  {1189, 841},                    // A
    {250, 176},  {353, 250},  {500, 353},  {707, 500},  {1000, 707}, {1414, 1000},                   // B
    {630, 297},  {841, 297},  {1051, 297}, {1261, 297}, {1471, 297}, {1682, 297}, {1892, 297},      // A3+
    {743, 420},  {891, 420},  {1040, 420}, {1189, 420}, {1338, 420}, {1486, 420}, {1635, 420},      // A2+
    {1783, 420}, {1932, 420}, {2080, 420},                                                          //
    {1051, 594}, {1261, 594}, {1471, 594}, {1682, 594}, {1892, 594}, {2102, 594},                   // A1+
    {1338, 841}, {1486, 841}, {1635, 841}, {1783, 841}, {1932, 841}, {2080, 841}, {2229, 841},      // A0+
    {2378, 841},
};

TEST(NormalizePaperSize, EveryCatalogueRowIsStandardAndPullsNearbySizesOntoItself) {
  ASSERT_EQ(kCatalogue.size(), 43u);
  for (const Size& row : kCatalogue) {
    SCOPED_TRACE(std::to_string(row.length) + "x" + std::to_string(row.width));
    EXPECT_EQ(Normalized(row.length, row.width), (MyPaper{row.length, row.width, true}));
    // 0.2 % longer (and under 4 mm) is inside every band, so such a size lands on the row too.
    const std::int32_t dl = std::min(3, row.length * 2 / 1000);
    if (dl > 0) {
      EXPECT_EQ(Normalized(row.length + dl, row.width), (MyPaper{row.length, row.width, true}));
    }
  }
}

TEST(NormalizePaperSize, ClearsStandardWhenNoRowIsTaken) {
  MyPaper paper{733, 512, true};
  NormalizePaperSize(paper);
  EXPECT_EQ(paper, (MyPaper{733, 512, false}));
}

TEST(NormalizePaperSize, ABandUsesOnePercentStrictly) {
  // 420 * 1.01 = 424.2: 424 is inside, 425 outside (and then only the width step runs).
  EXPECT_EQ(Normalized(424, 297), (MyPaper{420, 297, true}));
  EXPECT_EQ(Normalized(425, 297), (MyPaper{425, 297, false}));
}

TEST(NormalizePaperSize, BBandNeedsBothTheRatioAndTheMillimetreBound) {
  // 353 * 0.003 = 1.059: 354 is in, 355 out.
  EXPECT_EQ(Normalized(354, 250), (MyPaper{353, 250, true}));
  // 1414 +- 4 mm: 0.3 % would allow 4.24 mm, the absolute bound of 4 mm refuses 1418.
  EXPECT_EQ(Normalized(1417, 1000), (MyPaper{1414, 1000, true}));
  EXPECT_EQ(Normalized(1418, 1000), (MyPaper{1418, 1000, false}));
  // 253x178: 1.2 % off on the length, so no B row; 178 is 1.1 % off 176, outside the width step.
  const MyPaper odd = Normalized(253, 178);
  EXPECT_EQ(odd, (MyPaper{253, 178, false}));
  EXPECT_EQ(PaperNameOf(odd), "TV_253x178");
}

TEST(NormalizePaperSize, WidthStepRescalesTheLengthWithoutMakingItStandard) {
  // 300 is within 1 % of 297: length = trunc(297 / 300 * 600 + 0.5) = 594.
  const MyPaper paper = Normalized(600, 300);
  EXPECT_EQ(paper, (MyPaper{594, 297, false}));
  EXPECT_EQ(PaperNameOf(paper), "TV_A3_Plus_594");
  // 1 % of the sheet's own width is the bound, inclusive: 301 is too far from 297.
  EXPECT_EQ(Normalized(600, 301), (MyPaper{600, 301, false}));
  EXPECT_EQ(Normalized(-600, -300), (MyPaper{-600, -300, false}));
  // B widths use 0.3 %: 501 is caught (0.2 %), 502 is not (0.4 %).
  EXPECT_EQ(Normalized(800, 501), (MyPaper{798, 500, false}));  // 500/501*800 = 798.4
  EXPECT_EQ(Normalized(800, 502), (MyPaper{800, 502, false}));
  // The width test has no millimetre bound: 849 is 0.95 % off 841, 8 mm away.
  EXPECT_EQ(Normalized(3000, 849), (MyPaper{2972, 841, false}));  // 841/849*3000 = 2971.7
}

TEST(NormalizePaperSize, LengthenedBandRunsOnTheWidthSnappedValues) {
  // 1060x300: width to 297, length trunc(297/300*1060 + 0.5) = 1049, then 1049 is within 0.6 %
  // and 6 mm of 1051.
  EXPECT_EQ(Normalized(1060, 300), (MyPaper{1051, 297, true}));
  // 0.6 % of 2378 is 14 mm, but the 6 mm bound refuses 2385.
  EXPECT_EQ(Normalized(2383, 841), (MyPaper{2378, 841, true}));
  EXPECT_EQ(Normalized(2385, 841), (MyPaper{2385, 841, false}));
}

TEST(NormalizePaperSize, EighthStepsAreNamedButNeverSnappedTo) {
  const MyPaper near = Normalized(670, 420);
  EXPECT_EQ(near, (MyPaper{670, 420, false}));
  EXPECT_EQ(PaperNameOf(near), "TV_A2_Plus_670");
  EXPECT_EQ(PaperNameOf(MyPaper{668, 420, false}), "TV_A2_Plus_1+1-8");
  // Exactly 668 is not moved either; it keeps its size and its eighth-step name.
  const MyPaper exact = Normalized(668, 420);
  EXPECT_EQ(exact, (MyPaper{668, 420, false}));
  EXPECT_EQ(PaperNameOf(exact), "TV_A2_Plus_1+1-8");
}

TEST(AddPaper, FractionalSidesAreCutToMillimetresAndSnapped) {
  PaperList list;
  bool added = false;
  MyPaper* a3 = AddPaper(list, 420.5, 296.9, added);
  ASSERT_NE(a3, nullptr);
  EXPECT_TRUE(added);
  EXPECT_EQ(*a3, (MyPaper{420, 297, true}));
  EXPECT_EQ(PaperNameOf(*a3), "TV_A3");

  MyPaper* longer = AddPaper(list, 1051, 594, added);
  EXPECT_EQ(PaperNameOf(*longer), "TV_A1_Plus_1+1-4");
  MyPaper* a3long = AddPaper(list, 297, 1051, added);
  EXPECT_EQ(PaperNameOf(*a3long), "TV_A3_Plus_1+3-2");
}

TEST(AddPaper, NonsenseSidesDoNotOverflow) {
  PaperList list;
  bool added = false;
  MyPaper* huge = AddPaper(list, 1e300, -1e300, added);
  ASSERT_NE(huge, nullptr);
  EXPECT_GE(huge->length, huge->width);
  AddPaper(list, std::numeric_limits<double>::quiet_NaN(), 0.0, added);
  EXPECT_EQ(list.size(), 2u);
}

}  // namespace
}  // namespace tv::paper
