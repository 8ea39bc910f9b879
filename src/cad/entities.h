#pragma once
// Entity records of the drawing database. Fields carry DXF meaning; the DXF group code of each
// field is noted where it is not obvious. Planar entities keep their OCS coordinates as DXF
// stores them, with `normal` the extrusion direction.
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cad/db_object.h"
#include "cad/geometry.h"
#include "cad/lazy_part.h"

namespace tv::cad {

inline constexpr std::int16_t kColorByBlock = 0;
inline constexpr std::int16_t kColorByLayer = 256;
inline constexpr std::int16_t kLineweightByLayer = -1;
inline constexpr std::int16_t kLineweightByBlock = -2;
inline constexpr std::int16_t kLineweightDefault = -3;

class Entity : public DbObject {
 public:
  static constexpr bool matches(ObjectType t) { return IsEntityType(t); }
  std::unique_ptr<Entity> clone() const { return std::unique_ptr<Entity>(static_cast<Entity*>(cloneObject().release())); }

  bool hasTrueColor() const { return trueColor >= 0; }
  bool isVisible() const { return !(flags & kInvisible); }
  void setVisible(bool v) { flags = v ? (flags & ~kInvisible) : (flags | kInvisible); }
  bool isErased() const { return flags & kErased; }

  static constexpr std::uint8_t kInvisible = 1;  // 60 = 1
  static constexpr std::uint8_t kErased = 2;

  std::int16_t colorIndex = kColorByLayer;  // 62: 0 ByBlock, 1-255, 256 ByLayer
  std::int16_t lineweight = kLineweightByLayer;  // 370, hundredths of a millimetre
  std::uint8_t flags = 0;
  ObjectId layer;        // 8, by name
  ObjectId linetype;     // 6, by name; null = ByLayer
  std::int32_t trueColor = -1;  // 420: 0x00RRGGBB, -1 = none
  float linetypeScale = 1.0f;   // 48

 protected:
  using DbObject::DbObject;
  Entity(const Entity&) = default;
};

// Gives an entity class its type tag, clone and checked downcast.
template <class Derived, class Base, ObjectType kType>
class EntityOf : public Base {
 public:
  static constexpr ObjectType kObjectType = kType;
  static constexpr bool matches(ObjectType t) { return t == kType; }
  std::unique_ptr<DbObject> cloneObject() const override { return std::make_unique<Derived>(static_cast<const Derived&>(*this)); }

 protected:
  EntityOf() : Base(kType) {}
  EntityOf(const EntityOf&) = default;
};

class Line final : public EntityOf<Line, Entity, ObjectType::Line> {
 public:
  std::string dxfName() const override { return "LINE"; }
  Point3d start;  // 10
  Point3d end;    // 11
  // 39 thickness and 210 extrusion are rare on lines and do not change a plot: kept in extras().unknown.
};

// LWPOLYLINE fields that most polylines leave at their defaults.
struct LwPolylineDetails {
  std::vector<Vector2d> widths;   // 40/41 per point; empty when none given
  double constantWidth = 0;       // 43
  double elevation = 0;           // 38
  double thickness = 0;           // 39
  Vector3d normal = Vector3d::zAxis();  // 210
};

class LwPolyline final : public EntityOf<LwPolyline, Entity, ObjectType::LwPolyline> {
 public:
  std::string dxfName() const override { return "LWPOLYLINE"; }
  static constexpr std::int16_t kClosed = 1, kPlinegen = 128;
  bool isClosed() const { return polyFlags & kClosed; }
  double bulgeAt(std::size_t i) const { return i < bulges.size() ? bulges[i] : 0.0; }
  double startWidthAt(std::size_t i) const { return i < widths().size() ? widths()[i].x : constantWidth(); }
  double endWidthAt(std::size_t i) const { return i < widths().size() ? widths()[i].y : constantWidth(); }

  std::vector<Point2d> points;    // 10/20, OCS
  std::vector<double> bulges;     // 42; empty when every bulge is 0, else one per point
  std::int16_t polyFlags = 0;     // 70

