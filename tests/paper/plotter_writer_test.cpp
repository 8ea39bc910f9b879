#include "paper/plotter_writer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "plotter_fixture.h"

namespace tv::paper {
namespace {

using testing::Count;
using testing::Papers;
using testing::PlotterFolderTest;
namespace fs = std::filesystem;
using test_support::ReadFile;
using test_support::WriteFile;

// The two characters "毫米" of the configuration's placeholder medium, as the code page writes them.
std::string Gbk(std::string text) {
  const std::string utf8 = "毫米";
  for (std::size_t at = text.find(utf8); at != std::string::npos; at = text.find(utf8, at))
    text.replace(at, utf8.size(), "\xBA\xC1\xC3\xD7");
  return text;
}

bool HasLine(const std::string& text, const std::string& line) {
  return text.starts_with(line + "\n") || text.find("\n" + line + "\n") != std::string::npos;
}

// The text between the line `from` and the next line `to`, both excluded.
std::string Between(const std::string& text, const std::string& from, const std::string& to) {
  const std::size_t start = text.find("\n" + from + "\n");
  if (start == std::string::npos) return {};
  const std::size_t body = start + from.size() + 2;
  const std::size_t end = text.find("\n" + to + "\n", body - 1);
  return end == std::string::npos ? std::string() : text.substr(body, end + 1 - body);
}

std::string Replace(std::string text, const std::string& from, const std::string& to) {
  text.replace(text.find(from), from.size(), to);
  return text;
}

// A "custom" group: numbered entries of a name and a value.
std::string CustomGroup(const std::vector<std::pair<std::string, std::string>>& entries) {
  std::string text = "custom{\n";
  for (std::size_t i = 0; i < entries.size(); ++i)
    text += std::to_string(i) + "{\nname=\"" + entries[i].first + "\nvalue=" + entries[i].second + "\n}\n";
  return text + "}\n";
}

// The expected files below are written a block a line, their lines apart by "|".
std::string Lines(std::string_view packed) {
  std::string text(packed);
  std::replace(text.begin(), text.end(), '|', '\n');
  return text + "\n";
}

// ---- whole files ------------------------------------------------------------------------------------

const std::string kPdfMeta = Lines(R"(PIAFILEVERSION_2.0,PC3VER1
meta{|user_defined_model_pathname="/plotters/PMP Files/T_PDF.pmp|user_defined_model_basename="
driver_pathname="/drivers/pdfplot25.hdi|driver_version="1|driver_tag_line="PDF ePlot - by Autodesk
toolkit_version=1|driver_type=3|canonical_family_name="Autodesk ePlot|show_custom_first=TRUE
truetype_as_text=TRUE|canonical_model_name="pdf|localized_family_name="Autodesk ePlot (PDF)
localized_model_name="DWG To PDF|file_only=TRUE|model_abilities="000550055000|udm_description="
short_net_name="|friendly_net_name="|dm_driver_version=0|default_system_cfg=FALSE|platform="2,6,2
locale="4B00409|config_description="|config_autospool=FALSE|})");

const std::string kPc3Media = Lines(R"(media{|selection_method=2|type="|dm_orientation=1|actual_printable_bounds_llx=0.0
actual_printable_bounds_lly=0.0|actual_printable_bounds_urx=594.0|actual_printable_bounds_ury=420.0
number_of_copies=1
size{|name="UserDefinedMetric (594.00 x 420.00毫米)|group=0|landscape_mode=TRUE|longplot_reduction=1.0
media_description{|printable_bounds_llx=0.0|printable_bounds_lly=0.0|printable_bounds_urx=594.0
printable_bounds_ury=420.0|printable_area=249480.00000|dimensional=TRUE
media_bounds{|urx=594.0|ury=420.0|}|}|}|}
io{|type=2|pathname="|allsysvalid=FALSE|plot_to_file=TRUE|}
res_color_mem{|name="RGB|num_colors=16777216|color_depth=32|num_undithered_colors=16777216|color_system=1
dm_color=1|lines_overwrite=TRUE
resolution{|name="Default|phys_resolution_x=600.0|phys_resolution_y=600.0|addr_resolution_x=1.0
addr_resolution_y=1.0|effective_resolution_x=600.0|effective_resolution_y=600.0|}|})");

const std::string kPdfCustom = CustomGroup({
    {"Custom_Raster_Resolution", "TRUE"}, {"Custom_DWF_Resolution", "TRUE"}, {"Custom_Monochrome_Resolution", "TRUE"},
    {"Custom_Gradient_Resolution", "TRUE"}, {"Hardcopy_Resolution", "1200"}, {"Raster_Limit", "400"},
    {"Monochrome_Raster_Limit", "400"}, {"Gradient_Limit", "400"}, {"All_As_Geometry", "FALSE"}, {"Capture", "2"},
    {"Resolution", "14"}, {"Font_Capture", "TRUE"}, {"Include_Layer", "TRUE"}, {"View_New_File", "FALSE"}});

const std::string kPdfModel = Lines(R"(udm{
calibration{|_x=1.0|_y=1.0|}
media{|abilities="500005500500505555000005550000000550000500000500000
caps_state="000000000000000000000000000000000000000000000000000|ui_owner="11111111111111111111110
size_max_x=5080.0|size_max_y=5080.0
size{
0{|caps_type=2|name="P_(420.00_x_297.00_MM)|localized_name="TV_A3
media_description_name="P_420.00W_x_297.00H_-_(0.00,_0.00)_x_(420.00,_297.00)_=124740.00_MM|media_group=15
landscape_mode=TRUE|}
1{|caps_type=2|name="P_(297.00_x_420.00_MM)|localized_name="TV_A3T
media_description_name="P_297.00W_x_420.00H_-_(0.00,_0.00)_x_(297.00,_420.00)_=124740.00_MM|media_group=15
landscape_mode=TRUE|}|}
description{
0{|caps_type=2|name="P_420.00W_x_297.00H_-_(0.00,_0.00)_x_(420.00,_297.00)_=124740.00_MM
media_bounds_urx=420.0|media_bounds_ury=297.0|printable_bounds_llx=0.0|printable_bounds_lly=0.0
printable_bounds_urx=420.0|printable_bounds_ury=297.0|printable_area=124740.0|dimensional=TRUE|}
1{|caps_type=2|name="P_297.00W_x_420.00H_-_(0.00,_0.00)_x_(297.00,_420.00)_=124740.00_MM
media_bounds_urx=297.0|media_bounds_ury=420.0|printable_bounds_llx=0.0|printable_bounds_lly=0.0
printable_bounds_urx=297.0|printable_bounds_ury=420.0|printable_area=124740.0|dimensional=TRUE|}|}|}|})");

const std::string kPngMeta = Lines(R"(PIAFILEVERSION_2.0,PC3VER1
meta{|user_defined_model_pathname="/plotters/PMP Files/T_PNG.pmp|user_defined_model_basename="
driver_pathname="/drivers/raster25.hdi|driver_version="1|driver_tag_line="Raster File Formats - by Autodesk
toolkit_version=1|driver_type=0|canonical_family_name="Raster File Formats|show_custom_first=TRUE
truetype_as_text=TRUE|canonical_model_name="png|localized_family_name="Raster File Formats
localized_model_name="Portable Network Graphics PNG (LZH Compression)|file_only=TRUE
model_abilities="000000055000|udm_description="|short_net_name="|friendly_net_name="|config_description="
config_autospool=FALSE|})");

const std::string kPngCustom = CustomGroup({
    {"RASTER_Transparent_Background", "TRUE"}, {"RASTER_CALS_Twist", "FALSE"},
    {"RASTER_Transparent_Background_Ability", "TRUE"}, {"RRASTER_CALS_Twist_Ability", "FALSE"},
    {"RASTER_RGB_Back_Color", "1971210"}, {"RASTER_File_Type", "\"PNG"}, {"RASTER_Compression_Type", "\"PNG"}});

// Twice the pixels and a 5 mm margin, itself doubled: A3 grows to 860 x 614.
const std::string kPngModel = Lines(R"(udm{
calibration{|_x=1.0|_y=1.0|}
media{|abilities="500505500500505555000005550000000550000500000500555
caps_state="000000000000000000000000000000000000000000000000000|ui_owner="11111111111111111111110
size_max_x=320000.00000|size_max_y=320000.00000|max_roll_height=320000.00000
size{
0{|caps_type=2|name="P_(860.00_x_614.00_MM)|localized_name="TV_A3
media_description_name="P_860.00W_x_614.00H_-_(10.00,_10.00)_x_(850.00,_604.00)_=498960.00_MM|media_group=15
landscape_mode=TRUE|}
1{|caps_type=2|name="P_(614.00_x_860.00_MM)|localized_name="TV_A3T
media_description_name="P_614.00W_x_860.00H_-_(10.00,_10.00)_x_(604.00,_850.00)_=498960.00_MM|media_group=15
landscape_mode=TRUE|}|}
description{
0{|caps_type=2|name="P_860.00W_x_614.00H_-_(10.00,_10.00)_x_(850.00,_604.00)_=498960.00_MM
media_bounds_urx=860.0|media_bounds_ury=614.0|printable_bounds_llx=10.0|printable_bounds_lly=10.0
printable_bounds_urx=850.0|printable_bounds_ury=604.0|printable_area=498960.0|dimensional=TRUE|}
1{|caps_type=2|name="P_614.00W_x_860.00H_-_(10.00,_10.00)_x_(604.00,_850.00)_=498960.00_MM
media_bounds_urx=614.0|media_bounds_ury=860.0|printable_bounds_llx=10.0|printable_bounds_lly=10.0
printable_bounds_urx=604.0|printable_bounds_ury=850.0|printable_area=498960.0|dimensional=TRUE|}|}|}|})");

