// Encoding of the curve entities, polylines with their vertices, and proxies.
#include "cad/dxf_entity_codec_internal.h"

namespace tv::cad::codec {

namespace {

template <class T>
void EncodeQuad(Writer& w, const T& q, std::string_view name, bool isFace) {
  const std::size_t k = EncodeCommon(w, q, name);
  DxfOutput& out = w.out;
  out.str(100, isFace ? "AcDbFace" : "AcDbTrace");
  for (int i = 0; i < 4; ++i) out.point(10 + i, q.corners[i]);
  if (isFace) {
    if (q.invisibleEdges != 0) out.integer(70, q.invisibleEdges);
  } else {
    if (q.thickness != 0) out.real(39, q.thickness);
    out.normal(210, q.normal);
  }
  EncodeTail(w, q, k);
}

std::string_view PolylineSubclass(const Polyline& p) {
  if (p.polyFlags & Polyline::kPolyface) return "AcDbPolyFaceMesh";
  if (p.polyFlags & Polyline::k3dMesh) return "AcDbPolygonMesh";
  if (p.is3d()) return "AcDb3dPolyline";
  return "AcDb2dPolyline";
}

std::string_view VertexSubclass(const Polyline& p, const PolylineVertex& v) {
  if (p.polyFlags & Polyline::kPolyface) return (v.flags & 64) ? "AcDbPolyFaceMeshVertex" : "AcDbFaceRecord";
  if (p.polyFlags & Polyline::k3dMesh) return "AcDbPolygonMeshVertex";
  if (p.is3d()) return "AcDb3dPolylineVertex";
  return "AcDb2dVertex";
}

}  // namespace

void EncodeLine(Writer& w, const Line& e) {
  const std::size_t k = EncodeCommon(w, e, "LINE");
  w.out.str(100, "AcDbLine");
  w.out.point(10, e.start);
  w.out.point(11, e.end);
  EncodeTail(w, e, k);
}

void EncodeLwPolyline(Writer& w, const LwPolyline& e) {
  const std::size_t k = EncodeCommon(w, e, "LWPOLYLINE");
  DxfOutput& out = w.out;
  out.str(100, "AcDbPolyline");
  out.integer(90, static_cast<std::int64_t>(e.points.size()));
  out.integer(70, e.polyFlags);
  if (e.widths().empty()) out.real(43, e.constantWidth());
  if (e.elevation() != 0) out.real(38, e.elevation());
  if (e.thickness() != 0) out.real(39, e.thickness());
  for (std::size_t i = 0; i < e.points.size(); ++i) {
    out.point2d(10, e.points[i]);
    if (!e.widths().empty()) {
      out.real(40, e.startWidthAt(i));
      out.real(41, e.endWidthAt(i));
    }
    const double bulge = e.bulgeAt(i);
    if (bulge != 0) out.real(42, bulge);
  }
  out.normal(210, e.normal());
  EncodeTail(w, e, k);
}

void EncodePolyline(Writer& w, const Polyline& e) {
  const std::size_t k = EncodeCommon(w, e, "POLYLINE");
  DxfOutput& out = w.out;
  out.str(100, PolylineSubclass(e));
  out.integer(66, 1);
  out.point(10, Point3d{0, 0, e.elevation});
  if (e.thickness != 0) out.real(39, e.thickness);
  out.integer(70, e.polyFlags);
  if (e.defaultStartWidth != 0) out.real(40, e.defaultStartWidth);
  if (e.defaultEndWidth != 0) out.real(41, e.defaultEndWidth);
  if (e.meshM != 0) out.integer(71, e.meshM);
  if (e.meshN != 0) out.integer(72, e.meshN);
  if (e.smoothM != 0) out.integer(73, e.smoothM);
  if (e.smoothN != 0) out.integer(74, e.smoothN);
  if (e.curveType != 0) out.integer(75, e.curveType);
  out.normal(210, e.normal);
  EncodeTail(w, e, k);

  for (const PolylineVertex& v : e.vertices) {
    EncodeSubEntityHead(w, e, "VERTEX", v.id);
    out.str(100, "AcDbVertex");
    out.str(100, VertexSubclass(e, v));
    out.point(10, v.position);
    if (v.startWidth != 0) out.real(40, v.startWidth);
    if (v.endWidth != 0) out.real(41, v.endWidth);
    if (v.bulge != 0) out.real(42, v.bulge);
    out.integer(70, v.flags);
    if (v.tangent != 0) out.real(50, v.tangent);
    for (int i = 0; i < 4; ++i)
      if (v.faceIndices[i] != 0) out.integer(71 + i, v.faceIndices[i]);
  }
  EncodeSubEntityHead(w, e, "SEQEND", e.seqendId);
}

namespace {

// The AcDbCircle part, which ARC shares with CIRCLE.
template <class CircleOrArc>
void EncodeCircleGroups(DxfOutput& out, const CircleOrArc& e) {
  out.str(100, "AcDbCircle");
  if (e.thickness != 0) out.real(39, e.thickness);
  out.point(10, e.center);
  out.real(40, e.radius);
  out.normal(210, e.normal);
}

}  // namespace

void EncodeCircle(Writer& w, const Circle& e) {
  const std::size_t k = EncodeCommon(w, e, "CIRCLE");
  EncodeCircleGroups(w.out, e);
  EncodeTail(w, e, k);
}

void EncodeArc(Writer& w, const Arc& e) {
  const std::size_t k = EncodeCommon(w, e, "ARC");
  EncodeCircleGroups(w.out, e);
  w.out.str(100, "AcDbArc");
  w.angle(50, e.startAngle);
  w.angle(51, e.endAngle);
  EncodeTail(w, e, k);
}

void EncodeEllipse(Writer& w, const Ellipse& e) {
  const std::size_t k = EncodeCommon(w, e, "ELLIPSE");
  DxfOutput& out = w.out;
  out.str(100, "AcDbEllipse");
  out.point(10, e.center);
  out.vector(11, e.majorAxis);
  out.vector(210, e.normal);
  out.real(40, e.ratio);
  out.real(41, e.startParam);
  out.real(42, e.endParam);
  EncodeTail(w, e, k);
}

void EncodeSpline(Writer& w, const Spline& e) {
  const std::size_t k = EncodeCommon(w, e, "SPLINE");
  DxfOutput& out = w.out;
  out.str(100, "AcDbSpline");
  out.normal(210, e.normal);
  out.integer(70, e.splineFlags);
  out.integer(71, e.degree);
  out.integer(72, static_cast<std::int64_t>(e.knots.size()));
  out.integer(73, static_cast<std::int64_t>(e.controlPoints.size()));
  out.integer(74, static_cast<std::int64_t>(e.fitPoints.size()));
  out.real(42, e.knotTolerance);
  out.real(43, e.controlTolerance);
  if (!e.fitPoints.empty()) out.real(44, e.fitTolerance);
  if (!e.startTangent.isZero(0)) out.vector(12, e.startTangent);
  if (!e.endTangent.isZero(0)) out.vector(13, e.endTangent);
  for (double knot : e.knots) out.real(40, knot);
  for (double weight : e.weights) out.real(41, weight);
  for (const Point3d& p : e.controlPoints) out.point(10, p);
  for (const Point3d& p : e.fitPoints) out.point(11, p);
  EncodeTail(w, e, k);
}

void EncodePoint(Writer& w, const PointEntity& e) {
  const std::size_t k = EncodeCommon(w, e, "POINT");
  DxfOutput& out = w.out;
  out.str(100, "AcDbPoint");
  out.point(10, e.position);
  if (e.thickness != 0) out.real(39, e.thickness);
  out.normal(210, e.normal);
  if (e.xAxisAngle != 0) w.angle(50, e.xAxisAngle);
  EncodeTail(w, e, k);
}

void EncodeSolid(Writer& w, const Solid& e) { EncodeQuad(w, e, "SOLID", false); }
void EncodeTrace(Writer& w, const Trace& e) { EncodeQuad(w, e, "TRACE", false); }
void EncodeFace3d(Writer& w, const Face3d& e) { EncodeQuad(w, e, "3DFACE", true); }

void EncodeProxy(Writer& w, const ProxyEntity& e) {
  const std::size_t k = EncodeCommon(w, e, e.name.empty() ? std::string_view("ACAD_PROXY_ENTITY") : e.name);
  w.groups(e.groups);
  EncodeTail(w, e, k);
}

void EncodeCustom(Writer& w, const CustomEntity& e) {
  if (e.isTransient()) return;
  const std::size_t k = EncodeCommon(w, e, e.dxfName());
  w.groups(e.content->dxfGroups());
  EncodeTail(w, e, k);
}

}  // namespace tv::cad::codec
