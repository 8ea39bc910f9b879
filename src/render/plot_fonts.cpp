#include "render/plot_fonts.h"

#include <cairo-ft.h>
#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_ADVANCES_H

#include <map>
#include <mutex>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "cad/entity_geometry.h"
#include "cad/utf8.h"
#include "render/font_metrics.h"

namespace tv::render {

namespace {

struct Face {
  FT_Face ft = nullptr;
  cairo_font_face_t* cairo = nullptr;
};

const cairo_user_data_key_t kFaceKey{};

void DoneFace(void* face) { FT_Done_Face(static_cast<FT_Face>(face)); }

// Faces are kept for the life of the process: cairo's own caches hold them to its end anyway.
class FaceCache {
 public:
  static FaceCache& instance() {
    static FaceCache* cache = new FaceCache;  // reachable to the end, never torn down under cairo
    return *cache;
  }

  // nullptr faces when the file cannot be loaded.
  Face get(const ResolvedFont& font) {
    if (font.file.empty() || !library_) return {};
    const auto key = std::make_pair(font.file, font.faceIndex);
    if (auto it = faces_.find(key); it != faces_.end()) return it->second;
    Face face;
    if (FT_New_Face(library_, font.file.c_str(), font.faceIndex, &face.ft) == 0) {
      face.cairo = cairo_ft_font_face_create_for_ft_face(face.ft, FT_LOAD_NO_HINTING);
      if (cairo_font_face_set_user_data(face.cairo, &kFaceKey, face.ft, DoneFace) != CAIRO_STATUS_SUCCESS) {
        cairo_font_face_destroy(face.cairo);
        FT_Done_Face(face.ft);
        face = {};
      }
    } else {
      face = {};
    }
    faces_.emplace(key, face);
    if (face.cairo) sources_.emplace(face.cairo, ResolvedFont{font.file, font.faceIndex, font.cjk});
    return face;
  }

  ResolvedFont sourceOf(const cairo_font_face_t* face) const {
    const auto it = sources_.find(face);
    return it == sources_.end() ? ResolvedFont{} : it->second;
  }

  // The faces of a style: its own and the CJK one its missing characters fall back to. A page
  // shapes thousands of texts in a few styles; the last style's faces are kept at hand.
  std::pair<Face, Face> facesOf(const cad::TextStyle* style) {
    const std::string_view family = style ? std::string_view(style->fontFamily) : std::string_view{};
    const std::string_view file = style ? std::string_view(style->fontFile) : std::string_view{};
    if (!last_ || last_->family != family || last_->file != file) {
      last_ = LastStyle{std::string(family), std::string(file), get(ResolveFont(style))};
      if (!cjk_) cjk_ = get(ResolveFont(nullptr));
      shaped_.clear();
    }
    return {last_->primary, *cjk_};
  }

  // Texts shaped before in the style whose faces `facesOf` gave last. Drawings repeat their
  // labels (room names, axis marks, door tags) thousands of times, in few styles.
  const std::vector<ShapedGlyph>* shaped(std::string_view utf8) const {
    const auto it = shaped_.find(std::string(utf8));
    return it == shaped_.end() ? nullptr : &it->second;
  }
  void keep(std::string_view utf8, const std::vector<ShapedGlyph>& glyphs) {
    if (shaped_.size() >= kMaxShaped) shaped_.clear();  // bounded: a drawing of all-different texts gains nothing
    shaped_.emplace(std::string(utf8), glyphs);
  }

  std::mutex mutex;

 private:
  static constexpr std::size_t kMaxShaped = 4096;
  // A style's font follows from its family and file alone.
  struct LastStyle {
    std::string family, file;
    Face primary;
  };
  std::optional<LastStyle> last_;
  std::optional<Face> cjk_;
  std::unordered_map<std::string, std::vector<ShapedGlyph>> shaped_;

  FaceCache() {
    if (FT_Init_FreeType(&library_) != 0) library_ = nullptr;
  }
  FT_Library library_ = nullptr;
  std::map<std::pair<std::string, int>, Face> faces_;
  std::unordered_map<const cairo_font_face_t*, ResolvedFont> sources_;
};

double Advance(const Face& face, FT_UInt glyph) {
  FT_Fixed advance = 0;
  if (FT_Get_Advance(face.ft, glyph, FT_LOAD_NO_SCALE, &advance) != 0 || face.ft->units_per_EM == 0) return 0;
  return static_cast<double>(advance) / face.ft->units_per_EM;
}

}  // namespace

std::vector<ShapedGlyph> ShapeText(std::string_view utf8, const cad::TextStyle* style) {
  FaceCache& cache = FaceCache::instance();
  std::lock_guard lock(cache.mutex);
  const auto [primary, cjk] = cache.facesOf(style);
  if (const auto* known = cache.shaped(utf8)) return *known;
  std::vector<ShapedGlyph> out;
  for (std::size_t i = 0; i < utf8.size();) {
    const std::size_t at = i;
    const char32_t cp = cad::NextCodePoint(utf8, i);
    ShapedGlyph g;
    g.utf8 = std::string(utf8.substr(at, i - at));
    for (const Face* face : {&primary, &cjk}) {
      if (!face->ft) continue;
      const FT_UInt index = FT_Get_Char_Index(face->ft, cp);
      if (index == 0) continue;
      g.face = face->cairo;
      g.index = index;
      g.advance = Advance(*face, index);
      break;
    }
    if (!g.face) g.advance = cad::ApproximateTextMeasurer().advance(g.utf8, style);
    out.push_back(std::move(g));
  }
  cache.keep(utf8, out);
  return out;
}

ResolvedFont FontOfFace(const cairo_font_face_t* face) {
  FaceCache& cache = FaceCache::instance();
  std::lock_guard lock(cache.mutex);
  return cache.sourceOf(face);
}

}  // namespace tv::render
