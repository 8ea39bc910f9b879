#include "host/text_edit.h"

#include "host/cad_binding.h"
#include "host/editor.h"

namespace tv::host {

namespace {

// The embedded multiline text of an attribute holds the contents once more, in 3 pieces and a
// final 1; they become one 1 group with the new contents.
void SetEmbeddedContents(cad::Groups& embedded, const std::string& text) {
  if (embedded.empty()) return;
  bool written = false;
  cad::Groups out;
  out.reserve(embedded.size());
  for (cad::Group& g : embedded) {
    if (g.code == 3) continue;
    if (g.code == 1) {
      if (written) continue;
      g.value = text;
      written = true;
    }
    out.push_back(std::move(g));
  }
  embedded = std::move(out);
}

}  // namespace

bool SetEntityText(ObjectId id, const std::string& text) {
  cad::Database* db = WorkingDatabase();
  cad::Entity* e = db ? db->entity(id) : nullptr;
  if (!e || e->isErased()) return false;
  const cad::Layer* layer = db->objectAs<cad::Layer>(e->layer);
  if (layer && layer->isLocked()) return false;
  if (auto* t = cad::As<cad::Text>(e)) {
    t->text = text;
  } else if (auto* d = cad::As<cad::AttDef>(e)) {
    d->text = text;
    if (!d->multiline().empty()) SetEmbeddedContents(d->editDetails().multiline, text);
  } else if (auto* a = cad::As<cad::Attrib>(e)) {
    a->text = text;
    if (!a->multiline().empty()) SetEmbeddedContents(a->editDetails().multiline, text);
  } else if (auto* m = cad::As<cad::MText>(e)) {
    m->text = text;
  } else {
    return false;
  }
  NoteEntityChange(*e);
  CurrentEditor().setModified(true);
  return true;
}

bool IsInvisibleAttribute(ObjectId id) {
  const cad::Database* db = WorkingDatabase();
  const auto* a = db ? db->objectAs<cad::Attrib>(id) : nullptr;
  return a && a->isInvisible();
}

}  // namespace tv::host
