// One sheet of the title-block batch from its insert: rectangle, fields, stamp points, paper,
// scale and file name.
#include <algorithm>
#include <cmath>

#include "host/entity.h"
#include "host/whole_number.h"
#include "recognition/sheet_geometry.h"
#include "titleblock/field_extraction.h"
#include "titleblock/field_extraction_internal.h"
#include "titleblock/file_naming.h"
#include "titleblock/name_rule.h"
#include "titleblock/title_sheets.h"

namespace tv::titleblock {

namespace {

constexpr double kSmallest = 0.00001;

void SetRectangle(Plot_Drawing2& row, const Extents3d& box) {
  row.min_x = box.min.x;
  row.min_y = box.min.y;
  row.max_x = box.max.x;
  row.max_y = box.max.y;
  row.width = std::abs(row.max_x - row.min_x);
  row.height = std::abs(row.max_y - row.min_y);
  row.portrait = row.width < row.height;
}

}  // namespace

Plot_Drawing2::~Plot_Drawing2() { recognition::EraseMarker(rec_id); }

bool SheetFromInsert(Plot_Drawing2& row, ObjectId layerId, ObjectId spaceId) {
  if (row.insert_id.isNull()) return false;
  const host::Entity insert = host::OpenEntity(row.insert_id);
  if (!insert) return false;
  SetRectangle(row, recognition::EntityExtentsOpen(insert, true, true));

  // Without a print area the sheet is the insert's extents, whatever the block holds outside it.
  Extents3d area;
  double rotation = 0.0;
  if (AreaOnDrawing(row.definition, row.insert_id, kAreaPrint, area, rotation) && area.width() > kSmallest &&
      area.height() > kSmallest)
    SetRectangle(row, area);
  if (!(row.width > 0.0) || !(row.height > 0.0)) return false;
  recognition::EraseMarker(row.rec_id);
  row.rec_id =
      recognition::NewMarker(layerId, Extents3d(Point3d{row.min_x, row.min_y}, Point3d{row.max_x, row.max_y}), spaceId);
  return true;
}

bool ReadSheetFields(Plot_Drawing2& row) {
  for (int i = 0; i < 6; ++i) row.field_text[i] = ReadAreaField(row.definition, row.insert_id, i + 1, row.field_ids[i]);
  if (!row.definition) return false;
  ExpandNameRule(row);

  row.stamp_point.fill(kNoStampPoint);
  row.stamp_rotation = 0.0;
  for (int i = 0; i < 4; ++i) {
    Extents3d area;
    double rotation = 0.0;
    if (!AreaOnDrawing(row.definition, row.insert_id, kStampRegister + i, area, rotation)) continue;
    row.stamp_point[i] = area.center().to2d();
    row.stamp_rotation = rotation;
  }
  return true;
}

bool SheetPaper(Plot_Drawing2& row, paper::MyPaper& paper) {
  if (row.scale > 0.0) {
    const double big = std::max(std::max(row.width, row.height) / row.scale, 1.0);
    const double small = std::max(std::min(row.width, row.height) / row.scale, 1.0);
    paper.length = SaturatedInt(big + 0.5);
    paper.width = SaturatedInt(small + 0.5);
    paper::NormalizePaperSize(paper);
    return true;
  }
  if (!row.definition) return false;
  const TK_Customization& definition = *row.definition;
  paper.length = definition.paper.length;
  paper.width = definition.paper.width;
  if (definition.is_dynamic) DynamicPaperAdjust(definition, row.insert_id, paper);
  else paper.standard = definition.paper.standard;

  // A portrait sheet has the paper's short side along its width.
  const double paperW = row.portrait ? paper.width : paper.length;
  const double paperH = row.portrait ? paper.length : paper.width;
  if (!(paperW > 0.0) || !(paperH > 0.0)) return false;
  row.scale = std::max(row.width / paperW, row.height / paperH);
  return true;
}

void DynamicPaperAdjust(const TK_Customization& definition, ObjectId insertId, paper::MyPaper& paper) {
  const PrintDifferences differences = PrintAreaDifferences(definition);
  const Vector3d growth = differences.max - differences.min;
  const double d = std::max(definition.frame_extents.width() + growth.x, definition.frame_extents.height() + growth.y);
  if (!(d > 0.0)) return;
  const std::optional<Vector2d> size = DynamicFrameSize(definition.scale, insertId, differences);
  if (!size) return;
  const double factor = std::max(paper.length, paper.width) / d;
  paper.length = SaturatedInt(std::max(size->x, size->y) * factor + 0.5);
  paper.width = SaturatedInt(std::min(size->x, size->y) * factor + 0.5);
}

void ExpandNameRule(Plot_Drawing2& row) {
  if (!row.definition) return;
  paper::MyPaper paper{297, 210, false};
  SheetPaper(row, paper);
  row.file_name =
      ExpandNameRuleText(row.definition->name_rule, row.field_text, paper::PaperDisplayName(paper, false, false));
}

bool NameHasUnreadableText(const Plot_Drawing2& row) {
  // The paper's name is the system's own: only the fields can hold what the drawing garbled.
  return row.definition && HasUnreadableText(FillNameRule(row.definition->name_rule, row.field_text, {}));
}

}  // namespace tv::titleblock
