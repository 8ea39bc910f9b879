#pragma once
// The drawing database: tables, blocks with their entities, layouts, dictionaries and objects.
// Every object is owned by exactly one container here (a table, a block record, an insert for
// its attributes, or the object list); everyone else refers to it by ObjectId.
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "cad/entities.h"
#include "cad/header.h"
#include "cad/objects.h"
#include "cad/tables.h"

namespace tv::cad {

// DXF/DWG format versions by $ACADVER.
enum class DxfVersion : int { R12 = 1009, R13 = 1012, R14 = 1014, R2000 = 1015, R2004 = 1018, R2007 = 1021, R2010 = 1024, R2013 = 1027, R2018 = 1032 };
std::string_view AcadVerText(DxfVersion v);        // "AC1032"
DxfVersion DxfVersionOf(std::string_view acadver);  // unknown text -> nearest known, "AC1009" and older -> R12
std::string_view ReleaseName(DxfVersion v);        // "R2018"

struct DxfClass {
  std::string dxfName;   // 1
  std::string cppName;   // 2
  std::string appName;   // 3
  std::int32_t proxyFlags = 0;     // 90
  std::int32_t instanceCount = 0;  // 91
  bool wasProxy = false;           // 280
  bool isEntity = false;           // 281
  bool operator==(const DxfClass&) const = default;
};

// The TABLE object that heads one symbol table.
struct TableHead {
  ObjectId id;
  Groups extra;  // e.g. the DIMSTYLE table's 71 and 340 list; 102 groups
  std::unique_ptr<ObjectExtras> extras;
};

class Database {
 public:
  Database();
  ~Database();
  Database(Database&&) noexcept;
  Database& operator=(Database&&) noexcept;
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  // A new drawing as a CAD program starts one: layer "0", linetypes ByBlock/ByLayer/Continuous,
  // style "Standard", *Model_Space with layout "Model", *Paper_Space with "Layout1", the root
  // dictionary with ACAD_GROUP and ACAD_LAYOUT, $ACADVER AC1032.
  static Database createDefault();
  // Adds whatever of the above a read file lacked (R12 files have no block records or layouts),
  // so that every later user finds model space, a paper space per layout and the root dictionary.
  void ensureStandardObjects();

  Header header;
  std::vector<DxfClass> classes;

  // ---- objects by id -------------------------------------------------------------------------
  DbObject* object(ObjectId id) const;
  template <class T>
  T* objectAs(ObjectId id) const { return As<T>(object(id)); }
  Entity* entity(ObjectId id) const { return objectAs<Entity>(id); }
  // Hints that `id` will be looked up soon, so that its memory is on the way meanwhile: with
  // `objectToo` false only its index entry, else (the entry being at hand by then) the object.
  void prefetch(ObjectId id, bool objectToo) const;
  std::size_t objectCount() const { return index_.size() + pending_.size(); }
  // A handle not used yet ($HANDSEED moves on).
  ObjectId newHandle();
  // Makes `o` findable by id; gives it a new handle when it has none or its handle is taken.
  // Returns the id it ended up with. Used by the reader and by every add function below.
  ObjectId registerObject(DbObject& o);
  // Room for `count` objects in all, so that a reader that knows how many are coming does not
  // leave the index grown by doubling.
  void reserveObjects(std::size_t count) { index_.reserve(count); }
  void unregisterObject(ObjectId id);

  // ---- tables ----------------------------------------------------------------------------------
  // Names compare without regard to case, as CAD programs do.
  Layer* findLayer(std::string_view name) const;
  TextStyle* findTextStyle(std::string_view name) const;
  Linetype* findLinetype(std::string_view name) const;
  BlockRecord* findBlock(std::string_view name) const;
  TableRecord* findTableRecord(std::string_view table, std::string_view name) const;

  Layer& addLayer(std::string name);  // returns the existing one when present
  TextStyle& addTextStyle(std::string name);
  Linetype& addLinetype(std::string name);
  BlockRecord& addBlock(std::string name);  // "*U" / "*D" get a free number: "*U12"
  TableRecord& addTableRecord(std::string table, std::string name);

