#include "host/entity_copy.h"

#include "host/cad_binding.h"
#include "host/doc_state.h"
#include "host/editor.h"

namespace tv::host {

ObjectId CopyEntity(ObjectId id) {
  cad::Database* db = WorkingDatabase();
  const cad::Entity* source = db ? db->entity(id) : nullptr;
  auto* space = db ? db->objectAs<cad::BlockRecord>(CurrentSpaceBlockId()) : nullptr;
  if (!source || source->isErased() || !space) return {};
  std::unique_ptr<cad::Entity> copy = source->clone();
  copy->id = {};
  // What the source owns stays the source's: its extension dictionary and its reactors.
  const auto keepOwnDataOut = [](cad::DbObject& o) {
    if (!o.extrasIfAny()) return;
    o.extras().extensionDictionary = {};
    o.extras().reactors.clear();
  };
  keepOwnDataOut(*copy);
  if (auto* insert = cad::As<cad::Insert>(copy.get())) {
    for (auto& a : insert->attribs) {
      a->id = {};
      keepOwnDataOut(*a);
    }
    insert->seqendId = db->newHandle();
  }
  if (auto* polyline = cad::As<cad::Polyline>(copy.get())) {
    for (cad::PolylineVertex& v : polyline->vertices) v.id = db->newHandle();
    polyline->seqendId = db->newHandle();
  }
  const cad::Entity& added = db->appendEntity(*space, std::move(copy));
  NoteEntityChange(added);
  ObjectAppended(added.id);
  CurrentEditor().setModified(true);
  return added.id;
}

}  // namespace tv::host
