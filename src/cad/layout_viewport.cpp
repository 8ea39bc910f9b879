#include "cad/layout_viewport.h"

namespace tv::cad {

ObjectId LayoutViewportOf(const Database& db, const BlockRecord& space) {
  if (&space == db.modelSpace()) return {};
  // Numbers, when written, say which one it is. The layout's own record names the viewport last
  // active, which may be a floating one; it decides only where the writer left the numbers out
  // (group 69), and failing that the first viewport is the layout's own, as the host creates it
  // before any other.
  const Viewport* first = nullptr;
  bool numbered = false;
  for (const auto& e : space.entities) {
    const auto* vp = As<Viewport>(e.get());
    if (!vp || vp->isErased()) continue;
    if (vp->number == 1) return vp->id;
    numbered |= vp->number != 0;
    if (!first) first = vp;
  }
  if (!first || numbered) return {};
  if (const Layout* layout = db.layoutOf(space)) {
    if (const auto* named = db.objectAs<Viewport>(layout->lastActiveViewport);
        named && !named->isErased() && named->owner == space.id)
      return named->id;
  }
  return first->id;
}

bool IsLayoutViewport(const Database& db, const Viewport& vp) {
  const BlockRecord* space = db.objectAs<BlockRecord>(vp.owner);
  return space && LayoutViewportOf(db, *space) == vp.id;
}

}  // namespace tv::cad
