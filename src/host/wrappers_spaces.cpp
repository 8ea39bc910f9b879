// Spaces, blocks and layouts of the working drawing.
#include "host/cad_binding.h"
#include "host/wrappers.h"

namespace tv::host {

bool IsPaperSpace() {
  // A platform editor knows which viewport is current; without one the current layout decides.
  if (HasEditor()) return GetIntVar("CVPORT") == 1;
  const ObjectId space = CurrentSpaceBlockId();
  return !space.isNull() && space != ModelSpaceId();
}

ObjectId ModelSpaceId() {
  const cad::Database* db = WorkingDatabase();
  const cad::BlockRecord* model = db ? db->modelSpace() : nullptr;
  return model ? model->id : ObjectId{};
}

ObjectId OpenCurrentSpace() { return CurrentSpaceBlockId(); }

std::vector<LayoutFacts> ListLayouts() {
  std::vector<LayoutFacts> out;
  const cad::Database* db = WorkingDatabase();
  if (!db) return out;
  auto add = [&](const cad::Layout& l) {
    const cad::BlockRecord* block = db->blockOf(l);
    out.push_back(LayoutFacts{l.id, l.name, block ? block->id : ObjectId{}, l.tabOrder});
  };
  if (const cad::Dictionary* dict = db->namedDictionary("ACAD_LAYOUT")) {
    for (const auto& [key, id] : dict->entries)
      if (const auto* l = db->objectAs<cad::Layout>(id)) add(*l);
  } else {
    for (const auto& o : db->objects)
      if (const auto* l = cad::As<cad::Layout>(o.get())) add(*l);
  }
  return out;
}

std::string BlockName(ObjectId blockId) {
  const cad::Database* db = WorkingDatabase();
  const auto* block = db ? db->objectAs<cad::BlockRecord>(blockId) : nullptr;
  return block ? block->name : std::string{};
}

ObjectId FindBlock(const std::string& name) {
  const cad::Database* db = WorkingDatabase();
  const cad::BlockRecord* block = db ? db->findBlock(name) : nullptr;
  return block ? block->id : ObjectId{};
}

ObjectIdArray BlockRecordIds() {
  ObjectIdArray ids;
  if (const cad::Database* db = WorkingDatabase())
    for (const auto& block : db->blocks) ids.push_back(block->id);
  return ids;
}

void CollectSpaceIds(ObjectId blockId, ObjectIdArray& ids) {
  const cad::Database* db = WorkingDatabase();
  const auto* block = db ? db->objectAs<cad::BlockRecord>(blockId) : nullptr;
  if (!block) return;
  db->forEachEntity(*block, [&](const cad::Entity& e) { ids.push_back(e.id); });
}

void ActivateLayoutOf(ObjectId blockId) {
  const cad::Database* db = WorkingDatabase();
  const auto* block = db ? db->objectAs<cad::BlockRecord>(blockId) : nullptr;
  if (!block) return;
  if (const cad::Layout* layout = db->layoutOf(*block)) Working().currentLayout = layout->id;
}

}  // namespace tv::host
