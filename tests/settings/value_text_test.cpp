#include "settings/value_text.h"

#include <gtest/gtest.h>

#include "../support/run_program.h"
#include "host/text_files.h"

namespace tv::settings {
namespace {

TEST(ValueText, TokensKeepBlanksAndEmptyStringsButNotTheBlankMarkItself) {
  EXPECT_EQ(EncodeToken("A1 图框  x"), "A1*?*图框*?**?*x");
  EXPECT_EQ(DecodeToken(EncodeToken("A1 图框  x")), "A1 图框  x");
  EXPECT_EQ(EncodeToken(""), "<><");
  EXPECT_EQ(DecodeToken("<><"), "");
  // A string holding the mark comes back with a blank in its place.
  EXPECT_EQ(DecodeToken(EncodeToken("a*?*b")), "a b");
  // Only a whole token equal to the empty mark means empty.
  EXPECT_EQ(DecodeToken("x<><"), "x<><");
}

TEST(ValueText, DoublesKeepSixSignificantDigitsAsATextStreamWritesThem) {
  EXPECT_EQ(FormatReal(12345.678), "12345.7");
  EXPECT_EQ(FormatReal(1000000.0), "1e+06");
  EXPECT_EQ(FormatReal(100.0), "100");
  EXPECT_EQ(FormatReal(-0.5), "-0.5");
  EXPECT_EQ(FormatReal(0.000012345678), "1.23457e-05");
}

TEST(ValueText, ReaderFailsForGoodOnceAValueIsMissingOrNotANumber) {
  ValueWriter w;
  w.integer(20240329);
  w.real(2.5);
  w.token("a b");
  w.raw("zz");
  ValueReader r({"20240329", "2.5", "a*?*b", "zz", "word", "7"});
  EXPECT_EQ(r.integer(), 20240329);
  EXPECT_EQ(r.real(), 2.5);
  EXPECT_EQ(r.token(), "a b");
  EXPECT_EQ(r.raw(), "zz");
  std::int32_t kept = 42;
  EXPECT_FALSE(r.read(kept));  // "word" is no number
  EXPECT_EQ(kept, 42);
  EXPECT_TRUE(r.failed());
  EXPECT_FALSE(r.integer());  // "7" is never reached, as with a failed stream
  EXPECT_EQ(w.text(), "20240329\n2.5\na*?*b\nzz\n");
}

TEST(ValueText, IntegersOutOfRangeFail) {
  ValueReader r({"99999999999"});
  EXPECT_FALSE(r.integer());
}

// Tokens of a text file are read in the code page, each cut at 511 bytes.
TEST(TextFiles, LongTokensAreCutAtACharacterBoundary) {
  const test_support::TempDir dir("tv_text_files");
  std::string path = (dir.path() / "long.tk").string();
  std::string longName = "A";
  for (int i = 0; i < 300; ++i) longName += "图";  // 1 + 600 bytes in GBK
  ASSERT_TRUE(host::WriteTextFileReplacing(path, longName + " x\r\n"));
  auto tokens = host::ReadTextFileTokens(path);
  ASSERT_TRUE(tokens);
  ASSERT_EQ(tokens->size(), 2u);
  // 511 bytes: "A" and 255 whole characters.
  EXPECT_EQ((*tokens)[0], "A" + longName.substr(1, 255 * 3));
  EXPECT_EQ((*tokens)[1], "x");
}

}  // namespace
}  // namespace tv::settings
