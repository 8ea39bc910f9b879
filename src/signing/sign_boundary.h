#pragma once
// A signature's outlines from the heap of lines, arcs, polylines and splines someone traced around
// a scanned name, in any order and with duplicates: every curve flattened to segments, collinear
// overlaps merged, segments chained into closed loops at two tolerances, and loops that lie in
// an earlier loop made its holes. The outlines are stored around the signature's centre.
#include <memory>
#include <vector>

#include "host/geometry.h"
#include "host/object_id.h"
#include "signing/sign_library.h"

namespace tv::signing {

struct Segment {
  Point3d start;
  Point3d end;
};
using SegmentList = std::vector<Segment>;
using PointLoop = std::vector<Point3d>;  // one closed chain: its last point is its first
using LoopList = std::vector<PointLoop>;

// How close two points or two directions have to be to count as the same.
struct GeomTolerance {
  double equalPoint = 1e-10;
  double equalVector = 1e-12;
};
inline constexpr GeomTolerance CaptureTol{0.00001, 0.0001};

// Asks for the lines with "\n选择形成签名的边界线：" and captures the signature from them.
// False when nothing was selected or nothing closes.
bool CaptureSign(TV_Sign& sign);
// Captures from the entities `ids` (curves among them; others are skipped): fills the sign's
// shapes, width and height. False, with a message on the command line, when no closed outline
// comes of them.
bool CaptureSignFrom(TV_Sign& sign, const ObjectIdArray& ids);

// Merges segments that lie on one line and overlap or touch into one, in place; `tol` decides
// what counts as parallel. Prints how many were merged, when any were.
void MergeCollinear(SegmentList& segments, const GeomTolerance& tol);

// Chains the segments end to end: each closed chain goes to `loops`, each seed of a chain that
// didn't close to `leftovers`. Two ends meet when they are closer than `tolerance`. Empties
// `segments`.
void ChainLoops(SegmentList& segments, SegmentList& leftovers, LoopList& loops, double tolerance);

// Outer outlines and their holes from the loops, in list order: each loop not used yet is an
// outer outline, and each later loop that takes area from it is its hole. Loops that enclose no
// area are removed from the list. The vertices are stored relative to `centre`. False, with
// "\n签名边线不封闭或签名边线不在X-Y平面内!\n", when no loop encloses an area.
bool BuildOutlines(LoopList& loops, std::vector<std::unique_ptr<MyShape>>& shapes, Point3d centre);

}  // namespace tv::signing
