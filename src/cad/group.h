#pragma once
// A typed group of DXF data kept as it was read: Xrecord contents, extended data, and the
// groups of entities and objects that the model does not interpret itself.
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "cad/object_id.h"

namespace tv::cad {

using Bytes = std::vector<std::uint8_t>;
using GroupValue = std::variant<std::string, double, std::int64_t, ObjectId, Bytes>;

struct Group {
  int code = 0;
  GroupValue value;

  Group() = default;
  Group(int c, GroupValue v) : code(c), value(std::move(v)) {}

  bool isString() const { return std::holds_alternative<std::string>(value); }
  // Lenient accessors: a value of another kind converts where that makes sense, else the default.
  std::string asString() const;
  double asDouble(double fallback = 0) const;
  std::int64_t asInt(std::int64_t fallback = 0) const;
  ObjectId asId() const;
  bool operator==(const Group&) const = default;
};

using Groups = std::vector<Group>;

// Finds the first group with this code, or nullptr.
const Group* FindGroup(const Groups& groups, int code);

}  // namespace tv::cad
