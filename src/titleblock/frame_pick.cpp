// Capture of a definition's basic data from an insert the user picks: its block, placement, extents
// and the paper the frame was drawn for.
#include <algorithm>
#include <cmath>
#include <string_view>

#include "host/editor.h"
#include "host/entity.h"
#include "host/whole_number.h"
#include "host/wrappers.h"
#include "recognition/sheet_geometry.h"
#include "settings/plot_setting.h"
#include "titleblock/frame_paper.h"
#include "titleblock/tk_library.h"

namespace tv::titleblock {

namespace {

constexpr std::string_view kCaption = "Tarvex打印";
constexpr std::string_view kPickPrompt = "\n选择图框对应的图块：";
constexpr std::string_view kNothingPicked = "未选择到图框对应的图块 !";
constexpr std::string_view kVoidExtents = "图框图块对应的范围无效 !";
constexpr double kMinimumSide = 0.00001;

void Show(std::string_view text) { host::CurrentEditor().messageBox(text, kCaption, host::MessageButtons::Ok); }

}  // namespace

paper::MyPaper FramePaperOfSides(double w, double h) {
  double big = std::max(w, h), small = std::min(w, h);
  while (small < 100.0) {
    big *= 10.0;
    small *= 10.0;
  }
  while (small > 1000.0) {
    big /= 10.0;
    small /= 10.0;
  }
  while (big > 5080.0) {
    big /= 10.0;
    small /= 10.0;
  }
  paper::MyPaper p;
  p.length = SaturatedInt(big + 0.5);
  p.width = SaturatedInt(small + 0.5);
  paper::NormalizePaperSize(p);
  return p;
}

bool PickFrameBlock(TK_Customization& definition) {
  ObjectIdArray picked;
  const int rc = host::CurrentEditor().select("_:$", {std::string(kPickPrompt), ""}, {},
                                              host::TypeFilter({"insert"}), picked);
  if (rc != host::RTNORM || picked.empty()) {
    Show(kNothingPicked);
    return false;
  }
  const ObjectId id = picked.front();
  const host::Entity insert = host::OpenEntity(id);
  if (!insert || insert.kind() != host::EntityClass::BlockReference) return false;

  // An anonymous "*U" copy of a dynamic block is known by its original's name.
  definition.block_name = host::BlockName(insert.dynamicBlockTableRecord());
  definition.is_dynamic = insert.isDynamicBlock() ? 1 : 0;
  definition.rotation = insert.rotation();
  const double xScale = std::fabs(insert.scaleFactors().x);
  definition.scale = xScale > 0.0 ? xScale : 1.0;

  const Extents3d extents = recognition::EntityExtents(id);
  definition.pick_centre = Point3d{(extents.min.x + extents.max.x) / 2, (extents.min.y + extents.max.y) / 2, 0.0};
  const Vector3d toCentre = definition.pick_centre.asVector();
  definition.frame_extents.min = extents.min - toCentre;
  definition.frame_extents.max = extents.max - toCentre;

  double drawingScale = settings::CurrentPlotSetting().default_scale;
  if (!(drawingScale > 0.0)) drawingScale = 100.0;
  const double w = extents.width() / drawingScale / definition.scale;
  const double h = extents.height() / drawingScale / definition.scale;
  if (!(w > kMinimumSide) || !(h > kMinimumSide) || !std::isfinite(w) || !std::isfinite(h)) {
    Show(kVoidExtents);
    return false;
  }
  definition.paper = FramePaperOfSides(w, h);
  return !definition.block_name.empty();
}

}  // namespace tv::titleblock
