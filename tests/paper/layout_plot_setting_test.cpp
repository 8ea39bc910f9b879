// The plot settings of the current layout for one sheet: style list order and flags, device and
// media, the two media of a paper, the window with its 0.1 mm correction, the device filter of the
// paper batch, and putting the user's plotter back at the end of a job.
#include "paper/layout_plot_setting.h"

#include <gtest/gtest.h>

#include <string>

#include "../host/layout_plot_fixture.h"
#include "host/command_prologue.h"

namespace tv::paper {
namespace {

using Strings = std::vector<std::string>;

std::string PaperName(int length, int width) {
  MyPaper paper{length, width};
  NormalizePaperSize(paper);
  return PaperNameOf(paper);
}

class LayoutPlotSettingTest : public host::testing::LayoutPlotTest {
 protected:
  const cad::PlotSettings& plot() const { return db.objectAs<cad::Layout>(host::Working().currentLayout)->plot; }

  // The window SetWindow leaves for a sheet from (1000, 2000) to (43000, 31700) at 1:100.
  std::pair<Point2d, Point2d> windowFor(const settings::PlotSettingRec* active) {
    LayoutPlotSetting setting(active);
    setting.SetWindow({1000, 2000}, {43000, 31700}, 100);
    return {plot().windowMin, plot().windowMax};
  }
};

// ---- style tables ------------------------------------------------------------------------------------

TEST_F(LayoutPlotSettingTest, OwnTablesLeadTheStyleListInTheirOrder) {
  for (const char* name : {"acad.ctb", "monochrome.ctb", "蓝白.ctb", "彩色.ctb", "黑白.ctb", "旧黑白.ctb",
                           "acad.stb", "Screening 50%.CTB"})
    touch(styleFolder() + "/" + name);
  LayoutPlotSetting setting;
  EXPECT_EQ(setting.styleList,
            (Strings{"旧黑白.ctb", "黑白.ctb", "彩色.ctb", "蓝白.ctb", "Screening 50%.CTB", "acad.ctb", "monochrome.ctb"}));

  editor.vars["PSTYLEMODE"] = std::int32_t{0};  // named plot styles
  LayoutPlotSetting named;
  EXPECT_EQ(named.styleList, (Strings{"acad.stb"}));
}

// A place past the list gives the default table, -1 the last one.
TEST_F(LayoutPlotSettingTest, SetPlotStyleMakesTheTableCurrentOrGivesTheDefault) {
  EXPECT_EQ(LayoutPlotSetting().StyleNameAt(0), "acad.ctb");
  touch(styleFolder() + "/黑白.ctb");
  touch(styleFolder() + "/彩色.ctb");
  LayoutPlotSetting setting;
  EXPECT_EQ(setting.StyleNameAt(-1), "黑白.ctb");
  EXPECT_EQ(setting.SetPlotStyle(1), "彩色.ctb");
  EXPECT_EQ(plot().styleSheet, "彩色.ctb");
  EXPECT_EQ(setting.styleName, "彩色.ctb");

  EXPECT_EQ(setting.SetPlotStyle(7), "acad.ctb");
  EXPECT_EQ(plot().styleSheet, "彩色.ctb");  // untouched
  editor.vars["PSTYLEMODE"] = std::int32_t{0};
  EXPECT_EQ(setting.SetPlotStyle(-1), "acad.stb");
}

TEST_F(LayoutPlotSettingTest, FlagsFollowTheOptionsAndImagesHaveNoTransparency) {
  settings::GlobalConfig().plot_lineweights = 0;
  settings::GlobalConfig().plot_transparency = 1;
  host::LayoutPlotSettings current = host::LayoutPlotSettings::Current();
  current.setPlotPlotStyles(false);
  current.setPrintLineweights(true);

  settings::PlotSettingRec rec;
  rec.format = settings::kFormatPdf;
  {
    LayoutPlotSetting setting(&rec);
    EXPECT_FALSE(current.printLineweights());
    EXPECT_TRUE(current.plotTransparency());
    EXPECT_TRUE(current.plotPlotStyles());
  }
  for (std::int32_t image : {settings::kFormatJpg, settings::kFormatPng}) {
    rec.format = image;
    LayoutPlotSetting setting(&rec);
    EXPECT_FALSE(current.plotTransparency()) << image;
  }
  // Without a job the drawing's own settings tell the format.
  settings::CurrentPlotSetting().format = settings::kFormatPng;
  LayoutPlotSetting listFill;
  EXPECT_FALSE(current.plotTransparency());
}

// ---- device and media ----------------------------------------------------------------------------------

TEST_F(LayoutPlotSettingTest, DeviceAndMediaListsAreParallel) {
  const std::string square = PaperName(500, 500);
  writeDevice("T_PDF.pc3", "T_PDF.pmp", {{420, 297}, {500, 500}});
  LayoutPlotSetting setting;
  EXPECT_EQ(setting.deviceName, "");
  EXPECT_TRUE(setting.localeMediaList.empty());
  EXPECT_EQ(setting.mediaName, "TV_A1");

  EXPECT_FALSE(setting.SetDevice("Missing.pc3"));
  ASSERT_TRUE(setting.SetDevice("T_PDF.pc3"));
  EXPECT_EQ(setting.deviceName, "T_PDF.pc3");
  EXPECT_EQ(setting.localeMediaList, (Strings{"TV_A3", "TV_A3T", square}));
  EXPECT_EQ(setting.canonicalMediaList,
            (Strings{"P_(420.00_x_297.00_MM)", "P_(297.00_x_420.00_MM)", "P_(500.00_x_500.00_MM)"}));
  EXPECT_EQ(setting.mediaName, "TV_A3");  // the device's first medium became current
  EXPECT_EQ(setting.LocaleToCanonical("TV_A3T"), "P_(297.00_x_420.00_MM)");
  EXPECT_EQ(setting.CanonicalToLocale("P_(500.00_x_500.00_MM)"), square);
  EXPECT_EQ(setting.LocaleToCanonical("TV_A0"), std::string(kBlankMediaName));
  EXPECT_EQ(setting.CanonicalToLocale("TV_A3"), std::string(kBlankMediaName));

  // A refused device leaves the lists as they were.
  EXPECT_FALSE(setting.SetDevice("Missing.pc3"));
  EXPECT_EQ(setting.localeMediaList.size(), 3u);

  // A new setting reads device and medium back from the layout.
  ASSERT_TRUE(host::LayoutPlotSettings::Current().setCanonicalMediaName("P_(297.00_x_420.00_MM)"));
  LayoutPlotSetting again;
  EXPECT_EQ(again.deviceName, "T_PDF.pc3");
  EXPECT_EQ(again.mediaName, "TV_A3T");
}

TEST_F(LayoutPlotSettingTest, PaperGoesOnTheMediumOfItsOrientation) {
  writeDevice("T_PDF.pc3", "T_PDF.pmp", {{420, 297}, {500, 500}, {841, 594}});
  LayoutPlotSetting setting;
  ASSERT_TRUE(setting.SetDevice("T_PDF.pc3"));

  setting.SetPaper("TV_A3", false);
  EXPECT_EQ(plot().paperSize, "P_(420.00_x_297.00_MM)");
  EXPECT_TRUE(setting.IsPaperWiderThanHigh());
  setting.SetPaper("TV_A3", true);
  EXPECT_EQ(plot().paperSize, "P_(297.00_x_420.00_MM)");
  EXPECT_FALSE(setting.IsPaperWiderThanHigh());

  // A square paper has no turned medium: the other one serves.
  setting.SetPaper(PaperName(500, 500), true);
  EXPECT_EQ(plot().paperSize, "P_(500.00_x_500.00_MM)");

  // Unknown to the device both ways: the previous medium stays.
  setting.SetPaper("TV_A0", false);
  EXPECT_EQ(plot().paperSize, "P_(500.00_x_500.00_MM)");
}

// ---- the window -------------------------------------------------------------------------------------------

TEST_F(LayoutPlotSettingTest, WindowIsFitToPaperAndCentred) {
  editor.vars["TARGET"] = Point3d{100, 200, 0};
  windowFor(nullptr);
  EXPECT_EQ(plot().windowMin, (Point2d{900, 1800}));  // no job: no correction, less the target
  EXPECT_EQ(plot().windowMax, (Point2d{42900, 31500}));
  EXPECT_EQ(plot().plotType, host::kPlotWindow);
  EXPECT_EQ(plot().standardScaleType, host::kScaleToFit);
  const host::LayoutPlotSettings current = host::LayoutPlotSettings::Current();
  EXPECT_TRUE(current.plotCentered());
  EXPECT_TRUE(current.useStandardScale());
}

// 0.1 mm of paper at 1:100 is 10 units: with no margin the outer line is left out unless the user
// wants it; any margin, a negative one too, grows the window.
TEST_F(LayoutPlotSettingTest, TheWindowGrowsOrShrinksByATenthOfAMillimetre) {
  struct Case {
    std::int32_t margin, outerLine;
    Point2d min, max;
  };
  for (const Case& c : {Case{0, 0, {1010, 2010}, {42990, 31690}}, Case{0, 1, {990, 1990}, {43010, 31710}},
                        Case{5, 0, {990, 1990}, {43010, 31710}}, Case{-5, 0, {990, 1990}, {43010, 31710}}}) {
    SCOPED_TRACE(std::to_string(c.margin) + " " + std::to_string(c.outerLine));
    settings::PlotSettingRec rec;
    rec.margin = c.margin;
    settings::GlobalConfig().plot_outer_line = c.outerLine;
    const auto [min, max] = windowFor(&rec);
    EXPECT_EQ(min, c.min);
    EXPECT_EQ(max, c.max);
  }
}

// ---- devices of the paper batch -----------------------------------------------------------------------------

TEST_F(LayoutPlotSettingTest, PaperBatchOffersPrintersOnly) {
  for (const char* name : {"DWG To PDF.pc3", "DWF6 ePlot.pc3", "PublishToWeb JPG.pc3", "PublishToWeb PNG.pc3",
                           "T_EPS.pc3", "Fax.pc3", "Microsoft XPS Document Writer.pc3", "pdfFactory Pro.pc3",
                           "PDF工厂.pc3", "HP LaserJet.pc3", "T_PLT.pc3", "无打印机.pc3"})
    touch(pc3Folder() + "/" + name);
  Strings devices{"left over"};
  LayoutPlotSetting::ListDevices(devices);
  EXPECT_EQ(devices, (Strings{"HP LaserJet.pc3", "PDF工厂.pc3", "T_PLT.pc3", "pdfFactory Pro.pc3"}));
}

// ---- the user's plotter --------------------------------------------------------------------------------------

class RestorePlotterTest : public LayoutPlotSettingTest {
 protected:
  RestorePlotterTest() {
    writeDevice("HP LaserJet.pc3", "HP LaserJet.pmp", {{297, 210}, {420, 297}});
    writeDevice("T_PDF.pc3", "T_PDF.pmp", {{841, 594}});
    saved.pc3Folder = pc3Folder();
    saved.pmpFolder = pmpFolder();
    saved.pc3Path = pc3Folder() + "/T_PDF.pc3";
    saved.pmpPath = pmpFolder() + "/T_PDF.pmp";
    for (const char* name : {"T_PNG.pmp", "T_EPS.pmp", "T_PDFX.pmp"}) touch(pmpFolder() + "/" + name);
    touch(pc3Folder() + "/T_JPG.pc3");
    touch(pc3Folder() + "/T_PLT copy.pc3");
    std::filesystem::create_directories(pc3Folder() + "/T_PDF backup");
  }
  ~RestorePlotterTest() override { host::ShowTimings = false; }

