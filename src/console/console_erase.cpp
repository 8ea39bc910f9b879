// The console host's ERASE: objects chosen at its selection prompt, until Enter, are erased, as
// the user would erase them while a modeless list of the system stays open. Objects on locked
// layers stay.
#include "console/console_editor.h"
#include "host/cad_binding.h"
#include "host/wrappers.h"

namespace tv::console {

int ConsoleEditor::eraseCommand(const std::vector<std::string>& args) {
  // Words after the name answer the first selection prompt, as typed on one line.
  if (args.size() > 1) {
    std::string first;
    for (std::size_t i = 1; i < args.size(); ++i) first += (i > 1 ? " " : "") + args[i];
    answers_.pushFront({first});
  }
  ObjectIdArray chosen;
  // A user erasing on screen may pick the system's markers as well as the drawing's content.
  selectMarkers_ = true;
  int rc = host::RTNORM;
  while (rc == host::RTNORM) rc = select("_:$", {"\n选择对象: "}, {}, {}, chosen);
  selectMarkers_ = false;
  if (rc == host::RTCAN) return host::RTCAN;
  int erased = 0, locked = 0;
  for (ObjectId id : chosen) {
    const cad::Entity* e = db_.entity(id);
    if (!e || e->isErased()) continue;
    const cad::Layer* layer = db_.objectAs<cad::Layer>(e->layer);
    if (layer && layer->isLocked()) {
      ++locked;
      continue;
    }
    if (host::EraseEntity(id)) ++erased;
  }
  if (locked > 0) print("\n" + std::to_string(locked) + " 个在锁定的图层上。");
  print("\n删除了 " + std::to_string(erased) + " 个对象。");
  return erased > 0 ? host::RTNORM : host::RTERROR;
}

}  // namespace tv::console
