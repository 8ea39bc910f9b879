#pragma once
// Text measuring with the installed fonts: a drawing's text styles mapped to TrueType/OpenType
// files through fontconfig, advance widths read with FreeType.
#include <memory>
#include <string>
#include <string_view>

#include "cad/entity_geometry.h"

namespace tv::render {

struct ResolvedFont {
  std::string file;   // empty when no font is installed at all
  int faceIndex = 0;  // inside a .ttc collection
  bool cjk = false;   // chosen as the Chinese font (SHX fonts, Chinese font names)
};

// The installed font that shows a text style:
// - SHX fonts ("txt.shx", "hztxt.shx", "gbcbig.shx", any *.shx or a name without extension), no
//   style, and Chinese fonts by family or file name (SimSun, simsun.ttc, 黑体 …) map to the CJK font
//   fontconfig finds for "sans-serif:lang=zh-cn" (a font with Chinese glyphs);
// - a TrueType family (TextStyle::fontFamily) or file name ("arial.ttf") maps to that font when
//   installed, else to fontconfig's substitute.
// Results are remembered per style font; safe to call from several threads.
ResolvedFont ResolveFont(const cad::TextStyle* style);
std::string ResolveFontFile(const cad::TextStyle* style);

// Measures with FreeType glyph advances (font units / units per em, so text height = em size).
// Fonts load lazily, once; advances are cached per font and code point. Characters a Latin font
// lacks are measured in the CJK font, then by the approximation. Without any usable font the
// approximate measurer answers. Thread-safe.
class FontTextMeasurer final : public cad::TextMeasurer {
 public:
  FontTextMeasurer();
  ~FontTextMeasurer() override;
  FontTextMeasurer(const FontTextMeasurer&) = delete;
  FontTextMeasurer& operator=(const FontTextMeasurer&) = delete;

  double advance(std::string_view utf8, const cad::TextStyle* style) const override;
  double ascent(const cad::TextStyle* style) const override;
  double descent(const cad::TextStyle* style) const override;
  // True when the style's text is measured from a font file rather than approximated.
  bool hasFont(const cad::TextStyle* style) const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace tv::render
