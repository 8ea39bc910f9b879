#include "cad/database.h"

#include <algorithm>
#include <charconv>

#include "cad/names_internal.h"

namespace tv::cad {

namespace {

template <class T>
T* FindByName(const std::vector<std::unique_ptr<T>>& records, std::string_view name) {
  for (const auto& r : records)
    if (EqualsNoCase(r->name, name)) return r.get();
  return nullptr;
}

template <class Entry>
bool IdLess(const Entry& a, const Entry& b) {
  return a.id < b.id;
}

constexpr const char* kStandardTables[] = {"VPORT", "LTYPE", "LAYER", "STYLE", "VIEW", "UCS", "APPID", "DIMSTYLE", "BLOCK_RECORD"};

}  // namespace

std::string_view AcadVerText(DxfVersion v) {
  switch (v) {
    case DxfVersion::R12: return "AC1009";
    case DxfVersion::R13: return "AC1012";
    case DxfVersion::R14: return "AC1014";
    case DxfVersion::R2000: return "AC1015";
    case DxfVersion::R2004: return "AC1018";
    case DxfVersion::R2007: return "AC1021";
    case DxfVersion::R2010: return "AC1024";
    case DxfVersion::R2013: return "AC1027";
    case DxfVersion::R2018: return "AC1032";
  }
  return "AC1032";
}

std::string_view ReleaseName(DxfVersion v) {
  switch (v) {
    case DxfVersion::R12: return "R12";
    case DxfVersion::R13: return "R13";
    case DxfVersion::R14: return "R14";
    case DxfVersion::R2000: return "R2000";
    case DxfVersion::R2004: return "R2004";
    case DxfVersion::R2007: return "R2007";
    case DxfVersion::R2010: return "R2010";
    case DxfVersion::R2013: return "R2013";
    case DxfVersion::R2018: return "R2018";
  }
  return "R2018";
}

DxfVersion DxfVersionOf(std::string_view acadver) {
  if (acadver.size() >= 2 && AsciiUpper(acadver[0]) == 'A' && AsciiUpper(acadver[1]) == 'C') acadver.remove_prefix(2);
  int n = 0;
  auto r = std::from_chars(acadver.data(), acadver.data() + acadver.size(), n);
  if (r.ec != std::errc{}) return DxfVersion::R12;
  constexpr DxfVersion kAll[] = {DxfVersion::R2018, DxfVersion::R2013, DxfVersion::R2010, DxfVersion::R2007, DxfVersion::R2004,
                                 DxfVersion::R2000, DxfVersion::R14, DxfVersion::R13};
  for (DxfVersion v : kAll)
    if (n >= static_cast<int>(v)) return v;
  return DxfVersion::R12;
}

Database::Database() = default;
Database::~Database() = default;
Database::Database(Database&&) noexcept = default;
Database& Database::operator=(Database&&) noexcept = default;

// ---- index -----------------------------------------------------------------------------------

ObjectId Database::newHandle() {
  auto seed = header.getHandle("$HANDSEED").value;
  if (seed > nextHandle_) nextHandle_ = seed;
  ObjectId id{nextHandle_++};
  header.setHandle("$HANDSEED", ObjectId{nextHandle_});
  return id;
}

void Database::sortIndex() const {
  if (pending_.empty()) return;
  std::sort(pending_.begin(), pending_.end(), IdLess<IndexEntry>);
  auto middle = index_.insert(index_.end(), pending_.begin(), pending_.end());
  std::inplace_merge(index_.begin(), middle, index_.end(), IdLess<IndexEntry>);
  pending_.clear();
  pendingIds_.clear();
}

namespace {
constexpr std::size_t kMaxPending = 1 << 16;
}

ObjectId Database::registerObject(DbObject& o) {
  if (o.id.isNull()) o.id = newHandle();
  if (index_.empty() || index_.back().id < o.id.value) {
    index_.push_back({o.id.value, &o});
  } else {
    // Out of handle order (objects after entities, say): check for a clash now so that every
    // object keeps a unique id, and merge the stragglers into the sorted index in batches.
    bool taken = findEntry(o.id) != nullptr || pendingIds_.contains(o.id.value);
    if (taken) {
      o.id = newHandle();
      index_.push_back({o.id.value, &o});
    } else {
      pending_.push_back({o.id.value, &o});
      pendingIds_.insert(o.id.value);
      if (pending_.size() >= kMaxPending) sortIndex();
    }
  }
  if (o.id.value >= nextHandle_) nextHandle_ = o.id.value + 1;
  return o.id;
}

const Database::IndexEntry* Database::findEntry(ObjectId id) const {
  if (index_.empty()) return nullptr;
  // Handles are mostly handed out in a row, so the id's distance from the first is usually its
  // place; a gap or a straggler falls back to the binary search.
  const std::uint64_t guess = id.value - index_.front().id;
  if (id.value >= index_.front().id && guess < index_.size() && index_[guess].id == id.value) return &index_[guess];
  auto it = std::lower_bound(index_.begin(), index_.end(), id.value,
                             [](const IndexEntry& e, std::uint64_t v) { return e.id < v; });
  if (it == index_.end() || it->id != id.value) return nullptr;
  return &*it;
}

void Database::unregisterObject(ObjectId id) {
  sortIndex();
  if (const IndexEntry* e = findEntry(id)) index_.erase(index_.begin() + (e - index_.data()));
}

namespace {
void PrefetchLine(const void* address) {
#if defined(__GNUC__) || defined(__clang__)
  __builtin_prefetch(address);
#else
  (void)address;
#endif
}
}  // namespace

void Database::prefetch(ObjectId id, bool objectToo) const {
  // Only the usual case, an id at its own place in a sorted index; a hint must cost next to nothing.
  if (index_.empty() || !pending_.empty() || id.value < index_.front().id) return;
  const std::uint64_t guess = id.value - index_.front().id;
  if (guess >= index_.size()) return;
  if (!objectToo) {
    PrefetchLine(&index_[guess]);
  } else if (index_[guess].id == id.value) {
    const auto* bytes = reinterpret_cast<const char*>(index_[guess].object);
    PrefetchLine(bytes);
    PrefetchLine(bytes + 64);
  }
}

DbObject* Database::object(ObjectId id) const {
  if (id.isNull()) return nullptr;
  sortIndex();
  const IndexEntry* entry = findEntry(id);
  if (!entry) return nullptr;
  if (auto* e = As<Entity>(entry->object); e && e->isErased()) return nullptr;
  return entry->object;
}

// ---- tables ----------------------------------------------------------------------------------

Layer* Database::findLayer(std::string_view name) const { return FindByName(layers, name); }
TextStyle* Database::findTextStyle(std::string_view name) const { return FindByName(textStyles, name); }
Linetype* Database::findLinetype(std::string_view name) const { return FindByName(linetypes, name); }
BlockRecord* Database::findBlock(std::string_view name) const { return FindByName(blocks, name); }

TableRecord* Database::findTableRecord(std::string_view table, std::string_view name) const {
  auto it = otherTables.find(std::string(table));
  return it == otherTables.end() ? nullptr : FindByName(it->second, name);
}

ObjectId Database::tableId(std::string_view table) {
  auto& head = tableHeads[std::string(table)];
  if (head.id.isNull()) head.id = newHandle();
  return head.id;
}

template <class T>
static T& AddRecord(Database& db, std::vector<std::unique_ptr<T>>& records, std::string name, std::string_view table) {
  if (T* existing = FindByName(records, name)) return *existing;
  auto r = std::make_unique<T>();
  r->name = std::move(name);
  r->owner = db.tableId(table);
  db.registerObject(*r);
  records.push_back(std::move(r));
  return *records.back();
}

Layer& Database::addLayer(std::string name) {
  Layer& l = AddRecord(*this, layers, std::move(name), "LAYER");
  if (l.linetype.isNull())
    if (auto* c = findLinetype("Continuous")) l.linetype = c->id;
  return l;
}

TextStyle& Database::addTextStyle(std::string name) { return AddRecord(*this, textStyles, std::move(name), "STYLE"); }
Linetype& Database::addLinetype(std::string name) { return AddRecord(*this, linetypes, std::move(name), "LTYPE"); }

BlockRecord& Database::addBlock(std::string name) {
  if (name == "*U" || name == "*D" || name == "*X" || name == "*T" || name == "*A") {
    for (int n = 1;; ++n) {
      std::string candidate = name + std::to_string(n);
      if (!findBlock(candidate)) {
        name = std::move(candidate);
        break;
      }
    }
  }
  BlockRecord& b = AddRecord(*this, blocks, std::move(name), "BLOCK_RECORD");
  if (b.name.size() > 1 && b.name[0] == '*' && !b.isModelSpace() && !b.isPaperSpace()) b.blockFlags |= BlockRecord::kAnonymous;
  return b;
}

TableRecord& Database::addTableRecord(std::string table, std::string name) {
  auto& records = otherTables[table];
  if (TableRecord* existing = FindByName(records, name)) return *existing;
  auto r = std::make_unique<TableRecord>();
  r->table = table;
  r->name = std::move(name);
  r->owner = tableId(table);
  registerObject(*r);
  records.push_back(std::move(r));
  return *records.back();
}

TableRecord* Database::activeViewport() const { return findTableRecord("VPORT", "*Active"); }

// ---- blocks and layouts ----------------------------------------------------------------------

BlockRecord* Database::modelSpace() const {
  for (const auto& b : blocks)
    if (b->isModelSpace()) return b.get();
  return nullptr;
}

BlockRecord* Database::paperSpace() const {
  for (const auto& b : blocks)
    if (b->isPaperSpace() && b->name.size() == 12) return b.get();
  return nullptr;
}

Layout* Database::layoutOf(const BlockRecord& block) const {
  if (auto* l = objectAs<Layout>(block.layout)) return l;
  for (const auto& o : objects)
    if (auto* l = As<Layout>(o.get()); l && l->blockRecord == block.id) return l;
  return nullptr;
}

BlockRecord* Database::blockOf(const Layout& layout) const { return objectAs<BlockRecord>(layout.blockRecord); }

std::vector<Layout*> Database::layoutsInTabOrder() const {
  std::vector<Layout*> result;
  for (const auto& o : objects)
    if (auto* l = As<Layout>(o.get())) result.push_back(l);
  std::stable_sort(result.begin(), result.end(), [](const Layout* a, const Layout* b) {
    if (a->isModel() != b->isModel()) return a->isModel();
    return a->tabOrder < b->tabOrder;
  });
  return result;
}

Layout* Database::findLayout(std::string_view name) const {
  for (const auto& o : objects)
    if (auto* l = As<Layout>(o.get()); l && EqualsNoCase(l->name, name)) return l;
  return nullptr;
}

Layout& Database::addLayout(std::string name) {
  std::string blockName = "*Paper_Space";
  if (paperSpace() && paperSpace()->layout) {
    for (int n = 0;; ++n) {
      blockName = "*Paper_Space" + std::to_string(n);
      if (!findBlock(blockName)) break;
    }
  }
  BlockRecord& block = addBlock(blockName);
  std::int16_t tab = 0;
  for (Layout* l : layoutsInTabOrder()) tab = std::max<std::int16_t>(tab, l->tabOrder);
  Dictionary* root = rootDictionary();
  ObjectId dictId;
  if (root) dictId = ensureDictionary(*root, "ACAD_LAYOUT").id;
  auto layout = std::make_unique<Layout>();
  layout->name = name;
  layout->tabOrder = static_cast<std::int16_t>(tab + 1);
  layout->blockRecord = block.id;
  Layout& ref = addObject(std::move(layout), dictId);
  block.layout = ref.id;
  if (auto* dict = objectAs<Dictionary>(dictId)) dict->set(std::move(name), ref.id);
  return ref;
}

Entity& Database::appendEntity(BlockRecord& block, std::unique_ptr<Entity> e) {
  e->owner = block.id;
  if (e->layer.isNull()) {
    if (Layer* zero = findLayer("0")) e->layer = zero->id;
  }
  registerObject(*e);
  if (auto* insert = As<Insert>(e.get()))
    for (auto& a : insert->attribs) {
      a->owner = insert->id;
      if (a->layer.isNull()) a->layer = insert->layer;
      registerObject(*a);
    }
  block.entities.push_back(std::move(e));
  return *block.entities.back();
}

bool Database::erase(ObjectId id) {
  Entity* e = entity(id);
  if (!e) return false;
  e->flags |= Entity::kErased;
  if (auto* insert = As<Insert>(e))
    for (auto& a : insert->attribs) a->flags |= Entity::kErased;
  return true;
}

void Database::purgeErased() {
  sortIndex();
  std::erase_if(index_, [](const IndexEntry& entry) {
    const auto* e = As<Entity>(entry.object);
    return e && e->isErased();
  });
  for (auto& b : blocks) {
    std::erase_if(b->entities, [](const std::unique_ptr<Entity>& e) { return e->isErased(); });
    for (auto& e : b->entities)
      if (auto* insert = As<Insert>(e.get()))
        std::erase_if(insert->attribs, [](const std::unique_ptr<Attrib>& a) { return a->isErased(); });
  }
}

BlockRecord* Database::ownerBlock(const Entity& e) const {
  DbObject* owner = object(e.owner);
  if (auto* b = As<BlockRecord>(owner)) return b;
  if (auto* insert = As<Insert>(owner)) return ownerBlock(*insert);
  return nullptr;
}

// ---- objects ---------------------------------------------------------------------------------

void Database::addObjectImpl(std::unique_ptr<DbObject> o, ObjectId owner) {
  o->owner = owner;
  registerObject(*o);
  objects.push_back(std::move(o));
}

Dictionary& Database::ensureDictionary(Dictionary& parent, std::string key) {
  if (auto* d = objectAs<Dictionary>(parent.find(key))) return *d;
  auto dict = std::make_unique<Dictionary>();
  Dictionary& ref = addObject(std::move(dict), parent.id);
  parent.set(std::move(key), ref.id);
  return ref;
}

Dictionary* Database::namedDictionary(std::string_view key) const {
  Dictionary* root = rootDictionary();
  return root ? objectAs<Dictionary>(root->find(key)) : nullptr;
}

Xrecord& Database::ensureXrecord(Dictionary& parent, std::string key) {
  if (auto* x = objectAs<Xrecord>(parent.find(key))) return *x;
  Xrecord& ref = addObject(std::make_unique<Xrecord>(), parent.id);
  parent.set(std::move(key), ref.id);
  return ref;
}

Dictionary* Database::extensionDictionary(const DbObject& o) const { return objectAs<Dictionary>(o.extensionDictionary()); }

Dictionary& Database::ensureExtensionDictionary(DbObject& o) {
  if (auto* d = extensionDictionary(o)) return *d;
  auto dict = std::make_unique<Dictionary>();
  dict->hardOwner = true;
  Dictionary& ref = addObject(std::move(dict), o.id);
  o.extras().extensionDictionary = ref.id;
  return ref;
}

SpatialFilter* Database::spatialFilterOf(const Insert& insert) const {
  Dictionary* xdict = extensionDictionary(insert);
  Dictionary* filters = xdict ? objectAs<Dictionary>(xdict->find("ACAD_FILTER")) : nullptr;
  return filters ? objectAs<SpatialFilter>(filters->find("SPATIAL")) : nullptr;
}

void Database::copyClip(const Database& source, const Insert& from, Insert& to) {
  if (from.extensionDictionary().isNull()) return;
  const SpatialFilter* filter = source.spatialFilterOf(from);
  if (!filter) return;
  Dictionary& xdict = ensureExtensionDictionary(to);
  Dictionary& filters = ensureDictionary(xdict, "ACAD_FILTER");
  auto copy = std::make_unique<SpatialFilter>(*filter);
  copy->id = ObjectId{};
  copy->owner = ObjectId{};
  if (copy->extrasIfAny()) copy->extras() = ObjectExtras{};
  SpatialFilter& added = addObject(std::move(copy), filters.id);
  filters.set("SPATIAL", added.id);
}

DxfVersion Database::version() const { return DxfVersionOf(header.getString("$ACADVER", "AC1032")); }

std::string Database::codePage() const { return header.getString("$DWGCODEPAGE", "ANSI_936"); }

// ---- standard contents -----------------------------------------------------------------------

Database Database::createDefault() {
  Database db;
  db.header.setString("$ACADVER", "AC1032");
  db.header.setString("$DWGCODEPAGE", "ANSI_936", 3);
  db.header.setPoint("$INSBASE", {});
  db.header.setPoint("$EXTMIN", {1e20, 1e20, 1e20});
  db.header.setPoint("$EXTMAX", {-1e20, -1e20, -1e20});
  db.header.setPoint("$LIMMIN", {}, false);
  db.header.setPoint("$LIMMAX", {420, 297}, false);
  db.header.setDouble("$LTSCALE", 1.0);
  db.header.setDouble("$CELTSCALE", 1.0);
  db.header.setInt("$TILEMODE", 1);
  db.header.setInt("$MEASUREMENT", 1);
  db.header.setInt("$INSUNITS", 4);
  db.ensureStandardObjects();
  return db;
}

void Database::ensureStandardObjects() {
  for (const char* table : kStandardTables) tableId(table);

  Linetype& byBlock = addLinetype("ByBlock");
  (void)byBlock;
  addLinetype("ByLayer");
  Linetype& continuous = addLinetype("Continuous");
  if (continuous.description.empty()) continuous.description = "Solid line";
  addLayer("0");
  addTextStyle("Standard");
  addTableRecord("APPID", "ACAD");
  addTableRecord("DIMSTYLE", "Standard");
  if (!activeViewport()) {
    TableRecord& vp = addTableRecord("VPORT", "*Active");
    vp.groups = {Group{10, 0.0}, Group{20, 0.0}, Group{11, 1.0}, Group{21, 1.0}, Group{12, 210.0}, Group{22, 148.5},
                 Group{40, 297.0}, Group{41, 1.414}};
  }

  if (!modelSpace()) addBlock("*Model_Space");
  if (!paperSpace()) {
    // Keep the block order CAD programs use: model space, then paper space.
    addBlock("*Paper_Space");
  }

  if (!rootDictionary()) {
    auto root = std::make_unique<Dictionary>();
    Dictionary& ref = addObject(std::move(root), ObjectId{});
    rootDictionaryId = ref.id;
    // The root dictionary is written first.
    std::rotate(objects.begin(), objects.end() - 1, objects.end());
  }
  Dictionary& root = *rootDictionary();
  ensureDictionary(root, "ACAD_GROUP");
  Dictionary& layoutDict = ensureDictionary(root, "ACAD_LAYOUT");

  // Every layout block has a layout, and every layout knows its block.
  for (const auto& o : objects)
    if (auto* l = As<Layout>(o.get()))
      if (auto* b = objectAs<BlockRecord>(l->blockRecord)) b->layout = l->id;
  auto ensureLayout = [&](BlockRecord& block, std::string name, std::int16_t tab) {
    if (layoutOf(block)) {
      block.layout = layoutOf(block)->id;
      return;
    }
    while (findLayout(name)) name += "_";
    auto layout = std::make_unique<Layout>();
    layout->name = name;
    layout->tabOrder = tab;
    layout->blockRecord = block.id;
    if (block.isModelSpace()) layout->flags = 1;
    Layout& ref = addObject(std::move(layout), layoutDict.id);
    block.layout = ref.id;
    layoutDict.set(std::move(name), ref.id);
  };
  ensureLayout(*modelSpace(), "Model", 0);
  int n = 1;
  for (const auto& b : blocks)
    if (b->isPaperSpace()) {
      ensureLayout(*b, "Layout" + std::to_string(n), static_cast<std::int16_t>(n));
      ++n;
    }
  for (const auto& o : objects)
    if (auto* l = As<Layout>(o.get()); l && layoutDict.find(l->name).isNull()) layoutDict.set(l->name, l->id);
}

}  // namespace tv::cad
