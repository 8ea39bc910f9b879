// DWF files are DWFx packages: their parts, their page size, merged sets, and what an XPS reader
// (libgxps's xpstopng) paints of them against the PNG of the same sheet.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <regex>

#include "render/font_metrics.h"
#include "render/xps_package.h"
#include "tests/render/plot_test_support.h"
#include "tests/support/shape_builders.h"
#include "tests/support/xps_reading.h"

namespace tv::render::test {
namespace {

namespace fs = std::filesystem;
using test_support::ReadFile;
using test_support::RunProgram;
using test_support::TempDir;
using test_support::XmlNumber;
using test_support::XpsPagesMm;
using test_support::ZipEntries;
using test_support::ZipEntry;

constexpr const char* kXpsToPng = "/usr/bin/xpstopng";

// The pages xpstopng paints of `file` at `dpi`, in page order; empty when it failed.
std::vector<fs::path> Rendered(const fs::path& file, double dpi, const fs::path& folder) {
  const fs::path prefix = folder / (file.stem().string() + "-page");
  const auto r = RunProgram(kXpsToPng, {"-r", std::to_string(dpi), file.string(), prefix.string()});
  std::vector<fs::path> pages;
  if (r.exitCode != 0) {
    ADD_FAILURE() << "xpstopng failed: " << r.err;
    return pages;
  }
  for (const auto& e : fs::directory_iterator(folder))
    if (e.path().filename().string().starts_with(prefix.filename().string()) && e.path().extension() == ".png")
      pages.push_back(e.path());
  std::sort(pages.begin(), pages.end(), [](const fs::path& a, const fs::path& b) {
    return a.string().size() != b.string().size() ? a.string().size() < b.string().size() : a < b;
  });
  return pages;
}

bool Near(Rgb a, Rgb b, int tolerance) {
  return std::abs(a.r - b.r) <= tolerance && std::abs(a.g - b.g) <= tolerance && std::abs(a.b - b.b) <= tolerance;
}

// The share of the ink of `a` (pixels away from the background) that has ink of `b` within a pixel.
double InkFoundIn(const Picture& a, const Picture& b, Rgb background) {
  int ink = 0, found = 0;
  for (int y = 0; y < a.height(); ++y)
    for (int x = 0; x < a.width(); ++x) {
      if (Near(a.at(x, y), background, 60)) continue;
      ++ink;
      bool hit = false;
      for (int dy = -1; dy <= 1 && !hit; ++dy)
        for (int dx = -1; dx <= 1 && !hit; ++dx) {
          const int px = x + dx, py = y + dy;
          hit = px >= 0 && py >= 0 && px < b.width() && py < b.height() && !Near(b.at(px, py), background, 60);
        }
      found += hit;
    }
  return ink == 0 ? 0 : static_cast<double>(found) / ink;
}

class Dwfx : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!fs::exists(kXpsToPng)) GTEST_SKIP() << "xpstopng missing: run scripts/setup.sh";
  }
  cad::Database db = cad::Database::createDefault();
  cad::BlockRecord& model = *db.modelSpace();
  TempDir dir{"tv_dwfx"};

  PlotResult plot(PlotRequest r, PlotFormat format, const std::string& name) {
    r.format = format;
    r.outputPath = (dir / name).string();
    PlotResult result = PlotWindow(db, r);
    EXPECT_TRUE(result.ok) << result.message;
    return result;
  }
  // A sheet of lines in several pens, a circle, a solid, a hatch with a hole, a picture and text.
  void sheet() {
    Add(db, model, test_support::MakeLwPolyline({{2, 2}, {98, 2}, {98, 48}, {2, 48}}, true)).lineweight = 50;
    AddLine(db, model, {5, 40}, {95, 30}).colorIndex = 1;
    AddLine(db, model, {5, 10}, {60, 45}).colorIndex = 3;
    Add(db, model, test_support::MakeCircle({75, 25, 0}, 10)).colorIndex = 5;
    Add(db, model, test_support::MakeQuad<cad::Solid>({10, 5, 0}, {25, 5, 0}, {10, 15, 0}, {25, 15, 0})).colorIndex = 5;
    auto hatch = std::make_unique<cad::Hatch>();
    hatch->solidFill = true;
    cad::HatchPath outer;
    outer.flags = cad::HatchPath::kPolyline | cad::HatchPath::kExternal;
    outer.vertices = {{60, 5}, {90, 5}, {90, 15}, {60, 15}};
    cad::HatchPath hole = outer;
    hole.vertices = {{70, 8}, {80, 8}, {80, 12}, {70, 12}};
    hatch->paths = {outer, hole};
    Add(db, model, std::move(hatch)).colorIndex = 1;
    // A picture of 4 x 4 green pixels, 8 mm square at (30, 20).
    cairo_surface_t* green = cairo_image_surface_create(CAIRO_FORMAT_RGB24, 4, 4);
    cairo_t* cr = cairo_create(green);
    cairo_set_source_rgb(cr, 0, 0.8, 0);
    cairo_paint(cr);
    cairo_destroy(cr);
    cairo_surface_write_to_png(green, (dir / "green.png").c_str());
    cairo_surface_destroy(green);
    auto def = std::make_unique<cad::ImageDef>();
    def->fileName = (dir / "green.png").string();
    def->imageSize = {4, 4};
    auto image = std::make_unique<cad::Image>();
    image->imageDef = db.addObject(std::move(def), db.rootDictionaryId).id;
    image->position = {30, 20, 0};
    image->uPixel = {2, 0, 0};
    image->vPixel = {0, 2, 0};
    image->imageSize = {4, 4};
    Add(db, model, std::move(image));
    cad::TextStyle& style = db.addTextStyle("HZ");
    style.fontFile = "gbcbig.shx";
    if (FontTextMeasurer().hasFont(&style)) Add(db, model, test_support::MakeText("图号 A1", {40, 35, 0}, 6)).style = style.id;
  }
};

