// Recording what the system's own entities draw, and the registry of their classes.
#include "host/custom_entity.h"

#include <algorithm>
#include <utility>

namespace tv::host {

void PrimitiveRecorder::polyline(const std::vector<Point3d>& points) {
  primitives_.push_back({DrawnPrimitive::Kind::Polyline, color_, false, points});
}

void PrimitiveRecorder::polygon(const std::vector<Point3d>& points) {
  primitives_.push_back({DrawnPrimitive::Kind::Polygon, color_, fill_, points});
}

Extents3d PrimitiveRecorder::extents() const {
  Extents3d box;
  for (const DrawnPrimitive& p : primitives_)
    for (const Point3d& q : p.points) box.add(q);
  return box;
}

namespace {

struct EntityClassEntry {
  std::string name;
  std::string parent;
  EntityClassData data;
};

// In the order the module registered them, so that unloading can take them down in reverse.
std::vector<EntityClassEntry>& Registry() {
  static std::vector<EntityClassEntry> classes;
  return classes;
}

auto FindClass(const std::string& name) {
  auto& r = Registry();
  return std::find_if(r.begin(), r.end(), [&](const EntityClassEntry& e) { return e.name == name; });
}

}  // namespace

void RegisterEntityClass(const std::string& name, const std::string& parent) {
  if (name.empty()) return;
  if (auto it = FindClass(name); it != Registry().end()) {
    it->parent = parent;
    return;
  }
  Registry().push_back({name, parent, {}});
}

void RegisterEntityClass(const std::string& name, const std::string& parent, const EntityClassData& data) {
  RegisterEntityClass(name, parent);
  if (auto it = FindClass(name); it != Registry().end()) it->data = data;
}

std::optional<EntityClassData> EntityClassDataOf(const std::string& name) {
  auto it = FindClass(name);
  if (it == Registry().end()) return std::nullopt;
  return it->data;
}

bool DeleteEntityClass(const std::string& name) {
  auto it = FindClass(name);
  if (it == Registry().end()) return false;
  Registry().erase(it);
  return true;
}

bool IsEntityClassRegistered(const std::string& name) { return FindClass(name) != Registry().end(); }

std::vector<std::string> RegisteredEntityClasses() {
  std::vector<std::string> names;
  for (const EntityClassEntry& e : Registry()) names.push_back(e.name);
  return names;
}

}  // namespace tv::host
