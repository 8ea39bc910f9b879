#include "aids/outer_frame.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "host/current_layer.h"
#include "host/editor.h"
#include "host/entity.h"
#include "host/input_state.h"
#include "host/wrappers.h"
#include "recognition/sheet_geometry.h"
#include "recognition/sheet_traversal.h"
#include "recognition/working_coordinates.h"

namespace tv::aids {

namespace {

constexpr const char* kSelectPrompt = "\n选择图形：( 按S键设置 )";

}  // namespace

OuterFrameOptions OuterFrameOptionsOf(const settings::Config& config) {
  return {config.frame_tool_mode, config.frame_tool_width, config.frame_tool_value, config.frame_tool_flag};
}

void StoreOuterFrameOptions(const OuterFrameOptions& options, settings::Config& config) {
  config.frame_tool_mode = options.mode;
  config.frame_tool_width = options.margin;
  config.frame_tool_value = options.percent;
  config.frame_tool_flag = options.normalise;
}

FrameBox OuterFrameBox(const FrameBox& content, const OuterFrameOptions& options) {
  FrameBox f = content;
  double m = 0;
  if (options.mode == 1) m = options.margin;
  if (options.mode == 2) m = std::min(f.x1 - f.x0, f.y1 - f.y0) * options.percent / 100;
  f.x0 -= m, f.y0 -= m, f.x1 += m, f.y1 += m;
  if (!options.normalise) return f;
  const double root2 = std::sqrt(2.0);
  double w = f.x1 - f.x0, h = f.y1 - f.y0;
  if (w >= h) {
    if (w >= root2 * h) h = w / root2;
    else w = root2 * h;
  } else {
    if (w >= h / root2) h = root2 * w;
    else w = h / root2;
  }
  const double cx = (f.x0 + f.x1) / 2, cy = (f.y0 + f.y1) / 2;
  return {cx - w / 2, cy - h / 2, cx + w / 2, cy + h / 2};
}

void OuterFrameCommand() {
  recognition::RefreshUcs(false);
  host::Editor& editor = host::CurrentEditor();
  const host::SelectionKey settingsKey('S', [] { OuterFrameForm(); });
  for (;;) {
    ObjectIdArray ids;
    if (editor.select("_:$", {kSelectPrompt, ""}, {}, {}, ids) != host::RTNORM || ids.empty()) return;
    const Extents3d box = recognition::SelectionExtents(ids);
    if (box.isEmpty()) continue;
    const FrameBox f = OuterFrameBox({box.min.x, box.min.y, box.max.x, box.max.y},
                                     OuterFrameOptionsOf(settings::GlobalConfig()));
    std::vector<Point2d> corners;
    for (const auto& [x, y] : {std::pair{f.x0, f.y0}, {f.x1, f.y0}, {f.x1, f.y1}, {f.x0, f.y1}})
      corners.push_back(recognition::ToWorld(Point3d{x, y, 0}).to2d());
    host::AppendToSpace(host::NewPolyline(corners, true), 0, host::CurrentLayer());
    editor.setModified(true);
  }
}

}  // namespace tv::aids
