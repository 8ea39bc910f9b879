#include <map>
#include <set>

#include "cad/entity_copy_internal.h"
#include "cad/names_internal.h"
#include "cad/walk_limits.h"
#include "cad/xref_bind_internal.h"
#include "cad/xref_load.h"

namespace tv::cad {

namespace {

bool KeepsOwnLayerName(std::string_view name) { return name == "0" || EqualsNoCase(name, "Defpoints"); }

bool KeepsOwnLinetypeName(std::string_view name) {
  return EqualsNoCase(name, "ByBlock") || EqualsNoCase(name, "ByLayer") || EqualsNoCase(name, "Continuous");
}

constexpr std::int16_t kDependent = BlockRecord::kExternallyDependent | BlockRecord::kResolvedXref;

}  // namespace

// Everything of the binder is internal to this file.
class XrefBinder::Impl {
 public:
  explicit Impl(Database& db) : db_(db) {}

  ObjectId mapped(const BoundNames& names, ObjectId id) const {
    if (id.isNull()) return {};
    auto it = names.ids.find(id.value);
    return it == names.ids.end() ? ObjectId{} : it->second;
  }

  static std::string Joined(const std::string& prefix, const std::string& name) { return prefix + "|" + name; }

  void bind(const std::string& prefix, const Database& src, BoundNames& names) {
    for (const auto& lt : src.linetypes) {
      if (KeepsOwnLinetypeName(lt->name)) {
        names.ids[lt->id.value] = db_.addLinetype(lt->name).id;
        continue;
      }
      const std::string name = Joined(prefix, lt->name);
      const bool existed = db_.findLinetype(name);
      Linetype& to = db_.addLinetype(name);
      if (!existed) {
        to.description = lt->description;
        to.alignment = lt->alignment;
        to.patternLength = lt->patternLength;
        to.dashes = lt->dashes;
        to.standardFlags = static_cast<std::int16_t>(lt->standardFlags | kDependent);
      }
      names.ids[lt->id.value] = to.id;
    }
    for (const auto& style : src.textStyles) {
      const std::string name = Joined(prefix, style->name);
      const bool existed = db_.findTextStyle(name);
      TextStyle& to = db_.addTextStyle(name);
      if (!existed) {
        to.fontFile = style->fontFile;
        to.bigFontFile = style->bigFontFile;
        to.fontFamily = style->fontFamily;
        to.height = style->height;
        to.widthFactor = style->widthFactor;
        to.oblique = style->oblique;
        to.generation = style->generation;
        to.lastHeight = style->lastHeight;
        to.standardFlags = static_cast<std::int16_t>(style->standardFlags | kDependent);
      }
      names.ids[style->id.value] = to.id;
    }
    for (auto& lt : db_.linetypes)  // shapes in a linetype name a text style of the same file
      if (StartsWithNoCase(lt->name, prefix + "|"))
        for (auto& dash : lt->dashes) dash.shapeStyle = mapped(names, dash.shapeStyle);
    for (const auto& layer : src.layers) {
      if (KeepsOwnLayerName(layer->name)) {
        names.ids[layer->id.value] = db_.addLayer(layer->name).id;
        continue;
      }
      // A layer the drawing saved already keeps the states the drawing gave it.
      const std::string name = Joined(prefix, layer->name);
      const bool existed = db_.findLayer(name);
      Layer& to = db_.addLayer(name);
      if (!existed) {
        to.on = layer->on;
        to.colorIndex = layer->colorIndex;
        to.trueColor = layer->trueColor;
        to.plottable = layer->plottable;
        to.lineweight = layer->lineweight;
        to.standardFlags = static_cast<std::int16_t>(layer->standardFlags | kDependent);
        if (ObjectId lt = mapped(names, layer->linetype); !lt.isNull()) to.linetype = lt;
      }
      names.ids[layer->id.value] = to.id;
    }
    if (auto it = src.otherTables.find("DIMSTYLE"); it != src.otherTables.end())
      for (const auto& style : it->second) {
        const std::string name = Joined(prefix, style->name);
        const bool existed = db_.findTableRecord("DIMSTYLE", name);
        TableRecord& to = db_.addTableRecord("DIMSTYLE", name);
        if (!existed) {
          // Pointers into the other file would point at nothing here.
          for (const Group& g : style->groups)
            if (g.code < 330 || g.code > 369) to.groups.push_back(g);
          to.standardFlags = static_cast<std::int16_t>(style->standardFlags | kDependent);
        }
        names.ids[style->id.value] = to.id;
      }

    // Blocks: every id first, since blocks insert each other.
    std::vector<std::pair<const BlockRecord*, BlockRecord*>> contents;
    for (const auto& block : src.blocks) {
      if (block->isLayout()) continue;
      BlockRecord* to = nullptr;
      if (block->isAnonymous() && block->name.size() >= 2 && block->name[0] == '*') {
        to = &anonymousBlock(block->name.substr(0, 2));
      } else {
        to = &freshBlock(Joined(prefix, block->name));
      }
      to->basePoint = block->basePoint;
      to->description = block->description;
      to->insertUnits = block->insertUnits;
      to->explodable = block->explodable;
      to->scalable = block->scalable;
      to->blockFlags = static_cast<std::int16_t>(block->blockFlags | BlockRecord::kExternallyDependent);
      to->xrefPath = block->xrefPath;
      to->externalContent = true;
      names.ids[block->id.value] = to->id;
      if (block->isXref()) names.nested.emplace_back(block.get(), to);
      else contents.emplace_back(block.get(), to);
    }
    for (auto [from, to] : contents) copyEntities(*from, *to, names, src);
  }

