// TABLES section: the nine symbol tables in the order CAD programs write them.
#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "cad/dxf_writer_internal.h"

namespace tv::cad::dxf_write {

namespace {

constexpr double kDegPerRad = 180.0 / kPi;

std::string_view SubclassOf(std::string_view table) {
  if (table == "VPORT") return "AcDbViewportTableRecord";
  if (table == "LTYPE") return "AcDbLinetypeTableRecord";
  if (table == "LAYER") return "AcDbLayerTableRecord";
  if (table == "STYLE") return "AcDbTextStyleTableRecord";
  if (table == "VIEW") return "AcDbViewTableRecord";
  if (table == "UCS") return "AcDbUCSTableRecord";
  if (table == "APPID") return "AcDbRegAppTableRecord";
  if (table == "DIMSTYLE") return "AcDbDimStyleTableRecord";
  if (table == "BLOCK_RECORD") return "AcDbBlockTableRecord";
  return {};
}

// The groups of a viewport record a CAD program expects, in its order; the window shows the
// extents when known, else the limits.
Groups DefaultViewportGroups(const Header& h) {
  Point3d lo = h.getPoint("$EXTMIN", {1e20, 1e20, 1e20}), hi = h.getPoint("$EXTMAX", {-1e20, -1e20, -1e20});
  if (!(lo.x <= hi.x && lo.y <= hi.y) || hi.x - lo.x > 1e15 || hi.y - lo.y > 1e15) {
    lo = h.getPoint("$LIMMIN", {0, 0, 0});
    hi = h.getPoint("$LIMMAX", {420, 297, 0});
  }
  double width = std::max(hi.x - lo.x, 1e-6), height = std::max(hi.y - lo.y, 1e-6);
  return {Group{10, 0.0},    Group{20, 0.0},    Group{11, 1.0},    Group{21, 1.0},         Group{12, (lo.x + hi.x) / 2},
          Group{22, (lo.y + hi.y) / 2},         Group{13, 0.0},    Group{23, 0.0},         Group{14, 10.0},
          Group{24, 10.0},   Group{15, 10.0},   Group{25, 10.0},   Group{16, 0.0},         Group{26, 0.0},
          Group{36, 1.0},    Group{17, 0.0},    Group{27, 0.0},    Group{37, 0.0},         Group{40, height * 1.05},
          Group{41, width / height},            Group{42, 50.0},   Group{43, 0.0},         Group{44, 0.0},
          Group{50, 0.0},    Group{51, 0.0},    Group{71, std::int64_t{0}},                Group{72, std::int64_t{1000}},
          Group{73, std::int64_t{1}},           Group{74, std::int64_t{3}},                Group{75, std::int64_t{0}},
          Group{76, std::int64_t{0}},           Group{77, std::int64_t{0}},                Group{78, std::int64_t{0}},
          Group{281, std::int64_t{0}},          Group{65, std::int64_t{1}},                Group{110, 0.0},
          Group{120, 0.0},   Group{130, 0.0},   Group{111, 1.0},   Group{121, 0.0},        Group{131, 0.0},
          Group{112, 0.0},   Group{122, 1.0},   Group{132, 0.0},   Group{79, std::int64_t{0}}, Group{146, 0.0}};
}

// A viewport record with every group CAD programs expect: the stored ones where present, defaults
// for the rest, then whatever else was stored.
Groups CompleteViewport(const Groups& stored, const Header& h) {
  Groups all = DefaultViewportGroups(h);
  std::vector<bool> used(stored.size(), false);
  for (Group& d : all)
    for (std::size_t i = 0; i < stored.size(); ++i)
      if (!used[i] && stored[i].code == d.code) {
        d = stored[i];
        used[i] = true;
        break;
      }
  for (std::size_t i = 0; i < stored.size(); ++i)
    if (!used[i]) all.push_back(stored[i]);
  return all;
}

// Records of one table: the ones added for the output first (the defaults a drawing starts with), then the drawing's.
template <class T>
std::vector<const T*> RecordsOf(const std::vector<std::unique_ptr<T>>& added, const std::vector<std::unique_ptr<T>>& own) {
  std::vector<const T*> all;
  for (const auto& r : added) all.push_back(r.get());
  for (const auto& r : own) all.push_back(r.get());
  return all;
}

class TablesWriter {
 public:
  explicit TablesWriter(WriteContext& ctx) : ctx_(ctx), out_(ctx.out), db_(ctx.db) {}