TEST_F(Dwfx, PackageHoldsTheFixedPagePartsAtThePagesSize) {
  sheet();
  PlotRequest r = PngRequest(dir / "x");
  r.medium = {420, 297, 0, 0, 0, 0, false};
  r.windowMax = {100, 50};
  plot(r, PlotFormat::Dwf, "a3.dwf");
  const std::string file = (dir / "a3.dwf").string();
  const std::vector<std::string> names = ZipEntries(file);
  for (const char* part : {"[Content_Types].xml", "_rels/.rels", "FixedDocumentSequence.fdseq",
                           "Documents/1/FixedDocument.fdoc", "Documents/1/Pages/1.fpage",
                           "Documents/1/Pages/_rels/1.fpage.rels", "Documents/1/Resources/1/1.png"})
    EXPECT_NE(std::find(names.begin(), names.end(), part), names.end()) << part;
  EXPECT_NE(ZipEntry(file, "_rels/.rels").find("Target=\"/FixedDocumentSequence.fdseq\""), std::string::npos);
  const std::string page = ZipEntry(file, "Documents/1/Pages/1.fpage");
  // 1/96 inch: 420 x 297 mm.
  EXPECT_NEAR(XmlNumber(page, "Width"), 420 / 25.4 * 96, 0.01);
  EXPECT_NEAR(XmlNumber(page, "Height"), 297 / 25.4 * 96, 0.01);
  EXPECT_NE(page.find("StrokeThickness"), std::string::npos);
  EXPECT_EQ(page.find("<Glyphs"), std::string::npos) << "text goes out as outlines";

  // A turned medium makes the page upright.
  r.medium.turned = true;
  plot(r, PlotFormat::Dwf, "a3t.dwf");
  const std::string turned = ZipEntry((dir / "a3t.dwf").string(), "Documents/1/Pages/1.fpage");
  EXPECT_NEAR(XmlNumber(turned, "Width"), 297 / 25.4 * 96, 0.01);
  EXPECT_NEAR(XmlNumber(turned, "Height"), 420 / 25.4 * 96, 0.01);
}

