// DWF files are DWFx packages: their parts, their page size, text as text over embedded fonts,
// merged sets, and what an XPS reader (libgxps's xpstopng) paints of them against the PNG of the
// same sheet.
#include <gtest/gtest.h>

#include <ft2build.h>
#include FT_FREETYPE_H

#include <algorithm>
#include <cstdlib>
#include <numbers>
#include <regex>
#include <set>
#include <sstream>

#include "cad/utf8.h"
#include "render/dwfx_canvas.h"
#include "render/font_metrics.h"
#include "render/font_subset.h"
#include "render/plot_fonts.h"
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

// A Glyphs element of a page: its font part, its text and its glyph ids.
struct GlyphsElement {
  std::string font, text;
  std::vector<unsigned> glyphs;
};

std::string Attr(const std::string& element, const std::string& name) {
  std::smatch m;
  return std::regex_search(element, m, std::regex(" " + name + "=\"([^\"]*)\"")) ? m[1].str() : std::string();
}

std::vector<GlyphsElement> GlyphsOf(const std::string& page) {
  std::vector<GlyphsElement> out;
  const std::regex element("<Glyphs [^>]*/>");
  for (auto it = std::sregex_iterator(page.begin(), page.end(), element); it != std::sregex_iterator(); ++it) {
    const std::string e = it->str();
    GlyphsElement g{Attr(e, "FontUri"), Attr(e, "UnicodeString"), {}};
    if (g.text.starts_with("{}")) g.text.erase(0, 2);
    for (auto [from, to] : {std::pair{"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&amp;", "&"}})
      for (std::size_t at; (at = g.text.find(from)) != std::string::npos;) g.text.replace(at, std::string(from).size(), to);
    std::stringstream indices(Attr(e, "Indices"));
    for (std::string entry; std::getline(indices, entry, ';');) {
      if (entry.starts_with("(")) entry.erase(0, entry.find(')') + 1);
      g.glyphs.push_back(static_cast<unsigned>(std::stoul(entry)));
    }
    out.push_back(std::move(g));
  }
  return out;
}

