#include "cad/dxf_tokenizer.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstring>
#include <utility>

#include "cad/utf8.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tv::cad {

namespace {

// Large enough that reads cost little next to parsing, small enough that the buffers (two in
// use at most, two pooled) stay a small part of a loaded drawing.
constexpr std::size_t kDefaultBlockSize = std::size_t{256} << 10;
constexpr std::size_t kMinBlockSize = 64;
constexpr std::size_t kMaxPooledBlocks = 2;
constexpr char kBinarySentinel[] = "AutoCAD Binary DXF\r\n\x1a";  // + the terminating NUL: 22 bytes
constexpr std::size_t kBinarySentinelSize = 22;
constexpr std::size_t kMessageExcerpt = 40;
constexpr int kLastTabledCode = 1071;

constexpr std::array<GroupKind, kLastTabledCode + 1> MakeKindTable() {
  std::array<GroupKind, kLastTabledCode + 1> t{};
  for (auto& k : t) k = GroupKind::String;
  auto set = [&t](int from, int to, GroupKind k) {
    for (int c = from; c <= to; ++c) t[static_cast<std::size_t>(c)] = k;
  };
  set(10, 59, GroupKind::Double);
  set(60, 79, GroupKind::Int16);
  set(90, 99, GroupKind::Int32);
  set(110, 149, GroupKind::Double);
  set(160, 169, GroupKind::Int64);
  set(170, 179, GroupKind::Int16);
  set(210, 239, GroupKind::Double);
  set(270, 289, GroupKind::Int16);
  set(290, 299, GroupKind::Bool);
  set(310, 319, GroupKind::Binary);
  set(320, 369, GroupKind::Handle);
  set(370, 389, GroupKind::Int16);
  set(390, 399, GroupKind::Handle);
  set(400, 409, GroupKind::Int16);
  set(420, 429, GroupKind::Int32);
  set(440, 459, GroupKind::Int32);
  set(460, 469, GroupKind::Double);
  set(480, 481, GroupKind::Handle);
  set(1004, 1004, GroupKind::Binary);
  set(1010, 1059, GroupKind::Double);
  set(1060, 1070, GroupKind::Int16);
  set(1071, 1071, GroupKind::Int32);
  set(5, 5, GroupKind::Handle);
  set(105, 105, GroupKind::Handle);
  return t;
}

constexpr auto kKindTable = MakeKindTable();

inline GroupKind KindOf(int code) {
  return static_cast<unsigned>(code) <= static_cast<unsigned>(kLastTabledCode)
             ? kKindTable[static_cast<std::size_t>(code)]
             : GroupKind::String;
}

inline bool IsBlank(char c) { return c == ' ' || c == '\t'; }

std::string_view TrimBlanks(std::string_view s) {
  while (!s.empty() && IsBlank(s.front())) s.remove_prefix(1);
  while (!s.empty() && IsBlank(s.back())) s.remove_suffix(1);
  return s;
}

// Cuts text for an error message to at most kMessageExcerpt bytes without splitting a UTF-8 character.
std::string Excerpt(std::string_view s) {
  if (s.size() <= kMessageExcerpt) return std::string(s);
  return std::string(s.substr(0, Utf8CharStart(s, kMessageExcerpt)));
}

template <typename... Args>
std::string Fmt(const char* fmt, Args... args) {
  char buf[512];
  int n = std::snprintf(buf, sizeof buf, fmt, args...);
  if (n < 0) return {};
  if (static_cast<std::size_t>(n) < sizeof buf) return std::string(buf, static_cast<std::size_t>(n));
  std::string out(static_cast<std::size_t>(n) + 1, '\0');
  std::snprintf(out.data(), out.size(), fmt, args...);
  out.resize(static_cast<std::size_t>(n));
  return out;
}

inline std::int64_t RoundToInt64(double d) {
  // Range check first: converting NaN or an out-of-range double is undefined.
  if (!(d > -9.2e18 && d < 9.2e18)) return 0;
  return static_cast<std::int64_t>(d < 0 ? d - 0.5 : d + 0.5);
}

bool ParseDouble(std::string_view s, double& out) {
  const char* first = s.data();
  const char* last = first + s.size();
  if (first != last && *first == '+') ++first;
  if (first == last) return false;
  auto [p, ec] = std::from_chars(first, last, out);
  return ec == std::errc() && p == last;
}

// Integers: decimal, but real files also write "1.0" or "1e3" where an integer belongs.
bool ParseInteger(std::string_view s, std::int64_t& out) {
  const char* first = s.data();
  const char* last = first + s.size();
  if (first != last && *first == '+') ++first;
  if (first == last) return false;
  auto [p, ec] = std::from_chars(first, last, out);
  if (ec == std::errc() && p == last) return true;
  double d = 0;
  if (!ParseDouble(s, d) || !(d > -9.2e18 && d < 9.2e18)) return false;
  out = RoundToInt64(d);
  return true;
}

constexpr std::array<std::int8_t, 256> MakeHexTable() {
  std::array<std::int8_t, 256> t{};
  for (auto& v : t) v = -1;
  for (int c = '0'; c <= '9'; ++c) t[static_cast<std::size_t>(c)] = static_cast<std::int8_t>(c - '0');
  for (int c = 'a'; c <= 'f'; ++c) t[static_cast<std::size_t>(c)] = static_cast<std::int8_t>(c - 'a' + 10);
  for (int c = 'A'; c <= 'F'; ++c) t[static_cast<std::size_t>(c)] = static_cast<std::int8_t>(c - 'A' + 10);
  return t;
}

constexpr auto kHexTable = MakeHexTable();

// Handles are hex; junk gives 0 rather than an error because real files contain it.
std::int64_t ParseHandle(std::string_view s) {
  if (!s.empty() && s.size() <= 16) {
    // Sixteen digits cannot overflow: the usual handle needs no general parser.
    std::uint64_t v = 0;
    for (char c : s) {
      const int d = kHexTable[static_cast<unsigned char>(c)];
      if (d < 0) return 0;
      v = v << 4 | static_cast<unsigned>(d);
    }
    return static_cast<std::int64_t>(v);
  }
  std::uint64_t v = 0;
  auto [p, ec] = std::from_chars(s.data(), s.data() + s.size(), v, 16);
  if (ec != std::errc() || p != s.data() + s.size()) return 0;
  return static_cast<std::int64_t>(v);
}

constexpr double kPow10[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                             1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// Writers that print the shortest text that reads back give up to 17 digits ("19.049999999999997").
// Their mantissa and the power of ten are exact in the x87 extended format, whose quotient is
// rounded once to 64 bits; rounding that to a double is correct unless it landed exactly halfway
// between two doubles (the 11 bits below a double's mantissa 10000000000), which from_chars decides.
inline bool LongQuotient(std::uint64_t m, int frac, double& out) {
#if defined(__x86_64__) && LDBL_MANT_DIG == 64
  const long double q = static_cast<long double>(m) / static_cast<long double>(kPow10[frac]);
  std::uint64_t bits;
  std::memcpy(&bits, &q, sizeof bits);  // the explicit 64-bit mantissa comes first
  if ((bits & 0x7FF) == 0x400) return false;
  out = static_cast<double>(q);
  return true;
#else
  (void)m, (void)frac, (void)out;
  return false;
#endif
}

// The usual "-123.456" in at most 15 digits: the mantissa and the power of ten are exact
// doubles, so one division gives the correctly rounded value. Anything else goes to from_chars.
inline bool FastDouble(const char* p, const char* e, double& out) {
  bool neg = p < e && *p == '-';
  p += neg;
  std::uint64_t m = 0;
  int digits = 0, frac = 0;
  while (p < e && static_cast<unsigned>(*p - '0') < 10u)
    m = m * 10 + static_cast<unsigned>(*p++ - '0'), ++digits;
  if (p < e && *p == '.') {
    ++p;
    while (p < e && static_cast<unsigned>(*p - '0') < 10u)
      m = m * 10 + static_cast<unsigned>(*p++ - '0'), ++digits, ++frac;
  }
  if (p != e || digits == 0 || digits > 19) return false;
  double d;
  if (digits <= 15) {
    d = static_cast<double>(m) / kPow10[frac];
  } else if (!LongQuotient(m, frac, d)) {
    return false;
  }
  out = neg ? -d : d;
  return true;
}

inline bool FastInteger(const char* p, const char* e, std::int64_t& out) {
  bool neg = p < e && *p == '-';
  p += neg;
  if (p == e || e - p > 18) return false;
  std::int64_t v = 0;
  for (; p < e; ++p) {
    unsigned d = static_cast<unsigned>(*p - '0');
    if (d >= 10u) return false;
    v = v * 10 + d;
  }
  out = neg ? -v : v;
  return true;
}

inline const char* FindLineEnd(const char* p, const char* e) {
  return static_cast<const char*>(std::memchr(p, '\n', static_cast<std::size_t>(e - p)));
}

// Group lines are short: one 16-byte compare usually finds both line ends of a pair.
inline void FindTwoLineEnds(const char* p, const char* e, const char*& first, const char*& second) {
#if defined(__SSE2__)
  if (e - p >= 16) {
    unsigned mask = static_cast<unsigned>(_mm_movemask_epi8(
        _mm_cmpeq_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)), _mm_set1_epi8('\n'))));
    if (mask) {
      first = p + __builtin_ctz(mask);
      mask &= mask - 1;
      second = mask ? p + __builtin_ctz(mask) : FindLineEnd(first + 1, e);
      return;
    }
  }
