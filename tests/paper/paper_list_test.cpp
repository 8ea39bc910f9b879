#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "paper/paper.h"
#include "titleblock/tk_library.h"

namespace tv::paper {
namespace {

// Sets the library's naming style for one test and puts the old one back.
class StyleGuard {
 public:
  explicit StyleGuard(std::int32_t style) : saved_(titleblock::GlobalTkLibrary().PaperNameStyle) {
    titleblock::GlobalTkLibrary().PaperNameStyle = style;
  }
  ~StyleGuard() { titleblock::GlobalTkLibrary().PaperNameStyle = saved_; }

 private:
  std::int32_t saved_;
};

TEST(AddPaper, SortsTheSidesAndReturnsTheExistingRow) {
  PaperList list;
  bool added = false;
  MyPaper* first = AddPaper(list, 420, 297, added);
  EXPECT_TRUE(added);
  MyPaper* again = AddPaper(list, 297, 420, added);
  EXPECT_FALSE(added);
  EXPECT_EQ(again, first);
  // A size that snaps onto a paper already there is that paper too.
  EXPECT_EQ(AddPaper(list, 421, 298, added), first);
  EXPECT_FALSE(added);
  EXPECT_EQ(list.size(), 1u);

  MyPaper* other = AddPaper(list, 733, 512, added);
  EXPECT_TRUE(added);
  EXPECT_NE(other, first);
  EXPECT_EQ(*other, (MyPaper{733, 512, false}));
  EXPECT_EQ(list.size(), 2u);
}

TEST(AppendPaper, NormalisesButKeepsDuplicates) {
  PaperList list;
  MyPaper* a = AppendPaper(list, MyPaper{595, 421, false});
  MyPaper* b = AppendPaper(list, MyPaper{594, 420, false});
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(*a, (MyPaper{594, 420, true}));
  EXPECT_EQ(*a, *b);
  EXPECT_NE(a, b);
}

TEST(RemoveDuplicatePapers, KeepsTheFirstOfEachSizeInOrder) {
  PaperList list;
  MyPaper* a3 = AppendPaper(list, MyPaper{420, 297});
  MyPaper* a1 = AppendPaper(list, MyPaper{841, 594});
  AppendPaper(list, MyPaper{420, 297});
  MyPaper* custom = AppendPaper(list, MyPaper{733, 512});
  AppendPaper(list, MyPaper{841, 594});
  AppendPaper(list, MyPaper{420, 297});
  RemoveDuplicatePapers(list);
  ASSERT_EQ(list.size(), 3u);
  EXPECT_EQ(list[0].get(), a3);
  EXPECT_EQ(list[1].get(), a1);
  EXPECT_EQ(list[2].get(), custom);

  PaperList empty;
  RemoveDuplicatePapers(empty);
  EXPECT_TRUE(empty.empty());
}

TEST(FindPaperByName, FindsTheFirstRowOfThatNameOrNothing) {
  PaperList list;
  AppendPaper(list, MyPaper{1189, 420});
  MyPaper* first = AppendPaper(list, MyPaper{630, 297});
  AppendPaper(list, MyPaper{630, 297});
  EXPECT_EQ(FindPaperByName(list, "TV_A3_Plus_1+1-2"), first);
  EXPECT_EQ(FindPaperByName(list, "TV_A2_Plus_1+1")->length, 1189);
  EXPECT_EQ(FindPaperByName(list, "TV_A4"), nullptr);
  EXPECT_EQ(FindPaperByName(list, "A3+1\u22152"), nullptr);  // rendered names are not internal names
}

TEST(BuildStandardPaperList, AppendsTheTwentyOneStandardPapersInOrder) {
  PaperList list;
  AppendPaper(list, MyPaper{733, 512});
  BuildStandardPaperList(list);
  const std::vector<std::pair<int, int>> expected = {
      {297, 210},  {420, 297},  {594, 420},  {841, 594},  {1189, 841}, {743, 420},  {891, 420},
      {1040, 420}, {1189, 420}, {1051, 594}, {1261, 594}, {1471, 594}, {1682, 594}, {1338, 841},
      {1486, 841}, {1635, 841}, {1783, 841}, {1932, 841}, {2080, 841}, {2229, 841}, {2378, 841},
  };
  ASSERT_EQ(list.size(), expected.size() + 1);
  EXPECT_EQ(list[0]->length, 733);
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(*list[i + 1], (MyPaper{expected[i].first, expected[i].second, true})) << "row " << i;
  }
}

TEST(PaperForChoice, PlainChoicesAreTheASeries) {
  const std::vector<std::pair<int, int>> expected = {{297, 210}, {420, 297}, {594, 420}, {841, 594}, {1189, 841}};
  for (int choice = 0; choice < 5; ++choice) {
    std::int32_t length = 0, width = 0;
    ASSERT_TRUE(PaperForChoice(choice, 10.0, 10.0, length, width));
    EXPECT_EQ(length, expected[choice].first);
    EXPECT_EQ(width, expected[choice].second);
  }
}

TEST(PaperForChoice, LengthenedChoicesKeepTheDrawnProportionAndSnap) {
  std::int32_t length = 0, width = 0;
  // A3 lengthened, drawn 2000 by 940 (either way round): 2000/940*297 = 631.9 -> 632 -> snaps to 630.
  ASSERT_TRUE(PaperForChoice(6, 940.0, 2000.0, length, width));
  EXPECT_EQ(length, 630);
  EXPECT_EQ(width, 297);
  // A2 lengthened at 1.6: 672, off every row, stays.
  ASSERT_TRUE(PaperForChoice(7, 1600.0, 1000.0, length, width));
  EXPECT_EQ(length, 672);
  EXPECT_EQ(width, 420);
  // A square sheet gives a square paper: lengthened means the drawn proportion, nothing more.
  ASSERT_TRUE(PaperForChoice(8, 1000.0, 1000.0, length, width));
  EXPECT_EQ(length, 594);
  EXPECT_EQ(width, 594);
  // A0 lengthened at 2: 1682 is off the catalogue's 841 rows by more than 6 mm, so it stays.
  ASSERT_TRUE(PaperForChoice(9, 500.0, 1000.0, length, width));
  EXPECT_EQ(length, 1682);
  EXPECT_EQ(width, 841);
}

TEST(PaperForChoice, NoDrawnExtentLeavesTheLengthAt297) {
  std::int32_t length = 0, width = 0;
  ASSERT_TRUE(PaperForChoice(5, 0.0, 100.0, length, width));
  EXPECT_EQ(length, 297);
  EXPECT_EQ(width, 210);
  // A0 lengthened with a zero side: 297 and 841, put long side first.
  ASSERT_TRUE(PaperForChoice(9, 100.0, -5.0, length, width));
  EXPECT_EQ(length, 841);
  EXPECT_EQ(width, 297);
}

TEST(PaperForChoice, OutOfRangeChoiceLeavesTheOutputs) {
  std::int32_t length = 7, width = 8;
  EXPECT_FALSE(PaperForChoice(10, 1.0, 1.0, length, width));
  EXPECT_FALSE(PaperForChoice(-1, 1.0, 1.0, length, width));
  EXPECT_EQ(length, 7);
  EXPECT_EQ(width, 8);
}

TEST(PaperDisplayName, UsesTheLibraryStyleAndAddsTheSize) {
  const MyPaper a3long{630, 297, true};
  {
    StyleGuard style(0);
    EXPECT_EQ(PaperDisplayName(a3long, false, false), "A3+1\u22152");
    EXPECT_EQ(PaperDisplayName(a3long, true, false), "A3+1\u22152 (630x297)");
    EXPECT_EQ(PaperDisplayName(a3long, true, true), "A3+1\u22152 (297x630)");
    std::string name = "TV_A3_Plus_1+1-2";
    RenderPaperName(name);
    EXPECT_EQ(name, "A3+1\u22152");
  }
  {
    StyleGuard style(2);
    EXPECT_EQ(PaperDisplayName(a3long, true, false), "1.5A3 (630x297)");
    EXPECT_EQ(PaperDisplayName(MyPaper{1000, 707}, true, false), "B1 (1000x707)");
    std::string name = "TV_A2_Plus_1+11-8";
    RenderPaperName(name);
    EXPECT_EQ(name, "2A21-8");
  }
  // A custom size shows only its size.
  EXPECT_EQ(PaperDisplayName(MyPaper{733, 512}, false, false), "733x512");
  EXPECT_EQ(PaperDisplayName(MyPaper{733, 512}, true, false), "733x512");
  EXPECT_EQ(PaperDisplayName(MyPaper{733, 512}, true, true), "512x733");
}

}  // namespace
}  // namespace tv::paper
