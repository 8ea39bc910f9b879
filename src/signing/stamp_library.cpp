// The tvlib2 file: little-endian 32-bit integers and IEEE doubles without padding or magic; names
// as UTF-16 code units.
#include "signing/stamp_library.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "host/text_files.h"
#include "settings/value_text.h"

namespace tv::signing {

namespace {

constexpr std::string_view kKeepQuestion = "原印章库信息是否保留 ？";

class ByteWriter {
 public:
  void u32(std::uint32_t v) {
    for (int i = 0; i < 4; ++i) bytes_.push_back(static_cast<char>((v >> (8 * i)) & 0xFF));
  }
  void i32(std::int32_t v) { u32(static_cast<std::uint32_t>(v)); }
  void real(double v) {
    const auto bits = std::bit_cast<std::uint64_t>(v);
    u32(static_cast<std::uint32_t>(bits));
    u32(static_cast<std::uint32_t>(bits >> 32));
  }
  void u16(std::uint16_t v) {
    bytes_.push_back(static_cast<char>(v & 0xFF));
    bytes_.push_back(static_cast<char>(v >> 8));
  }
  void raw(const std::string& b) { bytes_ += b; }
  const std::string& bytes() const { return bytes_; }

 private:
  std::string bytes_;
};

// A read past the end fails, gives zeros and fails every later read, as a stream does.
class ByteReader {
 public:
  explicit ByteReader(const std::string& bytes) : bytes_(bytes) {}
  std::uint32_t u32() {
    std::uint32_t v = 0;
    if (!take(4)) return 0;
    for (int i = 0; i < 4; ++i) v |= std::uint32_t{static_cast<unsigned char>(bytes_[at_ - 4 + i])} << (8 * i);
    return v;
  }
  std::int32_t i32() { return static_cast<std::int32_t>(u32()); }
  double real() {
    const std::uint64_t low = u32(), high = u32();
    return failed_ ? 0.0 : std::bit_cast<double>(low | (high << 32));
  }
  std::uint16_t u16() {
    if (!take(2)) return 0;
    return static_cast<std::uint16_t>(static_cast<unsigned char>(bytes_[at_ - 2]) |
                                      (static_cast<unsigned char>(bytes_[at_ - 1]) << 8));
  }
  // `n` bytes; none (and a failed reader) when the file holds fewer, so that no size in a file
  // decides what is allocated.
  std::string raw(std::size_t n) {
    if (!take(n)) return {};
    return bytes_.substr(at_ - n, n);
  }
  void fail() { failed_ = true; }
  bool failed() const { return failed_; }
  bool atEnd() const { return at_ == bytes_.size(); }
  std::size_t left() const { return failed_ ? 0 : bytes_.size() - at_; }

 private:
  bool take(std::size_t n) {
    if (failed_ || bytes_.size() - at_ < n) {
      failed_ = true;
      return false;
    }
    at_ += n;
    return true;
  }
  const std::string& bytes_;
  std::size_t at_ = 0;
  bool failed_ = false;
};

void AppendUtf8(std::string& out, char32_t c) {
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else if (c < 0x800) {
    out += static_cast<char>(0xC0 | (c >> 6));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    out += static_cast<char>(0xE0 | (c >> 12));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (c >> 18));
    out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  }
}

// UTF-8 to UTF-16 code units; a malformed byte stands for itself (U+0080 to U+00FF).
std::vector<std::uint16_t> ToUtf16(const std::string& text) {
  std::vector<std::uint16_t> units;
  for (std::size_t i = 0; i < text.size();) {
    const auto b = static_cast<unsigned char>(text[i]);
    const int extra = b >= 0xF0 ? 3 : b >= 0xE0 ? 2 : b >= 0xC0 ? 1 : 0;
    char32_t c = extra == 3 ? b & 0x07 : extra == 2 ? b & 0x0F : extra == 1 ? b & 0x1F : b;
    bool ok = b < 0x80 || extra > 0;
    if (i + extra >= text.size()) ok = false;
    for (int k = 1; ok && k <= extra; ++k) {
      const auto t = static_cast<unsigned char>(text[i + k]);
      if ((t & 0xC0) != 0x80) ok = false;
      c = (c << 6) | (t & 0x3F);
    }
    if (!ok) {
      units.push_back(b);
      ++i;
      continue;
    }
    i += 1 + extra;
    if (c >= 0x10000) {
      c -= 0x10000;
      units.push_back(static_cast<std::uint16_t>(0xD800 + (c >> 10)));
      units.push_back(static_cast<std::uint16_t>(0xDC00 + (c & 0x3FF)));
    } else {
      units.push_back(static_cast<std::uint16_t>(c));
    }
  }
  return units;
}

// UTF-16 code units to UTF-8; a lone surrogate becomes U+FFFD.
std::string FromUtf16(const std::vector<std::uint16_t>& units) {
  std::string out;
  for (std::size_t i = 0; i < units.size(); ++i) {
    char32_t c = units[i];
    if (c >= 0xD800 && c < 0xDC00 && i + 1 < units.size() && units[i + 1] >= 0xDC00 && units[i + 1] < 0xE000) {
      c = 0x10000 + ((c - 0xD800) << 10) + (units[++i] - 0xDC00);
    } else if (c >= 0xD800 && c < 0xE000) {
      c = 0xFFFD;
    }
    AppendUtf8(out, c);
  }
  return out;
}

void ReadStamp(ByteReader& r, TV_Stamp& stamp) {
  r.i32();  // record version
  const std::int32_t n = r.i32();
  if (n > 0) {
    stamp.image = r.raw(static_cast<std::size_t>(n));
    stamp.image_size = r.failed() ? 0 : n;
  }
  const std::int32_t k = r.i32();
  std::vector<std::uint16_t> units;
  // Two bytes a unit: a length the file can't back fails the reader at once.
  if (k > 0 && static_cast<std::size_t>(k) <= r.left() / 2) {
    units.reserve(static_cast<std::size_t>(k));
    for (std::int32_t i = 0; i < k; ++i) units.push_back(r.u16());
  } else if (k > 0) {
    r.fail();
  }
  stamp.name = settings::DecodeToken(FromUtf16(units));
  stamp.width = r.real();
  stamp.height = r.real();
  stamp.auth_code = RestoreCode(r.i32());
  stamp.valid_until = r.i32();
  stamp.stamp_kind = r.i32();
  stamp.enabled = r.i32();
}

bool ReadInto(StampLibrary& library, const std::string& bytes, std::int32_t* version, std::int32_t* count) {
  ByteReader r(bytes);
  const std::int32_t fileVersion = r.i32();
  library.library_number = RestoreCode(r.i32());
  const std::int32_t records = r.i32();
  if (version) *version = fileVersion;
  if (count) *count = records;
  for (std::int32_t i = 0; i < records; ++i) {
    // Past the end every record reads as the same empty one: the first of them decides for all.
    const bool exhausted = r.failed();
    auto stamp = std::make_unique<TV_Stamp>();
    ReadStamp(r, *stamp);
    if (!FindStampByName(library, stamp->name)) library.stamps.push_back(std::move(stamp));
    if (exhausted) break;
  }
  return !r.failed() && r.atEnd() && records >= 0 && settings::IsFileVersion(fileVersion);
}

}  // namespace

