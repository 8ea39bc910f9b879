#include "host/text_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "cad/codepage.h"
#include "host/file_lock.h"

namespace tv::host {

namespace {
constexpr std::size_t kTokenBytes = 511;

namespace fs = std::filesystem;

// Removes a temporary file that was not renamed into place.
struct TemporaryFile {
  std::string path;
  ~TemporaryFile() {
    if (!path.empty()) ::unlink(path.c_str());
  }
};

bool WriteAll(int fd, const std::string& bytes) {
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    done += static_cast<std::size_t>(n);
  }
  return true;
}

// Read, not set and reset, so that no other thread ever creates a file under a wrong mask.
mode_t CurrentUmask() {
  std::ifstream status("/proc/self/status");
  std::string word;
  while (status >> word)
    if (word == "Umask:" && status >> word) return static_cast<mode_t>(std::strtol(word.c_str(), nullptr, 8));
  return 022;
}

// The rename itself reaches the disk with the folder's entry.
void SyncFolder(const fs::path& folder) {
  const int fd = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return;
  ::fsync(fd);
  ::close(fd);
}

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

std::optional<std::string> ReadFileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return std::nullopt;
  std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  if (in.bad()) return std::nullopt;
  return bytes;
}

std::vector<std::string> TextFileTokens(const std::string& bytes) {
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

std::string TextFileText(const std::string& bytes) {
  std::optional<cad::CodePageDecoder> decoder = cad::CodePageDecoder::create(AnsiCodePage());
  return decoder ? decoder->toUtf8(bytes) : bytes;
}

std::optional<std::vector<std::string>> ReadTextFileTokens(const std::string& path) {
  std::optional<std::string> bytes = ReadFileBytes(path);
  if (!bytes) return std::nullopt;
  return TextFileTokens(*bytes);
}

std::optional<std::string> TextFileBytes(const std::string& utf8Text) {
  return cad::Utf8ToCodePage(utf8Text, AnsiCodePage());
}

bool WriteTextFileReplacing(const std::string& path, const std::string& utf8Text) {
  const std::optional<std::string> bytes = TextFileBytes(utf8Text);
  return bytes && WriteFileReplacing(path, *bytes);
}

bool WriteFileReplacing(const std::string& path, const std::string& fileBytes) {
  if (path.empty()) return false;
  FileLock lock(path);
  if (!lock.held()) return false;
  // Through links to the file itself, which is what gets replaced.
  const std::string target = LockedFilePath(path);
  struct stat old {};
  const bool existed = ::stat(target.c_str(), &old) == 0;
  if (existed && (!S_ISREG(old.st_mode) || ::access(target.c_str(), W_OK) != 0)) return false;

  const fs::path targetPath(target);
  std::string temporary = (targetPath.parent_path() / ("." + targetPath.filename().string() + ".XXXXXX")).string();
  const int fd = ::mkstemp(temporary.data());
  if (fd < 0) return false;
  TemporaryFile cleanup{temporary};
  if (!WriteAll(fd, fileBytes) || (existed && ::fchmod(fd, old.st_mode & 07777) != 0) || ::fsync(fd) != 0) {
    ::close(fd);
    return false;
  }
  if (!existed) ::fchmod(fd, 0666 & ~CurrentUmask());
  if (::close(fd) != 0 || ::rename(temporary.c_str(), target.c_str()) != 0) return false;
  cleanup.path.clear();
  SyncFolder(targetPath.parent_path());
  // Under the lock nobody else replaces the file, so what is read back is what this write left.
  return ReadFileBytes(target) == fileBytes;
}

}  // namespace tv::host
