// The grid of selection boxes over one space.
#include "cad/selection_index.h"

#include <algorithm>
#include <cmath>

#include "cad/selection_shape_internal.h"

namespace tv::cad {

using namespace selection_internal;

namespace {

// About this many entities a cell, in cells as square as the space allows.
constexpr double kEntitiesPerCell = 4;
constexpr int kMaxSide = 1024;
constexpr double kMaxCells = 1 << 19;
// An entity over more cells than this (a frame over a whole sheet) is kept on a list of its own.
constexpr long kMaxCellsPerEntity = 1024;

}  // namespace

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

void SelectionIndex::measure(std::uint32_t at, Measurer& m) {
  const Entity& e = *space_->entities[at];
  Entry& entry = entries_[at];
  entry = {};
  noteShownBlocks(e);
  // A circle or an arc in the XY plane lies within its circle's square: no need to flatten it.
  const auto* circle = As<Circle>(&e);
  const auto* arc = circle ? nullptr : As<Arc>(&e);
  if ((circle || arc) && (circle ? circle->normal : arc->normal) == Vector3d::zAxis()) {
    const Point3d c = circle ? circle->center : arc->center;
    const double r = std::abs(circle ? circle->radius : arc->radius);
    const double grow = 1e-9 * (std::max(std::abs(c.x), std::abs(c.y)) + r + 1.0);
    const double minX = c.x - r - grow, minY = c.y - r - grow, maxX = c.x + r + grow, maxY = c.y + r + grow;
    if (std::isfinite(minX) && std::isfinite(minY) && std::isfinite(maxX) && std::isfinite(maxY)) {
      entry = {minX, minY, maxX, maxY, Kind::Bounded};
      return;
    }
  }
  m.builder.build(e, m.shape);
  if (m.shape.empty()) return;
  const Box2 b = ProjectBox(m.shape.box, Matrix3d{});
  if (!b.finite()) {
    entry.kind = Kind::Unbounded;
    return;
  }
  // Rounding of the walk's transforms must not put a point outside the box.
  const double grow = 1e-9 * std::max({std::abs(b.minX), std::abs(b.minY), std::abs(b.maxX), std::abs(b.maxY), 1.0});
  entry = {b.minX - grow, b.minY - grow, b.maxX + grow, b.maxY + grow, Kind::Bounded};
}

void SelectionIndex::rebuild() {
  stale_ = false;
  const std::size_t n = space_->entities.size();
  entries_.assign(n, {});
  at_.clear();
  at_.reserve(n);
  shownBlocks_.clear();
  unbounded_.clear();
  large_.clear();
  cells_.clear();
  columns_ = rows_ = 0;
  Measurer m(db_, measurer_);
  double minX = INFINITY, minY = INFINITY, maxX = -INFINITY, maxY = -INFINITY;
  std::size_t bounded = 0;
  for (std::uint32_t at = 0; at < n; ++at) {
    at_[space_->entities[at]->id.value] = at;
    measure(at, m);
    const Entry& b = entries_[at];
    if (b.kind != Kind::Bounded) continue;
    ++bounded;
    minX = std::min(minX, b.minX), minY = std::min(minY, b.minY);
    maxX = std::max(maxX, b.maxX), maxY = std::max(maxY, b.maxY);
  }
  seen_.assign(n, 0);
  stamp_ = 0;
  if (bounded > 0) {
    const double w = std::max(maxX - minX, 1e-9), h = std::max(maxY - minY, 1e-9);
    const double cells = std::clamp(static_cast<double>(bounded) / kEntitiesPerCell, 1.0, kMaxCells);
    columns_ = std::clamp(static_cast<int>(std::sqrt(cells * w / h)), 1, kMaxSide);
    rows_ = std::clamp(static_cast<int>(cells / columns_), 1, kMaxSide);
    originX_ = minX, originY_ = minY;
    cellW_ = w / columns_, cellH_ = h / rows_;
    cells_.assign(static_cast<std::size_t>(columns_) * static_cast<std::size_t>(rows_), {});
  } else {
    // Entities appended later still need cells to go to.
    columns_ = rows_ = 1;
    originX_ = originY_ = 0;
    cellW_ = cellH_ = 1;
    cells_.assign(1, {});
  }
  for (std::uint32_t at = 0; at < n; ++at) file(at);
}

void SelectionIndex::cellRange(double minX, double minY, double maxX, double maxY, int& c0, int& r0, int& c1, int& r1) const {
  // Clamped into the grid: an entity beyond it goes to the edge cells, where a query beyond it looks.
  const auto cell = [](double v, double origin, double size, int count) {
    const double k = std::floor((v - origin) / size);
    if (!(k > 0)) return 0;  // NaN and the cells before the first
    return static_cast<int>(std::min(k, static_cast<double>(count - 1)));
  };
  c0 = cell(minX, originX_, cellW_, columns_), c1 = cell(maxX, originX_, cellW_, columns_);
  r0 = cell(minY, originY_, cellH_, rows_), r1 = cell(maxY, originY_, cellH_, rows_);
}

void SelectionIndex::file(std::uint32_t at) {
  const Entry& b = entries_[at];
  if (b.kind == Kind::None) return;
  if (b.kind == Kind::Unbounded) {
    unbounded_.push_back(at);
    return;
  }
  int c0, r0, c1, r1;
  cellRange(b.minX, b.minY, b.maxX, b.maxY, c0, r0, c1, r1);
  if (static_cast<long>(c1 - c0 + 1) * (r1 - r0 + 1) > kMaxCellsPerEntity) {
    entries_[at].kind = Kind::Large;
    large_.push_back(at);
    return;
  }
  for (int r = r0; r <= r1; ++r)
    for (int c = c0; c <= c1; ++c) cells_[static_cast<std::size_t>(r) * columns_ + c].push_back(at);
}

void SelectionIndex::unfile(std::uint32_t at) {
  const Entry& b = entries_[at];
  const auto drop = [at](std::vector<std::uint32_t>& list) {
    if (auto it = std::find(list.begin(), list.end(), at); it != list.end()) {
      *it = list.back();
      list.pop_back();
    }
  };
  switch (b.kind) {
    case Kind::None: return;
    case Kind::Unbounded: drop(unbounded_); return;
    case Kind::Large: drop(large_); return;
    case Kind::Bounded: break;
  }
  int c0, r0, c1, r1;
  cellRange(b.minX, b.minY, b.maxX, b.maxY, c0, r0, c1, r1);
  for (int r = r0; r <= r1; ++r)
    for (int c = c0; c <= c1; ++c) drop(cells_[static_cast<std::size_t>(r) * columns_ + c]);
}

void SelectionIndex::catchUp() {
  const std::size_t n = space_->entities.size();
  // Fewer entities than filed: erased ones were dropped from the list, positions moved.
  if (stale_ || n < entries_.size()) {
    rebuild();
    return;
  }
  if (n == entries_.size()) return;
  Measurer m(db_, measurer_);
  for (auto at = static_cast<std::uint32_t>(entries_.size()); at < n; ++at) {
    entries_.emplace_back();
    at_[space_->entities[at]->id.value] = at;
    measure(at, m);
    file(at);
  }
  seen_.resize(n, 0);
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
  if (stale_) return;
  // An attribute changes the outline of its insert.
  const Entity* top = &e;
  if (e.owner != space_->id)
    if (const Entity* owner = db_.entity(e.owner); owner && owner->owner == space_->id) top = owner;
  if (top->owner == space_->id) {
    const auto it = at_.find(top->id.value);
    // Not filed yet: appended since the last selection, measured when the next one asks.
    if (it == at_.end() || it->second >= entries_.size()) return;
    Measurer m(db_, measurer_);
    unfile(it->second);
    measure(it->second, m);
    file(it->second);
    return;
  }
  const BlockRecord* block = db_.ownerBlock(e);
  if (block && shownBlocks_.contains(block->id.value)) stale_ = true;
}

void SelectionIndex::candidates(double minX, double minY, double maxX, double maxY, std::vector<Candidate>& out) {
  out.clear();
  catchUp();
  std::vector<std::uint32_t> hits(unbounded_);
  const auto meets = [&](std::uint32_t at) {
    const Entry& b = entries_[at];
    return b.maxX >= minX && b.minX <= maxX && b.maxY >= minY && b.minY <= maxY;
  };
  for (const std::uint32_t at : large_)
    if (meets(at)) hits.push_back(at);
  if (++stamp_ == 0) {
    std::fill(seen_.begin(), seen_.end(), 0);
    stamp_ = 1;
  }
  int c0, r0, c1, r1;
  cellRange(minX, minY, maxX, maxY, c0, r0, c1, r1);
  for (int r = r0; r <= r1; ++r)
    for (int c = c0; c <= c1; ++c)
      for (const std::uint32_t at : cells_[static_cast<std::size_t>(r) * columns_ + c]) {
        if (seen_[at] == stamp_) continue;
        seen_[at] = stamp_;
        if (meets(at)) hits.push_back(at);
      }
  std::sort(hits.begin(), hits.end());
  out.reserve(hits.size());
  for (const std::uint32_t at : hits) {
    const Entry& b = entries_[at];
    out.push_back({space_->entities[at].get(), b.minX, b.minY, b.maxX, b.maxY, b.kind != Kind::Unbounded});
  }
}

}  // namespace tv::cad