  void write() {
    out_.str(0, "SECTION");
    out_.str(2, "TABLES");
    writeOther("VPORT");
    writeLinetypes();
    writeLayers();
    writeTextStyles();
    writeOther("VIEW");
    writeOther("UCS");
    writeOther("APPID");
    writeOther("DIMSTYLE");
    writeBlockRecords();
    out_.str(0, "ENDSEC");
  }

 private:
  void tableHead(const std::string& table, std::size_t count, const std::vector<ObjectId>& dimStyles = {}) {
    const TableHead* head = nullptr;
    if (auto it = db_.tableHeads.find(table); it != db_.tableHeads.end()) head = &it->second;
    // 102 groups of the head stand before its owner; the rest of its groups after the count.
    Groups braces, rest;
    if (head) {
      bool inBraces = false;
      for (const Group& g : head->extra) {
        if (g.code == 102) inBraces = g.asString().rfind('{', 0) == 0;
        (inBraces || g.code == 102 ? braces : rest).push_back(g);
      }
    }
    out_.str(0, "TABLE");
    out_.str(2, table);
    out_.handle(5, ctx_.tableId(table));
    if (head && head->extras) {
      const ObjectExtras& x = *head->extras;
      out_.groups(x.appGroups);
      if (!x.reactors.empty()) {
        out_.str(102, "{ACAD_REACTORS");
        for (ObjectId r : x.reactors) out_.handle(330, r);
        out_.str(102, "}");
      }
      if (!x.extensionDictionary.isNull()) {
        out_.str(102, "{ACAD_XDICTIONARY");
        out_.handle(360, x.extensionDictionary);
        out_.str(102, "}");
      }
    }
    out_.groups(braces);
    out_.handle(330, ObjectId{});
    out_.str(100, "AcDbSymbolTable");
    out_.integer(70, static_cast<std::int64_t>(count));
    const bool dimStyle = table == "DIMSTYLE";
    if (dimStyle) {
      // The list of styles is rebuilt from the records actually written.
      out_.str(100, "AcDbDimStyleTable");
      out_.integer(71, static_cast<std::int64_t>(dimStyles.size()));
      for (ObjectId id : dimStyles) out_.handle(340, id);
    }
    for (const Group& g : rest)
      if (g.code > 0 && !(dimStyle && (g.code == 100 || g.code == 71 || g.code == 340))) out_.group(g);
    if (head && head->extras) {
      for (const Group& g : head->extras->unknown)
        if (g.code > 0) out_.group(g);
      out_.groups(head->extras->xdata);
    }
  }

  // Block records have no flags of their own: their 70 is the insertion units, written by the caller.
  void recordHead(const DbObject& r, const std::string& table, const std::string& name, std::optional<std::int16_t> flags) {
    WriteObjectHead(ctx_, table, table == "DIMSTYLE" ? 105 : 5, ctx_.idOf(r.id), r, ctx_.tableId(table));
    out_.str(100, "AcDbSymbolTableRecord");
    out_.str(100, SubclassOf(table));
    out_.str(2, name);
    if (flags) out_.integer(70, *flags);
  }

  void writeOther(const std::string& table) {
    std::vector<const TableRecord*> records;
    if (auto it = ctx_.added.other.find(table); it != ctx_.added.other.end())
      for (const auto& r : it->second) records.push_back(r.get());
    if (auto it = db_.otherTables.find(table); it != db_.otherTables.end())
      for (const auto& r : it->second) records.push_back(r.get());
    std::vector<ObjectId> ids;
    for (const TableRecord* r : records) ids.push_back(ctx_.idOf(r->id));
    tableHead(table, records.size(), ids);
    const std::string_view subclass = SubclassOf(table);
    for (const TableRecord* r : records) {
      recordHead(*r, table, r->name, r->standardFlags);
      for (const Group& g : table == "VPORT" ? CompleteViewport(r->groups, db_.header) : r->groups) {
        if (g.code <= 0) continue;
        if (g.code == 100 && (g.asString() == "AcDbSymbolTableRecord" || g.asString() == subclass)) continue;
        out_.group(g);
      }
      WriteObjectTail(ctx_, *r);
    }
    out_.str(0, "ENDTAB");
  }

  std::string linetypeName(ObjectId id) const {
    if (const auto* lt = db_.objectAs<Linetype>(id)) return lt->name;
    for (const auto& lt : ctx_.added.linetypes)
      if (lt->id == id) return lt->name;
    return "Continuous";
  }