// The files are written through the same folders and code page a job uses.
class WholeFileTest : public PlotterFolderTest {
 protected:
  std::string written(const std::string& name) { return ReadFile(dir_ / name); }
  std::string path(const std::string& name) { return (dir_ / name).string(); }
};

TEST_F(WholeFileTest, PdfConfigurationAndModelAreByteExact) {
  const PaperList papers = Papers({{420, 297}});
  settings::CurrentPlotSetting().format = settings::kFormatPdf;
  ASSERT_TRUE(WritePc3(path("T_PDF.pc3"), "/plotters/PMP Files/T_PDF.pmp", "/drivers/pdfplot25.hdi"));
  ASSERT_TRUE(WritePmp(papers, path("T_PDF.pmp"), "/drivers/pdfplot25.hdi"));

  EXPECT_EQ(written("T_PDF.pc3"), Gbk(std::string(kPdfMeta) + kPc3Media + kPdfCustom));
  // The model file names itself.
  EXPECT_EQ(written("T_PDF.pmp"), Replace(kPdfMeta, "/plotters/PMP Files/T_PDF.pmp", path("T_PDF.pmp")) + kPdfModel);
  // Line feeds only, and the placeholder's unit in the code page.
  EXPECT_EQ(Count(written("T_PDF.pc3"), "\r"), 0u);
  EXPECT_NE(written("T_PDF.pc3").find("420.00\xBA\xC1\xC3\xD7)\n"), std::string::npos);
}

