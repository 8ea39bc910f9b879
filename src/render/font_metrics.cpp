#include "render/font_metrics.h"

#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_ADVANCES_H

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <vector>

#include "cad/utf8.h"

namespace tv::render {

namespace {

using cad::NextCodePoint;

// ---- text helpers ------------------------------------------------------------------------------

std::string Lower(std::string_view s) {
  std::string out(s);
  for (char& c : out)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return out;
}

bool StartsWith(std::string_view s, std::string_view prefix) { return s.substr(0, prefix.size()) == prefix; }

// Decodes one code point and moves `i` past it; broken sequences give U+FFFD, one byte each.
bool HasCjkCharacter(std::string_view s) {
  for (std::size_t i = 0; i < s.size();)
    if (NextCodePoint(s, i) >= 0x2E80) return true;
  return false;
}

// Font names of Chinese Windows installations and foundries, by family or file name.
bool IsChineseFontName(std::string_view name) {
  const std::string n = Lower(name);
  if (HasCjkCharacter(n)) return true;
  static constexpr std::string_view kPrefixes[] = {"sim",       "nsimsun", "msyh",      "msjh",       "microsoft yahei", "microsoft jhenghei",
                                                   "fz",        "fs_gb",   "kaiti",     "fangsong",   "stsong",          "stkaiti",
                                                   "stfang",    "sthei",   "stxihei",   "stzhongsong", "mingliu",        "pmingliu",
                                                   "dengxian",  "deng",    "youyuan",   "lisu",       "wqy",             "wenquanyi",
                                                   "noto sans cjk", "notosanscjk", "source han", "sourcehan", "hztxt", "gbcbig"};
  return std::any_of(std::begin(kPrefixes), std::end(kPrefixes), [&](std::string_view p) { return StartsWith(n, p); });
}

// ---- fontconfig ----------------------------------------------------------------------------------

struct FcPatternDeleter {
  void operator()(FcPattern* p) const { FcPatternDestroy(p); }
};
using PatternPtr = std::unique_ptr<FcPattern, FcPatternDeleter>;

std::optional<ResolvedFont> FontOf(FcPattern* p) {
  FcChar8* file = nullptr;
  if (!p || FcPatternGetString(p, FC_FILE, 0, &file) != FcResultMatch || !file) return std::nullopt;
  int index = 0;
  FcPatternGetInteger(p, FC_INDEX, 0, &index);
  return ResolvedFont{reinterpret_cast<const char*>(file), index, false};
}

bool HasCharacter(FcPattern* p, FcChar32 cp) {
  FcCharSet* cs = nullptr;
  return p && FcPatternGetCharSet(p, FC_CHARSET, 0, &cs) == FcResultMatch && cs && FcCharSetHasChar(cs, cp);
}

// Uses a configuration of its own rather than fontconfig's global one, so that it is released at
// exit (the global one never is) and nobody else's fontconfig use is disturbed.
class FontDirectory {
 public:
  FontDirectory() : config_(FcInitLoadConfigAndFonts()) { ready_ = config_ != nullptr; }
  ~FontDirectory() {
    if (config_) FcConfigDestroy(config_);
  }
  FontDirectory(const FontDirectory&) = delete;
  FontDirectory& operator=(const FontDirectory&) = delete;

  // The best installed match of a fontconfig pattern ("sans-serif:lang=zh-cn", a family name).
  std::optional<ResolvedFont> match(const std::string& pattern, FcChar32 mustHave = 0) {
    if (!ready_) return std::nullopt;
    PatternPtr pat(FcNameParse(reinterpret_cast<const FcChar8*>(pattern.c_str())));
    if (!pat) return std::nullopt;
    FcConfigSubstitute(config_, pat.get(), FcMatchPattern);
    FcDefaultSubstitute(pat.get());
    FcResult result = FcResultNoMatch;
    PatternPtr found(FcFontMatch(config_, pat.get(), &result));
    if (!found || (mustHave && !HasCharacter(found.get(), mustHave))) return std::nullopt;
    return FontOf(found.get());
  }

  // An installed font file by its name ("simsun.ttc"), or any font with this character.
  std::optional<ResolvedFont> byFileName(std::string_view name) {
    const std::string wanted = Lower(name);
    for (const auto& f : list())
      if (Lower(std::filesystem::path(f.file).filename().string()) == wanted) return f;
    return std::nullopt;
  }

  std::optional<ResolvedFont> withCharacter(FcChar32 cp) {
    if (!ready_) return std::nullopt;
    PatternPtr pat(FcPatternCreate());
    FcObjectSet* os = FcObjectSetBuild(FC_FILE, FC_INDEX, FC_CHARSET, nullptr);
    FcFontSet* set = FcFontList(config_, pat.get(), os);
    std::optional<ResolvedFont> out;
    for (int i = 0; set && i < set->nfont && !out; ++i)
      if (HasCharacter(set->fonts[i], cp)) out = FontOf(set->fonts[i]);
    if (set) FcFontSetDestroy(set);
    FcObjectSetDestroy(os);
    return out;
  }

