#pragma once
// The system's own entity classes (markers, previews, signatures): plain objects that draw
// themselves with primitives. The host keeps them in the drawing like any entity.
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/geometry.h"

namespace tv::host {

// What an entity draws with. Points are in world coordinates of the entity's space.
class WorldDraw {
 public:
  virtual ~WorldDraw() = default;
  virtual void setColor(std::int16_t colorIndex) = 0;
  // Polygons are filled when fill is on, outlined otherwise.
  virtual void setFill(bool on) = 0;
  virtual void polyline(const std::vector<Point3d>& points) = 0;
  virtual void polygon(const std::vector<Point3d>& points) = 0;
};

// One primitive as a recorder keeps it.
struct DrawnPrimitive {
  enum class Kind { Polyline, Polygon };
  Kind kind = Kind::Polyline;
  std::int16_t colorIndex = 7;
  bool filled = false;
  std::vector<Point3d> points;
};

// Keeps what an entity draws, for display, extents, fences and tests.
class PrimitiveRecorder final : public WorldDraw {
 public:
  void setColor(std::int16_t colorIndex) override { color_ = colorIndex; }
  void setFill(bool on) override { fill_ = on; }
  void polyline(const std::vector<Point3d>& points) override;
  void polygon(const std::vector<Point3d>& points) override;
  const std::vector<DrawnPrimitive>& primitives() const { return primitives_; }
  // Box of every point drawn; empty when nothing was drawn.
  Extents3d extents() const;

 private:
  std::int16_t color_ = 7;
  bool fill_ = false;
  std::vector<DrawnPrimitive> primitives_;
};

// What registering a runtime class tells the host: the application that owns it, the proxy flags
// that say what other programs may do with its entities, and the versions it was made for.
struct EntityClassData {
  std::string appName;
  std::int32_t proxyFlags = 0;
  std::int32_t dwgVersion = 0;
  std::int32_t maintenanceVersion = 0;
};

using DxfGroupList = std::vector<std::pair<int, std::string>>;

class CustomEntity {
 public:
  virtual ~CustomEntity() = default;
  // The class name, also the DXF name ("Temp_PlotRec").
  virtual std::string className() const = 0;
  virtual std::unique_ptr<CustomEntity> clone() const = 0;
  virtual void worldDraw(WorldDraw& draw) const = 0;
  // Markers and previews live only while the program shows them: they are never written to a
  // drawing file, never plotted and are not content for fence selections.
  virtual bool isTransient() const { return true; }
  // Entities that stay in the drawing write these DXF groups after the common entity data
  // (code, value pairs as text).
  virtual DxfGroupList dxfGroups() const { return {}; }
  // Classes whose entities stay in drawings declare themselves in a saved file with this.
  virtual std::optional<EntityClassData> classData() const { return std::nullopt; }
  // Moves the entity's geometry when the drawing moves, turns or scales it; false when it can't.
  virtual bool transformBy(const Matrix3d&) { return false; }
};

// Turns the DXF groups of a saved entity of one class back into the live entity (the groups as
// dxfGroups gave them, values as text); null when they don't make one.
using EntityReader = std::function<std::unique_ptr<CustomEntity>(const DxfGroupList& groups)>;
// From now on drawings that are read bring entities of `className` back through `reader`.
void RegisterEntityReader(const std::string& className, EntityReader reader);

// Runtime classes of the module; registering a name twice keeps one entry.
void RegisterEntityClass(const std::string& name, const std::string& parent);
void RegisterEntityClass(const std::string& name, const std::string& parent, const EntityClassData& data);
// What the class was registered with; nullopt when it isn't registered.
std::optional<EntityClassData> EntityClassDataOf(const std::string& name);
// False when the class was not registered.
bool DeleteEntityClass(const std::string& name);
bool IsEntityClassRegistered(const std::string& name);
std::vector<std::string> RegisteredEntityClasses();

}  // namespace tv::host
