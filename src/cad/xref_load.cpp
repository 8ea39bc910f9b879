#include "cad/xref_load.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <unordered_map>
#include <utility>

#include "cad/drawing_file.h"
#include "cad/names_internal.h"
#include "cad/walk_limits.h"
#include "cad/xref_path.h"

namespace tv::cad {

namespace fs = std::filesystem;

namespace {

// A file by what it is, not how it is spelled: links and other spellings of a path meet here.
struct FileKey {
  dev_t device = 0;
  ino_t inode = 0;
  auto operator<=>(const FileKey&) const = default;
};

std::optional<FileKey> KeyOf(const std::string& path) {
  struct stat st {};
  if (::stat(path.c_str(), &st) != 0) return std::nullopt;
  return FileKey{st.st_dev, st.st_ino};
}

std::string FolderOf(const std::string& path) {
  return fs::path(path).parent_path().string();
}

bool KeepsOwnLayerName(std::string_view name) { return name == "0" || EqualsNoCase(name, "Defpoints"); }

bool KeepsOwnLinetypeName(std::string_view name) {
  return EqualsNoCase(name, "ByBlock") || EqualsNoCase(name, "ByLayer") || EqualsNoCase(name, "Continuous");
}

constexpr std::int16_t kDependent = BlockRecord::kExternallyDependent | BlockRecord::kResolvedXref;

// A referenced file as read, kept for the whole load.
struct LoadedFile {
  std::string path;
  std::optional<Database> db;
  std::string error;
};

// Where the names of one file went in the drawing, for one xref name.
struct BoundNames {
  std::unordered_map<std::uint64_t, ObjectId> ids;  // the file's record ids -> the drawing's
  // The file's nested xref blocks, to be loaded once the names are in place.
  std::vector<std::pair<const BlockRecord*, BlockRecord*>> nested;
};

class XrefLoader {
 public:
  XrefLoader(Database& db, const std::string& drawingPath) : db_(db) {
    if (auto key = KeyOf(drawingPath)) hostKey_ = *key;
    hostFolder_ = FolderOf(drawingPath);
  }

  XrefLoadResult run() {
    std::vector<BlockRecord*> xrefBlocks;
    std::set<std::uint64_t> placed;
    for (const auto& b : db_.blocks) {
      if (b->isXref()) xrefBlocks.push_back(b.get());
      else
        for (const auto& e : b->entities)
          if (const auto* insert = As<Insert>(e.get()); insert && !insert->isErased()) placed.insert(insert->block.value);
    }
    std::vector<FileKey> chain;
    if (hostKey_) chain.push_back(*hostKey_);
    for (BlockRecord* block : xrefBlocks) {
      // CAD programs list the xrefs nested in an xref among the drawing's blocks too, with paths
      // that hold from the xref's folder: one the drawing never places is loaded without a word.
      quiet_ = !placed.contains(block->id.value);
      load(*block, block->name, block->name, block->xrefPath, hostFolder_, 1, chain);
    }
    quiet_ = false;
    db_.externalFiles = result_.filesRead;
    return std::move(result_);
  }

 private:
  void notice(std::string text) {
    if (quiet_) return;
    if (noticed_.insert(text).second) result_.notices.push_back(std::move(text));
  }

  void clearContent(BlockRecord& block) {
    for (auto& e : block.entities) {
      if (auto* insert = As<Insert>(e.get()))
        for (auto& a : insert->attribs) db_.unregisterObject(a->id);
      db_.unregisterObject(e->id);
    }
    block.entities.clear();
  }