#endif
  first = FindLineEnd(p, e);
  second = first ? FindLineEnd(first + 1, e) : nullptr;
}

// A chunk of the input. Blocks never move while views into them may be alive: when the parser
// runs off the end of one, the unfinished group is copied into a fresh block and the old one is
// kept until release().
struct Block {
  std::unique_ptr<char[]> data;
  std::size_t capacity = 0;
  std::uint64_t fileOffset = 0;  // offset in the input of data[0]
};

inline std::uint16_t LoadU16(const char* p) {
  std::uint16_t v;
  std::memcpy(&v, p, sizeof v);
  return v;  // the platform is little-endian, as binary DXF is
}

}  // namespace

GroupKind KindOfGroupCode(int code) { return KindOf(code); }

struct DxfTokenizer::Impl {
  enum class Format { Unknown, Ascii, BinaryR12, BinaryR13 };

  // Source: a file descriptor or a string in memory.
  int fd = -1;
  std::string memory;
  std::size_t memoryPos = 0;
  bool sourceDone = false;

  std::size_t blockSize = kDefaultBlockSize;
  Block cur;
  bool curHandedOut = false;  // a group returned from `cur` may still be referenced
  std::vector<Block> retired;
  std::vector<Block> pool;

  const char* pos = nullptr;  // next unparsed byte in cur
  const char* end = nullptr;  // end of valid data in cur

