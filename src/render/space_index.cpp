#include "render/space_index.h"

#include <algorithm>
#include <cmath>

#include "cad/entity_geometry.h"
#include "render/font_metrics.h"

namespace tv::render {

namespace {

const cad::TextMeasurer& Fonts() {
  static const FontTextMeasurer measurer;
  return measurer;
}

}  // namespace

SpaceIndex::SpaceIndex(const cad::Database& db, const cad::BlockRecord& space)
    : space_(&space), listData_(space.entities.data()), listSize_(space.entities.size()) {
  cad::ExtentsCache cache(&Fonts());
  cad::BoxGrid::Box all{INFINITY, INFINITY, -INFINITY, -INFINITY};
  std::vector<cad::BoxGrid::Box> boxes;
  std::vector<bool> bounded;
  for (const auto& owned : space.entities) {
    const cad::Entity& e = *owned;
    if (e.isErased()) continue;
    entities_.push_back(&e);
    const std::optional<cad::Extents3d> ext = cache.entityExtents(e, db);
    if (!ext || ext->isEmpty() || !std::isfinite(ext->min.x + ext->min.y + ext->max.x + ext->max.y)) {
      boxes.push_back({});
      bounded.push_back(false);
      continue;
    }
    boxes.push_back({ext->min.x, ext->min.y, ext->max.x, ext->max.y});
    bounded.push_back(true);
    all = {std::min(all.minX, ext->min.x), std::min(all.minY, ext->min.y), std::max(all.maxX, ext->max.x),
           std::max(all.maxY, ext->max.y)};
  }
  const auto count = static_cast<std::size_t>(std::count(bounded.begin(), bounded.end(), true));
  grid_.reset(count > 0 ? &all : nullptr, count);
  for (std::uint32_t at = 0; at < entities_.size(); ++at) {
    if (bounded[at]) grid_.add(at, boxes[at]);
    else grid_.addUnbounded(at);  // without extents: always drawn
  }
}

bool SpaceIndex::describes(const cad::BlockRecord& space) const {
  return &space == space_ && space.entities.data() == listData_ && space.entities.size() == listSize_;
}

void SpaceIndex::query(cad::Point2d min, cad::Point2d max, std::vector<const cad::Entity*>& out) const {
  out.clear();
  grid_.query({min.x, min.y, max.x, max.y}, hits_);
  out.reserve(hits_.size());
  for (const std::uint32_t at : hits_) out.push_back(entities_[at]);
}

}  // namespace tv::render
