// The files the plot engine writes: page sizes, formats, searchable text, failures.
#include <gtest/gtest.h>
#include <zlib.h>

#include <regex>
#include <set>
#include <utility>

#include "render/font_metrics.h"
#include "tests/render/plot_test_support.h"

namespace tv::render::test {
namespace {

using test_support::ReadFile;
using test_support::TempDir;

// The contents of every Flate stream of a PDF, inflated.
std::string InflatedStreams(const std::string& pdf) {
  std::string out;
  for (std::size_t at = 0; (at = pdf.find("stream", at)) != std::string::npos;) {
    std::size_t start = at + 6;
    if (pdf.compare(start, 2, "\r\n") == 0) start += 2;
    else if (pdf[start] == '\n') start += 1;
    else {
      at = start;
      continue;
    }
    const std::size_t end = pdf.find("endstream", start);
    if (end == std::string::npos) break;
    z_stream z{};
    inflateInit(&z);
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(pdf.data() + start));
    z.avail_in = static_cast<uInt>(end - start);
    char buf[65536];
    int rc = Z_OK;
    while (rc == Z_OK) {
      z.next_out = reinterpret_cast<Bytef*>(buf);
      z.avail_out = sizeof buf;
      rc = inflate(&z, Z_NO_FLUSH);
      out.append(buf, sizeof buf - z.avail_out);
    }
    inflateEnd(&z);
    at = end + 9;
  }
  return out;
}

std::string Lower(std::string s) {
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

class PlotEngine : public ::testing::Test {
 protected:
  cad::Database db = cad::Database::createDefault();
  cad::BlockRecord& model = *db.modelSpace();
  TempDir dir{"tv_plot"};

  PlotRequest request(PlotFormat format, const std::string& name) {
    PlotRequest r;
    r.windowMin = {0, 0};
    r.windowMax = {420, 297};
    r.medium = {420, 297, 0, 0, 0, 0, false};
    r.format = format;
    r.rasterDpi = 25.4;
    r.outputPath = (dir / name).string();
    return r;
  }
  void frame() {
    AddLine(db, model, {0, 0}, {420, 297});
    Add(db, model, test_support::MakeLwPolyline({{10, 10}, {410, 10}, {410, 287}, {10, 287}}, true));
  }
};

TEST_F(PlotEngine, PdfTextIsSearchableUnlessDrawnAsGeometry) {
  cad::TextStyle& style = db.addTextStyle("HZ");
  style.fontFile = "gbcbig.shx";
  if (!FontTextMeasurer().hasFont(&style)) GTEST_SKIP() << "no CJK font installed";
  Add(db, model, test_support::MakeText("中国 ABC", {50, 50, 0}, 10)).style = style.id;
  PlotRequest r = request(PlotFormat::Pdf, "text.pdf");
  ASSERT_TRUE(PlotWindow(db, r).ok);
  const std::string pdf = ReadFile(r.outputPath);
  EXPECT_NE(pdf.find("/Font"), std::string::npos);
  // The ToUnicode map of the embedded font names 中 (U+4E2D) and 国 (U+56FD).
  const std::string streams = Lower(InflatedStreams(pdf));
  EXPECT_NE(streams.find("<4e2d>"), std::string::npos);
  EXPECT_NE(streams.find("<56fd>"), std::string::npos);

  r.textAsGeometry = true;
  r.outputPath = (dir / "outlines.pdf").string();
  ASSERT_TRUE(PlotWindow(db, r).ok);
  const std::string outlines = ReadFile(r.outputPath);
  EXPECT_EQ(outlines.find("/Font"), std::string::npos);
  EXPECT_GT(InflatedStreams(outlines).size(), 1000u) << "the glyphs as paths";
}

TEST_F(PlotEngine, PdfLabelsKeepTheirStylesFontAcrossPagesOfManySizes) {
  // The same label in a Latin and a Chinese style, then a page of more text sizes than the font
  // caches keep, then the first page again: both fonts each time, and the same content.
  cad::TextStyle& latin = db.addTextStyle("LATIN");
  latin.fontFamily = "DejaVu Sans";
  cad::TextStyle& hz = db.addTextStyle("HZ");
  hz.fontFile = "gbcbig.shx";
  const FontTextMeasurer fonts;
  if (!fonts.hasFont(&hz) || !fonts.hasFont(&latin) || ResolveFontFile(&latin) == ResolveFontFile(&hz))
    GTEST_SKIP() << "needs a Latin and a CJK font installed";
  const auto label = [&](cad::Database& into, const std::string& text, cad::Point3d at, double height, const cad::TextStyle& style) {
    Add(into, *into.modelSpace(), test_support::MakeText(text, at, height)).style = style.id;
  };
  for (int i = 0; i < 4; ++i) {
    label(db, "M1021", {20, 40.0 + 60 * i, 0}, 8, i % 2 ? hz : latin);
    label(db, "M1021", {220, 40.0 + 60 * i, 0}, 8, i % 2 ? latin : hz);
  }
  const auto facts = [&](const std::string& name) {
    PlotRequest r = request(PlotFormat::Pdf, name);
    EXPECT_TRUE(PlotWindow(db, r).ok);
    const std::string pdf = ReadFile(r.outputPath);
    // The embedded fonts by name, without the tags of their subsets.
    std::set<std::string> names;
    const std::regex fontName(R"(/FontName /[A-Z]{6}\+([^\s/]+))");
    for (auto it = std::sregex_iterator(pdf.begin(), pdf.end(), fontName); it != std::sregex_iterator(); ++it) names.insert((*it)[1]);
    return std::make_pair(names.size(), Lower(InflatedStreams(pdf)));
  };
  const auto [fontsBefore, before] = facts("labels.pdf");
  EXPECT_EQ(fontsBefore, 2u);
  EXPECT_NE(before.find("m1021"), std::string::npos) << "searchable";

  cad::Database sizes = cad::Database::createDefault();
  cad::TextStyle& sized = sizes.addTextStyle("HZ");
  sized.fontFile = "gbcbig.shx";
  for (int i = 0; i < 400; ++i) label(sizes, "走廊 C1", {10.0 + (i % 20) * 20, 10.0 + (i / 20) * 14, 0}, 2 + i * 0.01, sized);
  PlotRequest many = request(PlotFormat::Pdf, "sizes.pdf");
  ASSERT_TRUE(PlotWindow(sizes, many).ok);
  EXPECT_NE(Lower(InflatedStreams(ReadFile(many.outputPath))).find("<8d70>"), std::string::npos) << "走 as text";

  const auto [fontsAfter, after] = facts("again.pdf");
  EXPECT_EQ(fontsAfter, 2u);
  EXPECT_EQ(after, before);
}

TEST_F(PlotEngine, PdfKeepsCirclesThatReachIntoTheWindow) {
  // A circle beyond a side of the window whose nearest part reaches `depth` mm into it: drawn
  // although every point its path is given by lies outside the window.
  struct Case {
    double depth, radius, width;  // mm; width 0 is the thinnest pen
  };
  for (const Case c : {Case{0.2, 20, 0}, Case{0.5, 20, 0}, Case{0.8, 60, 0}, Case{2, 5, 0}, Case{0.5, 20, 2}}) {
    SCOPED_TRACE(testing::Message() << "depth " << c.depth << " radius " << c.radius << " width " << c.width);
    cad::Database one = cad::Database::createDefault();
    cad::Circle& circle = Add(one, *one.modelSpace(), test_support::MakeCircle({420 + c.radius - c.depth, 150, 0}, c.radius));
    if (c.width > 0) circle.lineweight = static_cast<std::int16_t>(c.width * 100);
    PlotRequest r = request(PlotFormat::Pdf, "reach.pdf");
    ASSERT_TRUE(PlotWindow(one, r).ok);
    const std::string content = InflatedStreams(ReadFile(r.outputPath));
    EXPECT_TRUE(std::regex_search(content, std::regex(R"( c\s[\s\S]*\bS\b)"))) << "a stroked curve";
  }
}

TEST_F(PlotEngine, RasterSizesFollowDpiAndEnlargement) {
  frame();
  PlotRequest r = request(PlotFormat::Png, "a3.png");
  r.rasterDpi = 50.8;
  r.enlarge = 1.5;
  const PlotResult result = PlotWindow(db, r);
  ASSERT_TRUE(result.ok) << result.message;
  const Picture pic(r.outputPath);
  ASSERT_TRUE(pic.ok());
  EXPECT_EQ(pic.width(), 1260);
  EXPECT_EQ(pic.height(), 891);
  EXPECT_EQ(result.widthPx, 1260);

  r.format = PlotFormat::Jpg;
  r.outputPath = (dir / "a3.jpg").string();
  r.enlarge = 1;
  ASSERT_TRUE(PlotWindow(db, r).ok);
  const std::string jpg = ReadFile(r.outputPath);
  ASSERT_GT(jpg.size(), 100u);
  EXPECT_EQ(static_cast<unsigned char>(jpg[0]), 0xFF);
  EXPECT_EQ(static_cast<unsigned char>(jpg[1]), 0xD8);
  // The frame size is in the SOF0 marker: height then width.
  const std::size_t sof = jpg.find("\xFF\xC0", 2);
  ASSERT_NE(sof, std::string::npos);
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(jpg[i]); };
  EXPECT_EQ(byte(sof + 5) * 256 + byte(sof + 6), 594);
  EXPECT_EQ(byte(sof + 7) * 256 + byte(sof + 8), 840);
}

TEST_F(PlotEngine, FitAndCentreOnThePrintableArea) {
  // A square window on a wide page: fitted to the height of the printable area, centred across it.
  AddLine(db, model, {0, 1}, {10, 1});
  AddLine(db, model, {0, 9}, {10, 9});
  PlotRequest r = request(PlotFormat::Png, "fit.png");
  r.windowMin = {0, 0};
  r.windowMax = {10, 10};
  r.medium = {100, 50, 0, 10, 100, 50, false};  // printable 100 x 40 above a 10 mm strip
  r.rasterDpi = 25.4;
  ASSERT_TRUE(PlotWindow(db, r).ok);
  const Picture pic(r.outputPath);
  // Scale 4: the window spans x 30..70, y 10..50 mm; the image's rows count from the top.
  EXPECT_TRUE(IsDark(pic.darkestNear(50, 50 - 14)));
  EXPECT_TRUE(IsDark(pic.darkestNear(50, 50 - 46)));
  EXPECT_EQ(pic.at(25, 50 - 14), (Rgb{255, 255, 255}));
  EXPECT_EQ(pic.at(75, 50 - 14), (Rgb{255, 255, 255}));

  r.centered = false;
  r.fitToPrintable = false;
  r.scale = 2;
  ASSERT_TRUE(PlotWindow(db, r).ok);
  const Picture low(r.outputPath);
  EXPECT_TRUE(IsDark(low.darkestNear(10, 50 - 12)));
  EXPECT_TRUE(IsDark(low.darkestNear(10, 50 - 28)));
  EXPECT_EQ(low.at(25, 50 - 12), (Rgb{255, 255, 255}));
}

TEST_F(PlotEngine, EpsAndPltFiles) {
  frame();
  PlotRequest r = request(PlotFormat::Eps, "a3.eps");
  ASSERT_TRUE(PlotWindow(db, r).ok);
  const std::string eps = ReadFile(r.outputPath);
  EXPECT_EQ(eps.rfind("%!PS-Adobe-3.0 EPSF-3.0", 0), 0u);
  EXPECT_NE(eps.find("%%BoundingBox: 0 0 1191 842"), std::string::npos);

  db.addLayer("R").colorIndex = 1;
  AddLine(db, model, {0, 297}, {420, 0}, db.findLayer("R")->id).lineweight = 50;
  // Text far from the page origin, filled as outlines.
  Add(db, model, test_support::MakeText("AB", {300, 200}, 20));
  r.format = PlotFormat::Plt;
  r.outputPath = (dir / "a3.plt").string();
  ASSERT_TRUE(PlotWindow(db, r).ok);
  const std::string plt = ReadFile(r.outputPath);
  EXPECT_NE(plt.find("IN;"), std::string::npos);
  EXPECT_NE(plt.find("PS16800,11880;"), std::string::npos);
  EXPECT_NE(plt.find("PC2,255,0,0;PW0.5,2;"), std::string::npos);
  EXPECT_NE(plt.find("SP2;"), std::string::npos);
  // The diagonal from the top left to the bottom right corner, in 0.025 mm units.
  EXPECT_NE(plt.find("PU0,11880;PD16800,0;"), std::string::npos);
  EXPECT_NE(plt.find("PU400,400;PD16400,400,16400,11480,400,11480,400,400;"), std::string::npos);
  const std::smatch glyph = [&] {
    std::smatch m;
    std::regex_search(plt, m, std::regex("PU(\\d+),(\\d+);PM0;"));
    return m;
  }();
  ASSERT_FALSE(glyph.empty()) << "no text in the PLT";
  EXPECT_NEAR(std::stod(glyph[1]) / 40, 300, 20);
  EXPECT_NEAR(std::stod(glyph[2]) / 40, 200, 25);
  EXPECT_NE(plt.find("PM2;FP0;"), std::string::npos);
}

TEST_F(PlotEngine, FailuresLeaveNoFile) {
  frame();
  PlotRequest r = request(PlotFormat::Pdf, "missing-folder/out.pdf");
  PlotResult result = PlotWindow(db, r);
  EXPECT_FALSE(result.ok);
  EXPECT_NE(result.message.find("写入操作有误"), std::string::npos);
  EXPECT_NE(result.message.find("out.pdf"), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(dir / "missing-folder"));

  for (PlotFormat f : {PlotFormat::Png, PlotFormat::Plt}) {
    r.format = f;
    result = PlotWindow(db, r);
    EXPECT_FALSE(result.ok);
  }

  r = request(PlotFormat::Pdf, "bad.pdf");
  r.medium.widthMm = 0;
  result = PlotWindow(db, r);
  EXPECT_FALSE(result.ok);
  EXPECT_FALSE(result.message.empty());
  r = request(PlotFormat::Pdf, "bad.pdf");
  r.windowMax = {0, 297};
  r.windowMin = {0, 0};
  EXPECT_FALSE(PlotWindow(db, r).ok);
  r = request(PlotFormat::Pdf, "bad.pdf");
  r.spaceBlock = cad::ObjectId{0xFFFFFF};
  EXPECT_FALSE(PlotWindow(db, r).ok);
  EXPECT_TRUE(std::filesystem::is_empty(dir.path()));

  // An empty window means the space's extents.
  r = request(PlotFormat::Png, "extents.png");
  r.windowMin = r.windowMax = {0, 0};
  EXPECT_TRUE(PlotWindow(db, r).ok);
}

}  // namespace
}  // namespace tv::render::test