TEST_F(WholeFileTest, PngConfigurationAndModelAreByteExact) {
  const PaperList papers = Papers({{420, 297}});
  settings::PlotSettingRec& rec = settings::CurrentPlotSetting();
  rec.format = settings::kFormatPng;
  rec.margin = 5;
  rec.back_red = 10;
  rec.back_green = 20;
  rec.back_blue = 30;
  settings::GlobalConfig().image_scale_step = 10;
  ASSERT_TRUE(WritePc3(path("T_PNG.pc3"), "/plotters/PMP Files/T_PNG.pmp", "/drivers/raster25.hdi"));
  ASSERT_TRUE(WritePmp(papers, path("T_PNG.pmp"), "/drivers/raster25.hdi"));

  EXPECT_EQ(written("T_PNG.pc3"), Gbk(std::string(kPngMeta) + kPc3Media + kPngCustom));
  EXPECT_EQ(written("T_PNG.pmp"), Replace(kPngMeta, "/plotters/PMP Files/T_PNG.pmp", path("T_PNG.pmp")) + kPngModel);
}

TEST_F(WholeFileTest, ModelFileNamesItselfAndWidePathsGoIntoTheCodePage) {
  const PaperList papers = Papers({{420, 297}});
  const std::string pmp = path("图纸.pmp");
  ASSERT_TRUE(WritePmp(papers, pmp, "/drivers/pdfplot25.hdi"));
  const std::string text = ReadFile(pmp);
  // "图纸" in GBK is CD BC D6 BD.
  EXPECT_NE(text.find("user_defined_model_pathname=\"" + Replace(pmp, "图纸", "\xCD\xBC\xD6\xBD") + "\n"),
            std::string::npos);
}

