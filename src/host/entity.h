#pragma once
// Entities as the logic sees them: opened by id for reading, or transient (a transformed copy, an
// exploded piece, a new entity not yet appended). A handle is opened, read and dropped at once;
// none is kept across a prompt or a form.
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/geometry.h"
#include "host/object_id.h"

namespace tv::host {

class CustomEntity;

// The classes recognition tells apart.
enum class EntityClass {
  Line,
  LwPolyline,     // lightweight polyline
  Polyline2d,     // 2D polyline with vertex entities
  Polyline3d,     // 3D polyline (also polyface and mesh, which are never rectangles)
  BlockReference, // insert, also a multiple insert
  Spline,
  Text,
  MText,
  Attribute,
  Hatch,
  Dimension,
  Proxy,          // other vendors' entities (TCH_TEXT …)
  Wipeout,
  Viewport,
  Custom,         // an entity of one of the system's own classes (markers, signatures)
  Other,          // circles, arcs, points, solids, images, leaders …
};

// Polylines of all three classes.
constexpr bool IsPolylineClass(EntityClass c) {
  return c == EntityClass::LwPolyline || c == EntityClass::Polyline2d || c == EntityClass::Polyline3d;
}

// One entity, opened for reading or owned as a transient. Move-only; an empty handle stands for
// an entity that could not be opened.
class Entity {
 public:
  Entity();
  ~Entity();
  Entity(Entity&&) noexcept;
  Entity& operator=(Entity&&) noexcept;
  Entity(const Entity&) = delete;
  Entity& operator=(const Entity&) = delete;

  explicit operator bool() const { return impl_ != nullptr; }

  // ---- facts ------------------------------------------------------------------------------------
  ObjectId id() const;            // null for transients
  EntityClass kind() const;
  std::string dxfName() const;    // "LINE", "TCH_TEXT", "Temp_PlotRec" …
  bool visible() const;           // false when the entity is invisible
  ObjectId layer() const;
  ObjectId owner() const;         // the block table record it lies in; null for transients
  // Geometric extents in world coordinates; nullopt when the entity shows nothing.
  std::optional<Extents3d> geomExtents() const;

  // Polylines: vertices in order, z dropped; the closed flag.
  std::vector<Point2d> vertices() const;
  bool closed() const;
  // Lines: the two ends.
  Point3d startPoint() const;
  Point3d endPoint() const;
  // Block references.
  ObjectId blockTableRecord() const;
  Matrix3d blockTransform() const;   // block coordinates to the coordinates of the reference's space
  Vector3d scaleFactors() const;
  double rotation() const;           // radians about the reference's normal
  bool isDynamicBlock() const;       // anonymous *U definition of a dynamic block
  // The dynamic block's own record: the original a "*U" copy names, else the reference's record.
  ObjectId dynamicBlockTableRecord() const;
  // Bounds of a non-inverted spatial clip of the reference, in its space; nullopt when none.
  std::optional<Extents3d> clipBounds() const;
  // Texts, attributes, multiline texts and other vendors' texts: the plain content.
  std::string textContent() const;
  // Attributes: whether the attribute holds a multiline text.
  bool isMTextAttribute() const;
  // Texts as stored, formatting codes kept: a multiline text's or multiline attribute's contents,
  // a text's or attribute's string, another vendor's first group 1 as its DXF data holds it.
  std::string storedText() const;
  // Attributes and attribute definitions: the tag; empty for other classes.
  std::string attributeTag() const;
  // Block references: the ids of their attributes in order; empty for other classes and transients.
  ObjectIdArray attributeIds() const;

  // The system's own entities: the object itself, nullptr for other classes. The pointer lives as
  // long as this handle.
  const CustomEntity* custom() const;

  // ---- transient results (the caller owns them) ----------------------------------------------
  // A copy transformed by `xf`; empty when the entity cannot carry the transform.
  Entity transformedCopy(const Matrix3d& xf) const;
  // Simpler pieces: the content of a block reference, the lines of a multiline text, the segments
  // of a polyline; nothing for entities that do not break up.
  std::vector<Entity> explode() const;
  // A spline flattened to a 3D polyline (precision 20, no tolerance, at most 10000 segments);
  // empty for other classes.
  Entity splineToPolyline() const;

  struct Impl;
  explicit Entity(std::unique_ptr<Impl> impl);
  Impl* impl() const { return impl_.get(); }

 private:
  std::unique_ptr<Impl> impl_;
};

// Opens an entity of the working drawing for reading; empty when the id is null, erased or not an entity.
Entity OpenEntity(ObjectId id);
// Hints that OpenEntity(id) comes soon, for loops that open entities in no order the caches know:
// called `far` ahead it fetches the entity's place in the drawing, nearer the entity itself.
void PrefetchEntity(ObjectId id, bool far);

// ---- new entities, to be appended with AppendToSpace -----------------------------------------
Entity NewLine(Point3d start, Point3d end);
// A lightweight polyline at elevation 0.
Entity NewPolyline(const std::vector<Point2d>& points, bool closed);
// A single-line text, left aligned at `position`.
Entity NewText(Point3d position, double height, double rotation, std::string text);
// One of the system's own entities; the handle takes ownership.
Entity NewCustomEntity(std::unique_ptr<CustomEntity> entity);

}  // namespace tv::host
