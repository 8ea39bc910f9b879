#pragma once
// Geometry of entities: extents, explosion into simpler entities, transforms, curve flattening.
// Used by the host seam (entity facts) and by the plot engine.
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "cad/database.h"

namespace tv::cad {

// ---- text measuring --------------------------------------------------------------------------

// Measures text in the font of a style. All values are for text height 1 (the em size) and before
// the width factor of the style or entity is applied.
class TextMeasurer {
 public:
  virtual ~TextMeasurer() = default;
  // Advance width of a string of plain text (no formatting codes).
  virtual double advance(std::string_view utf8, const TextStyle* style) const = 0;
  // Height of the font above the baseline and depth of its descenders below it (positive).
  virtual double ascent(const TextStyle* style) const = 0;
  virtual double descent(const TextStyle* style) const = 0;
};

// Measures without fonts: CJK and full-width characters 1.0, Latin capitals about 0.7, lower case
// about 0.55, digits 0.6, space 0.4, narrow punctuation 0.3. Ascent 1, descent 1/3.
const TextMeasurer& ApproximateTextMeasurer();

// MTEXT contents as plain text: formatting codes removed, stacked fractions as "a/b", paragraphs
// joined by "\n".
std::string MTextPlainText(std::string_view contents);

// ---- transforms ------------------------------------------------------------------------------

// Maps block coordinates to the coordinates of the insert's owner (WCS of that space): the block's
// base point goes to the insertion point; scale, rotation, the MINSERT cell offset
// (column * columnSpacing, row * rowSpacing along the insert's rotated axes, not scaled) and the
// insert's OCS are applied in that order.
Matrix3d InsertTransform(const Insert& insert, const BlockRecord& block, int column = 0, int row = 0);

// The outline of an insert's non-inverted spatial clip in the insert's block coordinates (a
// two-point rectangle given as its four corners); empty when the insert has no usable clip.
std::vector<Point3d> InsertClipBoundary(const Insert& insert, const Database& db);

// ---- extents ---------------------------------------------------------------------------------

// Remembers block extents between calls, for callers that measure many inserts of few blocks.
// Valid while the database and the measurer stay unchanged; clear() after editing blocks.
// One cache per thread: it is not synchronised.
class ExtentsBuilder;
class ExtentsCache {
 public:
  explicit ExtentsCache(const TextMeasurer* measurer = nullptr);
  // Extents of the block's entities in block coordinates, as an insert shows them (see BlockExtents).
  std::optional<Extents3d> blockExtents(const BlockRecord& block, const Database& db);
  // Like EntityExtents, using the cached block extents for inserts whose transform keeps the axes
  // (rotations by multiples of 90 degrees, no tilt), where a transformed box is still exact. The
  // exact walks of other inserts share one allowance per cache (see EntityExtents).
  std::optional<Extents3d> entityExtents(const Entity& entity, const Database& db);
  void clear() { blocks_.clear(); }
  const TextMeasurer& measurer() const { return *measurer_; }

