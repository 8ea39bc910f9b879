#include <cmath>
#include <memory>

#include "host/wrappers.h"
#include "recognition/plot_marker.h"
#include "recognition/sheet_geometry.h"
#include "recognition/working_coordinates.h"

namespace tv::recognition {

namespace {

bool AddTempId(TempKind kind, ObjectId id, const Extents3d& extents, TempIdArray& array, bool rising = true) {
  if (extents.isEmpty()) return false;
  const Point3d minPt{extents.min.x, extents.min.y, 0.0};
  const Point3d maxPt{extents.max.x, extents.max.y, 0.0};
  const double sizeX = maxPt.x - minPt.x;
  const double sizeY = maxPt.y - minPt.y;

  if (kind == TempKind::Line) {
    // Only lines along the axes can be sides of a frame.
    const double d = minPt.distanceTo(maxPt);
    if (0.002 * d < sizeX && 0.002 * d < sizeY) return false;
  }

  Temp_Id record;
  record.kind = kind;
  record.id = id;
  record.extents = extents;
  record.rising = rising;
  if (kind != TempKind::Line) record.area = (sizeY * 0.001) * (sizeX * 0.001);
  array.push_back(record);
  return true;
}

}  // namespace

bool MakeTempId(TempKind kind, ObjectId id, TempIdArray& array) { return AddTempId(kind, id, EntityExtents(id), array); }

bool MakeTempId(TempKind kind, const host::Entity& entity, TempIdArray& array) {
  bool rising = true;
  if (kind == TempKind::Line && entity.kind() == host::EntityClass::Line) {
    const Point3d p = ToWorking(entity.startPoint()), q = ToWorking(entity.endPoint());
    rising = (q.x - p.x) * (q.y - p.y) >= 0.0;
  }
  return AddTempId(kind, entity.id(), EntityExtentsOpen(entity, true, true), array, rising);
}

bool AddMarker(Plot_Drawing1& sheet, ObjectId layerId, const Extents3d& box, double unitFactor) {
  if (sheet.sourceIds[0].isNull()) return false;
  if (!(box.max.x - box.min.x > 1e-05) || !(box.max.y - box.min.y > 1e-05)) return false;

  sheet.unitFactor = unitFactor;
  sheet.minX = box.min.x;
  sheet.minY = box.min.y;
  sheet.maxX = box.max.x;
  sheet.maxY = box.max.y;
  sheet.sizeX = std::abs(sheet.maxX - sheet.minX);
  sheet.sizeY = std::abs(sheet.maxY - sheet.minY);
  if (!(sheet.sizeX > 0.0) || !(sheet.sizeY > 0.0)) return false;

  sheet.rotated = sheet.sizeX < sheet.sizeY;
  sheet.markerId = NewMarker(layerId, box);
  return true;
}

ObjectId NewMarker(ObjectId layerId, const Extents3d& box, ObjectId spaceId) {
  auto marker = std::make_unique<Temp_PlotRec>();
  marker->number = 0;
  marker->state = kMarkerActive;
  marker->corner0 = {box.min.x, box.min.y, 0.0};
  marker->corner1 = {box.max.x, box.max.y, 0.0};
  marker->inUcs = Ucs().active;
  marker->matrix = Ucs().worldToUcs;
  const ObjectId id = host::AppendToSpace(host::NewCustomEntity(std::move(marker)), 0, layerId, spaceId);
  // Thousands of markers in UNDO would make undoing a batch crawl.
  if (!id.isNull()) host::SetUndoRecording(id, false);
  return id;
}

bool SetMarker(const Plot_Drawing1& sheet, std::int32_t number, std::int32_t state) {
  return SetMarker(sheet.markerId, number, state);
}

bool SetMarker(ObjectId markerId, std::int32_t number, std::int32_t state) {
  bool changed = false;
  host::ModifyCustomEntity(markerId, [&](host::CustomEntity& entity) {
    auto* marker = dynamic_cast<Temp_PlotRec*>(&entity);
    if (!marker) return false;
    if (number >= 0 && marker->number != number) {
      marker->number = number;
      changed = true;
    }
    if (state >= 0 && marker->state != state) {
      marker->state = state;
      changed = true;
    }
    return changed;
  });
  return changed;
}

Point3d CentreOf(const Extents3d& box) {
  return {(box.min.x + box.max.x) / 2.0, (box.min.y + box.max.y) / 2.0, (box.min.z + box.max.z) / 2.0};
}

}  // namespace tv::recognition