StampLibrary& GlobalStampLibrary() {
  static StampLibrary library;
  return library;
}

void ClearStampLibrary(StampLibrary& library) { library.stamps.clear(); }

TV_Stamp* FindStampByName(const StampLibrary& library, const std::string& name) {
  for (const auto& s : library.stamps)
    if (s->name == name) return s.get();
  return nullptr;
}

void SortStampsByName(StampLibrary& library) {
  SortRecordsByKey(library.stamps, [](const TV_Stamp& s) -> const std::string& { return s.name; });
}

std::optional<bool> AskKeepStamps(const StampLibrary& library) { return AskKeepRecords(kKeepQuestion, library.stamps.empty()); }

bool ReadStampFileInto(StampLibrary& library, const std::string& path, bool replace) {
  const std::optional<std::string> bytes = host::ReadFileBytes(path);
  if (!bytes) return false;
  if (replace) ClearStampLibrary(library);
  ReadInto(library, *bytes, nullptr, nullptr);
  return true;
}

bool LoadStampLibrary(StampLibrary& library, const std::string& path, bool askMerge) {
  bool replace = true;
  if (askMerge) {
    const std::optional<bool> keep = AskKeepStamps(library);
    if (!keep) return false;
    replace = !*keep;
  }
  // A file that can't be opened still leaves the library emptied when it was to be replaced.
  if (replace) ClearStampLibrary(library);
  return ReadStampFileInto(library, path, false);
}

std::string ComposeStampLibrary(const StampLibrary& library) {
  ByteWriter w;
  w.i32(settings::kFileVersion);
  w.i32(StoreCode(library.library_number));
  w.i32(static_cast<std::int32_t>(library.stamps.size()));
  for (const auto& s : library.stamps) {
    w.i32(settings::kFileVersion);
    // The size written is the bytes there are: a record never announces more than it holds.
    const bool hasImage = s->image_size > 0 && !s->image.empty();
    w.i32(hasImage ? static_cast<std::int32_t>(s->image.size()) : std::min(s->image_size, 0));
    if (hasImage) w.raw(s->image);
    const std::vector<std::uint16_t> units = ToUtf16(settings::EncodeToken(s->name));
    w.i32(static_cast<std::int32_t>(units.size()));
    for (std::uint16_t u : units) w.u16(u);
    w.real(s->width);
    w.real(s->height);
    w.i32(StoreCode(s->auth_code));
    w.i32(s->valid_until);
    w.i32(s->stamp_kind);
    w.i32(s->enabled);
  }
  return w.bytes();
}

bool SaveStampLibrary(StampLibrary& library, const std::string& path) {
  SortStampsByName(library);
  return host::WriteFileReplacing(path, ComposeStampLibrary(library));
}

std::optional<LibraryFileFacts> InspectStampLibraryFile(const std::string& path) {
  const std::optional<std::string> bytes = host::ReadFileBytes(path);
  if (!bytes) return std::nullopt;
  StampLibrary scratch;
  LibraryFileFacts facts;
  facts.complete = ReadInto(scratch, *bytes, &facts.version, &facts.recordCount);
  return facts;
}

bool LoadStampImage(TV_Stamp& stamp, const std::string& path) {
  stamp.image.clear();
  stamp.image_size = 0;
  std::optional<std::string> bytes = host::ReadFileBytes(path);
  if (!bytes || bytes->empty() || bytes->size() > 0x7FFFFFFF) return false;
  stamp.image = std::move(*bytes);
  stamp.image_size = static_cast<std::int32_t>(stamp.image.size());
  return true;
}

bool SaveStampImage(const TV_Stamp& stamp, const std::string& path) {
  if (stamp.image_size < 1 || stamp.image.empty()) return false;
  return host::WriteFileReplacing(path, stamp.image);
}

}  // namespace tv::signing
