// Encoding of HATCH, DIMENSION, LEADER, VIEWPORT, IMAGE and WIPEOUT.
#include <algorithm>
#include <span>
#include <vector>

#include "cad/dxf_entity_codec_internal.h"

namespace tv::cad::codec {

namespace {

// The code a group belongs to for ordering: the y and z of a point go with its x (20, 30 -> 10).
int CodeFamily(int code) {
  if (code >= 10 && code <= 39) return 10 + code % 10;
  if (code >= 110 && code <= 139) return 110 + code % 10;
  if (code >= 210 && code <= 239) return 210;
  return code;
}

// Writes groups kept as read in between the fields the model writes itself, at the place the
// usual group order gives them; a code without a place stays after the group it followed.
class Interleaver {
 public:
  Interleaver(Writer& w, std::vector<const Group*> kept, std::span<const int> order) : w_(w), order_(order) {
    sorted_.reserve(kept.size());
    int last = -1;
    for (const Group* g : kept) {
      const int r = rank(g->code);
      last = r >= 0 ? r : last;
      sorted_.emplace_back(last, g);
    }
    std::stable_sort(sorted_.begin(), sorted_.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  }
  // Writes the kept groups that come before `code`.
  void before(int code) {
    const int r = rank(code);
    while (next_ < sorted_.size() && sorted_[next_].first < r) w_.group(*sorted_[next_++].second);
  }
  void rest() {
    while (next_ < sorted_.size()) w_.group(*sorted_[next_++].second);
  }

 private:
  int rank(int code) const {
    const int family = CodeFamily(code);
    auto it = std::find(order_.begin(), order_.end(), family);
    return it == order_.end() ? -1 : static_cast<int>(it - order_.begin());
  }

  Writer& w_;
  std::span<const int> order_;
  std::vector<std::pair<int, const Group*>> sorted_;
  std::size_t next_ = 0;
};

std::vector<const Group*> Pointers(const Groups& gs) {
  std::vector<const Group*> out;
  out.reserve(gs.size());
  for (const Group& g : gs) out.push_back(&g);
  return out;
}

void EncodeEdge(Writer& w, const HatchEdge& edge) {
  DxfOutput& out = w.out;
  out.integer(72, static_cast<int>(edge.kind));
  switch (edge.kind) {
    case HatchEdge::Kind::Line:
      out.point2d(10, edge.start);
      out.point2d(11, edge.end);
      return;
    case HatchEdge::Kind::Arc:
    case HatchEdge::Kind::Ellipse:
      out.point2d(10, edge.start);
      if (edge.kind == HatchEdge::Kind::Ellipse) out.point2d(11, Point2d{edge.majorAxis.x, edge.majorAxis.y});
      out.real(40, edge.radius);
      out.real(50, edge.startAngle);
      out.real(51, edge.endAngle);
      out.integer(73, edge.counterClockwise ? 1 : 0);
      return;
    case HatchEdge::Kind::Spline: {
      out.integer(94, edge.degree);
      out.integer(73, edge.rational ? 1 : 0);
      out.integer(74, edge.periodic ? 1 : 0);
      out.integer(95, static_cast<std::int64_t>(edge.knots.size()));
      out.integer(96, static_cast<std::int64_t>(edge.controlPoints.size()));
      for (double knot : edge.knots) out.real(40, knot);
      for (std::size_t i = 0; i < edge.controlPoints.size(); ++i) {
        out.point2d(10, edge.controlPoints[i]);
        if (i < edge.weights.size()) out.real(42, edge.weights[i]);
      }
      for (std::size_t i = edge.controlPoints.size(); i < edge.weights.size(); ++i) out.real(42, edge.weights[i]);
      if (w.atLeast(DxfVersion::R2010)) {
        out.integer(97, static_cast<std::int64_t>(edge.fitPoints.size()));
        for (const Point2d& p : edge.fitPoints) out.point2d(11, p);
        if (edge.hasTangents) {
          out.point2d(12, Point2d{edge.startTangent.x, edge.startTangent.y});
          out.point2d(13, Point2d{edge.endTangent.x, edge.endTangent.y});
        }
      }
      return;
    }
  }
}

void EncodePath(Writer& w, const HatchPath& path) {
  DxfOutput& out = w.out;
  out.integer(92, path.flags);
  if (path.isPolyline()) {
    const bool hasBulge = !path.bulges.empty();
    out.integer(72, hasBulge ? 1 : 0);
    out.integer(73, path.closed ? 1 : 0);
    out.integer(93, static_cast<std::int64_t>(path.vertices.size()));
    for (std::size_t i = 0; i < path.vertices.size(); ++i) {
      out.point2d(10, path.vertices[i]);
      if (hasBulge) out.real(42, i < path.bulges.size() ? path.bulges[i] : 0.0);
    }
  } else {
    out.integer(93, static_cast<std::int64_t>(path.edges.size()));
    for (const HatchEdge& edge : path.edges) EncodeEdge(w, edge);
  }
  out.integer(97, static_cast<std::int64_t>(path.sourceObjects.size()));
  for (ObjectId id : path.sourceObjects) out.handle(330, id);
}

bool IsDimensionSubclassCode(int code) {
  const int family = CodeFamily(code);
  return (family >= 13 && family <= 16) || code == 40 || code == 50 || code == 52;
}

std::string_view DimensionSubclass(std::int16_t dimType) {
  switch (dimType & 7) {
    case 0:
    case 1: return "AcDbAlignedDimension";
    case 2: return "AcDb2LineAngularDimension";
    case 3: return "AcDbDiametricDimension";
    case 4: return "AcDbRadialDimension";
    case 5: return "AcDb3PointAngularDimension";
    default: return "AcDbOrdinateDimension";
  }
}

template <class T>
void EncodeRaster(Writer& w, const T& im, std::string_view name, std::string_view subclass) {
  const std::size_t k = EncodeCommon(w, im, name);
  DxfOutput& out = w.out;
  out.str(100, subclass);
  out.integer(90, im.classVersion);
  out.point(10, im.position);
  out.vector(11, im.uPixel);
  out.vector(12, im.vPixel);
  out.point2d(13, Point2d{im.imageSize.x, im.imageSize.y});
  out.handle(340, im.imageDef);
  out.integer(70, im.displayFlags);
  out.integer(280, im.clipping ? 1 : 0);
  out.integer(281, im.brightness);
  out.integer(282, im.contrast);
  out.integer(283, im.fade);
  if (w.atLeast(DxfVersion::R2010)) out.integer(290, im.clipInverted ? 1 : 0);
  out.handle(360, im.imageDefReactor);
  out.integer(71, im.clipType);
  out.integer(91, static_cast<std::int64_t>(im.clipVertices.size()));
  for (const Point2d& p : im.clipVertices) out.point2d(14, p);
  EncodeTail(w, im, k);
}

constexpr int kDimensionOrder[] = {280, 2, 10, 11, 12, 70, 71, 72, 41, 42, 73, 74, 75, 1, 53, 51, 210, 3};
constexpr int kLeaderOrder[] = {3, 71, 72, 73, 74, 75, 40, 41, 76, 10, 77, 340, 210, 211, 212, 213};
constexpr int kViewportOrder[] = {10,  40,  41,  68,  69,  12,  13,  14,  15,  16,  17,  42,  43,  44,  45,
                                  50,  51,  72,  331, 340, 90,  1,   281, 71,  74,  110, 111, 112, 79,  146,
                                  345, 346, 170, 61,  332, 333, 348, 292, 282, 141, 142, 63,  421, 431, 361};

}  // namespace

void EncodeHatch(Writer& w, const Hatch& e) {
  const std::size_t k = EncodeCommon(w, e, "HATCH");
  DxfOutput& out = w.out;
  out.str(100, "AcDbHatch");
  out.point(10, Point3d{0, 0, e.elevation});
  out.vector(210, e.normal);
  w.str(2, e.patternName);
  out.integer(70, e.solidFill ? 1 : 0);
  out.integer(71, e.associative ? 1 : 0);
  out.integer(91, static_cast<std::int64_t>(e.paths.size()));
  for (const HatchPath& path : e.paths) EncodePath(w, path);
  out.integer(75, e.hatchStyle);
  out.integer(76, e.patternType);
  if (!e.solidFill) {
    out.real(52, e.patternAngle);
    out.real(41, e.patternScale);
    out.integer(77, e.patternDouble ? 1 : 0);
    out.integer(78, static_cast<std::int64_t>(e.patternLines.size()));
    for (const HatchPatternLine& line : e.patternLines) {
      out.real(53, line.angle);
      out.real(43, line.base.x);
      out.real(44, line.base.y);
      out.real(45, line.offset.x);
      out.real(46, line.offset.y);
      out.integer(79, static_cast<std::int64_t>(line.dashes.size()));
      for (double dash : line.dashes) out.real(49, dash);
    }
  }
  if (e.pixelSize != 0) out.real(47, e.pixelSize);
  out.integer(98, static_cast<std::int64_t>(e.seedPoints.size()));
  for (const Point2d& p : e.seedPoints) out.point2d(10, p);
  w.groups(e.gradient);
  EncodeTail(w, e, k);
}

void EncodeDimension(Writer& w, const Dimension& e) {
  const std::size_t k = EncodeCommon(w, e, "DIMENSION");
  DxfOutput& out = w.out;
  out.str(100, "AcDbDimension");

  // Groups before the first subclass marker belong to AcDbDimension; without any marker (R12 files,
  // dimensions made in code) the subclass's own codes are told apart by their numbers.
  const Groups& data = e.subclassData;
  std::size_t firstMarker = 0;
  while (firstMarker < data.size() && data[firstMarker].code != 100) ++firstMarker;
  const bool hasMarkers = firstMarker < data.size();
  std::vector<const Group*> dimLevel, subLevel;
  for (std::size_t i = 0; i < firstMarker; ++i) {
    const Group* g = &data[i];
    (!hasMarkers && IsDimensionSubclassCode(g->code) ? subLevel : dimLevel).push_back(g);
  }

  Interleaver il(w, std::move(dimLevel), kDimensionOrder);
  il.before(2);
  w.str(2, w.blockName(e.block));
  il.before(10);
  out.point(10, e.definitionPoint);
  il.before(11);
  out.point(11, e.textMidPoint);
  il.before(70);
  out.integer(70, e.dimType);
  il.before(71);
  out.integer(71, e.attachment);
  il.before(42);
  out.real(42, e.measurement);
  il.before(1);
  if (!e.text.empty()) w.str(1, e.text);
  il.before(53);
  if (e.textRotation != 0) out.real(53, e.textRotation);
  il.before(210);
  out.normal(210, e.normal);
  il.before(3);
  w.str(3, w.dimStyleName(e.dimStyle));
  il.rest();

  if (hasMarkers) {
    for (std::size_t i = firstMarker; i < data.size(); ++i) w.group(data[i]);
  } else {
    out.str(100, DimensionSubclass(e.dimType));
    for (const Group* g : subLevel) w.group(*g);
    if ((e.dimType & 7) == 0) out.str(100, "AcDbRotatedDimension");
  }
  EncodeTail(w, e, k);
}

void EncodeLeader(Writer& w, const Leader& e) {
  const std::size_t k = EncodeCommon(w, e, "LEADER");
  DxfOutput& out = w.out;
  out.str(100, "AcDbLeader");
  Interleaver il(w, Pointers(e.otherData), kLeaderOrder);
  il.before(3);
  w.str(3, w.dimStyleName(e.dimStyle));
  il.before(71);
  out.integer(71, e.hasArrowhead ? 1 : 0);
  il.before(72);
  out.integer(72, e.pathType);
  il.before(73);
  out.integer(73, e.creationFlag);
  il.before(76);
  out.integer(76, static_cast<std::int64_t>(e.vertices.size()));
  for (const Point3d& p : e.vertices) out.point(10, p);
  il.before(340);
  if (e.annotation) out.handle(340, e.annotation);
  il.before(210);
  out.vector(210, e.normal);
  il.rest();
  EncodeTail(w, e, k);
}

void EncodeViewport(Writer& w, const Viewport& e) {
  const std::size_t k = EncodeCommon(w, e, "VIEWPORT");
  DxfOutput& out = w.out;
  out.str(100, "AcDbViewport");
  Interleaver il(w, Pointers(e.otherData), kViewportOrder);
  il.before(10);
  out.point(10, e.center);
  il.before(40);
  out.real(40, e.width);
  out.real(41, e.height);
  il.before(68);
  out.integer(68, e.status);
  out.integer(69, e.number);
  il.before(12);
  out.point2d(12, e.viewCenter);
  il.before(16);
  out.vector(16, e.viewDirection);
  il.before(17);
  out.point(17, e.viewTarget);
  il.before(42);
  out.real(42, e.lensLength);
  out.real(43, e.frontClip);
  out.real(44, e.backClip);
  out.real(45, e.viewHeight);
  il.before(51);
  w.angle(51, e.twist);
  il.before(331);
  for (ObjectId id : e.frozenLayers) out.handle(331, id);
  il.before(340);
  if (e.clipBoundary) out.handle(340, e.clipBoundary);
  il.before(90);
  out.integer(90, e.statusFlags);
  il.before(1);
  w.str(1, e.plotStyleSheet);
  il.before(281);
  out.integer(281, e.renderMode);
  il.before(110);
  out.point(110, e.ucsOrigin);
  il.before(111);
  out.vector(111, e.ucsXAxis);
  il.before(112);
  out.vector(112, e.ucsYAxis);
  il.rest();
  EncodeTail(w, e, k);
}

void EncodeImage(Writer& w, const Image& e) { EncodeRaster(w, e, "IMAGE", "AcDbRasterImage"); }
// Wipeouts carry their own subclass marker in the files CAD programs write.
void EncodeWipeout(Writer& w, const Wipeout& e) { EncodeRaster(w, e, "WIPEOUT", "AcDbWipeout"); }

}  // namespace tv::cad::codec
