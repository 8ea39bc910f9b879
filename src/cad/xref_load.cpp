#include "cad/xref_load.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "cad/drawing_file.h"
#include "cad/names_internal.h"
#include "cad/xref_bind_internal.h"
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

// A referenced file as read, kept for the whole load.
struct LoadedFile {
  std::string path;
  std::optional<Database> db;
  std::string error;
};

class XrefLoader {
 public:
  XrefLoader(Database& db, const std::string& drawingPath) : db_(db), binder_(db) {
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
    if (const BlockRecord* model = file.db->modelSpace()) binder_.copyEntities(*model, target, names, *file.db);
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

  // The file's names in the drawing under `prefix`, added once per file and prefix.
  BoundNames& bind(const FileKey& key, const std::string& prefix, const Database& src) {
    std::string upper;
    for (char c : prefix) upper += AsciiUpper(c);
    auto [it, added] = bound_.try_emplace({key, upper});
    if (added) binder_.bind(prefix, src, it->second);
    return it->second;
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

  Database& db_;
  std::optional<FileKey> hostKey_;
  std::string hostFolder_;
  std::map<FileKey, LoadedFile> files_;
  std::map<std::pair<FileKey, std::string>, BoundNames> bound_;
  std::set<std::string> noticed_;
  XrefBinder binder_;
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
