#include "aids/true_color.h"

#include <algorithm>
#include <string>

#include "host/colors.h"
#include "host/editor.h"
#include "host/entity.h"
#include "host/wrappers.h"

namespace tv::aids {

namespace {

constexpr const char* kFirstPrompt = "\n选择图形：< 回车全选 >";
constexpr const char* kNextPrompt = "\n选择图形：";

void AddOnce(ObjectIdArray& ids, ObjectId id) {
  if (!id.isNull() && FindId(ids, id) < 0) ids.push_back(id);
}

// Writing the colour's index back drops a true colour; ByLayer sends its layer to the list, a
// block reference its definition.
void ConvertEntity(ObjectId id, ObjectIdArray& layers, ObjectIdArray* blocks, ColorChanges& changes) {
  const std::optional<int> index = host::EntityColorIndex(id);
  if (!index) return;
  if (host::SetEntityColorIndex(id, *index)) ++changes.entities;
  const host::Entity e = host::OpenEntity(id);
  if (!e) return;
  if (*index == host::kColorByLayer) AddOnce(layers, e.layer());
  if (blocks && e.kind() == host::EntityClass::BlockReference) AddOnce(*blocks, e.blockTableRecord());
}

// Nested blocks are converted where they are met. Converting a block a second time would change
// nothing, so each is done once: a definition that holds itself, or a block used a thousand times
// at every level, can't hold the command up.
void ConvertBlock(ObjectId blockId, ObjectIdArray& layers, ObjectIdArray& done, ColorChanges& changes) {
  if (blockId.isNull() || FindId(done, blockId) >= 0) return;
  done.push_back(blockId);
  ObjectIdArray content;
  host::CollectSpaceIds(blockId, content);
  for (ObjectId id : content) {
    ConvertEntity(id, layers, nullptr, changes);
    const host::Entity e = host::OpenEntity(id);
    if (e && e.kind() == host::EntityClass::BlockReference) ConvertBlock(e.blockTableRecord(), layers, done, changes);
  }
}

void ConvertSelection(const ObjectIdArray& ids, ColorChanges& changes) {
  ObjectIdArray layers, blocks, done;
  for (ObjectId id : ids) ConvertEntity(id, layers, &blocks, changes);
  for (ObjectId block : blocks) ConvertBlock(block, layers, done, changes);
  for (ObjectId layer : layers) {
    const std::optional<int> index = host::LayerColorIndex(layer);
    if (index && host::SetLayerColorIndex(layer, *index)) ++changes.layers;
  }
}

// Locked layers are opened up for the run and exactly those are locked again.
class UnlockedLayers {
 public:
  UnlockedLayers() {
    for (const host::LayerFacts& l : host::ListLayers())
      if (l.locked) {
        locked_.push_back(l.id);
        host::SetLayerFlag(l.id, host::kLayerLocked, false);
      }
  }
  ~UnlockedLayers() {
    for (ObjectId id : locked_) host::SetLayerFlag(id, host::kLayerLocked, true);
  }
  UnlockedLayers(const UnlockedLayers&) = delete;
  UnlockedLayers& operator=(const UnlockedLayers&) = delete;

 private:
  ObjectIdArray locked_;
};

}  // namespace

void TrueColorCommand() {
  host::Editor& editor = host::CurrentEditor();
  ColorChanges changes;
  {
    UnlockedLayers unlocked;
    for (int round = 0;; ++round) {
      ObjectIdArray ids;
      int rc = editor.select("_:$", {round == 0 ? kFirstPrompt : kNextPrompt, ""}, {}, {}, ids);
      const bool whole = round == 0 && rc == host::RTERROR;
      if (whole) rc = editor.select("X", {}, {}, {}, ids);
      if (rc != host::RTNORM) break;
      ConvertSelection(ids, changes);
      if (whole) break;
    }
  }
  if (changes.entities > 0 || changes.layers > 0) host::RegenDrawing();
  host::Print("\n已转为索引色：图形 " + std::to_string(changes.entities) + " 个，图层 " +
              std::to_string(changes.layers) + " 个。");
}

}  // namespace tv::aids
