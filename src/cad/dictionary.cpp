#include "cad/objects.h"

#include <algorithm>

#include "cad/names_internal.h"

namespace tv::cad {

// Keys are compared as CAD compares them, without regard to case: an R14 file names its layouts
// "MODEL" and "LAYOUT1" in the dictionary while the layouts themselves are "Model" and "Layout1".
ObjectId Dictionary::find(std::string_view key) const {
  for (const auto& [k, v] : entries)
    if (EqualsNoCase(k, key)) return v;
  return {};
}

void Dictionary::set(std::string key, ObjectId value) {
  for (auto& [k, v] : entries)
    if (EqualsNoCase(k, key)) {
      v = value;
      return;
    }
  entries.emplace_back(std::move(key), value);
}

bool Dictionary::remove(std::string_view key) {
  return std::erase_if(entries, [&](const auto& e) { return EqualsNoCase(e.first, key); }) > 0;
}

}  // namespace tv::cad
