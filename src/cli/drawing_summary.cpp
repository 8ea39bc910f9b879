#include "cli/drawing_summary.h"

#include <algorithm>
#include <array>
#include <map>
#include <unordered_set>

#include "cad/layout_viewport.h"

namespace tv::cli {

namespace {

using namespace tv::cad;

// Counts by object type, with the DXF name taken from the first entity of each type; proxies,
// whose names vary, by name. (A map keyed by name per entity costs more than the rest of the summary.)
class ClassCounter {
 public:
  void add(const Entity& e) {
    count(e);
    if (const auto* insert = As<Insert>(&e))
      for (const auto& a : insert->attribs)
        if (!a->isErased()) count(*a);
  }
  void addBlock(const Database& db, const BlockRecord& block) {
    db.forEachEntity(block, [&](const Entity& e) { add(e); });
  }
  void fill(SpaceCounts& space) const {
    space.total = total_;
    std::map<std::string, std::size_t> merged = proxies_;
    for (std::size_t t = 0; t < byType_.size(); ++t)
      if (byType_[t]) merged[names_[t]] += byType_[t];
    for (const auto& [name, n] : merged) space.counts.push_back({name, n});
    std::stable_sort(space.counts.begin(), space.counts.end(),
                     [](const ClassCount& a, const ClassCount& b) { return a.count > b.count; });
  }

 private:
  static constexpr std::size_t kTypes = static_cast<std::size_t>(ObjectType::GenericObject) + 1;

  void count(const Entity& e) {
    ++total_;
    if (e.type() == ObjectType::Proxy) {
      ++proxies_[e.dxfName()];
      return;
    }
    auto t = static_cast<std::size_t>(e.type());
    if (byType_[t]++ == 0) names_[t] = e.dxfName();
  }

  std::array<std::size_t, kTypes> byType_{};
  std::array<std::string, kTypes> names_;
  std::map<std::string, std::size_t> proxies_;
  std::size_t total_ = 0;
};

SpaceCounts CountSpace(const Database& db, const BlockRecord& block, std::string label) {
  SpaceCounts space;
  space.label = std::move(label);
  space.block = block.name;
  space.modelSpace = block.isModelSpace();
  ClassCounter counter;
  counter.addBlock(db, block);
  counter.fill(space);
  return space;
}

std::size_t LiveEntityCount(const Database& db, const BlockRecord& block) {
  std::size_t n = 0;
  db.forEachEntity(block, [&](const Entity&) { ++n; });
  return n;
}

bool HasHeaderValue(const Header& h, std::string_view name) {
  const HeaderVariable* v = h.find(name);
  return v && !v->values.empty();
}

void ReadHeader(const Database& db, DrawingSummary& s) {
  const Header& h = db.header;
  s.acadver = h.getString("$ACADVER");
  s.release = std::string(ReleaseName(db.version()));
  if (HasHeaderValue(h, "$DWGCODEPAGE")) s.codePage = h.getString("$DWGCODEPAGE");
  if (HasHeaderValue(h, "$INSUNITS")) s.insUnits = static_cast<int>(h.getInt("$INSUNITS"));
  if (HasHeaderValue(h, "$MEASUREMENT")) s.measurement = static_cast<int>(h.getInt("$MEASUREMENT"));
  if (HasHeaderValue(h, "$LTSCALE")) s.ltscale = h.getDouble("$LTSCALE");
  if (HasHeaderValue(h, "$CELTSCALE")) s.celtscale = h.getDouble("$CELTSCALE");
  if (HasHeaderValue(h, "$TILEMODE")) s.tilemode = static_cast<int>(h.getInt("$TILEMODE"));
  if (HasHeaderValue(h, "$EXTMIN")) s.extMin = h.getPoint("$EXTMIN");
  if (HasHeaderValue(h, "$EXTMAX")) s.extMax = h.getPoint("$EXTMAX");
}

std::size_t FloatingViewports(const Database& db, const BlockRecord& block) {
  std::size_t n = 0;
  const ObjectId sheet = LayoutViewportOf(db, block);
  db.forEachEntity(block, [&](const Entity& e) {
    if (e.type() == ObjectType::Viewport && e.id != sheet) ++n;
  });
  return n;
}

void ReadSpacesAndLayouts(const Database& db, DrawingSummary& s) {
  std::unordered_set<ObjectId> counted;
  for (const Layout* layout : db.layoutsInTabOrder()) {
    const BlockRecord* block = db.blockOf(*layout);
    LayoutSummary l;
    l.name = layout->name;
    l.tab = layout->tabOrder;
    l.paperSize = layout->plot.paperSize;
    l.paperWidth = layout->plot.paperWidth;
    l.paperHeight = layout->plot.paperHeight;
    l.plotter = layout->plot.plotterName;
    l.styleSheet = layout->plot.styleSheet;
    if (block) {
      l.block = block->name;
      l.viewports = FloatingViewports(db, *block);
      if (counted.insert(block->id).second) s.spaces.push_back(CountSpace(db, *block, layout->name));
    }
    s.layouts.push_back(std::move(l));
  }
  // Layout blocks no layout points at still hold entities worth counting.
  for (const auto& b : db.blocks)
    if (b->isLayout() && !counted.contains(b->id)) {
      counted.insert(b->id);
      s.spaces.push_back(CountSpace(db, *b, b->isModelSpace() ? "Model" : std::string{}));
    }
  // Model space first, whatever the tab order said.
  std::stable_partition(s.spaces.begin(), s.spaces.end(), [](const SpaceCounts& c) { return c.modelSpace; });
}

std::string AnonymousPrefix(const std::string& name) {
  return name.size() >= 2 && name[0] == '*' ? name.substr(0, 2) : "*";
}

void ReadBlocks(const Database& db, DrawingSummary& s, const SummaryLimits& limits) {
  ClassCounter all;
  std::size_t anonymousCount = 0;
  for (const auto& b : db.blocks) {
    if (b->isLayout()) continue;
    all.addBlock(db, *b);
    ++s.blockDefinitions.blockCount;
    if (b->isAnonymous()) ++anonymousCount;
  }
  all.fill(s.blockDefinitions);

  bool summarise = anonymousCount > limits.anonymousListLimit;
  std::map<std::string, AnonymousBlockGroup> groups;
  for (const auto& b : db.blocks) {
    if (b->isLayout()) continue;
    std::size_t n = LiveEntityCount(db, *b);
    if (summarise && b->isAnonymous()) {
      auto& g = groups[AnonymousPrefix(b->name)];
      g.prefix = AnonymousPrefix(b->name);
      ++g.count;
      g.entities += n;
      continue;
    }
    BlockSummary info;
    info.name = b->name;
    info.anonymous = b->isAnonymous();
    info.xref = b->isXref();
    info.xrefPath = b->xrefPath;
    info.entities = n;
    info.hasAttributes = b->blockFlags & BlockRecord::kHasAttributes;
    if (!info.hasAttributes)
      db.forEachEntity(*b, [&](const Entity& e) { info.hasAttributes |= e.type() == ObjectType::AttDef; });
    s.blocks.push_back(std::move(info));
  }
  for (auto& [prefix, g] : groups) s.anonymousGroups.push_back(std::move(g));
}

void ReadLayers(const Database& db, DrawingSummary& s) {
  for (const auto& layer : db.layers) {
    LayerSummary l;
    l.name = layer->name;
    l.on = layer->isOn();
    l.frozen = layer->isFrozen();
    l.locked = layer->isLocked();
    l.plottable = layer->plottable;
    l.colorIndex = layer->colorIndex;
    l.trueColor = layer->trueColor;
    if (const auto* lt = db.objectAs<Linetype>(layer->linetype)) l.linetype = lt->name;
    l.lineweight = layer->lineweight;
    s.layers.push_back(std::move(l));
  }
}

class DictionaryWalker {
 public:
  DictionaryWalker(const Database& db, const SummaryLimits& limits) : db_(db), limits_(limits) {}

