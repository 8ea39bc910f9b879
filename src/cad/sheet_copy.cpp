#include "cad/sheet_copy.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <unordered_map>
#include <variant>

#include "cad/entity_copy_internal.h"
#include "cad/entity_geometry.h"
#include "cad/layout_viewport.h"
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
    if (auto* image = As<Image>(&added); image && !image->imageDef.isNull()) linkImage(*image);
    if (auto* vp = As<Viewport>(&added); vp && !vp->clipBoundary.isNull()) clipped_.push_back(vp);
    return added.id;
  }

  // The groups of the source with members among the copies, holding those members.
  void copyGroups() {
    const Dictionary* from = src_.namedDictionary("ACAD_GROUP");
    if (!from || !dst_.rootDictionary()) return;
    for (const auto& [key, id] : from->entries) {
      const auto* group = src_.objectAs<GenericObject>(id);
      if (!group || group->name != "GROUP") continue;
      auto copy = fresh(*group);
      bool any = false;
      std::erase_if(copy->groups, [&](Group& g) {
        if (g.code != 340) return false;
        auto it = entities_.find(g.asId().value);
        if (it == entities_.end()) return true;
        g.value = it->second;
        any = true;
        return false;
      });
      if (!any) continue;
      Dictionary& groups = dst_.ensureDictionary(*dst_.rootDictionary(), "ACAD_GROUP");
      if (!groups.find(key).isNull()) continue;
      groups.set(key, dst_.addObject(std::move(copy), groups.id).id);
    }
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
  template <class T>
  static std::unique_ptr<T> fresh(const T& from) {
    auto copy = std::make_unique<T>(from);
    copy->id = ObjectId{};
    copy->owner = ObjectId{};
    if (copy->extrasIfAny()) {
      copy->extras().reactors.clear();
      copy->extras().extensionDictionary = {};
    }
    return copy;
  }

  // What a handle of an entity or a style names: the copy of a record, an image definition or
  // a style kept in a dictionary of the root; null for anything the copy can't hold.
  ObjectId anyObject(ObjectId id) {
    if (id.isNull()) return {};
    if (auto it = records_.find(id.value); it != records_.end()) return it->second;
    if (auto it = entities_.find(id.value); it != entities_.end()) return it->second;
    const DbObject* o = src_.object(id);
    if (!o) return {};
    switch (o->type()) {
      case ObjectType::Layer: return layer(id);
      case ObjectType::Linetype: return linetype(id);
      case ObjectType::TextStyle: return textStyle(id);
      case ObjectType::BlockRecord: return block(id);
      case ObjectType::TableRecord: return dimStyle(id);
      case ObjectType::ImageDef: return imageDef(id);
      case ObjectType::GenericObject: return dictionaryEntry(id);
      default: return {};
    }
  }

  void remapHandles(Groups& groups) {
    for (Group& g : groups)
      if (std::holds_alternative<ObjectId>(g.value)) g.value = anyObject(std::get<ObjectId>(g.value));
  }

  // Where the source keeps an object in the dictionaries of its root: (dictionary, key).
  const std::pair<std::string, std::string>* placeOf(ObjectId id) {
    if (!placesKnown_) {
      placesKnown_ = true;
      if (const Dictionary* root = src_.rootDictionary())
        for (const auto& [dictKey, dictId] : root->entries)
          if (const auto* dict = src_.objectAs<Dictionary>(dictId); dict && dictKey != "ACAD_GROUP")
            for (const auto& [key, value] : dict->entries) places_.emplace(value.value, std::pair{dictKey, key});
    }
    auto it = places_.find(id.value);
    return it == places_.end() ? nullptr : &it->second;
  }

  // A style of a named dictionary (multileader, table, multiline style …), under the same key.
  ObjectId dictionaryEntry(ObjectId id) {
    const auto* from = src_.objectAs<GenericObject>(id);
    const auto* place = placeOf(id);
    if (!from || !place || !dst_.rootDictionary()) return {};
    Dictionary& dict = dst_.ensureDictionary(*dst_.rootDictionary(), place->first);
    if (ObjectId existing = dict.find(place->second); !existing.isNull()) return records_[id.value] = existing;
    GenericObject& to = dst_.addObject(fresh(*from), dict.id);
    dict.set(place->second, to.id);
    records_[id.value] = to.id;
    remapHandles(to.groups);
    return to.id;
  }

  // An object the root names directly (the wipeout frame settings), once.
  void rootEntry(const std::string& key) {
    const Dictionary* root = src_.rootDictionary();
    Dictionary* dstRoot = dst_.rootDictionary();
    if (!root || !dstRoot || !dstRoot->find(key).isNull()) return;
    const auto* from = src_.objectAs<GenericObject>(root->find(key));
    if (!from) return;
    GenericObject& to = dst_.addObject(fresh(*from), dstRoot->id);
    dstRoot->set(key, to.id);
    remapHandles(to.groups);
  }

  // An image's picture: its definition under ACAD_IMAGE_DICT, the file named so that the copy
  // finds it from wherever it is written.
  ObjectId imageDef(ObjectId id) {
    if (id.isNull()) return {};
    if (auto it = records_.find(id.value); it != records_.end()) return it->second;
    const auto* from = src_.objectAs<ImageDef>(id);
    if (!from || !dst_.rootDictionary()) return {};
    Dictionary& dict = dst_.ensureDictionary(*dst_.rootDictionary(), "ACAD_IMAGE_DICT");
    std::string key;
    if (const auto* place = placeOf(id)) key = place->second;
    if (key.empty()) key = std::filesystem::path(from->fileName).stem().string();
    for (std::string base = key; key.empty() || !dict.find(key).isNull();) key = base + "_" + std::to_string(++imageKeys_);
    auto copy = fresh(*from);
    copy->fileName = pictureFile(copy->fileName);
    ImageDef& to = dst_.addObject(std::move(copy), dict.id);
    dict.set(key, to.id);
    rootEntry("ACAD_IMAGE_VARS");
    return records_[id.value] = to.id;
  }

  // A picture the source finds beside itself (by its relative name, or by its bare file name as
  // for a drawing made elsewhere), named by its full path: the copy may be written elsewhere.
  std::string pictureFile(const std::string& name) const {
    if (folder_.empty() || name.empty()) return name;
    std::string portable = name;
    std::replace(portable.begin(), portable.end(), '\\', '/');
    const std::filesystem::path path(portable), folder(folder_);
    std::error_code ec;
    if (path.is_absolute() && std::filesystem::exists(path, ec)) return name;
    std::vector<std::filesystem::path> candidates;
    if (!path.is_absolute()) candidates.push_back(folder / path);
    candidates.push_back(folder / path.filename());
    for (const std::filesystem::path& beside : candidates)
      if (std::filesystem::is_regular_file(beside, ec)) return std::filesystem::absolute(beside, ec).lexically_normal().string();
    return name;
  }

  // The definition knows its images through one reactor each, owned by the image.
  void linkImage(Image& image) {
    auto* def = dst_.objectAs<ImageDef>(image.imageDef);
    if (!def) return;
    auto reactor = std::make_unique<GenericObject>();
    reactor->name = "IMAGEDEF_REACTOR";
    reactor->groups = {Group{100, std::string("AcDbRasterImageDefReactor")}, Group{90, std::int64_t{2}}, Group{330, image.id}};
    GenericObject& added = dst_.addObject(std::move(reactor), image.id);
    image.imageDefReactor = added.id;
    def->extras().reactors.push_back(added.id);
  }

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
      image->imageDef = imageDef(image->imageDef);
      image->imageDefReactor = {};
    } else if (auto* wipeout = As<Wipeout>(&e)) {
      wipeout->imageDef = {};
      wipeout->imageDefReactor = {};
      rootEntry("ACAD_WIPEOUT_VARS");
    } else if (auto* proxy = As<ProxyEntity>(&e)) {
      remapHandles(proxy->groups);
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
  std::string folder_;  // the source drawing's folder, for pictures named relative to it
  bool placesKnown_ = false;
  std::unordered_map<std::uint64_t, std::pair<std::string, std::string>> places_;
  int imageKeys_ = 0;

 public:
  void setSourceFolder(std::string folder) { folder_ = std::move(folder); }
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
    target->insertionBase = source->insertionBase;
    if (name.empty()) target->name = source->name;
  }
  if (!name.empty()) target->name = name;
  dst.header.setInt("$TILEMODE", 0);
}