  void writeLinetypes() {
    auto records = RecordsOf(ctx_.added.linetypes, db_.linetypes);
    tableHead("LTYPE", records.size());
    for (const Linetype* lt : records) {
      recordHead(*lt, "LTYPE", lt->name, lt->standardFlags);
      out_.str(3, lt->description);
      out_.integer(72, lt->alignment);
      out_.integer(73, static_cast<std::int64_t>(lt->dashes.size()));
      out_.real(40, lt->patternLength);
      for (const LinetypeDash& d : lt->dashes) {
        out_.real(49, d.length);
        out_.integer(74, d.shapeFlags);
        if (d.shapeFlags == 0) continue;
        out_.integer(75, d.shapeNumber);
        out_.handle(340, d.shapeStyle);
        out_.real(46, d.shapeScale);
        out_.real(50, d.shapeRotation);
        out_.real(44, d.offsetX);
        out_.real(45, d.offsetY);
        if (d.shapeFlags & 2) out_.str(9, d.text);
      }
      WriteObjectTail(ctx_, *lt);
    }
    out_.str(0, "ENDTAB");
  }

  void writeLayers() {
    auto records = RecordsOf(ctx_.added.layers, db_.layers);
    tableHead("LAYER", records.size());
    for (const Layer* l : records) {
      recordHead(*l, "LAYER", l->name, l->standardFlags);
      std::int16_t color = l->colorIndex >= 1 && l->colorIndex <= 255 ? l->colorIndex : 7;
      out_.integer(62, l->on ? color : -color);  // a negative colour turns the layer off
      if (l->trueColor >= 0) out_.integer(420, l->trueColor);
      out_.str(6, linetypeName(l->linetype));
      if (!l->plottable) out_.integer(290, 0);
      out_.integer(370, l->lineweight);
      if (!l->plotStyle.isNull()) out_.handle(390, l->plotStyle);
      if (!l->material.isNull()) out_.handle(347, l->material);
      WriteObjectTail(ctx_, *l);
    }
    out_.str(0, "ENDTAB");
  }

  void writeTextStyles() {
    auto records = RecordsOf(ctx_.added.textStyles, db_.textStyles);
    tableHead("STYLE", records.size());
    for (const TextStyle* s : records) {
      recordHead(*s, "STYLE", s->name, s->standardFlags);
      out_.real(40, s->height);
      out_.real(41, s->widthFactor);
      out_.real(50, s->oblique * kDegPerRad);
      out_.integer(71, s->generation);
      out_.real(42, s->lastHeight);
      // A style naming no font at all is refused by some programs: fall back to the basic shape font.
      out_.str(3, s->fontFile.empty() && s->fontFamily.empty() ? std::string("txt") : s->fontFile);
      out_.str(4, s->bigFontFile);
      writeStyleTail(*s);
    }
    out_.str(0, "ENDTAB");
  }

  // The TrueType family lives in the style's ACAD extended data: keep the data as read, with the
  // family of the model, and add the data when only the model knows the family.
  void writeStyleTail(const TextStyle& s) {
    const ObjectExtras* x = s.extrasIfAny();
    if (x)
      for (const Group& g : x->unknown)
        if (g.code > 0) out_.group(g);
    bool inAcad = false, familyDone = false, hadAcad = false;
    if (x)
      for (const Group& g : x->xdata) {
        if (g.code == 1001) {
          inAcad = g.asString() == "ACAD";
          hadAcad = hadAcad || inAcad;
        } else if (inAcad && g.code == 1000 && !familyDone) {
          familyDone = true;
          if (!s.fontFamily.empty()) {
            out_.str(1000, s.fontFamily);
            continue;
          }
        }
        out_.group(g);
      }
    if (!hadAcad && !s.fontFamily.empty()) {
      out_.str(1001, "ACAD");
      out_.str(1000, s.fontFamily);
      out_.integer(1071, 0);
    }
  }

  void writeBlockRecords() {
    tableHead("BLOCK_RECORD", db_.blocks.size());
    for (const auto& b : db_.blocks) {
      recordHead(*b, "BLOCK_RECORD", b->name, std::nullopt);
      ObjectId layout = b->layout;
      if (layout.isNull() && (b->isModelSpace() || b->isPaperSpace()))
        if (const Layout* l = db_.layoutOf(*b)) layout = ctx_.idOf(l->id);
      out_.handle(340, layout);
      if (!b->preview.empty()) out_.binary(310, b->preview);
      out_.integer(70, b->insertUnits);
      out_.integer(280, b->explodable ? 1 : 0);
      out_.integer(281, b->scalable ? 1 : 0);
      WriteObjectTail(ctx_, *b);
    }
    out_.str(0, "ENDTAB");
  }

  WriteContext& ctx_;
  DxfOutput& out_;
  const Database& db_;
};

}  // namespace

void WriteTablesSection(WriteContext& ctx) { TablesWriter(ctx).write(); }

}  // namespace tv::cad::dxf_write
