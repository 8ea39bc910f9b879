#include "cad/sheet_copy.h"

#include <algorithm>
#include <unordered_map>

#include "cad/entity_copy_internal.h"
#include "cad/entity_geometry.h"
#include "cad/names_internal.h"

namespace tv::cad {

namespace {

bool IsStandardLinetype(std::string_view name) {
  return EqualsNoCase(name, "ByBlock") || EqualsNoCase(name, "ByLayer") || EqualsNoCase(name, "Continuous");
}

// Carries entities and the records they name from one drawing into another, each record once.
class SheetCopier {
 public:
  SheetCopier(const Database& src, Database& dst) : src_(src), dst_(dst) {}

  ObjectId layer(ObjectId id) {
    if (id.isNull()) return {};
    if (auto it = records_.find(id.value); it != records_.end()) return it->second;
    const Layer* from = src_.objectAs<Layer>(id);
    if (!from) return {};
    const bool existed = dst_.findLayer(from->name);
    Layer& to = dst_.addLayer(from->name);
    records_[id.value] = to.id;
    if (!existed || from->name == "0") {
      to.on = from->on;
      to.colorIndex = from->colorIndex;
      to.trueColor = from->trueColor;
      to.plottable = from->plottable;
      to.lineweight = from->lineweight;
      to.standardFlags = from->standardFlags;
      if (ObjectId lt = linetype(from->linetype); !lt.isNull()) to.linetype = lt;
    }
    return to.id;
  }

  ObjectId linetype(ObjectId id) {
    if (id.isNull()) return {};
    if (auto it = records_.find(id.value); it != records_.end()) return it->second;
    const Linetype* from = src_.objectAs<Linetype>(id);
    if (!from) return {};
    const bool existed = dst_.findLinetype(from->name);
    Linetype& to = dst_.addLinetype(from->name);
    records_[id.value] = to.id;
    if (!existed || !IsStandardLinetype(from->name)) {
      to.description = from->description;
      to.alignment = from->alignment;
      to.patternLength = from->patternLength;
      to.dashes = from->dashes;
      to.standardFlags = from->standardFlags;
      for (auto& dash : to.dashes) dash.shapeStyle = textStyle(dash.shapeStyle);
    }
    return to.id;
  }

  ObjectId textStyle(ObjectId id) {
    if (id.isNull()) return {};
    if (auto it = records_.find(id.value); it != records_.end()) return it->second;
    const TextStyle* from = src_.objectAs<TextStyle>(id);
    if (!from) return {};
    TextStyle& to = dst_.addTextStyle(from->name);
    records_[id.value] = to.id;
    CopyStyle(*from, to);
    return to.id;
  }

  static void CopyStyle(const TextStyle& from, TextStyle& to) {
    to.fontFile = from.fontFile;
    to.bigFontFile = from.bigFontFile;
    to.fontFamily = from.fontFamily;
    to.height = from.height;
    to.widthFactor = from.widthFactor;
    to.oblique = from.oblique;
    to.generation = from.generation;
    to.lastHeight = from.lastHeight;
    to.standardFlags = from.standardFlags;
  }

  ObjectId dimStyle(ObjectId id) {
    if (id.isNull()) return {};
    if (auto it = records_.find(id.value); it != records_.end()) return it->second;
    const auto* from = src_.objectAs<TableRecord>(id);
    if (!from || from->table != "DIMSTYLE") return {};
    TableRecord& to = dst_.addTableRecord("DIMSTYLE", from->name);
    records_[id.value] = to.id;
    to.groups.clear();
    // Handles of the source would point at nothing here; the style's text style comes by name.
    for (const Group& g : from->groups)
      if (g.code < 330 || g.code > 369) to.groups.push_back(g);
    to.standardFlags = from->standardFlags;
    return to.id;
  }

