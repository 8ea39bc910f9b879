#pragma once
#include <compare>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tv {

// Identity of a database object: the DXF handle, 64 bits, 0 is null.
struct ObjectId {
  std::uint64_t value = 0;
  constexpr ObjectId() = default;
  constexpr explicit ObjectId(std::uint64_t v) : value(v) {}
  constexpr bool isNull() const { return value == 0; }
  constexpr explicit operator bool() const { return value != 0; }
  constexpr auto operator<=>(const ObjectId&) const = default;
  // Upper-case hex without leading zeros, as DXF writes handles; "0" for null.
  std::string handleText() const;
  static ObjectId fromHandleText(std::string_view hex);  // null when not hex
};

// Ids in the order they were gathered.
using ObjectIdArray = std::vector<ObjectId>;
// Index of `id` at or after `from`; -1 when absent.
int FindId(const ObjectIdArray& ids, ObjectId id, std::size_t from = 0);

}  // namespace tv

template <>
struct std::hash<tv::ObjectId> {
  std::size_t operator()(tv::ObjectId id) const noexcept { return std::hash<std::uint64_t>{}(id.value); }
};
