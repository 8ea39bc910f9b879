// Where a definition's stored areas lie on the drawing for one insert of its frame.
#include <algorithm>
#include <cmath>

#include "host/entity.h"
#include "recognition/sheet_geometry.h"
#include "recognition/working_coordinates.h"
#include "titleblock/field_extraction.h"
#include "titleblock/field_extraction_internal.h"

namespace tv::titleblock {

namespace {

// Texts touching the frame lines must not be caught by the neighbouring area.
constexpr double kFieldShrink = 0.05;

Extents3d Rotated(const Extents3d& box, double angle) { return box.transformed(Matrix3d::rotation(angle)); }

Extents3d Shrunk(const Extents3d& box) {
  const Vector3d inset{box.width() * kFieldShrink, box.height() * kFieldShrink, 0};
  Extents3d shrunk = box;
  shrunk.min = box.min + inset;
  shrunk.max = box.max - inset;
  return shrunk;
}

bool IsStampBackToWorld(int index) { return index == kStampRegister || index == kStampIssue || index == kStampProject; }

}  // namespace

const Extents3d& AreaOfIndex(const TK_Customization& definition, int index) {
  switch (index) {
    case kAreaDrawingNo: return definition.area_drawing_no;
    case kAreaRevision: return definition.area_revision;
    case kAreaTitle: return definition.area_title;
    case kAreaDate: return definition.area_date;
    case kAreaInfo1: return definition.area_info1;
    case kAreaInfo2: return definition.area_info2;
    case kStampRegister: return definition.stamp_register;
    case kStampIssue: return definition.stamp_issue;
    case kStampProject: return definition.stamp_project;
    case kStampCompleted: return definition.stamp_completed;
    default: return definition.print_extents;
  }
}

PrintDifferences PrintAreaDifferences(const TK_Customization& definition) {
  if (!IsAreaSet(definition.print_extents)) return {};
  return {definition.print_extents.min - definition.frame_extents.min,
          definition.print_extents.max - definition.frame_extents.max};
}

std::optional<Vector2d> DynamicFrameSize(double scale, ObjectId insertId, const PrintDifferences& differences) {
  const host::Entity insert = host::OpenEntity(insertId);
  if (!insert) return std::nullopt;
  const double insertScale = std::fabs(insert.scaleFactors().x);
  const Extents3d extents = Rotated(recognition::EntityExtents(insertId), -insert.rotation());
  if (extents.isEmpty()) return std::nullopt;
  const double toDrawing = scale > 0.0 ? insertScale / scale : 1.0;
  Vector2d size{extents.width() + (differences.max.x - differences.min.x) * toDrawing,
                extents.height() + (differences.max.y - differences.min.y) * toDrawing};
  if (insertScale > 0.0) size = size * (scale / insertScale);
  return size;
}

void DynamicAreaAdjust(Extents3d& area, double scale, const Extents3d& frame, ObjectId insertId, Vector3d extentsMin,
                       Vector3d extentsMax, int index) {
  const std::optional<Vector2d> size = DynamicFrameSize(scale, insertId, {extentsMin, extentsMax});
  if (!size) return;
  const double w = size->x, h = size->y;
  if (index == kAreaPrint) {
    const Point3d centre{(extentsMin.x + extentsMax.x) / 2, (extentsMin.y + extentsMax.y) / 2, 0};
    area = Extents3d(centre - Vector3d{w / 2, h / 2, 0}, centre + Vector3d{w / 2, h / 2, 0});
    return;
  }
  // The areas of a stretched frame stay with its lower right corner.
  const Vector3d shift{(w - frame.width()) / 2, -(h - frame.height()) / 2, 0};
  area.min = area.min + shift;
  area.max = area.max + shift;
}

bool AreaOnDrawing(const TK_Customization* definition, ObjectId insertId, int index, Extents3d& extents, double& rotation) {
  if (!definition) return false;
  Extents3d area = AreaOfIndex(*definition, index);
  if (!IsAreaSet(area)) return false;
  if (index > 0) area = Shrunk(area);
  area = Rotated(area, -definition->rotation);
  if (definition->is_dynamic) {
    const PrintDifferences differences = PrintAreaDifferences(*definition);
    DynamicAreaAdjust(area, definition->scale, definition->frame_extents, insertId, differences.min, differences.max,
                      index);
  }

  const host::Entity insert = host::OpenEntity(insertId);
  if (!insert) return false;
  const recognition::UcsState& ucs = recognition::Ucs();
  // Under a UCS the insert's placement is read as it lies in working coordinates.
  const host::Entity copy = ucs.active ? insert.transformedCopy(ucs.worldToUcs) : host::Entity{};
  const host::Entity& placed = ucs.active ? copy : insert;
  if (!placed || placed.kind() != host::EntityClass::BlockReference) return false;
  const double insertRotation = placed.rotation();
  const double insertScale = std::fabs(placed.scaleFactors().x);
  const Extents3d insertExtents = recognition::EntityExtents(insertId);
  if (insertExtents.isEmpty()) return false;

  area = Rotated(area, insertRotation);
  if (!definition->is_dynamic) {
    const Extents3d& frame = definition->frame_extents;
    const double stored = std::max(frame.width(), frame.height());
    const double actual = std::max(insertExtents.width(), insertExtents.height());
    if (stored > 0.0) area = area.transformed(Matrix3d::scaling(actual / stored));
  } else if (definition->scale > 0.0) {
    // A mirrored insert's negative scale counts as positive: the area is never mirrored.
    area = area.transformed(Matrix3d::scaling(insertScale / definition->scale));
  }
  const Point3d centre = insertExtents.center();
  area = area.transformed(Matrix3d::translation(Vector3d{centre.x, centre.y, 0}));

  rotation = insertRotation;
  // Stamps 11 to 13 land in world coordinates; the completed stamp (14) stays in working
  // coordinates, as its placement has always expected.
  if (IsStampBackToWorld(index) && ucs.active) {
    area = area.transformed(ucs.ucsToWorld);
    rotation = insert.rotation();
  }
  extents = area;
  return true;
}

}  // namespace tv::titleblock
