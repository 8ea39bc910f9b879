// A stamped title-block run stopped after its first sheet, in a console session: the stamps put on
// so far go with the run, and the drawing holds no image or definition afterwards.
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "../support/run_program.h"
#include "../support/scoped_env.h"
#include "cad/database.h"
#include "console/console_editor.h"
#include "console/session.h"
#include "examples/sample_drawing.h"
#include "examples/sample_library.h"
#include "examples/sample_stamps.h"
#include "host/cad_binding.h"
#include "host/module_entry.h"
#include "plot/output_paths.h"
#include "plot/plot_job.h"
#include "plot/interrupt_flag.h"
#include "plot/review_list.h"
#include "plot/title_review.h"
#include "recognition/working_coordinates.h"
#include "settings/config.h"
#include "settings/plot_setting.h"
#include "signing/stamp_library.h"
#include "titleblock/tk_library.h"

namespace tv::plot {
namespace {

namespace fs = std::filesystem;

TEST(StampedRun, ACancelledRunTakesItsStampsAway) {
  test_support::TempDir dir{"tv_stamped_run"};
  // Folders of the test's own: the run empties the temporary folder.
  const test_support::ScopedEnv home{"HOME", dir.path().string()};
  const test_support::ScopedEnv documents{"XDG_DOCUMENTS_DIR", (dir.path() / "docs").string()};
  const test_support::ScopedEnv data{"XDG_DATA_HOME", (dir.path() / "data").string()};
  const fs::path library = dir.path() / "data" / "Tarvex";
  fs::create_directories(library);
  fs::create_directories(dir.path() / "docs");
  ASSERT_TRUE(titleblock::SaveTkFileTo(samples::BuildTitleBlockLibrary(), (library / "BPlot_TK.tk").string(), false));
  signing::StampLibrary stamps = samples::BuildStampLibrary();
  ASSERT_TRUE(signing::SaveStampLibrary(stamps, (library / "Stamp.tvlib2").string()));

  recognition::ResetUcs();
  std::ostringstream out;
  console::SessionOptions options;
  options.out = &out;
  console::Session session(samples::BuildTitleBlockDrawing(), (dir.path() / "titleblocks.dxf").string(), options);
  host::OnLoad();
  settings::GlobalConfig().open_folder_after = 0;
  settings::PlotSettingRec rec = settings::CurrentPlotSetting();
  rec.format = settings::kFormatPng;
  rec.plot_stamps = 1;
  rec.stamp_issue_on = 1;
  rec.stamp_issue_name = "出图专用章";
  settings::SaveDwgPlotSetting(rec);

  // Range, OK at the list, OK at the stamp form; the run is taken from the queue by hand.
  session.editor().answers().pushFront({"", "1", "", ""});
  TitlePlotCommand();
  session.editor().clearQueued();
  ASSERT_TRUE(TitleReview() && TitleReview()->plot_started) << out.str();
  // The user stops the run while its first sheet is being stamped.
  host::WorkingDrawing& working = host::Working();
  const auto listener = working.onEntityChange;
  working.onEntityChange = [listener](const cad::Entity& e) {
    if (listener) listener(e);
    if (cad::As<cad::Image>(&e)) InterruptPlot();
  };
  session.editor().answers().pushFront({"Y"});
  EXPECT_FALSE(PlotTitleSheets({}, 4));
  working.onEntityChange = listener;

  // One sheet plotted, the first, which had its stamp.
  std::vector<std::string> plotted;
  for (const auto& entry : fs::recursive_directory_iterator(dir.path()))
    if (entry.path().extension() == ".png") plotted.push_back(entry.path().filename().string());
  EXPECT_EQ(plotted, std::vector<std::string>{"结施-01_A_基础平面图.png"}) << out.str();
  const cad::Database& db = session.database();
  std::size_t images = 0, definitions = 0;
  db.forEachEntity(*db.modelSpace(), [&](const cad::Entity& e) { images += cad::As<cad::Image>(&e) != nullptr; });
  for (const auto& o : db.objects) definitions += cad::As<cad::ImageDef>(o.get()) != nullptr;
  EXPECT_EQ(images, 0u);
  EXPECT_EQ(definitions, 0u);

  host::OnUnload();
  settings::GlobalConfig() = settings::Config{};
  settings::CurrentPlotSetting() = settings::PlotSettingRec{};
  signing::ClearStampLibrary(signing::GlobalStampLibrary());
  recognition::ResetUcs();
}

}  // namespace
}  // namespace tv::plot
