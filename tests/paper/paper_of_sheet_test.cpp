#include <gtest/gtest.h>

#include <iomanip>
#include <vector>

#include "paper/scale_fitting.h"
#include "scale_fitting_fixture.h"

namespace tv::paper::test {
namespace {

const std::string kTooSmall = "有纸张尺寸过小，小于 50 x 50 mm。\n\n可能打印比例有误，或者选择的打印范围有误。\n\n是否继续 ?";
const std::string kTooBig = "有纸张尺寸过大，已超过 5080 mm (即200英寸)。\n\n请检查是否打印比例有误。\n\n打印退出 !";

MyPaper PaperAt(const Plot_Drawing1& sheet, double scale, bool search) {
  MyPaper paper{297, 210, false};
  EXPECT_TRUE(PaperOfSheet(sheet, paper, scale, search));
  return paper;
}

TEST_F(ScaleFittingTest, PaperOfASheetAtItsScale) {
  struct Case {
    const char* what;
    double length, width, unitFactor, scale;
    bool search;
    MyPaper paper;
  };
  const Case cases[] = {
      {"A3 at 1:100", 42000, 29700, 1, 100, true, {420, 297, true}},
      {"upright: long side first", 29700, 42000, 1, 100, false, {420, 297, true}},
      {"a block inserted at scale 2", 840, 594, 2, 1, false, {420, 297, true}},
      {"lengthened by a half", 630.4, 297.3, 1, 1, true, {630, 297, true}},
      {"lengthened, no proportion searched", 1200, 297, 1, 1, false, {1200, 297, false}},
      {"lengthened, no row of 4.04:1", 1200, 297, 1, 1, true, {1200, 297, false}},
      {"the shape of 1635 x 841 alone", 1700, 874.4, 1, 1, true, {1635, 841, true}},
      {"a shape no row has", 2000, 1000, 1, 1, true, {2000, 1000, false}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(PaperAt(*MakeSheet(0, 0, c.length, c.width, c.unitFactor), c.scale, c.search), c.paper);
  }
  EXPECT_FALSE(PaperAt(*MakeSheet(1700, 874.4), 1.0, false).standard) << "the shape is only searched for when asked";
  auto a3 = MakeSheet(42000, 29700);
  EXPECT_EQ(PaperNameOf(PaperAt(*a3, ScaleOfSheet(*a3, false), true)), "TV_A3");
  EXPECT_EQ(PaperNameOf(PaperAt(*MakeSheet(630.4, 297.3), 1.0, true)), "TV_A3_Plus_1+1-2");
  EXPECT_EQ(PaperNameOf(PaperAt(*MakeSheet(1200, 297), 1.0, true)), "TV_A3_Plus_1200");
}

TEST_F(ScaleFittingTest, PaperFailsWithoutAScaleOrAUnitFactor) {
  MyPaper paper{123, 45, true};
  EXPECT_FALSE(PaperOfSheet(*MakeSheet(42000, 29700), paper, 0.0, true));
  EXPECT_FALSE(PaperOfSheet(*MakeSheet(42000, 29700), paper, -1.0, true));
  EXPECT_FALSE(PaperOfSheet(*MakeSheet(0, 0, 42000, 29700, 0.0), paper, 100.0, true));
  EXPECT_EQ(paper, (MyPaper{123, 45, true}));
}

TEST_F(ScaleFittingTest, TinySheetGivesAOneMillimetrePaperThatTheFloorFlags) {
  auto sheet = MakeSheet(10, 5);
  const MyPaper paper = PaperAt(*sheet, 100.0, true);
  EXPECT_EQ(paper.length, 1);
  EXPECT_EQ(paper.width, 1);
  EXPECT_EQ(PaperNameOf(paper), "TV_1x1");
  const PaperNote note = PaperSizeNote(paper, settings::kFormatPdf);
  EXPECT_EQ(note.text, "提示：纸张尺寸过小");
  EXPECT_TRUE(note.warn);
}

TEST_F(ScaleFittingTest, ProportionSearchPrefersAWholeScaleOverANearerFractionalOne) {
  // At 1:13 the sheet is 915 x 646 mm. 1189 x 841 fits it at 1:10 (3 off, whole) while 841 x 594
  // fits at 1:14.14 (1.14 off, fractional): the whole one wins.
  auto sheet = MakeSheet(11890, 8403);
  const MyPaper off = PaperAt(*sheet, 13.0, false);
  ASSERT_FALSE(off.standard);
  EXPECT_EQ(PaperAt(*sheet, 13.0, true), (MyPaper{1189, 841, true}));
  // At 1:14.5 nothing fits at a whole scale: the nearest fractional one, 841 x 594 (0.36 off).
  EXPECT_EQ(PaperAt(*MakeSheet(11890 * 14.5 / 13.0, 8403 * 14.5 / 13.0), 14.5, true), (MyPaper{841, 594, true}));
}

TEST_F(ScaleFittingTest, ProportionSearchTakesScalesWithinAThousandthOfAnIntegerAsWhole) {
  // A4 drawn at 1:25 (7425 x 5250), read at 1:10: A4 fits at 1:25, 15 off. Coordinates carry
  // noise on either side of the integer; up to a thousandth off it is still whole.
  struct Row {
    double length, width;
    MyPaper paper;
  };
  const MyPaper a4{297, 210, true}, a1{841, 594, true};
  for (const Row& row : std::vector<Row>{
           {7425, 5250, a4},
           {7424.999999999898, 5250, a4},
           {7425.000000000102, 5249.999999999898, a4},
           {7424.999999999898, 5250.000000000102, a4},
           {7425 - 0.0009 * 297, 5250, a4},  // 14.9991 off
           {7425 + 0.0009 * 297, 5250, a4},  // 15.0009 off
           {7425 - 0.002 * 297, 5250, a1},   // 14.998 off is fractional: A1 at 1:8.83 is nearer
       }) {
    SCOPED_TRACE(testing::Message() << std::setprecision(17) << row.length << " x " << row.width);
    EXPECT_EQ(PaperAt(*MakeSheet(row.length, row.width), 10.0, true), row.paper);
    EXPECT_EQ(PaperAt(*MakeSheet(row.width, row.length), 10.0, true), row.paper) << "upright";
  }
}

TEST_F(ScaleFittingTest, NoisyFramesOfOneSizeGetOnePaperAndOneScale) {
  SheetJob job;
  // Upright and across, each side a little under or over its whole number (7424.999999999898 …).
  for (const double noise : {0.0, -1.02e-10, 1.02e-10, -3e-12, 4.5e-11}) {
    job.allSheets.push_back(MakeSheet(0, 0, 5250 + noise, 7425 - noise));
    job.allSheets.push_back(MakeSheet(0, 0, 7425 + noise, 5250 - noise));
  }
  for (auto& s : job.allSheets) job.keptSheets.push_back(s.get());
  SetPlotterRefresh([](const PaperList&) {});
  const double scale = ScaleOfSheets(job.keptSheets, false);
  EXPECT_EQ(scale, 10.0);
  RebuildPapers(job, scale, true, true);
  for (Plot_Drawing1* sheet : job.keptSheets) {
    EXPECT_EQ(sheet->paperName, "TV_A4");
    ApplyPaperToSheet(*sheet, *FindPaperByName(job.paperList, sheet->paperName));
    EXPECT_EQ(ScaleText(sheet->scale), "1:25");
    EXPECT_NEAR(sheet->scale, 25.0, 1e-9);
  }
}

TEST_F(ScaleFittingTest, ApplyingAPaperSetsTheScaleAtWhichTheSheetFits) {
  auto sheet = MakeSheet(43000, 29700);
  sheet->scale = 1.0;
  ApplyPaperToSheet(*sheet, MyPaper{420, 297, true});
  EXPECT_EQ(sheet->paperName, "TV_A3");
  EXPECT_NEAR(sheet->scale, 43000.0 / 420.0, 1e-9);  // the larger ratio
  auto portrait = MakeSheet(29700, 45000);
  ApplyPaperToSheet(*portrait, MyPaper{420, 297, true});
  EXPECT_NEAR(portrait->scale, 45000.0 / 420.0, 1e-9);
  auto wide = MakeSheet(42000, 35000);
  ApplyPaperToSheet(*wide, MyPaper{420, 297, true});
  EXPECT_NEAR(wide->scale, 35000.0 / 297.0, 1e-9);
}

TEST_F(ScaleFittingTest, RebuildRecomputesPapersAndAlwaysRefreshesThePlotterButForDwg) {
  SheetJob job;
  job.allSheets.push_back(MakeSheet(42000, 29700));
  job.allSheets.push_back(MakeSheet(42000, 29700));
  job.allSheets.push_back(MakeSheet(0, 0, 84100, 59400, 0.0));  // no unit factor: keeps its paper
  job.allSheets[2]->paperName = "KEEP";
  for (auto& s : job.allSheets) job.keptSheets.push_back(s.get());
  int refreshed = 0;
  SetPlotterRefresh([&](const PaperList&) { ++refreshed; });

  RebuildPapers(job, 100.0, true, true);
  EXPECT_EQ(job.keptSheets[0]->paperName, "TV_A3");
  EXPECT_EQ(job.keptSheets[1]->paperName, "TV_A3");
  EXPECT_EQ(job.keptSheets[2]->paperName, "KEEP");
  EXPECT_EQ(job.paperList.size(), 21u);  // the standard list already holds A3; duplicates go
  EXPECT_EQ(refreshed, 1);

  job.keptSheets[0]->paperName = "X";
  RebuildPapers(job, 100.0, false, true);
  EXPECT_EQ(job.keptSheets[0]->paperName, "X");
  EXPECT_EQ(refreshed, 2);

  settings::CurrentPlotSetting().format = settings::kFormatDwg;
  RebuildPapers(job, 10.0, true, false);
  EXPECT_EQ(refreshed, 2);
  EXPECT_EQ(job.keptSheets[0]->paperName, PaperNameOf(MyPaper{4200, 2970, false}));
}

TEST(PaperSizeNote, LimitsDependOnTheFormat) {
  const MyPaper big{5081, 600, false}, small{600, 49, false}, edge{5080, 50, false};
  EXPECT_EQ(PaperSizeNote(big, settings::kFormatPdf).text, "提示：纸张尺寸过大");
  EXPECT_TRUE(PaperSizeNote(big, settings::kFormatPdf).warn);
  EXPECT_EQ(PaperSizeNote(big, settings::kFormatDwf).text, "");
  EXPECT_FALSE(PaperSizeNote(big, settings::kFormatDwf).warn);
  EXPECT_EQ(PaperSizeNote(small, settings::kFormatDwf).text, "提示：纸张尺寸过小");
  EXPECT_EQ(PaperSizeNote(small, settings::kFormatDwg).text, "");
  EXPECT_EQ(PaperSizeNote(big, settings::kFormatDwg).text, "");
  EXPECT_EQ(PaperSizeNote(edge, settings::kFormatPng).text, "");
  EXPECT_FALSE(PaperSizeNote(edge, settings::kFormatPng).warn);
}

class PaperLimitsTest : public ScaleFittingTest {
 protected:
  void SetUp() override {
    ScaleFittingTest::SetUp();
    AddPaper(papers_, 49, 40, added_);
    AddPaper(papers_, 6000, 900, added_);
    AddPaper(papers_, 420, 297, added_);
    small_ = Sheet(PaperNameOf(MyPaper{49, 40, false}));
    big_ = Sheet(PaperNameOf(MyPaper{6000, 900, false}));
    fine_ = Sheet("TV_A3");
  }
  Plot_Drawing1* Sheet(const std::string& paper) {
    sheets_.push_back(MakeSheet(1, 1));
    sheets_.back()->paperName = paper;
    return sheets_.back().get();
  }
  PaperList papers_;
  bool added_ = false;
  std::vector<std::unique_ptr<Plot_Drawing1>> sheets_;
  Plot_Drawing1 *small_ = nullptr, *big_ = nullptr, *fine_ = nullptr;
};

TEST_F(PaperLimitsTest, FloorAsksOnceAndNoEndsTheRun) {
  Sheet(small_->paperName);  // a second small row: still one question
  Open({"N"});
  EXPECT_FALSE(CheckPaperSizes({small_, fine_, sheets_.back().get()}, papers_, settings::kFormatPdf));
  Open({"Y"});
  EXPECT_TRUE(CheckPaperSizes({small_, fine_, sheets_.back().get()}, papers_, settings::kFormatPdf));
  EXPECT_NE(Shown().find(kTooSmall), std::string::npos) << Shown();
  EXPECT_FALSE(session_->unansweredPrompt().has_value());
  // DWG output has no limits
  Open({});
  EXPECT_TRUE(CheckPaperSizes({small_, big_}, papers_, settings::kFormatDwg));
  EXPECT_EQ(Shown().find("纸张尺寸"), std::string::npos);
}

TEST_F(PaperLimitsTest, CeilingStopsTheRunButNotForDwf) {
  Open({});
  EXPECT_FALSE(CheckPaperSizes({fine_, big_}, papers_, settings::kFormatPdf));
  EXPECT_NE(Shown().find(kTooBig), std::string::npos) << Shown();
  Open({});
  EXPECT_TRUE(CheckPaperSizes({fine_, big_}, papers_, settings::kFormatDwf));
  // rows whose paper isn't in the list are not checked
  Plot_Drawing1* unknown = Sheet("TV_99999x88888");
  Open({});
  EXPECT_TRUE(CheckPaperSizes({unknown}, papers_, settings::kFormatPdf));
}

}  // namespace
}  // namespace tv::paper::test