// ---- parts of the texts -----------------------------------------------------------------------------

PlotterOptions Options(std::int32_t format) {
  PlotterOptions o;
  o.format = format;
  o.hostVersion = 25.0;
  return o;
}

// A square paper has one medium; a positive margin grows the paper, a negative one shrinks the
// printable area.
TEST(PlotterMedia, MediaOfEachPaperAndMargin) {
  struct Case {
    int width, height, margin;
    std::vector<std::string> canonical;
    std::string description;
  };
  const Case cases[] = {
      {500, 500, 0, {"P_(500.00_x_500.00_MM)"}, "P_500.00W_x_500.00H_-_(0.00,_0.00)_x_(500.00,_500.00)_=250000.00_MM"},
      {420, 297, 5, {"P_(430.00_x_307.00_MM)", "P_(307.00_x_430.00_MM)"},
       "P_430.00W_x_307.00H_-_(5.00,_5.00)_x_(425.00,_302.00)_=124740.00_MM"},
      {420, 297, -5, {"P_(420.00_x_297.00_MM)", "P_(297.00_x_420.00_MM)"},
       "P_420.00W_x_297.00H_-_(5.00,_5.00)_x_(415.00,_292.00)_=117670.00_MM"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.margin);
    const PaperList papers = Papers({{c.width, c.height}});
    PlotterOptions o = Options(0);
    o.margin = c.margin;
    const auto media = ModelMediaOf(papers, o);
    ASSERT_EQ(media.size(), c.canonical.size());
    for (std::size_t i = 0; i < media.size(); ++i) EXPECT_EQ(media[i].canonicalName, c.canonical[i]);
    EXPECT_EQ(media[0].localeName, PaperNameOf(*papers[0]));
    EXPECT_EQ(media[0].descriptionName, c.description);
    if (media.size() > 1) {
      EXPECT_EQ(media[1].localeName, "TV_A3T");
    }
    const std::string text = PmpText(papers, o, "p", "d");
    EXPECT_EQ(HasLine(text, "1{"), media.size() > 1);
  }
}

TEST(PlotterMedia, MarginLargerThanThePaperIsDroppedInBothOrientations) {
  PaperList papers;
  papers.push_back(std::make_unique<MyPaper>(MyPaper{210, 148, false}));
  PlotterOptions o = Options(0);
  o.margin = -200;
  const auto media = ModelMediaOf(papers, o);
  ASSERT_EQ(media.size(), 2u);
  for (const ModelMedium& m : media) {
    EXPECT_EQ(m.inset, 0.0);
    EXPECT_DOUBLE_EQ(m.printableArea, 210.0 * 148.0);
  }
  // 80 mm fits across 210 but not across 148: still no inset, whichever way the medium lies.
  o.margin = -80;
  for (const ModelMedium& m : ModelMediaOf(papers, o)) EXPECT_EQ(m.inset, 0.0);
  o.margin = -70;
  for (const ModelMedium& m : ModelMediaOf(papers, o)) EXPECT_EQ(m.inset, 70.0);
}

