#pragma once
// The canvas of DWF files, written as DWFx: one XPS FixedPage of Path and Glyphs elements. Lines keep their
// colour and width (StrokeThickness), areas are filled even-odd, clips are nested Canvas elements,
// pictures are PNG parts painted through an ImageBrush. Text is text: Glyphs elements over a
// subset of their font, embedded as a part of the page. Text asked for as outlines, and text in a
// face that cannot be embedded, goes out as filled glyph outlines, one Path per glyph placed by
// its transform.
#include <cstddef>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "render/font_metrics.h"
#include "render/plot_canvas.h"
#include "render/xps_package.h"

namespace tv::render {

class DwfxCanvas final : public PlotCanvas {
 public:
  // The page is painted in `background` first (the paper colour the review list chose).
  DwfxCanvas(std::string path, double pageWidthMm, double pageHeightMm, Rgb background);

  void stroke(const Polyline2d& points, bool closed, Rgb color, double widthMm) override;
  void fill(const std::vector<Polyline2d>& rings, Rgb color) override;
  void glyphs(GlyphRun run, bool asOutlines) override;
  void image(cairo_surface_t* picture, const cairo_matrix_t& pixelToPage) override;
  void pushClip(const Polyline2d& polygon) override;
  void popClip() override;
  bool finish(std::string& error) override;

 private:
  void flushStrokes();
  // Appends " M x,y L x,y …" (with " Z" when closed) in page units.
  void figure(std::string& data, const Polyline2d& points, bool closed) const;
  void point(std::string& data, cad::Point2d p) const;
  // The Path data of a glyph's outline in thousandths of an em ("" for a blank glyph).
  const std::string& glyphOutline(cairo_font_face_t* face, unsigned long index);
  void appendOutlines(const GlyphRun& run, std::string& out);

  // A face as this page embeds it: `part` is its font part, empty when its text goes as outlines.
  struct PageFont {
    ResolvedFont source;
    std::size_t number = 0;  // its place on the page, from 1
    std::string part;
    std::vector<unsigned> glyphs;
    std::vector<char32_t> characters;
  };
  PageFont& pageFont(cairo_font_face_t* face);
  // Appends the run as Glyphs elements; false, with nothing appended, when it cannot be.
  bool appendText(const GlyphRun& run, PageFont& font, std::string& out) const;
  // Embeds the fonts of the page; text of a face whose subset fails is put back as outlines.
  void embedFonts();

  // Text written as Glyphs: where it is in the markup, and the run to paint instead.
  struct TextElement {
    std::size_t begin = 0, end = 0;
    GlyphRun run;
  };

  static constexpr double kGlyphUnits = 1000;

  std::string path_;
  double heightMm_;
  XpsPage page_;
  int clipDepth_ = 0;
  // Strokes of one pen are gathered into one Path, as the PDF canvas gathers them.
  std::string pendingData_;
  Rgb pendingColor_;
  double pendingWidth_ = 0;
  std::map<std::pair<const void*, unsigned long>, std::string> outlines_;
  std::unordered_map<const cairo_font_face_t*, PageFont> fonts_;
  std::vector<const cairo_font_face_t*> fontOrder_;  // as first met: the package's parts in a fixed order
  std::vector<TextElement> texts_;
};

}  // namespace tv::render
