// The capture of a signature from the curves the user picks.
#include <algorithm>
#include <cmath>

#include "host/curve_pieces.h"
#include "host/editor.h"
#include "signing/sign_boundary.h"

namespace tv::signing {

namespace {

constexpr double kStepsPerSide = 50;
constexpr double kFirstPassTolerance = 0.00001;
constexpr double kNoLeftovers = 100000000;
// A signature whose sides add up to less than this is enlarged to it.
constexpr double kLeastSize = 200;

SegmentList Flattened(const ObjectIdArray& ids, double step) {
  std::vector<host::CurvePiece> pieces;
  for (ObjectId id : ids) host::FlattenCurve(id, step, pieces);
  SegmentList segments;
  segments.reserve(pieces.size());
  for (const host::CurvePiece& p : pieces) segments.push_back({p.start, p.end});
  return segments;
}

}  // namespace

bool CaptureSign(TV_Sign& sign) {
  ObjectIdArray ids;
  if (host::CurrentEditor().select("_:$", {"\n选择形成签名的边界线：", ""}, {}, {}, ids) != host::RTNORM || ids.empty())
    return false;
  return CaptureSignFrom(sign, ids);
}

bool CaptureSignFrom(TV_Sign& sign, const ObjectIdArray& ids) {
  Extents3d extents;
  for (ObjectId id : ids)
    if (const std::optional<Extents3d> e = host::CurveExtents(id)) extents.add(*e);
  const double step = std::min(extents.width(), extents.height()) / kStepsPerSide;

  SegmentList segments = Flattened(ids, step);
  MergeCollinear(segments, CaptureTol);

  // Traced outlines close exactly where the tracing snapped; the gaps of free-hand tracing are
  // closed by a second pass at a fifth of the shortest segment left over.
  LoopList loops;
  SegmentList leftovers;
  ChainLoops(segments, leftovers, loops, kFirstPassTolerance);
  double shortest = kNoLeftovers;
  for (const Segment& s : leftovers) shortest = std::min(shortest, s.start.distanceTo(s.end));
  SegmentList dropped;
  ChainLoops(leftovers, dropped, loops, shortest / 5);

  Extents3d box;
  for (const PointLoop& loop : loops)
    for (const Point3d& p : loop) box.add(p);
  const Point3d centre = box.isEmpty() ? Point3d() : box.center();
  sign.width = box.width();
  sign.height = box.height();
  const double k = kLeastSize / (sign.width + sign.height);
  if (k > 1 && std::isfinite(k)) {
    sign.width *= k;
    sign.height *= k;
    for (PointLoop& loop : loops)
      for (Point3d& p : loop) p = centre + (p - centre) * k;
  }

  sign.shapes.clear();
  return BuildOutlines(loops, sign.shapes, centre);
}

}  // namespace tv::signing
