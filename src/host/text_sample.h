#pragma once
// What a text or multiline text of the drawing says about its look: height, width, colour and
// layer, and the text style and layer records behind them. The drawing index copies it.
#include <cstdint>
#include <optional>
#include <string>

#include "host/object_id.h"

namespace tv::host {

struct TextSampleFacts {
  double text_height = 0;
  double width_factor = 1;
  std::int32_t color = 256;  // 256 ByLayer, 0 ByBlock
  std::string layer;
  // The text style record.
  std::string style_name, font_file, bigfont_file;
  double style_text_size = 0;
  double style_x_scale = 1;
  std::int32_t is_shape_file = 0;
  // The layer record.
  std::int32_t layer_color = 7;
  std::string layer_linetype = "Continuous";
  std::int32_t layer_lineweight = -3;
};

// nullopt when the id is no text or multiline text.
std::optional<TextSampleFacts> ReadTextSample(ObjectId id);

}  // namespace tv::host
