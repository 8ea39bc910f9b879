#include "render/font_metrics.h"

#include <gtest/gtest.h>

namespace tv::render {
namespace {

cad::TextStyle StyleWithFont(std::string file, std::string family = {}) {
  cad::TextStyle s;
  s.name.assign(1, 'T');  // a literal here trips a false -Wrestrict in GCC 12
  s.fontFile = std::move(file);
  s.fontFamily = std::move(family);
  return s;
}

TEST(FontMetrics, ShxAndChineseFontsMeasureInTheCjkFont) {
  const FontTextMeasurer m;
  const cad::TextStyle shx = StyleWithFont("hztxt.shx");
  const ResolvedFont font = ResolveFont(&shx);
  if (font.file.empty() || !m.hasFont(&shx)) GTEST_SKIP() << "no CJK font installed (fonts-wqy-microhei)";
  EXPECT_TRUE(font.cjk);
  EXPECT_NEAR(m.advance("中", &shx), 1.0, 0.05);
  EXPECT_NEAR(m.advance("中文字", &shx), 3 * m.advance("中", &shx), 1e-12);
  // Every route to a Chinese font lands on the same file.
  for (const cad::TextStyle& s : {StyleWithFont("txt.shx"), StyleWithFont("gbcbig"), StyleWithFont("simsun.ttc"),
                                  StyleWithFont("", "宋体"), StyleWithFont("", "SimHei")})
    EXPECT_EQ(ResolveFontFile(&s), font.file) << s.fontFile << s.fontFamily;
  EXPECT_EQ(ResolveFontFile(nullptr), font.file);
  EXPECT_GT(m.ascent(&shx), 0.5);
  EXPECT_GT(m.descent(&shx), 0);
}

TEST(FontMetrics, TrueTypeAdvancesDifferByGlyph) {
  const FontTextMeasurer m;
  for (const cad::TextStyle& s : {StyleWithFont("", "DejaVu Sans"), StyleWithFont("arial.ttf"), StyleWithFont("txt.shx")}) {
    if (!m.hasFont(&s)) continue;
    const double i = m.advance("i", &s), w = m.advance("W", &s);
    EXPECT_GT(i, 0.1) << s.fontFile << s.fontFamily;
    EXPECT_LT(i, w) << s.fontFile << s.fontFamily;
    EXPECT_LT(w, 1.2);
    // A Chinese character in a Latin font is measured in the CJK font, not as nothing.
    EXPECT_GT(m.advance("中", &s), 0.8);
  }
}

TEST(FontMetrics, MissingFontsFallBackWithoutFailing) {
  const FontTextMeasurer m;
  const cad::TextStyle odd = StyleWithFont("/no/such/dir/nothing_here.ttf", "No Such Family At All");
  EXPECT_GT(m.advance("ABC", &odd), 0.5);
  const cad::TextStyle broken = StyleWithFont("font.pfb");
  EXPECT_GE(m.advance(std::string("\xFF\xFE" "A", 3), &broken), 0);
  EXPECT_EQ(m.advance("", &broken), 0);
}

TEST(FontMetrics, TextExtentsUseTheMeasuredFont) {
  const FontTextMeasurer m;
  cad::Database db = cad::Database::createDefault();
  cad::TextStyle& style = db.addTextStyle("HZ");
  style.fontFile = "txt.shx";
  style.bigFontFile = "hztxt.shx";
  if (!m.hasFont(&style)) GTEST_SKIP() << "no font installed";
  cad::Text t;
  t.text = "中文";
  t.height = 10;
  t.style = style.id;
  const auto box = cad::EntityExtents(t, db, &m);
  ASSERT_TRUE(box.has_value());
  EXPECT_NEAR(box->width(), 20, 1);
  EXPECT_NEAR(box->height(), 10, 1e-9);
}

}  // namespace
}  // namespace tv::render
