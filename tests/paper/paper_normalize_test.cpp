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

// The first and last rows of each family of the catalogue.
const std::vector<Size> kCatalogue = {
    {210, 148},  {1189, 841}, {250, 176},  {1414, 1000}, {630, 297},  {1892, 297},
    {743, 420},  {2080, 420}, {1051, 594}, {2102, 594},  {1338, 841}, {2378, 841},
};

TEST(NormalizePaperSize, CatalogueRowsAreStandardAndPullNearbySizesOntoThemselves) {
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

TEST(NormalizePaperSize, BandsAndTheWidthStepAtTheirBounds) {
  struct Case {
    Size in;
    MyPaper out;
    const char* name;  // nullptr: not checked
  };
  const Case cases[] = {
      // A sizes: 1 % strictly. 420 * 1.01 = 424.2: 424 is inside, 425 outside.
      {{424, 297}, {420, 297, true}, nullptr},
      {{425, 297}, {425, 297, false}, nullptr},
      // B sizes need 0.3 % and 4 mm: 353 * 0.003 = 1.059, so 354 is in and 355 out; 1414 * 0.003 would
      // allow 4.24 mm, the 4 mm bound refuses 1418.
      {{354, 250}, {353, 250, true}, nullptr},
      {{1417, 1000}, {1414, 1000, true}, nullptr},
      {{1418, 1000}, {1418, 1000, false}, nullptr},
      // 1.2 % off on the length, so no B row; 178 is 1.1 % off 176, outside the width step.
      {{253, 178}, {253, 178, false}, "TV_253x178"},
      {{733, 512}, {733, 512, false}, nullptr},
      // The width step rescales the length without making it standard: 300 is within 1 % of 297,
      // length = trunc(297 / 300 * 600 + 0.5) = 594. The bound is 1 % of the sheet's own width,
      // 0.3 % for B widths, and has no millimetre bound (849 is 0.95 % and 8 mm off 841).
      {{600, 300}, {594, 297, false}, "TV_A3_Plus_594"},
      {{600, 301}, {600, 301, false}, nullptr},
      {{-600, -300}, {-600, -300, false}, nullptr},
      {{800, 501}, {798, 500, false}, nullptr},
      {{800, 502}, {800, 502, false}, nullptr},
      {{3000, 849}, {2972, 841, false}, nullptr},
      // The lengthened bands run on the width-snapped values: 1060x300 becomes 1049x297, within 0.6 %
      // and 6 mm of 1051; 0.6 % of 2378 is 14 mm, but the 6 mm bound refuses 2385.
      {{1060, 300}, {1051, 297, true}, nullptr},
      {{2383, 841}, {2378, 841, true}, nullptr},
      {{2385, 841}, {2385, 841, false}, nullptr},
      // Eighth steps are named but never snapped to, not even exactly.
      {{670, 420}, {670, 420, false}, "TV_A2_Plus_670"},
      {{668, 420}, {668, 420, false}, "TV_A2_Plus_1+1-8"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::to_string(c.in.length) + "x" + std::to_string(c.in.width));
    MyPaper paper{c.in.length, c.in.width, true};  // a standard flag left over is cleared
    NormalizePaperSize(paper);
    EXPECT_EQ(paper, c.out);
    if (c.name) {
      EXPECT_EQ(PaperNameOf(paper), c.name);
    }
  }
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
