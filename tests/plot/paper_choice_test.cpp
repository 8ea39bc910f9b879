#include "plot/paper_choice.h"

#include <gtest/gtest.h>

#include "plot/list_controls.h"

namespace tv::plot {
namespace {

TEST(PaperChoice, TitleByHowManyRowsAreSelected) {
  EXPECT_EQ(UnifyPaperTitle(2, 2), "统 一 修 改 纸 张");
  EXPECT_EQ(UnifyPaperTitle(1, 2), "选  择  纸  张");
  EXPECT_EQ(UnifyPaperTitle(1, 1), "选  择  纸  张");
  EXPECT_EQ(UnifyPaperTitle(2, 3), "选  择  纸  张");
}

TEST(PaperChoice, LengthenedChoicesTakeEachSheetsProportion) {
  struct Case {
    const char* typed;
    double x, y;
    const char* paper;
  };
  for (const Case& k : std::vector<Case>{{"A3加长", 630, 297, "TV_A3_Plus_1+1-2"},
                                         {"A3加长", 700, 297, "TV_A3_Plus_700"},
                                         {"a3加长", 297, 630, "TV_A3_Plus_1+1-2"},
                                         {"A2", 630, 297, "TV_A2"},
                                         {"A3加长", 420, 297, "TV_A3"},
                                         {"594x420", 1, 1, "TV_A2"},
                                         {"420 X 594", 1, 1, "TV_A2"},
                                         {"733*512", 1, 1, "TV_733x512"}}) {
    SCOPED_TRACE(k.typed);
    const std::optional<PaperRequest> request = ParsePaperText(k.typed);
    ASSERT_TRUE(request);
    const std::optional<paper::MyPaper> p = PaperForRequest(*request, k.x, k.y);
    ASSERT_TRUE(p);
    EXPECT_EQ(paper::PaperNameOf(*p), k.paper);
  }
  for (const char* refused : {"", "A5", "594x", "x420", "五百x四百"}) EXPECT_FALSE(ParsePaperText(refused)) << refused;
  EXPECT_FALSE(PaperForRequest(*ParsePaperText("0x420"), 1, 1));
}

TEST(PaperChoice, CustomPapersInUseFollowTheFixedOnesOnceEachAndOtherComesLast) {
  paper::PaperList papers;
  paper::BuildStandardPaperList(papers);
  bool added = false;
  const std::string custom = paper::PaperNameOf(*paper::AddPaper(papers, 733, 512, added));
  const PaperChoiceList list = PaperChoices({"TV_A3_Plus_700", custom, "TV_A1", custom}, papers, custom);
  ASSERT_EQ(list.items.size(), kFixedPaperChoices + 2);
  EXPECT_EQ(list.items[6], "A3加长");
  EXPECT_EQ(list.items[kFixedPaperChoices], paper::PaperDisplayName(list.customPapers[0], false, false));
  EXPECT_EQ(list.items.back(), kOtherPaperChoice);
  EXPECT_EQ(list.preselected, static_cast<int>(kFixedPaperChoices));
  // A plain size is shown under its lengthened entry; an unknown paper has none.
  EXPECT_EQ(PaperChoices({}, papers, "TV_A3").preselected, 6);
  EXPECT_EQ(PaperChoices({}, papers, "TV_A0_Plus_1+1-4").preselected, 9);
  EXPECT_EQ(PaperChoices({}, papers, "").preselected, -1);
}

TEST(ListControls, MarginListFormatsAndWhatDwgHides) {
  const MarginList margins = MarginItems(0);
  ASSERT_EQ(margins.items.size(), 21u);
  EXPECT_EQ(margins.items[0], " 不留白");
  EXPECT_EQ(margins.items[1], " + 01 mm");
  EXPECT_EQ(margins.items[2], " - 01 mm");
  EXPECT_EQ(margins.items[20], " - 10 mm");
  EXPECT_EQ(margins.selected, 0);
  const MarginList outside = MarginItems(-15);
  ASSERT_EQ(outside.items.size(), 22u);
  EXPECT_EQ(outside.items.back(), " - 15 mm");
  EXPECT_EQ(outside.selected, 21);

  EXPECT_EQ(FormatOfName(" png "), 3);
  EXPECT_FALSE(FormatOfName("TIFF"));

  const auto has = [](const std::vector<ListControl>& in, ListControl c) {
    return std::find(in.begin(), in.end(), c) != in.end();
  };
  const auto pdf = ControlsInPlay(false, 0), dwg = ControlsInPlay(false, 6), png = ControlsInPlay(true, 3);
  EXPECT_TRUE(has(pdf, ListControl::Merge) && has(pdf, ListControl::Margin) && !has(pdf, ListControl::AsBlock));
  EXPECT_TRUE(has(dwg, ListControl::AsBlock) && !has(dwg, ListControl::Merge) && !has(dwg, ListControl::Style));
  EXPECT_TRUE(has(png, ListControl::Background) && has(png, ListControl::Stamps) && has(png, ListControl::Index));
  EXPECT_FALSE(has(pdf, ListControl::Stamps) || has(pdf, ListControl::Background) || has(png, ListControl::NameRule));

  EXPECT_EQ(ParseColour("0, 128,255"), (std::array<std::int32_t, 3>{0, 128, 255}));
  EXPECT_FALSE(ParseColour("0,256,0"));
  EXPECT_FALSE(ParseColour("1,2"));
}

}  // namespace
}  // namespace tv::plot
