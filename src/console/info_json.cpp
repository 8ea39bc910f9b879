#include "console/info_report.h"
#include "console/json_writer.h"

namespace tv::console {

namespace {

template <class T>
void OptionalField(JsonWriter& w, std::string_view key, const std::optional<T>& v) {
  w.key(key);
  if (v) w.value(*v);
  else w.null();
}

void PointValue(JsonWriter& w, const std::optional<cad::Point3d>& p) {
  if (!p) {
    w.null();
    return;
  }
  w.beginArray(true);
  w.value(p->x);
  w.value(p->y);
  w.value(p->z);
  w.endArray();
}

void CountsObject(JsonWriter& w, const SpaceCounts& c) {
  w.key("counts");
  w.beginObject();
  for (const auto& cc : c.counts) w.field(cc.name, cc.count);
  w.endObject();
  w.field("total", c.total);
}

void WriteUnits(JsonWriter& w, const DrawingSummary& s) {
  w.key("units");
  w.beginObject();
  OptionalField(w, "insunits", s.insUnits);
  auto name = s.insUnits ? InsUnitsName(*s.insUnits) : std::nullopt;
  w.key("name");
  if (name) w.value(name->chinese);
  else w.null();
  w.key("symbol");
  if (name) w.value(name->symbol);
  else w.null();
  OptionalField(w, "measurement", s.measurement);
  w.key("system");
  if (s.measurement) w.value(*s.measurement == 0 ? "imperial" : "metric");
  else w.null();
  w.endObject();
}

void WriteEntities(JsonWriter& w, const DrawingSummary& s) {
  w.key("entities");
  w.beginObject();
  w.key("spaces");
  w.beginArray();
  for (const auto& space : s.spaces) {
    w.beginObject();
    w.field("layout", space.label);
    w.field("block", space.block);
    w.field("modelSpace", space.modelSpace);
    CountsObject(w, space);
    w.endObject();
  }
  w.endArray();
  w.key("blockDefinitions");
  w.beginObject();
  w.field("blocks", s.blockDefinitions.blockCount);
  CountsObject(w, s.blockDefinitions);
  w.endObject();
  w.endObject();
}

void WriteLayers(JsonWriter& w, const DrawingSummary& s) {
  w.key("layers");
  w.beginArray();
  for (const auto& l : s.layers) {
    w.beginObject(true);
    w.field("name", l.name);
    w.field("on", l.on);
    w.field("frozen", l.frozen);
    w.field("locked", l.locked);
    w.field("plottable", l.plottable);
    w.field("color", l.colorIndex);
    w.key("trueColor");
    if (l.trueColor >= 0) w.value(l.trueColor);
    else w.null();
    w.field("linetype", l.linetype);
    w.field("lineweight", l.lineweight);
    w.endObject();
  }
  w.endArray();
}

void WriteLayouts(JsonWriter& w, const DrawingSummary& s) {
  w.key("layouts");
  w.beginArray();
  for (const auto& l : s.layouts) {
    w.beginObject();
    w.field("name", l.name);
    w.field("tab", l.tab);
    w.field("block", l.block);
    w.field("paperSize", l.paperSize);
    w.field("paperWidth", l.paperWidth);
    w.field("paperHeight", l.paperHeight);
    w.field("plotter", l.plotter);
    w.field("styleSheet", l.styleSheet);
    w.field("viewports", l.viewports);
    w.endObject();
  }
  w.endArray();
}

void WriteBlocks(JsonWriter& w, const DrawingSummary& s) {
  w.key("blocks");
  w.beginArray();
  for (const auto& b : s.blocks) {
    w.beginObject(true);
    w.field("name", b.name);
    w.field("anonymous", b.anonymous);
    w.field("xref", b.xref);
    if (b.xref) w.field("xrefPath", b.xrefPath);
    w.field("hasAttributes", b.hasAttributes);
    w.field("entities", b.entities);
    w.endObject();
  }
  w.endArray();
  w.key("anonymousBlocks");
  w.beginArray();
  for (const auto& g : s.anonymousGroups) {
    w.beginObject(true);
    w.field("prefix", g.prefix);
    w.field("count", g.count);
    w.field("entities", g.entities);
    w.endObject();
  }
  w.endArray();
}

void WriteDictionary(JsonWriter& w, const DictionaryNode& n) {
  w.beginObject();
  w.field("key", n.key);
  w.field("type", n.type);
  w.field("handle", n.handle);
  if (n.type == "XRECORD") {
    w.field("groups", n.entries);
  } else {
    w.field("entries", n.entries);
    w.field("xrecords", n.xrecords);
  }
  if (!n.children.empty()) {
    w.key("children");
    w.beginArray();
    for (const auto& c : n.children) WriteDictionary(w, c);
    w.endArray();
  }
  if (n.omittedChildren) w.field("omittedChildren", n.omittedChildren);
  w.endObject();
}

}  // namespace

void WriteInfoJson(const DrawingSummary& s, std::ostream& out) {
  JsonWriter w(out);
  w.beginObject();
  w.field("file", s.file);
  w.key("version");
  w.beginObject(true);
  w.field("acadver", s.acadver);
  w.field("release", s.release);
  w.endObject();
  OptionalField(w, "codePage", s.codePage);
  WriteUnits(w, s);
  OptionalField(w, "ltscale", s.ltscale);
  OptionalField(w, "celtscale", s.celtscale);
  OptionalField(w, "tilemode", s.tilemode);
  w.key("extents");
  w.beginObject(true);
  w.key("min");
  PointValue(w, s.extMin);
  w.key("max");
  PointValue(w, s.extMax);
  w.endObject();
  WriteEntities(w, s);
  WriteLayers(w, s);
  WriteLayouts(w, s);
  WriteBlocks(w, s);
  w.key("dictionaries");
  if (s.dictionaries) WriteDictionary(w, *s.dictionaries);
  else w.null();
  w.key("warnings");
  w.beginObject();
  w.field("count", s.warningCount);
  w.key("first");
  w.beginArray();
  for (const auto& m : s.firstWarnings) w.value(m);
  w.endArray();
  w.endObject();
  w.finish();
}

}  // namespace tv::console