  // The less common fields, read here and written through the setters or `editDetails()`.
  const std::vector<Vector2d>& widths() const { return details_.get().widths; }
  double constantWidth() const { return details_.get().constantWidth; }
  double elevation() const { return details_.get().elevation; }
  double thickness() const { return details_.get().thickness; }
  const Vector3d& normal() const { return details_.get().normal; }
  void setConstantWidth(double w) { details_.set(&LwPolylineDetails::constantWidth, w); }
  void setElevation(double z) { details_.set(&LwPolylineDetails::elevation, z); }
  void setThickness(double t) { details_.set(&LwPolylineDetails::thickness, t); }
  void setNormal(const Vector3d& n) { details_.set(&LwPolylineDetails::normal, n); }
  LwPolylineDetails& editDetails() { return details_.edit(); }

 private:
  LazyPart<LwPolylineDetails> details_;
};

struct PolylineVertex {
  ObjectId id;               // the VERTEX's own handle
  Point3d position;          // 10
  double startWidth = 0;     // 40
  double endWidth = 0;       // 41
  double bulge = 0;          // 42
  double tangent = 0;        // 50
  std::int16_t flags = 0;    // 70
  std::int32_t faceIndices[4] = {0, 0, 0, 0};  // 71-74 (polyface faces)
  bool operator==(const PolylineVertex&) const = default;
};

// POLYLINE with its VERTEX entities and SEQEND: 2D, 3D, polyface and mesh by `polyFlags`.
class Polyline final : public EntityOf<Polyline, Entity, ObjectType::Polyline> {
 public:
  std::string dxfName() const override { return "POLYLINE"; }
  static constexpr std::int16_t kClosed = 1, kCurveFit = 2, kSplineFit = 4, k3dPolyline = 8, k3dMesh = 16,
                                kMeshClosedN = 32, kPolyface = 64, kPlinegen = 128;
  static constexpr std::int16_t kVertexSplineFrame = 16;  // control point of a spline-fit polyline
  bool isClosed() const { return polyFlags & kClosed; }
  bool is3d() const { return polyFlags & k3dPolyline; }
  bool isMeshOrPolyface() const { return polyFlags & (k3dMesh | kPolyface); }