 private:
  const std::vector<ResolvedFont>& list() {
    if (listed_ || !ready_) return fonts_;
    listed_ = true;
    PatternPtr pat(FcPatternCreate());
    FcObjectSet* os = FcObjectSetBuild(FC_FILE, FC_INDEX, nullptr);
    FcFontSet* set = FcFontList(config_, pat.get(), os);
    for (int i = 0; set && i < set->nfont; ++i)
      if (auto f = FontOf(set->fonts[i])) fonts_.push_back(*f);
    if (set) FcFontSetDestroy(set);
    FcObjectSetDestroy(os);
    // Regular faces (index 0) first, so a collection's first face wins.
    std::stable_sort(fonts_.begin(), fonts_.end(), [](const ResolvedFont& a, const ResolvedFont& b) { return a.faceIndex < b.faceIndex; });
    return fonts_;
  }

  FcConfig* config_ = nullptr;
  bool ready_ = false;
  bool listed_ = false;
  std::vector<ResolvedFont> fonts_;
};

constexpr FcChar32 kZhong = 0x4E2D;  // 中

class Resolver {
 public:
  ResolvedFont resolve(const cad::TextStyle* style) {
    // A leading '@' asks Windows for the vertical variant of the same font.
    const auto plain = [](std::string s) { return s.empty() || s.front() != '@' ? s : s.substr(1); };
    const std::string family = style ? plain(style->fontFamily) : std::string{};
    const std::string file = style ? plain(style->fontFile) : std::string{};
    const std::string key = family + '\n' + file;
    std::lock_guard lock(mutex_);
    if (auto it = cache_.find(key); it != cache_.end()) return it->second;
    return cache_[key] = compute(family, file);
  }

  ResolvedFont cjk() {
    std::lock_guard lock(mutex_);
    return cjkLocked();
  }

 private:
  ResolvedFont cjkLocked() {
    if (cjk_) return *cjk_;
    std::optional<ResolvedFont> f = fonts_.match("sans-serif:lang=zh-cn", kZhong);
    if (!f) f = fonts_.withCharacter(kZhong);
    if (!f) f = fonts_.match("sans-serif");
    cjk_ = f.value_or(ResolvedFont{});
    cjk_->cjk = true;
    return *cjk_;
  }

  ResolvedFont compute(const std::string& family, const std::string& file) {
    if (!family.empty()) {
      if (IsChineseFontName(family)) return cjkLocked();
      if (auto f = fonts_.match(family)) return *f;
    }
    const std::filesystem::path path(file);
    const std::string ext = Lower(path.extension().string());
    const std::string name = path.filename().string();
    // SHX fonts have no TrueType twin; the CJK font covers both their Latin and Chinese text.
    if (file.empty() || ext.empty() || ext == ".shx") return cjkLocked();
    std::error_code ec;
    if (path.is_absolute() && std::filesystem::is_regular_file(path, ec)) return {file, 0, false};
    if (auto f = fonts_.byFileName(name)) return *f;
    if (IsChineseFontName(name)) return cjkLocked();
    if (auto f = fonts_.match(FamilyGuess(path.stem().string()))) return *f;
    return cjkLocked();
  }

  // Windows font files by the family they hold, for fontconfig's aliases (Arial -> Liberation Sans …).
  static std::string FamilyGuess(const std::string& stem) {
    static const std::map<std::string, std::string> kKnown = {
        {"arial", "Arial"},         {"arialbd", "Arial:bold"},     {"times", "Times New Roman"}, {"timesbd", "Times New Roman:bold"},
        {"cour", "Courier New"},    {"calibri", "Calibri"},        {"tahoma", "Tahoma"},         {"verdana", "Verdana"},
        {"georgia", "Georgia"},     {"isocpeur", "ISOCPEUR"},      {"isocp", "ISOCPEUR"},
        {"segoeui", "Segoe UI"},    {"consola", "Consolas"},       {"cambria", "Cambria"},       {"symbol", "Symbol"}};
    const std::string lower = Lower(stem);
    if (auto it = kKnown.find(lower); it != kKnown.end()) return it->second;
    return stem;
  }

  std::mutex mutex_;
  FontDirectory fonts_;
  std::optional<ResolvedFont> cjk_;
  std::unordered_map<std::string, ResolvedFont> cache_;
};

Resolver& TheResolver() {
  static Resolver resolver;
  return resolver;
}

// ---- FreeType ----------------------------------------------------------------------------------

struct Face {
  FT_Face face = nullptr;
  double unitsPerEm = 0;
  double ascent = 1, descent = 1.0 / 3.0;
  std::unordered_map<char32_t, double> advances;  // NaN = the font lacks the character
  // Whole texts measured before: drawings repeat their labels, and a text is measured for its
  // extents, its selection shape and its plot alike. Bounded, so that it never outgrows a drawing.
  std::unordered_map<std::string, double> widths;
  static constexpr std::size_t kMaxWidths = 4096;
  ~Face() {
    if (face) FT_Done_Face(face);
  }
};

}  // namespace

ResolvedFont ResolveFont(const cad::TextStyle* style) { return TheResolver().resolve(style); }

std::string ResolveFontFile(const cad::TextStyle* style) { return ResolveFont(style).file; }

struct FontTextMeasurer::Impl {
  FT_Library library = nullptr;
  mutable std::mutex mutex;
  std::map<std::pair<std::string, int>, std::unique_ptr<Face>> faces;  // null = failed to load

