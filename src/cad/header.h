#pragma once
// Header variables of a drawing ($ACADVER, $LTSCALE …), kept in file order with their groups.
#include <string>
#include <string_view>
#include <vector>

#include "cad/geometry.h"
#include "cad/group.h"

namespace tv::cad {

struct HeaderVariable {
  std::string name;  // with the leading '$'
  Groups values;     // e.g. one 40 group, or 10/20/30 for a point
};

class Header {
 public:
  const HeaderVariable* find(std::string_view name) const;
  // Replaces the variable's groups, or appends the variable.
  void set(std::string name, Groups values);

  std::string getString(std::string_view name, std::string fallback = {}) const;
  double getDouble(std::string_view name, double fallback = 0) const;
  std::int64_t getInt(std::string_view name, std::int64_t fallback = 0) const;
  Point3d getPoint(std::string_view name, Point3d fallback = {}) const;
  ObjectId getHandle(std::string_view name) const;

  void setString(std::string name, std::string value, int code = 1);
  void setDouble(std::string name, double value, int code = 40);
  void setInt(std::string name, std::int64_t value, int code = 70);
  void setPoint(std::string name, Point3d value, bool threeD = true);  // 10/20(/30)
  void setHandle(std::string name, ObjectId value, int code = 5);

  std::vector<HeaderVariable> variables;
};

}  // namespace tv::cad