  Format format = Format::Unknown;
  std::uint64_t lineNo = 1;
  std::uint64_t size = 0;

  // One level of push-back: the last group is parsed again from where it started. It always lies
  // in `cur` (a refill copies a whole unfinished group), so its views stay the same.
  const char* lastStart = nullptr;
  std::uint64_t lastLineNo = 0;
  bool failed = false;
  bool atEof = false;
  std::string error;

  ~Impl() {
    if (fd >= 0) ::close(fd);
  }

  std::uint64_t offsetOf(const char* p) const {
    return cur.fileOffset + static_cast<std::uint64_t>(p - cur.data.get());
  }

  bool fail(std::string message) {
    failed = true;
    error = std::move(message);
    return false;
  }

  // Reads as much as fits into [dst, dst + room); returns the count, 0 at end of input.
  std::size_t readSource(char* dst, std::size_t room) {
    if (sourceDone || room == 0) return 0;
    if (fd < 0) {
      std::size_t n = std::min(room, memory.size() - memoryPos);
      std::memcpy(dst, memory.data() + memoryPos, n);
      memoryPos += n;
      if (memoryPos == memory.size()) sourceDone = true;
      return n;
    }
    std::size_t total = 0;
    while (total < room) {
      ssize_t n = ::read(fd, dst + total, room - total);
      if (n < 0) {
        if (errno == EINTR) continue;
        fail(Fmt("读取文件失败：%s", std::strerror(errno)));
        sourceDone = true;
        break;
      }
      if (n == 0) {
        sourceDone = true;
        break;
      }
      total += static_cast<std::size_t>(n);
    }
    return total;
  }

  Block takeBlock(std::size_t minCapacity) {
    while (!pool.empty()) {
      Block b = std::move(pool.back());
      pool.pop_back();
      if (b.capacity >= minCapacity) return b;
    }
    Block b;
    b.capacity = minCapacity;
    b.data = std::make_unique_for_overwrite<char[]>(minCapacity);
    return b;
  }

  void recycle(Block&& b) {
    if (!b.data) return;
    if (pool.size() < kMaxPooledBlocks) pool.push_back(std::move(b));
  }

