#include <gtest/gtest.h>

#include "paper/scale_forms.h"

namespace tv::paper {
namespace {

TEST(ScaleForms, ScaleMustBeAboveZero) {
  EXPECT_TRUE(Dlg_Sc_Set(0.001).check().ok);
  for (double bad : {0.0, -1.0}) {
    const FormCheck c = Dlg_Sc_Set(bad).check();
    EXPECT_FALSE(c.ok);
    EXPECT_EQ(c.message, "打印比例应大于 0 !");
    EXPECT_EQ(c.field, ScaleField::Scale);
  }
}

TEST(ScaleForms, FilterRangeIsZeroToThirtyInclusive) {
  for (double ok : {0.0, 15.5, 30.0}) EXPECT_TRUE(Dlg_Filter(ok).check().ok) << ok;
  for (double bad : {-0.1, 30.01}) {
    const FormCheck c = Dlg_Filter(bad).check();
    EXPECT_FALSE(c.ok);
    EXPECT_EQ(c.message, "过滤比例应在 0 ~ 30 % 之间 !");
    EXPECT_EQ(c.field, ScaleField::Filter);
  }
}

TEST(ScaleForms, DefaultScaleFormChecksScaleUnlessAutomaticThenFilter) {
  settings::PlotSettingRec rec;
  Dlg_Sc_SetW form(rec);
  EXPECT_DOUBLE_EQ(form.defaultScale, 100.0);
  form.defaultScale = 0.0;
  form.filterRatio = 40.0;
  EXPECT_EQ(form.check().field, ScaleField::Scale);  // the scale is checked first
  form.autoScale = true;
  EXPECT_EQ(form.check().field, ScaleField::Filter);
  EXPECT_EQ(form.check().message, "过滤比例应在 0 ~ 30 % 之间 !");
  form.filterRatio = 5.0;
  EXPECT_TRUE(form.check().ok);
  form.defaultScale = 50.0;
  form.store(rec);
  EXPECT_DOUBLE_EQ(rec.default_scale, 50.0);
  EXPECT_EQ(rec.auto_scale, 1);
  EXPECT_DOUBLE_EQ(rec.filter_ratio, 5.0);
}

}  // namespace
}  // namespace tv::paper
