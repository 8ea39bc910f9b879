#pragma once
// Fonts for plotted text: the installed font of a text style (see font_metrics.h), loaded once
// per process with FreeType and handed to cairo. Characters the style's font lacks come from the
// Chinese font.
#include <cairo.h>

#include <string>
#include <string_view>
#include <vector>

#include "cad/tables.h"
#include "render/font_metrics.h"

namespace tv::render {

struct ShapedGlyph {
  cairo_font_face_t* face = nullptr;  // nullptr: no installed font has the character
  unsigned long index = 0;            // glyph index in that face
  double advance = 0;                 // em units
  std::string utf8;                   // the character
};

// The glyphs of a plain string in the style's font, left to right. Thread-safe; faces live for
// the whole process.
std::vector<ShapedGlyph> ShapeText(std::string_view utf8, const cad::TextStyle* style);

// The file (and face within it) a face of ShapeText was loaded from, for formats that embed the
// font; an empty file for a face that did not come from there.
ResolvedFont FontOfFace(const cairo_font_face_t* face);

}  // namespace tv::render
