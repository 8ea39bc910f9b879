#include <algorithm>
#include <cmath>
#include <functional>

#include "cad/database.h"
#include "cad/entities.h"
#include "cad/entity_geometry.h"
#include "cad/spline_parameters.h"
#include "host/cad_binding.h"
#include "host/curve_pieces.h"

namespace tv::host {

namespace {

constexpr double kShortestPiece = 0.00001;
constexpr double kSameEnds = 1e-10;
// A bound for curves far longer than the step, as when the traced lines' extents are a line
// themselves: the count would otherwise run into the billions.
constexpr double kMostPieces = 100000;

// A curve read through its parameter, as a general curve of the host offers it.
struct ParamCurve {
  double start = 0;
  double end = 0;
  bool closed = false;
  double length = 0;
  std::function<Point3d(double)> at;
};

void AddPiece(Point3d a, Point3d b, std::vector<CurvePiece>& pieces) {
  a.z = 0;
  b.z = 0;
  if (a.distanceTo(b) > kShortestPiece) pieces.push_back({a, b});
}

void AddChain(const std::vector<Point3d>& points, std::vector<CurvePiece>& pieces) {
  for (std::size_t i = 1; i < points.size(); ++i) AddPiece(points[i - 1], points[i], pieces);
}

// The whole part of length / step, kept within the bound.
double StepsAlong(double length, double step) {
  const double n = length / step;
  return std::isfinite(n) ? std::floor(std::min(n, kMostPieces)) : 0;
}

double ChainLength(const std::vector<Point3d>& points) {
  double length = 0;
  for (std::size_t i = 1; i < points.size(); ++i) length += points[i].distanceTo(points[i - 1]);
  return length;
}

void FlattenGeneral(const ParamCurve& c, double step, std::vector<CurvePiece>& pieces) {
  if (c.at(c.start).distanceTo(c.at(c.end)) <= kSameEnds && !c.closed) return;
  double n = 5;
  if (step > 0) n = std::max(StepsAlong(c.length, step), 2.0);
  if (c.closed && n <= 11) n = 12;
  const double span = c.end - c.start;
  Point3d previous = c.at(c.start);
  for (double i = 0; i < n; ++i) {
    const Point3d next = c.at(c.start + (i + 1) * span / n);
    AddPiece(previous, next, pieces);
    previous = next;
  }
}

// Points on a circle or ellipse of the plane through `centre` spanned by `u` and `v`.
std::function<Point3d(double)> Elliptic(Point3d centre, Vector3d u, Vector3d v) {
  return [=](double t) { return centre + u * std::cos(t) + v * std::sin(t); };
}

ParamCurve ArcCurve(const cad::Arc& arc) {
  const Matrix3d toWorld = Matrix3d::planeToWorld(arc.normal);
  ParamCurve c;
  c.start = arc.startAngle;
  c.end = arc.endAngle;
  while (c.end <= c.start) c.end += 2 * kPi;
  c.length = arc.radius * (c.end - c.start);
  c.at = Elliptic(toWorld.transform(arc.center), toWorld.transform(Vector3d{arc.radius, 0, 0}),
                  toWorld.transform(Vector3d{0, arc.radius, 0}));
  return c;
}

ParamCurve CircleCurve(const cad::Circle& circle) {
  const Matrix3d toWorld = Matrix3d::planeToWorld(circle.normal);
  ParamCurve c;
  c.end = 2 * kPi;
  c.closed = true;
  c.length = 2 * kPi * circle.radius;
  c.at = Elliptic(toWorld.transform(circle.center), toWorld.transform(Vector3d{circle.radius, 0, 0}),
                  toWorld.transform(Vector3d{0, circle.radius, 0}));
  return c;
}

ParamCurve EllipseCurve(const cad::Ellipse& e) {
  Vector3d n = e.normal.normalized();
  if (n.isZero(0)) n = Vector3d::zAxis();
  ParamCurve c;
  c.start = e.startParam;
  c.end = e.endParam;
  while (c.end <= c.start) c.end += 2 * kPi;
  c.closed = std::abs(c.end - c.start - 2 * kPi) < 1e-9;
  c.at = Elliptic(e.center, e.majorAxis, n.cross(e.majorAxis) * e.ratio);
  constexpr int kLengthSteps = 1024;
  Point3d previous = c.at(c.start);
  for (int i = 1; i <= kLengthSteps; ++i) {
    const Point3d next = c.at(c.start + (c.end - c.start) * i / kLengthSteps);
    c.length += next.distanceTo(previous);
    previous = next;
  }
  return c;
}

// One span of an old-style polyline: straight, or an arc of `angle` radians (signed,
// counter-clockwise positive) about `centre`.
struct Span {
  Point3d from, to;
  double angle = 0;
  Point3d centre;
  double length = 0;
};

Span SpanOf(Point3d p, Point3d q, double bulge) {
  Span s{p, q};
  const double chord = p.distanceTo(q);
  s.length = chord;
  if (bulge == 0 || chord == 0) return s;
  s.angle = 4 * std::atan(bulge);
  const Vector3d along = (q - p) / chord;
  const Vector3d left{-along.y, along.x, 0};
  const Point3d middle = p + (q - p) * 0.5;
  s.centre = middle + left * (chord / 2 / std::tan(s.angle / 2));
  s.length = std::abs(chord / (2 * std::sin(s.angle / 2)) * s.angle);
  return s;
}

Point3d PointOnSpan(const Span& s, double f) {
  if (s.angle == 0) return s.from + (s.to - s.from) * f;
  const double a = s.angle * f, cosA = std::cos(a), sinA = std::sin(a);
  const Vector3d r = s.from - s.centre;
  return s.centre + Vector3d{r.x * cosA - r.y * sinA, r.x * sinA + r.y * cosA, r.z};
}

// An old-style 2D or 3D polyline: parameter i at vertex i, spans in between; a bulged span is
// walked by its angle. The frame points of a spline-fit polyline are not on the curve.
std::optional<ParamCurve> PolylineCurve(const cad::Polyline& p) {
  std::vector<const cad::PolylineVertex*> vertices;
  for (const cad::PolylineVertex& v : p.vertices)
    if (!(v.flags & cad::Polyline::kVertexSplineFrame)) vertices.push_back(&v);
  const std::size_t n = vertices.size();
  if (n < 2) return std::nullopt;
  const std::size_t count = p.isClosed() ? n : n - 1;
  const Matrix3d toWorld = p.is3d() ? Matrix3d::identity() : Matrix3d::planeToWorld(p.normal);
  std::vector<Span> spans;
  for (std::size_t i = 0; i < count; ++i) {
    Point3d a = vertices[i]->position, b = vertices[(i + 1) % n]->position;
    if (!p.is3d()) a.z = b.z = p.elevation;
    spans.push_back(SpanOf(a, b, p.is3d() ? 0.0 : vertices[i]->bulge));
  }
  ParamCurve c;
  c.end = static_cast<double>(count);
  c.closed = p.isClosed();
  for (const Span& s : spans) c.length += s.length;
  c.at = [spans = std::move(spans), toWorld](double t) {
    const double i = std::clamp(std::floor(t), 0.0, static_cast<double>(spans.size() - 1));
    return toWorld.transform(PointOnSpan(spans[static_cast<std::size_t>(i)], t - i));
  };
  return c;
}

std::optional<ParamCurve> GeneralCurveOf(const cad::Entity& e) {
  if (const auto* arc = cad::As<cad::Arc>(&e)) return ArcCurve(*arc);
  if (const auto* circle = cad::As<cad::Circle>(&e)) return CircleCurve(*circle);
  if (const auto* ellipse = cad::As<cad::Ellipse>(&e)) return EllipseCurve(*ellipse);
  if (const auto* p = cad::As<cad::Polyline>(&e); p && !p->isMeshOrPolyface()) return PolylineCurve(*p);
  return std::nullopt;
}

void FlattenLine(const cad::Line& line, std::vector<CurvePiece>& pieces) { AddPiece(line.start, line.end, pieces); }

void FlattenSpline(const cad::Spline& spline, double step, std::vector<CurvePiece>& pieces) {
  double n = static_cast<double>(spline.controlPoints.size());
  if (step > 0) n = std::max(n, StepsAlong(ChainLength(cad::SplineToPolyline(spline, 0)), step));
  if (n <= 0) return;
  std::vector<Point3d> points = cad::SplineAtEqualParameters(spline, static_cast<std::size_t>(n));
  // A spline given by its fit points alone runs through them.
  if (points.empty()) points = spline.fitPoints;
  AddChain(points, pieces);
}

void FlattenPolyline(const cad::LwPolyline& polyline, const cad::Database& db, double step,
                     std::vector<CurvePiece>& pieces) {
  for (const auto& piece : cad::Explode(polyline, db)) {
    if (const auto* line = cad::As<cad::Line>(piece.get())) FlattenLine(*line, pieces);
    else if (const auto curve = GeneralCurveOf(*piece)) FlattenGeneral(*curve, step, pieces);
  }
}

const cad::Entity* CurveEntity(ObjectId id) {
  const cad::Database* db = WorkingDatabase();
  const cad::Entity* e = db ? db->entity(id) : nullptr;
  if (!e || e->isErased()) return nullptr;
  const auto* polyline = cad::As<cad::Polyline>(e);
  const bool curve = cad::As<cad::Line>(e) || cad::As<cad::LwPolyline>(e) || cad::As<cad::Spline>(e) ||
                     cad::As<cad::Arc>(e) || cad::As<cad::Circle>(e) || cad::As<cad::Ellipse>(e) ||
                     (polyline && !polyline->isMeshOrPolyface());
  return curve ? e : nullptr;
}

}  // namespace

std::optional<Extents3d> CurveExtents(ObjectId id) {
  const cad::Entity* e = CurveEntity(id);
  if (!e) return std::nullopt;
  return cad::EntityExtents(*e, *WorkingDatabase());
}

void FlattenCurve(ObjectId id, double step, std::vector<CurvePiece>& pieces) {
  const cad::Entity* e = CurveEntity(id);
  if (!e) return;
  if (const auto* line = cad::As<cad::Line>(e)) FlattenLine(*line, pieces);
  else if (const auto* polyline = cad::As<cad::LwPolyline>(e)) FlattenPolyline(*polyline, *WorkingDatabase(), step, pieces);
  else if (const auto* spline = cad::As<cad::Spline>(e)) FlattenSpline(*spline, step, pieces);
  else if (const auto curve = GeneralCurveOf(*e)) FlattenGeneral(*curve, step, pieces);
}

}  // namespace tv::host
