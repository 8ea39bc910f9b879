#pragma once
// Selection outlines kept per block definition and walked through insert transforms; shared by
// the selection files only, not part of the API.
#include <cmath>
#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

#include "cad/entity_geometry.h"
#include "cad/walk_limits.h"

namespace tv::cad::selection_internal {

// A path (a closed one repeats its first point; one point for a POINT) or a filled area.
struct Piece {
  std::uint32_t begin = 0, end = 0;  // range of Outline::points
  bool area = false;
  Extents3d box;
};

// Pieces in one coordinate system, their points in one array so that rebuilding reuses memory.
struct Outline {
  std::vector<Point3d> points;
  std::vector<Piece> pieces;

  void clear() {
    points.clear();
    pieces.clear();
  }
  void start() { begin_ = points.size(); }
  void add(Point3d p) { points.push_back(p); }
  // Ends the piece begun by start(): empty pieces and pieces with non-finite points are dropped.
  void finish(bool area);

 private:
  std::size_t begin_ = 0;
};

// An x, y box.
struct Box2 {
  double minX = 0, minY = 0, maxX = -1, maxY = -1;
  bool finite() const { return std::isfinite(minX) && std::isfinite(minY) && std::isfinite(maxX) && std::isfinite(maxY); }
};
// The x, y box of a 3D box after a transform (exact for the transformed box).
Box2 ProjectBox(const Extents3d& box, const Matrix3d& xf);
inline Point2d Project(const Matrix3d& m, const Point3d& p) {
  return {m.m[0][0] * p.x + m.m[0][1] * p.y + m.m[0][2] * p.z + m.m[0][3], m.m[1][0] * p.x + m.m[1][1] * p.y + m.m[1][2] * p.z + m.m[1][3]};
}

// Even-odd rule; points on the boundary may fall either way.
bool InsidePolygon(Point2d p, const Point2d* poly, std::size_t n);

struct Shape;

// A block's content placed in its owner: the first cell's transform and, for MINSERT, the
// translations from cell to cell in owner coordinates.
struct Placement {
  const Shape* shape = nullptr;
  Matrix3d xf;
  int columns = 1, rows = 1;
  Vector3d columnStep, rowStep;
  Extents3d box;  // every cell, owner coordinates
};

// An entity's or a block's outline: own pieces and placed blocks, in the owner's coordinates.
struct Shape {
  Outline own;
  std::vector<Placement> placements;
  Extents3d box;

  void clear() {
    own.clear();
    placements.clear();
    box = {};
  }
  bool empty() const { return own.pieces.empty() && placements.empty(); }
};

// Builds entity outlines, keeping each block definition's outline for the builder's lifetime
// (one selection call): the database must not change meanwhile.
class ShapeBuilder {
 public:
  ShapeBuilder(const Database& db, const TextMeasurer& measurer) : db_(db), m_(measurer) {}
  ShapeBuilder(const ShapeBuilder&) = delete;
  ShapeBuilder& operator=(const ShapeBuilder&) = delete;

  // The outline of `e` in its owner's coordinates; `out` is cleared first.
  void build(const Entity& e, Shape& out);

 private:
  void entity(const Entity& e, Shape& out);
  void insert(const Insert& ins, Shape& out);
  // The cached outline of a block, nullptr when it shows nothing, is being built (a block
  // inserting itself) or lies too deep.
  const Shape* block(const BlockRecord& b);
  // A clipped insert's content: the block's outline clipped in block coordinates.
  const Shape* clippedBlock(const Shape& content, const std::vector<Point2d>& clip);
  void place(Shape& out, const Shape* content, const Matrix3d& xf, int columns = 1, int rows = 1, Vector3d columnStep = {},
             Vector3d rowStep = {});

  const Database& db_;
  const TextMeasurer& m_;
  std::unordered_map<const BlockRecord*, std::unique_ptr<Shape>> blocks_;
  std::vector<std::unique_ptr<Shape>> clipped_;
  std::vector<const BlockRecord*> stack_;
  std::size_t built_ = 0;  // pieces and placements kept in the cache
  std::vector<Point2d> scratch_;
};

// ---- walking an outline ------------------------------------------------------------------------

enum class Verdict { Skip, Stop, Descend };

// Hostile nesting (blocks inserting blocks many times over, huge MINSERT grids) must not hang a
// selection: one entity's walk visits at most this many pieces and cells.
inline constexpr std::size_t kMaxWalk = 2'000'000;

// Counts one step of a walk; true (and the run told) once the walk's work is spent.
inline bool Spent(std::size_t& work) {
  if (++work <= kMaxWalk) return false;
  NoteContentLeftOut();
  return true;
}

// Visits the pieces of `s` under `xf` in x, y. The visitor answers box(Box2) for every piece and
// placement before it is opened (Skip, Stop the walk, or Descend) and piece(points, count, area)
// for the pieces it let through (true stops the walk). Returns true when stopped, by the visitor
// or by the work limit (`work` then exceeds kMaxWalk).
template <class V>
bool Walk(const Shape& s, const Matrix3d& xf, V& v, std::vector<Point2d>& scratch, std::size_t& work) {
  for (const Piece& p : s.own.pieces) {
    if (Spent(work)) return true;
    const Verdict verdict = v.box(ProjectBox(p.box, xf));
    if (verdict == Verdict::Skip) continue;
    if (verdict == Verdict::Stop) return true;
    scratch.clear();
    for (std::uint32_t i = p.begin; i < p.end; ++i) scratch.push_back(Project(xf, s.own.points[i]));
    if (v.piece(scratch.data(), scratch.size(), p.area)) return true;
  }
  for (const Placement& pl : s.placements) {
    if (Spent(work)) return true;
    const Verdict verdict = v.box(ProjectBox(pl.box, xf));
    if (verdict == Verdict::Skip) continue;
    if (verdict == Verdict::Stop) return true;
    const Matrix3d first = xf * pl.xf;
    if (pl.columns == 1 && pl.rows == 1) {
      if (Walk(*pl.shape, first, v, scratch, work)) return true;
      continue;
    }
    const Vector3d cs = xf.transform(pl.columnStep), rs = xf.transform(pl.rowStep);
    for (int row = 0; row < pl.rows; ++row)
      for (int column = 0; column < pl.columns; ++column) {
        if (Spent(work)) return true;
        Matrix3d cell = first;
        const Vector3d t = cs * column + rs * row;
        cell.m[0][3] += t.x;
        cell.m[1][3] += t.y;
        cell.m[2][3] += t.z;
        const Verdict c = v.box(ProjectBox(pl.shape->box, cell));
        if (c == Verdict::Skip) continue;
        if (c == Verdict::Stop) return true;
        if (Walk(*pl.shape, cell, v, scratch, work)) return true;
      }
  }
  return false;
}

}  // namespace tv::cad::selection_internal
