// The serial number of a name and the cleaning every file name ends with.
#include <algorithm>
#include <array>

#include "titleblock/file_naming.h"
#include "titleblock/naming_internal.h"

namespace tv::titleblock {

namespace {

constexpr std::string_view kDivisionSlash = "\u2215";
constexpr std::string_view kReplacementChar = "\uFFFD";
constexpr std::string_view kUnreadableMark = "_";

// Names the file systems of Windows keep for devices, whatever follows a dot.
constexpr std::array<std::string_view, 6> kDeviceNames{"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$"};

void RemoveChars(std::string& text, std::string_view chars) {
  std::erase_if(text, [&](char c) { return chars.find(c) != std::string_view::npos; });
}

bool IsDeviceName(std::string_view name) {
  std::string stem(name.substr(0, name.find('.')));
  while (!stem.empty() && stem.back() == ' ') stem.pop_back();  // "CON .txt" is CON as well
  for (char& c : stem)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  if (std::find(kDeviceNames.begin(), kDeviceNames.end(), stem) != kDeviceNames.end()) return true;
  return stem.size() == 4 && (stem.starts_with("COM") || stem.starts_with("LPT")) && stem[3] >= '0' && stem[3] <= '9';
}

// The length of the well-formed UTF-8 sequence at text[i], 0 for a broken one: a stray
// continuation byte, a cut sequence, an overlong form, a surrogate, or past U+10FFFF.
std::size_t SequenceLength(std::string_view text, std::size_t i) {
  const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
  const unsigned char lead = byte(i);
  if (lead < 0x80) return 1;
  std::size_t length = 0;
  unsigned char low = 0x80, high = 0xBF;  // the range of the second byte
  if (lead >= 0xC2 && lead <= 0xDF) length = 2;
  else if (lead >= 0xE0 && lead <= 0xEF) length = 3, low = lead == 0xE0 ? 0xA0 : 0x80, high = lead == 0xED ? 0x9F : 0xBF;
  else if (lead >= 0xF0 && lead <= 0xF4) length = 4, low = lead == 0xF0 ? 0x90 : 0x80, high = lead == 0xF4 ? 0x8F : 0xBF;
  else return 0;
  if (i + length > text.size() || byte(i + 1) < low || byte(i + 1) > high) return 0;
  for (std::size_t k = 2; k < length; ++k)
    if ((byte(i + k) & 0xC0) != 0x80) return 0;
  return length;
}

// Each stretch of unreadable text as one mark, the rest as it was.
std::string MarkUnreadable(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  bool marking = false;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t length = SequenceLength(text, i);
    const bool unreadable = length == 0 || text.substr(i, length) == kReplacementChar;
    if (unreadable) {
      if (!marking) out += kUnreadableMark;
    } else {
      out.append(text.substr(i, length));
    }
    marking = unreadable;
    i += length == 0 ? 1 : length;
  }
  return out;
}

}  // namespace

bool HasUnreadableText(std::string_view text) {
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t length = SequenceLength(text, i);
    if (length == 0 || text.substr(i, length) == kReplacementChar) return true;
    i += length;
  }
  return false;
}

std::string SerialText(std::int32_t number, std::int32_t digits) {
  std::string text = std::to_string(number);
  if (digits > 0 && text.size() < static_cast<std::size_t>(digits))
    text.insert(0, static_cast<std::size_t>(digits) - text.size(), '0');
  return text;
}

std::string CleanFileName(std::string text, bool strict) {
  if (HasUnreadableText(text)) text = MarkUnreadable(text);
  RemoveChars(text, "<>\\|");
  // A drawing number such as 1/2 keeps its look.
  internal::ReplaceAll(text, "/", kDivisionSlash);
  RemoveChars(text, "*\"?:");
  std::erase_if(text, [&](char c) {
    const auto code = static_cast<unsigned char>(c);
    if (code == 10 || code == 13) return strict;
    return code < 32 || code == 127;
  });

  // Nothing above keeps a name from meaning its folder's parent or a device.
  const bool dotsOnly = !text.empty() && text.find_first_not_of('.') == std::string::npos;
  if (dotsOnly || IsDeviceName(text)) text.insert(0, "_");
  return text;
}

}  // namespace tv::titleblock