std::optional<Extents3d> ContentExtents(const Database& db, const BlockRecord& space) {
  ExtentsCache cache;
  Extents3d box;
  db.forEachEntity(space, [&](const Entity& e) {
    if (const auto b = cache.entityExtents(e, db)) box.add(*b);
  });
  if (box.isEmpty()) return std::nullopt;
  return box;
}

// Extents and limits of the copy's spaces: what each holds, and the sheet as the limits of the
// space it lies in. An empty space keeps the marks of an empty drawing.
void SetExtents(Database& dst, const SheetCopyRequest& request, bool layoutSheet) {
  const bool hasLimits = request.limitsMin != request.limitsMax;
  if (const auto box = ContentExtents(dst, *dst.modelSpace())) {
    dst.header.setPoint("$EXTMIN", box->min);
    dst.header.setPoint("$EXTMAX", box->max);
  }
  if (hasLimits && !layoutSheet) {
    dst.header.setPoint("$LIMMIN", {request.limitsMin.x, request.limitsMin.y, 0}, false);
    dst.header.setPoint("$LIMMAX", {request.limitsMax.x, request.limitsMax.y, 0}, false);
  }
  if (!layoutSheet) return;
  BlockRecord& paper = *dst.paperSpace();
  Layout* layout = dst.layoutOf(paper);
  if (const auto box = ContentExtents(dst, paper)) {
    dst.header.setPoint("$PEXTMIN", box->min);
    dst.header.setPoint("$PEXTMAX", box->max);
    if (layout) {
      layout->extentsMin = box->min;
      layout->extentsMax = box->max;
    }
  }
  if (hasLimits) {
    dst.header.setPoint("$PLIMMIN", {request.limitsMin.x, request.limitsMin.y, 0}, false);
    dst.header.setPoint("$PLIMMAX", {request.limitsMax.x, request.limitsMax.y, 0}, false);
    if (layout) {
      layout->limitsMin = request.limitsMin;
      layout->limitsMax = request.limitsMax;
    }
  }
}

