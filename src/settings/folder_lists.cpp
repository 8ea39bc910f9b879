// The host's version and the folder lists of its preferences.
#include <algorithm>
#include <filesystem>
#include <optional>
#include <system_error>

#include "settings/folders.h"
#include "settings/folders_internal.h"

namespace tv::settings {

namespace {
namespace fs = std::filesystem;
using namespace internal;

constexpr std::string_view kLocalToken = "%localrootfolder%";
constexpr std::string_view kRoamableToken = "%roamablerootfolder%";

// The leading digits as a number, as a C runtime's atoi reads them; 0 without any.
int LeadingNumber(std::string_view text) {
  int n = 0;
  for (char c : text) {
    if (c < '0' || c > '9') break;
    n = n * 10 + (c - '0');
  }
  return n;
}

// The first `count` characters of UTF-8 text: a character never loses its trailing bytes.
std::string_view FirstCharacters(std::string_view text, std::size_t count) {
  std::size_t seen = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool startsCharacter = (static_cast<unsigned char>(text[i]) & 0xC0) != 0x80;
    if (startsCharacter && seen++ == count) return text.substr(0, i);
  }
  return text;
}

// Every `from` becomes `to`, in one pass: a replacement is never searched again.
void ReplaceAll(std::string& text, std::string_view from, std::string_view to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
}

// The one folder of `dir` whose name equals `name` but for case; the first by name when several do.
std::optional<std::string> ChildNoCase(const fs::path& dir, const std::string& name) {
  const std::string wanted = AsciiLower(name);
  std::optional<std::string> best;
  std::error_code ec;
  for (fs::directory_iterator it(dir, ec), end; !ec && it != end; it.increment(ec)) {
    const std::string candidate = it->path().filename().string();
    if (AsciiLower(candidate) != wanted || !it->is_directory(ec)) continue;
    if (!best || candidate < *best) best = candidate;
  }
  return best;
}

// The folder as it is spelt on disk, each part matched exactly or else without regard to case;
// nullopt when it doesn't exist.
std::optional<std::string> ResolveFolder(const std::string& entry) {
  if (entry.empty()) return std::nullopt;
  std::error_code ec;
  if (fs::is_directory(entry, ec)) return entry;
  const fs::path path(entry);
  fs::path at = path.root_path();
  for (const fs::path& part : path.relative_path()) {
    if (part.empty() || part == ".") continue;
    fs::path exact = at / part;
    if (fs::is_directory(exact, ec)) {
      at = std::move(exact);
      continue;
    }
    if (part == "..") return std::nullopt;
    auto child = ChildNoCase(at.empty() ? fs::path(".") : at, part.string());
    if (!child) return std::nullopt;
    at /= *child;
  }
  return at.string();
}

}  // namespace

double HostVersionOf(std::string_view acadver) {
  const std::string_view kept = acadver.substr(0, 4);
  const int major = LeadingNumber(kept.substr(0, 2));
  const int minor = kept.size() == 4 ? LeadingNumber(kept.substr(3, 1)) : 0;
  return major + minor / 10.0;
}

std::vector<std::string> FolderEntries(std::string_view value, std::string_view localRoot,
                                       std::string_view roamableRoot) {
  std::string text = AsciiLower(FirstCharacters(value, kHostValueLength));
  std::replace(text.begin(), text.end(), '\\', '/');
  // A token may or may not be followed by a separator; the root brings its own.
  ReplaceAll(text, std::string(kLocalToken) + "/", kLocalToken);
  ReplaceAll(text, std::string(kRoamableToken) + "/", kRoamableToken);
  ReplaceAll(text, kLocalToken, std::string(localRoot) + "/");
  ReplaceAll(text, kRoamableToken, std::string(roamableRoot) + "/");

  std::vector<std::string> entries = SplitAtSemicolons(text);
  for (std::string& entry : entries) entry = WithoutTrailingSeparator(std::move(entry));
  return entries;
}

std::string ExistingFolders(const std::vector<std::string>& entries) {
  std::string joined;
  for (const std::string& entry : entries) {
    auto folder = ResolveFolder(entry);
    if (!folder) continue;
    if (!joined.empty()) joined += ';';
    joined += *folder;
  }
  return joined;
}

std::string FirstUsableFolder(const std::string& folders) {
  const std::vector<std::string> entries = SplitAtSemicolons(folders);
  for (const std::string& entry : entries) {
    if (entry.empty()) continue;
    std::error_code ec;
    fs::create_directories(entry, ec);
    if (fs::is_directory(entry, ec)) return entry;
  }
  return entries.front();
}

}  // namespace tv::settings