  bool exists(const std::string& path) const { return std::filesystem::exists(path); }

  SavedPlotter saved;
};

TEST_F(RestorePlotterTest, UsersDeviceAndMediumComeBackAndPrivateFilesGo) {
  host::LayoutPlotSettings current = host::LayoutPlotSettings::Current();
  ASSERT_TRUE(current.setPlotCfgName("HP LaserJet.pc3"));
  ASSERT_TRUE(current.setCanonicalMediaName("P_(297.00_x_420.00_MM)"));
  LayoutPlotSetting::SavePlotter(saved);
  EXPECT_EQ(saved.deviceName, "HP LaserJet.pc3");
  EXPECT_EQ(saved.mediaName, "P_(297.00_x_420.00_MM)");

  ASSERT_TRUE(current.setPlotCfgName("T_PDF.pc3"));
  LayoutPlotSetting::RestorePlotter(saved);
  EXPECT_EQ(plot().plotterName, "HP LaserJet.pc3");
  EXPECT_EQ(plot().paperSize, "P_(297.00_x_420.00_MM)");
  EXPECT_EQ(saved.deviceName, "");
  EXPECT_EQ(saved.mediaName, "");

  EXPECT_FALSE(exists(pmpFolder() + "/T_PDF.pmp"));
  EXPECT_FALSE(exists(pmpFolder() + "/T_PNG.pmp"));
  EXPECT_FALSE(exists(pmpFolder() + "/T_EPS.pmp"));
  EXPECT_TRUE(exists(pmpFolder() + "/HP LaserJet.pmp"));
  EXPECT_TRUE(exists(pmpFolder() + "/T_PDFX.pmp"));  // only the six names go
  EXPECT_FALSE(exists(pc3Folder() + "/T_PDF.pc3"));
  EXPECT_FALSE(exists(pc3Folder() + "/T_JPG.pc3"));
  EXPECT_FALSE(exists(pc3Folder() + "/T_PLT copy.pc3"));
  EXPECT_TRUE(exists(pc3Folder() + "/HP LaserJet.pc3"));
  EXPECT_TRUE(exists(pc3Folder() + "/T_PDF backup"));  // a folder is no device file
}

TEST_F(RestorePlotterTest, InstallationsOwnDeviceOfThatNameComesBack) {
  test_support::WriteFile(settings::InstallFolder() + "/Tarvex.prt10", "the shipped device\n");
  test_support::WriteFile(settings::InstallFolder() + "/Tarvex.prt12", "another\n");
  LayoutPlotSetting::RestorePlotter(saved);
  EXPECT_EQ(test_support::ReadFile(saved.pc3Path), "the shipped device\n");
  EXPECT_FALSE(exists(pc3Folder() + "/T_JPG.pc3"));  // only the device of the job's path
}

TEST_F(RestorePlotterTest, DeviceThatCantBeSetGivesNone) {
  saved.deviceName = "Gone.pc3";
  saved.mediaName = "P_(297.00_x_420.00_MM)";
  ASSERT_TRUE(host::LayoutPlotSettings::Current().setPlotCfgName("T_PDF.pc3"));
  LayoutPlotSetting::RestorePlotter(saved);
  EXPECT_EQ(plot().plotterName, "None");
  EXPECT_EQ(saved.deviceName, "");
}

TEST_F(RestorePlotterTest, NothingHappensWithoutAPrivatePlotterOrWhileTracing) {
  ASSERT_TRUE(host::LayoutPlotSettings::Current().setPlotCfgName("T_PDF.pc3"));
  saved.deviceName = "HP LaserJet.pc3";
  SavedPlotter none = saved;
  none.pc3Folder = "/";
  LayoutPlotSetting::RestorePlotter(none);
  host::ShowTimings = true;
  LayoutPlotSetting::RestorePlotter(saved);
  EXPECT_EQ(plot().plotterName, "T_PDF.pc3");
  EXPECT_EQ(saved.deviceName, "HP LaserJet.pc3");
  EXPECT_TRUE(exists(pc3Folder() + "/T_PDF.pc3"));
  EXPECT_TRUE(exists(pmpFolder() + "/T_PNG.pmp"));
}

}  // namespace
}  // namespace tv::paper
