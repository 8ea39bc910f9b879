// Stamped title-block runs as users run them: the built tvplot on the sample title blocks with a
// stamp library of the test's own; where the stamp's pixels land, in which formats, and that
// neither the drawing nor the temporary folder keeps more than it should.
#include <gtest/gtest.h>

#include <cairo.h>

#include <algorithm>
#include <climits>
#include <filesystem>
#include <regex>
#include <string>
#include <vector>

#include "../support/tvplot_test.h"
#include "examples/sample_drawing.h"
#include "examples/sample_library.h"
#include "examples/sample_stamps.h"
#include "render/raster_jpeg.h"
#include "signing/stamp_library.h"
#include "titleblock/tk_library.h"

namespace tv::signing {
namespace {

namespace fs = std::filesystem;
using namespace test_support;

// The sample sheets: the A1 frames have an issue-stamp area, the A2 frames none.
constexpr const char* kStraight = "结施-01_A_基础平面图";
constexpr const char* kTurned = "结施-02_A_一层梁配筋图";
constexpr const char* kNoArea = "建施-03_一层平面图+（局部）_2026.11.25";

// The box of the strongly red pixels of a page, and the page's size.
struct RedBox {
  int count = 0;
  int minX = INT_MAX, minY = INT_MAX, maxX = -1, maxY = -1;
  int pageWidth = 0, pageHeight = 0;
  double width() const { return maxX - minX + 1; }
  double height() const { return maxY - minY + 1; }
  double centreX() const { return (minX + maxX) / 2.0; }
  double centreY() const { return (minY + maxY) / 2.0; }
};

RedBox RedOf(cairo_surface_t* s) {
  RedBox box;
  if (!s || cairo_surface_status(s) != CAIRO_STATUS_SUCCESS) return box;
  cairo_surface_flush(s);
  box.pageWidth = cairo_image_surface_get_width(s);
  box.pageHeight = cairo_image_surface_get_height(s);
  const int stride = cairo_image_surface_get_stride(s);
  const unsigned char* data = cairo_image_surface_get_data(s);
  for (int y = 0; y < box.pageHeight; ++y)
    for (int x = 0; x < box.pageWidth; ++x) {
      const auto px = *reinterpret_cast<const std::uint32_t*>(data + y * stride + x * 4);
      const int r = (px >> 16) & 0xFF, g = (px >> 8) & 0xFF, b = px & 0xFF;
      if (r < 170 || g > 90 || b > 90) continue;
      ++box.count;
      box.minX = std::min(box.minX, x), box.maxX = std::max(box.maxX, x);
      box.minY = std::min(box.minY, y), box.maxY = std::max(box.maxY, y);
    }
  cairo_surface_destroy(s);
  return box;
}

RedBox RedOf(const fs::path& file) {
  if (file.extension() == ".jpg") return RedOf(render::ReadJpeg(file.string()));
  return RedOf(cairo_image_surface_create_from_png(file.c_str()));
}

// The temporary folder's stamp pictures: a letter and twelve digits.
std::vector<std::string> StampFiles(const fs::path& home) {
  std::vector<std::string> names;
  std::error_code ec;
  static const std::regex picture("[A-D][0-9]{12}");
  for (auto it = fs::recursive_directory_iterator(home, ec); it != fs::recursive_directory_iterator(); it.increment(ec))
    if (it->path().parent_path().filename() == "Tarvex_Temp" && std::regex_match(it->path().filename().string(), picture))
      names.push_back(it->path().filename().string());
  return names;
}

class StampPlotTest : public TvplotTest {
 protected:
  void SetUp() override {
    TvplotTest::SetUp();
    ASSERT_TRUE(titleblock::SaveTkFileTo(samples::BuildTitleBlockLibrary(), tk_, false));
    fs::create_directories(data_);
    StampLibrary library = samples::BuildStampLibrary();
    // 62 by 28 mm of solid red, of any kind.
    auto red = std::make_unique<TV_Stamp>();
    red->name = "红章";
    red->image = samples::SolidRedPicture(124, 56);
    red->image_size = static_cast<std::int32_t>(red->image.size());
    red->stamp_kind = 4;
    library.stamps.push_back(std::move(red));
    ASSERT_TRUE(SaveStampLibrary(library, (data_ / "Stamp.tvlib2").string()));
  }
  RunResult TitlePlot(const std::string& format, const fs::path& out, std::vector<std::string> more) const {
    std::vector<std::string> args{"titleblock", drawing_, "--tk", tk_, "--plot", "--format", format, "--out", out.string(),
                                  "--style", "黑白"};
    args.insert(args.end(), more.begin(), more.end());
    return Run(args, {}, home_.string());
  }

