#include "cad/box_grid.h"

#include <algorithm>
#include <cmath>

namespace tv::cad {

namespace {

// About this many items a cell, in cells as square as the bounds allow.
constexpr double kItemsPerCell = 4;
constexpr int kMaxSide = 1024;
constexpr double kMaxCells = 1 << 19;
// An item over more cells than this (a frame around a whole sheet) is kept on a list of its own.
constexpr long kMaxCellsPerItem = 1024;

}  // namespace

void BoxGrid::reset(const Box* bounds, std::size_t items) {
  boxes_.clear();
  state_.clear();
  seen_.clear();
  stamp_ = 0;
  unbounded_.clear();
  large_.clear();
  columns_ = rows_ = 1;
  originX_ = originY_ = 0;
  cellW_ = cellH_ = 1;
  if (bounds && items > 0) {
    const double w = std::max(bounds->maxX - bounds->minX, 1e-9), h = std::max(bounds->maxY - bounds->minY, 1e-9);
    const double cells = std::clamp(static_cast<double>(items) / kItemsPerCell, 1.0, kMaxCells);
    columns_ = std::clamp(static_cast<int>(std::sqrt(cells * w / h)), 1, kMaxSide);
    rows_ = std::clamp(static_cast<int>(cells / columns_), 1, kMaxSide);
    originX_ = bounds->minX, originY_ = bounds->minY;
    cellW_ = w / columns_, cellH_ = h / rows_;
  }
  cells_.assign(static_cast<std::size_t>(columns_) * static_cast<std::size_t>(rows_), {});
}

void BoxGrid::grow(std::uint32_t at) {
  if (at < state_.size()) return;
  boxes_.resize(at + 1);
  state_.resize(at + 1, State::Out);
  seen_.resize(at + 1, 0);
}

void BoxGrid::cellRange(const Box& b, int& c0, int& r0, int& c1, int& r1) const {
  const auto cell = [](double v, double origin, double size, int count) {
    const double k = std::floor((v - origin) / size);
    if (!(k > 0)) return 0;  // NaN and the cells before the first
    return static_cast<int>(std::min(k, static_cast<double>(count - 1)));
  };
  c0 = cell(b.minX, originX_, cellW_, columns_), c1 = cell(b.maxX, originX_, cellW_, columns_);
  r0 = cell(b.minY, originY_, cellH_, rows_), r1 = cell(b.maxY, originY_, cellH_, rows_);
}

void BoxGrid::add(std::uint32_t at, const Box& box) {
  remove(at);
  grow(at);
  boxes_[at] = box;
  int c0, r0, c1, r1;
  cellRange(box, c0, r0, c1, r1);
  if (static_cast<long>(c1 - c0 + 1) * (r1 - r0 + 1) > kMaxCellsPerItem) {
    state_[at] = State::Large;
    large_.push_back(at);
    return;
  }
  state_[at] = State::Cells;
  for (int r = r0; r <= r1; ++r)
    for (int c = c0; c <= c1; ++c) cells_[static_cast<std::size_t>(r) * columns_ + c].push_back(at);
}

void BoxGrid::addUnbounded(std::uint32_t at) {
  remove(at);
  grow(at);
  boxes_[at] = {};
  state_[at] = State::Unbounded;
  unbounded_.push_back(at);
}

void BoxGrid::remove(std::uint32_t at) {
  if (at >= state_.size()) return;
  const auto drop = [at](std::vector<std::uint32_t>& list) {
    if (auto it = std::find(list.begin(), list.end(), at); it != list.end()) {
      *it = list.back();
      list.pop_back();
    }
  };
  switch (state_[at]) {
    case State::Out: return;
    case State::Unbounded: drop(unbounded_); break;
    case State::Large: drop(large_); break;
    case State::Cells: {
      int c0, r0, c1, r1;
      cellRange(boxes_[at], c0, r0, c1, r1);
      for (int r = r0; r <= r1; ++r)
        for (int c = c0; c <= c1; ++c) drop(cells_[static_cast<std::size_t>(r) * columns_ + c]);
      break;
    }
  }
  state_[at] = State::Out;
}

void BoxGrid::query(const Box& box, std::vector<std::uint32_t>& out) const {
  out.assign(unbounded_.begin(), unbounded_.end());
  const auto meets = [&](std::uint32_t at) {
    const Box& b = boxes_[at];
    return b.maxX >= box.minX && b.minX <= box.maxX && b.maxY >= box.minY && b.minY <= box.maxY;
  };
  for (const std::uint32_t at : large_)
    if (meets(at)) out.push_back(at);
  if (++stamp_ == 0) {
    std::fill(seen_.begin(), seen_.end(), 0);
    stamp_ = 1;
  }
  int c0, r0, c1, r1;
  cellRange(box, c0, r0, c1, r1);
  for (int r = r0; r <= r1; ++r)
    for (int c = c0; c <= c1; ++c)
      for (const std::uint32_t at : cells_[static_cast<std::size_t>(r) * columns_ + c]) {
        if (seen_[at] == stamp_) continue;
        seen_[at] = stamp_;
        if (meets(at)) out.push_back(at);
      }
  std::sort(out.begin(), out.end());
}

}  // namespace tv::cad