  // Fills `target` with the model space of the file `savedPath` names. `prefix` is the
  // reference's own name in the file that refers to it: the file's names join under it, and the
  // notices name the reference by it, so that one missing file reached by two paths is told once.
  void load(BlockRecord& target, const std::string& shownName, const std::string& prefix, const std::string& savedPath,
            const std::string& folder, int depth, std::vector<FileKey>& chain) {
    clearContent(target);
    XrefInfo info;
    info.name = shownName;
    info.savedPath = savedPath;
    info.overlay = target.blockFlags & BlockRecord::kXrefOverlay;
    info.depth = depth;
    const std::size_t at = result_.xrefs.size();
    result_.xrefs.push_back(info);
    auto setState = [&](XrefState s) { result_.xrefs[at].state = s; };

    std::string path = ResolveXrefPath(savedPath, folder);
    std::error_code ec;
    if (!path.empty()) path = fs::absolute(path, ec).lexically_normal().string();
    const auto key = path.empty() ? std::nullopt : KeyOf(path);
    if (!key) {
      notice("外部参照 " + prefix + " 未找到（" + savedPath + "）");
      return setState(XrefState::NotFound);
    }
    result_.xrefs[at].resolvedPath = path;
    if (std::find(chain.begin(), chain.end(), *key) != chain.end()) {
      notice("外部参照 " + prefix + " 循环引用（" + savedPath + "），未加载");
      return setState(XrefState::Cycle);
    }
    if (depth > kMaxXrefDepth) {
      notice("外部参照 " + prefix + " 嵌套超过 " + std::to_string(kMaxXrefDepth) + " 层，未加载");
      return setState(XrefState::TooDeep);
    }
    LoadedFile& file = read(*key, path);
    if (!file.db) {
      notice("外部参照 " + prefix + " 无法读取：" + file.error);
      return setState(XrefState::Unreadable);
    }
    setState(XrefState::Loaded);
    target.blockFlags |= BlockRecord::kResolvedXref;
    target.externalContent = true;
    target.basePoint = file.db->header.getPoint("$INSBASE");

    chain.push_back(*key);
    BoundNames& names = bind(*key, prefix, *file.db);
    if (const BlockRecord* model = file.db->modelSpace()) copyEntities(*model, target, names, *file.db);
    // The nested references of this file, once per name binding; later paths reuse the blocks.
    auto nested = std::exchange(names.nested, {});
    const std::string fileFolder = FolderOf(file.path);
    for (auto [source, block] : nested) {
      if (source->blockFlags & BlockRecord::kXrefOverlay) {
        XrefInfo overlay;
        overlay.name = block->name;
        overlay.savedPath = source->xrefPath;
        overlay.overlay = true;
        overlay.depth = depth + 1;
        overlay.state = XrefState::Overlay;
        result_.xrefs.push_back(std::move(overlay));
        continue;
      }
      load(*block, block->name, source->name, source->xrefPath, fileFolder, depth + 1, chain);
    }
    chain.pop_back();
  }

  LoadedFile& read(const FileKey& key, const std::string& path) {
    auto [it, added] = files_.try_emplace(key);
    LoadedFile& file = it->second;
    if (!added) return file;
    file.path = path;
    ++result_.fileReads;
    result_.filesRead.push_back(path);
    DxfReadResult read = ReadDrawing(path);
    if (read.ok()) file.db = std::move(*read.db);
    else file.error = read.error.empty() ? "图纸文件 " + path + " 无法读取" : read.error;
    return file;
  }

  ObjectId mapped(const BoundNames& names, ObjectId id) const {
    if (id.isNull()) return {};
    auto it = names.ids.find(id.value);
    return it == names.ids.end() ? ObjectId{} : it->second;
  }

  static std::string Joined(const std::string& prefix, const std::string& name) { return prefix + "|" + name; }

  // Adds the file's names to the drawing under `prefix`, once per file and prefix.
  BoundNames& bind(const FileKey& key, const std::string& prefix, const Database& src) {
    std::string lowered;
    for (char c : prefix) lowered += AsciiUpper(c);
    auto [it, added] = bound_.try_emplace({key, lowered});
    BoundNames& names = it->second;
    if (!added) return names;

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
    return names;
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
    if (e.extrasIfAny()) {
      ObjectExtras& x = e.extras();
      x.extensionDictionary = {};
      x.reactors.clear();
      x.plotStyle = {};
      x.material = {};
    }
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
      if (sourceInsert) keepClip(*sourceInsert, static_cast<Insert&>(added), src);
    }
  }

  // An insert clipped in the referenced file stays clipped.
  void keepClip(const Insert& from, Insert& to, const Database& src) {
    if (from.extensionDictionary().isNull()) return;
    const SpatialFilter* filter = src.spatialFilterOf(from);
    if (!filter) return;
    Dictionary& xdict = db_.ensureExtensionDictionary(to);
    Dictionary& filters = db_.ensureDictionary(xdict, "ACAD_FILTER");
    auto copy = std::make_unique<SpatialFilter>(*filter);
    copy->id = ObjectId{};
    copy->owner = ObjectId{};
    if (copy->extrasIfAny()) copy->extras() = ObjectExtras{};
    SpatialFilter& added = db_.addObject(std::move(copy), filters.id);
    filters.set("SPATIAL", added.id);
  }

  Database& db_;
  std::optional<FileKey> hostKey_;
  std::string hostFolder_;
  std::map<FileKey, LoadedFile> files_;
  std::map<std::pair<FileKey, std::string>, BoundNames> bound_;
  std::set<const BlockRecord*> claimed_;
  std::set<std::string> blockNames_;  // upper case, filled on first use
  std::map<std::string, std::size_t> nextAnonymous_;
  std::set<std::string> noticed_;
  std::size_t copied_ = 0;
  bool quiet_ = false;
  XrefLoadResult result_;
};

}  // namespace

XrefLoadResult LoadXrefs(Database& db, const std::string& drawingPath) {
  for (const auto& b : db.blocks)
    if (b->isXref()) return XrefLoader(db, drawingPath).run();
  return {};
}

}  // namespace tv::cad