  Impl() {
    if (FT_Init_FreeType(&library) != 0) library = nullptr;
  }
  ~Impl() {
    faces.clear();
    if (library) FT_Done_FreeType(library);
  }

  Face* load(const ResolvedFont& font) {
    if (!library || font.file.empty()) return nullptr;
    auto key = std::make_pair(font.file, font.faceIndex);
    if (auto it = faces.find(key); it != faces.end()) return it->second.get();
    auto face = std::make_unique<Face>();
    if (FT_New_Face(library, font.file.c_str(), font.faceIndex, &face->face) != 0) face->face = nullptr;
    if (face->face && face->face->units_per_EM > 0) {
      face->unitsPerEm = face->face->units_per_EM;
      face->ascent = face->face->ascender / face->unitsPerEm;
      face->descent = -face->face->descender / face->unitsPerEm;
      if (!(face->ascent > 0)) face->ascent = 1;
      if (!(face->descent >= 0)) face->descent = 1.0 / 3.0;
    } else {
      face.reset();  // bitmap-only or unreadable: no metrics to trust
    }
    return (faces[key] = std::move(face)).get();
  }

  // A style's font follows from its family and file alone; texts come in runs of one style.
  Face* faceFor(const cad::TextStyle* style) {
    const std::string_view family = style ? std::string_view(style->fontFamily) : std::string_view{};
    const std::string_view file = style ? std::string_view(style->fontFile) : std::string_view{};
    if (!lastStyle || lastStyle->family != family || lastStyle->file != file)
      lastStyle = LastStyle{std::string(family), std::string(file), load(ResolveFont(style))};
    return lastStyle->face;
  }
  struct LastStyle {
    std::string family, file;
    Face* face = nullptr;
  };
  std::optional<LastStyle> lastStyle;

  // NaN when the face has no glyph for the character.
  static double glyphAdvance(Face& f, char32_t cp) {
    if (auto it = f.advances.find(cp); it != f.advances.end()) return it->second;
    double value = std::nan("");
    if (const FT_UInt glyph = FT_Get_Char_Index(f.face, cp); glyph != 0) {
      FT_Fixed advance = 0;
      if (FT_Get_Advance(f.face, glyph, FT_LOAD_NO_SCALE, &advance) == 0) value = static_cast<double>(advance) / f.unitsPerEm;
    }
    f.advances.emplace(cp, value);
    return value;
  }
};

FontTextMeasurer::FontTextMeasurer() : impl_(std::make_unique<Impl>()) {}
FontTextMeasurer::~FontTextMeasurer() = default;

double FontTextMeasurer::advance(std::string_view utf8, const cad::TextStyle* style) const {
  std::lock_guard lock(impl_->mutex);
  Face* face = impl_->faceFor(style);
  if (!face) return cad::ApproximateTextMeasurer().advance(utf8, style);
  const std::string key(utf8);
  if (auto it = face->widths.find(key); it != face->widths.end()) return it->second;
  Face* fallback = nullptr;
  bool fallbackLoaded = false;
  double width = 0;
  for (std::size_t i = 0; i < utf8.size();) {
    const std::size_t start = i;
    const char32_t cp = NextCodePoint(utf8, i);
    if (cp < 0x20) continue;
    double w = Impl::glyphAdvance(*face, cp);
    if (std::isnan(w)) {
      // The renderer falls back to the CJK font for characters the style's font lacks.
      if (!fallbackLoaded) {
        fallback = impl_->load(TheResolver().cjk());
        fallbackLoaded = true;
      }
      if (fallback && fallback != face) w = Impl::glyphAdvance(*fallback, cp);
      if (std::isnan(w)) w = cad::ApproximateTextMeasurer().advance(utf8.substr(start, i - start), style);
    }
    width += w;
  }
  if (face->widths.size() >= Face::kMaxWidths) face->widths.clear();
  face->widths.emplace(key, width);
  return width;
}

double FontTextMeasurer::ascent(const cad::TextStyle* style) const {
  std::lock_guard lock(impl_->mutex);
  const Face* face = impl_->faceFor(style);
  return face ? face->ascent : cad::ApproximateTextMeasurer().ascent(style);
}

double FontTextMeasurer::descent(const cad::TextStyle* style) const {
  std::lock_guard lock(impl_->mutex);
  const Face* face = impl_->faceFor(style);
  return face ? face->descent : cad::ApproximateTextMeasurer().descent(style);
}

bool FontTextMeasurer::hasFont(const cad::TextStyle* style) const {
  std::lock_guard lock(impl_->mutex);
  return impl_->faceFor(style) != nullptr;
}

}  // namespace tv::render
