// Decoding of HATCH, DIMENSION, LEADER, VIEWPORT, IMAGE and WIPEOUT.
//
// HATCH data is a nest of counted lists. The counts are not trusted: each list runs as long as the
// groups fit it, and the first group that does not ends it and is handed back to the caller.
#include "cad/dxf_entity_codec_internal.h"

namespace tv::cad::codec {

namespace {

// One group of a hatch boundary edge; false when the group does not belong to the edge.
bool EdgeGroup(HatchEdge& edge, Reader& r, bool& sawFitCount) {
  const DxfGroup& g = r.g;
  const double v = g.real;
  switch (edge.kind) {
    case HatchEdge::Kind::Line:
      switch (g.code) {
        case 10: edge.start.x = v; return true;
        case 20: edge.start.y = v; return true;
        case 11: edge.end.x = v; return true;
        case 21: edge.end.y = v; return true;
        default: return false;
      }
    case HatchEdge::Kind::Arc:
    case HatchEdge::Kind::Ellipse:
      switch (g.code) {
        case 10: edge.start.x = v; return true;
        case 20: edge.start.y = v; return true;
        case 40: edge.radius = v; return true;
        case 50: edge.startAngle = v; return true;
        case 51: edge.endAngle = v; return true;
        case 73: edge.counterClockwise = r.flag(); return true;
        case 11:
        case 21:
          if (edge.kind != HatchEdge::Kind::Ellipse) return false;
          (g.code == 11 ? edge.majorAxis.x : edge.majorAxis.y) = v;
          return true;
        default: return false;
      }
    case HatchEdge::Kind::Spline:
      switch (g.code) {
        case 94: edge.degree = r.i32(); return true;
        case 73: edge.rational = r.flag(); return true;
        case 74: edge.periodic = r.flag(); return true;
        case 95: edge.knots.reserve(ReserveFor(g.integer)); return true;
        case 96: edge.controlPoints.reserve(ReserveFor(g.integer)); return true;
        case 40: edge.knots.push_back(v); return true;
        case 10: edge.controlPoints.push_back({v, 0}); return true;
        case 20:
          if (!edge.controlPoints.empty()) edge.controlPoints.back().y = v;
          return true;
        case 42: edge.weights.push_back(v); return true;
        case 97:
          // Fit data exist from R2010 on; otherwise, or the second time, 97 counts the source objects.
          if (sawFitCount || static_cast<int>(r.ctx.version()) < static_cast<int>(DxfVersion::R2010)) return false;
          sawFitCount = true;
          edge.fitPoints.reserve(ReserveFor(g.integer));
          return true;
        case 11: edge.fitPoints.push_back({v, 0}); return true;
        case 21:
          if (!edge.fitPoints.empty()) edge.fitPoints.back().y = v;
          return true;
        case 12: edge.startTangent.x = v; edge.hasTangents = true; return true;
        case 22: edge.startTangent.y = v; edge.hasTangents = true; return true;
        case 13: edge.endTangent.x = v; edge.hasTangents = true; return true;
        case 23: edge.endTangent.y = v; edge.hasTangents = true; return true;
        default: return false;
      }
  }
  return false;
}

void ReadPolylinePath(Reader& r, HatchPath& path) {
  bool hasBulge = false;
  while (r.next()) {
    const DxfGroup& g = r.g;
    switch (g.code) {
      case 72: hasBulge = r.flag(); continue;
      case 73: path.closed = r.flag(); continue;
      case 93: path.vertices.reserve(ReserveFor(g.integer)); continue;
      case 10:
        path.vertices.push_back({g.real, 0});
        if (hasBulge || !path.bulges.empty()) path.bulges.resize(path.vertices.size());
        continue;
      case 20:
        if (!path.vertices.empty()) path.vertices.back().y = g.real;
        continue;
      case 42:
        if (path.vertices.empty()) continue;
        path.bulges.resize(path.vertices.size());
        path.bulges.back() = g.real;
        continue;
      default:
        r.pushBack();
        return;
    }
  }
}

void ReadEdgePath(Reader& r, HatchPath& path) {
  bool sawFitCount = false;
  while (r.next()) {
    const int code = r.g.code;
    if (code == 72) {
      HatchEdge& edge = path.edges.emplace_back();
      const auto kind = r.g.integer;
      edge.kind = kind >= 1 && kind <= 4 ? static_cast<HatchEdge::Kind>(kind) : HatchEdge::Kind::Line;
      sawFitCount = false;
      continue;
    }
    if (code == 93 && path.edges.empty()) {
      path.edges.reserve(ReserveFor(r.g.integer));
      continue;
    }
    if (path.edges.empty() || !EdgeGroup(path.edges.back(), r, sawFitCount)) {
      r.pushBack();
      return;
    }
  }
}

// Reads one boundary path; the current group is its 92.
void ReadHatchPath(Reader& r, Hatch& h) {
  HatchPath& path = h.paths.emplace_back();
  path.flags = r.i32();
  if (path.isPolyline()) {
    ReadPolylinePath(r, path);
  } else {
    ReadEdgePath(r, path);
  }
  if (!r.next()) return;
  if (r.g.code != 97) {
    r.pushBack();
    return;
  }
  path.sourceObjects.reserve(ReserveFor(r.g.integer));
  while (r.next()) {
    if (r.g.code != 330) {
      r.pushBack();
      return;
    }
    path.sourceObjects.push_back(r.id());
  }
}

// Reads the pattern definition lines; the current group is their 78 count.
void ReadPatternLines(Reader& r, Hatch& h) {
  h.patternLines.reserve(ReserveFor(r.g.integer));
  HatchPatternLine* line = nullptr;
  while (r.next()) {
    const DxfGroup& g = r.g;
    if (g.code == 53) {
      line = &h.patternLines.emplace_back();
      line->angle = g.real;
      continue;
    }
    if (!line) {
      r.pushBack();
      return;
    }
    switch (g.code) {
      case 43: line->base.x = g.real; continue;
      case 44: line->base.y = g.real; continue;
      case 45: line->offset.x = g.real; continue;
      case 46: line->offset.y = g.real; continue;
      case 79: line->dashes.reserve(ReserveFor(g.integer)); continue;
      case 49: line->dashes.push_back(g.real); continue;
      default:
        r.pushBack();
        return;
    }
  }
}

template <class T>
std::unique_ptr<Entity> DecodeRaster(Reader& r) {
  auto e = std::make_unique<T>();
  T& im = *e;
  const bool ok = ReadBody(r, im, [&](const DxfGroup& g) {
    switch (g.code) {
      case 90: im.classVersion = r.i32(); return true;
      case 10: case 20: case 30: SetCoord(im.position, g.code, 10, g.real); return true;
      case 11: case 21: case 31: SetCoord(im.uPixel, g.code, 11, g.real); return true;
      case 12: case 22: case 32: SetCoord(im.vPixel, g.code, 12, g.real); return true;
      case 13: im.imageSize.x = g.real; return true;
      case 23: im.imageSize.y = g.real; return true;
      case 340: im.imageDef = r.id(); return true;
      case 70: im.displayFlags = r.i16(); return true;
      case 280: im.clipping = r.flag(); return true;
      case 281: im.brightness = r.i16(); return true;
      case 282: im.contrast = r.i16(); return true;
      case 283: im.fade = r.i16(); return true;
      case 360: im.imageDefReactor = r.id(); return true;
      case 71: im.clipType = r.i16(); return true;
      case 91: im.clipVertices.reserve(ReserveFor(g.integer)); return true;
      case 14: im.clipVertices.push_back({g.real, 0}); return true;
      case 24:
        if (!im.clipVertices.empty()) im.clipVertices.back().y = g.real;
        return true;
      case 290: im.clipInverted = r.flag(); return true;
      default: return false;
    }
  });
  if (!ok) return nullptr;
  return e;
}

}  // namespace

std::unique_ptr<Entity> DecodeHatch(Reader& r) {
  auto e = std::make_unique<Hatch>();
  Hatch& h = *e;
  CommonState st;
  st.proxyGraphics = false;  // 92 is always a boundary path here
  enum class Stage { Head, Seeds, Gradient } stage = Stage::Head;
  const bool ok = ReadBody(r, h, st, [&](const DxfGroup& g) {
    if (stage == Stage::Gradient) {
      h.gradient.push_back(r.group());
      return true;
    }
    switch (g.code) {
      case 10:
        if (stage == Stage::Seeds) h.seedPoints.push_back({g.real, 0});
        return true;  // otherwise the x of the elevation point, always 0
      case 20:
        if (stage == Stage::Seeds && !h.seedPoints.empty()) h.seedPoints.back().y = g.real;
        return true;
      case 30: h.elevation = g.real; return true;
      case 210: case 220: case 230: SetCoord(h.normal, g.code, 210, g.real); return true;
      case 2: h.patternName = r.str(); return true;
      case 70: h.solidFill = r.flag(); return true;
      case 71: h.associative = r.flag(); return true;
      case 91: h.paths.reserve(ReserveFor(g.integer)); return true;
      case 92: ReadHatchPath(r, h); return true;
      case 75: h.hatchStyle = r.i16(); return true;
      case 76: h.patternType = r.i16(); return true;
      case 52: h.patternAngle = g.real; return true;
      case 41: h.patternScale = g.real; return true;
      case 77: h.patternDouble = r.flag(); return true;
      case 78: ReadPatternLines(r, h); return true;
      case 47: h.pixelSize = g.real; return true;
      case 98:
        stage = Stage::Seeds;
        h.seedPoints.reserve(ReserveFor(g.integer));
        return true;
      default:
        if (g.code >= 450 && g.code <= 470) {
          stage = Stage::Gradient;
          h.gradient.push_back(r.group());
          return true;
        }
        return false;
    }
  });
  if (!ok) return nullptr;
  return e;
}

std::unique_ptr<Entity> DecodeDimension(Reader& r) {
  auto e = std::make_unique<Dimension>();
  Dimension& d = *e;
  CommonState st;
  const bool ok = ReadBody(r, d, st, [&](const DxfGroup& g) {
    switch (g.code) {
      case 100:
        if (g.text != "AcDbDimension") d.subclassData.push_back(r.group());
        return true;
      case 2: d.block = r.ctx.blockByName(r.str()); return true;
      case 3: d.dimStyle = r.ctx.dimStyleByName(r.str()); return true;
      case 10: case 20: case 30: SetCoord(d.definitionPoint, g.code, 10, g.real); return true;
      case 11: case 21: case 31: SetCoord(d.textMidPoint, g.code, 11, g.real); return true;
      case 70: d.dimType = r.i16(); return true;
      case 71: d.attachment = r.i16(); return true;
      case 1: d.text = r.str(); return true;
      case 42: d.measurement = g.real; return true;
      case 53: d.textRotation = g.real; return true;
      case 210: case 220: case 230: SetCoord(d.normal, g.code, 210, g.real); return true;
      default: return false;
    }
  }, [&](const DxfGroup&) {
    // Everything else, AcDbDimension's remaining groups first, then each subclass with its marker.
    d.subclassData.push_back(r.group());
  });
  if (!ok) return nullptr;
  return e;
}

std::unique_ptr<Entity> DecodeLeader(Reader& r) {
  auto e = std::make_unique<Leader>();
  Leader& l = *e;
  CommonState st;
  const bool ok = ReadBody(r, l, st, [&](const DxfGroup& g) {
    switch (g.code) {
      case 100: return true;
      case 3: l.dimStyle = r.ctx.dimStyleByName(r.str()); return true;
      case 71: l.hasArrowhead = r.flag(); return true;
      case 72: l.pathType = r.i16(); return true;
      case 73: l.creationFlag = r.i16(); return true;
      case 76: l.vertices.reserve(ReserveFor(g.integer)); return true;
      case 10: l.vertices.push_back({g.real, 0, 0}); return true;
      case 20: case 30:
        if (!l.vertices.empty()) SetCoord(l.vertices.back(), g.code, 10, g.real);
        return true;
      case 340: l.annotation = r.id(); return true;
      case 210: case 220: case 230: SetCoord(l.normal, g.code, 210, g.real); return true;
      default: return false;
    }
  }, [&](const DxfGroup&) { l.otherData.push_back(r.group()); });
  if (!ok) return nullptr;
  return e;
}

std::unique_ptr<Entity> DecodeViewport(Reader& r) {
  auto e = std::make_unique<Viewport>();
  Viewport& v = *e;
  CommonState st;
  const bool ok = ReadBody(r, v, st, [&](const DxfGroup& g) {
    switch (g.code) {
      case 100: return true;
      case 10: case 20: case 30: SetCoord(v.center, g.code, 10, g.real); return true;
      case 40: v.width = g.real; return true;
      case 41: v.height = g.real; return true;
      case 68: v.status = r.i16(); return true;
      case 69: v.number = r.i16(); return true;
      case 12: v.viewCenter.x = g.real; return true;
      case 22: v.viewCenter.y = g.real; return true;
      case 16: case 26: case 36: SetCoord(v.viewDirection, g.code, 16, g.real); return true;
      case 17: case 27: case 37: SetCoord(v.viewTarget, g.code, 17, g.real); return true;
      case 45: v.viewHeight = g.real; return true;
      case 51: v.twist = DegToRad(g.real); return true;
      case 42: v.lensLength = g.real; return true;
      case 43: v.frontClip = g.real; return true;
      case 44: v.backClip = g.real; return true;
      case 90: v.statusFlags = r.i32(); return true;
      case 331: case 341: v.frozenLayers.push_back(r.id()); return true;
      case 340: v.clipBoundary = r.id(); return true;
      case 1: v.plotStyleSheet = r.str(); return true;
      case 281: v.renderMode = r.i16(); return true;
      case 110: case 120: case 130: SetCoord(v.ucsOrigin, g.code, 110, g.real); return true;
      case 111: case 121: case 131: SetCoord(v.ucsXAxis, g.code, 111, g.real); return true;
      case 112: case 122: case 132: SetCoord(v.ucsYAxis, g.code, 112, g.real); return true;
      default: return false;
    }
  }, [&](const DxfGroup&) { v.otherData.push_back(r.group()); });
  if (!ok) return nullptr;
  return e;
}

std::unique_ptr<Entity> DecodeImage(Reader& r) { return DecodeRaster<Image>(r); }
std::unique_ptr<Entity> DecodeWipeout(Reader& r) { return DecodeRaster<Wipeout>(r); }

}  // namespace tv::cad::codec
