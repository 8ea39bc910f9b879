#include "cad/objects.h"

#include <algorithm>

namespace tv::cad {

ObjectId Dictionary::find(std::string_view key) const {
  for (const auto& [k, v] : entries)
    if (k == key) return v;
  return {};
}

void Dictionary::set(std::string key, ObjectId value) {
  for (auto& [k, v] : entries)
    if (k == key) {
      v = value;
      return;
    }
  entries.emplace_back(std::move(key), value);
}

bool Dictionary::remove(std::string_view key) {
  return std::erase_if(entries, [&](const auto& e) { return e.first == key; }) > 0;
}

}  // namespace tv::cad
