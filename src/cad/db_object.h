#pragma once
// Base of every object in a drawing database: table records, entities and non-graphical objects.
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cad/group.h"
#include "cad/object_id.h"

namespace tv::cad {

enum class ObjectType : std::uint8_t {
  // Entities
  Line, LwPolyline, Polyline, Circle, Arc, Ellipse, Spline, Point, Solid, Trace, Face3d,
  Text, MText, AttDef, Attrib, Insert, Hatch, Dimension, Leader, Viewport, Image, Wipeout,
  Custom, Proxy,
  // Table records
  Layer, TextStyle, Linetype, BlockRecord, TableRecord,
  // Non-graphical objects
  Dictionary, Xrecord, Layout, ImageDef, SpatialFilter, GenericObject,
};

constexpr bool IsEntityType(ObjectType t) { return t <= ObjectType::Proxy; }

// Rarely present data, kept out of line so that the common entity stays small.
struct ObjectExtras {
  ObjectId extensionDictionary;   // 102 {ACAD_XDICTIONARY / 360
  std::vector<ObjectId> reactors;  // 102 {ACAD_REACTORS / 330
  Groups appGroups;                // other 102 {APP ... } groups, with their braces
  Groups xdata;                    // 1001 onwards, in file order
  Groups unknown;                  // groups the model does not interpret, written back as read
  std::string colorBookName;       // 430
  std::optional<std::int32_t> transparency;  // 440
  ObjectId plotStyle;              // 390
  ObjectId material;               // 347
  std::optional<std::int16_t> shadowMode;  // 284

  bool empty() const;
};

class DbObject {
 public:
  virtual ~DbObject() = default;
  DbObject& operator=(const DbObject&) = delete;

  ObjectType type() const { return type_; }
  // DXF name of the object ("LINE", "LAYER", "DICTIONARY", or the proxy's own name).
  virtual std::string dxfName() const = 0;
  virtual std::unique_ptr<DbObject> cloneObject() const = 0;

  ObjectExtras& extras() {
    if (!extras_) extras_ = std::make_unique<ObjectExtras>();
    return *extras_;
  }
  const ObjectExtras* extrasIfAny() const { return extras_.get(); }
  ObjectId extensionDictionary() const { return extras_ ? extras_->extensionDictionary : ObjectId{}; }

  ObjectId id;
  ObjectId owner;

 protected:
  explicit DbObject(ObjectType t) : type_(t) {}
  DbObject(const DbObject& o)
      : id(o.id), owner(o.owner), extras_(o.extras_ ? std::make_unique<ObjectExtras>(*o.extras_) : nullptr), type_(o.type_) {}

 private:
  std::unique_ptr<ObjectExtras> extras_;
  ObjectType type_;
};

// Checked downcast by object type: returns nullptr when the object is not a T.
template <class T>
T* As(DbObject* o) { return o && T::matches(o->type()) ? static_cast<T*>(o) : nullptr; }
template <class T>
const T* As(const DbObject* o) { return o && T::matches(o->type()) ? static_cast<const T*>(o) : nullptr; }

}  // namespace tv::cad