  // Moves the unfinished bytes [keep, end) into a fresh block and reads more after them.
  // Returns false when no more input arrived (end of input or a read error).
  bool refill(const char*& keep) {
    if (sourceDone) return false;
    std::size_t tail = static_cast<std::size_t>(end - keep);
    std::size_t want = std::max(blockSize, tail <= blockSize / 2 ? blockSize : tail * 2);
    Block next = takeBlock(want);
    next.fileOffset = offsetOf(keep);
    if (tail) std::memcpy(next.data.get(), keep, tail);
    std::size_t got = readSource(next.data.get() + tail, next.capacity - tail);
    if (cur.data) {
      if (curHandedOut)
        retired.push_back(std::move(cur));
      else
        recycle(std::move(cur));
    }
    cur = std::move(next);
    curHandedOut = false;
    pos = keep = cur.data.get();
    end = pos + tail + got;
    return got > 0;
  }

  // Initial read: enough to recognise the format.
  [[gnu::noinline]] void start() {
    const char* keep = pos;
    while (!sourceDone && static_cast<std::size_t>(end - pos) < kBinarySentinelSize + 2) {
      if (!refill(keep) && failed) return;
    }
    std::size_t avail = static_cast<std::size_t>(end - pos);
    if (avail >= kBinarySentinelSize && std::memcmp(pos, kBinarySentinel, kBinarySentinelSize) == 0) {
      pos += kBinarySentinelSize;
      // The first group is normally 0/SECTION: "00 00 S..." with 2-byte codes, "00 S..." with
      // 1-byte codes. R12 also marks codes above 254 with a 255 escape.
      bool r13 =
          avail >= kBinarySentinelSize + 2 && static_cast<unsigned char>(pos[0]) != 0xFF && pos[1] == 0;
      format = r13 ? Format::BinaryR13 : Format::BinaryR12;
      return;
    }
    format = Format::Ascii;
    if (avail >= 3 && std::memcmp(pos, "\xEF\xBB\xBF", 3) == 0) pos += 3;
  }

  // ---- ASCII -------------------------------------------------------------------------------

  // True when nothing but blanks, line ends and DOS end-of-file marks remain in the input.
  bool restIsBlank(const char* from) {
    const char* keep = from;
    for (;;) {
      for (const char* p = keep; p < end; ++p) {
        char c = *p;
        if (!(IsBlank(c) || c == '\r' || c == '\n' || c == '\x1a' || c == '\0')) return false;
      }
      keep = end;
      if (!refill(keep)) return !failed;
    }
  }

  static bool parseCodeSlow(std::string_view line, int& code) {
    line = TrimBlanks(line);
    if (line.empty() || line.size() > 9) return false;
    const char* first = line.data();
    if (*first == '+') ++first;
    auto [p, ec] = std::from_chars(first, line.data() + line.size(), code);
    return ec == std::errc() && p == line.data() + line.size();
  }

  static inline bool parseCode(const char* b, const char* e, int& code) {
    // Fast path: plain decimal digits, optionally followed by CR.
    const char* p = b;
    while (p < e && *p == ' ') ++p;  // codes are usually right-aligned in three columns
    const char* digits = p;
    int v = 0;
    while (p < e && static_cast<unsigned>(*p - '0') < 10u && p - digits < 9) v = v * 10 + (*p++ - '0');
    if (p > digits && (p == e || (*p == '\r' && p + 1 == e))) {
      code = v;
      return true;
    }
    if (e > b && e[-1] == '\r') --e;
    return parseCodeSlow(std::string_view(b, static_cast<std::size_t>(e - b)), code);
  }

  // Coordinates and counts make up most groups: numbers without blanks around them are parsed
  // here at once, in tests ordered by frequency; everything else takes the general way.
  [[gnu::always_inline]] bool setAsciiValue(DxfGroup& g, const char* vb, const char* ve) {
    if (ve > vb && ve[-1] == '\r') --ve;
    const GroupKind kind = KindOf(g.code);
    g.kind = kind;
    g.text = std::string_view(vb, static_cast<std::size_t>(ve - vb));
    if (kind == GroupKind::Double) {
      if (ve > vb && !IsBlank(*vb) && !IsBlank(ve[-1]) && FastDouble(vb, ve, g.real)) [[likely]] {
        g.integer = RoundToInt64(g.real);
        return true;
      }
    } else if (kind == GroupKind::String) {
      g.real = 0;
      g.integer = 0;
      return true;
    } else if (kind == GroupKind::Handle) {
      if (ve > vb && !IsBlank(*vb) && !IsBlank(ve[-1])) [[likely]] {
        g.real = 0;
        g.integer = ParseHandle(g.text);
        return true;
      }
    } else if (kind == GroupKind::Int16 || kind == GroupKind::Int32 || kind == GroupKind::Int64) {
      if (ve > vb && !IsBlank(*vb) && !IsBlank(ve[-1]) && FastInteger(vb, ve, g.integer)) [[likely]] {
        g.real = static_cast<double>(g.integer);
        return true;
      }
    }
    return setAsciiValueSlow(g, vb, ve);
  }