  DictionaryNode node(std::string key, ObjectId id, int depth) {
    DictionaryNode n;
    n.key = std::move(key);
    n.handle = id.handleText();
    const DbObject* o = db_.object(id);
    if (!o) {
      n.type = std::string(1, '?');  // (not `= "?"`: GCC 12 warns falsely on that assignment)
      return n;
    }
    n.type = o->dxfName();
    if (const auto* x = As<Xrecord>(o)) {
      n.entries = x->data.size();
      return n;
    }
    const auto* dict = As<Dictionary>(o);
    if (!dict) return n;
    n.entries = dict->entries.size();
    // A dictionary reached twice (a damaged file can loop) is shown once.
    bool firstVisit = visited_.insert(id).second;
    for (const auto& [childKey, childId] : dict->entries) {
      const DbObject* child = db_.object(childId);
      bool isXrecord = As<Xrecord>(child) != nullptr;
      if (isXrecord) ++n.xrecords;
      if (!isXrecord && !As<Dictionary>(child)) continue;
      if (!firstVisit || depth >= limits_.dictionaryDepth || n.children.size() >= limits_.dictionaryChildren) {
        ++n.omittedChildren;
        continue;
      }
      n.children.push_back(node(childKey, childId, depth + 1));
    }
    return n;
  }

 private:
  const Database& db_;
  const SummaryLimits& limits_;
  std::unordered_set<ObjectId> visited_;
};

}  // namespace

std::optional<UnitName> InsUnitsName(int insunits) {
  static constexpr std::array<UnitName, 25> kNames{{
      {"无单位", "unitless"}, {"英寸", "in"}, {"英尺", "ft"}, {"英里", "mi"}, {"毫米", "mm"},
      {"厘米", "cm"}, {"米", "m"}, {"千米", "km"}, {"微英寸", "µin"}, {"密耳", "mil"},
      {"码", "yd"}, {"埃", "Å"}, {"纳米", "nm"}, {"微米", "µm"}, {"分米", "dm"},
      {"十米", "dam"}, {"百米", "hm"}, {"吉米", "Gm"}, {"天文单位", "AU"}, {"光年", "ly"},
      {"秒差距", "pc"}, {"美制测量英尺", "US survey ft"}, {"美制测量英寸", "US survey in"},
      {"美制测量码", "US survey yd"}, {"美制测量英里", "US survey mi"},
  }};
  if (insunits < 0 || insunits >= static_cast<int>(kNames.size())) return std::nullopt;
  return kNames[static_cast<std::size_t>(insunits)];
}

DrawingSummary SummarizeDrawing(const Database& db, std::string file, const std::vector<std::string>& warnings,
                                const SummaryLimits& limits) {
  DrawingSummary s;
  s.file = std::move(file);
  ReadHeader(db, s);
  ReadSpacesAndLayouts(db, s);
  ReadBlocks(db, s, limits);
  ReadLayers(db, s);
  if (db.rootDictionary()) {
    DictionaryWalker walker(db, limits);
    s.dictionaries = walker.node({}, db.rootDictionaryId, 0);
  }
  s.warningCount = warnings.size();
  for (std::size_t i = 0; i < warnings.size() && i < limits.warnings; ++i) s.firstWarnings.push_back(warnings[i]);
  return s;
}

}  // namespace tv::cli
