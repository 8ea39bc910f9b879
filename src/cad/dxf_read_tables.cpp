// TABLES section: the TABLE heads and the records of every symbol table.
#include "cad/dxf_reader_internal.h"

namespace tv::cad::dxf_read {

namespace {

// Keeps a record unless the table already has one of that name (names compare without case).
// Nameless records (the shape files of complex linetypes are such styles) are kept unindexed.
template <class T>
bool AddRecord(Database& db, std::vector<std::unique_ptr<T>>& records, NameIndex& index, std::unique_ptr<T> r,
               std::string_view rawName, Reader& reader, const char* table) {
  if (!r->name.empty() && index.find(r->name)) {
    reader.warn(Format("%s 表中的 %s 重复，只保留第一个", table, r->name.c_str()));
    return false;
  }
  db.registerObject(*r);
  if (!r->name.empty()) {
    index.add(r->name, r->id);
    if (rawName != r->name) index.add(rawName, r->id);
  }
  records.push_back(std::move(r));
  return true;
}

bool IsTableName(std::string_view v) {
  for (std::string_view t : {"VPORT", "LTYPE", "LAYER", "STYLE", "VIEW", "UCS", "APPID", "DIMSTYLE", "BLOCK_RECORD"})
    if (v == t) return true;
  return false;
}

inline std::int16_t Int16(const DxfGroup& g) { return static_cast<std::int16_t>(g.integer); }
inline ObjectId Handle(const DxfGroup& g) { return ObjectId(static_cast<std::uint64_t>(g.integer)); }

}  // namespace

bool Reader::readTables() {
  DxfGroup g;
  for (;;) {
    if (!next(g)) return false;
    if (g.code != 0) continue;
    std::string_view v = TrimBlanks(g.text);
    if (v == "ENDSEC") return true;
    if (v == "SECTION" || v == "EOF") {
      warn("TABLES 段缺少 ENDSEC");
      tok_.pushBack();
      return true;
    }
    if (v != "TABLE" && IsTableName(v)) {
      // Records without their TABLE head: read them as the table they belong to.
      warn(Format("TABLES 段第 %llu 行的 %s 记录缺少表头", static_cast<unsigned long long>(g.line), std::string(v).c_str()));
      std::string table(v);
      tok_.pushBack();
      if (!readTable(std::move(table), false)) return false;
      continue;
    }
    if (v != "TABLE") {
      warnOnce("table-stray", Format("TABLES 段中第 %llu 行的 %s 不在表中，已忽略",
                                     static_cast<unsigned long long>(g.line), std::string(v).c_str()));
      if (!skipToNextEntry()) return false;
      continue;
    }
    if (!next(g)) return false;
    if (g.code != 2) {
      warn(Format("第 %llu 行的表没有名称，已忽略", static_cast<unsigned long long>(g.line)));
      tok_.pushBack();
      if (!skipToNextEntry()) return false;
      continue;
    }
    if (!readTable(std::string(TrimBlanks(g.text)), true)) return false;
    tok_.release();
  }
}

bool Reader::readTableHead(TableHead& head) {
  bool haveOwner = false, afterCount = false;
  return forEachGroupOfEntry([&](const DxfGroup& g) {
    if (g.code == 5 && head.id.isNull()) {
      head.id = Handle(g);
      sawHandle(head.id);
    } else if (g.code == 102) {
      if (!head.extras) head.extras = std::make_unique<ObjectExtras>();
      return read102Into(*head.extras, g);
    } else if (g.code == 330 && !haveOwner) {
      haveOwner = true;  // always 0: tables belong to the drawing
    } else if (g.code == 100 && !afterCount && TrimBlanks(g.text) == "AcDbSymbolTable") {
      // written back by the writer
    } else if (g.code == 70 && !afterCount) {
      afterCount = true;  // the count is recomputed when writing
    } else if (g.code == 1001) {
      if (!head.extras) head.extras = std::make_unique<ObjectExtras>();
      return readXdata(head.extras->xdata, g);
    } else {
      head.extra.push_back(toGroup(g));  // e.g. DIMSTYLE's 100 AcDbDimStyleTable, 71 and 340 list
    }
    return true;
  });
}

bool Reader::readTable(std::string tableName, bool withHead) {
  section_ = "TABLES";
  TableHead& head = db_.tableHeads[tableName];
  if (withHead) {
    if (!head.id.isNull() || !head.extra.empty()) warn(Format("%s 表出现了不止一次", tableName.c_str()));
    if (!readTableHead(head)) return false;
  }
  DxfGroup g;
  for (;;) {
    if (!next(g)) return false;
    if (g.code != 0) continue;  // stray groups between records
    std::string_view v = TrimBlanks(g.text);
    if (v == "ENDTAB") return true;
    if (v == "ENDSEC" || v == "TABLE" || v == "SECTION" || v == "EOF") {
      warn(Format("%s 表缺少 ENDTAB", tableName.c_str()));
      tok_.pushBack();
      return true;
    }
    if (v != tableName) {
      // A record of another kind inside a table: not something a CAD program writes.
      warnOnce("table-mismatch:" + tableName, Format("%s 表中有 %s 记录，已忽略", tableName.c_str(), std::string(v).c_str()));
      if (!skipToNextEntry()) return false;
      continue;
    }
    bool ok;
    if (tableName == "LAYER") ok = readLayer();
    else if (tableName == "STYLE") ok = readTextStyle();
    else if (tableName == "LTYPE") ok = readLinetype();
    else if (tableName == "BLOCK_RECORD") ok = readBlockRecord();
    else ok = readOtherRecord(tableName, v);
    if (!ok) return false;
    tok_.release();
  }
}

// Groups common to the records: the name (2) and flags (70) come after the prefix and the
// subclass markers, which are dropped (the writer puts them back).
namespace {
enum class Common { None, Marker, Name, Flags };
inline Common CommonGroup(const DxfGroup& g, bool& haveName, bool& haveFlags) {
  if (g.code == 100) return Common::Marker;
  if (g.code == 2 && !haveName) {
    haveName = true;
    return Common::Name;
  }
  if (g.code == 70 && !haveFlags) {
    haveFlags = true;
    return Common::Flags;
  }
  return Common::None;
}
}  // namespace

template <class Field>
bool Reader::readRecord(DbObject& r, std::string& rawName, std::int16_t& flags, Field field) {
  if (!readObjectPrefix(r)) return false;
  bool haveName = false, haveFlags = false;
  return forEachGroupOfEntry([&](const DxfGroup& g) {
    switch (CommonGroup(g, haveName, haveFlags)) {
      case Common::Marker: return true;
      case Common::Name: rawName = g.text; return true;
      case Common::Flags: flags = Int16(g); return true;
      case Common::None: break;
    }
    if (field(g)) return true;
    if (g.code == 102) return read102(r, g);
    if (g.code == 1001) return readXdata(r.extras().xdata, g);
    r.extras().unknown.push_back(toGroup(g));
    return true;
  });
}

bool Reader::readLayer() {
  auto layer = std::make_unique<Layer>();
  std::string rawName, linetype;
  bool ok = readRecord(*layer, rawName, layer->standardFlags, [&](const DxfGroup& g) {
    switch (g.code) {
      case 62:
        layer->on = g.integer >= 0;
        layer->colorIndex = static_cast<std::int16_t>(g.integer < 0 ? -g.integer : g.integer);
        return true;
      case 420: layer->trueColor = static_cast<std::int32_t>(g.integer & 0xFFFFFF); return true;
      case 6: linetype = g.text; return true;
      case 290: layer->plottable = g.integer != 0; return true;
      case 370: layer->lineweight = Int16(g); return true;
      case 390: layer->plotStyle = Handle(g); return true;
      case 347: layer->material = Handle(g); return true;
      default: return false;
    }
  });
  if (!ok) return false;
  layer->name = text(rawName);
  if (layer->name.empty()) {
    warn("LAYER 表中有无名图层，已忽略");
    return true;
  }
  Layer* raw = layer.get();
  if (AddRecord(db_, db_.layers, layers_, std::move(layer), rawName, *this, "LAYER") && !linetype.empty())
    layerLinetypes_.emplace_back(raw, std::move(linetype));
  return true;
}

void Reader::resolveLayerLinetypes() {
  for (auto& [layer, name] : layerLinetypes_) layer->linetype = linetypeByName(name);
  layerLinetypes_.clear();
}

bool Reader::readTextStyle() {
  auto style = std::make_unique<TextStyle>();
  std::string name;
  bool ok = readRecord(*style, name, style->standardFlags, [&](const DxfGroup& g) {
    switch (g.code) {
      case 40: style->height = g.real; return true;
      case 41: style->widthFactor = g.real; return true;
      case 50: style->oblique = DegToRad(g.real); return true;
      case 71: style->generation = Int16(g); return true;
      case 42: style->lastHeight = g.real; return true;
      case 3: style->fontFile = text(TrimBlanks(g.text)); return true;
      case 4: style->bigFontFile = text(TrimBlanks(g.text)); return true;
      default: return false;
    }
  });
  if (!ok) return false;
  // The TrueType family: extended data of application ACAD, its first 1000 string.
  if (const ObjectExtras* x = style->extrasIfAny()) {
    bool inAcad = false;
    for (const Group& xg : x->xdata) {
      if (xg.code == 1001) {
        inAcad = xg.asString() == "ACAD";
      } else if (inAcad && xg.code == 1000) {
        style->fontFamily = xg.asString();
        break;
      }
    }
  }
  style->name = text(name);
  AddRecord(db_, db_.textStyles, textStyles_, std::move(style), name, *this, "STYLE");
  return true;
}

bool Reader::readLinetype() {
  auto lt = std::make_unique<Linetype>();
  std::string name;
  LinetypeDash* dash = nullptr;
  bool ok = readRecord(*lt, name, lt->standardFlags, [&](const DxfGroup& g) {
    if (g.code == 49) {
      lt->dashes.emplace_back();
      dash = &lt->dashes.back();
      dash->length = g.real;
      return true;
    }
    if (dash) {
      switch (g.code) {
        case 74: dash->shapeFlags = Int16(g); return true;
        case 75: dash->shapeNumber = Int16(g); return true;
        case 340: dash->shapeStyle = Handle(g); return true;
        case 46: dash->shapeScale = g.real; return true;
        case 50: dash->shapeRotation = g.real; return true;
        case 44: dash->offsetX = g.real; return true;
        case 45: dash->offsetY = g.real; return true;
        case 9: dash->text = text(g.text); return true;
        default: break;
      }
    }
    switch (g.code) {
      case 3: lt->description = text(g.text); return true;
      case 72: lt->alignment = Int16(g); return true;
      case 73: return true;  // the dash count follows from the 49 groups
      case 40: lt->patternLength = g.real; return true;
      default: return false;
    }
  });
  if (!ok) return false;
  lt->name = text(name);
  if (lt->name.empty()) {
    warn("LTYPE 表中有无名线型，已忽略");
    return true;
  }
  AddRecord(db_, db_.linetypes, linetypes_, std::move(lt), name, *this, "LTYPE");
  return true;
}

bool Reader::readBlockRecord() {
  auto block = std::make_unique<BlockRecord>();
  std::string name;
  bool ok = readRecord(*block, name, block->insertUnits, [&](const DxfGroup& g) {
    switch (g.code) {
      case 280: block->explodable = g.integer != 0; return true;
      case 281: block->scalable = g.integer != 0; return true;
      case 340: block->layout = Handle(g); return true;
      case 310: {
        Bytes chunk = bytesOf(g);
        block->preview.insert(block->preview.end(), chunk.begin(), chunk.end());
        return true;
      }
      default: return false;
    }
  });
  if (!ok) return false;
  block->name = text(name);
  if (block->name.empty()) {
    // Some programs write records without names; the BLOCK that refers to this record by
    // handle names it, else it becomes an anonymous block.
    warn(Format("BLOCK_RECORD 表中有无名记录（句柄 %s）", block->id.handleText().c_str()));
  } else if (blocksByName_.count(block->name)) {
    warn(Format("BLOCK_RECORD 表中的 %s 重复，只保留第一个", block->name.c_str()));
    return true;
  }
  db_.registerObject(*block);
  BlockRecord& ref = *block;
  db_.blocks.push_back(std::move(block));
  indexBlock(ref, name);
  return true;
}

bool Reader::readOtherRecord(const std::string& table, std::string_view recordName) {
  auto r = std::make_unique<TableRecord>();
  r->table = std::string(recordName);
  const bool dimStyle = table == "DIMSTYLE";
  if (!readObjectPrefix(*r, dimStyle ? 105 : 5)) return false;
  std::string name;
  bool haveName = false, haveFlags = false, started = false;
  bool ok = forEachGroupOfEntry([&](const DxfGroup& g) {
    if (g.code == 100 && !started) return true;  // the subclass markers before the name
    if (g.code == 2 && !haveName) {
      haveName = true;
      started = true;
      name = g.text;
      return true;
    }
    if (g.code == 70 && !haveFlags) {
      haveFlags = true;
      started = true;
      r->standardFlags = Int16(g);
      return true;
    }
    started = true;
    if (g.code == 1001) return readXdata(r->extras().xdata, g);
    // DIMSTYLE's 5, 6 and 7 are arrow block names in old files, not handles.
    if (dimStyle && g.code >= 5 && g.code <= 7) r->groups.emplace_back(g.code, text(TrimBlanks(g.text)));
    else r->groups.push_back(toGroup(g));
    return true;
  });
  if (!ok) return false;
  r->name = text(name);
  auto& records = db_.otherTables[table];
  if (dimStyle) {
    AddRecord(db_, records, dimStyles_, std::move(r), name, *this, "DIMSTYLE");
    return true;
  }
  // VPORT repeats *Active once per tiled viewport.
  if (table != "VPORT" && !otherNames_.emplace(table + '\n' + r->name, true).second) {
    warn(Format("%s 表中的 %s 重复，只保留第一个", table.c_str(), r->name.c_str()));
    return true;
  }
  db_.registerObject(*r);
  records.push_back(std::move(r));
  return true;
}

}  // namespace tv::cad::dxf_read
