// The review list of the generic batch: rows in reading order with their paper, scale, size and
// warning, reached through the batch command.
#include <gtest/gtest.h>

#include "../recognition/drawing_fixture.h"
#include "console/console_editor.h"
#include "plot/generic_review.h"
#include "recognition/plot_marker.h"
#include "settings/config.h"
#include "settings/plot_setting.h"

namespace tv::plot {
namespace {

TEST(SheetSizeText, FewerDecimalsForLargerSheets) {
  EXPECT_EQ(SheetSizeText(84100, 59400), "84100x59400");
  EXPECT_EQ(SheetSizeText(10.4, 20.5), "10x21");
  EXPECT_EQ(SheetSizeText(9.99, 20), "10.0x20.0");
  EXPECT_EQ(SheetSizeText(1, 2), "1.0x2.0");
  EXPECT_EQ(SheetSizeText(0.5, 2), "0.50x2.00");
  EXPECT_EQ(SheetSizeText(0.05, 2), "0.050x2.000");
  EXPECT_EQ(SheetSizeText(0.005, 2), "0.0050x2.0000");
  // Any size a drawing holds, beyond what an int does: past whole digits, as the number it is.
  EXPECT_EQ(SheetSizeText(1e20, 3e9), "1e+20x3000000000");
}

class GenericReviewTest : public recognition::test::DrawingTest {
 protected:
  void TearDown() override {
    DestroyGenericReview();
    settings::GlobalConfig() = settings::Config{};
    settings::CurrentPlotSetting() = settings::PlotSettingRec{};
    DrawingTest::TearDown();
  }
  // An A-size frame at 1:100 with content, lower left at `at`.
  void AddSheet(Point2d at, double w, double h) {
    AddLine({at.x + w * 0.2, at.y + h / 2}, {at.x + w * 0.8, at.y + h / 2});
    AddLw({at, {at.x + w, at.y}, {at.x + w, at.y + h}, {at.x, at.y + h}}, true);
  }
};

TEST_F(GenericReviewTest, RowsFollowTheReadingOrderWithPaperAndScale) {
  AddSheet({100000, 0}, 42000, 29700);  // A3, right of the A1
  AddSheet({0, 0}, 84100, 59400);       // A1
  AddSheet({0, -40000}, 29700, 21000);  // A4, a row below
  Open();
  session_->editor().answers().pushFront({"", "1"});
  Dlg_BPlot1* form = RecogniseGenericBatch(false, std::nullopt);
  ASSERT_NE(form, nullptr);
  ASSERT_EQ(form->rows.size(), 3u);
  EXPECT_DOUBLE_EQ(form->scale, 100);
  EXPECT_DOUBLE_EQ(form->rows[0].sheet->minX, 0);
  EXPECT_DOUBLE_EQ(form->rows[1].sheet->minX, 100000);
  EXPECT_DOUBLE_EQ(form->rows[2].sheet->minY, -40000);
  EXPECT_EQ(form->rows[0].sheet->paperName, "TV_A1");
  EXPECT_EQ(form->rows[0].scaleText, "1:100");
  EXPECT_EQ(form->rows[0].sizeText, "84100x59400");
  EXPECT_TRUE(form->rows[0].note.empty());

  const auto cells = BPlot1Cells(*form);
  ASSERT_EQ(cells.size(), 3u);
  EXPECT_EQ(cells[2][0], "   3");
  EXPECT_EQ(BPlot1Columns().front(), "序 号");

  // The markers show the row numbers.
  for (std::size_t i = 0; i < form->rows.size(); ++i) {
    const auto* entity = db().entity(form->rows[i].sheet->markerId);
    ASSERT_NE(entity, nullptr);
  }
}

TEST_F(GenericReviewTest, ATinyScaleWarnsOfOversizedPaper) {
  AddSheet({0, 0}, 90000, 10000);  // no standard proportion to fall back on
  Open();
  session_->editor().answers().pushFront({"", "1"});
  Dlg_BPlot1* form = RecogniseGenericBatch(false, 1.0);
  ASSERT_NE(form, nullptr);
  ASSERT_EQ(form->rows.size(), 1u);
  EXPECT_EQ(form->rows[0].note, "提示：纸张尺寸过大");
  EXPECT_TRUE(form->rows[0].warn);
}

}  // namespace
}  // namespace tv::plot