// The glyph each character of `text` maps to in the font file `bytes`; empty when FreeType cannot
// open it.
std::vector<unsigned> MappedGlyphs(const std::string& bytes, const std::string& text) {
  std::vector<unsigned> glyphs;
  FT_Library library = nullptr;
  if (FT_Init_FreeType(&library) != 0) return glyphs;
  FT_Face face = nullptr;
  if (FT_New_Memory_Face(library, reinterpret_cast<const FT_Byte*>(bytes.data()), static_cast<FT_Long>(bytes.size()), 0, &face) == 0) {
    for (std::size_t i = 0; i < text.size();) glyphs.push_back(FT_Get_Char_Index(face, cad::NextCodePoint(text, i)));
    FT_Done_Face(face);
  }
  FT_Done_FreeType(library);
  return glyphs;
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
    if (!FontTextMeasurer().hasFont(&style)) return;
    Add(db, model, test_support::MakeText("图号 A1", {40, 35, 0}, 6)).style = style.id;
    // Turned, slanted and mirrored text lands where the PNG has it.
    Add(db, model, test_support::MakeText("R30", {5, 17, 0}, 5, std::numbers::pi / 6)).style = style.id;
    cad::Text& mirrored = Add(db, model, test_support::MakeText("M-2", {55, 20, 0}, 5, std::numbers::pi));
    mirrored.style = style.id;
    mirrored.setGeneration(cad::Text::kMirrorX);
    mirrored.setOblique(std::numbers::pi / 12);
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
  EXPECT_NE(ZipEntry(file, "[Content_Types].xml").find("Extension=\"ttf\" ContentType=\"application/vnd.ms-opentype\""),
            std::string::npos);

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

TEST_F(Dwfx, TextIsTextOverASubsetOfItsFontAndPaintsWhereThePngHasIt) {
  struct Case {
    const char* name;
    const char* fontFile;
    const char* family;
    const char* text;
    double rotationDeg, obliqueDeg;
    bool mirrored;
    std::size_t fonts;  // font parts of the page
  } cases[] = {
      {"CJK through an SHX style", "gbcbig.shx", "", "图号A1-01", 0, 0, false, 1},
      {"Latin TrueType, turned, with XML's own characters", "", "DejaVu Sans", "{Plan<1>&\"A\"", 30, 0, false, 1},
      {"Latin with CJK from the fallback font, upright and slanted", "", "DejaVu Sans", "Level平面图", 90, 15, false, 2},
      {"mirrored and turned past half a turn", "gbcbig.shx", "", "建施-03", 200, 0, true, 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    cad::Database d = cad::Database::createDefault();
    cad::TextStyle& style = d.addTextStyle("S");
    style.fontFile = c.fontFile;
    style.fontFamily = c.family;
    if (!FontTextMeasurer().hasFont(&style)) continue;
    cad::Text& t = Add(d, *d.modelSpace(), test_support::MakeText(c.text, {c.rotationDeg > 0 ? 50.0 : 10.0, 20, 0}, 6,
                                                                  c.rotationDeg * std::numbers::pi / 180));
    t.style = style.id;
    t.setOblique(c.obliqueDeg * std::numbers::pi / 180);
    if (c.mirrored) t.setGeneration(cad::Text::kMirrorX);
    PlotRequest r = PngRequest(dir / "x");
    r.rasterDpi = 101.6;
    for (auto [format, name] : {std::pair{PlotFormat::Png, "text.png"}, {PlotFormat::Dwf, "text.dwf"}}) {
      r.format = format;
      r.outputPath = (dir / name).string();
      ASSERT_TRUE(PlotWindow(d, r).ok);
    }
    const std::string file = (dir / "text.dwf").string();
    const std::vector<GlyphsElement> elements = GlyphsOf(ZipEntry(file, "Documents/1/Pages/1.fpage"));
    std::string text;
    std::set<std::string> fonts;
    for (const GlyphsElement& e : elements) {
      text += e.text;
      fonts.insert(e.font);
      const std::string part = ZipEntry(file, e.font.substr(1));
      EXPECT_EQ(MappedGlyphs(part, e.text), e.glyphs) << e.font << ": the embedded font maps the text to its glyphs";
    }
    EXPECT_EQ(text, c.text);
    EXPECT_EQ(fonts.size(), c.fonts);
    const std::string rels = ZipEntry(file, "Documents/1/Pages/_rels/1.fpage.rels");
    for (const std::string& font : fonts)
      EXPECT_NE(rels.find("Target=\"" + font + "\""), std::string::npos) << font << " is a resource of the page";
    // Subsets: the installed files are hundreds of kilobytes (Latin) and megabytes (CJK).
    EXPECT_LT(fs::file_size(file), 100'000u);

    const std::vector<fs::path> pages = Rendered(dir / "text.dwf", 101.6, dir.path());
    ASSERT_EQ(pages.size(), 1u);
    const Picture png((dir / "text.png").string()), dwf(pages[0].string());
    ASSERT_TRUE(png.ok() && dwf.ok());
    EXPECT_GT(InkFoundIn(png, dwf, r.background), 0.97);
    EXPECT_GT(InkFoundIn(dwf, png, r.background), 0.97);
    fs::remove(pages[0]);
  }
}

TEST_F(Dwfx, TextGoesAsOutlinesWhereItCannotBeText) {
  cad::TextStyle& style = db.addTextStyle("HZ");
  style.fontFile = "gbcbig.shx";
  const std::vector<ShapedGlyph> shaped = ShapeText("图", &style);
  if (shaped.empty() || !shaped[0].face) GTEST_SKIP() << "no CJK font installed";
  // A face that comes from no file the plot loaded.
  cairo_font_face_t* toy = cairo_toy_font_face_create("sans", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
  cairo_matrix_t identity;
  cairo_matrix_init_identity(&identity);
  cairo_font_options_t* options = cairo_font_options_create();
  cairo_scaled_font_t* scaled = cairo_scaled_font_create(toy, &identity, &identity, options);
  cairo_glyph_t* toyGlyphs = nullptr;
  int toyCount = 0;
  cairo_scaled_font_text_to_glyphs(scaled, 0, 0, "W", 1, &toyGlyphs, &toyCount, nullptr, nullptr, nullptr);
  const unsigned long toyGlyph = toyCount > 0 ? toyGlyphs[0].index : 0;
  cairo_glyph_free(toyGlyphs);
  cairo_scaled_font_destroy(scaled);
  cairo_font_options_destroy(options);

  struct Case {
    const char* name;
    cairo_font_face_t* face;
    unsigned long glyph;
    const char* utf8;
    bool asOutlines, asText;
  } cases[] = {
      {"a face of the plot's fonts", shaped[0].face, shaped[0].index, "图", false, true},
      {"outlines asked for", shaped[0].face, shaped[0].index, "图", true, false},
      {"a face from no font file", toy, toyGlyph, "W", false, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string file = (dir / "run.dwf").string();
    DwfxCanvas canvas(file, 100, 50, {255, 255, 255});
    GlyphRun run;
    run.face = c.face;
    run.emX = {10, 0};
    run.emY = {0, 10};
    run.glyphs = {{c.glyph, 20, 20}};
    run.utf8 = c.utf8;
    run.clusters = {{static_cast<int>(run.utf8.size()), 1}};
    canvas.glyphs(std::move(run), c.asOutlines);
    std::string error;
    ASSERT_TRUE(canvas.finish(error)) << error;
    const std::string page = ZipEntry(file, "Documents/1/Pages/1.fpage");
    EXPECT_EQ(GlyphsOf(page).size(), c.asText ? 1u : 0u);
    EXPECT_EQ(page.find("<Path Data=\"F1") != std::string::npos, !c.asText) << "the glyph's outline";
    const std::vector<std::string> parts = ZipEntries(file);
    EXPECT_EQ(std::count_if(parts.begin(), parts.end(), [](const std::string& p) { return p.ends_with(".ttf"); }), c.asText ? 1 : 0);
  }
  cairo_font_face_destroy(toy);
}

// The bytes of a font file with `bytes` written over its table `tag` from `offset` on, or over the
// tag itself in the table directory when `inDirectory`.
std::string PatchedFont(const std::string& font, const char* tag, std::size_t offset, std::string bytes, bool inDirectory) {
  std::string data = test_support::ReadFile(font);
  const auto u16 = [&](std::size_t at) { return (static_cast<unsigned char>(data[at]) << 8) | static_cast<unsigned char>(data[at + 1]); };
  const auto u32 = [&](std::size_t at) { return (static_cast<std::size_t>(u16(at)) << 16) | u16(at + 2); };
  for (std::size_t i = 0, n = data.size() >= 12 ? u16(4) : 0; i < n; ++i) {
    const std::size_t entry = 12 + 16 * i;
    if (data.compare(entry, 4, tag) != 0) continue;
    data.replace(inDirectory ? entry : u32(entry + 8) + offset, bytes.size(), bytes);
  }
  return data;
}

TEST_F(Dwfx, FontsAreEmbeddedOnlyWithOutlinesAndWhereTheirLicenceAllows) {
  cad::TextStyle& style = db.addTextStyle("LATIN");
  style.fontFamily = "DejaVu Sans";
  const std::string font = ResolveFontFile(&style);
  if (font.empty() || !font.ends_with(".ttf")) GTEST_SKIP() << "no TrueType Latin font installed";
  struct Case {
    const char* name;
    std::string bytes;  // written to a file of its own; empty: no file at all
    FontEmbedding expected;
  } cases[] = {
      {"as installed", test_support::ReadFile(font), FontEmbedding::TrueType},
      {"preview and print", PatchedFont(font, "OS/2", 8, std::string("\x00\x04", 2), false), FontEmbedding::TrueType},
      {"restricted licence", PatchedFont(font, "OS/2", 8, std::string("\x00\x02", 2), false), FontEmbedding::None},
      {"bitmaps only", PatchedFont(font, "OS/2", 8, std::string("\x02\x00", 2), false), FontEmbedding::None},
      {"no outlines", PatchedFont(font, "glyf", 0, "none", true), FontEmbedding::None},
      {"not a font", "plain text", FontEmbedding::None},
      {"no file", "", FontEmbedding::None},
  };
  int n = 0;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    ResolvedFont source;
    if (!c.bytes.empty()) {
      source.file = (dir / ("font" + std::to_string(++n) + ".ttf")).string();
      test_support::WriteFile(source.file, c.bytes);
    }
    EXPECT_EQ(EmbeddingOf(source), c.expected);
    EXPECT_EQ(SubsetFont(source, {0, 36}, {U'A'}).bytes.empty(), c.expected == FontEmbedding::None);
  }
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
  const std::string fourth = ZipEntry(merged.string(), "Documents/1/Pages/4.fpage");
  EXPECT_NE(fourth.find("/Documents/1/Resources/4/1.png"), std::string::npos);
  const std::vector<GlyphsElement> text = GlyphsOf(fourth);
  ASSERT_FALSE(text.empty()) << "the last sheet's text is text";
  EXPECT_TRUE(text[0].font.starts_with("/Documents/1/Resources/4/"));
  EXPECT_EQ(ZipEntry(merged.string(), text[0].font.substr(1)), ZipEntry(files[3], "Documents/1/Resources/1/" + fs::path(text[0].font).filename().string()))
      << "its font came along";

  const std::vector<fs::path> pages = Rendered(merged, 50.8, dir.path());
  ASSERT_EQ(pages.size(), 4u);
  EXPECT_NEAR(Picture(pages[1].string()).width(), 400, 1) << "the second sheet, 200 mm at two pixels a millimetre";
  const Picture last(pages[3].string());
  EXPECT_TRUE(Near(last.at(2 * 32, 2 * (50 - 22)), Rgb{0, 204, 0}, 8)) << "the picture came along";
  // The sheet paints in the set as it does on its own, its text included.
  fs::create_directory(dir / "alone");
  const std::vector<fs::path> alone = Rendered(files[3], 50.8, dir / "alone");
  ASSERT_EQ(alone.size(), 1u);
  const Picture single(alone[0].string());
  const Rgb paper = PngRequest(dir / "x").background;
  EXPECT_GT(InkFoundIn(single, last, paper), 0.99);
  EXPECT_GT(InkFoundIn(last, single, paper), 0.99);
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
