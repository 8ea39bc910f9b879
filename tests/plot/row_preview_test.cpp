// The preview of a review row in a console session: an image format previews on the form's
// background, and the host's own preview background and the plot flags are back afterwards.
#include <gtest/gtest.h>

#include <memory>
#include <sstream>

#include "../render/plot_test_support.h"
#include "../support/frame_drawings.h"
#include "console/console_editor.h"
#include "console/session.h"
#include "host/module_entry.h"
#include "plot/generic_review.h"
#include "plot/plot_job.h"
#include "plot/row_preview.h"
#include "recognition/working_coordinates.h"
#include "settings/plot_setting.h"

namespace tv::plot {
namespace {

TEST(RowPreview, ImageFormatsPreviewOnTheFormsBackgroundAndPutTheHostsBack) {
  test_support::TempDir dir;
  recognition::ResetUcs();
  std::ostringstream out;
  console::SessionOptions options;
  options.out = &out;
  console::Session session(test_support::FramesInARow({{42000, 29700}}), (dir.path() / "plan.dxf").string(), options);
  host::OnLoad();
  settings::PlotSettingRec rec = settings::CurrentPlotSetting();
  rec.format = settings::kFormatPng;
  rec.back_red = 0, rec.back_green = 0, rec.back_blue = 255;
  settings::SaveDwgPlotSetting(rec);
  console::ConsoleEditor& editor = session.editor();
  editor.setEnv("Plot preview background", "65280");  // the host's own: green

  EnterPlotCommand();
  editor.answers().pushFront({"", "1"});
  Dlg_BPlot1* form = RecogniseGenericBatch(false, std::nullopt);
  ASSERT_NE(form, nullptr) << out.str();
  ASSERT_TRUE(PreviewRow(*form, 0)) << out.str();

  ASSERT_EQ(editor.previews().size(), 1u);
  const render::test::Picture picture(editor.previews().back());
  ASSERT_TRUE(picture.ok());
  EXPECT_EQ(picture.at(2, 2), (render::Rgb{0, 0, 255}));
  EXPECT_EQ(editor.getEnv("Plot preview background"), "65280");
  EXPECT_FALSE(Job().InPlot);
  EXPECT_TRUE(Job().PlotSignaturesVisible);

  EndFileRun();
  host::OnUnload();
}

}  // namespace
}  // namespace tv::plot
