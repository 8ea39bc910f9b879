// The grid of selection boxes over one space.
#include "cad/selection_index.h"

#include <algorithm>
#include <cmath>

#include "cad/layout_viewport.h"
#include "cad/selection_shape_internal.h"

namespace tv::cad {

using namespace selection_internal;

// One shape builder for a run of measurements: it keeps block outlines, so it must not outlive a
// change of the drawing.
class SelectionIndex::Measurer {
 public:
  Measurer(const Database& db, const TextMeasurer* m) : builder(db, m ? *m : ApproximateTextMeasurer()) {}
  ShapeBuilder builder;
  Shape shape;
};

SelectionIndex::SelectionIndex(const Database& db, const BlockRecord& space, const TextMeasurer* measurer)
    : db_(db), space_(&space), measurer_(measurer) {
  rebuild();
}

SelectionIndex::~SelectionIndex() = default;

bool SelectionIndex::measure(std::uint32_t at, Measurer& m, BoxGrid::Box& box, bool& bounded) {
  const Entity& e = *space_->entities[at];
  bounded = false;
  noteShownBlocks(e);
  // A circle or an arc in the XY plane lies within its circle's square: no need to flatten it.
  const auto* circle = As<Circle>(&e);
  const auto* arc = circle ? nullptr : As<Arc>(&e);
  if ((circle || arc) && (circle ? circle->normal : arc->normal) == Vector3d::zAxis()) {
    const Point3d c = circle ? circle->center : arc->center;
    const double r = std::abs(circle ? circle->radius : arc->radius);
    const double grow = 1e-9 * (std::max(std::abs(c.x), std::abs(c.y)) + r + 1.0);
    const BoxGrid::Box square{c.x - r - grow, c.y - r - grow, c.x + r + grow, c.y + r + grow};
    if (std::isfinite(square.minX) && std::isfinite(square.minY) && std::isfinite(square.maxX) && std::isfinite(square.maxY)) {
      box = square;
      bounded = true;
      return true;
    }
  }
  m.builder.build(e, m.shape);
  if (m.shape.empty()) return false;
  const Box2 b = ProjectBox(m.shape.box, Matrix3d{});
  if (!b.finite()) return true;
  // Rounding of the walk's transforms must not put a point outside the box.
  const double grow = 1e-9 * std::max({std::abs(b.minX), std::abs(b.minY), std::abs(b.maxX), std::abs(b.maxY), 1.0});
  box = {b.minX - grow, b.minY - grow, b.maxX + grow, b.maxY + grow};
  bounded = true;
  return true;
}

void SelectionIndex::refile(std::uint32_t at, Measurer& m) {
  BoxGrid::Box box;
  bool bounded = false;
  grid_.remove(at);
  if (!measure(at, m, box, bounded)) return;
  if (bounded) grid_.add(at, box);
  else grid_.addUnbounded(at);
}

void SelectionIndex::rebuild() {
  stale_ = false;
  layoutViewport_.reset();
  const std::size_t n = space_->entities.size();
  at_.clear();
  at_.reserve(n);
  shownBlocks_.clear();
  Measurer m(db_, measurer_);
  // Measured first, filed once the grid is laid over their bounds.
  std::vector<BoxGrid::Box> boxes(n);
  std::vector<std::uint8_t> kinds(n, 0);  // 0 empty, 1 bounded, 2 not finite
  BoxGrid::Box all{INFINITY, INFINITY, -INFINITY, -INFINITY};
  std::size_t bounded = 0;
  for (std::uint32_t at = 0; at < n; ++at) {
    at_[space_->entities[at]->id.value] = at;
    bool finite = false;
    if (!measure(at, m, boxes[at], finite)) continue;
    kinds[at] = finite ? 1 : 2;
    if (!finite) continue;
    ++bounded;
    const BoxGrid::Box& b = boxes[at];
    all = {std::min(all.minX, b.minX), std::min(all.minY, b.minY), std::max(all.maxX, b.maxX), std::max(all.maxY, b.maxY)};
  }
  grid_.reset(bounded > 0 ? &all : nullptr, bounded);
  for (std::uint32_t at = 0; at < n; ++at) {
    if (kinds[at] == 1) grid_.add(at, boxes[at]);
    else if (kinds[at] == 2) grid_.addUnbounded(at);
  }
  measured_ = n;
}

void SelectionIndex::catchUp() {
  const std::size_t n = space_->entities.size();
  // Fewer entities than measured: erased ones were dropped from the list, positions moved.
  if (stale_ || n < measured_) {
    rebuild();
    return;
  }
  if (n == measured_) return;
  Measurer m(db_, measurer_);
  for (auto at = static_cast<std::uint32_t>(measured_); at < n; ++at) {
    if (As<Viewport>(space_->entities[at].get())) layoutViewport_.reset();
    at_[space_->entities[at]->id.value] = at;
    refile(at, m);
  }
  measured_ = n;
}

void SelectionIndex::noteShownBlocks(const Entity& e) {
  if (const auto* insert = As<Insert>(&e)) noteShownBlock(insert->block);
  else if (const auto* dimension = As<Dimension>(&e)) noteShownBlock(dimension->block);
}

void SelectionIndex::noteShownBlock(ObjectId blockId) {
  std::vector<ObjectId> pending{blockId};
  while (!pending.empty()) {
    const ObjectId id = pending.back();
    pending.pop_back();
    if (id.isNull() || !shownBlocks_.insert(id.value).second) continue;
    const auto* block = db_.objectAs<BlockRecord>(id);
    if (!block) continue;
    for (const auto& inner : block->entities) {
      if (const auto* insert = As<Insert>(inner.get())) pending.push_back(insert->block);
      else if (const auto* dimension = As<Dimension>(inner.get())) pending.push_back(dimension->block);
    }
  }
}

void SelectionIndex::noteChanged(const Entity& e) {
  if (As<Viewport>(&e)) layoutViewport_.reset();
  if (stale_) return;
  // An attribute changes the outline of its insert.
  const Entity* top = &e;
  if (e.owner != space_->id)
    if (const Entity* owner = db_.entity(e.owner); owner && owner->owner == space_->id) top = owner;
  if (top->owner == space_->id) {
    const auto it = at_.find(top->id.value);
    // Not measured yet: appended since the last selection, measured when the next one asks.
    if (it == at_.end() || it->second >= measured_) return;
    Measurer m(db_, measurer_);
    refile(it->second, m);
    return;
  }
  const BlockRecord* block = db_.ownerBlock(e);
  if (block && shownBlocks_.contains(block->id.value)) stale_ = true;
}

ObjectId SelectionIndex::layoutViewport() {
  catchUp();
  if (!layoutViewport_) layoutViewport_ = LayoutViewportOf(db_, *space_);
  return *layoutViewport_;
}

void SelectionIndex::candidates(double minX, double minY, double maxX, double maxY, std::vector<Candidate>& out) {
  out.clear();
  catchUp();
  grid_.query({minX, minY, maxX, maxY}, hits_);
  out.reserve(hits_.size());
  for (const std::uint32_t at : hits_) {
    const BoxGrid::Box& b = grid_.boxOf(at);
    out.push_back({space_->entities[at].get(), b.minX, b.minY, b.maxX, b.maxY, grid_.bounded(at)});
  }
}

}  // namespace tv::cad
