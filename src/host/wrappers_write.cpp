// Appending, erasing and changing entities of the working drawing.
#include "cad/entity_geometry.h"
#include "host/cad_binding.h"
#include "host/custom_entity.h"
#include "host/custom_internal.h"
#include "host/doc_state.h"
#include "host/entity_internal.h"
#include "host/wrappers.h"

namespace tv::host {

namespace {

// Unlocks a layer for the life of the scope when it was locked.
class LayerUnlock {
 public:
  explicit LayerUnlock(cad::Layer* layer) : layer_(layer && layer->isLocked() ? layer : nullptr) {
    if (layer_) layer_->setLocked(false);
  }
  ~LayerUnlock() {
    if (layer_) layer_->setLocked(true);
  }
  LayerUnlock(const LayerUnlock&) = delete;
  LayerUnlock& operator=(const LayerUnlock&) = delete;

 private:
  cad::Layer* layer_;
};

// The class the database reactor is told of: the system's own class for its entities.
std::string ClassOf(const cad::Entity* e) {
  const CustomEntity* custom = e ? CustomOf(*e) : nullptr;
  return custom ? custom->className() : std::string();
}

// Erases one entity and tells the database reactor once it is gone.
bool EraseAndNotify(cad::Database& db, ObjectId id) {
  const cad::Entity* e = db.entity(id);
  if (e) NoteEntityChange(*e);
  const std::string className = ClassOf(e);
  if (!db.erase(id)) return false;
  ObjectErased(id, className);
  return true;
}

cad::Layer* LayerOfEntity(cad::Database& db, ObjectId id) {
  const cad::Entity* e = db.entity(id);
  return e ? db.objectAs<cad::Layer>(e->layer) : nullptr;
}

}  // namespace

ObjectId AppendToSpace(Entity entity, int colorIndex, ObjectId layerId, ObjectId recordId) {
  cad::Database* db = WorkingDatabase();
  Entity::Impl* impl = entity.impl();
  // Only a transient can be appended: an opened entity is in the drawing already.
  if (!db || !impl || !impl->transient()) return {};
  if (recordId.isNull()) recordId = OpenCurrentSpace();
  auto* record = db->objectAs<cad::BlockRecord>(recordId);
  if (!record) return {};
  std::unique_ptr<cad::Entity> e = std::move(impl->owned);
  impl->entity = nullptr;
  if (colorIndex >= 1 && colorIndex <= 256) e->colorIndex = static_cast<std::int16_t>(colorIndex);
  if (!layerId.isNull() && db->objectAs<cad::Layer>(layerId)) e->layer = layerId;
  const cad::Entity& added = db->appendEntity(*record, std::move(e));
  NoteEntityChange(added);
  ObjectAppended(added.id);
  return added.id;
}

bool EraseEntity(ObjectId id) {
  cad::Database* db = WorkingDatabase();
  if (!db) return false;
  LayerUnlock unlock(LayerOfEntity(*db, id));
  return EraseAndNotify(*db, id);
}

bool EraseEntities(ObjectIdArray& ids) {
  cad::Database* db = WorkingDatabase();
  bool all = true;
  if (!db) {
    all = ids.empty();
  } else if (!ids.empty()) {
    // The entities of one call are markers of one kind, on one layer.
    LayerUnlock unlock(LayerOfEntity(*db, ids.front()));
    for (ObjectId id : ids)
      if (!EraseAndNotify(*db, id)) all = false;
  }
  ids.clear();
  return all;
}

bool TransformEntity(ObjectId id, const Matrix3d& xf) {
  cad::Database* db = WorkingDatabase();
  cad::Entity* e = db ? db->entity(id) : nullptr;
  if (!e) return false;
  LayerUnlock unlock(db->objectAs<cad::Layer>(e->layer));
  const bool moved = cad::TransformBy(*e, xf);
  // A transform that fails may have changed the entity part way.
  NoteEntityChange(*e);
  if (!moved) return false;
  CurrentEditor().setModified(true);
  return true;
}

ObjectId ScratchSpace() {
  // A named block rather than an anonymous one, so that the next call finds it again.
  constexpr const char* kScratchBlock = "TV_Scratch";
  cad::Database* db = WorkingDatabase();
  if (!db) return {};
  if (const cad::BlockRecord* found = db->findBlock(kScratchBlock)) return found->id;
  return db->addBlock(kScratchBlock).id;
}

void SetUndoRecording(ObjectId id, bool on) {
  // This platform keeps no UNDO history, so there is nothing to keep an entity out of; the
  // entity is only looked up, as opening it for write would.
  (void)on;
  if (cad::Database* db = WorkingDatabase()) (void)db->entity(id);
}

bool ModifyCustomEntity(ObjectId id, const std::function<bool(CustomEntity&)>& edit) {
  cad::Database* db = WorkingDatabase();
  cad::Entity* e = db ? db->entity(id) : nullptr;
  CustomEntity* custom = e ? MutableCustomOf(*e) : nullptr;
  if (!custom) return false;
  if (edit && edit(*custom)) CurrentEditor().setModified(true);
  // The edit may have changed the outline whatever it answered.
  NoteEntityChange(*e);
  return true;
}

void RegenDrawing() { CurrentEditor().regen(); }

}  // namespace tv::host
