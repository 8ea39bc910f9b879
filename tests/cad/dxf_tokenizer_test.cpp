#include "cad/dxf_tokenizer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "../support/corpus.h"
#include "../support/run_program.h"

namespace tv::cad {
namespace {

namespace fs = std::filesystem;

using test_support::TempFile;

std::vector<DxfGroup> ReadAll(DxfTokenizer& t) {
  std::vector<DxfGroup> out;
  DxfGroup g;
  while (t.next(g)) out.push_back(g);
  return out;
}

// ---- binary DXF built byte by byte -----------------------------------------------------------

constexpr std::string_view kSentinel{"AutoCAD Binary DXF\r\n\x1a\0", 22};

struct BinaryWriter {
  bool r12 = false;
  std::string bytes{kSentinel};

  void code(int c) {
    if (r12) {
      if (c < 255) {
        bytes += static_cast<char>(c);
        return;
      }
      bytes += static_cast<char>(0xFF);
    }
    bytes += static_cast<char>(c & 0xFF);
    bytes += static_cast<char>((c >> 8) & 0xFF);
  }
  template <typename T>
  void raw(T v) {
    char b[sizeof v];
    std::memcpy(b, &v, sizeof v);
    bytes.append(b, sizeof v);
  }
  void str(int c, std::string_view s) {
    code(c);
    bytes.append(s);
    bytes += '\0';
  }
  void dbl(int c, double v) { code(c), raw(v); }
  void i16(int c, std::int16_t v) { code(c), raw(v); }
  void i32(int c, std::int32_t v) { code(c), raw(v); }
  void i64(int c, std::int64_t v) { code(c), raw(v); }
  void boolean(int c, bool v) { code(c), bytes += static_cast<char>(v ? 1 : 0); }
  void chunk(int c, std::string_view data) {
    code(c);
    bytes += static_cast<char>(data.size());
    bytes.append(data);
  }
};

// The same small drawing in both binary flavours; R12 leaves out the groups it does not know.
std::string SampleBinary(bool r12) {
  BinaryWriter w;
  w.r12 = r12;
  w.str(0, "SECTION");
  w.str(2, "ENTITIES");
  w.str(0, "LINE");
  w.str(5, "2F");
  w.str(8, "图层");
  w.dbl(10, 1.5);
  w.dbl(20, -2.25);
  w.dbl(30, 0);
  w.i16(62, -7);
  w.str(1001, "APP");
  w.i32(1071, 123456789);
  w.dbl(1040, 3.5);
  w.chunk(1004, std::string("\x00\xFF\x10", 3));
  if (!r12) {
    w.str(100, "AcDbEntity");
    w.str(330, "1F");
    w.i32(90, -5);
    w.i64(160, std::int64_t{1} << 40);
    w.boolean(290, true);
    w.chunk(310, std::string("\x01\x02\x00\x7F", 4));
  }
  w.str(0, "ENDSEC");
  w.str(0, "EOF");
  return w.bytes;
}

void CheckSampleBinary(DxfTokenizer& t, bool r12) {
  ASSERT_TRUE(t.isBinary());
  std::vector<DxfGroup> gs = ReadAll(t);
  ASSERT_EQ(t.error(), "");
  ASSERT_EQ(gs.size(), r12 ? 15u : 21u);
  EXPECT_EQ(gs[0].code, 0);
  EXPECT_EQ(gs[0].text, "SECTION");
  EXPECT_EQ(gs[0].line, 22u);  // byte offset of the first group, right after the sentinel
  EXPECT_EQ(gs[2].text, "LINE");
  EXPECT_EQ(gs[3].kind, GroupKind::Handle);
  EXPECT_EQ(gs[3].integer, 0x2F);
  EXPECT_EQ(gs[4].text, "图层");
  EXPECT_EQ(gs[5].kind, GroupKind::Double);
  EXPECT_EQ(gs[5].real, 1.5);
  EXPECT_EQ(gs[6].real, -2.25);
  EXPECT_EQ(gs[8].code, 62);
  EXPECT_EQ(gs[8].integer, -7);
  EXPECT_EQ(gs[8].real, -7.0);
  EXPECT_EQ(gs[9].text, "APP");
  EXPECT_EQ(gs[10].code, 1071);
  EXPECT_EQ(gs[10].integer, 123456789);
  EXPECT_EQ(gs[11].code, 1040);
  EXPECT_EQ(gs[11].real, 3.5);
  EXPECT_EQ(gs[12].code, 1004);
  EXPECT_EQ(gs[12].kind, GroupKind::Binary);
  EXPECT_EQ(gs[12].text, std::string_view("\x00\xFF\x10", 3));
  std::size_t i = 13;
  if (!r12) {
    EXPECT_EQ(gs[13].text, "AcDbEntity");
    EXPECT_EQ(gs[14].integer, 0x1F);
    EXPECT_EQ(gs[15].integer, -5);
    EXPECT_EQ(gs[16].integer, std::int64_t{1} << 40);
    EXPECT_EQ(gs[17].kind, GroupKind::Bool);
    EXPECT_EQ(gs[17].integer, 1);
    EXPECT_EQ(gs[18].code, 310);
    EXPECT_EQ(gs[18].text, std::string_view("\x01\x02\x00\x7F", 4));
    i = 19;
  }
  EXPECT_EQ(gs[i].text, "ENDSEC");
  EXPECT_EQ(gs.back().text, "EOF");
}

// ---- tests -----------------------------------------------------------------------------------

TEST(DxfTokenizerAscii, CrlfSpacesBomAndLineNumbers) {
  std::string doc =
      "\xEF\xBB\xBF  0\r\nSECTION\r\n  2\r\nENTITIES\r\n"
      "  0\r\nTEXT\r\n  1\r\n  two leading, one trailing \r\n 10 \r\n  1.5  \r\n"
      " 62\r\n     7\r\n  0\nEOF";  // mixed line ends; the last line has no line feed
  DxfTokenizer t = DxfTokenizer::fromBytes(doc);
  EXPECT_FALSE(t.isBinary());
  std::vector<DxfGroup> gs = ReadAll(t);
  ASSERT_EQ(t.error(), "");
  ASSERT_EQ(gs.size(), 7u);
  EXPECT_EQ(gs[0].code, 0);
  EXPECT_EQ(gs[0].text, "SECTION");
  EXPECT_EQ(gs[0].line, 1u);
  EXPECT_EQ(gs[1].text, "ENTITIES");
  EXPECT_EQ(gs[1].line, 3u);
  EXPECT_EQ(gs[3].code, 1);
  EXPECT_EQ(gs[3].text, "  two leading, one trailing ");  // strings keep their spaces
  EXPECT_EQ(gs[4].code, 10);
  EXPECT_EQ(gs[4].text, "1.5");
  EXPECT_EQ(gs[4].real, 1.5);
  EXPECT_EQ(gs[5].integer, 7);
  EXPECT_EQ(gs[6].text, "EOF");
  EXPECT_EQ(gs[6].line, 13u);
  EXPECT_EQ(t.bytesRead(), doc.size());
  EXPECT_EQ(t.fileSize(), doc.size());
}

TEST(DxfTokenizerAscii, TypedValuesOfEveryKind) {
  struct Case {
    const char* groups;  // the code and value lines
    GroupKind kind;
    std::optional<std::int64_t> integer;
    std::optional<double> real;
    const char* text;  // nullptr: not checked
  };
  const Case cases[] = {
      {"1\nhello\n", GroupKind::String, {}, {}, "hello"},
      {"10\n-1.25e3\n", GroupKind::Double, -1250, -1250.0, nullptr},
      {"40\n+.5\n", GroupKind::Double, {}, 0.5, nullptr},
      {"70\n-12\n", GroupKind::Int16, -12, -12.0, nullptr},
      {"70\n1.0\n", GroupKind::Int16, 1, {}, nullptr},  // an integer written as a real
      {"71\n 2.6 \n", GroupKind::Int16, 3, {}, "2.6"},  // rounded
      {"90\n2147483647\n", GroupKind::Int32, 2147483647, {}, nullptr},
      {"160\n-9000000000\n", GroupKind::Int64, -9000000000LL, {}, nullptr},
      {"290\n1\n", GroupKind::Bool, 1, {}, nullptr},
      {"291\n0\n", GroupKind::Bool, 0, {}, nullptr},
      {"5\n1A2F\n", GroupKind::Handle, 0x1A2F, {}, "1A2F"},
      {"330\nffffffffffffffff\n", GroupKind::Handle, -1, {}, nullptr},  // every bit set
      {"340\nnot hex\n", GroupKind::Handle, 0, {}, "not hex"},  // junk handle: 0, not an error
      {"105\n\n", GroupKind::Handle, 0, {}, nullptr},
      {"310\n0102FF\n", GroupKind::Binary, {}, {}, "0102FF"},
      {"1071\n-3\n", GroupKind::Int32, -3, {}, nullptr},
      {"1005\nABC\n", GroupKind::String, {}, {}, nullptr},
      {"999\ncomment\n", GroupKind::String, {}, {}, "comment"},
  };
  std::string doc;
  for (const Case& c : cases) doc += c.groups;
  DxfTokenizer t = DxfTokenizer::fromBytes(doc);
  const std::vector<DxfGroup> gs = ReadAll(t);
  ASSERT_EQ(t.error(), "");
  ASSERT_EQ(gs.size(), std::size(cases));
  for (std::size_t i = 0; i < gs.size(); ++i) {
    const Case& c = cases[i];
    SCOPED_TRACE(c.groups);
    EXPECT_EQ(gs[i].kind, c.kind);
    if (c.integer) {
      EXPECT_EQ(gs[i].integer, *c.integer);
    }
    if (c.real) {
      EXPECT_EQ(gs[i].real, *c.real);
    }
    if (c.text) {
      EXPECT_EQ(gs[i].text, c.text);
    }
  }
}

std::string ToHex(int v) {
  char buf[16];
  std::snprintf(buf, sizeof buf, "%X", v);
  return buf;
}

// Reads a generated document the way the reader does (release between entities, push back the
// 0 group that ends an entity) and checks every value and every view held since the last release.
void ReadStressDocument(DxfTokenizer& t, int entities) {
  DxfGroup g;
  ASSERT_TRUE(t.next(g));
  ASSERT_EQ(g.text, "SECTION");
  ASSERT_TRUE(t.next(g));
  ASSERT_EQ(g.text, "ENTITIES");
  std::uint64_t line = 5;
  for (int i = 0; i < entities; ++i) {
    t.release();
    std::vector<DxfGroup> held;
    ASSERT_TRUE(t.next(g)) << t.error();
    ASSERT_EQ(g.code, 0);
    ASSERT_EQ(g.text, i % 3 == 0 ? "LINE" : "TEXT") << "entity " << i;
    ASSERT_EQ(g.line, line);
    held.push_back(g);
    line += 2;
    while (t.next(g) && g.code != 0) {
      held.push_back(g);
      line += 2;
    }
    ASSERT_EQ(t.error(), "");
    t.pushBack();
    // Every group of the entity: handle, layer, point, and a long string for TEXT.
    ASSERT_EQ(held.size(), i % 3 == 0 ? 6u : 7u) << "entity " << i;
    EXPECT_EQ(held[1].integer, 0x100 + i);
    EXPECT_EQ(held[1].text, ToHex(0x100 + i));
    EXPECT_EQ(held[2].text, "Layer-" + std::to_string(i % 17));
    EXPECT_EQ(held[3].real, i * 0.5);
    EXPECT_EQ(held[4].real, -i * 0.25);
    EXPECT_EQ(held[5].integer, i % 256);
    if (i % 3 != 0) {
      EXPECT_EQ(held[6].text, std::string(static_cast<std::size_t>(i % 300), 'x') + "|" + std::to_string(i));
    }
  }
  ASSERT_TRUE(t.next(g));
  EXPECT_EQ(g.text, "ENDSEC");
  ASSERT_TRUE(t.next(g));
  EXPECT_EQ(g.text, "EOF");
  EXPECT_FALSE(t.next(g));
  EXPECT_EQ(t.error(), "");
}

std::string MakeStressDocument(int entities) {
  std::string s = "0\r\nSECTION\r\n2\r\nENTITIES\r\n";
  for (int i = 0; i < entities; ++i) {
    s += i % 3 == 0 ? "  0\r\nLINE\r\n" : "  0\r\nTEXT\r\n";
    s += "  5\r\n" + ToHex(0x100 + i) + "\r\n";
    s += "  8\r\nLayer-" + std::to_string(i % 17) + "\r\n";
    char buf[64];
    std::snprintf(buf, sizeof buf, " 10\r\n%.17g\r\n 20\r\n%.17g\r\n", i * 0.5, -i * 0.25);
    s += buf;
    s += " 62\r\n" + std::to_string(i % 256) + "\r\n";
    if (i % 3 != 0)
      s += "  1\r\n" + std::string(static_cast<std::size_t>(i % 300), 'x') + "|" + std::to_string(i) + "\r\n";
  }
  s += "  0\r\nENDSEC\r\n  0\r\nEOF\r\n";
  return s;
}

TEST(DxfTokenizerBuffers, TinyBuffersKeepEveryViewUntilRelease) {
  constexpr int kEntities = 7500;  // 50 004 groups
  const std::string doc = MakeStressDocument(kEntities);
  {
    DxfTokenizer t = DxfTokenizer::fromBytes(doc);
    ReadStressDocument(t, kEntities);
  }
  for (std::size_t size : {64u, 100u, 331u, 4096u}) {
    SCOPED_TRACE("buffer " + std::to_string(size));
    DxfTokenizer t = DxfTokenizer::fromBytes(doc, size);
    ReadStressDocument(t, kEntities);
    EXPECT_EQ(t.bytesRead(), doc.size());
  }
  TempFile file(doc);
  DxfTokenizer t(file.path(), 257);
  ReadStressDocument(t, kEntities);
  EXPECT_EQ(t.fileSize(), doc.size());
}

// Both flavours, read whole and through a tiny buffer, from memory and from a file.
TEST(DxfTokenizerBinary, R13TwoByteAndR12OneByteCodes) {
  for (bool r12 : {false, true}) {
    SCOPED_TRACE(r12 ? "R12" : "R13");
    DxfTokenizer whole = DxfTokenizer::fromBytes(SampleBinary(r12));
    CheckSampleBinary(whole, r12);
    DxfTokenizer t = DxfTokenizer::fromBytes(SampleBinary(r12), 64);
    CheckSampleBinary(t, r12);
    TempFile file(SampleBinary(r12));
    DxfTokenizer f(file.path(), 64);
    CheckSampleBinary(f, r12);
  }
}

TEST(DxfTokenizerBinary, TruncatedInsideAValue) {
  BinaryWriter w;
  w.str(0, "SECTION");
  w.dbl(10, 2.0);
  const std::size_t offsetOf10 = w.bytes.size() - 10;
  w.bytes.resize(w.bytes.size() - 3);
  DxfTokenizer t = DxfTokenizer::fromBytes(w.bytes);
  DxfGroup g;
  ASSERT_TRUE(t.next(g));
  EXPECT_FALSE(t.next(g));
  EXPECT_EQ(t.error(), "偏移 " + std::to_string(offsetOf10) + "：二进制 DXF 在组码 10 处被截断");
  EXPECT_FALSE(t.next(g));  // stays failed

  BinaryWriter s;
  s.str(0, "SECTION");
  s.str(2, "HEAD");
  s.bytes.pop_back();  // the string loses its terminator
  DxfTokenizer u = DxfTokenizer::fromBytes(s.bytes, 64);
  ASSERT_TRUE(u.next(g));
  EXPECT_FALSE(u.next(g));
  EXPECT_EQ(u.error(), "偏移 32：二进制 DXF 在组码 2 处被截断");
}

TEST(DxfTokenizerErrors, TruncatedOrMalformedGroups) {
  struct Case {
    std::string doc;
    std::string error;
  };
  const std::vector<Case> cases = {
      {"0\nSECTION\n2\n", "第 3 行：文件在组码 2 之后意外结束"},
      {"0\nSECTION\n  9", "第 3 行：文件在组码 9 之后意外结束"},
      {"0\nLINE\nabc\nx\n", "第 3 行：组码无效：abc"},
      // A blank code line with more groups after it is an error (a blank tail is not, below).
      {"0\nLINE\n\n0\n0\nEOF\n", "第 3 行：组码无效："},
      {"0\nLINE\n10\nabc\n", "第 4 行：组码 10 的值无效：abc"},
      {"40\n\n", "第 2 行：组码 40 的值无效："},
      {"40\r\n \r\n", "第 2 行：组码 40 的值无效： "},
      {"70\n12x\n", "第 2 行：组码 70 的值无效：12x"},
      {"20\n1.5.5\n", "第 2 行：组码 20 的值无效：1.5.5"},
      {"10\n" + std::string(60, '9') + "z\n", "第 2 行：组码 10 的值无效：" + std::string(40, '9')},
      {"10\n" + std::string(39, 'a') + "中\n", "第 2 行：组码 10 的值无效：" + std::string(39, 'a')},
  };
  for (const Case& c : cases) {
    DxfTokenizer t = DxfTokenizer::fromBytes(c.doc);
    DxfGroup g;
    while (t.next(g)) {
    }
    EXPECT_EQ(t.error(), c.error) << c.doc;
    EXPECT_FALSE(t.next(g));  // stays failed
  }
}

TEST(DxfTokenizerErrors, BlankTailAndJunkAfterTheLastGroupAreAnEnd) {
  DxfTokenizer junk = DxfTokenizer::fromBytes("0\nEOF\nignore\ninvalid\ndata\n");
  EXPECT_EQ(ReadAll(junk).size(), 1u);
  EXPECT_EQ(junk.error(), "");
  // Trailing blank lines and an old DOS end-of-file mark.
  for (std::size_t size : {0u, 64u}) {
    std::string doc = "0\nEOF\n\r\n   \n\x1a";
    DxfTokenizer t =
        size ? DxfTokenizer::fromBytes(doc + std::string(200, ' '), size) : DxfTokenizer::fromBytes(doc);
    std::vector<DxfGroup> gs = ReadAll(t);
    EXPECT_EQ(gs.size(), 1u);
    EXPECT_EQ(t.error(), "");
  }
}

TEST(DxfTokenizerErrors, EmptyMissingAndDirectory) {
  DxfGroup g;
  DxfTokenizer empty = DxfTokenizer::fromBytes("");
  EXPECT_FALSE(empty.next(g));
  EXPECT_EQ(empty.error(), "");
  TempFile emptyFile("");
  DxfTokenizer emptyOnDisk(emptyFile.path());
  EXPECT_FALSE(emptyOnDisk.next(g));
  EXPECT_EQ(emptyOnDisk.error(), "");

  const std::string missing = (fs::temp_directory_path() / "tv_no_such_drawing_图纸.dxf").string();
  DxfTokenizer m(missing);
  EXPECT_FALSE(m.next(g));
  EXPECT_EQ(m.error(), "无法打开文件：" + missing);

  const std::string dir = fs::temp_directory_path().string();
  DxfTokenizer d(dir);
  EXPECT_FALSE(d.next(g));
  EXPECT_EQ(d.error(), "不是文件：" + dir);
}

struct Digest {
  std::size_t groups = 0;
  std::uint64_t hash = 1469598103934665603ull;
  void add(const DxfGroup& g) {
    ++groups;
    auto mix = [this](std::uint64_t v) { hash = (hash ^ v) * 1099511628211ull; };
    mix(static_cast<std::uint64_t>(g.code));
    mix(static_cast<std::uint64_t>(g.integer));
    mix(std::hash<std::string_view>{}(g.text));
  }
};

// Every corpus drawing is well formed as far as groups go (R12_with_trash_beyond_EOF.dxf is read
// up to its "0 EOF").
TEST(DxfTokenizerCorpus, EveryDrawingReadsToTheEnd) {
  const fs::path root = test_support::CorpusDir();
  TV_SKIP_WITHOUT_CORPUS(root);
  std::size_t files = 0, binary = 0;
  for (const fs::path& file : test_support::CorpusDxfFiles(root)) {
    const std::string path = file.string();
    SCOPED_TRACE(path);
    ++files;
    // The whole file in one go, and again through small buffers released at every 0 group.
    Digest whole, chunked;
    DxfTokenizer t(path);
    DxfGroup g;
    while (t.next(g)) whole.add(g);
    DxfTokenizer c(path, 1000);
    while (c.next(g)) {
      if (g.code == 0) {
        c.pushBack();
        c.release();
        ASSERT_TRUE(c.next(g));
      }
      chunked.add(g);
    }
    EXPECT_EQ(t.error(), "");
    EXPECT_EQ(c.error(), "");
    EXPECT_GT(whole.groups, 0u);
    EXPECT_EQ(whole.groups, chunked.groups);
    EXPECT_EQ(whole.hash, chunked.hash);
    EXPECT_GT(t.bytesRead(), 0u);
    EXPECT_LE(t.bytesRead(), t.fileSize());
    if (t.isBinary()) ++binary;
  }
  EXPECT_GT(files, 50u);
  EXPECT_GE(binary, 4u);
}

}  // namespace
}  // namespace tv::cad
