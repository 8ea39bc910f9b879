#pragma once
// Entities of the drawing model made in one call, for tests that build their drawings in code.
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "cad/database.h"

namespace tv::test_support {

inline std::unique_ptr<cad::Line> MakeLine(cad::Point3d a, cad::Point3d b) {
  auto l = std::make_unique<cad::Line>();
  l->start = a;
  l->end = b;
  return l;
}

inline std::unique_ptr<cad::Circle> MakeCircle(cad::Point3d centre, double radius) {
  auto c = std::make_unique<cad::Circle>();
  c->center = centre;
  c->radius = radius;
  return c;
}

inline std::unique_ptr<cad::Text> MakeText(std::string text, cad::Point3d at, double height, double rotation = 0) {
  auto t = std::make_unique<cad::Text>();
  t->text = std::move(text);
  t->position = at;
  t->height = height;
  t->rotation = rotation;
  return t;
}

inline std::unique_ptr<cad::Insert> MakeInsert(const cad::BlockRecord& block, cad::Point3d at,
                                               cad::Vector3d scale = {1, 1, 1}, double rotation = 0) {
  auto i = std::make_unique<cad::Insert>();
  i->block = block.id;
  i->position = at;
  i->scale = scale;
  i->rotation = rotation;
  return i;
}

inline std::unique_ptr<cad::LwPolyline> MakeLwPolyline(std::vector<cad::Point2d> points, bool closed,
                                                       std::vector<double> bulges = {}) {
  auto p = std::make_unique<cad::LwPolyline>();
  p->points = std::move(points);
  p->bulges = std::move(bulges);
  if (closed) p->polyFlags |= cad::LwPolyline::kClosed;
  return p;
}

}  // namespace tv::test_support
