#include <algorithm>

#include "recognition/extents_internal.h"
#include "recognition/sheet_geometry.h"
#include "recognition/working_coordinates.h"

namespace tv::recognition {

using internal::GeomExtents;

Extents3d EntityExtents(ObjectId id) {
  const host::Entity entity = host::OpenEntity(id);
  if (!entity) return {};
  return EntityExtentsOpen(entity, true, true);
}

Extents3d EntityExtentsOpen(const host::Entity& entity, bool withText, bool exactSplines) {
  if (!entity) return {};
  // In a UCS the box is taken around the entity turned into it, which is tighter than turning
  // the world box.
  host::Entity copy;
  if (Ucs().active) copy = entity.transformedCopy(Ucs().worldToUcs);
  const host::Entity& target = copy ? copy : entity;

  const host::EntityClass kind = target.kind();
  Extents3d extents;
  if (!withText && (internal::IsSingleLineText(kind) || kind == host::EntityClass::MText)) {
    return Extents3d{Point3d{0, 0, 0}, Point3d{0, 0, 0}};
  }
  switch (kind) {
    case host::EntityClass::Spline:
      SplineExtents(target, extents);
      break;
    case host::EntityClass::MText:
      MTextExtents(target, extents);
      break;
    case host::EntityClass::BlockReference:
      if (!BlockExtents(target, extents, withText, exactSplines)) extents = GeomExtents(target);
      break;
    default:
      extents = GeomExtents(target);
      break;
  }
  return extents;
}

void SplineExtents(const host::Entity& spline, Extents3d& extents) {
  const host::Entity polyline = spline.splineToPolyline();
  if (polyline) {
    if (auto box = polyline.geomExtents()) {
      extents.add(*box);
      return;
    }
  }
  extents.add(GeomExtents(spline));
}

bool MTextExtents(const host::Entity& mtext, Extents3d& extents) {
  Extents3d letters;
  for (const host::Entity& piece : mtext.explode()) {
    if (piece.kind() == host::EntityClass::Text) letters.add(GeomExtents(piece));
  }
  Extents3d result = GeomExtents(mtext);
  if (!letters.isEmpty()) {
    result.min.x = std::max(result.min.x, letters.min.x);
    result.min.y = std::max(result.min.y, letters.min.y);
    result.max.x = std::min(result.max.x, letters.max.x);
    result.max.y = std::min(result.max.y, letters.max.y);
  }
  extents = result;
  return true;
}

Extents3d SelectionExtents(const ObjectIdArray& ids) {
  Extents3d all;
  for (ObjectId id : ids) all.add(EntityExtents(id));
  return all;
}

}  // namespace tv::recognition
