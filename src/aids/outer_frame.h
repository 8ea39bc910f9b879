#pragma once
// "生成外框": a closed rectangle drawn around selected graphics, so that recognition finds a sheet
// there, with its settings form "生成外框设置".
#include <cstdint>

#include "settings/config.h"

namespace tv::aids {

struct OuterFrameOptions {
  std::int32_t mode = 0;      // 0 no margin, 1 `margin` on every side, 2 `percent` of the short side
  double margin = 0;          // drawing units
  double percent = 5;
  std::int32_t normalise = 0; // sides 1 : √2
};

OuterFrameOptions OuterFrameOptionsOf(const settings::Config& config);
void StoreOuterFrameOptions(const OuterFrameOptions& options, settings::Config& config);

// An axis-aligned box in working coordinates.
struct FrameBox {
  double x0 = 0, y0 = 0, x1 = 0, y1 = 0;
};
// The frame around `content`: widened by the margin, then, when normalising, grown about its
// centre to 1 : √2 along whichever side needs it, so that it never cuts the content.
FrameBox OuterFrameBox(const FrameBox& content, const OuterFrameOptions& options);

// The form "生成外框设置" on the global configuration, which OK writes. False on cancel.
bool OuterFrameForm();

// The command body: rounds of selection, a frame around each, until a selection comes back empty.
void OuterFrameCommand();

}  // namespace tv::aids
