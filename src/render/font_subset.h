#pragma once
// Fonts embedded in documents: subsets of installed font files holding only the glyphs a page
// uses, renumbered from 1 (glyph 0 stays the missing glyph), with the map from the file's glyph
// ids to the subset's. Built with HarfBuzz's subsetter; each file is mapped once per process.
#include <map>
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

struct FontSubset {
  std::string bytes;                      // a whole font file of one face; empty when it cannot be made
  std::map<unsigned, unsigned> glyphIds;  // each glyph asked for: its id in the file -> in the subset
};

// The face cut down to the glyphs and the characters given.
FontSubset SubsetFont(const ResolvedFont& font, const std::vector<unsigned>& glyphs, const std::vector<char32_t>& characters);

}  // namespace tv::render
