// New transient entities, made by the logic and appended with AppendToSpace.
#include "host/cad_binding.h"
#include "host/custom_internal.h"
#include "host/entity_internal.h"

namespace tv::host {

using entity_internal::MakeTransient;

Entity NewLine(Point3d start, Point3d end) {
  auto line = std::make_unique<cad::Line>();
  line->start = start;
  line->end = end;
  return MakeTransient(std::move(line), WorkingDatabase());
}

Entity NewPolyline(const std::vector<Point2d>& points, bool closed) {
  auto poly = std::make_unique<cad::LwPolyline>();
  poly->points = points;
  if (closed) poly->polyFlags |= cad::LwPolyline::kClosed;
  return MakeTransient(std::move(poly), WorkingDatabase());
}

Entity NewText(Point3d position, double height, double rotation, std::string text) {
  auto t = std::make_unique<cad::Text>();
  t->position = position;
  t->height = height;
  t->rotation = rotation;
  t->text = std::move(text);
  // Left/baseline text is placed by its first point alone; no style means "Standard".
  return MakeTransient(std::move(t), WorkingDatabase());
}

Entity NewCustomEntity(std::unique_ptr<CustomEntity> entity) {
  if (!entity) return {};
  auto e = std::make_unique<cad::CustomEntity>();
  e->content = MakeCustomContent(std::move(entity));
  return MakeTransient(std::move(e), WorkingDatabase());
}

}  // namespace tv::host
