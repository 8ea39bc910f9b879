// The settings form as a model: what it shows, the ranges of its sliders, and that OK stores every
// value while a dropped form stores none.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "settings/setting_form.h"

namespace tv::settings {
namespace {

std::size_t IndexOf(std::int32_t Config::*field) {
  const auto controls = Dlg_Setting::Controls();
  for (std::size_t i = 0; i < controls.size(); ++i)
    if (controls[i].field == field) return i;
  ADD_FAILURE() << "no control for the field";
  return 0;
}

// The texts of the form are checked where the settings command shows them.
TEST(SettingForm, ControlsGoGroupByGroupEachValueOnceAndTheFixedOneStays) {
  const auto controls = Dlg_Setting::Controls();
  std::vector<std::int32_t Config::*> fields;
  std::size_t lastGroup = 0;
  for (const auto& c : controls) {
    EXPECT_GE(c.group, lastGroup);
    lastGroup = c.group;
    if (c.field) {
      EXPECT_EQ(std::count(fields.begin(), fields.end(), c.field), 0);
      fields.push_back(c.field);
    }
  }
  EXPECT_EQ(lastGroup, 5u);

  // The polyline frame is always on and can't be changed.
  const auto fixed = std::find_if(controls.begin(), controls.end(), [](const auto& c) { return c.kind == Dlg_Setting::Kind::Fixed; });
  ASSERT_NE(fixed, controls.end());
  Dlg_Setting form{Config{}};
  const std::size_t fixedIndex = static_cast<std::size_t>(fixed - controls.begin());
  EXPECT_EQ(form.value(fixedIndex), 1);
  EXPECT_FALSE(form.setValue(fixedIndex, 0));
}

TEST(SettingForm, SlidersKeepTheirRangesAndRefreshTheirLabels) {
  Dlg_Setting form{Config{}};
  const std::size_t vector = IndexOf(&Config::vector_dpi_step);
  const std::size_t raster = IndexOf(&Config::raster_dpi_step);
  const std::size_t image = IndexOf(&Config::image_scale_step);
  EXPECT_EQ(form.valueText(vector), "矢量1200dpi");
  EXPECT_EQ(form.valueText(raster), "格栅400dpi");
  EXPECT_EQ(form.valueText(image), "放大系数2.0");

  EXPECT_TRUE(form.setValue(vector, 93));
  EXPECT_EQ(form.valueText(vector), "矢量4800dpi");
  EXPECT_FALSE(form.setValue(vector, 94));
  EXPECT_FALSE(form.setValue(raster, -1));
  EXPECT_TRUE(form.setValue(raster, 0));
  EXPECT_EQ(form.valueText(raster), "格栅300dpi");
  EXPECT_FALSE(form.setValue(image, 21));
  EXPECT_TRUE(form.setValue(image, 20));
  EXPECT_EQ(form.valueText(image), "放大系数3.0");
  EXPECT_EQ(form.value(vector), 93);

  const std::size_t orientation = IndexOf(&Config::pdf_orientation);
  EXPECT_FALSE(form.setValue(orientation, 3));
  EXPECT_TRUE(form.setValue(orientation, 2));
  EXPECT_EQ(form.valueText(orientation), "全部转为竖放");
  const std::size_t lines = IndexOf(&Config::line_cover);
  EXPECT_EQ(form.valueText(lines), "直线覆盖");
  form.setValue(lines, 0);
  EXPECT_EQ(form.valueText(lines), "直线合并");
}

TEST(SettingForm, OkStoresEveryValueAndNothingElse) {
  Config config;
  config.merge_pdf = 1;
  config.shortcut_names = {"PP"};
  config.shortcut_ids = {2};
  config.plot_setting.format = kFormatPng;
  Dlg_Setting form(config);
  EXPECT_EQ(form.value(IndexOf(&Config::merge_pdf)), 1);

  // Every control flipped to another valid value.
  const auto controls = Dlg_Setting::Controls();
  for (std::size_t i = 0; i < controls.size(); ++i) {
    if (!controls[i].field) continue;
    const std::int32_t v = form.value(i);
    EXPECT_TRUE(form.setValue(i, v == controls[i].minimum ? controls[i].maximum : controls[i].minimum)) << i;
  }

  Config untouched = config;  // a cancelled form simply isn't stored
  EXPECT_EQ(untouched.merge_pdf, 1);

  form.store(config);
  for (std::size_t i = 0; i < controls.size(); ++i)
    if (controls[i].field) {
      EXPECT_EQ(config.*controls[i].field, form.value(i)) << controls[i].label;
    }
  EXPECT_EQ(config.merge_pdf, 0);
  EXPECT_EQ(config.vector_dpi_step, 0);
  EXPECT_EQ(config.shortcut_names, untouched.shortcut_names);
  EXPECT_EQ(config.plot_setting.format, kFormatPng);
  EXPECT_EQ(config.custom_paper_length, 841);
}

}  // namespace
}  // namespace tv::settings