  [[gnu::noinline]] bool setAsciiValueSlow(DxfGroup& g, const char* vb, const char* ve) {
    std::string_view raw(vb, static_cast<std::size_t>(ve - vb));
    g.real = 0;
    g.integer = 0;
    switch (g.kind) {
      case GroupKind::String:
        g.text = raw;
        return true;
      case GroupKind::Binary:
        g.text = TrimBlanks(raw);
        return true;
      case GroupKind::Handle:
        g.text = TrimBlanks(raw);
        g.integer = ParseHandle(g.text);
        return true;
      case GroupKind::Double: {
        std::string_view t = raw;
        if (!t.empty() && (IsBlank(t.front()) || IsBlank(t.back()))) t = TrimBlanks(t);
        g.text = t;
        if (!FastDouble(t.data(), t.data() + t.size(), g.real) && !ParseDouble(t, g.real))
          return badValue(g, raw);
        g.integer = RoundToInt64(g.real);
        return true;
      }
      default: {
        std::string_view t = raw;
        if (!t.empty() && (IsBlank(t.front()) || IsBlank(t.back()))) t = TrimBlanks(t);
        g.text = t;
        if (!FastInteger(t.data(), t.data() + t.size(), g.integer) && !ParseInteger(t, g.integer))
          return badValue(g, raw);
        if (g.kind == GroupKind::Bool) g.integer = g.integer != 0;
        g.real = static_cast<double>(g.integer);
        return true;
      }
    }
  }

  [[gnu::noinline, gnu::cold]] bool badValue(const DxfGroup& g, std::string_view raw) {
    return fail(Fmt("第 %llu 行：组码 %d 的值无效：%s", static_cast<unsigned long long>(g.line + 1), g.code,
                    Excerpt(raw).c_str()));
  }

  // The usual group: both lines in the buffer and a plain code.
  [[gnu::always_inline]] bool nextAscii(DxfGroup& g) {
    const char* start = pos;
    const char* codeEnd = nullptr;
    const char* valueEnd = nullptr;
    FindTwoLineEnds(start, end, codeEnd, valueEnd);
    if (valueEnd) [[likely]] {
      const char* ce = codeEnd;
      const char* p = start;
      while (p < ce && *p == ' ') ++p;  // codes are usually right-aligned in three columns
      const char* digits = p;
      int v = 0;
      while (p < ce && static_cast<unsigned>(*p - '0') < 10u && p - digits < 9) v = v * 10 + (*p++ - '0');
      if (p > digits && (p == ce || (*p == '\r' && p + 1 == ce))) [[likely]] {
        g.code = v;
        g.line = lineNo;
        if (!setAsciiValue(g, codeEnd + 1, valueEnd)) return false;
        lastStart = start;
        pos = valueEnd + 1;
        lineNo += 2;
        return true;
      }
    }
    return nextAsciiSlow(g);
  }

