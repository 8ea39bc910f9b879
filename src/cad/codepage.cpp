#include "cad/codepage.h"

#include <iconv.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <utility>

#include "cad/utf8.h"

namespace tv::cad {

namespace {

constexpr char kReplacement[] = "\xEF\xBF\xBD";  // U+FFFD

std::string Lower(std::string_view s) {
  std::string out;
  out.reserve(s.size());
  for (char c : s) {
    if (c == ' ' || c == '\t' || c == '\r' || c == '\n') continue;
    out += (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
  }
  return out;
}

bool IsAscii(std::string_view s) {
  const char* p = s.data();
  std::size_t n = s.size();
  std::size_t i = 0;
  for (; i + 8 <= n; i += 8) {
    std::uint64_t w;
    std::memcpy(&w, p + i, 8);
    if (w & 0x8080808080808080ull) return false;
  }
  for (; i < n; ++i)
    if (static_cast<unsigned char>(p[i]) & 0x80) return false;
  return true;
}

std::string RepairUtf8(std::string_view s) {
  if (IsAscii(s)) return std::string(s);
  std::string out;
  out.reserve(s.size());
  for (std::size_t i = 0; i < s.size();) {
    char32_t cp;
    std::size_t n = DecodeUtf8(s, i, cp);
    if (n == 0) {
      out += kReplacement;
      ++i;
    } else {
      out.append(s.data() + i, n);
      i += n;
    }
  }
  return out;
}

bool IsUtf8Name(const std::string& iconvName) { return iconvName == "UTF-8"; }

// The Chinese code page is read as GB18030, a superset of GBK, so that files written by
// GB18030-aware programs keep their four-byte characters; it is written as CP936.
std::string DecodingNameOf(const std::string& iconvName) {
  return iconvName == "CP936" ? std::string("GB18030") : iconvName;
}

struct IconvHandle {
  iconv_t cd = reinterpret_cast<iconv_t>(-1);
  IconvHandle() = default;
  IconvHandle(const char* to, const char* from) : cd(iconv_open(to, from)) {}
  IconvHandle(IconvHandle&& o) noexcept : cd(std::exchange(o.cd, reinterpret_cast<iconv_t>(-1))) {}
  IconvHandle& operator=(IconvHandle&& o) noexcept {
    if (this != &o) {
      reset();
      cd = std::exchange(o.cd, reinterpret_cast<iconv_t>(-1));
    }
    return *this;
  }
  IconvHandle(const IconvHandle&) = delete;
  IconvHandle& operator=(const IconvHandle&) = delete;
  ~IconvHandle() { reset(); }
  bool valid() const { return cd != reinterpret_cast<iconv_t>(-1); }
  void reset() {
    if (valid()) iconv_close(cd);
    cd = reinterpret_cast<iconv_t>(-1);
  }
};

// Runs iconv over `in`; `onInvalid` is called with the remaining input when a sequence does
// not convert and returns how many bytes to skip after appending its substitute to `out`.
template <typename OnInvalid>
void Convert(iconv_t cd, std::string_view in, std::string& out, OnInvalid onInvalid) {
  iconv(cd, nullptr, nullptr, nullptr, nullptr);
  char* src = const_cast<char*>(in.data());
  std::size_t srcLeft = in.size();
  std::size_t used = out.size();
  out.resize(used + in.size() * 2 + 16);
  while (srcLeft > 0) {
    char* dst = out.data() + used;
    std::size_t dstLeft = out.size() - used;
    std::size_t r = iconv(cd, &src, &srcLeft, &dst, &dstLeft);
    used = out.size() - dstLeft;
    if (r != static_cast<std::size_t>(-1)) break;
    if (errno == E2BIG) {
      out.resize(out.size() * 2 + 16);
      continue;
    }
    // EILSEQ or EINVAL (an incomplete sequence at the end): substitute and go on.
    out.resize(used);
    std::size_t skip = std::min(onInvalid(std::string_view(src, srcLeft), out), srcLeft);
    used = out.size();
    src += skip;
    srcLeft -= skip;
    if (out.size() < used + srcLeft * 2 + 16) out.resize(used + srcLeft * 2 + 16);
    iconv(cd, nullptr, nullptr, nullptr, nullptr);
  }
  // Flush any shift state (stateful encodings only).
  for (;;) {
    if (out.size() < used + 16) out.resize(used + 16);
    char* dst = out.data() + used;
    std::size_t dstLeft = out.size() - used;
    std::size_t r = iconv(cd, nullptr, nullptr, &dst, &dstLeft);
    used = out.size() - dstLeft;
    if (r != static_cast<std::size_t>(-1) || errno != E2BIG) break;
    out.resize(out.size() * 2);
  }
  out.resize(used);
}

}  // namespace

std::optional<std::string> IconvNameOfCodePage(std::string_view dwgCodePage) {
  const std::string s = Lower(dwgCodePage);
  if (s.empty()) return std::nullopt;
  auto numberAfter = [&s](std::string_view prefix) -> std::optional<int> {
    if (s.size() <= prefix.size() || s.compare(0, prefix.size(), prefix) != 0) return std::nullopt;
    int v = 0;
    for (std::size_t i = prefix.size(); i < s.size(); ++i) {
      if (s[i] < '0' || s[i] > '9' || v > 100000) return std::nullopt;
      v = v * 10 + (s[i] - '0');
    }
    return v;
  };
  auto windows = [](int n) -> std::optional<std::string> {
    switch (n) {
      case 874:
        return "CP874";
      case 932:
        return "CP932";
      case 936:
        return "CP936";
      case 949:
        return "CP949";
      case 950:
        return "CP950";
      case 1361:
        return "JOHAB";
      case 65001:
        return "UTF-8";
      default:
        if (n >= 1250 && n <= 1258) return "CP" + std::to_string(n);
        return std::nullopt;
    }
  };
  auto dos = [&windows](int n) -> std::optional<std::string> {
    switch (n) {
      case 437:
      case 850:
      case 852:
      case 855:
      case 857:
      case 860:
      case 861:
      case 862:
      case 863:
      case 864:
      case 865:
      case 866:
      case 869:
        return "CP" + std::to_string(n);
      case 720:
        return std::nullopt;  // iconv has no DOS Arabic
      default:
        return windows(n);  // dos932 … dos950 are the same double-byte pages
    }
  };
  if (auto n = numberAfter("ansi_")) return windows(*n);
  if (auto n = numberAfter("ansi")) return windows(*n);
  if (auto n = numberAfter("dos")) return dos(*n);
  if (auto n = numberAfter("cp")) return *n == 874 || *n >= 932 ? windows(*n) : dos(*n);
  if (auto n = numberAfter("windows-")) return windows(*n);
  if (auto n = numberAfter("iso8859-")) {
    if (*n >= 1 && *n <= 16 && *n != 12) return "ISO-8859-" + std::to_string(*n);
    return std::nullopt;
  }
  if (auto n = numberAfter("iso-8859-")) {
    if (*n >= 1 && *n <= 16 && *n != 12) return "ISO-8859-" + std::to_string(*n);
    return std::nullopt;
  }
  static constexpr std::array<std::pair<std::string_view, std::string_view>, 12> kNames{{
      {"utf-8", "UTF-8"},
      {"utf8", "UTF-8"},
      {"gbk", "CP936"},
      {"gb2312", "CP936"},
      {"gb18030", "CP936"},
      {"big5", "CP950"},
      {"ksc5601", "CP949"},
      {"uhc", "CP949"},
      {"johab", "JOHAB"},
      {"shift_jis", "CP932"},
      {"mac-roman", "MACINTOSH"},
      // Old files say "ascii" yet hold Western ANSI bytes.
      {"ascii", "CP1252"},
  }};
  for (const auto& [key, name] : kNames)
    if (s == key) return std::string(name);
  return std::nullopt;
}

struct CodePageDecoder::Impl {
  std::string name;    // iconv name
  IconvHandle handle;  // invalid for UTF-8
};

CodePageDecoder::CodePageDecoder() : impl_(std::make_unique<Impl>()) {}
CodePageDecoder::CodePageDecoder(CodePageDecoder&&) noexcept = default;
CodePageDecoder& CodePageDecoder::operator=(CodePageDecoder&&) noexcept = default;
CodePageDecoder::~CodePageDecoder() = default;

std::optional<CodePageDecoder> CodePageDecoder::create(std::string_view dwgCodePage) {
  auto name = IconvNameOfCodePage(dwgCodePage);
  if (!name) return std::nullopt;
  if (IsUtf8Name(*name)) return utf8();
  CodePageDecoder d;
  d.impl_->handle = IconvHandle("UTF-8", DecodingNameOf(*name).c_str());
  if (!d.impl_->handle.valid()) return std::nullopt;
  d.impl_->name = *name;
  return d;
}

CodePageDecoder CodePageDecoder::utf8() {
  CodePageDecoder d;
  d.impl_->name = "UTF-8";
  return d;
}

std::string CodePageDecoder::toUtf8(std::string_view bytes) const {
  if (IsAscii(bytes)) return std::string(bytes);
  if (!impl_->handle.valid()) return RepairUtf8(bytes);
  std::string out;
  const bool chinese = impl_->name == "CP936";
  Convert(impl_->handle.cd, bytes, out, [chinese](std::string_view rest, std::string& o) -> std::size_t {
    // GB18030 lacks CP936's single-byte euro sign.
    if (chinese && static_cast<unsigned char>(rest[0]) == 0x80)
      o += "\xE2\x82\xAC";
    else
      o += kReplacement;
    return 1;
  });
  return out;
}

const std::string& CodePageDecoder::name() const { return impl_->name; }

std::optional<std::string> Utf8ToCodePage(std::string_view utf8, std::string_view dwgCodePage) {
  auto name = IconvNameOfCodePage(dwgCodePage);
  if (!name) return std::nullopt;
  if (IsUtf8Name(*name)) return RepairUtf8(utf8);
  if (IsAscii(utf8)) return std::string(utf8);  // every supported page is an ASCII superset
  IconvHandle h(name->c_str(), "UTF-8");
  if (!h.valid()) return std::nullopt;
  std::string out;
  Convert(h.cd, utf8, out, [](std::string_view rest, std::string& o) -> std::size_t {
    o += '?';
    char32_t cp;
    std::size_t n = DecodeUtf8(rest, 0, cp);
    return n ? n : 1;
  });
  return out;
}

namespace {

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// Value of exactly four hex digits at s[i], or -1.
int Hex4(std::string_view s, std::size_t i) {
  if (i + 4 > s.size()) return -1;
  int v = 0;
  for (std::size_t k = 0; k < 4; ++k) {
    int d = HexDigit(s[i + k]);
    if (d < 0) return -1;
    v = v * 16 + d;
  }
  return v;
}

}  // namespace

std::string DecodeDxfEscapes(std::string_view s) {
  if (s.find('\\') == std::string_view::npos) return std::string(s);
  std::string out;
  out.reserve(s.size());
  std::array<std::optional<CodePageDecoder>, 6> decoders;  // by \M+n, opened on first use
  std::array<bool, 6> tried{};
  static constexpr std::array<std::string_view, 6> kPages{"",         "ANSI_932",  "ANSI_950",
                                                          "ANSI_949", "ANSI_1361", "ANSI_936"};
  std::size_t i = 0;
  while (i < s.size()) {
    std::size_t bs = s.find('\\', i);
    if (bs == std::string_view::npos) {
      out.append(s.substr(i));
      break;
    }
    out.append(s.substr(i, bs - i));
    i = bs;
    char kind = i + 1 < s.size() ? s[i + 1] : '\0';
    if (kind == '\\') {  // an escaped backslash: the next character is not the start of an escape
      out += "\\\\";
      i += 2;
      continue;
    }
    if (kind == 'U' && i + 2 < s.size() && s[i + 2] == '+') {
      int cp = Hex4(s, i + 3);
      if (cp >= 0xD800 && cp <= 0xDBFF) {
        int lo = (i + 9 < s.size() && s[i + 7] == '\\' && s[i + 8] == 'U' && s[i + 9] == '+')
                     ? Hex4(s, i + 10)
                     : -1;
        if (lo >= 0xDC00 && lo <= 0xDFFF) {
          AppendUtf8(out, 0x10000 + ((static_cast<char32_t>(cp) - 0xD800) << 10) +
                              (static_cast<char32_t>(lo) - 0xDC00));
          i += 14;
          continue;
        }
        cp = -1;  // a lone surrogate stays as written
      }
      if (cp > 0 && !(cp >= 0xDC00 && cp <= 0xDFFF)) {
        AppendUtf8(out, static_cast<char32_t>(cp));
        i += 7;
        continue;
      }
    } else if (kind == 'M' && i + 3 < s.size() && s[i + 2] == '+' && s[i + 3] >= '1' && s[i + 3] <= '5') {
      int v = Hex4(s, i + 4);
      if (v >= 0) {
        int n = s[i + 3] - '0';
        if (!tried[n]) {
          tried[n] = true;
          decoders[n] = CodePageDecoder::create(kPages[n]);
        }
        std::string bytes;
        if (v >> 8) bytes += static_cast<char>(v >> 8);
        bytes += static_cast<char>(v & 0xFF);
        out += decoders[n] ? decoders[n]->toUtf8(bytes) : std::string(kReplacement);
        i += 8;
        continue;
      }
    }
    out += '\\';
    ++i;
  }
  return out;
}

std::string EncodeDxfEscapes(std::string_view utf8) {
  if (IsAscii(utf8)) return std::string(utf8);
  std::string out;
  out.reserve(utf8.size() * 2);
  auto put = [&out](unsigned v) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    out += "\\U+";
    for (int shift = 12; shift >= 0; shift -= 4) out += kHex[(v >> shift) & 0xF];
  };
  for (std::size_t i = 0; i < utf8.size();) {
    char32_t cp = 0;
    std::size_t n = DecodeUtf8(utf8, i, cp);
    if (n == 0) {
      cp = 0xFFFD;
      n = 1;
    }
    if (cp < 0x80) {
      out += static_cast<char>(cp);
    } else if (cp < 0x10000) {
      put(static_cast<unsigned>(cp));
    } else {
      unsigned v = static_cast<unsigned>(cp) - 0x10000;
      put(0xD800 + (v >> 10));
      put(0xDC00 + (v & 0x3FF));
    }
    i += n;
  }
  return out;
}

}  // namespace tv::cad