  const fs::path home_ = Path("home");
  const fs::path data_ = home_ / ".local/share/Tarvex";
  const std::string drawing_ = Write("titleblocks.dxf", samples::BuildTitleBlockDrawing());
  const std::string tk_ = Path("titleblocks.tk").string();
};

TEST_F(StampPlotTest, TheStampLandsAtItsPointAtItsSizeOnlyWhereTheFrameHasTheArea) {
  for (const std::string format : {"png", "jpg"}) {
    const fs::path out = Path(format);
    const RunResult r = TitlePlot(format, out, {"--stamp", "出图=红章"});
    ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
    const RedBox straight = RedOf(out / (std::string(kStraight) + "." + format));
    const RedBox turned = RedOf(out / (std::string(kTurned) + "." + format));
    ASSERT_GT(straight.count, 0) << format;
    // A1 across at 1:100: 62 x 28 mm of the 841 mm page, centred on the area's middle.
    const double perMm = straight.pageWidth / 841.0;
    EXPECT_NEAR(straight.width(), 62 * perMm, 3) << format;
    EXPECT_NEAR(straight.height(), 28 * perMm, 3) << format;
    EXPECT_NEAR(straight.centreX(), 801 * perMm, 3) << format;
    EXPECT_NEAR(straight.centreY(), (594 - 75) * perMm, 3) << format;
    // The turned frame turns its stamp with it.
    ASSERT_GT(turned.count, 0) << format;
    EXPECT_NEAR(turned.width(), 28 * perMm, 3) << format;
    EXPECT_NEAR(turned.height(), 62 * perMm, 3) << format;
    EXPECT_EQ(RedOf(out / (std::string(kNoArea) + "." + format)).count, 0) << format;
  }
}

TEST_F(StampPlotTest, VectorFormatsCarryThePictureAndPltAndDwgNone) {
  struct Case {
    const char* format;
    const char* picture;  // what marks an embedded picture in the file
  };
  for (const Case& c : {Case{"pdf", "/Subtype /Image"}, Case{"eps", "/ImageType 1"}}) {
    const fs::path out = Path(c.format);
    const RunResult r = TitlePlot(c.format, out, {"--stamp", "出图=红章"});
    ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
    const std::string ext = std::string(".") + c.format;
    EXPECT_TRUE(Has(ReadFile(out / (kStraight + ext)), c.picture)) << c.format;
    EXPECT_FALSE(Has(ReadFile(out / (kNoArea + ext)), c.picture)) << c.format;
  }
  // PLT and DWG carry no stamps: no picture is even written for them, and the sheet drawings hold no image.
  const auto before = StampFiles(home_);
  for (const char* format : {"plt", "dwg"}) {
    const RunResult r = TitlePlot(format, Path(format), {"--stamp", "出图=红章"});
    ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
    EXPECT_EQ(StampFiles(home_), before) << format;
  }
  const fs::path sheet = Path("dwg") / (std::string(kStraight) + ".dxf");
  ASSERT_TRUE(fs::exists(sheet));
  EXPECT_FALSE(Has(ReadFile(sheet), "IMAGE"));
}

TEST_F(StampPlotTest, PicturesStayUntilTheNextRunAndTheDrawingKeepsNothing) {
  const fs::path out = Path("png");
  RunResult r = TitlePlot("png", out, {"--stamp", "出图=红章"});
  ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
  const auto pictures = StampFiles(home_);
  ASSERT_EQ(pictures.size(), 1u);
  EXPECT_EQ(pictures[0][0], 'B');  // the issue stamp's letter
  r = TitlePlot("png", out, {});
  ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
  EXPECT_TRUE(StampFiles(home_).empty());

  // Through the review list and the form, with one sheet that can't be written: the run goes on,
  // and the drawing saved afterwards holds no image, definition or key of the run.
  const fs::path blocked = Path("PNG") / (std::string(kTurned) + ".png");
  fs::create_directories(blocked);
  WriteFile(blocked / "keep", "x");
  const std::string saved = Path("saved.dxf").string();
  std::vector<std::string> args{"run", drawing_, "TV_BatchPlot_4", "--save-as", saved};
  const std::vector<std::string> answers{"", "1", "F PNG", "打印印章 是", "", "T", "2", "S", "2", "红章", "", "^C"};
  for (const std::string& a : answers) args.insert(args.end(), {"--answer", a});
  WriteFile(data_ / "BPlot_TK.tk", ReadFile(tk_));
  r = Run(args, {}, home_.string());
  ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
  EXPECT_TRUE(Has(r.out, "印章授权")) << r.out;
  EXPECT_GT(RedOf(Path("PNG") / (std::string(kStraight) + ".png")).count, 0) << r.out;
  const std::string text = ReadFile(saved);
  for (const char* gone : {"\nIMAGE\n", "\nIMAGEDEF\n", "IMAGEDEF_REACTOR", "Temp_Pic", "ACAD_IMAGE_DICT"})
    EXPECT_FALSE(Has(text, gone)) << gone;
  EXPECT_TRUE(Has(text, "TV_Stamp"));

  // The choice the form stored travels with the drawing: --stamps plots it without the form.
  const fs::path again = Path("again");
  r = Run({"titleblock", saved, "--tk", tk_, "--plot", "--format", "png", "--out", again.string(), "--stamps"}, {},
          home_.string());
  ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
  EXPECT_GT(RedOf(again / (std::string(kStraight) + ".png")).count, 0);
}

TEST_F(StampPlotTest, CommandLineChoicesAreCheckedLikeTheForm) {
  struct Case {
    std::vector<std::string> args;
    int exitCode;
    const char* says;
  };
  const Case cases[] = {
      {{"--stamp", "出图=审定章"}, 5, "出图章的授权码有误 !"},
      {{"--stamp", "出图=审定章", "--stamp-code", "出图=1234"}, 5, "出图章的授权码有误 !"},
      {{"--stamp", "出图=审定章", "--stamp-code", "出图章=2468"}, 0, ""},
      {{"--stamp", "竣工=注册建筑师章"}, 1, "印章库中没有可用作竣工章的印章“注册建筑师章”"},
      {{"--stamp", "出图=没有的章"}, 1, "没有的章"},
      {{"--stamp", "盖=红章"}, 1, "--stamp 应为 类型=值"},
      {{"--stamp-code", "出图=1"}, 1, "--stamp-code 只用于 --stamp 或 --stamps"},
  };
  for (const Case& c : cases) {
    const RunResult r = TitlePlot("png", Path("checks"), c.args);
    EXPECT_EQ(r.exitCode, c.exitCode) << c.args[1] << "\n" << r.out << r.err;
    EXPECT_TRUE(Has(r.err, c.says)) << r.err;
  }
  const RunResult listing = Run({"titleblock", drawing_, "--tk", tk_, "--stamp", "出图=红章"}, {}, home_.string());
  EXPECT_EQ(listing.exitCode, 1);
  EXPECT_TRUE(Has(listing.err, "--stamp 只用于 --plot")) << listing.err;
}

}  // namespace
}  // namespace tv::signing