// Text is drawn as geometry on the option, and always by the PDF driver of hosts 20.1 to 21.
TEST(PlotterText, TextAsGeometryFollowsTheOptionAndTheHostOfThePdfDriver) {
  struct Case {
    std::int32_t format;
    double hostVersion;
    bool option, asGeometry;
  };
  const Case cases[] = {{0, 25.0, false, false}, {0, 25.0, true, true},  {0, 20.1, false, true},
                        {0, 20.5, false, true},  {0, 21.0, false, true}, {0, 20.0, false, false},
                        {0, 21.1, false, false}, {1, 20.5, false, false}};
  for (const Case& c : cases) {
    PlotterOptions o = Options(c.format);
    o.hostVersion = c.hostVersion;
    o.textAsGraphics = c.option;
    const std::string text = Pc3Text(o, "p", c.format == 0 ? "/d/pdfplot25.hdi" : "/d/dwfplot25.hdi");
    EXPECT_TRUE(HasLine(Between(text, "name=\"All_As_Geometry", "}"), c.asGeometry ? "value=TRUE" : "value=FALSE"))
        << "format " << c.format << " host " << c.hostVersion << " option " << c.option;
  }
}

TEST(PlotterText, OldestPdfDriverTakesTheLongOptionList) {
  const std::string text = Pc3Text(Options(0), "p", "/drv/PdfPlot9.hdi");
  EXPECT_FALSE(HasLine(text, "name=\"View_New_File"));
  EXPECT_TRUE(HasLine(text, "24{"));
  EXPECT_FALSE(HasLine(text, "25{"));
  EXPECT_TRUE(HasLine(Between(text, "name=\"File_Format", "}"), "value=50"));
  EXPECT_TRUE(HasLine(Between(text, "name=\"Background_Color", "}"), "value=16777215"));
  EXPECT_TRUE(HasLine(Between(text, "24{", "}"), "name=\"Format"));
  // Only a name that stands after something counts; a bare file name keeps the short list.
  EXPECT_TRUE(HasLine(Pc3Text(Options(0), "p", "pdfplot9.hdi"), "name=\"View_New_File"));
  EXPECT_TRUE(HasLine(Pc3Text(Options(0), "p", "/drv/pdfplot19.hdi"), "name=\"View_New_File"));
}

TEST(PlotterText, DwfCarriesBackgroundAndResolution) {
  PlotterOptions o = Options(1);
  o.red = 0;
  o.green = 0;
  o.blue = 255;
  o.vectorStep = 20;
  o.rasterStep = 0;
  const std::string text = Pc3Text(o, "p", "d");
  EXPECT_TRUE(HasLine(text, "platform=\"2,5,1"));
  EXPECT_TRUE(HasLine(text, "localized_family_name=\"Autodesk ePlot (DWF)"));
  EXPECT_TRUE(HasLine(Between(text, "4{", "}"), "name=\"Hardcopy_Resolution"));
  EXPECT_TRUE(HasLine(Between(text, "name=\"Hardcopy_Resolution", "}"), "value=500"));
  EXPECT_TRUE(HasLine(Between(text, "name=\"Gradient_Limit", "}"), "value=300"));
  EXPECT_TRUE(HasLine(Between(text, "23{", "}"), "value=16711680"));
  EXPECT_TRUE(HasLine(Between(text, "25{", "}"), "name=\"Resolution"));
  EXPECT_TRUE(HasLine(Between(text, "25{", "}"), "value=18"));
  EXPECT_FALSE(HasLine(text, "26{"));
  EXPECT_TRUE(HasLine(PmpText({}, o, "p", "d"), "size_max_x=320000.00000"));
}

TEST(PlotterText, JpgHasThreeOptionsAndRollHeight) {
  const std::string text = Pc3Text(Options(2), "p", "d");
  EXPECT_TRUE(HasLine(text, "canonical_model_name=\"jfif"));
  EXPECT_TRUE(HasLine(text, "2{"));
  EXPECT_FALSE(HasLine(text, "3{"));
  EXPECT_FALSE(HasLine(text, "platform=\"2,6,2"));
  EXPECT_FALSE(HasLine(text, "dm_driver_version=0"));
  EXPECT_TRUE(HasLine(PmpText({}, Options(2), "p", "d"), "max_roll_height=320000.00000"));
  EXPECT_FALSE(HasLine(PmpText({}, Options(0), "p", "d"), "max_roll_height=320000.00000"));
}

