#include "cad/header.h"

namespace tv::cad {

const HeaderVariable* Header::find(std::string_view name) const {
  for (const auto& v : variables)
    if (v.name == name) return &v;
  return nullptr;
}

void Header::set(std::string name, Groups values) {
  for (auto& v : variables)
    if (v.name == name) {
      v.values = std::move(values);
      return;
    }
  variables.push_back({std::move(name), std::move(values)});
}

std::string Header::getString(std::string_view name, std::string fallback) const {
  const auto* v = find(name);
  return v && !v->values.empty() ? v->values.front().asString() : fallback;
}

double Header::getDouble(std::string_view name, double fallback) const {
  const auto* v = find(name);
  return v && !v->values.empty() ? v->values.front().asDouble(fallback) : fallback;
}

std::int64_t Header::getInt(std::string_view name, std::int64_t fallback) const {
  const auto* v = find(name);
  return v && !v->values.empty() ? v->values.front().asInt(fallback) : fallback;
}

Point3d Header::getPoint(std::string_view name, Point3d fallback) const {
  const auto* v = find(name);
  if (!v) return fallback;
  Point3d p = fallback;
  bool any = false;
  for (const auto& g : v->values) {
    if (g.code == 10) p.x = g.asDouble(), any = true;
    else if (g.code == 20) p.y = g.asDouble();
    else if (g.code == 30) p.z = g.asDouble();
  }
  return any ? p : fallback;
}

ObjectId Header::getHandle(std::string_view name) const {
  const auto* v = find(name);
  return v && !v->values.empty() ? v->values.front().asId() : ObjectId{};
}

void Header::setString(std::string name, std::string value, int code) { set(std::move(name), {Group{code, std::move(value)}}); }
void Header::setDouble(std::string name, double value, int code) { set(std::move(name), {Group{code, value}}); }
void Header::setInt(std::string name, std::int64_t value, int code) { set(std::move(name), {Group{code, value}}); }
void Header::setHandle(std::string name, ObjectId value, int code) { set(std::move(name), {Group{code, value}}); }

void Header::setPoint(std::string name, Point3d value, bool threeD) {
  Groups g{Group{10, value.x}, Group{20, value.y}};
  if (threeD) g.emplace_back(30, value.z);
  set(std::move(name), std::move(g));
}

}  // namespace tv::cad
