#pragma once
// Internals of the DXF reader, shared by its section readers (dxf_read_*.cpp).
#include <algorithm>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "cad/codepage.h"
#include "cad/database.h"
#include "cad/dxf_entity_codec.h"
#include "cad/dxf_reader.h"
#include "cad/dxf_tokenizer.h"
#include "cad/names_internal.h"

namespace tv::cad::dxf_read {

// snprintf into a std::string.
std::string Format(const char* fmt, ...) __attribute__((format(printf, 1, 2)));

std::string_view TrimBlanks(std::string_view s);

// Case-insensitive (ASCII) hashing so that name lookups take a string_view without allocating.
struct NameHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view s) const noexcept;
};
struct NameEqual {
  using is_transparent = void;
  bool operator()(std::string_view a, std::string_view b) const noexcept { return EqualsNoCase(a, b); }
};
template <class V>
using NameMap = std::unordered_map<std::string, V, NameHash, NameEqual>;

// Table records by name. A record is entered under its decoded name and, when the file spells it
// differently (another code page, \U+ escapes), under the raw spelling too, so that callers may
// look up either form.
class NameIndex {
 public:
  ObjectId find(std::string_view name);
  void add(std::string_view name, ObjectId id);

 private:
  NameMap<ObjectId> map_;
  // Entities cycle through a handful of layers: a small cache of exact spellings, picked by a
  // few bytes of the name, answers most lookups before the hash map.
  struct Recent {
    std::string name;
    ObjectId id;
  };
  static constexpr std::size_t kRecent = 32;
  static std::size_t slotOf(std::string_view name) {
    const std::size_t n = name.size();
    if (n == 0) return 0;
    const auto at = [&](std::size_t i) { return static_cast<std::size_t>(static_cast<unsigned char>(name[i])); };
    return (n * 7 + at(0) + at(n / 2) * 3 + at(n - 1) * 5 + at((n * 3) / 4) * 11) % kRecent;
  }
  Recent recent_[kRecent];
};

// One read of one file: walks the sections and builds the database, and serves the entity
// decoder as its DxfReadContext.
class Reader final : public DxfReadContext {
 public:
  // Counts the lines of the input, for the message about a file that ends too early.
  using LineCounter = std::function<std::uint64_t()>;
  Reader(DxfTokenizer& tok, std::string name, const DxfReadOptions& options, LineCounter countLines);
  DxfReadResult run();

  // ---- DxfReadContext --------------------------------------------------------------------------
  Database& db() override { return db_; }
  DxfVersion version() const override { return version_; }
  std::string text(std::string_view raw) override;
  ObjectId layerByName(std::string_view name) override;
  ObjectId linetypeByName(std::string_view name) override;
  ObjectId textStyleByName(std::string_view name) override;
  ObjectId blockByName(std::string_view name) override;
  ObjectId dimStyleByName(std::string_view name) override;
  ObjectId recordOfEntity(EntityName kind, std::string_view raw) override;
  void warn(std::string message) override;

 private:
  // ---- reading groups (dxf_reader.cpp) -------------------------------------------------------
  // The next group; false at the end of input or on an error, with the error set: inside a
  // section the end of input means the file is incomplete.
  bool next(DxfGroup& g);
  bool failTokenizer();
  bool failIncomplete();
  bool fail(std::string message);
  // Skips groups up to the next 0 group (left unread).
  bool skipToNextEntry();
  // Calls `fn(g)` for each group up to the next 0 group, which is left unread; false when `fn`
  // or reading fails.
  template <class Fn>
  bool forEachGroupOfEntry(Fn fn) {
    DxfGroup g;
    for (;;) {
      if (!next(g)) return false;
      if (g.code == 0) {
        tok_.pushBack();
        return true;
      }
      if (!fn(g)) return false;
    }
  }
  // Skips to the end of a section the reader does not interpret (THUMBNAILIMAGE, ACDSDATA …).
  bool skipSection();
  void reportProgress();

  // A typed copy of a group: strings decoded, handles as ids, binary chunks as bytes.
  Group toGroup(const DxfGroup& g);
  Bytes bytesOf(const DxfGroup& g) const;
  // Handles 5, 102 groups and the first 330 of an object or table record; leaves the first
  // other group unread. `handleCode` is 105 for DIMSTYLE records.
  bool readObjectPrefix(DbObject& o, int handleCode = 5);
  // A 102 {NAME … } group just read: into o's extras.
  bool read102(DbObject& o, const DxfGroup& open);
  bool read102Into(ObjectExtras& extras, const DxfGroup& open);
  // Extended data from a 1001 group just read up to the next 0 group.
  bool readXdata(Groups& out, const DxfGroup& first);

  // ---- header and classes (dxf_reader.cpp) ----------------------------------------------------
  bool readHeader();
  bool readClasses();
  // Picks the text decoder from $ACADVER and $DWGCODEPAGE; false for an unknown code page.
  bool ensureDecoder();

