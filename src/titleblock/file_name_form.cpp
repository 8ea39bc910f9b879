#include "titleblock/file_name_form.h"

#include "titleblock/file_naming.h"

namespace tv::titleblock {

bool Dlg_FileName::ok(std::string& result, std::string& message) const {
  std::string cleaned = CleanFileName(name, true);
  const std::size_t first = cleaned.find_first_not_of(' ');
  const std::size_t last = cleaned.find_last_not_of(' ');
  result = first == std::string::npos ? std::string() : cleaned.substr(first, last - first + 1);
  if (!result.empty()) return true;
  message = kEmpty;
  return false;
}

std::string Dlg_FileName::UnifiedName(std::string_view stem, std::int32_t start, std::int32_t digits, std::size_t k) {
  return std::string(stem) + SerialText(start + static_cast<std::int32_t>(k), digits);
}

}  // namespace tv::titleblock
