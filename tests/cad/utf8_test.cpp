#include "cad/utf8.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tv::cad {
namespace {

std::vector<char32_t> CodePoints(std::string_view s) {
  std::vector<char32_t> out;
  for (std::size_t i = 0; i < s.size();) out.push_back(NextCodePoint(s, i));
  return out;
}

TEST(Utf8, DecodesEveryLengthAndRefusesMalformedSequences) {
  char32_t cp = 0;
  EXPECT_EQ(DecodeUtf8("A", 0, cp), 1u);
  EXPECT_EQ(cp, U'A');
  EXPECT_EQ(DecodeUtf8("\xC2\xB0", 0, cp), 2u);
  EXPECT_EQ(cp, U'\u00B0');
  EXPECT_EQ(DecodeUtf8("\xE4\xB8\xAD", 0, cp), 3u);
  EXPECT_EQ(cp, U'中');
  EXPECT_EQ(DecodeUtf8("\xF0\x9F\x98\x80", 0, cp), 4u);
  EXPECT_EQ(cp, U'\U0001F600');

  for (std::string_view bad : {"\x80", "\xC0\xAF", "\xE0\x80\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xF8\x88\x80\x80",
                               "\xE4\xB8", "\xE4" "A" "\xAD"})
    EXPECT_EQ(DecodeUtf8(bad, 0, cp), 0u) << testing::PrintToString(std::string(bad));
}

TEST(Utf8, BrokenBytesBecomeOneReplacementEach) {
  EXPECT_EQ(CodePoints("a\xE4\xB8"), (std::vector<char32_t>{U'a', 0xFFFD, 0xFFFD}));
  EXPECT_EQ(CodePoints("\xED\xA0\x80" "b"), (std::vector<char32_t>{0xFFFD, 0xFFFD, 0xFFFD, U'b'}));
  EXPECT_EQ(CodePoints("\xE4\xB8\xAD\xC2\xB1"), (std::vector<char32_t>{U'中', U'±'}));
}

TEST(Utf8, EncodesAndReplacesWhatIsNotACharacter) {
  std::string out;
  for (char32_t cp : {U'A', U'\u00B1', U'\u2300', U'\U0001F600'}) AppendUtf8(out, cp);
  EXPECT_EQ(out, "A\xC2\xB1\xE2\x8C\x80\xF0\x9F\x98\x80");
  out.clear();
  AppendUtf8(out, 0xD800);
  AppendUtf8(out, 0x110000);
  EXPECT_EQ(out, "\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(Utf8, CharStartNeverSplitsACharacter) {
  const std::string_view s = "ab\xE4\xB8\xAD";
  EXPECT_EQ(Utf8CharStart(s, 1), 1u);
  EXPECT_EQ(Utf8CharStart(s, 2), 2u);
  EXPECT_EQ(Utf8CharStart(s, 3), 2u);
  EXPECT_EQ(Utf8CharStart(s, 4), 2u);
  EXPECT_EQ(Utf8CharStart("\x80\x80", 1), 0u);
}

}  // namespace
}  // namespace tv::cad
