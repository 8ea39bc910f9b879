// The plot settings validator of this platform: devices and style tables from the host's folders,
// media from the model files the system writes, and the settings kept in the layout where the
// drawing file keeps them.
#include "host/layout_plot.h"

#include <gtest/gtest.h>

#include "cad/dxf_reader.h"
#include "cad/dxf_writer.h"
#include "layout_plot_fixture.h"

namespace tv::host::testing {
namespace {

using Strings = std::vector<std::string>;

TEST_F(LayoutPlotTest, DeviceListIsNoneThenEveryConfigurationOnce) {
  std::filesystem::create_directories(dir_ / "more");
  editor.env["PrinterConfigDir"] = pc3Folder() + ";" + folder("more") + ";" + folder("missing");
  settings::ComputeFolders();
  touch(pc3Folder() + "/DWG To PDF.pc3");
  touch(pc3Folder() + "/HP LaserJet.pc3");
  touch(pc3Folder() + "/notes.txt");
  touch(pc3Folder() + "/old.pc3.bak");
  touch(folder("more") + "/HP LaserJet.pc3");  // the first folder's device shadows it
  touch(folder("more") + "/Plotter.PC3");

  EXPECT_EQ(PlotDeviceList(), (Strings{"None", "DWG To PDF.pc3", "HP LaserJet.pc3", "Plotter.PC3"}));
}

TEST_F(LayoutPlotTest, StyleSheetListHoldsBothKindsSorted) {
  touch(styleFolder() + "/monochrome.ctb");
  touch(styleFolder() + "/黑白.ctb");
  touch(styleFolder() + "/acad.stb");
  touch(styleFolder() + "/readme.txt");
  EXPECT_EQ(PlotStyleSheetList(), (Strings{"acad.stb", "monochrome.ctb", "黑白.ctb"}));
}

TEST_F(LayoutPlotTest, DeviceBringsItsMediaAndKeepsTheCurrentOneWhenItHasIt) {
  writeDevice("T_PDF.pc3", "T_PDF.pmp", {{420, 297}, {500, 500}});
  writeDevice("Other.pc3", "Other.pmp", {{297, 210}});
  LayoutPlotSettings plot = LayoutPlotSettings::Current();
  ASSERT_TRUE(plot.valid());
  EXPECT_EQ(plot.layoutName(), "Model");

  EXPECT_FALSE(plot.setPlotCfgName("Nowhere.pc3"));
  EXPECT_EQ(plot.getPlotCfgName(), "");

  ASSERT_TRUE(plot.setPlotCfgName("t_pdf.PC3"));  // found as the file system would find it
  EXPECT_EQ(plot.getPlotCfgName(), "T_PDF.pc3");
  const Strings canonical = plot.canonicalMediaNameList();
  EXPECT_EQ(canonical, (Strings{"P_(420.00_x_297.00_MM)", "P_(297.00_x_420.00_MM)", "P_(500.00_x_500.00_MM)"}));
  EXPECT_EQ(plot.getLocaleMediaName(canonical[1]), "TV_A3T");
  EXPECT_EQ(plot.getLocaleMediaName("P_(1.00_x_1.00_MM)"), "");
  // Both names of every medium at once, as the two calls give them one by one.
  const auto names = plot.mediaNames();
  ASSERT_EQ(names.size(), canonical.size());
  for (std::size_t i = 0; i < names.size(); ++i) {
    EXPECT_EQ(names[i].first, canonical[i]);
    EXPECT_EQ(names[i].second, plot.getLocaleMediaName(canonical[i]));
  }
  // A device without the current medium gives its first.
  EXPECT_EQ(plot.getCanonicalMediaName(), canonical[0]);

  ASSERT_TRUE(plot.setCanonicalMediaName(canonical[2]));
  ASSERT_TRUE(plot.setPlotCfgName("T_PDF.pc3"));
  EXPECT_EQ(plot.getCanonicalMediaName(), canonical[2]);
  ASSERT_TRUE(plot.setPlotCfgName("Other.pc3"));
  EXPECT_EQ(plot.getCanonicalMediaName(), "P_(297.00_x_210.00_MM)");

  // The empty device keeps the paper and lists no media.
  ASSERT_TRUE(plot.setPlotCfgName("None"));
  EXPECT_EQ(plot.getPlotCfgName(), "None");
  EXPECT_EQ(plot.getCanonicalMediaName(), "P_(297.00_x_210.00_MM)");
  EXPECT_TRUE(plot.canonicalMediaNameList().empty());
  EXPECT_TRUE(plot.mediaNames().empty());
}

TEST_F(LayoutPlotTest, MediumIsRefusedUnlessTheDeviceListsItAndBringsItsSize) {
  writeDevice("T_PDF.pc3", "T_PDF.pmp", {{420, 297}}, 0, -5);
  LayoutPlotSettings plot = LayoutPlotSettings::Current();
  ASSERT_TRUE(plot.setPlotCfgName("T_PDF.pc3"));
  ASSERT_TRUE(plot.setCanonicalMediaName("P_(297.00_x_420.00_MM)"));
  EXPECT_FALSE(plot.setCanonicalMediaName("TV_A3"));  // a locale name is no canonical one
  EXPECT_FALSE(plot.setCanonicalMediaName("P_(594.00_x_420.00_MM)"));
  EXPECT_EQ(plot.getCanonicalMediaName(), "P_(297.00_x_420.00_MM)");

  double width = 0, height = 0;
  plot.getPlotPaperSize(width, height);
  EXPECT_DOUBLE_EQ(width, 297);
  EXPECT_DOUBLE_EQ(height, 420);
  // A negative margin shrinks the printable area inside the paper: the layout keeps the edges.
  const cad::PlotSettings& kept = db.objectAs<cad::Layout>(plot.layoutId())->plot;
  EXPECT_DOUBLE_EQ(kept.marginLeft, 5);
  EXPECT_DOUBLE_EQ(kept.marginTop, 5);
  EXPECT_EQ(kept.paperUnits, 1);
}

TEST_F(LayoutPlotTest, MediaWrittenAfterTheDeviceWasSetAreSeen) {
  writeDevice("T_PDF.pc3", "T_PDF.pmp", {{420, 297}});
  LayoutPlotSettings plot = LayoutPlotSettings::Current();
  ASSERT_TRUE(plot.setPlotCfgName("T_PDF.pc3"));
  EXPECT_FALSE(plot.setCanonicalMediaName("P_(841.00_x_594.00_MM)"));

  writeDevice("T_PDF.pc3", "T_PDF.pmp", {{420, 297}, {841, 594}});
  plot.refreshLists();
  EXPECT_EQ(plot.canonicalMediaNameList().size(), 4u);
  EXPECT_TRUE(plot.setCanonicalMediaName("P_(841.00_x_594.00_MM)"));
}

TEST_F(LayoutPlotTest, StyleSheetMustBeInTheList) {
  touch(styleFolder() + "/黑白.ctb");
  LayoutPlotSettings plot = LayoutPlotSettings::Current();
  EXPECT_FALSE(plot.setCurrentStyleSheet("missing.ctb"));
  EXPECT_EQ(plot.getCurrentStyleSheet(), "");
  EXPECT_TRUE(plot.setCurrentStyleSheet("黑白.ctb"));
  EXPECT_EQ(plot.getCurrentStyleSheet(), "黑白.ctb");
}

TEST_F(LayoutPlotTest, RangesOfTypesScalesAndRotations) {
  LayoutPlotSettings plot = LayoutPlotSettings::Current();
  EXPECT_TRUE(plot.setPlotType(kPlotWindow));
  EXPECT_FALSE(plot.setPlotType(6));
  EXPECT_FALSE(plot.setPlotType(-1));
  EXPECT_EQ(plot.getPlotType(), kPlotWindow);
  EXPECT_TRUE(plot.setStdScaleType(kScaleToFit));
  EXPECT_FALSE(plot.setStdScaleType(33));
  EXPECT_EQ(plot.getStdScaleType(), kScaleToFit);
  EXPECT_TRUE(plot.setPlotRotation(1));
  EXPECT_FALSE(plot.setPlotRotation(4));
  EXPECT_EQ(plot.getPlotRotation(), 1);

  // Corners are kept lower-left first, whatever order they came in.
  EXPECT_TRUE(plot.setPlotWindowArea({10, 20}, {-5, 5}));
  Point2d min, max;
  plot.getPlotWindowArea(min, max);
  EXPECT_EQ(min, (Point2d{-5, 5}));
  EXPECT_EQ(max, (Point2d{10, 20}));
}

TEST_F(LayoutPlotTest, FlagsAreTheLayoutFlagsAndTravelWithTheDrawingFile) {
  LayoutPlotSettings plot = LayoutPlotSettings::Current();
  cad::Layout& layout = *db.objectAs<cad::Layout>(plot.layoutId());
  layout.plot.layoutFlags = 0;
  plot.setPlotCentered(true);
  plot.setUseStandardScale(true);
  plot.setPlotPlotStyles(true);
  plot.setPrintLineweights(true);
  plot.setPlotTransparency(true);
  EXPECT_EQ(layout.plot.layoutFlags, 4 | 16 | 32 | 128);
  plot.setUseStandardScale(false);
  EXPECT_EQ(layout.plot.layoutFlags, 4 | 32 | 128);
  EXPECT_TRUE(plot.plotTransparency());

  plot.setPlotType(kPlotWindow);
  plot.setPlotWindowArea({1, 2}, {301, 202});
  cad::DxfReadResult read = cad::ReadDxfFromBytes(cad::WriteDxfToString(db));
  ASSERT_TRUE(read.ok()) << read.error;
  SetWorkingDatabase(&*read.db);
  const LayoutPlotSettings again = LayoutPlotSettings::Current();
  ASSERT_TRUE(again.valid());
  EXPECT_TRUE(again.plotCentered());
  EXPECT_FALSE(again.useStandardScale());
  EXPECT_TRUE(again.plotPlotStyles());
  EXPECT_TRUE(again.printLineweights());
  EXPECT_EQ(again.getPlotType(), kPlotWindow);
  Point2d min, max;
  again.getPlotWindowArea(min, max);
  EXPECT_EQ(max, (Point2d{301, 202}));
  SetWorkingDatabase(&db);
}

TEST_F(LayoutPlotTest, WithoutADrawingEverythingIsRefused) {
  SetWorkingDatabase(nullptr);
  writeDevice("T_PDF.pc3", "T_PDF.pmp", {{420, 297}});
  LayoutPlotSettings plot = LayoutPlotSettings::Current();
  EXPECT_FALSE(plot.valid());
  EXPECT_FALSE(plot.setPlotCfgName("T_PDF.pc3"));
  EXPECT_FALSE(plot.setPlotWindowArea({0, 0}, {1, 1}));
  EXPECT_TRUE(plot.canonicalMediaNameList().empty());
  plot.setPlotCentered(true);
  EXPECT_FALSE(plot.plotCentered());
  double width = 1, height = 1;
  plot.getPlotPaperSize(width, height);
  EXPECT_EQ(width, 0);
}

TEST_F(LayoutPlotTest, CurrentLayoutIsTheOneTheSeamWorksOn) {
  const cad::Layout* paperLayout = db.layoutOf(*db.paperSpace());
  ASSERT_NE(paperLayout, nullptr);
  Working().currentLayout = paperLayout->id;
  LayoutPlotSettings plot = LayoutPlotSettings::Current();
  EXPECT_EQ(plot.layoutName(), paperLayout->name);
  plot.setPlotType(kPlotWindow);
  EXPECT_EQ(paperLayout->plot.plotType, kPlotWindow);
  EXPECT_NE(db.findLayout("Model")->plot.plotType, kPlotWindow);
}

}  // namespace
}  // namespace tv::host::testing