  // The drawing's block of that name when it holds nothing of its own (a CAD program saves the
  // names of xref blocks with the drawing), else a new one of a name not taken.
  BlockRecord& freshBlock(const std::string& name) {
    if (!taken(name)) return newBlock(name);
    BlockRecord* existing = db_.findBlock(name);
    if (existing->entities.empty() && (existing->blockFlags & BlockRecord::kExternallyDependent) && !claimed_.contains(existing)) {
      claimed_.insert(existing);
      return *existing;
    }
    for (int n = 1;; ++n)
      if (!taken(name + "$" + std::to_string(n))) return newBlock(name + "$" + std::to_string(n));
  }

  // "*U", "*D" …: the next number free. A file of many dimensions has thousands of these, so the
  // names are counted here rather than looked up one by one.
  BlockRecord& anonymousBlock(const std::string& kind) {
    std::size_t& n = nextAnonymous_[Upper(kind)];
    for (;;)
      if (std::string name = kind + std::to_string(++n); !taken(name)) {
        BlockRecord& b = newBlock(std::move(name));
        b.blockFlags |= BlockRecord::kAnonymous;
        return b;
      }
  }

  static std::string Upper(std::string_view name) {
    std::string upper(name);
    for (char& c : upper) c = AsciiUpper(c);
    return upper;
  }

  bool taken(const std::string& name) {
    if (blockNames_.empty())
      for (const auto& b : db_.blocks) blockNames_.insert(Upper(b->name));
    return blockNames_.contains(Upper(name));
  }

  // A block of a name not taken, added without the table's look-up by name.
  BlockRecord& newBlock(std::string name) {
    taken(name);  // the names known before this one
    blockNames_.insert(Upper(name));
    auto block = std::make_unique<BlockRecord>();
    block->name = std::move(name);
    block->owner = db_.tableId("BLOCK_RECORD");
    db_.registerObject(*block);
    db_.blocks.push_back(std::move(block));
    return *db_.blocks.back();
  }

  template <class T>
  void mapText(T& text, const BoundNames& names) {
    text.style = mapped(names, text.style);
  }

  void mapCommon(Entity& e, const BoundNames& names) {
    e.id = ObjectId{};
    e.layer = mapped(names, e.layer);
    e.linetype = mapped(names, e.linetype);
    DropForeignLinks(e);
  }

  void copyEntities(const BlockRecord& from, BlockRecord& to, const BoundNames& names, const Database& src) {
    for (const auto& source : from.entities) {
      if (source->isErased() || source->type() == ObjectType::Viewport) continue;
      if (copied_ >= kMaxXrefEntities) {
        NoteContentLeftOut();
        return;
      }
      ++copied_;
      std::unique_ptr<Entity> e = source->clone();
      mapCommon(*e, names);
      if (auto* t = As<Text>(e.get())) mapText(*t, names);
      else if (auto* a = As<AttDef>(e.get())) mapText(*a, names);
      else if (auto* m = As<MText>(e.get())) m->style = mapped(names, m->style);
      else if (auto* d = As<Dimension>(e.get())) {
        d->block = mapped(names, d->block);
        d->dimStyle = mapped(names, d->dimStyle);
      } else if (auto* l = As<Leader>(e.get())) {
        l->dimStyle = mapped(names, l->dimStyle);
        l->annotation = {};
      } else if (auto* h = As<Hatch>(e.get())) {
        for (auto& path : h->paths) path.sourceObjects.clear();
      } else if (auto* image = As<Image>(e.get())) {
        image->imageDef = {};
        image->imageDefReactor = {};
      } else if (auto* p = As<Polyline>(e.get())) {
        for (auto& v : p->vertices) v.id = {};
        p->seqendId = {};
      }
      const Insert* sourceInsert = As<Insert>(source.get());
      if (auto* insert = As<Insert>(e.get())) {
        insert->block = mapped(names, insert->block);
        insert->seqendId = {};
        for (auto& a : insert->attribs) {
          mapCommon(*a, names);
          mapText(*a, names);
        }
      }
      Entity& added = db_.appendEntity(to, std::move(e));
      if (sourceInsert) db_.copyClip(src, *sourceInsert, static_cast<Insert&>(added));
    }
  }

 private:
  Database& db_;
  std::set<const BlockRecord*> claimed_;
  std::set<std::string> blockNames_;  // upper case, filled on first use
  std::map<std::string, std::size_t> nextAnonymous_;
  std::size_t copied_ = 0;
};

XrefBinder::XrefBinder(Database& db) : impl_(std::make_unique<Impl>(db)) {}
XrefBinder::~XrefBinder() = default;

void XrefBinder::bind(const std::string& prefix, const Database& src, BoundNames& names) { impl_->bind(prefix, src, names); }

void XrefBinder::copyEntities(const BlockRecord& from, BlockRecord& to, const BoundNames& names, const Database& src) {
  impl_->copyEntities(from, to, names, src);
}

}  // namespace tv::cad
