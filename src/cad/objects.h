#pragma once
// Non-graphical objects: dictionaries, Xrecords, layouts, image definitions, spatial filters.
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "cad/db_object.h"
#include "cad/geometry.h"

namespace tv::cad {

template <class Derived, ObjectType kType>
class ObjectOf : public DbObject {
 public:
  static constexpr ObjectType kObjectType = kType;
  static constexpr bool matches(ObjectType t) { return t == kType; }
  std::unique_ptr<DbObject> cloneObject() const override { return std::make_unique<Derived>(static_cast<const Derived&>(*this)); }

 protected:
  ObjectOf() : DbObject(kType) {}
  ObjectOf(const ObjectOf&) = default;
};

class Dictionary final : public ObjectOf<Dictionary, ObjectType::Dictionary> {
 public:
  std::string dxfName() const override { return withDefault ? "ACDBDICTIONARYWDFLT" : "DICTIONARY"; }
  ObjectId find(std::string_view key) const;
  // Sets or replaces the entry.
  void set(std::string key, ObjectId value);
  bool remove(std::string_view key);

  std::vector<std::pair<std::string, ObjectId>> entries;  // 3 / 350 (or 360), in file order
  bool hardOwner = false;        // 280
  std::int16_t cloning = 1;      // 281
  bool withDefault = false;      // ACDBDICTIONARYWDFLT
  ObjectId defaultEntry;         // 340 of ACDBDICTIONARYWDFLT
};

class Xrecord final : public ObjectOf<Xrecord, ObjectType::Xrecord> {
 public:
  std::string dxfName() const override { return "XRECORD"; }
  std::int16_t cloning = 1;  // 280
  Groups data;               // the typed groups after 280, in order
};

// Plot settings of a layout or a named page setup (subclass AcDbPlotSettings).
struct PlotSettings {
  std::string pageSetupName;   // 1
  std::string plotterName;     // 2 (a .pc3 file or a system printer)
  std::string paperSize;       // 4 (canonical media name)
  std::string plotViewName;    // 6
  double marginLeft = 0, marginBottom = 0, marginRight = 0, marginTop = 0;  // 40-43, mm
  double paperWidth = 0, paperHeight = 0;  // 44, 45, mm
  Point2d plotOrigin;          // 46, 47
  Point2d windowMin, windowMax;  // 48/49, 140/141
  double customScaleNumerator = 1, customScaleDenominator = 1;  // 142, 143
  std::int16_t layoutFlags = 688;  // 70
  std::int16_t paperUnits = 1;     // 72: 0 inches, 1 mm, 2 pixels
  std::int16_t rotation = 0;       // 73: 0, 1 = 90, 2 = 180, 3 = 270 degrees
  std::int16_t plotType = 5;       // 74: 0 last screen, 1 extents, 2 limits, 3 view, 4 window, 5 layout
  std::string styleSheet;          // 7 (a .ctb or .stb file)
  std::int16_t standardScaleType = 16;  // 75
  std::int16_t shadePlotMode = 0, shadePlotResolution = 0, shadePlotDpi = 300;  // 76, 77, 78
  double scaleFactor = 1;          // 147
  Point2d paperImageOrigin;        // 148, 149
  ObjectId shadePlotId;            // 333
  // Plot transparency has no group code of its own in DXF; it lives for the session.
  bool plotTransparency = false;
  bool operator==(const PlotSettings&) const = default;
};

class Layout final : public ObjectOf<Layout, ObjectType::Layout> {
 public:
  std::string dxfName() const override { return "LAYOUT"; }
  bool isModel() const { return name == "Model"; }

  PlotSettings plot;
  std::string name;           // 1 of AcDbLayout
  std::int16_t flags = 1;     // 70
  std::int16_t tabOrder = 0;  // 71
  Point2d limitsMin, limitsMax;   // 10, 11
  Point3d insertionBase;          // 12
  Point3d extentsMin, extentsMax; // 14, 15
  double elevation = 0;           // 146
  Point3d ucsOrigin;              // 13
  Vector3d ucsXAxis = Vector3d::xAxis(), ucsYAxis = Vector3d::yAxis();  // 16, 17
  std::int16_t ucsType = 1;       // 76
  ObjectId blockRecord;           // 330 after AcDbLayout
  ObjectId lastActiveViewport;    // 331
  ObjectId ucs, baseUcs;          // 345, 346
};

// The file and pixel size of a raster image; IMAGE entities point at it.
class ImageDef final : public ObjectOf<ImageDef, ObjectType::ImageDef> {
 public:
  std::string dxfName() const override { return "IMAGEDEF"; }
  std::int32_t classVersion = 0;   // 90
  std::string fileName;            // 1
  Vector2d imageSize;              // 10, 20 in pixels
  Vector2d pixelSize{1, 1};        // 11, 21 in drawing units
  bool loaded = true;              // 280
  std::int16_t resolutionUnits = 0;  // 281
};

// The "SPATIAL" filter of a clipped insert, under ACAD_FILTER in its extension dictionary.
class SpatialFilter final : public ObjectOf<SpatialFilter, ObjectType::SpatialFilter> {
 public:
  std::string dxfName() const override { return "SPATIAL_FILTER"; }
  std::vector<Point2d> boundary;   // 10/20 in the filter's own coordinates; 2 points = a rectangle
  Vector3d normal = Vector3d::zAxis();  // 210
  Point3d origin;                  // 11
  bool displayBoundary = false;    // 71
  bool frontClip = false, backClip = false;  // 72, 73
  double frontDistance = 0, backDistance = 0;  // 40, 41
  Matrix3d inverseInsertTransform;  // 12 values of 40 (3 rows of 4)
  Matrix3d clipTransform;           // the next 12 values of 40
  bool inverted = false;            // from the ACAD_XREC_ROUNDTRIP data, when present
};

// Any other object (PLOTSETTINGS, MLINESTYLE, DICTIONARYVAR, SCALE, MATERIAL …), kept as read.
class GenericObject final : public ObjectOf<GenericObject, ObjectType::GenericObject> {
 public:
  std::string dxfName() const override { return name; }
  std::string name;
  Groups groups;  // everything after 5, 102 groups and 330
};

}  // namespace tv::cad
