#pragma once
// Fonts embedded in documents: subsets of installed font files that keep the glyph ids of the
// file, so that glyph indices shaped against the file stay valid in the subset. Built with
// HarfBuzz's subsetter; each file is mapped once per process.
#include <string>
#include <vector>

#include "render/font_metrics.h"

namespace tv::render {

// How a face may be embedded.
enum class FontEmbedding {
  None,      // no file, not a font HarfBuzz reads, no outlines (bitmap only), or its licence forbids it
  TrueType,  // glyf outlines
  OpenType,  // CFF outlines
};

// Whether, and as what, the face can be embedded. Remembered per file and face; thread-safe.
FontEmbedding EmbeddingOf(const ResolvedFont& font);

// The advance of a glyph in ems; 0 when unknown.
double GlyphAdvanceEm(const ResolvedFont& font, unsigned glyph);

// The face cut down to the glyphs and the characters given (glyph ids kept): a whole font file of
// one face. Empty when it cannot be made.
std::string SubsetFont(const ResolvedFont& font, const std::vector<unsigned>& glyphs, const std::vector<char32_t>& characters);

}  // namespace tv::render
