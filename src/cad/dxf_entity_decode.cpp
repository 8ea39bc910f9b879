// Decoding of the curve entities, polylines with their vertices, and entities kept as proxies.
#include "cad/dxf_entity_codec_internal.h"

namespace tv::cad::codec {

namespace {

bool ReadVertex(Reader& r, Polyline& p) {
  PolylineVertex v;
  bool ok = true;
  while ((ok = r.next())) {
    const DxfGroup& g = r.g;
    if (g.code == 0) {
      r.pushBack();
      break;
    }
    switch (g.code) {
      case 5: v.id = r.id(); break;
      case 10: v.position.x = g.real; break;
      case 20: v.position.y = g.real; break;
      case 30: v.position.z = g.real; break;
      case 40: v.startWidth = g.real; break;
      case 41: v.endWidth = g.real; break;
      case 42: v.bulge = g.real; break;
      case 50: v.tangent = g.real; break;
      case 70: v.flags = r.i16(); break;
      case 71: case 72: case 73: case 74: v.faceIndices[g.code - 71] = r.i32(); break;
      default: break;  // the vertex's own layer, colour, extended data … follow the polyline
    }
  }
  p.vertices.push_back(v);
  return ok || !r.failed;
}

template <class T>
bool CircleGroup(T& c, const DxfGroup& g) {
  switch (g.code) {
    case 10: case 20: case 30: SetCoord(c.center, g.code, 10, g.real); return true;
    case 40: c.radius = g.real; return true;
    case 39: c.thickness = g.real; return true;
    case 210: case 220: case 230: SetCoord(c.normal, g.code, 210, g.real); return true;
    default: return false;
  }
}

template <class T>
std::unique_ptr<Entity> DecodeQuad(Reader& r) {
  auto e = std::make_unique<T>();
  T& q = *e;
  const bool ok = ReadBody(r, q, [&](const DxfGroup& g) {
    if (g.code >= 10 && g.code <= 33 && g.code % 10 <= 3) {
      Point3d& c = q.corners[g.code % 10];
      SetCoord(c, g.code - g.code % 10, 10, g.real);
      return true;
    }
    switch (g.code) {
      case 39: q.thickness = g.real; return true;
      case 70: q.invisibleEdges = r.i16(); return true;
      case 210: case 220: case 230: SetCoord(q.normal, g.code, 210, g.real); return true;
      default: return false;
    }
  });
  if (!ok) return nullptr;
  return e;
}

}  // namespace

std::unique_ptr<Entity> DecodeLine(Reader& r) {
  auto e = std::make_unique<Line>();
  Line& l = *e;
  const bool ok = ReadBody(r, l, [&](const DxfGroup& g) {
    switch (g.code) {
      case 10: l.start.x = g.real; return true;
      case 20: l.start.y = g.real; return true;
      case 30: l.start.z = g.real; return true;
      case 11: l.end.x = g.real; return true;
      case 21: l.end.y = g.real; return true;
      case 31: l.end.z = g.real; return true;
      default: return false;
    }
  });
  if (!ok) return nullptr;
  return e;
}

std::unique_ptr<Entity> DecodeLwPolyline(Reader& r) {
  auto e = std::make_unique<LwPolyline>();
  LwPolyline& p = *e;
  const bool ok = ReadBody(r, p, [&](const DxfGroup& g) {
    switch (g.code) {
      case 90: p.points.reserve(ReserveFor(g.integer)); return true;
      case 70: p.polyFlags = r.i16(); return true;
      case 43: p.setConstantWidth(g.real); return true;
      case 38: p.setElevation(g.real); return true;
      case 39: p.setThickness(g.real); return true;
      case 10:
        p.points.push_back({g.real, 0});
        if (!p.bulges.empty()) p.bulges.push_back(0);
        if (!p.widths().empty()) p.editDetails().widths.push_back({});
        return true;
      case 20:
        if (!p.points.empty()) p.points.back().y = g.real;
        return true;
      case 40:
      case 41: {
        if (p.points.empty()) return true;  // a width before any vertex belongs to none
        if (p.widths().empty() && g.real == 0) return true;
        std::vector<Vector2d>& widths = p.editDetails().widths;
        if (widths.empty()) {
          widths.reserve(p.points.capacity());
          widths.resize(p.points.size());
        }
        Vector2d& w = widths.back();
        (g.code == 40 ? w.x : w.y) = g.real;
        return true;
      }
      case 42:
        if (p.points.empty()) return true;
        if (p.bulges.empty()) {
          if (g.real == 0) return true;
          p.bulges.reserve(p.points.capacity());  // as many as group 90 announced, not grown by doubling
          p.bulges.resize(p.points.size());
        }
        p.bulges.back() = g.real;
        return true;
      case 91: return true;  // vertex identifiers are not kept
      case 210: case 220: case 230: {
        Vector3d n = p.normal();
        SetCoord(n, g.code, 210, g.real);
        p.setNormal(n);
        return true;
      }
      default: return false;
    }
  });
  if (!ok) return nullptr;
  return e;
}

std::unique_ptr<Entity> DecodePolyline(Reader& r) {
  auto e = std::make_unique<Polyline>();
  Polyline& p = *e;
  const bool ok = ReadBody(r, p, [&](const DxfGroup& g) {
    switch (g.code) {
      case 66: case 10: case 20: return true;  // the header point is (0, 0, elevation)
      case 30: p.elevation = g.real; return true;
      case 39: p.thickness = g.real; return true;
      case 40: p.defaultStartWidth = g.real; return true;
      case 41: p.defaultEndWidth = g.real; return true;
      case 70: p.polyFlags = r.i16(); return true;
      case 71: p.meshM = r.i16(); return true;
      case 72: p.meshN = r.i16(); return true;
      case 73: p.smoothM = r.i16(); return true;
      case 74: p.smoothN = r.i16(); return true;
      case 75: p.curveType = r.i16(); return true;
      case 210: case 220: case 230: SetCoord(p.normal, g.code, 210, g.real); return true;
      default: return false;
    }
  });
  if (!ok) return nullptr;
  for (;;) {
    if (!r.next()) {
      if (r.failed) return nullptr;
      r.warn("POLYLINE 的顶点没有以 SEQEND 结束");
      return e;
    }
    if (r.g.code == 0 && r.g.text == "VERTEX") {
      if (!ReadVertex(r, p)) return nullptr;
      continue;
    }
    if (r.g.code == 0 && r.g.text == "SEQEND") {
      if (!ReadSeqend(r, p.seqendId)) return nullptr;
      return e;
    }
    r.pushBack();
    r.warn("POLYLINE 的顶点没有以 SEQEND 结束");
    return e;
  }
}

std::unique_ptr<Entity> DecodeCircle(Reader& r) {
  auto e = std::make_unique<Circle>();
  Circle& c = *e;
  if (!ReadBody(r, c, [&](const DxfGroup& g) { return CircleGroup(c, g); })) return nullptr;
  return e;
}

std::unique_ptr<Entity> DecodeArc(Reader& r) {
  auto e = std::make_unique<Arc>();
  Arc& a = *e;
  const bool ok = ReadBody(r, a, [&](const DxfGroup& g) {
    switch (g.code) {
      case 50: a.startAngle = DegToRad(g.real); return true;
      case 51: a.endAngle = DegToRad(g.real); return true;
      default: return CircleGroup(a, g);
    }
  });
  if (!ok) return nullptr;
  return e;
}

std::unique_ptr<Entity> DecodeEllipse(Reader& r) {
  auto e = std::make_unique<Ellipse>();
  Ellipse& el = *e;
  const bool ok = ReadBody(r, el, [&](const DxfGroup& g) {
    switch (g.code) {
      case 10: case 20: case 30: SetCoord(el.center, g.code, 10, g.real); return true;
      case 11: case 21: case 31: SetCoord(el.majorAxis, g.code, 11, g.real); return true;
      case 210: case 220: case 230: SetCoord(el.normal, g.code, 210, g.real); return true;
      case 40: el.ratio = g.real; return true;
      case 41: el.startParam = g.real; return true;
      case 42: el.endParam = g.real; return true;
      default: return false;
    }
  });
  if (!ok) return nullptr;
  return e;
}

std::unique_ptr<Entity> DecodeSpline(Reader& r) {
  auto e = std::make_unique<Spline>();
  Spline& s = *e;
  const bool ok = ReadBody(r, s, [&](const DxfGroup& g) {
    switch (g.code) {
      case 210: case 220: case 230: SetCoord(s.normal, g.code, 210, g.real); return true;
      case 70: s.splineFlags = r.i16(); return true;
      case 71: s.degree = r.i16(); return true;
      case 72: s.knots.reserve(ReserveFor(g.integer)); return true;
      case 73: s.controlPoints.reserve(ReserveFor(g.integer)); return true;
      case 74: s.fitPoints.reserve(ReserveFor(g.integer)); return true;
      case 42: s.knotTolerance = g.real; return true;
      case 43: s.controlTolerance = g.real; return true;
      case 44: s.fitTolerance = g.real; return true;
      case 12: case 22: case 32: SetCoord(s.startTangent, g.code, 12, g.real); return true;
      case 13: case 23: case 33: SetCoord(s.endTangent, g.code, 13, g.real); return true;
      case 40: s.knots.push_back(g.real); return true;
      case 41: s.weights.push_back(g.real); return true;
      case 10: s.controlPoints.push_back({g.real, 0, 0}); return true;
      case 20: case 30:
        if (!s.controlPoints.empty()) SetCoord(s.controlPoints.back(), g.code, 10, g.real);
        return true;
      case 11: s.fitPoints.push_back({g.real, 0, 0}); return true;
      case 21: case 31:
        if (!s.fitPoints.empty()) SetCoord(s.fitPoints.back(), g.code, 11, g.real);
        return true;
      default: return false;
    }
  });
  if (!ok) return nullptr;
  return e;
}

std::unique_ptr<Entity> DecodePoint(Reader& r) {
  auto e = std::make_unique<PointEntity>();
  PointEntity& p = *e;
  const bool ok = ReadBody(r, p, [&](const DxfGroup& g) {
    switch (g.code) {
      case 10: case 20: case 30: SetCoord(p.position, g.code, 10, g.real); return true;
      case 39: p.thickness = g.real; return true;
      case 210: case 220: case 230: SetCoord(p.normal, g.code, 210, g.real); return true;
      case 50: p.xAxisAngle = DegToRad(g.real); return true;
      default: return false;
    }
  });
  if (!ok) return nullptr;
  return e;
}

std::unique_ptr<Entity> DecodeSolid(Reader& r) { return DecodeQuad<Solid>(r); }
std::unique_ptr<Entity> DecodeTrace(Reader& r) { return DecodeQuad<Trace>(r); }
std::unique_ptr<Entity> DecodeFace3d(Reader& r) { return DecodeQuad<Face3d>(r); }

std::unique_ptr<Entity> DecodeProxy(std::string_view name, Reader& r) {
  auto e = std::make_unique<ProxyEntity>();
  ProxyEntity& p = *e;
  p.name = std::string(name);
  CommonState st;
  while (r.next()) {
    const int code = r.g.code;
    if (code == 0) {
      r.pushBack();
      return e;
    }
    if (code == 1001) return ReadXdata(r, p) ? std::move(e) : nullptr;
    // Once the class data begins, every group is the class's own: unknown classes may reuse any code.
    if (code == 100 && !st.inClass) {
      if (r.g.text == "AcDbEntity") continue;
      st.inClass = true;
    }
    if (!st.inClass && DecodeCommon(r, p, st)) {
      if (r.failed) return nullptr;
      continue;
    }
    p.groups.push_back(r.group());
  }
  if (r.failed) return nullptr;
  return e;
}

}  // namespace tv::cad::codec
