#include "render/plotter_files.h"

#include <gtest/gtest.h>

#include <string>

#include "../paper/plotter_fixture.h"
#include "paper/ctb_writer.h"

namespace tv::render {
namespace {

using paper::testing::Papers;
using paper::testing::PlotterFolderTest;
using test_support::WriteFile;
namespace fs = std::filesystem;

// Written by the plotting system's writers, read back by the plot engine's readers.
class PlotterRoundTrip : public PlotterFolderTest {
 protected:
  PlotterConfig write(std::int32_t format, const paper::PaperList& papers) {
    settings::CurrentPlotSetting().format = format;
    EXPECT_TRUE(paper::WritePrivatePlotter(papers));
    std::string error;
    auto config = ReadPlotterConfig(paper::GlobalSavedPlotter().pc3Path, &error);
    EXPECT_TRUE(config) << error;
    return config.value_or(PlotterConfig{});
  }
};

TEST_F(PlotterRoundTrip, PdfDeviceKeepsPathsResolutionAndMedia) {
  settings::GlobalConfig().vector_dpi_step = 43;
  settings::GlobalConfig().raster_dpi_step = 10;
  settings::GlobalConfig().text_as_graphics = 1;
  settings::CurrentPlotSetting().margin = -5;
  const PlotterConfig config = write(settings::kFormatPdf, Papers({{420, 297}, {733, 512}}));

  EXPECT_EQ(config.path, (plotters() / "T_PDF.pc3").string());
  EXPECT_EQ(config.modelPath, (models() / "T_PDF.pmp").string());
  EXPECT_EQ(config.driverPath, (drivers() / "pdfplot25.hdi").string());
  EXPECT_EQ(config.canonicalModelName, "pdf");
  EXPECT_EQ(config.format, 0);
  EXPECT_EQ(config.vectorDpi, 1200);
  EXPECT_EQ(config.rasterDpi, 400);
  EXPECT_TRUE(config.textAsGraphics);
  EXPECT_EQ(config.backgroundBgr, 0xFFFFFFu);

  ASSERT_EQ(config.media.size(), 4u);
  const PlotterMedium& a3 = config.media[0];
  EXPECT_EQ(a3.name, "P_(420.00_x_297.00_MM)");
  EXPECT_EQ(a3.localeName, "TV_A3");
  EXPECT_EQ(a3.widthMm, 420);
  EXPECT_EQ(a3.heightMm, 297);
  EXPECT_EQ(a3.printableLlx, 5);
  EXPECT_EQ(a3.printableLly, 5);
  EXPECT_EQ(a3.printableUrx, 415);
  EXPECT_EQ(a3.printableUry, 292);
  EXPECT_EQ(config.media[1].localeName, "TV_A3T");
  EXPECT_EQ(config.media[1].widthMm, 297);
  EXPECT_EQ(config.media[1].heightMm, 420);
  EXPECT_EQ(config.media[2].localeName, "TV_733x512");
  EXPECT_EQ(config.media[3].localeName, "TV_733x512T");
  EXPECT_EQ(config.media[3].printableUry, 728);
}

TEST_F(PlotterRoundTrip, ImageDeviceKeepsBackgroundAndEnlargedMedia) {
  settings::PlotSettingRec& rec = settings::CurrentPlotSetting();
  rec.back_red = 0x12;
  rec.back_green = 0x34;
  rec.back_blue = 0x56;
  rec.margin = 3;
  settings::GlobalConfig().image_scale_step = 5;  // x 1.5
  for (std::int32_t format : {settings::kFormatJpg, settings::kFormatPng}) {
    const PlotterConfig config = write(format, Papers({{297, 210}}));
    EXPECT_EQ(config.format, format);
    EXPECT_EQ(config.backgroundBgr, 0x563412u);
    ASSERT_EQ(config.media.size(), 2u);
    // 297 x 1.5 + 2 x 4.5
    EXPECT_DOUBLE_EQ(config.media[0].widthMm, 454.5);
    EXPECT_DOUBLE_EQ(config.media[0].heightMm, 324.0);
    EXPECT_DOUBLE_EQ(config.media[0].printableLlx, 4.5);
    EXPECT_DOUBLE_EQ(config.media[0].printableUrx, 450.0);
    EXPECT_EQ(config.media[0].localeName, "TV_A4");
  }
}

TEST_F(PlotterRoundTrip, EveryFormatIsKnownByItsModel) {
  const std::pair<std::int32_t, const char*> models[] = {
      {0, "pdf"}, {1, "DWF6_ePlot_for_plotting"}, {2, "jfif"}, {3, "png"}, {4, "DMSXP7595C"}, {5, "PS10"}};
  for (const auto& [format, model] : models) {
    const PlotterConfig config = write(format, Papers({{420, 297}, {500, 500}}));
    EXPECT_EQ(config.format, format);
    EXPECT_EQ(config.canonicalModelName, model);
    EXPECT_EQ(config.media.size(), 3u) << model;
  }
  // DWF carries the background too.
  settings::CurrentPlotSetting().back_red = 0;
  EXPECT_EQ(write(1, Papers({{420, 297}})).backgroundBgr, 0xFFFF00u);
}

TEST_F(PlotterRoundTrip, WidePathsComeBackAsTheyWent) {
  const fs::path folder = dir_ / "打印机";
  fs::create_directories(folder);
  const std::string pc3 = (folder / "T_PDF.pc3").string(), pmp = (folder / "纸张.pmp").string();
  ASSERT_TRUE(paper::WritePc3(pc3, pmp, "/驱动/pdfplot25.hdi"));
  ASSERT_TRUE(paper::WritePmp(Papers({{420, 297}}), pmp, "/驱动/pdfplot25.hdi"));
  const auto config = ReadPlotterConfig(pc3);
  ASSERT_TRUE(config);
  EXPECT_EQ(config->modelPath, pmp);
  EXPECT_EQ(config->driverPath, "/驱动/pdfplot25.hdi");
  EXPECT_EQ(config->media.size(), 2u);
}

TEST_F(PlotterRoundTrip, StyleTablesComeBackWithTheirPens) {
  for (std::int32_t kind : {paper::kBlackWhiteTable, paper::kColourTable, paper::kBlueWhiteTable}) {
    const std::string path = (styles() / std::string(paper::PlotStyleTableName(kind))).string();
    ASSERT_TRUE(paper::WritePlotStyleTable(path, kind, paper::kObjectLineweightChoice));
    std::string error;
    const auto table = ReadPlotStyleTable(path, &error);
    ASSERT_TRUE(table) << error;
    EXPECT_EQ(table->path, path);
    ASSERT_EQ(table->styles.size(), 255u);
    ASSERT_EQ(table->lineweightsMm.size(), 11u);
    EXPECT_DOUBLE_EQ(table->lineweightsMm[10], 0.5);
    for (const PlotStyleEntry& e : table->styles) {
      EXPECT_EQ(e.color, paper::PlotStyleColor(kind));
      EXPECT_EQ(e.modeColor, paper::PlotStyleColor(kind));
      EXPECT_EQ(e.colorPolicy, paper::PlotStyleColorPolicy(kind));
      EXPECT_EQ(e.lineweightIndex, 0);
      EXPECT_TRUE(e.objectLineweight);
    }
    EXPECT_EQ(table->styles[0].name, "Color_1");
    EXPECT_EQ(table->styles[254].name, "Color_255");
  }
  // "0.30 mm" writes 7, which the table lists as 0.35 mm.
  const std::string path = (styles() / "彩色.ctb").string();
  ASSERT_TRUE(paper::WritePlotStyleTable(path, paper::kColourTable, 7));
  const auto table = ReadPlotStyleTable(path);
  ASSERT_TRUE(table);
  EXPECT_EQ(table->styles[100].lineweightIndex, 7);
  EXPECT_FALSE(table->styles[100].objectLineweight);
  EXPECT_DOUBLE_EQ(table->lineweightsMm[7], 0.35);
}

// ---- files of the host's own making ---------------------------------------------------------------------

class HostFileTest : public ::testing::Test {
 protected:
  std::string file(const std::string& name, const std::string& text) {
    WriteFile(dir_ / name, text);
    return (dir_ / name).string();
  }
  test_support::TempDir dir_{"tv_plotter_read"};
};

TEST_F(HostFileTest, ToleratesCarriageReturnsIndentationAndClosedQuotes) {
  fs::create_directories(dir_ / "PMP Files");
  file("PMP Files/Mine.pmp",
       "PIAFILEVERSION_2.0,PC3VER1\r\n"
       "meta{\r\n user_defined_model_pathname=\"C:\\Plotters\\PMP Files\\Mine.pmp\"\r\n}\r\n"
       "udm{\r\n calibration{\r\n  _x=1.0\r\n }\r\n media{\r\n  size{\r\n   0{\r\n    caps_type=2\r\n"
       "    name=\"ISO_A4_(210.00_x_297.00_MM)\"\r\n    localized_name=\"ISO A4 (210.00 x 297.00 mm)\"\r\n"
       "    media_description_name=\"d0\"\r\n   }\r\n   1{\r\n    name=\"Bare\r\n    media_description_name=\"none\r\n"
       "   }\r\n  }\r\n  description{\r\n   0{\r\n    name=\"d0\"\r\n    media_bounds_urx=210.0\r\n"
       "    media_bounds_ury=297.0\r\n    printable_bounds_llx=5.79\r\n    printable_bounds_lly=17.8\r\n"
       "    printable_bounds_urx=204.21\r\n    printable_bounds_ury=279.2\r\n   }\r\n  }\r\n }\r\n}\r\n");
  const std::string pc3 = file("Mine.pc3",
                               "PIAFILEVERSION_2.0,PC3VER1\r\n"
                               "meta{\r\n"
                               " user_defined_model_pathname=\"C:\\Plotters\\PMP Files\\Mine.pmp\"\r\n"
                               " driver_pathname=\"C:\\Drivers\\pdfplot16.hdi\r\n"
                               " canonical_model_name=\"pdf\"\r\n"
                               " unknown_key_without_value\r\n"
                               "}\r\n"
                               "custom{\r\n 0{\r\n  name=\"Hardcopy_Resolution\r\n  value=600\r\n }\r\n"
                               " 1{\r\n  name=\"Background_Color\r\n  value=255\r\n }\r\n}\r\n");
  std::string error;
  const auto config = ReadPlotterConfig(pc3, &error);
  ASSERT_TRUE(config) << error;
  EXPECT_EQ(config->modelPath, "C:\\Plotters\\PMP Files\\Mine.pmp");
  EXPECT_EQ(config->driverPath, "C:\\Drivers\\pdfplot16.hdi");
  EXPECT_EQ(config->format, 0);
  EXPECT_EQ(config->vectorDpi, 600);
  EXPECT_EQ(config->rasterDpi, 0);
  EXPECT_EQ(config->backgroundBgr, 255u);
  // The model is found in the host's model folder beside the configuration.
  ASSERT_EQ(config->media.size(), 2u);
  EXPECT_EQ(config->media[0].name, "ISO_A4_(210.00_x_297.00_MM)");
  EXPECT_EQ(config->media[0].localeName, "ISO A4 (210.00 x 297.00 mm)");
  EXPECT_DOUBLE_EQ(config->media[0].printableLly, 17.8);
  EXPECT_DOUBLE_EQ(config->media[0].printableUrx, 204.21);
  // A size without its description has no bounds, and its canonical name stands for its locale name.
  EXPECT_EQ(config->media[1].localeName, "Bare");
  EXPECT_EQ(config->media[1].widthMm, 0);
}

TEST_F(HostFileTest, MissingModelLeavesTheMediaEmpty) {
  const std::string pc3 = file("A.pc3",
                              "PIAFILEVERSION_2.0,PC3VER1\nmeta{\nuser_defined_model_pathname=\"/nowhere/A.pmp\n"
                              "canonical_model_name=\"PS10\n}\n");
  const auto config = ReadPlotterConfig(pc3);
  ASSERT_TRUE(config);
  EXPECT_EQ(config->format, 5);
  EXPECT_TRUE(config->media.empty());
}

// A batch reads the same device again and again; what it reads is the files as they are now.
TEST_F(HostFileTest, FilesChangedOnDiskAreReadAgain) {
  const std::string pc3 = file("C.pc3", "PIAFILEVERSION_2.0,PC3VER1\nmeta{\nuser_defined_model_pathname=\"C.pmp\n"
                                        "canonical_model_name=\"PS10\n}\n");
  ASSERT_TRUE(ReadPlotterConfig(pc3));
  EXPECT_EQ(ReadPlotterConfig(pc3)->format, 5);
  EXPECT_TRUE(ReadPlotterConfig(pc3)->media.empty());
  // Same length, another model.
  file("C.pc3", "PIAFILEVERSION_2.0,PC3VER1\nmeta{\nuser_defined_model_pathname=\"C.pmp\ncanonical_model_name=\"jfif\n}\n");
  EXPECT_EQ(ReadPlotterConfig(pc3)->format, 2);
  // The model appears beside it.
  file("C.pmp", "PIAFILEVERSION_2.0,PC3VER1\nudm{\nmedia{\nsize{\n0{\nname=\"Sheet\n}\n}\n}\n}\n");
  ASSERT_EQ(ReadPlotterConfig(pc3)->media.size(), 1u);
  EXPECT_EQ(ReadPlotterConfig(pc3)->media[0].name, "Sheet");
  fs::remove(dir_ / "C.pc3");
  EXPECT_FALSE(ReadPlotterConfig(pc3));

  // And so is a style table, which every sheet of a batch reads.
  const std::string ctb = file("C.ctb", "PIAFILEVERSION_2.0,PC3VER1\nplot_style{\n 0{\n  screen=50\n }\n}\n");
  ASSERT_TRUE(ReadPlotStyleTable(ctb));
  EXPECT_EQ(ReadPlotStyleTable(ctb)->styles[0].screen, 50);
  file("C.ctb", "PIAFILEVERSION_2.0,PC3VER1\nplot_style{\n 0{\n  screen=70\n }\n}\n");
  EXPECT_EQ(ReadPlotStyleTable(ctb)->styles[0].screen, 70);
  file("C.ctb", "PIAFILEVERSION_2.0,PC3VER1\n");
  std::string error;
  EXPECT_FALSE(ReadPlotStyleTable(ctb, &error));
  EXPECT_FALSE(error.empty());
  fs::remove(dir_ / "C.ctb");
  EXPECT_FALSE(ReadPlotStyleTable(ctb));
}

TEST_F(HostFileTest, UnknownModelHasNoFormat) {
  const auto config = ReadPlotterConfig(file("B.pc3", "PIAFILEVERSION_2.0,PC3VER1\nmeta{\ncanonical_model_name=\"XYZ\n}\n"));
  ASSERT_TRUE(config);
  EXPECT_EQ(config->format, -1);
}

TEST_F(HostFileTest, BrokenFilesAreRefusedWithAReason) {
  std::string error;
  EXPECT_FALSE(ReadPlotterConfig((dir_ / "none.pc3").string(), &error));
  EXPECT_NE(error.find("none.pc3"), std::string::npos);

  error.clear();
  EXPECT_FALSE(ReadPlotterConfig(file("z.pc3", std::string("PIAFILEVERSION_2.0,PC3VER1,compress\r\npmzlibcodec\x78\x9c\0\x01", 52)),
                                 &error));
  EXPECT_NE(error.find("compressed"), std::string::npos);

  error.clear();
  EXPECT_FALSE(ReadPlotterConfig(file("text.pc3", "hello\nmeta{\n}\n"), &error));
  EXPECT_FALSE(error.empty());

  error.clear();
  EXPECT_FALSE(ReadPlotterConfig(file("extra.pc3", "PIAFILEVERSION_2.0,PC3VER1\nmeta{\n}\n}\n"), &error));
  EXPECT_NE(error.find("line 4"), std::string::npos);

  error.clear();
  EXPECT_FALSE(ReadPlotterConfig(file("nometa.pc3", "PIAFILEVERSION_2.0,PC3VER1\nio{\n}\n"), &error));
  EXPECT_FALSE(error.empty());

  error.clear();
  EXPECT_FALSE(ReadPlotStyleTable(file("x.ctb", "PIAFILEVERSION_2.0,PC3VER1\ndescription=\"\n"), &error));
  EXPECT_FALSE(error.empty());
  EXPECT_FALSE(ReadPlotStyleTable(file("empty.ctb", "")));
}

TEST_F(HostFileTest, StyleTableOfTheHostKeepsObjectLineweightsAndFillsMissingStyles) {
  const auto table = ReadPlotStyleTable(file("acad.ctb",
                                             "PIAFILEVERSION_2.0,PC3VER1\r\n"
                                             "plot_style{\r\n"
                                             " 0{\r\n  name=\"Red\r\n  color=-1\r\n  color_policy=1\r\n"
                                             "  lineweight=255\r\n }\r\n"
                                             " 6{\r\n  color=-1023410176\r\n  color_policy=7\r\n  screen=50\r\n"
                                             "  lineweight=3\r\n }\r\n"
                                             " 300{\r\n  lineweight=1\r\n }\r\n"
                                             "}\r\n"
                                             "custom_lineweight_table{\r\n 0=0.0\r\n 1=0.05\r\n 2=0.09\r\n 3=0.13\r\n}\r\n"));
  ASSERT_TRUE(table);
  ASSERT_EQ(table->styles.size(), 255u);
  EXPECT_EQ(table->styles[0].name, "Red");
  EXPECT_EQ(table->styles[0].color, -1);
  EXPECT_TRUE(table->styles[0].objectLineweight);
  EXPECT_EQ(table->styles[6].colorPolicy, 7);
  EXPECT_EQ(table->styles[6].screen, 50);
  EXPECT_EQ(table->styles[6].modeColor, table->styles[6].color);
  EXPECT_FALSE(table->styles[6].objectLineweight);
  EXPECT_DOUBLE_EQ(table->lineweightsMm[static_cast<std::size_t>(table->styles[6].lineweightIndex)], 0.13);
  // Styles the file leaves out are plain ones.
  EXPECT_EQ(table->styles[7].name, "Color_8");
  EXPECT_EQ(table->styles[7].color, -1);
  EXPECT_TRUE(table->styles[7].objectLineweight);
}

}  // namespace
}  // namespace tv::render
