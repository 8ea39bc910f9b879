// The reader's side of DxfReadContext: text decoding, record lookups by name, warnings.
#include <cstring>

#include "cad/dxf_reader_internal.h"
#include "cad/utf8.h"

namespace tv::cad::dxf_read {

namespace {

constexpr std::size_t kMaxWarnings = 500;

// True when the text needs neither code page conversion nor escape decoding.
inline bool IsPlainAscii(std::string_view s) {
  for (char c : s)
    if (static_cast<unsigned char>(c) >= 0x80 || c == '\\') return false;
  return true;
}

bool IsValidUtf8(std::string_view s) {
  char32_t cp;
  for (std::size_t i = 0, n = 0; i < s.size(); i += n) {
    if (static_cast<unsigned char>(s[i]) < 0x80) {
      n = 1;
      continue;
    }
    if ((n = DecodeUtf8(s, i, cp)) == 0) return false;
  }
  return true;
}

}  // namespace

std::size_t NameHash::operator()(std::string_view s) const noexcept {
  // Eight bytes at a time with bit 5 set, which folds ASCII case (and merges a few punctuation
  // pairs, harmless for a hash: equality still compares properly).
  constexpr std::uint64_t kFold = 0x2020202020202020ull;
  std::uint64_t h = 0x9E3779B97F4A7C15ull ^ s.size();
  std::size_t i = 0;
  for (; i + 8 <= s.size(); i += 8) {
    std::uint64_t w;
    std::memcpy(&w, s.data() + i, 8);
    h = (h ^ (w | kFold)) * 0xFF51AFD7ED558CCDull;
    h ^= h >> 32;
  }
  if (i < s.size()) {
    std::uint64_t w = 0;
    std::memcpy(&w, s.data() + i, s.size() - i);
    h = (h ^ (w | (kFold >> (8 * (8 - (s.size() - i)))))) * 0xFF51AFD7ED558CCDull;
    h ^= h >> 32;
  }
  return static_cast<std::size_t>(h);
}

ObjectId NameIndex::find(std::string_view name) {
  Recent& slot = recent_[slotOf(name)];
  if (!slot.id.isNull() && slot.name == name) return slot.id;
  auto it = map_.find(name);
  if (it == map_.end()) return {};
  slot.name.assign(name);
  slot.id = it->second;
  return slot.id;
}

void NameIndex::add(std::string_view name, ObjectId id) { map_.emplace(std::string(name), id); }

std::string Reader::text(std::string_view raw) {
  if (IsPlainAscii(raw)) return std::string(raw);
  // Valid text of a UTF-8 file is what the decoder would give: taken whole, not by character.
  std::string s = !decoder_ || (textIsUtf8_ && IsValidUtf8(raw)) ? std::string(raw) : decoder_->toUtf8(raw);
  if (s.find('\\') != std::string::npos) return DecodeDxfEscapes(s);
  return s;
}

std::string Reader::nameText(std::string_view name) {
  if (IsPlainAscii(name)) return std::string(name);
  const bool escaped = name.find("\\U+") != std::string_view::npos || name.find("\\M+") != std::string_view::npos;
  if (!escaped && version_ < DxfVersion::R2007 && IsValidUtf8(name)) return std::string(name);
  return text(name);
}

void Reader::warn(std::string message) {
  if (warnings_.size() >= kMaxWarnings) {
    ++droppedWarnings_;
    return;
  }
  warnings_.push_back(std::move(message));
}

void Reader::warnOnce(std::string key, std::string message) {
  if (warnedOnce_.insert(std::move(key)).second) warn(std::move(message));
}

template <class T>
T& Reader::newRecord(std::vector<std::unique_ptr<T>>& records, std::string name, const std::string& table) {
  auto r = std::make_unique<T>();
  r->name = std::move(name);
  if (auto it = db_.tableHeads.find(table); it != db_.tableHeads.end()) r->owner = it->second.id;
  registerLater(*r);
  records.push_back(std::move(r));
  return *records.back();
}

void Reader::registerLater(DbObject& o) {
  // Only $HANDSEED promises a handle above every one still to come in the file, and only while
  // no handle read so far has proved it wrong.
  if (fileHandSeed_ == 0 || maxHandleSeen_ >= fileHandSeed_) {
    db_.registerObject(o);
    return;
  }
  o.id = db_.newHandle();
  deferred_.push_back(&o);
}

void Reader::registerDeferred() {
  for (DbObject* o : deferred_) {
    const ObjectId wanted = o->id;
    if (db_.registerObject(*o) != wanted)
      warn(Format("句柄 %s 被文件中的对象占用，补建的记录改用了新句柄", wanted.handleText().c_str()));
  }
  deferred_.clear();
}

template <class Create>
ObjectId Reader::lookUp(NameIndex& index, std::string_view name, Create&& create) {
  if (name.empty()) return {};
  if (ObjectId id = index.find(name)) return id;
  std::string utf8 = nameText(name);
  if (ObjectId id = index.find(utf8)) return id;
  ObjectId id = create(utf8);
  index.add(utf8, id);
  if (utf8 != name) index.add(name, id);
  return id;
}

ObjectId Reader::layerByName(std::string_view name) {
  return lookUp(layers_, name, [this](const std::string& utf8) {
    Layer& layer = newRecord(db_.layers, utf8, "LAYER");
    layer.linetype = linetypeByName("Continuous");
    // Layer 0 exists in every drawing, declared or not (R12 files often leave it out).
    if (utf8 != "0") warnOnce("layer:" + utf8, Format("图层 %s 未定义，已创建", utf8.c_str()));
    return layer.id;
  });
}

ObjectId Reader::linetypeByName(std::string_view name) {
  return lookUp(linetypes_, name, [this](const std::string& utf8) {
    Linetype& lt = newRecord(db_.linetypes, utf8, "LTYPE");
    // The standard linetypes are implied even where a file lacks their records.
    if (EqualsNoCase(utf8, "Continuous")) lt.description = "Solid line";
    else if (!EqualsNoCase(utf8, "ByLayer") && !EqualsNoCase(utf8, "ByBlock"))
      warnOnce("ltype:" + utf8, Format("线型 %s 未定义，已按实线创建", utf8.c_str()));
    return lt.id;
  });
}

ObjectId Reader::textStyleByName(std::string_view name) {
  return lookUp(textStyles_, name, [this](const std::string& utf8) {
    TextStyle& style = newRecord(db_.textStyles, utf8, "STYLE");
    if (!EqualsNoCase(utf8, "Standard")) warnOnce("style:" + utf8, Format("文字样式 %s 未定义，已创建", utf8.c_str()));
    return style.id;
  });
}

ObjectId Reader::dimStyleByName(std::string_view name) {
  return lookUp(dimStyles_, name, [this](const std::string& utf8) {
    TableRecord& style = newRecord(db_.otherTables["DIMSTYLE"], utf8, "DIMSTYLE");
    style.table = "DIMSTYLE";
    if (!EqualsNoCase(utf8, "Standard"))
      warnOnce("dimstyle:" + utf8, Format("标注样式 %s 未定义，已创建", utf8.c_str()));
    return style.id;
  });
}

ObjectId Reader::recordOfEntity(EntityName kind, std::string_view raw) {
  const std::size_t n = raw.size();
  const auto at = [&](std::size_t i) { return static_cast<std::size_t>(static_cast<unsigned char>(raw[i])); };
  const std::size_t hash = n == 0 ? 0 : n * 7 + at(0) + at(n / 2) * 3 + at(n - 1) * 5;
  EntityNameSlot& slot = entityNames_[static_cast<std::size_t>(kind)][hash % kEntityNameSlots];
  if (slot.set && slot.raw.size() == n && std::memcmp(slot.raw.data(), raw.data(), n) == 0) return slot.id;
  const ObjectId id = DxfReadContext::recordOfEntity(kind, raw);
  slot.raw.assign(raw);
  slot.id = id;
  slot.set = true;
  return id;
}

ObjectId Reader::blockByName(std::string_view name) {
  if (name.empty()) return {};
  if (ObjectId id = blockIds_.find(name)) return id;
  std::string utf8 = nameText(name);
  if (auto it = blocksByName_.find(utf8); it != blocksByName_.end()) return it->second->id;
  // Blocks may be used before their definition (R12 has no block table): warn at the end if
  // the definition never comes.
  BlockRecord& b = createBlockRecord(utf8);
  if (utf8 != name) indexBlock(b, name);
  blocksOnDemand_.push_back(&b);
  return b.id;
}

}  // namespace tv::cad::dxf_read