  [[gnu::noinline]] bool nextAsciiSlow(DxfGroup& g) {
    const char* start = pos;
    for (;;) {
      const char* codeEnd = nullptr;
      const char* valueEnd = nullptr;
      FindTwoLineEnds(start, end, codeEnd, valueEnd);
      if (valueEnd || sourceDone) {
        g.line = lineNo;
        const char* ce = codeEnd ? codeEnd : end;
        if (!parseCode(start, ce, g.code)) {
          // Built first: looking ahead for trailing blanks may move the buffer.
          std::string message =
              Fmt("第 %llu 行：组码无效：%s", static_cast<unsigned long long>(lineNo),
                  Excerpt(std::string_view(start, static_cast<std::size_t>(ce - start))).c_str());
          if (restIsBlank(start) || failed) return false;
          return fail(std::move(message));
        }
        if (!codeEnd || (!valueEnd && codeEnd + 1 == end)) {
          return fail(
              Fmt("第 %llu 行：文件在组码 %d 之后意外结束", static_cast<unsigned long long>(lineNo), g.code));
        }
        const char* ve = valueEnd ? valueEnd : end;  // the last line may lack its line feed
        if (ve > codeEnd + 1 && ve[-1] == '\r') --ve;
        g.kind = KindOf(g.code);
        if (!setAsciiValueSlow(g, codeEnd + 1, ve)) return false;
        lastStart = start;
        pos = valueEnd ? valueEnd + 1 : end;
        lineNo += 2;
        return true;
      }
      if (!refill(start)) {
        if (failed) return false;
        // sourceDone is now set: the loop handles the tail.
      }
    }
  }

  // ---- binary ------------------------------------------------------------------------------

  bool truncated(const char* groupStart, int code) {
    return fail(Fmt("偏移 %llu：二进制 DXF 在组码 %d 处被截断",
                    static_cast<unsigned long long>(offsetOf(groupStart)), code));
  }

  // Makes sure `n` bytes from `start` are in the buffer; `start` and `p` are moved along on refill.
  bool ensure(const char*& start, const char*& p, std::size_t n) {
    while (static_cast<std::size_t>(end - p) < n) {
      std::ptrdiff_t off = p - start;
      bool more = refill(start);
      p = start + off;
      if (!more) return static_cast<std::size_t>(end - p) >= n;
    }
    return true;
  }

  [[gnu::noinline]] bool nextBinary(DxfGroup& g) {
    const char* start = pos;
    const char* p = start;
    if (p == end) {
      if (!refill(start) && failed) return false;
      p = start;
      if (p == end) return false;  // clean end of input
    }
    int code = 0;
    if (format == Format::BinaryR13) {
      if (!ensure(start, p, 2)) return failed ? false : truncated(start, static_cast<unsigned char>(*p));
      code = static_cast<std::int16_t>(LoadU16(p));
      p += 2;
    } else {
      code = static_cast<unsigned char>(*p++);
      if (code == 255) {
        if (!ensure(start, p, 2)) return failed ? false : truncated(start, code);
        code = static_cast<std::int16_t>(LoadU16(p));
        p += 2;
      }
    }
    g.code = code;
    g.kind = KindOf(code);
    g.line = offsetOf(start);
    g.real = 0;
    g.integer = 0;
    g.text = {};
    auto fixed = [&](std::size_t n) -> bool {
      if (!ensure(start, p, n)) return failed ? false : truncated(start, code);
      g.line = offsetOf(start);
      return true;
    };
    switch (g.kind) {
      case GroupKind::String:
      case GroupKind::Handle: {
        const char* nul;
        for (;;) {
          nul = static_cast<const char*>(std::memchr(p, '\0', static_cast<std::size_t>(end - p)));
          if (nul) break;
          std::ptrdiff_t off = p - start;
          bool more = refill(start);
          p = start + off;
          if (!more) return failed ? false : truncated(start, code);
        }
        g.line = offsetOf(start);
        g.text = std::string_view(p, static_cast<std::size_t>(nul - p));
        if (g.kind == GroupKind::Handle) g.integer = ParseHandle(TrimBlanks(g.text));
        p = nul + 1;
        break;
      }
      case GroupKind::Binary: {
        if (!fixed(1)) return false;
        std::size_t n = static_cast<unsigned char>(*p);
        if (!fixed(1 + n)) return false;
        g.text = std::string_view(p + 1, n);
        p += 1 + n;
        break;
      }
      case GroupKind::Double: {
        if (!fixed(8)) return false;
        std::memcpy(&g.real, p, 8);
        g.integer = RoundToInt64(g.real);
        p += 8;
        break;
      }
      case GroupKind::Int16: {
        if (!fixed(2)) return false;
        g.integer = static_cast<std::int16_t>(LoadU16(p));
        p += 2;
        break;
      }
      case GroupKind::Int32: {
        if (!fixed(4)) return false;
        std::int32_t v;
        std::memcpy(&v, p, 4);
        g.integer = v;
        p += 4;
        break;
      }
      case GroupKind::Int64: {
        if (!fixed(8)) return false;
        std::memcpy(&g.integer, p, 8);
        p += 8;
        break;
      }
      case GroupKind::Bool: {
        if (!fixed(1)) return false;
        g.integer = *p != 0;
        p += 1;
        break;
      }
    }
    if (g.kind != GroupKind::Double) g.real = static_cast<double>(g.integer);
    lastStart = start;
    pos = p;
    return true;
  }

