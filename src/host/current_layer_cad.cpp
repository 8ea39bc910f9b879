#include "host/current_layer.h"

#include "host/cad_binding.h"

namespace tv::host {

ObjectId CurrentLayer() {
  const cad::Database* db = WorkingDatabase();
  if (!db) return {};
  if (const cad::Layer* l = db->findLayer(db->header.getString("$CLAYER"))) return l->id;
  const cad::Layer* zero = db->findLayer("0");
  return zero ? zero->id : ObjectId{};
}

}  // namespace tv::host
