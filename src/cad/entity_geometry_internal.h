#pragma once
// Helpers shared by the entity geometry files (extents, explode, transform); not part of the API.
#include <array>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cad/entity_geometry.h"

namespace tv::cad::geom_internal {

// ---- UTF-8 ---------------------------------------------------------------------------------------

// CJK ideographs, kana, hangul and full-width forms: one em wide.
bool IsWideCodePoint(char32_t cp);

// ---- text ----------------------------------------------------------------------------------------

// TEXT with its %% control codes replaced (%%d degree, %%p plus-minus, %%c diameter, %%nnn a
// character code) and the underline/overline toggles removed.
std::string ExpandTextCodes(std::string_view text);

// The text style an entity refers to, else "Standard", else nullptr.
const TextStyle* StyleOf(ObjectId style, const Database& db);

// The fields of TEXT, ATTDEF and ATTRIB that place the text.
struct TextParams {
  std::string_view text;
  Point3d position, alignPoint;
  bool hasAlignPoint = false;
  double height = 0, rotation = 0, widthFactor = 1, oblique = 0;
  std::int16_t generation = 0;
  TextHAlign hAlign = TextHAlign::Left;
  TextVAlign vAlign = TextVAlign::Baseline;
  ObjectId style;
  Vector3d normal;
};

template <class T>
TextParams TextParamsOf(const T& t) {
  return {t.text, t.position, t.alignPoint(), t.hasAlignPoint(), t.height, t.rotation, t.widthFactor, t.oblique(),
          t.generation(), t.hAlign, t.vAlign, t.style, t.normal()};
}

// Corners of the text box in the entity's OCS (baseline start, baseline end, top end, top start),
// nullopt for empty text.
std::optional<std::array<Point3d, 4>> TextBoxOcs(const TextParams& t, const Database& db, const TextMeasurer& m);

// Plain lines of MTEXT contents: paragraphs split on \P, \X and line breaks, formatting removed.
std::vector<std::string> MTextPlainParagraphs(std::string_view raw);

// MTEXT laid out in its own frame: x along its direction, y up, origin at the insertion point.
struct MTextLayout {
  struct Line {
    std::string text;
    double width = 0;     // drawing units
    Point2d baselineStart;  // left end of the baseline in the frame
  };
  std::vector<Line> lines;
  double left = 0, bottom = 0, right = 0, top = 0;  // the box in the frame
  double height = 0;       // character height
  double widthFactor = 1;  // of the style
  int column = 0;          // 0 left, 1 centre, 2 right
  Matrix3d frameToWorld;   // the frame to WCS
};
MTextLayout LayoutMText(const MText& mtext, const Database& db, const TextMeasurer& m);

// The WCS direction of MTEXT's x axis (unit, in its plane).
Vector3d MTextDirection(const MText& mtext);

// ---- planes under a transform ----------------------------------------------------------------------

// A transform restricted to the plane of a planar entity, expressed from its old OCS to its new OCS.
struct PlaneMap {
  Vector3d normal;        // the new normal: on the old normal's side where possible
  Matrix3d oldOcsToNew;   // old OCS coordinates to new OCS coordinates
  Vector2d a, b;          // images of the OCS unit x and y in the new OCS
  double zScale = 1;      // image of the unit normal along the new normal
  bool mirrored = false;  // the plane's orientation flips
  bool similar = false;   // in-plane rotation and uniform scale (possibly mirrored)
  bool axesKept = false;  // the image of the normal is perpendicular to the new plane
  double scale = 1;       // |a|
  double angle = 0;       // direction of a
  Point3d map(Point3d ocs) const { return oldOcsToNew.transform(ocs); }
};
// nullopt when the transform is singular in the plane.
std::optional<PlaneMap> MapPlane(const Matrix3d& xf, Vector3d normal);

// ---- curves ----------------------------------------------------------------------------------------

// Adds the exact extents of the curve c + u cos t + v sin t, t from t0 counter-clockwise to t1.
void AddEllipseArc(Extents3d& ext, Point3d c, Vector3d u, Vector3d v, double t0, double t1);
// Points of that curve with a chord deviation of at most `tol`.
std::vector<Point3d> EllipseArcPoints(Point3d c, Vector3d u, Vector3d v, double t0, double t1, double tol);
// A hatch boundary's spline edge as a SPLINE at height z of its OCS.
Spline SplineOfHatchEdge(const HatchEdge& edge, double z);
// t1 moved above t0 by the counter-clockwise span (a full turn when they are equal).
double SweepEnd(double t0, double t1);
// `relativeTolerance` of the size of a spline's control points (its fit points when it has none);
// 0 when that size is not a positive number, which leaves the choice to SplineToPolyline.
double SplineChordTolerance(const Spline& s, double relativeTolerance);
// The points of a hatch boundary made of edges, in its OCS and in travel order, a point shared by
// consecutive edges given once. Arcs and ellipse arcs become chords deviating at most
// `relativeTolerance` of their radius, splines of their size (0 leaves both to the curve
// functions: 1/1000). With `dropRepeatedStart` a loop that ends where it starts does not repeat it.
void FlattenHatchEdges(const std::vector<HatchEdge>& edges, double relativeTolerance, bool dropRepeatedStart,
                       std::vector<Point2d>& out);

// ---- polyface meshes -------------------------------------------------------------------------------

// One face of a polyface mesh: up to four corners pointing into the polyline's vertices.
struct PolyfaceFace {
  std::array<const Point3d*, 4> corners{};  // the first `count` are set
  int count = 0;
  int invisible = 0;  // bit k hides the edge from corner k to the next
};

// Calls face(const PolyfaceFace&) for every face record of a polyface mesh, in order. Vertex flag 64
// marks the mesh's positions, 128 without 64 a face; a negative index hides the edge starting at
// that corner, and indices that name no position are skipped.
template <class F>
void ForEachPolyfaceFace(const Polyline& p, F&& face) {
  std::vector<const Point3d*> positions;
  for (const auto& v : p.vertices)
    if (v.flags & 64) positions.push_back(&v.position);
  for (const auto& v : p.vertices) {
    if ((v.flags & 64) || !(v.flags & 128)) continue;
    PolyfaceFace f;
    for (int k = 0; k < 4; ++k) {
      const std::int64_t index = std::abs(static_cast<std::int64_t>(v.faceIndices[k]));
      if (index == 0 || index > static_cast<std::int64_t>(positions.size())) continue;
      if (v.faceIndices[k] < 0) f.invisible |= 1 << f.count;
      f.corners[static_cast<std::size_t>(f.count++)] = positions[static_cast<std::size_t>(index - 1)];
    }
    face(f);
  }
}

// ---- entities --------------------------------------------------------------------------------------

// Layer, colour, linetype, lineweight, flags and scale of `from` onto `to`.
void CopyCommonProperties(const Entity& from, Entity& to);
// Clears ids, owner and the owned-object links of a copy that is not in any database.
void MakeTransient(Entity& e);

// False for singular or non-finite transforms.
bool IsInvertible(const Matrix3d& xf);
// Transforms in place when the class carries the result exactly; false and untouched otherwise.
bool TransformExact(Entity& e, const Matrix3d& xf);
// The nearest representation of a transformed entity that TransformExact refused (see
// TransformedCopy); nullptr when there is none.
std::unique_ptr<Entity> TransformApproximate(const Entity& e, const Matrix3d& xf);
// Hatches under rotation, uniform scale and mirroring.
bool TransformHatchExact(Hatch& h, const PlaneMap& pm);

// The ellipse c + u cos t + v sin t for t from t0 to t1 (counter-clockwise) as an ELLIPSE entity
// with the properties of `props`, its normal on the side of `normalHint`; nullptr when degenerate.
std::unique_ptr<Ellipse> EllipseFromConjugates(const Entity& props, Point3d c, Vector3d u, Vector3d v, Vector3d normalHint,
                                               double t0, double t1);

}  // namespace tv::cad::geom_internal