  // ---- common ------------------------------------------------------------------------------

  bool next(DxfGroup& g) {
    if (failed) return false;
    if (format == Format::Unknown) {
      start();
      if (failed) return false;
    }
    lastStart = nullptr;
    if (atEof) return false;
    std::uint64_t groupLine = lineNo;
    // Sets lastStart on success (a refill may have moved the group to a new block).
    bool ok = format == Format::Ascii ? nextAscii(g) : nextBinary(g);
    if (!ok) {
      lastStart = nullptr;
      return false;
    }
    lastLineNo = groupLine;
    curHandedOut = true;
    // Whatever follows "0 EOF" is not part of the drawing; some programs leave junk there.
    if (g.code == 0 && TrimBlanks(g.text) == "EOF") atEof = true;
    return true;
  }

  void pushBack() {
    if (!lastStart) return;
    pos = lastStart;
    lineNo = lastLineNo;
    atEof = false;
    lastStart = nullptr;
  }

  void release() {
    for (Block& b : retired) recycle(std::move(b));
    retired.clear();
    // A pushed-back group lies in `cur` and is handed out again before any refill.
    curHandedOut = false;
  }
};

DxfTokenizer::DxfTokenizer() : impl_(std::make_unique<Impl>()) {}

DxfTokenizer::DxfTokenizer(const std::string& path) : DxfTokenizer(path, kDefaultBlockSize) {}

DxfTokenizer::DxfTokenizer(const std::string& path, std::size_t bufferSize) : DxfTokenizer() {
  impl_->blockSize = std::max(bufferSize, kMinBlockSize);
  int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    impl_->fail(Fmt("无法打开文件：%s", path.c_str()));
    return;
  }
  struct stat st {};
  if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
    ::close(fd);
    impl_->fail(Fmt("不是文件：%s", path.c_str()));
    return;
  }
  impl_->fd = fd;
  impl_->size = static_cast<std::uint64_t>(st.st_size);
  ::posix_fadvise(fd, 0, 0, POSIX_FADV_SEQUENTIAL);
}

DxfTokenizer DxfTokenizer::fromBytes(std::string bytes) {
  DxfTokenizer t;
  Impl& m = *t.impl_;
  m.size = bytes.size();
  // All of it in one block: nothing is ever refilled.
  m.cur.capacity = std::max<std::size_t>(bytes.size(), 1);
  m.cur.data = std::make_unique_for_overwrite<char[]>(m.cur.capacity);
  std::memcpy(m.cur.data.get(), bytes.data(), bytes.size());
  m.pos = m.cur.data.get();
  m.end = m.pos + bytes.size();
  m.sourceDone = true;
  return t;
}

DxfTokenizer DxfTokenizer::fromBytes(std::string bytes, std::size_t bufferSize) {
  DxfTokenizer t;
  Impl& m = *t.impl_;
  m.size = bytes.size();
  m.blockSize = std::max(bufferSize, kMinBlockSize);
  m.memory = std::move(bytes);
  m.sourceDone = m.memory.empty();
  return t;
}

DxfTokenizer::~DxfTokenizer() = default;
DxfTokenizer::DxfTokenizer(DxfTokenizer&&) noexcept = default;
DxfTokenizer& DxfTokenizer::operator=(DxfTokenizer&&) noexcept = default;

bool DxfTokenizer::isBinary() const {
  if (impl_->format == Impl::Format::Unknown && !impl_->failed) impl_->start();
  return impl_->format == Impl::Format::BinaryR12 || impl_->format == Impl::Format::BinaryR13;
}

bool DxfTokenizer::next(DxfGroup& g) { return impl_->next(g); }

void DxfTokenizer::pushBack() { impl_->pushBack(); }

void DxfTokenizer::release() { impl_->release(); }

const std::string& DxfTokenizer::error() const { return impl_->error; }

std::uint64_t DxfTokenizer::bytesRead() const {
  if (!impl_->cur.data) return 0;
  return impl_->offsetOf(impl_->pos);
}

std::uint64_t DxfTokenizer::fileSize() const { return impl_->size; }

}  // namespace tv::cad
