#pragma once
// A text measurer with round numbers, so that tests can compute text boxes by hand: every
// character is half an em wide, ascent 1, descent 1/4.
#include <string_view>

#include "cad/entity_geometry.h"

namespace tv::test_support {

class HalfEm final : public cad::TextMeasurer {
 public:
  double advance(std::string_view s, const cad::TextStyle*) const override {
    double n = 0;
    for (unsigned char c : s) n += (c & 0xC0) != 0x80;
    return n * 0.5;
  }
  double ascent(const cad::TextStyle*) const override { return 1; }
  double descent(const cad::TextStyle*) const override { return 0.25; }
};
inline const HalfEm kHalfEm;

}  // namespace tv::test_support
