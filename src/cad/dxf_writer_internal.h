#pragma once
// Shared state of one DXF write: the handles decided before writing, the records a CAD program
// needs that the database lacks, and the output with its sink. Used by the dxf_write_*.cpp files only.
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "cad/database.h"
#include "cad/dxf_output.h"
#include "cad/names_internal.h"

namespace tv::cad::dxf_write {

// Records synthesised for the output only; the database stays untouched.
struct AddedRecords {
  std::vector<std::unique_ptr<Layer>> layers;
  std::vector<std::unique_ptr<Linetype>> linetypes;
  std::vector<std::unique_ptr<TextStyle>> textStyles;
  std::map<std::string, std::vector<std::unique_ptr<TableRecord>>> other;  // by table name
  std::unique_ptr<Dictionary> rootDictionary;
};

class WriteContext {
 public:
  WriteContext(const Database& database, DxfVersion v) : db(database), version(v) {}

  const Database& db;
  const DxfVersion version;
  DxfOutput out;
  // Takes the buffered text when it grows large (files); false on a write error. Null = keep all in memory.
  std::function<bool(std::string&)> sink;
  bool sinkFailed = false;

  // ---- handles ---------------------------------------------------------------------------------
  // The handle to write for an id field of the database: the field itself, or the one given to it
  // when it was null or repeated another. Fields are keyed by address: pass the database's own field.
  ObjectId idOf(const ObjectId& field) const {
    if (assigned_.empty()) return field;
    auto it = assigned_.find(&field);
    return it == assigned_.end() ? field : it->second;
  }
  ObjectId allocate() { return ObjectId{nextHandle_++}; }
  void reassign(const ObjectId& field) {
    if (!assigned_.count(&field)) assigned_[&field] = allocate();
  }
  void startHandlesAbove(std::uint64_t maxUsed) { nextHandle_ = maxUsed + 1; }
  std::uint64_t handleSeed() const { return nextHandle_; }

  // ---- plan ------------------------------------------------------------------------------------
  AddedRecords added;
  std::map<std::string, ObjectId, std::less<>> tableIds;  // handle of each TABLE head written
  std::unordered_map<ObjectId, ObjectId> listedBy;        // object -> dictionary that lists it
  std::map<std::string, int, std::less<>> nameCounts;     // DXF names of what is written, for CLASSES
  std::map<std::string, CustomContent::ClassRecord, std::less<>> customClasses;  // application classes written

  ObjectId tableId(std::string_view table) const {
    auto it = tableIds.find(table);
    return it == tableIds.end() ? ObjectId{} : it->second;
  }
  const Dictionary* rootDictionary() const {
    if (const Dictionary* d = db.rootDictionary()) return d;
    return added.rootDictionary.get();
  }
  // The owner to write for a non-graphical object: its own, else the dictionary that lists it.
  ObjectId ownerOf(const DbObject& o) const {
    if (!o.owner.isNull()) return o.owner;
    auto it = listedBy.find(idOf(o.id));
    return it == listedBy.end() ? ObjectId{} : it->second;
  }

  // Hands the buffered text to the sink once it passes a few megabytes.
  void flushIfLarge() {
    if (sink && out.size() >= kFlushBytes) flush();
  }
  void flush() {
    if (!sink || out.size() == 0) return;
    if (!sinkFailed && !sink(out.buffer())) sinkFailed = true;
    out.buffer().clear();
  }

 private:
  static constexpr std::size_t kFlushBytes = 4u << 20;
  std::unordered_map<const ObjectId*, ObjectId> assigned_;
  std::uint64_t nextHandle_ = 1;
};

// Decides the handles of everything without one, collects the records to add and the names written.
void PlanWrite(WriteContext& ctx);

// Markers and previews of the application's own classes live only on screen: never in a file.
inline bool IsSaved(const Entity& e) {
  const auto* custom = As<CustomEntity>(&e);
  return !custom || !custom->isTransient();
}

// "0 NAME", the handle, the 102 groups (application groups, reactors, extension dictionary), 330 owner.
void WriteObjectHead(WriteContext& ctx, std::string_view dxfName, int handleCode, ObjectId id, const DbObject& o, ObjectId owner);
// The groups kept as read and the extended data, which close every object.
void WriteObjectTail(WriteContext& ctx, const DbObject& o);

void WriteHeaderSection(WriteContext& ctx);
void WriteClassesSection(WriteContext& ctx);
void WriteTablesSection(WriteContext& ctx);
void WriteBlocksSection(WriteContext& ctx);
void WriteEntitiesSection(WriteContext& ctx);
void WriteObjectsSection(WriteContext& ctx);

}  // namespace tv::cad::dxf_write
