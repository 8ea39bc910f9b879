#pragma once
// Text encodings of drawing files: the ANSI code pages of $DWGCODEPAGE and the escapes of DXF text.
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tv::cad {

// Maps a $DWGCODEPAGE value ("ANSI_936", "ansi_1252", "GBK", "UTF-8", "dos936" …) to an iconv
// encoding name; nullopt when the code page is unknown.
std::optional<std::string> IconvNameOfCodePage(std::string_view dwgCodePage);

// Converts text of one code page into UTF-8. Pure ASCII passes through without conversion.
// Bytes that do not convert become U+FFFD rather than failing the whole file.
class CodePageDecoder {
 public:
  // nullopt for an unknown code page or one iconv cannot open.
  static std::optional<CodePageDecoder> create(std::string_view dwgCodePage);
  static CodePageDecoder utf8();  // identity (files from R2007 on); invalid UTF-8 is repaired
  CodePageDecoder(CodePageDecoder&&) noexcept;
  CodePageDecoder& operator=(CodePageDecoder&&) noexcept;
  ~CodePageDecoder();
  std::string toUtf8(std::string_view bytes) const;
  const std::string& name() const;

 private:
  CodePageDecoder();
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

// Converts UTF-8 to a code page, for files in the system's ANSI code page (GBK by default).
// Characters the code page lacks become '?'. nullopt for an unknown code page.
std::optional<std::string> Utf8ToCodePage(std::string_view utf8, std::string_view dwgCodePage);

// Replaces the DXF escapes \U+XXXX (a Unicode code point) and \M+nXXXX (a double-byte character
// of code page n: 1 = 932, 2 = 950, 3 = 949, 4 = 1361, 5 = 936) by UTF-8. Other backslash
// sequences (MTEXT formatting codes) stay as they are.
std::string DecodeDxfEscapes(std::string_view utf8);

// For writing R2000-and-earlier style output: non-ASCII characters as \U+XXXX.
std::string EncodeDxfEscapes(std::string_view utf8);

}  // namespace tv::cad
