// TEXT, ATTDEF, ATTRIB and MTEXT in the installed fonts.
#include <cmath>
#include <utility>

#include "cad/entity_geometry_internal.h"
#include "render/font_metrics.h"
#include "render/plot_drawing_internal.h"
#include "render/plot_fonts.h"

namespace tv::render::plot_internal {

namespace {

const FontTextMeasurer& Measurer() {
  static const FontTextMeasurer measurer;
  return measurer;
}

Vector2d PageVector(const Matrix3d& m, Vector3d v) {
  const Vector3d w = m.transform(v);
  return {w.x, w.y};
}

double Advance(const std::vector<ShapedGlyph>& glyphs) {
  double sum = 0;
  for (const auto& g : glyphs) sum += g.advance;
  return sum;
}

}  // namespace

void DrawingPlotter::drawGlyphLine(const std::vector<ShapedGlyph>& shaped, Point2d origin, Vector2d emX, Vector2d emY,
                                   Rgb color) {
  GlyphRun run;
  run.emX = emX;
  run.emY = emY;
  run.color = color;
  const auto flush = [&] {
    if (!run.glyphs.empty()) canvas_.glyphs(std::move(run), request_.textAsGeometry);
    run.glyphs.clear();
    run.clusters.clear();
    run.utf8.clear();
  };
  double x = 0;
  for (const auto& g : shaped) {
    if (g.face && g.utf8 != " ") {
      if (g.face != run.face) {
        flush();
        run.face = g.face;
      }
      const Point2d at = origin + emX * x;
      run.glyphs.push_back({g.index, at.x, at.y});
      run.utf8 += g.utf8;
      run.clusters.push_back({static_cast<int>(g.utf8.size()), 1});
    }
    x += g.advance;
  }
  flush();
}

template <class T>
void DrawingPlotter::drawTextEntity(const T& t, const Look& look, const DrawContext& ctx) {
  const auto params = cad::geom_internal::TextParamsOf(t);
  const auto box = cad::geom_internal::TextBoxOcs(params, db_, Measurer());
  if (!box) return;
  const cad::TextStyle* style = cad::geom_internal::StyleOf(t.style, db_);
  const std::string plain = cad::geom_internal::ExpandTextCodes(t.text);
  const std::vector<ShapedGlyph> shaped = ShapeText(plain, style);
  const double advance = Advance(shaped);
  if (!(advance > 0)) return;
  const Matrix3d m = ctx.toPage * Matrix3d::planeToWorld(t.normal());
  const auto& c = *box;
  for (const auto& p : c)
    if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z)) return;
  const Point2d origin = page(m, c[0]);
  const Vector2d emX = PageVector(m, (c[1] - c[0]) / advance);
  // The box spans one em from the baseline up, slanted by the oblique angle.
  const Vector2d emY = PageVector(m, c[3] - c[0]);
  if (!std::isfinite(emX.x + emX.y + emY.x + emY.y + origin.x + origin.y)) return;
  drawGlyphLine(shaped, origin, emX, emY, look.pen.color);
  ++result_.entitiesDrawn;
}

template void DrawingPlotter::drawTextEntity(const cad::Text&, const Look&, const DrawContext&);
template void DrawingPlotter::drawTextEntity(const cad::AttDef&, const Look&, const DrawContext&);
template void DrawingPlotter::drawTextEntity(const cad::Attrib&, const Look&, const DrawContext&);

void DrawingPlotter::drawMText(const cad::MText& mt, const Look& look, const DrawContext& ctx) {
  if (!std::isfinite(mt.position.x) || !std::isfinite(mt.position.y) || !std::isfinite(mt.height)) return;
  const auto layout = cad::geom_internal::LayoutMText(mt, db_, Measurer());
  if (!(layout.height > 0) || !std::isfinite(layout.height)) return;
  const cad::TextStyle* style = cad::geom_internal::StyleOf(mt.style, db_);
  const Matrix3d m = ctx.toPage * layout.frameToWorld;
  const Vector2d emX = PageVector(m, Vector3d{layout.height * layout.widthFactor, 0, 0});
  Vector3d up{0, layout.height, 0};
  if (style && style->oblique != 0 && std::isfinite(style->oblique)) up.x = layout.height * std::tan(style->oblique);
  const Vector2d emY = PageVector(m, up);
  for (const auto& line : layout.lines) {
    if (line.text.empty()) continue;
    drawGlyphLine(ShapeText(line.text, style), page(m, Point3d{line.baselineStart}), emX, emY, look.pen.color);
  }
  ++result_.entitiesDrawn;
}

}  // namespace tv::render::plot_internal
