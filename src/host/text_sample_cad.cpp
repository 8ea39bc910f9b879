#include "host/text_sample.h"

#include "cad/database.h"
#include "cad/entities.h"
#include "cad/tables.h"
#include "host/cad_binding.h"

namespace tv::host {

std::optional<TextSampleFacts> ReadTextSample(ObjectId id) {
  const cad::Database* db = WorkingDatabase();
  if (!db) return std::nullopt;
  const cad::Entity* e = db->entity(id);
  if (!e) return std::nullopt;
  TextSampleFacts facts;
  ObjectId styleId;
  if (const auto* text = dynamic_cast<const cad::Text*>(e)) {
    facts.text_height = text->height;
    facts.width_factor = text->widthFactor;
    styleId = text->style;
  } else if (const auto* mtext = dynamic_cast<const cad::MText*>(e)) {
    facts.text_height = mtext->height;
    styleId = mtext->style;
  } else {
    return std::nullopt;
  }
  facts.color = e->colorIndex;
  if (const auto* style = db->objectAs<cad::TextStyle>(styleId)) {
    facts.style_name = style->name;
    facts.font_file = style->fontFile;
    facts.bigfont_file = style->bigFontFile;
    facts.style_text_size = style->height;
    facts.style_x_scale = style->widthFactor;
    facts.is_shape_file = (style->standardFlags & cad::TextStyle::kShapeFile) ? 1 : 0;
    // A multiline text takes its width from its style.
    if (dynamic_cast<const cad::MText*>(e)) facts.width_factor = style->widthFactor;
  }
  if (const auto* layer = db->objectAs<cad::Layer>(e->layer)) {
    facts.layer = layer->name;
    facts.layer_color = layer->colorIndex;
    facts.layer_lineweight = layer->lineweight;
    if (const auto* linetype = db->objectAs<cad::Linetype>(layer->linetype)) facts.layer_linetype = linetype->name;
  }
  return facts;
}

}  // namespace tv::host
