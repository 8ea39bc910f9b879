#include "render/font_subset.h"

#include <hb-subset.h>
#include <hb.h>

#include <initializer_list>

#include <map>
#include <memory>
#include <mutex>
#include <utility>

namespace tv::render {

namespace {

struct BlobDeleter {
  void operator()(hb_blob_t* b) const { hb_blob_destroy(b); }
};
using BlobPtr = std::unique_ptr<hb_blob_t, BlobDeleter>;
struct SetDeleter {
  void operator()(hb_set_t* s) const { hb_set_destroy(s); }
};
struct InputDeleter {
  void operator()(hb_subset_input_t* i) const { hb_subset_input_destroy(i); }
};
struct FaceDeleter {
  void operator()(hb_face_t* f) const { hb_face_destroy(f); }
};
struct PlanDeleter {
  void operator()(hb_subset_plan_t* p) const { hb_subset_plan_destroy(p); }
};

// OS/2 fsType: an installable, editable or preview-and-print font may be embedded; a restricted
// one, or one that allows its bitmaps only, may not.
bool LicenceAllowsEmbedding(hb_face_t* face) {
  BlobPtr os2(hb_face_reference_table(face, HB_TAG('O', 'S', '/', '2')));
  unsigned length = 0;
  const char* data = hb_blob_get_data(os2.get(), &length);
  if (length < 10) return true;  // no table: no restriction stated
  const unsigned fsType = (static_cast<unsigned char>(data[8]) << 8) | static_cast<unsigned char>(data[9]);
  const bool restricted = (fsType & 0x000F) == 0x0002;
  const bool bitmapOnly = (fsType & 0x0200) != 0;
  return !restricted && !bitmapOnly;
}

bool HasTable(hb_face_t* face, hb_tag_t tag) {
  BlobPtr table(hb_face_reference_table(face, tag));
  return hb_blob_get_length(table.get()) > 0;
}

struct Entry {
  hb_face_t* face = nullptr;
  hb_font_t* font = nullptr;
  hb_face_t* cutting = nullptr;  // the face prepared once for the subsetter, which then cuts fast
  FontEmbedding embedding = FontEmbedding::None;
};

// Faces stay for the life of the process, as the plot's own faces do: a run embeds the same few
// fonts page after page.
class SubsetCache {
 public:
  static SubsetCache& instance() {
    static SubsetCache* cache = new SubsetCache;
    return *cache;
  }

  Entry get(const ResolvedFont& font) {
    std::lock_guard lock(mutex_);
    const auto key = std::make_pair(font.file, font.faceIndex);
    if (auto it = entries_.find(key); it != entries_.end()) return it->second;
    Entry e;
    if (!font.file.empty() && font.faceIndex >= 0) {
      BlobPtr blob(hb_blob_create_from_file_or_fail(font.file.c_str()));
      if (blob && font.faceIndex < static_cast<int>(hb_face_count(blob.get()))) {
        e.face = hb_face_create(blob.get(), static_cast<unsigned>(font.faceIndex));
        e.font = hb_font_create(e.face);  // scaled in font units
        if (hb_face_get_glyph_count(e.face) > 0 && LicenceAllowsEmbedding(e.face)) {
          if (HasTable(e.face, HB_TAG('g', 'l', 'y', 'f'))) e.embedding = FontEmbedding::TrueType;
          else if (HasTable(e.face, HB_TAG('C', 'F', 'F', ' ')) || HasTable(e.face, HB_TAG('C', 'F', 'F', '2')))
            e.embedding = FontEmbedding::OpenType;
        }
        if (e.embedding != FontEmbedding::None) e.cutting = hb_subset_preprocess(e.face);
      }
    }
    entries_.emplace(key, e);
    return e;
  }

 private:
  SubsetCache() = default;
  std::mutex mutex_;
  std::map<std::pair<std::string, int>, Entry> entries_;
};

}  // namespace

FontEmbedding EmbeddingOf(const ResolvedFont& font) { return SubsetCache::instance().get(font).embedding; }

double GlyphAdvanceEm(const ResolvedFont& font, unsigned glyph) {
  const Entry e = SubsetCache::instance().get(font);
  const unsigned upem = e.face ? hb_face_get_upem(e.face) : 0;
  if (!e.font || upem == 0) return 0;
  return static_cast<double>(hb_font_get_glyph_h_advance(e.font, glyph)) / upem;
}

FontSubset SubsetFont(const ResolvedFont& font, const std::vector<unsigned>& glyphs, const std::vector<char32_t>& characters) {
  const Entry e = SubsetCache::instance().get(font);
  if (e.embedding == FontEmbedding::None) return {};
  std::unique_ptr<hb_subset_input_t, InputDeleter> input(hb_subset_input_create_or_fail());
  if (!input) return {};
  hb_set_t* gids = hb_subset_input_glyph_set(input.get());
  for (unsigned g : glyphs) hb_set_add(gids, g);
  hb_set_t* unicodes = hb_subset_input_unicode_set(input.get());
  for (char32_t c : characters) hb_set_add(unicodes, static_cast<hb_codepoint_t>(c));
  // Ids renumbered: kept, a CJK font's metrics and locations would run to all its glyphs on every
  // page. Hints dropped: the text is placed by a transform at any size, where hinting has nothing
  // to snap to.
  hb_subset_input_set_flags(input.get(), HB_SUBSET_FLAGS_NO_HINTING);
  // The text comes shaped and laid out in rows: layout and vertical metrics are not needed, and
  // the layout tables of a CJK font are the slow part of cutting it.
  hb_set_t* drop = hb_subset_input_set(input.get(), HB_SUBSET_SETS_DROP_TABLE_TAG);
  for (hb_tag_t tag : {HB_TAG('G', 'S', 'U', 'B'), HB_TAG('G', 'P', 'O', 'S'), HB_TAG('G', 'D', 'E', 'F'), HB_TAG('B', 'A', 'S', 'E'),
                       HB_TAG('J', 'S', 'T', 'F'), HB_TAG('M', 'A', 'T', 'H'), HB_TAG('k', 'e', 'r', 'n'), HB_TAG('m', 'o', 'r', 'x'),
                       HB_TAG('k', 'e', 'r', 'x'), HB_TAG('v', 'h', 'e', 'a'), HB_TAG('v', 'm', 't', 'x'), HB_TAG('V', 'O', 'R', 'G')})
    hb_set_add(drop, tag);
  std::unique_ptr<hb_subset_plan_t, PlanDeleter> plan(hb_subset_plan_create_or_fail(e.cutting ? e.cutting : e.face, input.get()));
  if (!plan) return {};
  FontSubset out;
  const hb_map_t* ids = hb_subset_plan_old_to_new_glyph_mapping(plan.get());
  for (unsigned g : glyphs) {
    const hb_codepoint_t id = hb_map_get(ids, g);
    if (id == HB_MAP_VALUE_INVALID) return {};
    out.glyphIds.emplace(g, id);
  }
  std::unique_ptr<hb_face_t, FaceDeleter> subset(hb_subset_plan_execute_or_fail(plan.get()));
  if (!subset) return {};
  BlobPtr blob(hb_face_reference_blob(subset.get()));
  unsigned length = 0;
  const char* data = hb_blob_get_data(blob.get(), &length);
  if (!data || length == 0) return {};
  out.bytes.assign(data, length);
  return out;
}

}  // namespace tv::render
