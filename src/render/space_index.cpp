#include "render/space_index.h"

#include <algorithm>
#include <cmath>

#include "cad/entity_geometry.h"
#include "render/font_metrics.h"

namespace tv::render {

namespace {

// An entity over more cells than this is kept on a list of its own rather than in every cell.
constexpr long kMaxCellsPerEntity = 64;
constexpr int kMaxSide = 256;

const cad::TextMeasurer& Fonts() {
  static const FontTextMeasurer measurer;
  return measurer;
}

}  // namespace

SpaceIndex::SpaceIndex(const cad::Database& db, const cad::BlockRecord& space)
    : space_(&space), listData_(space.entities.data()), listSize_(space.entities.size()) {
  cad::ExtentsCache cache(&Fonts());
  double minX = INFINITY, minY = INFINITY, maxX = -INFINITY, maxY = -INFINITY;
  std::vector<std::size_t> bounded;
  for (const auto& owned : space.entities) {
    const cad::Entity& e = *owned;
    if (e.isErased()) continue;
    const std::size_t at = entities_.size();
    entities_.push_back(&e);
    const std::optional<cad::Extents3d> ext = cache.entityExtents(e, db);
    if (!ext || ext->isEmpty() || !std::isfinite(ext->min.x + ext->min.y + ext->max.x + ext->max.y)) {
      boxes_.push_back({0, 0, 0, 0});
      unbounded_.push_back(at);
      continue;
    }
    boxes_.push_back({ext->min.x, ext->min.y, ext->max.x, ext->max.y});
    bounded.push_back(at);
    minX = std::min(minX, ext->min.x), minY = std::min(minY, ext->min.y);
    maxX = std::max(maxX, ext->max.x), maxY = std::max(maxY, ext->max.y);
  }
  seen_.assign(entities_.size(), 0);
  if (bounded.empty()) return;

  // About four entities a cell, in cells as square as the space allows.
  const double w = std::max(maxX - minX, 1e-9), h = std::max(maxY - minY, 1e-9);
  const double cells = std::clamp(static_cast<double>(bounded.size()) / 4.0, 1.0, double(kMaxSide) * kMaxSide);
  columns_ = std::clamp(static_cast<int>(std::sqrt(cells * w / h)), 1, kMaxSide);
  rows_ = std::clamp(static_cast<int>(cells / columns_), 1, kMaxSide);
  originX_ = minX, originY_ = minY;
  cellW_ = w / columns_, cellH_ = h / rows_;
  cells_.assign(static_cast<std::size_t>(columns_) * rows_, {});
  for (const std::size_t at : bounded) {
    const Box& b = boxes_[at];
    int c0, r0, c1, r1;
    cellRange(b.minX, b.minY, b.maxX, b.maxY, c0, r0, c1, r1);
    if (static_cast<long>(c1 - c0 + 1) * (r1 - r0 + 1) > kMaxCellsPerEntity) {
      large_.push_back(at);
      continue;
    }
    for (int r = r0; r <= r1; ++r)
      for (int c = c0; c <= c1; ++c) cells_[static_cast<std::size_t>(r) * columns_ + c].push_back(at);
  }
}

bool SpaceIndex::describes(const cad::BlockRecord& space) const {
  return &space == space_ && space.entities.data() == listData_ && space.entities.size() == listSize_;
}

void SpaceIndex::cellRange(double minX, double minY, double maxX, double maxY, int& c0, int& r0, int& c1,
                           int& r1) const {
  const auto cell = [](double v, double origin, double size, int count) {
    const double k = std::floor((v - origin) / size);
    if (!(k > 0)) return 0;  // NaN and the cells before the first
    return static_cast<int>(std::min(k, static_cast<double>(count - 1)));
  };
  c0 = cell(minX, originX_, cellW_, columns_), c1 = cell(maxX, originX_, cellW_, columns_);
  r0 = cell(minY, originY_, cellH_, rows_), r1 = cell(maxY, originY_, cellH_, rows_);
}

void SpaceIndex::query(cad::Point2d min, cad::Point2d max, std::vector<const cad::Entity*>& out) const {
  out.clear();
  std::vector<std::size_t> hits(unbounded_);
  ++stamp_;
  const auto meets = [&](std::size_t at) {
    const Box& b = boxes_[at];
    return b.maxX >= min.x && b.minX <= max.x && b.maxY >= min.y && b.minY <= max.y;
  };
  for (const std::size_t at : large_)
    if (meets(at)) hits.push_back(at);
  if (!cells_.empty()) {
    int c0, r0, c1, r1;
    cellRange(min.x, min.y, max.x, max.y, c0, r0, c1, r1);
    for (int r = r0; r <= r1; ++r)
      for (int c = c0; c <= c1; ++c)
        for (const std::size_t at : cells_[static_cast<std::size_t>(r) * columns_ + c]) {
          if (seen_[at] == stamp_) continue;
          seen_[at] = stamp_;
          if (meets(at)) hits.push_back(at);
        }
  }
  std::sort(hits.begin(), hits.end());
  out.reserve(hits.size());
  for (const std::size_t at : hits) out.push_back(entities_[at]);
}

}  // namespace tv::render
