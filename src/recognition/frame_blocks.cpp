// Inserts whose definition draws its own outer edge: a title-block frame as one rectangular
// polyline, or as four lines of one definition, at any depth of nesting.
#include <algorithm>
#include <cmath>
#include <memory>

#include "recognition/rectangle_finder.h"
#include "recognition/rectangle_finder_internal.h"
#include "recognition/working_coordinates.h"

namespace tv::recognition {

namespace {

// Nesting deeper than this is a block that refers to itself.
constexpr int kMaxNesting = 32;

// The box the frame must match, in working coordinates, and the tolerance of the match.
struct Target {
  double x0, y0, x1, y1, t;
};

class FrameSearch {
 public:
  explicit FrameSearch(const Target& target) : target_(target), hidden_(internal::HiddenLayers::Current()) {}

  bool holdsFrame(const host::Entity& reference, MatrixStack& stack, int depth) const {
    if (depth > kMaxNesting) return false;
    stack.push_back(reference.blockTransform());
    const bool found = walk(reference.blockTableRecord(), stack, depth);
    stack.pop_back();
    return found;
  }

 private:
  // The four sides found so far among the lines of one definition.
  struct Sides {
    bool left = false, right = false, top = false, bottom = false;
    bool all() const { return left && right && top && bottom; }
  };

  bool walk(ObjectId definition, MatrixStack& stack, int depth) const {
    ObjectIdArray ids;
    host::CollectSpaceIds(definition, ids);
    Sides sides;
    for (ObjectId id : ids) {
      const host::Entity e = host::OpenEntity(id);
      if (!e) continue;
      const host::EntityClass kind = e.kind();
      if (kind == host::EntityClass::Wipeout || !e.visible() || hidden_.contains(e.layer())) continue;
      if (kind == host::EntityClass::BlockReference) {
        if (holdsFrame(e, stack, depth + 1)) return true;
      } else if (host::IsPolylineClass(kind)) {
        if (isFramePolyline(e, stack)) return true;
      } else if (kind == host::EntityClass::Line) {
        addLine(e, stack, sides);
        if (sides.all()) return true;
      }
    }
    return false;
  }

  bool isFramePolyline(const host::Entity& polyline, const MatrixStack& stack) const {
    Point3d a, b;
    if (!IsRectanglePolyline(polyline, true, stack, a, b)) return false;
    const Target& g = target_;
    return std::abs(a.x - g.x0) < g.t && std::abs(b.x - g.x1) < g.t && std::abs(a.y - g.y0) < g.t &&
           std::abs(b.y - g.y1) < g.t;
  }

  void addLine(const host::Entity& line, const MatrixStack& stack, Sides& sides) const {
    const Point3d s = ToWorking(TransformByStack(line.startPoint(), stack));
    const Point3d e = ToWorking(TransformByStack(line.endPoint(), stack));
    const Target& g = target_;
    sides.left = sides.left || SegmentMatches(s, e, g.x0, g.y0, g.x0, g.y1, g.t);
    sides.right = sides.right || SegmentMatches(s, e, g.x1, g.y0, g.x1, g.y1, g.t);
    sides.top = sides.top || SegmentMatches(s, e, g.x0, g.y1, g.x1, g.y1, g.t);
    sides.bottom = sides.bottom || SegmentMatches(s, e, g.x0, g.y0, g.x1, g.y0, g.t);
  }

  Target target_;
  internal::HiddenLayers hidden_;
};

bool Contains(const ObjectIdArray& ids, ObjectId id) { return FindId(ids, id) >= 0; }

// The sheet of a frame block; it goes straight to the master list.
bool AddSheet(const Temp_Id& candidate, double xScale, SheetList& master, ObjectId spaceId, ObjectId layerId) {
  auto sheet = std::make_unique<Plot_Drawing1>();
  sheet->kind = SheetKind::Block;
  sheet->sourceIds[0] = candidate.id;
  sheet->spaceId = spaceId;
  if (!AddMarker(*sheet, layerId, candidate.extents, xScale)) return false;
  master.push_back(std::move(sheet));
  return true;
}

}  // namespace

bool SegmentMatches(Point3d p, Point3d q, double ax, double ay, double bx, double by, double t) {
  const auto near = [t](Point3d u, double x, double y) { return std::abs(u.x - x) < t && std::abs(u.y - y) < t; };
  return (near(p, ax, ay) && near(q, bx, by)) || (near(q, ax, ay) && near(p, bx, by));
}

bool BlockHoldsFrame(const host::Entity& reference, Point3d p0, Point3d p1, MatrixStack& stack) {
  Target target{std::min(p0.x, p1.x), std::min(p0.y, p1.y), std::max(p0.x, p1.x), std::max(p0.y, p1.y), 0.0};
  target.t = ((target.x1 - target.x0) + (target.y1 - target.y0)) / 1500.0;
  return FrameSearch(target).holdsFrame(reference, stack, 0);
}

void AddFrameBlockSheet(const Temp_Id& candidate, SheetList& master, ObjectId spaceId, ObjectId layerId,
                        ObjectIdArray& frameBlockIds, ObjectIdArray& plainBlockIds) {
  double xScale = 1.0;
  ObjectId definition;
  bool dynamic = false;
  bool cached = false;
  bool found = false;
  {
    const host::Entity reference = host::OpenEntity(candidate.id);
    if (!reference) return;
    xScale = reference.scaleFactors().x;
    definition = reference.blockTableRecord();
    if (Contains(frameBlockIds, definition)) {
      cached = found = true;
    } else {
      if (Contains(plainBlockIds, definition)) return;
      dynamic = reference.isDynamicBlock();
      // Text sticking out of a frame mustn't widen the box the frame is to match.
      const Extents3d box = EntityExtentsOpen(reference, false, false);
      MatrixStack stack;
      found = !box.isEmpty() && BlockHoldsFrame(reference, box.min, box.max, stack);
      // A dynamic block's stretches change its frame from one insert to the next.
      if (!found && !dynamic) plainBlockIds.push_back(definition);
    }
  }
  if (!found) return;
  if (AddSheet(candidate, xScale, master, spaceId, layerId) && !cached && !dynamic)
    frameBlockIds.push_back(definition);
}

}  // namespace tv::recognition
