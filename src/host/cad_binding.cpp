#include "host/cad_binding.h"

namespace tv::host {

namespace {
WorkingDrawing g_working;

// The layout whose space was current when the file was saved: model unless $TILEMODE is 0.
ObjectId SavedLayout(const cad::Database& db) {
  const bool tileMode = db.header.getInt("$TILEMODE", 1) != 0;
  const cad::BlockRecord* space = tileMode ? db.modelSpace() : db.paperSpace();
  if (!space) space = db.modelSpace();
  if (!space) return {};
  const cad::Layout* layout = db.layoutOf(*space);
  return layout ? layout->id : ObjectId{};
}
}  // namespace

void SetWorkingDatabase(cad::Database* db) {
  g_working = WorkingDrawing{};
  g_working.db = db;
  if (db) g_working.currentLayout = SavedLayout(*db);
}

cad::Database* WorkingDatabase() { return g_working.db; }
WorkingDrawing& Working() { return g_working; }

void NoteEntityChange(const cad::Entity& e) {
  if (g_working.onEntityChange) g_working.onEntityChange(e);
}

ObjectId CurrentSpaceBlockId() {
  cad::Database* db = g_working.db;
  if (!db) return {};
  if (auto* layout = db->objectAs<cad::Layout>(g_working.currentLayout))
    if (auto* block = db->blockOf(*layout)) return block->id;
  auto* model = db->modelSpace();
  return model ? model->id : ObjectId{};
}

}  // namespace tv::host
