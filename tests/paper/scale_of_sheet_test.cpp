#include <gtest/gtest.h>

#include "paper/scale_fitting.h"
#include "scale_fitting_fixture.h"

namespace tv::paper::test {
namespace {

const std::string kTooBigSingle =
    "打印比例：纸张尺寸与图面尺寸的比例\n\n现默认打印比例为 1:1 ,据此算出来的纸张尺寸过大 ！\n\n是否将默认打印比例改为 1:100 ?";
const std::string kTooSmallSingle =
    "打印比例：纸张尺寸与图面尺寸的比例\n\n现默认打印比例为 1:100 ,据此算出来的纸张尺寸过小 ！\n\n是否将默认打印比例改为 10:1 ?";
const std::string kTooBigBatch =
    "打印比例：纸张尺寸与图面尺寸的比例\n\n现默认打印比例为 1:100 ,据此算出来的大部分纸张尺寸过大 ！\n\n是否将默认打印比例改为 1:1000 ?";

TEST(ScaleText, PrintsTheFewestDecimalsAndTurnsSmallScalesAround) {
  EXPECT_EQ(ScaleText(100.0), "1:100");
  EXPECT_EQ(ScaleText(1.0), "1:1");
  EXPECT_EQ(ScaleText(2.5), "1:2.5");
  EXPECT_EQ(ScaleText(33.333), "1:33.33");
  EXPECT_EQ(ScaleText(0.5), "2:1");
  EXPECT_EQ(ScaleText(0.4), "2.5:1");
  EXPECT_EQ(ScaleText(1.0 / 3.0), "3:1");
  EXPECT_EQ(ScaleText(1e-05), "");
  EXPECT_EQ(ScaleText(0.0), "");
  EXPECT_EQ(ScaleText(-5.0), "");
}

TEST_F(ScaleFittingTest, DefaultMovesOnlyByWholePowersOfTen) {
  settings::CurrentPlotSetting().default_scale = 100.0;
  EXPECT_DOUBLE_EQ(ScaleOfSheet(*MakeSheet(42000, 29700), false), 100.0);
  // drawn at 1:50: still within a factor of 5 of the default
  EXPECT_DOUBLE_EQ(ScaleOfSheet(*MakeSheet(21000, 14850), false), 100.0);
  // drawn in metres
  EXPECT_NEAR(ScaleOfSheet(*MakeSheet(42, 29.7), false), 0.1, 1e-12);
  // a block sheet scaled by 1000 counts in its own units
  EXPECT_DOUBLE_EQ(ScaleOfSheet(*MakeSheet(0, 0, 42000, 29700, 1000.0), false), 0.1);
  settings::CurrentPlotSetting().default_scale = 1.0;
  EXPECT_DOUBLE_EQ(ScaleOfSheet(*MakeSheet(42000, 29700), false), 100.0);
  // a degenerate sheet falls back on the default
  EXPECT_DOUBLE_EQ(ScaleOfSheet(*MakeSheet(0, 0), false), 1.0);
  EXPECT_DOUBLE_EQ(ScaleOfSheet(*MakeSheet(0, 0, 420, 297, 0.0), false), 1.0);
}

TEST_F(ScaleFittingTest, FirstDifferenceBecomesTheDefaultWithoutAQuestion) {
  Open({});
  settings::CurrentPlotSetting().default_scale = 1.0;
  EXPECT_DOUBLE_EQ(ScaleOfSheet(*MakeSheet(42000, 29700), true), 100.0);
  EXPECT_DOUBLE_EQ(settings::CurrentPlotSetting().default_scale, 100.0);
  EXPECT_EQ(settings::GlobalIni().single_scale_asked, 1);
  EXPECT_EQ(settings::GlobalIni().batch_scale_asked, 0);
  EXPECT_EQ(Shown().find("打印比例："), std::string::npos);
  EXPECT_FALSE(session_->unansweredPrompt().has_value());
}

TEST_F(ScaleFittingTest, LaterDifferencesAskAndOnlyYesChangesTheDefault) {
  settings::GlobalIni().single_scale_asked = 1;
  settings::CurrentPlotSetting().default_scale = 1.0;

  Open({"N"});
  EXPECT_DOUBLE_EQ(ScaleOfSheet(*MakeSheet(42000, 29700), true), 100.0);  // the result whatever the answer
  EXPECT_NE(Shown().find(kTooBigSingle), std::string::npos) << Shown();
  EXPECT_DOUBLE_EQ(settings::CurrentPlotSetting().default_scale, 1.0);

  Open({});  // no answer left: cancelled, as No
  EXPECT_DOUBLE_EQ(ScaleOfSheet(*MakeSheet(42000, 29700), true), 100.0);
  EXPECT_DOUBLE_EQ(settings::CurrentPlotSetting().default_scale, 1.0);

  Open({"Y"});
  EXPECT_DOUBLE_EQ(ScaleOfSheet(*MakeSheet(42000, 29700), true), 100.0);
  EXPECT_DOUBLE_EQ(settings::CurrentPlotSetting().default_scale, 100.0);

  // now a sheet in metres gives the smaller scale
  Open({"Y"});
  EXPECT_NEAR(ScaleOfSheet(*MakeSheet(42, 29.7), true), 0.1, 1e-12);
  EXPECT_NE(Shown().find(kTooSmallSingle), std::string::npos) << Shown();
  EXPECT_NEAR(settings::CurrentPlotSetting().default_scale, 0.1, 1e-12);
}

TEST_F(ScaleFittingTest, NoQuestionWhenTheScaleIsTheDefaultOrAskIsClear) {
  settings::GlobalIni().single_scale_asked = 1;
  Open({});
  EXPECT_DOUBLE_EQ(ScaleOfSheet(*MakeSheet(42000, 29700), true), 100.0);
  EXPECT_NEAR(ScaleOfSheet(*MakeSheet(42, 29.7), false), 0.1, 1e-12);
  EXPECT_EQ(Shown().find("打印比例："), std::string::npos);
  EXPECT_DOUBLE_EQ(settings::CurrentPlotSetting().default_scale, 100.0);
}

TEST_F(ScaleFittingTest, EmptyListGivesTheDefaultAndAsksNothing) {
  settings::GlobalIni().batch_scale_asked = 1;
  Open({});
  settings::CurrentPlotSetting().default_scale = 50.0;
  EXPECT_DOUBLE_EQ(ScaleOfSheets({}, true), 50.0);
  EXPECT_EQ(Shown().find("打印比例："), std::string::npos);
}

TEST_F(ScaleFittingTest, MajorityWinsAndATieGoesToTheValueMetFirst) {
  std::vector<std::unique_ptr<Plot_Drawing1>> sheets;
  sheets.push_back(MakeSheet(420, 297));        // 1
  sheets.push_back(MakeSheet(420000, 297000));  // 1000
  sheets.push_back(MakeSheet(420000, 297000));  // 1000
  sheets.push_back(MakeSheet(420, 297));        // 1
  EXPECT_DOUBLE_EQ(ScaleOfSheets(Pointers(sheets), false), 1.0);
  std::swap(sheets[0], sheets[1]);
  EXPECT_DOUBLE_EQ(ScaleOfSheets(Pointers(sheets), false), 1000.0);
  sheets.push_back(MakeSheet(420, 297));
  EXPECT_DOUBLE_EQ(ScaleOfSheets(Pointers(sheets), false), 1.0);

  // the default leads the tally, so a tie with it goes to the default even when met later
  std::vector<std::unique_ptr<Plot_Drawing1>> mixed;
  mixed.push_back(MakeSheet(420, 297));      // 1
  mixed.push_back(MakeSheet(42000, 29700));  // 100, the default
  EXPECT_DOUBLE_EQ(ScaleOfSheets(Pointers(mixed), false), 100.0);
}

TEST_F(ScaleFittingTest, BatchUsesItsOwnFlagAndMessages) {
  settings::GlobalIni().single_scale_asked = 1;  // the single plot's flag doesn't count here
  std::vector<std::unique_ptr<Plot_Drawing1>> sheets;
  sheets.push_back(MakeSheet(420000, 297000));
  Open({});
  EXPECT_DOUBLE_EQ(ScaleOfSheets(Pointers(sheets), true), 1000.0);
  EXPECT_EQ(settings::GlobalIni().batch_scale_asked, 1);
  EXPECT_DOUBLE_EQ(settings::CurrentPlotSetting().default_scale, 1000.0);
  EXPECT_EQ(Shown().find("打印比例："), std::string::npos);

  settings::CurrentPlotSetting().default_scale = 100.0;
  Open({"N"});
  EXPECT_DOUBLE_EQ(ScaleOfSheets(Pointers(sheets), true), 1000.0);
  EXPECT_NE(Shown().find(kTooBigBatch), std::string::npos) << Shown();
  EXPECT_DOUBLE_EQ(settings::CurrentPlotSetting().default_scale, 100.0);
}

}  // namespace
}  // namespace tv::paper::test
