#include "host/text_files.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "cad/codepage.h"

namespace tv::host {

namespace {
constexpr std::size_t kTokenBytes = 511;

bool IsBlank(unsigned char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// Double-byte code pages put a lead byte (0x81 and above) first; a cut must not split a pair.
std::size_t CutAtCharacter(const std::string& bytes, std::size_t limit) {
  std::size_t i = 0;
  while (i < bytes.size()) {
    std::size_t width = static_cast<unsigned char>(bytes[i]) >= 0x81 ? 2 : 1;
    if (i + width > limit) break;
    i += width;
  }
  return i;
}
}  // namespace

std::string AnsiCodePage() {
  if (const char* v = std::getenv("TARVEX_ANSI_CODEPAGE"); v && *v && cad::IconvNameOfCodePage(v))
    return v;
  return "ANSI_936";
}

std::optional<std::vector<std::string>> ReadTextFileTokens(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return std::nullopt;
  std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  std::optional<cad::CodePageDecoder> decoder = cad::CodePageDecoder::create(AnsiCodePage());
  std::vector<std::string> tokens;
  std::size_t i = 0;
  while (i < bytes.size()) {
    while (i < bytes.size() && IsBlank(static_cast<unsigned char>(bytes[i]))) ++i;
    std::size_t start = i;
    // Trail bytes of GBK are 0x40 and above, so a blank byte always ends a token.
    while (i < bytes.size() && !IsBlank(static_cast<unsigned char>(bytes[i]))) ++i;
    if (i == start) break;
    std::string token = bytes.substr(start, i - start);
    if (token.size() > kTokenBytes) token.resize(CutAtCharacter(token, kTokenBytes));
    tokens.push_back(decoder ? decoder->toUtf8(token) : token);
  }
  return tokens;
}

bool WriteTextFileReplacing(const std::string& path, const std::string& utf8Text) {
  std::optional<std::string> bytes = cad::Utf8ToCodePage(utf8Text, AnsiCodePage());
  if (!bytes) return false;
  namespace fs = std::filesystem;
  std::random_device seed;
  std::string temporary = path + ".tmp" + std::to_string(seed() % 1000000);
  {
    std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
    if (!out) return false;
    out.write(bytes->data(), static_cast<std::streamsize>(bytes->size()));
    out.flush();
    if (!out) {
      out.close();
      std::error_code ec;
      fs::remove(temporary, ec);
      return false;
    }
  }
  if (std::rename(temporary.c_str(), path.c_str()) != 0) {
    std::error_code ec;
    fs::remove(temporary, ec);
    return false;
  }
  return true;
}

std::optional<std::int64_t> FileModifiedSecond(const std::string& path) {
  struct stat st {};
  if (::stat(path.c_str(), &st) != 0) return std::nullopt;
  return static_cast<std::int64_t>(st.st_mtime);
}

}  // namespace tv::host