 private:
  const TextMeasurer* measurer_;
  friend class ExtentsBuilder;
  std::unordered_map<const BlockRecord*, std::optional<Extents3d>> blocks_;
  std::vector<const BlockRecord*> measuring_;  // blocks being worked out, outermost first
  std::size_t work_ = 0;                       // entities visited by exact walks
};

// Axis-aligned extents in WCS (of the entity's space), nullopt when the entity shows nothing
// (proxies, empty text, empty blocks, an insert clipped away).
// - Erased or invisible entities passed here are still measured: callers decide whether they count.
//   Inside blocks, erased and invisible entities, invisible attributes and non-constant ATTDEFs are
//   left out, as an insert does not show them.
// - Curves are exact (bulges, arcs, ellipses under any transform); splines follow the evaluated
//   curve; widths of polylines add half the width on every side; thickness extrudes along the normal.
// - Text uses `measurer` (nullptr = ApproximateTextMeasurer()); the text box spans from the
//   baseline to the text height, widened by oblique angle, placed by the alignment.
// - MTEXT: its reference width (or its longest line), lines of height * 5/3 * spacing factor.
// - Inserts: the block's entities transformed (each MINSERT cell), attributes included, a spatial
//   clip intersected as its bounding box (inverted clips ignored); self-referencing blocks are cut
//   at the repeat and nesting at 32 levels (both noted, see walk_limits.h). A block's own box is
//   worked out once per measurement; inserts that keep the axes take it as it is, others walk the
//   content exactly until half a million entities were visited, then take the box transformed
//   (larger, never smaller).
// - DIMENSION: its block's entities (world coordinates of its space); VIEWPORT: its paper
//   rectangle (the paper space's own viewport too); IMAGE/WIPEOUT: the four corners.
std::optional<Extents3d> EntityExtents(const Entity& entity, const Database& db, const TextMeasurer* measurer = nullptr);

// Extents of a block's entities in block coordinates (base point not subtracted), leaving out what
// an insert of the block does not show (see EntityExtents). nullopt for an empty block.
std::optional<Extents3d> BlockExtents(const BlockRecord& block, const Database& db, const TextMeasurer* measurer = nullptr);

// ---- explode ---------------------------------------------------------------------------------

// Breaks an entity into simpler transient entities (null ids, no owner, not in the database):
// - INSERT: copies of the block's entities transformed by InsertTransform for every MINSERT cell
//   (circles and arcs under non-uniform scale become ellipses; nested inserts that cannot carry the
//   transform and nested dimensions are exploded further), then copies of its ATTRIBs. The block's
//   ATTDEFs are left out. MINSERT copies on one point come once; output is capped at two million
//   pieces and 100 000 grid copies (noted, see walk_limits.h).
//   ByBlock colour, linetype and lineweight take the insert's.
// - DIMENSION: copies of its block's entities, ByBlock resolved to the dimension's properties.
// - MTEXT: one TEXT per line (paragraphs and word wrap) in the MTEXT's height and style, formatting
//   codes removed (fonts, heights and colours of runs inside the text are not kept).
// - LWPOLYLINE and 2D POLYLINE: LINE and ARC pieces (widths dropped); 3D POLYLINE: LINEs;
//   polyface and mesh POLYLINE: 3DFACEs.
// Everything else gives an empty vector. Layer, colour, linetype and the other common properties
// are copied from the source. `measurer` (nullptr = approximate) decides where MTEXT wraps.
std::vector<std::unique_ptr<Entity>> Explode(const Entity& entity, const Database& db, const TextMeasurer* measurer = nullptr);

// A transformed copy with a null id and no owner, nullptr when the matrix is singular or the
// entity cannot carry the transform (a proxy; a dimension, whose block would stay behind; an
// insert under shear; a viewport turned off the axes). The class may change or the copy may
// approximate ("mean scale" = square root of the scale of areas in the entity's plane):
// - CIRCLE/ARC under non-uniform scale become ELLIPSE (exact);
// - LWPOLYLINE/2D POLYLINE with bulges or widths under non-uniform scale: the arcs become chords
//   within 1/1000 of their radius, widths are scaled by the mean scale;
// - MTEXT under non-uniform scale: the mean scale is applied to its height and width;
// - HATCH under non-uniform scale: boundaries flattened to polylines, pattern scaled by the mean scale.
// Mirroring keeps the normal where it can: arcs swap their angles, bulges change sign, text gets its
// backward flag, inserts a negative x scale; MTEXT is mirrored by reversing its normal.
std::unique_ptr<Entity> TransformedCopy(const Entity& entity, const Matrix3d& xf);

// Transforms in place when the entity's class represents the result exactly; false (entity
// unchanged) otherwise, e.g. a circle under non-uniform scale.
bool TransformBy(Entity& entity, const Matrix3d& xf);

// ---- curves as polylines -----------------------------------------------------------------------

// Points of the curve in WCS with a chord deviation of at most `chordTolerance` (<= 0 picks
// 1/1000 of the curve's size). NURBS by de Boor's algorithm (weights, clamped and unclamped
// knots; missing or broken knots are replaced by clamped uniform ones); a spline with fit points
// only gives its fit points.
std::vector<Point3d> SplineToPolyline(const Spline& spline, double chordTolerance);
std::vector<Point3d> EllipseToPolyline(const Ellipse& ellipse, double chordTolerance);
std::vector<Point3d> ArcToPolyline(const Arc& arc, double chordTolerance);
// Closed: the first point is repeated at the end.
std::vector<Point3d> CircleToPolyline(const Circle& circle, double chordTolerance);

}  // namespace tv::cad
