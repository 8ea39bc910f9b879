// Capture of a signature from curves of a drawing: the two chaining passes, the enlargement of a
// small signature, holes by selection order, and the outlines around the centre.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "../host/host_test_support.h"
#include "signing/sign_boundary.h"

namespace tv::signing {
namespace {

class CaptureTest : public host::testing::HostDrawingTest {
 protected:
  class PrintingEditor : public test_support::FakeEditor {
   public:
    std::string printed;
    void print(std::string_view text) override { printed += text; }
  };

  // A rectangle of four lines from (x, y), its sides at the heights `z`.
  ObjectIdArray rectangle(double x, double y, double w, double h, std::array<double, 4> z = {}) {
    return {addLine({x, y, z[0]}, {x + w, y, z[0]}).id, addLine({x + w, y, z[1]}, {x + w, y + h, z[1]}).id,
            addLine({x + w, y + h, z[2]}, {x, y + h, z[2]}).id, addLine({x, y + h, z[3]}, {x, y, z[3]}).id};
  }

  PrintingEditor editor;
};

ObjectIdArray Joined(ObjectIdArray a, const ObjectIdArray& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

TEST_F(CaptureTest, OutlinesAroundTheCentreEnlargedWhenSmall) {
  struct Case {
    const char* what;
    std::function<ObjectIdArray()> draw;
    std::vector<std::int32_t> outer;  // is_outer of each shape in order
    double width, height;
  };
  const double k = 200.0 / 15;
  const std::vector<Case> cases = {
      {"10 x 5 enlarged by 200 / 15", [&] { return rectangle(100, 100, 10, 5); }, {1}, 10 * k, 5 * k},
      {"300 x 100 kept", [&] { return rectangle(-50, 7, 300, 100); }, {1}, 300, 100},
      {"lines at different heights", [&] { return rectangle(0, 0, 150, 50, {0, 3, -2, 8}); }, {1}, 150, 50},
      {"a counter after its letter is a hole",
       [&] { return Joined(rectangle(0, 0, 100, 100), rectangle(30, 30, 40, 40)); }, {1, 0}, 100, 100},
      {"a counter before its letter is an outline of its own",
       [&] { return Joined(rectangle(30, 30, 40, 40), rectangle(0, 0, 100, 100)); }, {1, 1}, 100, 100},
      {"two letters side by side", [&] { return Joined(rectangle(0, 0, 40, 100), rectangle(60, 0, 40, 100)); },
       {1, 1}, 100, 100},
  };
  for (const Case& c : cases) {
    TV_Sign sign;
    ASSERT_TRUE(CaptureSignFrom(sign, c.draw())) << c.what;
    std::vector<std::int32_t> outer;
    double maxX = 0, maxY = 0, minX = 0, minY = 0;
    for (const auto& shape : sign.shapes) {
      outer.push_back(shape->is_outer);
      EXPECT_EQ(shape->xs.size(), shape->ys.size());
      for (double x : shape->xs) maxX = std::max(maxX, x), minX = std::min(minX, x);
      for (double y : shape->ys) maxY = std::max(maxY, y), minY = std::min(minY, y);
    }
    EXPECT_EQ(outer, c.outer) << c.what;
    EXPECT_NEAR(sign.width, c.width, 1e-9) << c.what;
    EXPECT_NEAR(sign.height, c.height, 1e-9) << c.what;
    // Stored around the origin, at the size of the record.
    EXPECT_NEAR(maxX, c.width / 2, 1e-9) << c.what;
    EXPECT_NEAR(minX, -c.width / 2, 1e-9) << c.what;
    EXPECT_NEAR(maxY, c.height / 2, 1e-9) << c.what;
    EXPECT_NEAR(minY, -c.height / 2, 1e-9) << c.what;
  }
}

TEST_F(CaptureTest, GapsCloseInTheSecondPassBelowAFifthOfTheShortestLeftover) {
  // A square of side 100 whose last side stops `gap` short of the first corner, the gap a fraction
  // of that shortened side.
  for (const auto& [fraction, closes] : std::vector<std::pair<double, bool>>{{0.1, true}, {0.19, true}, {0.5, false}}) {
    const double gap = 100 * fraction / (1 + fraction);
    const ObjectIdArray ids{addLine({0, 0}, {100, 0}).id, addLine({100, 0}, {100, 100}).id,
                            addLine({100, 100}, {0, 100}).id, addLine({0, 100}, {0, gap}).id};
    TV_Sign sign;
    editor.printed.clear();
    EXPECT_EQ(CaptureSignFrom(sign, ids), closes) << fraction;
    EXPECT_EQ(sign.shapes.size(), closes ? 1u : 0u) << fraction;
    EXPECT_EQ(editor.printed.find("签名边线不封闭或签名边线不在X-Y平面内!") != std::string::npos, !closes) << fraction;
  }
}

TEST_F(CaptureTest, TracedDuplicatesAndPiecesMergeBeforeChaining) {
  // The bottom side traced twice and in two overlapping pieces, the right side reversed.
  const ObjectIdArray ids{addLine({0, 0}, {60, 0}).id,     addLine({40, 0}, {100, 0}).id,
                          addLine({0, 0}, {100, 0}).id,    addLine({100, 50}, {100, 0}).id,
                          addLine({100, 50}, {0, 50}).id,  addLine({0, 50}, {0, 0}).id};
  TV_Sign sign;
  ASSERT_TRUE(CaptureSignFrom(sign, ids));
  ASSERT_EQ(sign.shapes.size(), 1u);
  EXPECT_EQ(sign.shapes[0]->xs.size(), 5u);  // four corners and the first again
  EXPECT_NE(editor.printed.find("\n签名图形中原来的6条直线被合并为4条直线\n"), std::string::npos) << editor.printed;
}

}  // namespace
}  // namespace tv::signing
