#include "cad/database.h"
#include "cad/entities.h"
#include "cad/tables.h"
#include "host/cad_binding.h"
#include "host/drawn_table.h"
#include "host/entity_internal.h"

namespace tv::host {

ObjectId FindOrAddTextStyle(const TextStyleLook& look) {
  cad::Database* db = WorkingDatabase();
  if (!db) return {};
  if (const cad::TextStyle* style = db->findTextStyle(look.name)) return style->id;
  cad::TextStyle& style = db->addTextStyle(look.name);
  style.fontFile = look.fontFile;
  style.bigFontFile = look.bigFontFile;
  style.height = look.size;
  style.widthFactor = look.xScale;
  if (look.shapeFile) style.standardFlags = static_cast<std::int16_t>(style.standardFlags | cad::TextStyle::kShapeFile);
  return style.id;
}

void SetLayerLook(ObjectId layerId, std::int32_t colorIndex, const std::string& linetype, std::int32_t lineweight) {
  cad::Database* db = WorkingDatabase();
  if (!db) return;
  for (const auto& l : db->layers) {
    if (l->id != layerId) continue;
    if (colorIndex >= 1 && colorIndex <= 255) l->colorIndex = static_cast<std::int16_t>(colorIndex);
    if (const cad::Linetype* lt = db->findLinetype(linetype)) l->linetype = lt->id;
    l->lineweight = static_cast<std::int16_t>(lineweight);
    return;
  }
}

Entity NewPlacedText(Point3d point, TextPlacement placement, double height, double widthFactor, ObjectId style,
                     std::string text) {
  auto t = std::make_unique<cad::Text>();
  t->position = point;
  t->height = height;
  t->widthFactor = widthFactor;
  t->style = style;
  t->text = std::move(text);
  t->hAlign = placement == TextPlacement::LeftMiddle ? cad::TextHAlign::Left : cad::TextHAlign::Center;
  t->vAlign = cad::TextVAlign::Middle;
  t->setAlignPoint(point);
  return entity_internal::MakeTransient(std::move(t), WorkingDatabase());
}

}  // namespace tv::host
