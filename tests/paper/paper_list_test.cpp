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
  ASSERT_EQ(list.size(), 22u);
  EXPECT_EQ(list[0]->length, 733);
  EXPECT_EQ(*list[1], (MyPaper{297, 210, true}));
  EXPECT_EQ(*list[6], (MyPaper{743, 420, true}));
  EXPECT_EQ(*list[21], (MyPaper{2378, 841, true}));
  RemoveDuplicatePapers(list);
  EXPECT_EQ(list.size(), 22u);
}

// Choices 0-4 are A4 to A0; 5-9 the same papers lengthened to the drawn proportion, snapped.
TEST(PaperForChoice, PlainAndLengthenedChoices) {
  struct Case {
    int choice;
    double a, b;
    std::int32_t length, width;
  };
  const Case cases[] = {
      {0, 10, 10, 297, 210}, {2, 10, 10, 594, 420}, {4, 10, 10, 1189, 841},
      {6, 940, 2000, 630, 297},     // 2000/940*297 = 631.9 -> 632, snaps to 630
      {7, 1600, 1000, 672, 420},    // off every row: stays
      {8, 1000, 1000, 594, 594},    // a square sheet gives a square paper
      {9, 500, 1000, 1682, 841},    // more than 6 mm off the catalogue's rows: stays
      {5, 0, 100, 297, 210},        // no drawn extent: the length stays 297
      {9, 100, -5, 841, 297},       // a zero side: long side first
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.choice);
    std::int32_t length = 0, width = 0;
    ASSERT_TRUE(PaperForChoice(c.choice, c.a, c.b, length, width));
    EXPECT_EQ(length, c.length);
    EXPECT_EQ(width, c.width);
  }
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