  ObjectId block(ObjectId id) {
    if (id.isNull()) return {};
    if (auto it = records_.find(id.value); it != records_.end()) return it->second;
    const BlockRecord* from = src_.objectAs<BlockRecord>(id);
    if (!from || from->isLayout()) return {};
    // A name of the copy's own defaults never clashes: those are layouts only.
    BlockRecord& to = dst_.addBlock(from->isAnonymous() ? from->name.substr(0, 2) : from->name);
    records_[id.value] = to.id;
    to.basePoint = from->basePoint;
    to.description = from->description;
    to.insertUnits = from->insertUnits;
    to.explodable = from->explodable;
    to.scalable = from->scalable;
    to.blockFlags = from->blockFlags;
    to.xrefPath = from->xrefPath;
    to.externalContent = from->externalContent;
    if (!from->externalContent)
      for (const auto& e : from->entities)
        if (!e->isErased()) copy(*e, to, nullptr);
    return to.id;
  }

  // Appends a copy of `source` to `to`, moved by `xf` when given; the copy's id, or null when
  // `xf` can't move it.
  ObjectId copy(const Entity& source, BlockRecord& to, const Matrix3d* xf) {
    std::unique_ptr<Entity> e = source.clone();
    if (xf && !TransformBy(*e, *xf)) return {};
    map(*e);
    const Insert* sourceInsert = As<Insert>(&source);
    Entity& added = dst_.appendEntity(to, std::move(e));
    entities_[source.id.value] = added.id;
    if (sourceInsert) dst_.copyClip(src_, *sourceInsert, static_cast<Insert&>(added));
    if (auto* vp = As<Viewport>(&added); vp && !vp->clipBoundary.isNull()) clipped_.push_back(vp);
    return added.id;
  }

  // A viewport's clip names an entity of the same space: the copy of that entity, or no clip.
  void reconnectClips() {
    for (Viewport* vp : clipped_) {
      auto it = entities_.find(vp->clipBoundary.value);
      vp->clipBoundary = it == entities_.end() ? ObjectId{} : it->second;
      if (vp->clipBoundary.isNull()) vp->statusFlags &= ~Viewport::kClippedNonRect;
    }
    clipped_.clear();
  }

 private:
  void common(Entity& e) {
    e.id = ObjectId{};
    e.owner = ObjectId{};
    e.layer = layer(e.layer);
    e.linetype = linetype(e.linetype);
    DropForeignLinks(e);
  }

  void map(Entity& e) {
    common(e);
    if (auto* t = As<Text>(&e)) t->style = textStyle(t->style);
    else if (auto* a = As<AttDef>(&e)) a->style = textStyle(a->style);
    else if (auto* m = As<MText>(&e)) m->style = textStyle(m->style);
    else if (auto* d = As<Dimension>(&e)) {
      d->block = block(d->block);
      d->dimStyle = dimStyle(d->dimStyle);
    } else if (auto* l = As<Leader>(&e)) {
      l->dimStyle = dimStyle(l->dimStyle);
      l->annotation = {};
    } else if (auto* h = As<Hatch>(&e)) {
      for (auto& path : h->paths) path.sourceObjects.clear();
    } else if (auto* image = As<Image>(&e)) {
      image->imageDef = {};
      image->imageDefReactor = {};
    } else if (auto* p = As<Polyline>(&e)) {
      for (auto& v : p->vertices) v.id = {};
      p->seqendId = {};
    } else if (auto* vp = As<Viewport>(&e)) {
      std::vector<ObjectId> frozen;
      for (ObjectId id : vp->frozenLayers)
        if (ObjectId to = layer(id); !to.isNull()) frozen.push_back(to);
      vp->frozenLayers = std::move(frozen);
    } else if (auto* insert = As<Insert>(&e)) {
      insert->block = block(insert->block);
      insert->seqendId = {};
      for (auto& a : insert->attribs) {
        common(*a);
        a->style = textStyle(a->style);
      }
    }
  }