  std::vector<PolylineVertex> vertices;
  double elevation = 0;        // 30 of the header point
  double thickness = 0;        // 39
  double defaultStartWidth = 0;  // 40
  double defaultEndWidth = 0;    // 41
  std::int16_t polyFlags = 0;    // 70
  std::int16_t meshM = 0, meshN = 0;          // 71, 72
  std::int16_t smoothM = 0, smoothN = 0;      // 73, 74
  std::int16_t curveType = 0;                 // 75
  Vector3d normal = Vector3d::zAxis();        // 210
  ObjectId seqendId;
};

class Circle : public EntityOf<Circle, Entity, ObjectType::Circle> {
 public:
  std::string dxfName() const override { return "CIRCLE"; }
  Point3d center;  // 10, OCS
  double radius = 0;  // 40
  double thickness = 0;  // 39
  Vector3d normal = Vector3d::zAxis();  // 210
};

class Arc final : public EntityOf<Arc, Entity, ObjectType::Arc> {
 public:
  std::string dxfName() const override { return "ARC"; }
  Point3d center;
  double radius = 0;
  double thickness = 0;
  Vector3d normal = Vector3d::zAxis();
  double startAngle = 0;  // 50, stored in radians (DXF degrees)
  double endAngle = 0;    // 51, radians; the arc runs counter-clockwise in the OCS
};

class Ellipse final : public EntityOf<Ellipse, Entity, ObjectType::Ellipse> {
 public:
  std::string dxfName() const override { return "ELLIPSE"; }
  Point3d center;       // 10, WCS
  Vector3d majorAxis;   // 11, WCS, relative to the centre
  Vector3d normal = Vector3d::zAxis();  // 210
  double ratio = 1;     // 40 minor/major
  double startParam = 0;       // 41
  double endParam = 2 * kPi;   // 42
};

class Spline final : public EntityOf<Spline, Entity, ObjectType::Spline> {
 public:
  std::string dxfName() const override { return "SPLINE"; }
  static constexpr std::int16_t kClosed = 1, kPeriodic = 2, kRational = 4, kPlanar = 8, kLinear = 16;
  Vector3d normal = Vector3d::zAxis();  // 210
  std::int16_t splineFlags = 0;  // 70
  std::int16_t degree = 3;       // 71
  std::vector<double> knots;     // 40
  std::vector<double> weights;   // 41; empty = all 1
  std::vector<Point3d> controlPoints;  // 10
  std::vector<Point3d> fitPoints;      // 11
  Vector3d startTangent, endTangent;   // 12, 13
  double knotTolerance = 1e-10, controlTolerance = 1e-10, fitTolerance = 1e-10;  // 42, 43, 44
};

class PointEntity final : public EntityOf<PointEntity, Entity, ObjectType::Point> {
 public:
  std::string dxfName() const override { return "POINT"; }
  Point3d position;  // 10, WCS
  double thickness = 0;
  Vector3d normal = Vector3d::zAxis();
  double xAxisAngle = 0;  // 50, radians
};

// SOLID, TRACE and 3DFACE: four corners (the fourth equal to the third for a triangle).
// SOLID and TRACE corners are in the OCS and filled in the order 1, 2, 4, 3.
template <class Derived, ObjectType kType>
class QuadEntity : public EntityOf<Derived, Entity, kType> {
 public:
  Point3d corners[4];  // 10, 11, 12, 13
  double thickness = 0;
  Vector3d normal = Vector3d::zAxis();
  std::int16_t invisibleEdges = 0;  // 70, 3DFACE only
};
class Solid final : public QuadEntity<Solid, ObjectType::Solid> {
 public:
  std::string dxfName() const override { return "SOLID"; }
};
class Trace final : public QuadEntity<Trace, ObjectType::Trace> {
 public:
  std::string dxfName() const override { return "TRACE"; }
};
class Face3d final : public QuadEntity<Face3d, ObjectType::Face3d> {
 public:
  std::string dxfName() const override { return "3DFACE"; }
};

enum class TextHAlign : std::int16_t { Left = 0, Center = 1, Right = 2, Aligned = 3, Middle = 4, Fit = 5 };
enum class TextVAlign : std::int16_t { Baseline = 0, Bottom = 1, Middle = 2, Top = 3 };

// Text fields that most texts leave at their defaults.
struct TextDetails {
  Point3d alignPoint;        // 11, OCS, used unless left/baseline aligned
  bool hasAlignPoint = false;
  bool lockPosition = false;  // 280 after the tag, attributes only
  std::int16_t generation = 0;  // 71
  double oblique = 0;        // 51, radians
  double thickness = 0;      // 39
  Vector3d normal = Vector3d::zAxis();  // 210
  Groups multiline;          // 101 embedded MTEXT of a multi-line attribute, kept as read; attributes only
};

// Fields shared by TEXT, ATTDEF and ATTRIB. The less common ones are in `TextDetails`, read
// through the accessors and written through the setters or `editDetails()`.
template <class Derived, ObjectType kType>
class TextBase : public EntityOf<Derived, Entity, kType> {
 public:
  static constexpr std::int16_t kMirrorX = 2, kMirrorY = 4;  // 71
  std::string text;          // 1, UTF-8 with DXF escapes resolved
  Point3d position;          // 10, OCS, the first alignment point
  double height = 0;         // 40
  double rotation = 0;       // 50, radians
  double widthFactor = 1;    // 41
  ObjectId style;            // 7, by name

 private:
  LazyPart<TextDetails> details_;

 public:
  // Last, so that a derived record's small fields fill the padding after them.
  TextHAlign hAlign = TextHAlign::Left;    // 72
  TextVAlign vAlign = TextVAlign::Baseline;  // 73 (74 for attributes)

  const Point3d& alignPoint() const { return details_.get().alignPoint; }
  bool hasAlignPoint() const { return details_.get().hasAlignPoint; }
  std::int16_t generation() const { return details_.get().generation; }
  double oblique() const { return details_.get().oblique; }
  double thickness() const { return details_.get().thickness; }
  const Vector3d& normal() const { return details_.get().normal; }
  const Groups& multiline() const { return details_.get().multiline; }

  // Sets the second alignment point and marks it present.
  void setAlignPoint(const Point3d& p) {
    TextDetails& d = details_.edit();
    d.alignPoint = p;
    d.hasAlignPoint = true;
  }
  void setHasAlignPoint(bool has) { details_.set(&TextDetails::hasAlignPoint, has); }
  void setGeneration(std::int16_t g) { details_.set(&TextDetails::generation, g); }
  void setOblique(double radians) { details_.set(&TextDetails::oblique, radians); }
  void setThickness(double t) { details_.set(&TextDetails::thickness, t); }
  void setNormal(const Vector3d& n) { details_.set(&TextDetails::normal, n); }
  TextDetails& editDetails() { return details_.edit(); }