TEST_F(Dwfx, ReadBackItPaintsWhatThePngShows) {
  sheet();
  PlotRequest r = PngRequest(dir / "x");
  r.rasterDpi = 101.6;  // four pixels a millimetre
  plot(r, PlotFormat::Png, "sheet.png");
  plot(r, PlotFormat::Dwf, "sheet.dwf");
  const std::vector<fs::path> pages = Rendered(dir / "sheet.dwf", 101.6, dir.path());
  ASSERT_EQ(pages.size(), 1u);
  const Picture png((dir / "sheet.png").string()), dwf(pages[0].string());
  ASSERT_TRUE(png.ok() && dwf.ok());
  // The reader rounds the page's size up to whole pixels.
  ASSERT_NEAR(dwf.width(), png.width(), 1);
  ASSERT_NEAR(dwf.height(), png.height(), 1);
  const Rgb paper = r.background;
  EXPECT_TRUE(Near(dwf.at(1, 1), paper, 2)) << "the page takes the background colour";
  EXPECT_GT(InkFoundIn(png, dwf, paper), 0.97);
  EXPECT_GT(InkFoundIn(dwf, png, paper), 0.97);
  // Colours inside areas, away from edges: the blue solid, the red hatch, its hole, the picture.
  const auto at = [&](const Picture& p, double x, double y) { return p.at(static_cast<int>(4 * x), static_cast<int>(4 * (50 - y))); };
  for (auto [x, y] : {std::pair{17.0, 10.0}, {63.0, 10.0}, {75.0, 10.0}, {34.0, 24.0}})
    EXPECT_TRUE(Near(at(dwf, x, y), at(png, x, y), 8)) << x << "," << y;
}

TEST_F(Dwfx, MergedFileHoldsEverySheetInOrder) {
  AddLine(db, model, {0, 0}, {100, 50});
  std::vector<std::string> files;
  for (int i = 1; i <= 3; ++i) {
    PlotRequest r = PngRequest(dir / "x");
    r.medium.widthMm = 100 + 50 * i;  // pages told apart by their width
    r.background = {255, 255, 255};
    plot(r, PlotFormat::Dwf, std::to_string(i) + ".dwf");
    files.push_back((dir / (std::to_string(i) + ".dwf")).string());
  }
  sheet();  // the last one with a picture, whose part must follow its page
  plot(PngRequest(dir / "x"), PlotFormat::Dwf, "4.dwf");
  files.push_back((dir / "4.dwf").string());
  const fs::path merged = dir / "all.dwf";
  std::string error;
  ASSERT_TRUE(MergeXpsPackages(files, merged.string(), error)) << error;
  const auto sizes = XpsPagesMm(merged.string());
  ASSERT_EQ(sizes.size(), 4u);
  for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(sizes[i].first, 150 + 50 * static_cast<double>(i), 0.01) << i;
  EXPECT_NEAR(sizes[3].first, 100, 0.01);
  EXPECT_NE(ZipEntry(merged.string(), "Documents/1/Pages/4.fpage").find("/Documents/1/Resources/4/1.png"), std::string::npos);

  const std::vector<fs::path> pages = Rendered(merged, 50.8, dir.path());
  ASSERT_EQ(pages.size(), 4u);
  EXPECT_NEAR(Picture(pages[1].string()).width(), 400, 1) << "the second sheet, 200 mm at two pixels a millimetre";
  const Picture last(pages[3].string());
  EXPECT_TRUE(Near(last.at(2 * 32, 2 * (50 - 22)), Rgb{0, 204, 0}, 8)) << "the picture came along";
}

TEST_F(Dwfx, MergeRefusesWhatIsNoPackage) {
  test_support::WriteFile(dir / "bad.dwf", "not a zip");
  std::string error;
  EXPECT_FALSE(MergeXpsPackages({(dir / "bad.dwf").string()}, (dir / "out.dwf").string(), error));
  EXPECT_FALSE(error.empty());
  EXPECT_FALSE(fs::exists(dir / "out.dwf"));
}

}  // namespace
}  // namespace tv::render::test
