#pragma once
// More entities of the drawing model made in one call: curves, quads, old-style polylines,
// attributes, hatches and insert clips.
#include <array>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "cad/database.h"

namespace tv::test_support {

inline std::unique_ptr<cad::Arc> MakeArc(cad::Point3d centre, double radius, double start, double end) {
  auto a = std::make_unique<cad::Arc>();
  a->center = centre;
  a->radius = radius;
  a->startAngle = start;
  a->endAngle = end;
  return a;
}

inline std::unique_ptr<cad::Ellipse> MakeEllipse(cad::Point3d centre, cad::Vector3d major, double ratio) {
  auto e = std::make_unique<cad::Ellipse>();
  e->center = centre;
  e->majorAxis = major;
  e->ratio = ratio;
  return e;
}

inline std::unique_ptr<cad::PointEntity> MakePoint(cad::Point3d at) {
  auto p = std::make_unique<cad::PointEntity>();
  p->position = at;
  return p;
}

// SOLID, TRACE or 3DFACE with its corners in file order.
template <class Quad>
std::unique_ptr<Quad> MakeQuad(cad::Point3d a, cad::Point3d b, cad::Point3d c, cad::Point3d d) {
  auto q = std::make_unique<Quad>();
  q->corners[0] = a;
  q->corners[1] = b;
  q->corners[2] = c;
  q->corners[3] = d;
  return q;
}

// A POLYLINE of `flags` through `points`, every vertex with `vertexFlags` and `bulge`.
inline std::unique_ptr<cad::Polyline> MakePolyline(std::vector<cad::Point3d> points, std::int16_t flags = 0,
                                                   std::int16_t vertexFlags = 0, double bulge = 0) {
  auto p = std::make_unique<cad::Polyline>();
  p->polyFlags = flags;
  for (cad::Point3d q : points) {
    cad::PolylineVertex v;
    v.position = q;
    v.flags = vertexFlags;
    v.bulge = bulge;
    p->vertices.push_back(v);
  }
  return p;
}

// A polyface mesh's corners, then one face record per entry of `faces` (negative: hidden edge).
inline std::unique_ptr<cad::Polyline> MakePolyface(std::vector<cad::Point3d> corners,
                                                   std::initializer_list<std::array<std::int32_t, 4>> faces) {
  auto p = MakePolyline(std::move(corners), cad::Polyline::kPolyface, 128 | 64);
  for (const auto& f : faces) {
    cad::PolylineVertex v;
    v.flags = 128;
    for (int i = 0; i < 4; ++i) v.faceIndices[i] = f[static_cast<std::size_t>(i)];
    p->vertices.push_back(v);
  }
  return p;
}

// ATTRIB or ATTDEF.
template <class Att>
std::unique_ptr<Att> MakeAtt(std::string text, cad::Point3d at, double height, std::int16_t flags = 0) {
  auto a = std::make_unique<Att>();
  a->text = std::move(text);
  a->position = at;
  a->height = height;
  a->attFlags = flags;
  return a;
}

// A hatch bounded by one full circle.
inline std::unique_ptr<cad::Hatch> MakeDiscHatch(cad::Point2d centre, double radius, bool solid = true) {
  auto h = std::make_unique<cad::Hatch>();
  h->solidFill = solid;
  cad::HatchPath path;
  cad::HatchEdge edge;
  edge.kind = cad::HatchEdge::Kind::Arc;
  edge.start = centre;
  edge.radius = radius;
  edge.startAngle = 0;
  edge.endAngle = 360;
  path.edges.push_back(edge);
  h->paths.push_back(path);
  return h;
}

// Clips `insert` by `boundary` through its extension dictionary, as the clip command stores it.
inline cad::SpatialFilter& AddSpatialClip(cad::Database& db, cad::Insert& insert, std::vector<cad::Point2d> boundary) {
  cad::Dictionary& filters = db.ensureDictionary(db.ensureExtensionDictionary(insert), "ACAD_FILTER");
  auto filter = std::make_unique<cad::SpatialFilter>();
  filter->boundary = std::move(boundary);
  cad::SpatialFilter& f = db.addObject(std::move(filter), filters.id);
  filters.set("SPATIAL", f.id);
  return f;
}

}  // namespace tv::test_support