 protected:
  bool lockPositionField() const { return details_.get().lockPosition; }
  void setLockPositionField(bool lock) { details_.set(&TextDetails::lockPosition, lock); }
};

class Text final : public TextBase<Text, ObjectType::Text> {
 public:
  std::string dxfName() const override { return "TEXT"; }
};

// Attribute flags (70).
inline constexpr std::int16_t kAttInvisible = 1, kAttConstant = 2, kAttVerify = 4, kAttPreset = 8;

class AttDef final : public TextBase<AttDef, ObjectType::AttDef> {
 public:
  std::string dxfName() const override { return "ATTDEF"; }
  std::int16_t attFlags = 0;     // 70
  std::int16_t fieldLength = 0;  // 73
  std::string tag;     // 2
  std::string prompt;  // 3
  // 280 (subclass AcDbAttributeDefinition)
  bool lockPosition() const { return lockPositionField(); }
  void setLockPosition(bool lock) { setLockPositionField(lock); }
};

class Attrib final : public TextBase<Attrib, ObjectType::Attrib> {
 public:
  std::string dxfName() const override { return "ATTRIB"; }
  bool isInvisible() const { return attFlags & kAttInvisible; }
  std::int16_t attFlags = 0;
  std::int16_t fieldLength = 0;
  std::string tag;
  bool lockPosition() const { return lockPositionField(); }
  void setLockPosition(bool lock) { setLockPositionField(lock); }
};

class MText final : public EntityOf<MText, Entity, ObjectType::MText> {
 public:
  std::string dxfName() const override { return "MTEXT"; }
  std::string text;          // 3 pieces then 1, joined; formatting codes kept
  Point3d position;          // 10, WCS
  Vector3d normal = Vector3d::zAxis();  // 210
  Vector3d xDirection;       // 11, WCS; zero = use `rotation`
  double rotation = 0;       // 50, radians (when no 11 is given)
  double height = 0;         // 40
  double referenceWidth = 0;   // 41
  double definedHeight = 0;    // 46
  std::int16_t attachment = 1;  // 71: 1 top left … 9 bottom right
  std::int16_t drawingDirection = 1;  // 72
  ObjectId style;            // 7
  std::int16_t lineSpacingStyle = 1;  // 73
  double lineSpacingFactor = 1;       // 44
  std::int32_t backgroundFlags = 0;   // 90
  std::int16_t backgroundColor = 0;   // 63
  double backgroundScale = 1.5;       // 45
  std::int32_t backgroundTransparency = 0;  // 441
  Groups columns;            // 75-79, 48-49, 50 column data and the 101 embedded object, kept as read
};

class Insert final : public EntityOf<Insert, Entity, ObjectType::Insert> {
 public:
  std::string dxfName() const override { return "INSERT"; }
  bool isMInsert() const { return columnCount > 1 || rowCount > 1; }
  ObjectId block;            // 2, by name (the BLOCK_RECORD)
  Point3d position;          // 10, OCS
  Vector3d scale{1, 1, 1};   // 41, 42, 43
  double rotation = 0;       // 50, radians
  std::int16_t columnCount = 1, rowCount = 1;  // 70, 71
  double columnSpacing = 0, rowSpacing = 0;    // 44, 45
  Vector3d normal = Vector3d::zAxis();         // 210
  std::vector<std::unique_ptr<Attrib>> attribs;  // owned, in file order
  ObjectId seqendId;

