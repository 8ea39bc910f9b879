#pragma once
// Symbol table records: layers, text styles, linetypes, block records and the other tables.
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "cad/entities.h"

namespace tv::cad {

template <class Derived, ObjectType kType>
class RecordOf : public DbObject {
 public:
  static constexpr ObjectType kObjectType = kType;
  static constexpr bool matches(ObjectType t) { return t == kType; }
  std::unique_ptr<DbObject> cloneObject() const override { return std::make_unique<Derived>(static_cast<const Derived&>(*this)); }
  std::string name;  // 2
  std::int16_t standardFlags = 0;  // 70

 protected:
  RecordOf() : DbObject(kType) {}
  RecordOf(const RecordOf&) = default;
};

class Layer final : public RecordOf<Layer, ObjectType::Layer> {
 public:
  std::string dxfName() const override { return "LAYER"; }
  static constexpr std::int16_t kFrozen = 1, kFrozenInNewViewports = 2, kLocked = 4;
  bool isOn() const { return on; }
  bool isFrozen() const { return standardFlags & kFrozen; }
  bool isLocked() const { return standardFlags & kLocked; }
  void setFrozen(bool v) { standardFlags = v ? (standardFlags | kFrozen) : (standardFlags & ~kFrozen); }
  void setLocked(bool v) { standardFlags = v ? (standardFlags | kLocked) : (standardFlags & ~kLocked); }

  bool on = true;                   // a negative 62 means off
  std::int16_t colorIndex = 7;      // 62, always positive here
  std::int32_t trueColor = -1;      // 420
  ObjectId linetype;                // 6, by name
  bool plottable = true;            // 290
  std::int16_t lineweight = kLineweightDefault;  // 370
  ObjectId plotStyle;               // 390
  ObjectId material;                // 347
};

class TextStyle final : public RecordOf<TextStyle, ObjectType::TextStyle> {
 public:
  std::string dxfName() const override { return "STYLE"; }
  static constexpr std::int16_t kShapeFile = 1, kVertical = 4;
  std::string fontFile;     // 3 (an SHX or TTF file name)
  std::string bigFontFile;  // 4
  std::string fontFamily;   // TrueType family from the ACAD extended data, if any
  double height = 0;        // 40, 0 = not fixed
  double widthFactor = 1;   // 41
  double oblique = 0;       // 50, radians
  std::int16_t generation = 0;  // 71
  double lastHeight = 2.5;  // 42
};

struct LinetypeDash {
  double length = 0;         // 49: > 0 dash, < 0 gap, 0 dot
  std::int16_t shapeFlags = 0;  // 74
  std::int16_t shapeNumber = 0; // 75
  ObjectId shapeStyle;       // 340
  double shapeScale = 1;     // 46
  double shapeRotation = 0;  // 50, degrees
  double offsetX = 0, offsetY = 0;  // 44, 45
  std::string text;          // 9
  bool operator==(const LinetypeDash&) const = default;
};

class Linetype final : public RecordOf<Linetype, ObjectType::Linetype> {
 public:
  std::string dxfName() const override { return "LTYPE"; }
  std::string description;  // 3
  std::int16_t alignment = 65;  // 72 'A'
  double patternLength = 0;     // 40
  std::vector<LinetypeDash> dashes;
  bool isContinuous() const { return dashes.empty(); }
};

// A block definition with its entities. Model space and each layout's paper space are blocks too.
class BlockRecord final : public RecordOf<BlockRecord, ObjectType::BlockRecord> {
 public:
  std::string dxfName() const override { return "BLOCK_RECORD"; }
  // BLOCK flags (70 of the BLOCK entity).
  static constexpr std::int16_t kAnonymous = 1, kHasAttributes = 2, kXref = 4, kXrefOverlay = 8, kExternallyDependent = 16,
                                kResolvedXref = 32, kReferencedXref = 64;
  bool isAnonymous() const { return blockFlags & kAnonymous; }
  bool isXref() const { return blockFlags & (kXref | kXrefOverlay); }
  bool isLayout() const { return !layout.isNull() || isModelSpace() || isPaperSpace(); }
  bool isModelSpace() const;  // "*Model_Space"
  bool isPaperSpace() const;  // "*Paper_Space…"

  BlockRecord() = default;
  BlockRecord(const BlockRecord& o);

  std::int16_t blockFlags = 0;   // 70 of BLOCK
  Point3d basePoint;             // 10 of BLOCK
  std::string xrefPath;          // 1 of BLOCK
  std::string description;       // 4 of BLOCK
  ObjectId layout;               // 340 of BLOCK_RECORD
  std::int16_t insertUnits = 0;  // 70 of BLOCK_RECORD
  bool explodable = true;        // 280
  bool scalable = false;         // 281
  Bytes preview;                 // 310
  ObjectId beginId, endId;       // handles of the BLOCK and ENDBLK entities
  ObjectId beginLayer;           // layer of BLOCK/ENDBLK
  std::vector<std::unique_ptr<Entity>> entities;  // owned, in drawing order
  // The entities came from an external reference's file (xref_load.h): they are read from there
  // each time the drawing is opened, so a saved drawing leaves them out.
  bool externalContent = false;
};

// VPORT, VIEW, UCS, APPID, DIMSTYLE and any other table: the name and the raw groups.
class TableRecord final : public RecordOf<TableRecord, ObjectType::TableRecord> {
 public:
  std::string dxfName() const override { return table; }
  std::string table;  // "VPORT", "VIEW", "UCS", "APPID", "DIMSTYLE" …
  Groups groups;      // after the common record groups (name and 70 excluded)
};

}  // namespace tv::cad
