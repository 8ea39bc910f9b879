#pragma once
// Named records of the drawing: an Xrecord kept in the named-object dictionary inside a
// dictionary of the same name, as the system stores its per-drawing memories.
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tv::host {

using XrecordValue = std::variant<std::int32_t, double, std::string>;
struct XrecordItem {
  int code = 0;
  XrecordValue value;
  bool operator==(const XrecordItem&) const = default;
};

// The values of the Xrecord `key` in the dictionary `key` of the named-object dictionary, in
// order; nullopt when there is no working drawing, or the dictionary or the record is missing.
// Values of kinds other than integer, real and text (handles, binary chunks) are left out.
std::optional<std::vector<XrecordItem>> ReadNamedXrecord(const std::string& key);

// Replaces the whole content of that Xrecord, creating the dictionary and the record when
// missing. False when there is no working drawing or it has no named-object dictionary.
bool WriteNamedXrecord(const std::string& key, const std::vector<XrecordItem>& items);

}  // namespace tv::host
