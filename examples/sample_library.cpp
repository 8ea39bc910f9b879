#include "examples/sample_library.h"

#include <memory>

#include "examples/sample_drawing.h"
#include "examples/sample_kit.h"

namespace tv::samples {

using namespace tv::samples::kit;

namespace {

constexpr double kPickedScale = 100;

// A box of the frame block (mm) relative to the centre of the frame, in drawing units at 1:100:
// how areas are stored.
Extents3d Stored(const Sheet& sheet, cad::Point2d min, cad::Point2d max) {
  const double cx = sheet.width / 2, cy = sheet.height / 2;
  return Extents3d(Point3d{(min.x - cx) * kPickedScale, (min.y - cy) * kPickedScale},
                   Point3d{(max.x - cx) * kPickedScale, (max.y - cy) * kPickedScale});
}

Extents3d Cell(const Sheet& sheet, const Box& cell) {
  const cad::Point2d o = TitleGridOrigin(sheet);
  return Stored(sheet, {o.x + cell.min.x, o.y + cell.min.y}, {o.x + cell.max.x, o.y + cell.max.y});
}

std::unique_ptr<titleblock::TK_Customization> Definition(const char* name, const Sheet& sheet, const char* rule) {
  auto d = std::make_unique<titleblock::TK_Customization>();
  d->block_name = name;
  d->rotation = 0;
  d->scale = kPickedScale;
  d->name_rule = rule;
  d->paper = {static_cast<std::int32_t>(sheet.width), static_cast<std::int32_t>(sheet.height), true};
  d->frame_extents = Stored(sheet, {0, 0}, {sheet.width, sheet.height});
  d->area_drawing_no = Cell(sheet, kCellDrawingNo);
  d->area_title = Cell(sheet, kCellTitle);
  d->area_date = Cell(sheet, kCellDate);
  return d;
}

}  // namespace

titleblock::TK_Library BuildTitleBlockLibrary() {
  titleblock::TK_Library library;
  auto a1 = Definition(kTitleFrameA1, kA1, "A_B_C");
  a1->area_revision = Cell(kA1, kCellRevision);
  const cad::Point2d o = TitleGridOrigin(kA1);
  a1->stamp_issue = Stored(kA1, {o.x + 120, o.y + 45}, {o.x + 180, o.y + 85});
  library.definitions.push_back(std::move(a1));
  library.definitions.push_back(Definition(kTitleFrameA2, kA2, "A_C_D"));
  return library;
}

}  // namespace tv::samples