  Insert() = default;
  Insert(const Insert& o);
};

struct HatchEdge {
  enum class Kind : std::uint8_t { Line = 1, Arc = 2, Ellipse = 3, Spline = 4 };
  Kind kind = Kind::Line;
  Point2d start, end;        // line: 10/11; arc/ellipse: centre in `start`
  Vector2d majorAxis;        // ellipse: 11 endpoint of the major axis relative to the centre
  double radius = 0;         // arc: 40; ellipse: 40 minor/major ratio
  double startAngle = 0, endAngle = 0;  // 50, 51 in degrees as stored
  bool counterClockwise = true;         // 73
  // Spline edges.
  std::int32_t degree = 3;
  bool rational = false, periodic = false;
  std::vector<double> knots, weights;
  std::vector<Point2d> controlPoints, fitPoints;
  Vector2d startTangent, endTangent;
  bool hasTangents = false;
  bool operator==(const HatchEdge&) const = default;
};

struct HatchPath {
  static constexpr std::int32_t kExternal = 1, kPolyline = 2, kDerived = 4, kTextbox = 8, kOutermost = 16;
  std::int32_t flags = 0;                  // 92
  // Polyline paths.
  std::vector<Point2d> vertices;
  std::vector<double> bulges;              // empty when the path has none
  bool closed = true;                      // 73
  // Edge paths.
  std::vector<HatchEdge> edges;
  std::vector<ObjectId> sourceObjects;     // 330 after 97
  bool isPolyline() const { return flags & kPolyline; }
  bool operator==(const HatchPath&) const = default;
};

struct HatchPatternLine {
  double angle = 0;          // 53, degrees
  Point2d base;              // 43, 44
  Vector2d offset;           // 45, 46
  std::vector<double> dashes;  // 49
  bool operator==(const HatchPatternLine&) const = default;
};

class Hatch final : public EntityOf<Hatch, Entity, ObjectType::Hatch> {
 public:
  std::string dxfName() const override { return "HATCH"; }
  double elevation = 0;        // 30 of the 10 point
  Vector3d normal = Vector3d::zAxis();
  std::string patternName;     // 2
  bool solidFill = false;      // 70
  bool associative = false;    // 71
  std::vector<HatchPath> paths;
  std::int16_t hatchStyle = 0;   // 75
  std::int16_t patternType = 1;  // 76
  double patternAngle = 0;       // 52, degrees
  double patternScale = 1;       // 41
  bool patternDouble = false;    // 77
  std::vector<HatchPatternLine> patternLines;
  double pixelSize = 0;          // 47
  std::vector<Point2d> seedPoints;  // 10/20 after 98
  Groups gradient;               // 450 onwards, kept as read
};

class Dimension final : public EntityOf<Dimension, Entity, ObjectType::Dimension> {
 public:
  std::string dxfName() const override { return "DIMENSION"; }
  ObjectId block;              // 2, the anonymous *D block that shows the dimension
  ObjectId dimStyle;           // 3, by name
  Point3d definitionPoint;     // 10, WCS
  Point3d textMidPoint;        // 11, OCS
  std::int16_t dimType = 0;    // 70
  std::int16_t attachment = 5; // 71
  std::string text;            // 1, "<>" or empty = measurement
  double measurement = 0;      // 42
  double textRotation = 0;     // 53, degrees
  Vector3d normal = Vector3d::zAxis();
  Groups subclassData;         // the groups of the type's own subclass (13, 14, 15, 16, 40, 50, 52 …)
};

class Leader final : public EntityOf<Leader, Entity, ObjectType::Leader> {
 public:
  std::string dxfName() const override { return "LEADER"; }
  ObjectId dimStyle;             // 3
  bool hasArrowhead = true;      // 71
  std::int16_t pathType = 0;     // 72: 0 straight, 1 spline
  std::int16_t creationFlag = 3; // 73
  std::vector<Point3d> vertices; // 10, WCS
  ObjectId annotation;           // 340
  Vector3d normal = Vector3d::zAxis();
  Groups otherData;              // 74-77, 40-41, 211-213 …, kept as read
};

class Viewport final : public EntityOf<Viewport, Entity, ObjectType::Viewport> {
 public:
  std::string dxfName() const override { return "VIEWPORT"; }
  static constexpr std::int32_t kClippedNonRect = 0x10000;  // 90
  Point3d center;            // 10, paper space
  double width = 0, height = 0;  // 40, 41
  std::int16_t status = 0;   // 68: 0 off, >0 on (1 = the paper space view itself)
  std::int16_t number = 0;   // 69
  Point2d viewCenter;        // 12, DCS
  Vector3d viewDirection = Vector3d::zAxis();  // 16
  Point3d viewTarget;        // 17
  double viewHeight = 1;     // 45, model units
  double twist = 0;          // 51, radians
  double lensLength = 50;    // 42
  double frontClip = 0, backClip = 0;  // 43, 44
  std::int32_t statusFlags = 0;  // 90
  std::vector<ObjectId> frozenLayers;  // 331 (341 in some writers)
  ObjectId clipBoundary;     // 340, an entity of the same paper space
  std::string plotStyleSheet;  // 1
  std::int16_t renderMode = 0;  // 281
  Point3d ucsOrigin;          // 110
  Vector3d ucsXAxis = Vector3d::xAxis(), ucsYAxis = Vector3d::yAxis();  // 111, 112
  Groups otherData;          // the remaining viewport groups, kept as read
  // Scale: paper units per model unit.
  double scale() const { return viewHeight > 0 ? height / viewHeight : 1.0; }
};

// IMAGE and WIPEOUT share the raster record.
template <class Derived, ObjectType kType>
class RasterBase : public EntityOf<Derived, Entity, kType> {
 public:
  std::int32_t classVersion = 0;  // 90
  Point3d position;        // 10, lower-left corner of the lower-left pixel
  Vector3d uPixel;         // 11, one pixel along u
  Vector3d vPixel;         // 12, one pixel along v
  Vector2d imageSize;      // 13/23 in pixels
  ObjectId imageDef;       // 340
  std::int16_t displayFlags = 7;   // 70
  bool clipping = false;   // 280
  std::int16_t brightness = 50, contrast = 50, fade = 0;  // 281, 282, 283
  ObjectId imageDefReactor;  // 360
  std::int16_t clipType = 1;  // 71: 1 rectangle, 2 polygon
  std::vector<Point2d> clipVertices;  // 14, pixel coordinates
  bool clipInverted = false;  // 290
};

class Image final : public RasterBase<Image, ObjectType::Image> {
 public:
  std::string dxfName() const override { return "IMAGE"; }
};
class Wipeout final : public RasterBase<Wipeout, ObjectType::Wipeout> {
 public:
  std::string dxfName() const override { return "WIPEOUT"; }
};

// Any other entity: kept whole as its DXF name and the groups after the common entity data.
// Other vendors' entities (TCH_TEXT …) are read through `text()`.
class ProxyEntity final : public EntityOf<ProxyEntity, Entity, ObjectType::Proxy> {
 public:
  std::string dxfName() const override { return name; }
  // The value of the first group 1, where such entities keep their text.
  std::string text() const;
  std::string name;  // the DXF name, e.g. "TCH_TEXT", "ACAD_TABLE"
  Groups groups;     // everything after the common entity groups, subclass markers included
};

// What an application's own entity class offers the drawing model: its name, how it draws and
// whether it belongs in a saved file. The application implements it.
struct CustomPrimitive {
  enum class Kind : std::uint8_t { Polyline, Polygon };
  Kind kind = Kind::Polyline;
  std::int16_t colorIndex = 7;
  bool filled = false;
  std::vector<Point3d> points;  // WCS of the entity's space
};
class CustomContent {
 public:
  virtual ~CustomContent() = default;
  virtual std::string dxfName() const = 0;
  virtual std::unique_ptr<CustomContent> clone() const = 0;
  virtual std::vector<CustomPrimitive> primitives() const = 0;
  // Markers and previews: never written to a file, never plotted, not content for fences.
  virtual bool isTransient() const = 0;
  // Groups written after the common entity data when the entity is saved.
  virtual Groups dxfGroups() const = 0;
  // The CLASSES entry a saved file declares for the class; none for classes that need none.
  struct ClassRecord {
    std::string appName;
    std::int32_t proxyFlags = 0;
  };
  virtual std::optional<ClassRecord> classRecord() const { return std::nullopt; }
  // Moves the content with its entity; false when the class can't follow a transform.
  virtual bool transformBy(const Matrix3d&) { return false; }
};

// An entity of an application's own class (a sheet marker, a signature).
class CustomEntity final : public EntityOf<CustomEntity, Entity, ObjectType::Custom> {
 public:
  std::string dxfName() const override { return content ? content->dxfName() : std::string("CUSTOM"); }
  bool isTransient() const { return !content || content->isTransient(); }
  std::unique_ptr<CustomContent> content;

  CustomEntity() = default;
  CustomEntity(const CustomEntity& o) : EntityOf(o), content(o.content ? o.content->clone() : nullptr) {}
};

}  // namespace tv::cad