TEST(PlotterText, PngOnOlderHostsNamesItsImageModule) {
  PlotterOptions o = Options(3);
  o.hostVersion = 24.2;
  const std::string text = Pc3Text(o, "p", "d");
  EXPECT_TRUE(HasLine(Between(text, "3{", "}"), "name=\"RASTER_IE_Module_Name"));
  EXPECT_TRUE(HasLine(Between(text, "3{", "}"), "value=\"iepngwr70.dll"));
  EXPECT_FALSE(HasLine(text, "6{"));
  o.hostVersion = 24.3;
  EXPECT_TRUE(HasLine(Pc3Text(o, "p", "d"), "name=\"RRASTER_CALS_Twist_Ability"));
}

TEST(PlotterText, PltModelNamesEveryMediumInItsSource) {
  const PaperList papers = Papers({{420, 297}, {500, 500}});
  const std::string model = PmpText(papers, Options(4), "p", "d");
  const std::string expectedTail = Lines(R"(source{
Manual_Source{|caps_type=0
entry{
Manual_Feed{
size_names{
0{|name="P_(420.00_x_297.00_MM)|caps_type=2|}
1{|name="P_(297.00_x_420.00_MM)|caps_type=2|}
2{|name="P_(500.00_x_500.00_MM)|caps_type=2|}|}|}|}|}|}|}|})");
  EXPECT_TRUE(model.ends_with(expectedTail)) << model.substr(model.size() - 400);
  EXPECT_TRUE(HasLine(model, "abilities=\"555555555555505555000505550000555550000550550500550"));
  const std::string config = Pc3Text(Options(4), "p", "d");
  EXPECT_TRUE(HasLine(config, "file_only=FALSE"));
  EXPECT_TRUE(HasLine(config, "driver_tag_line=\"HPGL/2 - by Autodesk"));
  EXPECT_TRUE(HasLine(Between(config, "name=\"Optional_HPGL2_Cmds_Supported", "}"), "value=125"));
}

TEST(PlotterText, EpsHasWindowsNamesAndATray) {
  const std::string config = Pc3Text(Options(5), "p", "d");
  EXPECT_NE(config.find("udm_description=\"\nwin_device_name=\"\nwin_driver_name=\"\nshort_net_name=\"\n"),
            std::string::npos);
  EXPECT_TRUE(HasLine(config, "driver_tag_line=\""));
  EXPECT_TRUE(HasLine(config, "model_abilities=\"555555555555"));
  EXPECT_TRUE(HasLine(Between(config, "2{", "}"), "name=\"Tokenize_Postscipt_Code"));
  EXPECT_TRUE(HasLine(Between(config, "16{", "}"), "value=1.0"));
  const std::string model = PmpText(Papers({{420, 297}}), Options(5), "p", "d");
  EXPECT_NE(model.find("source{\nSheetSrc{\ncaps_type=0\nentry{\nStandard_Tray{\nsize_names{\n"), std::string::npos);
}

TEST(PlotterText, EveryFormatBalancesItsGroups) {
  const PaperList papers = Papers({{420, 297}, {1189, 841}});
  for (std::int32_t format = 0; format <= 5; ++format) {
    const std::string config = Pc3Text(Options(format), "p", "/d/pdfplot9.hdi");
    const std::string model = PmpText(papers, Options(format), "p", "d");
    EXPECT_EQ(Count(config, "{\n"), Count(config, "\n}\n")) << format;
    EXPECT_EQ(Count(model, "{\n"), Count(model, "\n}\n")) << format;
    EXPECT_TRUE(config.starts_with("PIAFILEVERSION_2.0,PC3VER1\nmeta{\n")) << format;
    EXPECT_TRUE(model.ends_with("}\n}\n")) << format;
  }
}

// ---- the whole write in the host's folders ---------------------------------------------------------------

class PrivatePlotterTest : public PlotterFolderTest {};

TEST_F(PrivatePlotterTest, WritesBothFilesIntoTheHostsFoldersAndRemembersThem) {
  const PaperList papers = Papers({{420, 297}});
  settings::CurrentPlotSetting().format = settings::kFormatPlt;
  ASSERT_TRUE(WritePrivatePlotter(papers));
  EXPECT_TRUE(host_.boxes.empty());

  const fs::path pc3 = plotters() / "T_PLT.pc3", pmp = models() / "T_PLT.pmp";
  ASSERT_TRUE(fs::exists(pc3));
  ASSERT_TRUE(fs::exists(pmp));
  const std::string config = ReadFile(pc3);
  EXPECT_TRUE(HasLine(config, "user_defined_model_pathname=\"" + pmp.string()));
  EXPECT_TRUE(HasLine(config, "driver_pathname=\"" + (drivers() / "hpgl250.hdi").string()));
  EXPECT_TRUE(HasLine(ReadFile(pmp), "user_defined_model_pathname=\"" + pmp.string()));

  EXPECT_TRUE(PrivatePlotterReady());
  const SavedPlotter& saved = GlobalSavedPlotter();
  EXPECT_EQ(saved.pc3Folder, plotters().string());
  EXPECT_EQ(saved.pmpFolder, models().string());
  EXPECT_EQ(saved.pc3Path, pc3.string());
  EXPECT_EQ(saved.pmpPath, pmp.string());
}

TEST_F(PrivatePlotterTest, RasterSliderIsLoweredToTheVectorSlider) {
  settings::GlobalConfig().vector_dpi_step = 10;
  settings::GlobalConfig().raster_dpi_step = 30;
  ASSERT_TRUE(WritePrivatePlotter(Papers({{420, 297}})));
  EXPECT_EQ(settings::GlobalConfig().raster_dpi_step, 10);
  const std::string config = ReadFile(plotters() / "T_PDF.pc3");
  EXPECT_TRUE(HasLine(Between(config, "name=\"Raster_Limit", "}"), "value=400"));
}

TEST_F(PrivatePlotterTest, CopiesInSubFoldersAreRemovedButNotTheDeviceItself) {
  fs::create_directories(plotters() / "old" / "older");
  WriteFile(plotters() / "old" / "T_PDF.pc3", "stale");
  WriteFile(plotters() / "old" / "older" / "t_pdf.PC3", "stale");
  WriteFile(plotters() / "old" / "T_PNG.pc3", "other device");
  WriteFile(plotters() / "T_PDF.pc3", "previous run");
  ASSERT_TRUE(WritePrivatePlotter(Papers({{420, 297}})));
  EXPECT_FALSE(fs::exists(plotters() / "old" / "T_PDF.pc3"));
  EXPECT_FALSE(fs::exists(plotters() / "old" / "older" / "t_pdf.PC3"));
  EXPECT_TRUE(fs::exists(plotters() / "old" / "T_PNG.pc3"));
  EXPECT_TRUE(ReadFile(plotters() / "T_PDF.pc3").starts_with("PIAFILEVERSION_2.0,PC3VER1\n"));
}

TEST_F(PrivatePlotterTest, ReadOnlyOldFilesAreReplaced) {
  WriteFile(plotters() / "T_PDF.pc3", "previous run");
  fs::permissions(plotters() / "T_PDF.pc3", fs::perms::owner_read | fs::perms::group_read);
  ASSERT_TRUE(WritePrivatePlotter(Papers({{420, 297}})));
  EXPECT_TRUE(ReadFile(plotters() / "T_PDF.pc3").starts_with("PIAFILEVERSION"));
}

TEST_F(PrivatePlotterTest, MissingDriverIsReportedAndNothingIsWritten) {
  fs::remove(drivers() / "ps25.hdi");
  settings::CurrentPlotSetting().format = settings::kFormatEps;
  EXPECT_FALSE(WritePrivatePlotter(Papers({{420, 297}})));
  ASSERT_EQ(host_.boxes.size(), 1u);
  EXPECT_EQ(host_.boxes[0].first, "文件执行报错");
  EXPECT_EQ(host_.boxes[0].second, "未找到AutoCAD内置打印机的驱动文件 !");
  EXPECT_FALSE(fs::exists(plotters() / "T_EPS.pc3"));
  EXPECT_FALSE(fs::exists(models() / "T_EPS.pmp"));
  EXPECT_FALSE(PrivatePlotterReady());
}

TEST_F(PrivatePlotterTest, UnwritableModelFolderFailsWithoutHalfFiles) {
  fs::remove_all(models());
  WriteFile(models(), "a file where the folder should be");
  EXPECT_FALSE(WritePrivatePlotter(Papers({{420, 297}})));
  EXPECT_FALSE(PrivatePlotterReady());
  EXPECT_EQ(ReadFile(models()), "a file where the folder should be");
}

TEST_F(PrivatePlotterTest, DriverSearchTakesTheHighestNumberOfTheFirstFolderThatHasOne) {
  const fs::path first = dir_ / "drv1", second = dir_ / "drv2";
  fs::create_directories(first);
  fs::create_directories(second);
  WriteFile(second / "pdfplot25.hdi", "x");
  WriteFile(first / "pdfplot9.hdi", "x");
  WriteFile(first / "pdfplot12.hdi", "x");
  WriteFile(first / "pdfplot7.hdi", "x");  // below the range
  const std::string list = first.string() + ";" + second.string();
  EXPECT_EQ(FindPlotterDriver(0, list), (first / "pdfplot12.hdi").string());
  fs::remove(first / "pdfplot12.hdi");
  EXPECT_EQ(FindPlotterDriver(0, list), (first / "pdfplot9.hdi").string());
  fs::remove(first / "pdfplot9.hdi");
  EXPECT_EQ(FindPlotterDriver(0, list), (second / "pdfplot25.hdi").string());
  // Plotters number their drivers from 29 to 250.
  WriteFile(first / "hpgl28.hdi", "x");
  EXPECT_EQ(FindPlotterDriver(4, list), "");
  WriteFile(second / "hpgl29.hdi", "x");
  EXPECT_EQ(FindPlotterDriver(4, list), (second / "hpgl29.hdi").string());
  // Both image formats share the raster driver.
  WriteFile(second / "raster8.hdi", "x");
  EXPECT_EQ(FindPlotterDriver(2, list), (second / "raster8.hdi").string());
  EXPECT_EQ(FindPlotterDriver(3, list), (second / "raster8.hdi").string());
  EXPECT_EQ(FindPlotterDriver(6, list), "");
}

TEST_F(PrivatePlotterTest, ShippedDriversServeEveryFormat) {
  const std::string shipped = std::string(TV_SOURCE_DIR) + "/drivers";
  const std::string besideProgram = fs::path(TV_TVPLOT_PATH).parent_path().string() + "/drivers";
  for (const std::string& folder : {shipped, besideProgram})
    for (std::int32_t format = 0; format <= 5; ++format)
      EXPECT_NE(FindPlotterDriver(format, folder), "") << folder << " format " << format;
}

TEST_F(PrivatePlotterTest, BuiltinDeviceIsCopiedFromASimilarNameOnce) {
  const fs::path folder = plotters();
  WriteFile(folder / "AutoCAD PDF (General Documentation).pc3", "general");
  WriteFile(folder / "AutoCAD PDF (High Quality Print).pc3", "high");
  EXPECT_TRUE(EnsureBuiltinPc3(folder.string(), 0));
  // The high quality device is the first choice after the standard name.
  EXPECT_EQ(ReadFile(folder / "DWG To PDF.pc3"), "high");
  WriteFile(folder / "AutoCAD PDF (High Quality Print).pc3", "changed");
  EXPECT_TRUE(EnsureBuiltinPc3(folder.string(), 0));
  EXPECT_EQ(ReadFile(folder / "DWG To PDF.pc3"), "high");

  EXPECT_FALSE(EnsureBuiltinPc3(folder.string(), 2));
  WriteFile(folder / "dwg to jpg.PC3", "jpg");
  EXPECT_TRUE(EnsureBuiltinPc3(folder.string(), 2));
  EXPECT_EQ(ReadFile(folder / "PublishToWeb JPG.pc3"), "jpg");
  EXPECT_FALSE(EnsureBuiltinPc3(folder.string(), 4));
}

}  // namespace
}  // namespace tv::paper
