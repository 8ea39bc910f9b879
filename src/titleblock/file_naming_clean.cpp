// The serial number of a name and the cleaning every file name ends with.
#include <algorithm>
#include <array>

#include "titleblock/file_naming.h"
#include "titleblock/naming_internal.h"

namespace tv::titleblock {

namespace {

constexpr std::string_view kDivisionSlash = "\u2215";

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

}  // namespace

std::string SerialText(std::int32_t number, std::int32_t digits) {
  std::string text = std::to_string(number);
  if (digits > 0 && text.size() < static_cast<std::size_t>(digits))
    text.insert(0, static_cast<std::size_t>(digits) - text.size(), '0');
  return text;
}

std::string CleanFileName(std::string text, bool strict) {
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
