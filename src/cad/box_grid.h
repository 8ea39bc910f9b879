#pragma once
// Items of a list (entities of a space, by their place in it) filed by x, y box under the cells
// of a uniform grid, so that a query box finds the few items it can meet. Items can be filed,
// moved and dropped one by one; an item beyond the grid's bounds goes to the edge cells, where a
// query beyond them looks. The plot engine's window index and the selections' index stand on it.
#include <cstdint>
#include <vector>

namespace tv::cad {

class BoxGrid {
 public:
  struct Box {
    double minX = 0, minY = 0, maxX = 0, maxY = 0;
  };

  // Empties the grid and lays it over `bounds` for about `items` bounded items (none: one cell).
  void reset(const Box* bounds, std::size_t items);

  // Files item `at` under `box`; an item without a finite box is met by every query.
  void add(std::uint32_t at, const Box& box);
  void addUnbounded(std::uint32_t at);
  // Takes item `at` out (no effect when it is not filed).
  void remove(std::uint32_t at);
  bool filed(std::uint32_t at) const { return at < state_.size() && state_[at] != State::Out; }
  const Box& boxOf(std::uint32_t at) const { return boxes_[at]; }
  bool bounded(std::uint32_t at) const { return at < state_.size() && state_[at] != State::Out && state_[at] != State::Unbounded; }

  // The items whose box meets `box`, and the unbounded ones, ascending.
  void query(const Box& box, std::vector<std::uint32_t>& out) const;

 private:
  enum class State : std::uint8_t { Out, Cells, Large, Unbounded };
  void grow(std::uint32_t at);
  void cellRange(const Box& b, int& c0, int& r0, int& c1, int& r1) const;

  std::vector<Box> boxes_;    // by item
  std::vector<State> state_;  // by item
  std::vector<std::uint32_t> unbounded_, large_;
  double originX_ = 0, originY_ = 0, cellW_ = 1, cellH_ = 1;
  int columns_ = 1, rows_ = 1;
  std::vector<std::vector<std::uint32_t>> cells_{1};  // row-major
  mutable std::vector<std::uint32_t> seen_;           // query stamp per item
  mutable std::uint32_t stamp_ = 0;
};

}  // namespace tv::cad