  const Database& src_;
  Database& dst_;
  std::unordered_map<std::uint64_t, ObjectId> records_;   // source record -> copy
  std::unordered_map<std::uint64_t, ObjectId> entities_;  // source entity -> copy
  std::vector<Viewport*> clipped_;
};

void CopyHeader(const Database& src, Database& dst) {
  for (const char* name : {"$DWGCODEPAGE", "$ACADVER", "$LTSCALE", "$CELTSCALE", "$INSUNITS", "$MEASUREMENT", "$LUNITS",
                           "$LUPREC", "$DIMSCALE", "$PSLTSCALE"})
    if (const HeaderVariable* v = src.header.find(name)) dst.header.set(name, v->values);
}

// The *Active VPORT of model space looks at the rectangle.
void SetModelView(Database& dst, double width, double height) {
  TableRecord* vport = dst.activeViewport();
  if (!vport || width <= 0 || height <= 0) return;
  std::erase_if(vport->groups, [](const Group& g) { return g.code == 12 || g.code == 22 || g.code == 40 || g.code == 41; });
  vport->groups.insert(vport->groups.end(),
                       {Group{12, 0.0}, Group{22, 0.0}, Group{40, height}, Group{41, width / height}});
}

void CopyLayoutSettings(const Database& src, const BlockRecord& from, Database& dst, BlockRecord& to,
                        const std::string& name) {
  Layout* target = dst.layoutOf(to);
  if (!target) return;
  if (const Layout* source = src.layoutOf(from)) {
    target->plot = source->plot;
    target->limitsMin = source->limitsMin;
    target->limitsMax = source->limitsMax;
    target->insertionBase = source->insertionBase;
    target->extentsMin = source->extentsMin;
    target->extentsMax = source->extentsMax;
    if (name.empty()) target->name = source->name;
  }
  if (!name.empty()) target->name = name;
  dst.header.setInt("$TILEMODE", 0);
}

}  // namespace

Database CopySheet(const Database& src, const SheetCopyRequest& request) {
  Database dst = Database::createDefault();
  CopyHeader(src, dst);
  SheetCopier copier(src, dst);
  if (const TextStyle* standard = src.findTextStyle("Standard"))
    if (TextStyle* to = dst.findTextStyle("Standard")) SheetCopier::CopyStyle(*standard, *to);

  const BlockRecord* space = src.objectAs<BlockRecord>(request.space);
  const bool layoutSheet = space && !space->isModelSpace();
  if (request.withModelSpace && src.modelSpace())
    src.forEachEntity(*src.modelSpace(), [&](const Entity& e) { copier.copy(e, *dst.modelSpace(), nullptr); });

  BlockRecord& target = layoutSheet ? *dst.paperSpace() : *dst.modelSpace();
  if (layoutSheet) CopyLayoutSettings(src, *space, dst, target, request.layoutName);

  // Viewports and their clips work only in a layout: they go there whatever becomes of the rest.
  std::vector<const Entity*> entities, layoutOnly;
  std::vector<std::uint64_t> clips;
  for (ObjectId id : request.ids)
    if (const auto* vp = src.objectAs<Viewport>(id); vp && !vp->clipBoundary.isNull()) clips.push_back(vp->clipBoundary.value);
  for (ObjectId id : request.ids) {
    const Entity* e = src.entity(id);
    if (!e) continue;
    const bool viewportPart = e->type() == ObjectType::Viewport || std::ranges::find(clips, id.value) != clips.end();
    (viewportPart && layoutSheet ? layoutOnly : entities).push_back(e);
  }

  const Matrix3d toOrigin = Matrix3d::translation(Vector3d{-request.base.x, -request.base.y, -request.base.z});
  for (const Entity* e : layoutOnly) copier.copy(*e, target, &toOrigin);
  bool placed = false;
  if (!request.asBlock) {
    // The pieces themselves, moved; when one can't be moved whole the sheet goes in as a block.
    const std::size_t before = target.entities.size();
    placed = std::all_of(entities.begin(), entities.end(),
                         [&](const Entity* e) { return !copier.copy(*e, target, &toOrigin).isNull(); });
    if (!placed)
      for (std::size_t i = before; i < target.entities.size(); ++i) dst.erase(target.entities[i]->id);
  }
  if (!placed && !entities.empty()) {
    BlockRecord& sheet = dst.addBlock(request.blockName.empty() ? std::string("BK") : request.blockName);
    sheet.basePoint = request.base;
    for (const Entity* e : entities) copier.copy(*e, sheet, nullptr);
    auto insert = std::make_unique<Insert>();
    insert->block = sheet.id;
    dst.append(target, std::move(insert));
  }
  copier.reconnectClips();
  dst.purgeErased();
  if (!layoutSheet) SetModelView(dst, request.viewWidth, request.viewHeight);
  return dst;
}

}  // namespace tv::cad