// The layout's own viewport, first in its space, looks at the sheet: the layout opens on it.
void SetLayoutView(Database& dst, double width, double height) {
  BlockRecord& paper = *dst.paperSpace();
  if (width <= 0 || height <= 0 || !LayoutViewportOf(dst, paper).isNull()) return;
  auto own = std::make_unique<Viewport>();
  own->width = width;
  own->height = height;
  own->status = 1;
  own->number = 1;
  own->viewHeight = height;
  Viewport& vp = dst.append(paper, std::move(own));
  std::rotate(paper.entities.begin(), paper.entities.end() - 1, paper.entities.end());
  if (Layout* layout = dst.layoutOf(paper)) layout->lastActiveViewport = vp.id;
}

}  // namespace

Database CopySheet(const Database& src, const SheetCopyRequest& request) {
  Database dst = Database::createDefault();
  CopyHeader(src, dst);
  SheetCopier copier(src, dst);
  copier.setSourceFolder(request.sourceFolder);
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
  copier.copyGroups();
  dst.purgeErased();
  SetExtents(dst, request, layoutSheet);
  if (layoutSheet) SetLayoutView(dst, request.viewWidth, request.viewHeight);
  else SetModelView(dst, request.viewWidth, request.viewHeight);
  return dst;
}

}  // namespace tv::cad
