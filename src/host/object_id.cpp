#include "host/object_id.h"

#include <charconv>

namespace tv {

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

int FindId(const ObjectIdArray& ids, ObjectId id, std::size_t from) {
  for (std::size_t i = from; i < ids.size(); ++i)
    if (ids[i] == id) return static_cast<int>(i);
  return -1;
}

}  // namespace tv