  std::vector<std::unique_ptr<Layer>> layers;
  std::vector<std::unique_ptr<TextStyle>> textStyles;
  std::vector<std::unique_ptr<Linetype>> linetypes;
  std::vector<std::unique_ptr<BlockRecord>> blocks;
  // VPORT, VIEW, UCS, APPID, DIMSTYLE and unknown tables, by table name.
  std::map<std::string, std::vector<std::unique_ptr<TableRecord>>> otherTables;
  // The TABLE heads by table name ("LAYER", "BLOCK_RECORD" …).
  std::map<std::string, TableHead> tableHeads;
  ObjectId tableId(std::string_view table);  // creates the head when missing

  // The "*ACTIVE" VPORT record (view centre, height, UCS of the current viewport), if any.
  TableRecord* activeViewport() const;

  // ---- blocks and layouts ----------------------------------------------------------------------
  BlockRecord* modelSpace() const;
  // The paper space of the layout that was current when the file was saved ("*Paper_Space").
  BlockRecord* paperSpace() const;
  Layout* layoutOf(const BlockRecord& block) const;
  BlockRecord* blockOf(const Layout& layout) const;
  // Layouts sorted by tab order; "Model" first.
  std::vector<Layout*> layoutsInTabOrder() const;
  Layout* findLayout(std::string_view name) const;
  // A new layout with its own paper space block, after the last tab.
  Layout& addLayout(std::string name);

  // Appends to a block; gives the entity an id, its owner and layer "0" when it has none.
  template <class T>
  T& append(BlockRecord& block, std::unique_ptr<T> e) {
    T& ref = *e;
    appendEntity(block, std::unique_ptr<Entity>(std::move(e)));
    return ref;
  }
  Entity& appendEntity(BlockRecord& block, std::unique_ptr<Entity> e);
  // Marks an entity erased: it is no longer found by id, and writers and iterations skip it.
  bool erase(ObjectId id);
  // Drops erased entities from their blocks.
  void purgeErased();
  // Live entities of a block (erased ones skipped), in drawing order.
  template <class F>
  void forEachEntity(const BlockRecord& block, F&& f) const {
    for (const auto& e : block.entities)
      if (!e->isErased()) f(*e);
  }
  // The block that owns an entity (for attributes: the block of their insert).
  BlockRecord* ownerBlock(const Entity& e) const;

  // ---- objects ---------------------------------------------------------------------------------
  std::vector<std::unique_ptr<DbObject>> objects;  // non-graphical objects in file order
  ObjectId rootDictionaryId;

  // The files the drawing's external references were loaded from (see xref_load.h); never saved.
  std::vector<std::string> externalFiles;
  Dictionary* rootDictionary() const { return objectAs<Dictionary>(rootDictionaryId); }
  template <class T>
  T& addObject(std::unique_ptr<T> o, ObjectId owner) {
    T& ref = *o;
    addObjectImpl(std::unique_ptr<DbObject>(std::move(o)), owner);
    return ref;
  }
  // The entry `key` of a dictionary; a new dictionary there when missing.
  Dictionary& ensureDictionary(Dictionary& parent, std::string key);
  // The named-object dictionary entry as a dictionary (nullptr when absent or of another type).
  Dictionary* namedDictionary(std::string_view key) const;
  // The Xrecord `key` of a dictionary; a new empty one when missing (an entry of another type is replaced).
  Xrecord& ensureXrecord(Dictionary& parent, std::string key);
  Dictionary* extensionDictionary(const DbObject& o) const;
  Dictionary& ensureExtensionDictionary(DbObject& o);
  // The clip of an insert: its extension dictionary's ACAD_FILTER / SPATIAL filter.
  SpatialFilter* spatialFilterOf(const Insert& insert) const;
  // Gives `to`, an insert of this drawing, the clip that `from` has in `source` (none: nothing).
  void copyClip(const Database& source, const Insert& from, Insert& to);

  DxfVersion version() const;
  // $DWGCODEPAGE, "ANSI_936" when absent.
  std::string codePage() const;

 private:
  void addObjectImpl(std::unique_ptr<DbObject> o, ObjectId owner);
  void sortIndex() const;

  // The id sits next to the pointer so that a lookup reads one contiguous array and never
  // touches the objects it passes over.
  struct IndexEntry {
    std::uint64_t id;
    DbObject* object;
  };
  const IndexEntry* findEntry(ObjectId id) const;

  mutable std::vector<IndexEntry> index_;    // sorted by id
  mutable std::vector<IndexEntry> pending_;  // registered out of order, not merged yet
  mutable std::unordered_set<std::uint64_t> pendingIds_;
  std::uint64_t nextHandle_ = 1;
};

}  // namespace tv::cad