  // ---- tables (dxf_read_tables.cpp) ----------------------------------------------------------
  bool readTables();
  bool readTable(std::string tableName, bool withHead);
  bool readTableHead(TableHead& head);
  // A record after its 0 group, up to the next 0 group: the prefix, the name (2, undecoded) and
  // the flags (70), then `field(g)` for the rest, which returns false for groups it does not take;
  // those go to the record's extras (102, extended data, unknown groups).
  template <class Field>
  bool readRecord(DbObject& r, std::string& rawName, std::int16_t& flags, Field field);
  bool readLayer();
  bool readTextStyle();
  bool readLinetype();
  bool readBlockRecord();
  bool readOtherRecord(const std::string& table, std::string_view recordName);
  // After TABLES: layer linetypes, read by name, may refer to records of a later table.
  void resolveLayerLinetypes();

  // ---- blocks and entities (dxf_read_blocks.cpp) --------------------------------------------
  bool readBlocks();
  bool readEntities();
  bool readBlockBegin(BlockRecord*& current);
  bool readBlockEnd(BlockRecord* current);
  // Decodes the entity whose 0 group was just read; appends it to `owner`, or when that is null
  // to the block its 330 or 67 names. `keep` false decodes and drops it.
  bool readEntity(std::string_view dxfName, BlockRecord* owner, bool keep = true);
  BlockRecord* blockRecordById(ObjectId id) const;
  BlockRecord& modelSpace();
  BlockRecord& paperSpace();
  // A new block record registered under its own name (the table lacked it).
  BlockRecord& createBlockRecord(std::string name);
  void indexBlock(BlockRecord& b, std::string_view rawName = {});
  std::string freeAnonymousName();  // "*U<n>" not taken yet

  // ---- objects (dxf_read_objects.cpp) --------------------------------------------------------
  bool readObjects();
  std::unique_ptr<DbObject> readObject(std::string_view dxfName);
  bool readObjectBody(DbObject& o, const std::function<bool(const DxfGroup&)>& f);
  bool readDictionary(Dictionary& d);
  bool readXrecord(Xrecord& x);
  bool readLayout(Layout& l);
  bool readImageDef(ImageDef& d);
  bool readSpatialFilter(SpatialFilter& f);
  bool readGenericObject(GenericObject& o);

  // ---- end of reading --------------------------------------------------------------------------
  void finish();

  // Records the file refers to without declaring them. With a $HANDSEED they get a handle above
  // the file's at once but join the database's index only at the end, so that the entities that
  // follow, with lower handles, keep arriving in handle order (the fast way to register).
  template <class T>
  T& newRecord(std::vector<std::unique_ptr<T>>& records, std::string name, const std::string& table);
  void registerLater(DbObject& o);
  void sawHandle(ObjectId id) { maxHandleSeen_ = std::max(maxHandleSeen_, id.value); }
  void registerDeferred();
  // A record by name from `index`; `create(utf8Name)` makes a missing one and returns its id.
  template <class Create>
  ObjectId lookUp(NameIndex& index, std::string_view name, Create&& create);
  // Names are decoded unless they are already UTF-8 text (the entity codec may pass either).
  std::string nameText(std::string_view name);
  // A warning given once per key (a missing layer is reported once, not per entity).
  void warnOnce(std::string key, std::string message);

  DxfTokenizer& tok_;
  std::string name_;
  const DxfReadOptions& options_;
  LineCounter countLines_;
  Database db_;
  DxfVersion version_ = DxfVersion::R12;
  std::optional<CodePageDecoder> decoder_;
  bool decoderChecked_ = false;
  bool textIsUtf8_ = false;  // the decoder's page is UTF-8

  std::string error_;
  std::vector<std::string> warnings_;
  std::size_t droppedWarnings_ = 0;
  std::unordered_set<std::string> warnedOnce_;
  std::string section_;          // the section being read, for messages
  std::uint64_t lastLine_ = 0;   // line (or offset) of the last group read
  std::uint64_t nextProgress_ = 0;

  NameIndex layers_, linetypes_, textStyles_, dimStyles_;
  // The names entities gave last, as spelt in the file, by kind and a few bytes of the name: a hit
  // needs neither decoding nor a copy of the name. A name always leads to the same record, as
  // records are never renamed or replaced while reading.
  struct EntityNameSlot {
    std::string raw;
    ObjectId id;
    bool set = false;
  };
  static constexpr std::size_t kEntityNameSlots = 16;
  EntityNameSlot entityNames_[4][kEntityNameSlots];
  NameMap<bool> otherNames_;  // "TABLE\nname" of the VPORT, VIEW, UCS, APPID … records read
  NameMap<BlockRecord*> blocksByName_;
  NameIndex blockIds_;  // the same names, for the INSERT of every entity
  std::unordered_map<std::uint64_t, BlockRecord*> blocksById_;
  std::unordered_set<BlockRecord*> definedBlocks_;  // got their BLOCK … ENDBLK
  std::vector<BlockRecord*> blocksOnDemand_;         // referred to before (or without) a definition
  BlockRecord* modelSpace_ = nullptr;
  BlockRecord* paperSpace_ = nullptr;
  BlockRecord* lastOwner_ = nullptr;  // entity owners come in runs: skip the map then
  int anonymousCounter_ = 0;
  std::vector<std::pair<Layer*, std::string>> layerLinetypes_;
  std::vector<DbObject*> deferred_;  // see registerLater
  std::uint64_t fileHandSeed_ = 0;   // $HANDSEED of the HEADER, 0 when absent
  std::uint64_t maxHandleSeen_ = 0;
};

}  // namespace tv::cad::dxf_read
