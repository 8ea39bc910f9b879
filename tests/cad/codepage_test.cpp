#include "cad/codepage.h"

#include <gtest/gtest.h>

#include <string>

namespace tv::cad {
namespace {

const std::string kGbkDrawing = "\xD6\xD0\xCE\xC4\xCD\xBC\xD6\xBD";  // 中文图纸 in GBK
const std::string kReplacement = "\xEF\xBF\xBD";

TEST(CodePageDecoder, ChineseAndOtherDoubleBytePages) {
  auto gbk = CodePageDecoder::create("ANSI_936");
  ASSERT_TRUE(gbk);
  EXPECT_EQ(gbk->name(), "CP936");
  EXPECT_EQ(gbk->toUtf8(kGbkDrawing), "中文图纸");
  EXPECT_EQ(gbk->toUtf8("A-" + kGbkDrawing + "-1"), "A-中文图纸-1");
  EXPECT_EQ(gbk->toUtf8("\x80"), "€");  // CP936's one single-byte extra

  auto big5 = CodePageDecoder::create("ANSI_950");
  ASSERT_TRUE(big5);
  EXPECT_EQ(big5->toUtf8("\xA4\xA4\xA4\xE5"), "中文");

  auto sjis = CodePageDecoder::create("ANSI_932");
  ASSERT_TRUE(sjis);
  EXPECT_EQ(sjis->toUtf8("\x93\xFA\x96\x7B"), "日本");

  auto korean = CodePageDecoder::create("ANSI_949");
  ASSERT_TRUE(korean);
  EXPECT_EQ(korean->toUtf8("\xC7\xD1"), "한");

  auto west = CodePageDecoder::create("ANSI_1252");
  ASSERT_TRUE(west);
  EXPECT_EQ(west->toUtf8("caf\xE9 \x80"), "café €");

  // Names are taken in any case and under their other spellings; unknown pages give no decoder.
  for (const char* name : {"ansi_936", "GBK", "DOS936"}) EXPECT_EQ(CodePageDecoder::create(name)->toUtf8(kGbkDrawing), "中文图纸") << name;
  for (const char* name : {"klingon", "ANSI_1259", "ANSI_", ""}) EXPECT_FALSE(CodePageDecoder::create(name)) << name;
}

TEST(CodePageDecoder, InvalidBytesBecomeReplacementCharacters) {
  auto gbk = CodePageDecoder::create("ANSI_936");
  ASSERT_TRUE(gbk);
  EXPECT_EQ(gbk->toUtf8("a\xFF"
                        "b"),
            "a" + kReplacement + "b");
  // A lead byte at the very end has no trail byte.
  EXPECT_EQ(gbk->toUtf8("\xD6\xD0\xD6"), "中" + kReplacement);
  EXPECT_EQ(gbk->toUtf8("x\xFF\xFF\xD6\xD0"), "x" + kReplacement + kReplacement + "中");

  CodePageDecoder utf8 = CodePageDecoder::utf8();
  EXPECT_EQ(utf8.name(), "UTF-8");
  EXPECT_EQ(utf8.toUtf8("中文"), "中文");
  EXPECT_EQ(utf8.toUtf8("a\xC3(b"), "a" + kReplacement + "(b");
  EXPECT_EQ(utf8.toUtf8("\xED\xA0\x80"), kReplacement + kReplacement + kReplacement);  // a surrogate
  EXPECT_EQ(utf8.toUtf8("\xC0\xAF"), kReplacement + kReplacement);                     // overlong
}

TEST(CodePageEncoding, RoundTripsAndMissingCharacters) {
  auto gbk = Utf8ToCodePage("中文图纸", "ANSI_936");
  ASSERT_TRUE(gbk);
  EXPECT_EQ(*gbk, kGbkDrawing);
  EXPECT_EQ(CodePageDecoder::create("ANSI_936")->toUtf8(*gbk), "中文图纸");

  const std::string mixed = "图号 A-01（第2版）";
  EXPECT_EQ(CodePageDecoder::create("ANSI_936")->toUtf8(*Utf8ToCodePage(mixed, "ANSI_936")), mixed);
  EXPECT_EQ(CodePageDecoder::create("ANSI_950")->toUtf8(*Utf8ToCodePage("中文", "ANSI_950")), "中文");

  EXPECT_EQ(Utf8ToCodePage("plain", "ANSI_936"), "plain");
  EXPECT_EQ(Utf8ToCodePage("a😀b", "ANSI_936"), "a?b");
  EXPECT_EQ(Utf8ToCodePage("中x", "ANSI_1252"), "?x");
  EXPECT_EQ(Utf8ToCodePage("a\xFF"
                           "b",
                           "ANSI_936"),
            "a?b");  // broken UTF-8 in
  EXPECT_EQ(Utf8ToCodePage("中", "UTF-8"), "中");
  EXPECT_EQ(Utf8ToCodePage("x", "klingon"), std::nullopt);
}

TEST(DxfEscapes, DecodeUnicodeAndMultibyteForms) {
  EXPECT_EQ(DecodeDxfEscapes("\\U+4E2D\\U+6587"), "中文");
  EXPECT_EQ(DecodeDxfEscapes("A\\U+4e2dB"), "A中B");
  EXPECT_EQ(DecodeDxfEscapes("\\U+00B0C"), "°C");
  EXPECT_EQ(DecodeDxfEscapes("\\U+D83D\\U+DE00!"), "😀!");  // a surrogate pair
  EXPECT_EQ(DecodeDxfEscapes("\\M+5D6D0\\M+5CEC4"), "中文");
  EXPECT_EQ(DecodeDxfEscapes("\\M+2A4A4"), "中");
  EXPECT_EQ(DecodeDxfEscapes("\\M+193FA"), "日");
  EXPECT_EQ(DecodeDxfEscapes("\\M+3C7D1"), "한");
}

TEST(DxfEscapes, OtherSequencesStayAsWritten) {
  for (const char* s : {"no escapes", "\\P\\pxqc;\\{x\\}", "\\U+12", "\\U+GGGG", "\\U4E2D", "\\M+6D6D0",
                        "\\M+5D6", "\\U+D83D alone", "\\U+DE00", "ends in \\", "\\\\U+4E2D"}) {
    EXPECT_EQ(DecodeDxfEscapes(s), s) << s;
  }
  EXPECT_EQ(DecodeDxfEscapes("\\PLine \\U+4E2D\\P"), "\\PLine 中\\P");
}

TEST(DxfEscapes, EncodeWritesUnicodeEscapes) {
  EXPECT_EQ(EncodeDxfEscapes("plain"), "plain");
  EXPECT_EQ(EncodeDxfEscapes("中a°"), "\\U+4E2Da\\U+00B0");
  EXPECT_EQ(EncodeDxfEscapes("😀"), "\\U+D83D\\U+DE00");
  EXPECT_EQ(EncodeDxfEscapes("a\xFF"), "a\\U+FFFD");
  for (std::string s : {"中文图纸 1:100", "Größe ±5°", "😀 and ☃", "\\P with codes"})
    EXPECT_EQ(DecodeDxfEscapes(EncodeDxfEscapes(s)), s);
}

}  // namespace
}  // namespace tv::cad
