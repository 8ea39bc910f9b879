#include "cli/info_report.h"
#include "cli/json_output.h"

namespace tv::cli {

namespace {

template <class T>
Json Optional(const std::optional<T>& v) {
  return v ? Json(*v) : Json();
}

Json PointJson(const std::optional<cad::Point3d>& p) { return p ? Json::array({p->x, p->y, p->z}) : Json(); }

void AddCounts(Json& json, const SpaceCounts& c) {
  Json& counts = json["counts"] = Json::object();
  for (const auto& cc : c.counts) counts[cc.name] = cc.count;
  json["total"] = c.total;
}

Json UnitsJson(const DrawingSummary& s) {
  Json json;
  json["insunits"] = Optional(s.insUnits);
  const auto name = s.insUnits ? InsUnitsName(*s.insUnits) : std::nullopt;
  json["name"] = name ? Json(std::string(name->chinese)) : Json();
  json["symbol"] = name ? Json(std::string(name->symbol)) : Json();
  json["measurement"] = Optional(s.measurement);
  json["system"] = s.measurement ? Json(*s.measurement == 0 ? "imperial" : "metric") : Json();
  return json;
}

Json EntitiesJson(const DrawingSummary& s) {
  Json json;
  json["spaces"] = Json::array();
  for (const auto& space : s.spaces) {
    Json one;
    one["layout"] = space.label;
    one["block"] = space.block;
    one["modelSpace"] = space.modelSpace;
    AddCounts(one, space);
    json["spaces"].push_back(std::move(one));
  }
  Json& blocks = json["blockDefinitions"];
  blocks["blocks"] = s.blockDefinitions.blockCount;
  AddCounts(blocks, s.blockDefinitions);
  return json;
}

Json LayersJson(const DrawingSummary& s) {
  Json json = Json::array();
  for (const auto& l : s.layers) {
    Json layer;
    layer["name"] = l.name;
    layer["on"] = l.on;
    layer["frozen"] = l.frozen;
    layer["locked"] = l.locked;
    layer["plottable"] = l.plottable;
    layer["color"] = l.colorIndex;
    layer["trueColor"] = l.trueColor >= 0 ? Json(l.trueColor) : Json();
    layer["linetype"] = l.linetype;
    layer["lineweight"] = l.lineweight;
    json.push_back(std::move(layer));
  }
  return json;
}

Json LayoutsJson(const DrawingSummary& s) {
  Json json = Json::array();
  for (const auto& l : s.layouts) {
    Json layout;
    layout["name"] = l.name;
    layout["tab"] = l.tab;
    layout["block"] = l.block;
    layout["paperSize"] = l.paperSize;
    layout["paperWidth"] = l.paperWidth;
    layout["paperHeight"] = l.paperHeight;
    layout["plotter"] = l.plotter;
    layout["styleSheet"] = l.styleSheet;
    layout["viewports"] = l.viewports;
    json.push_back(std::move(layout));
  }
  return json;
}

void AddBlocks(Json& json, const DrawingSummary& s) {
  Json& blocks = json["blocks"] = Json::array();
  for (const auto& b : s.blocks) {
    Json block;
    block["name"] = b.name;
    block["anonymous"] = b.anonymous;
    block["xref"] = b.xref;
    if (b.xref) block["xrefPath"] = b.xrefPath;
    block["hasAttributes"] = b.hasAttributes;
    block["entities"] = b.entities;
    blocks.push_back(std::move(block));
  }
  Json& groups = json["anonymousBlocks"] = Json::array();
  for (const auto& g : s.anonymousGroups) {
    Json group;
    group["prefix"] = g.prefix;
    group["count"] = g.count;
    group["entities"] = g.entities;
    groups.push_back(std::move(group));
  }
}

Json DictionaryJson(const DictionaryNode& n) {
  Json json;
  json["key"] = n.key;
  json["type"] = n.type;
  json["handle"] = n.handle;
  if (n.type == "XRECORD") {
    json["groups"] = n.entries;
  } else {
    json["entries"] = n.entries;
    json["xrecords"] = n.xrecords;
  }
  if (!n.children.empty()) {
    Json& children = json["children"] = Json::array();
    for (const auto& c : n.children) children.push_back(DictionaryJson(c));
  }
  if (n.omittedChildren) json["omittedChildren"] = n.omittedChildren;
  return json;
}

Json KindsJson(const std::vector<std::pair<std::string, std::size_t>>& kinds) {
  Json json = Json::object();
  for (const auto& [name, count] : kinds) json[name] = count;
  return json;
}

Json SourceJson(const cad::DrawingSource& src) {
  Json json;
  json["format"] = src.format;
  json["acadver"] = src.version;
  json["release"] = src.release;
  json["converter"] = src.converter;
  json["repairs"]["layerStates"] = src.layerStatesRepaired;
  json["repairs"]["trueColours"] = src.trueColoursDropped;
  json["repairs"]["lineBreaks"] = src.lineBreaksRepaired;
  json["layerStatesKnown"] = src.layerStatesKnown;
  json["dropped"]["entities"] = KindsJson(src.droppedEntities);
  json["dropped"]["objects"] = KindsJson(src.droppedObjects);
  json["stubs"] = KindsJson(src.stubs);
  json["readProblems"] = src.readProblems;
  return json;
}

}  // namespace

void WriteInfoJson(const DrawingSummary& s, std::ostream& out) {
  Json json;
  json["file"] = s.file;
  json["version"]["acadver"] = s.acadver;
  json["version"]["release"] = s.release;
  if (s.source) json["source"] = SourceJson(*s.source);
  json["codePage"] = Optional(s.codePage);
  json["units"] = UnitsJson(s);
  json["ltscale"] = Optional(s.ltscale);
  json["celtscale"] = Optional(s.celtscale);
  json["tilemode"] = Optional(s.tilemode);
  json["extents"]["min"] = PointJson(s.extMin);
  json["extents"]["max"] = PointJson(s.extMax);
  json["entities"] = EntitiesJson(s);
  json["layers"] = LayersJson(s);
  json["layouts"] = LayoutsJson(s);
  AddBlocks(json, s);
  if (!s.xrefs.empty()) {
    Json& xrefs = json["xrefs"] = Json::array();
    for (const auto& x : s.xrefs) {
      Json xref;
      xref["name"] = x.name;
      xref["savedPath"] = x.savedPath;
      xref["path"] = x.resolvedPath.empty() ? Json() : Json(x.resolvedPath);
      xref["state"] = x.state;
      xref["overlay"] = x.overlay;
      xref["depth"] = x.depth;
      xrefs.push_back(std::move(xref));
    }
  }
  json["dictionaries"] = s.dictionaries ? DictionaryJson(*s.dictionaries) : Json();
  json["warnings"]["count"] = s.warningCount;
  json["warnings"]["first"] = s.firstWarnings;
  PrintJson(out, json,
            {.inlineKeys = {"version", "extents"}, .inlineItemsOf = {"layers", "blocks", "anonymousBlocks", "xrefs"}});
}

}  // namespace tv::cli
