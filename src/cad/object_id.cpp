#include "cad/object_id.h"

#include <charconv>

namespace tv::cad {

std::string ObjectId::handleText() const {
  char buf[17];
  auto [end, ec] = std::to_chars(buf, buf + sizeof buf, value, 16);
  std::string s(buf, end);
  for (char& c : s)
    if (c >= 'a' && c <= 'f') c = static_cast<char>(c - 'a' + 'A');
  return s;
}

ObjectId ObjectId::fromHandleText(std::string_view hex) {
  while (!hex.empty() && hex.front() == ' ') hex.remove_prefix(1);
  while (!hex.empty() && (hex.back() == ' ' || hex.back() == '\r')) hex.remove_suffix(1);
  std::uint64_t v = 0;
  auto [ptr, ec] = std::from_chars(hex.data(), hex.data() + hex.size(), v, 16);
  if (ec != std::errc{} || ptr != hex.data() + hex.size()) return {};
  return ObjectId{v};
}

}  // namespace tv::cad
