// Stray rectangles: a polyline or line sheet with nothing in it is no sheet.
#include <algorithm>

#include "host/wrappers.h"
#include "recognition/sheet_geometry.h"
#include "recognition/sheet_traversal.h"

namespace tv::recognition {

namespace {

bool InQuestion(const Plot_Drawing1& sheet) { return sheet.kind != SheetKind::Block && !sheet.hasContent; }

// A viewport counts as content though no fence crosses it as an entity.
bool HoldsViewport(const Plot_Drawing1& sheet) {
  std::vector<Point3d> points{{sheet.minX - 0.001, sheet.minY - 0.001, 0.0},
                              {sheet.maxX + 0.001, sheet.maxY + 0.001, 0.0}};
  ObjectIdArray found;
  host::SelectFenceOfType("ViewPort", points, found);
  return std::any_of(found.begin(), found.end(), [&](ObjectId id) {
    const Extents3d box = EntityExtents(id);
    if (box.isEmpty()) return false;
    const Point3d c = CentreOf(box);
    return sheet.minX < c.x && c.x < sheet.maxX && sheet.minY < c.y && c.y < sheet.maxY;
  });
}

// Fences of 3, 15 and 90 sweeps across the sheet inside a 2.5% margin; coarse first, since a
// sheet with content is nearly always crossed at once.
bool FencesCrossSomething(const Plot_Drawing1& sheet) {
  const double dx = (sheet.maxX - sheet.minX) * 0.025;
  const double dy = (sheet.maxY - sheet.minY) * 0.025;
  const Point3d p0{sheet.minX + dx, sheet.minY + dy, 0.0};
  const Point3d p1{sheet.maxX - dx, sheet.maxY - dy, 0.0};
  ObjectIdArray found;
  std::vector<Point3d> points;
  for (int n : {3, 15, 90}) {
    ZigzagPoints(points, p0, p1, n);
    if (host::SelectFence(points, found)) return true;
  }
  return false;
}

}  // namespace

void DropEmptySheets(SheetList& sheets) {
  Extents3d all;
  for (const auto& sheet : sheets) {
    if (!InQuestion(*sheet)) continue;
    all.add(Point3d{sheet->minX, sheet->minY, 0.0});
    all.add(Point3d{sheet->maxX, sheet->maxY, 0.0});
  }
  if (all.isEmpty()) return;
  ShowExtents(all);

  std::erase_if(sheets, [](const std::unique_ptr<Plot_Drawing1>& sheet) {
    if (!InQuestion(*sheet)) return false;
    if (HoldsViewport(*sheet)) return false;
    return !FencesCrossSomething(*sheet);
  });
}

}  // namespace tv::recognition
