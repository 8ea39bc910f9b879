// Decisions taken before the first byte is written: $HANDSEED and the CLASSES section come first in
// the file but depend on every object, and records a CAD program insists on must get handles too.
#include <algorithm>
#include <set>
#include <unordered_set>

#include "cad/dxf_writer_internal.h"

namespace tv::cad::dxf_write {

namespace {

constexpr const char* kStandardTables[] = {"VPORT", "LTYPE", "LAYER", "STYLE", "VIEW", "UCS", "APPID", "DIMSTYLE", "BLOCK_RECORD"};

// Calls f on every id field the writer turns into a handle. Erased entities only when asked:
// they are not written, but their handles must not be handed out again. The ids of registered
// objects come first, so that they keep their handles when something else repeats one.
template <class F>
void ForEachIdField(const Database& db, bool withErased, F&& f) {
  for (const auto& r : db.layers) f(r->id);
  for (const auto& r : db.linetypes) f(r->id);
  for (const auto& r : db.textStyles) f(r->id);
  for (const auto& [table, records] : db.otherTables)
    for (const auto& r : records) f(r->id);
  for (const auto& b : db.blocks) {
    f(b->id);
    for (const auto& e : b->entities) {
      if (!withErased && e->isErased()) continue;
      f(e->id);
      if (const auto* insert = As<Insert>(e.get()))
        for (const auto& a : insert->attribs) f(a->id);
    }
  }
  for (const auto& o : db.objects) f(o->id);
  // Handles the database does not index: table heads, block begin and end, vertices, SEQENDs.
  for (const auto& [name, head] : db.tableHeads) f(head.id);
  for (const auto& b : db.blocks) {
    f(b->beginId);
    f(b->endId);
    for (const auto& e : b->entities) {
      if (!withErased && e->isErased()) continue;
      if (const auto* p = As<Polyline>(e.get())) {
        for (const PolylineVertex& v : p->vertices) f(v.id);
        f(p->seqendId);
      } else if (const auto* insert = As<Insert>(e.get()); insert && !insert->attribs.empty()) {
        f(insert->seqendId);
      }
    }
  }
}

// Calls f on every record, live entity (attributes included) and object that is written.
template <class F>
void ForEachWrittenObject(const Database& db, F&& f) {
  for (const auto& r : db.layers) f(*r);
  for (const auto& r : db.linetypes) f(*r);
  for (const auto& r : db.textStyles) f(*r);
  for (const auto& [table, records] : db.otherTables)
    for (const auto& r : records) f(*r);
  for (const auto& b : db.blocks) {
    f(*b);
    db.forEachEntity(*b, [&](const Entity& e) {
      if (!IsSaved(e)) return;
      f(e);
      if (const auto* insert = As<Insert>(&e))
        for (const auto& a : insert->attribs) f(*a);
    });
  }
  for (const auto& o : db.objects) f(*o);
}

bool IsTableRecordType(ObjectType t) { return t >= ObjectType::Layer && t <= ObjectType::TableRecord; }

template <class T>
bool HasRecord(const std::vector<std::unique_ptr<T>>& records, std::string_view name) {
  return std::any_of(records.begin(), records.end(), [&](const auto& r) { return EqualsNoCase(r->name, name); });
}

bool HasOtherRecord(const WriteContext& ctx, const std::string& table, std::string_view name) {
  if (auto it = ctx.db.otherTables.find(table); it != ctx.db.otherTables.end() && HasRecord(it->second, name)) return true;
  if (auto it = ctx.added.other.find(table); it != ctx.added.other.end() && HasRecord(it->second, name)) return true;
  return false;
}

template <class T>
T& AddRecord(WriteContext& ctx, std::vector<std::unique_ptr<T>>& list, std::string name, std::string_view table) {
  auto r = std::make_unique<T>();
  r->name = std::move(name);
  r->id = ctx.allocate();
  r->owner = ctx.tableId(table);
  list.push_back(std::move(r));
  return *list.back();
}

TableRecord& AddOtherRecord(WriteContext& ctx, const std::string& table, std::string name) {
  TableRecord& r = AddRecord(ctx, ctx.added.other[table], std::move(name), table);
  r.table = table;
  return r;
}

void CollectApps(const DbObject& o, std::set<std::string>& apps) {
  if (const ObjectExtras* x = o.extrasIfAny())
    for (const Group& g : x->xdata)
      if (g.code == 1001 && g.isString() && !g.asString().empty()) apps.insert(g.asString());
}

void AddMissingRecords(WriteContext& ctx) {
  const Database& db = ctx.db;
  AddedRecords& add = ctx.added;
  for (const char* name : {"ByBlock", "ByLayer", "Continuous"})
    if (!HasRecord(db.linetypes, name)) {
      Linetype& lt = AddRecord(ctx, add.linetypes, name, "LTYPE");
      if (lt.name == "Continuous") lt.description = "Solid line";
    }
  if (!HasRecord(db.layers, "0")) {
    Layer& zero = AddRecord(ctx, add.layers, "0", "LAYER");
    if (const Linetype* c = db.findLinetype("Continuous")) zero.linetype = c->id;
    for (const auto& lt : add.linetypes)
      if (lt->name == "Continuous") zero.linetype = lt->id;
  }
  if (!HasRecord(db.textStyles, "Standard")) {
    TextStyle& st = AddRecord(ctx, add.textStyles, "Standard", "STYLE");
    st.fontFile = "txt";
  }
  if (!HasOtherRecord(ctx, "DIMSTYLE", "Standard")) {
    TableRecord& ds = AddOtherRecord(ctx, "DIMSTYLE", "Standard");
    ObjectId standardStyle = db.findTextStyle("Standard") ? db.findTextStyle("Standard")->id : ObjectId{};
    if (standardStyle.isNull() && !add.textStyles.empty()) standardStyle = add.textStyles.front()->id;
    ds.groups = {Group{340, standardStyle}};
  }
  if (!HasOtherRecord(ctx, "VPORT", "*Active")) AddOtherRecord(ctx, "VPORT", "*Active");  // groups filled in when written

  // Every application named in extended data needs its APPID, "ACAD" always.
  std::set<std::string> apps{"ACAD"};
  ForEachWrittenObject(db, [&](const DbObject& o) { CollectApps(o, apps); });
  for (const auto& [name, head] : db.tableHeads)
    if (head.extras)
      for (const Group& g : head.extras->xdata)
        if (g.code == 1001 && g.isString() && !g.asString().empty()) apps.insert(g.asString());
  for (const std::string& app : apps)
    if (!HasOtherRecord(ctx, "APPID", app)) AddOtherRecord(ctx, "APPID", app);
}

}  // namespace

void PlanWrite(WriteContext& ctx) {
  const Database& db = ctx.db;

  std::uint64_t maxUsed = 0;
  ForEachIdField(db, true, [&](const ObjectId& id) { maxUsed = std::max(maxUsed, id.value); });
  // Keep the seed the drawing had when it is higher: handles below it may be referenced elsewhere.
  std::uint64_t seed = db.header.getHandle("$HANDSEED").value;
  if (seed > 0 && seed - 1 > maxUsed && seed < (std::uint64_t{1} << 62)) maxUsed = seed - 1;
  ctx.startHandlesAbove(maxUsed);

  // A null handle, or one already taken (files with repeated handles), gets a new one.
  std::unordered_set<std::uint64_t> taken;
  ForEachIdField(db, false, [&](const ObjectId& id) {
    if (id.isNull() || !taken.insert(id.value).second) ctx.reassign(id);
  });
  for (const char* table : kStandardTables) {
    auto it = db.tableHeads.find(table);
    ctx.tableIds[table] = it != db.tableHeads.end() ? ctx.idOf(it->second.id) : ctx.allocate();
  }

  AddMissingRecords(ctx);
  if (!db.rootDictionary()) {
    ctx.added.rootDictionary = std::make_unique<Dictionary>();
    ctx.added.rootDictionary->id = ctx.allocate();
  }

  for (const auto& o : db.objects)
    if (const auto* d = As<Dictionary>(o.get()))
      for (const auto& [key, value] : d->entries) ctx.listedBy.emplace(value, ctx.idOf(d->id));

  ForEachWrittenObject(db, [&](const DbObject& o) {
    if (!IsTableRecordType(o.type())) ++ctx.nameCounts[o.dxfName()];
    if (const auto* custom = As<CustomEntity>(&o); custom && custom->content)
      if (auto record = custom->content->classRecord()) ctx.customClasses.emplace(custom->dxfName(), std::move(*record));
  });
}

}  // namespace tv::cad::dxf_write
