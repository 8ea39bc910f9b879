// The cleaning of traced segments: collinear merging, chaining into loops, outlines with holes.
#include "signing/sign_boundary.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <tuple>

#include "../support/fake_editor.h"

namespace tv::signing {
namespace {

class PrintingEditor : public test_support::FakeEditor {
 public:
  std::string printed;
  void print(std::string_view text) override { printed += text; }
};

SegmentList Segments(const std::vector<std::array<double, 4>>& coordinates) {
  SegmentList list;
  for (const auto& c : coordinates) list.push_back({{c[0], c[1]}, {c[2], c[3]}});
  return list;
}

// The segment's ends as "x1,y1 x2,y2", the lower end first.
std::string Text(const Segment& s) {
  Point3d a = s.start, b = s.end;
  if (std::tie(b.x, b.y) < std::tie(a.x, a.y)) std::swap(a, b);
  char text[96];
  std::snprintf(text, sizeof text, "%g,%g %g,%g", a.x, a.y, b.x, b.y);
  return text;
}

std::vector<std::string> Texts(const SegmentList& list) {
  std::vector<std::string> texts;
  for (const Segment& s : list) texts.push_back(Text(s));
  std::sort(texts.begin(), texts.end());
  return texts;
}

TEST(MergeCollinear, MergesOverlapsAndTouchesOnOneLineOnly) {
  struct Case {
    const char* what;
    std::vector<std::array<double, 4>> segments;
    std::vector<std::string> merged;
  };
  const std::vector<Case> cases = {
      {"touching end to end", {{0, 0, 1, 0}, {1, 0, 3, 0}}, {"0,0 3,0"}},
      {"overlapping, reversed", {{0, 0, 2, 0}, {3, 0, 1, 0}}, {"0,0 3,0"}},
      {"one inside the other", {{0, 0, 4, 4}, {1, 1, 2, 2}}, {"0,0 4,4"}},
      {"a duplicate", {{0, 0, 0, 5}, {0, 5, 0, 0}}, {"0,0 0,5"}},
      {"a bridge found after the first pass", {{0, 0, 1, 0}, {2, 0, 3, 0}, {1, 0, 2, 0}}, {"0,0 3,0"}},
      {"parallel at a small distance", {{0, 0, 1, 0}, {0, 0.001, 1, 0.001}}, {"0,0 1,0", "0,0.001 1,0.001"}},
      {"on one line with a gap", {{0, 0, 1, 0}, {1.1, 0, 2, 0}}, {"0,0 1,0", "1.1,0 2,0"}},
      {"meeting at a corner", {{0, 0, 1, 0}, {1, 0, 1, 1}}, {"0,0 1,0", "1,0 1,1"}},
  };
  for (const Case& c : cases) {
    PrintingEditor editor;
    SegmentList segments = Segments(c.segments);
    MergeCollinear(segments, CaptureTol);
    EXPECT_EQ(Texts(segments), c.merged) << c.what;
    const bool merged = c.merged.size() < c.segments.size();
    const std::string message = "\n签名图形中原来的" + std::to_string(c.segments.size()) + "条直线被合并为" +
                                std::to_string(c.merged.size()) + "条直线\n";
    EXPECT_EQ(editor.printed, merged ? message : "") << c.what;
  }
}

TEST(ChainLoops, ClosesChainsInAnyOrderAndDirectionAndKeepsSeedsOfOpenOnes) {
  // A square given out of order with two sides reversed, a dangling segment first, and an open
  // chain of two segments last.
  SegmentList segments = Segments({{5, 5, 6, 6},
                                   {0, 0, 1, 0},
                                   {0, 1, 1, 1},
                                   {1, 0, 1, 1},
                                   {0, 1, 0, 0},
                                   {10, 0, 11, 0},
                                   {11, 0, 11, 1}});
  SegmentList leftovers;
  LoopList loops;
  ChainLoops(segments, leftovers, loops, 0.00001);
  EXPECT_TRUE(segments.empty());
  ASSERT_EQ(loops.size(), 1u);
  const PointLoop& square = loops[0];
  ASSERT_EQ(square.size(), 5u);
  EXPECT_EQ(square.front(), square.back());
  EXPECT_EQ(square.front(), (Point3d{0, 0}));
  EXPECT_EQ(square[1], (Point3d{1, 0}));
  EXPECT_EQ(square[2], (Point3d{1, 1}));
  EXPECT_EQ(square[3], (Point3d{0, 1}));
  // Each segment that seeded a chain that stayed open, once.
  EXPECT_EQ(Texts(leftovers), (std::vector<std::string>{"10,0 11,0", "11,0 11,1", "5,5 6,6"}));
}

TEST(ChainLoops, EndsMeetOnlyCloserThanTheTolerance) {
  for (const auto& [gap, closes] : std::vector<std::pair<double, bool>>{{0.09, true}, {0.1, false}, {0.11, false}}) {
    SegmentList segments = Segments({{0, 0, 1, 0}, {1, 0, 1, 1}, {1, 1, 0, 1}, {0, 1, 0, gap}});
    SegmentList leftovers;
    LoopList loops;
    ChainLoops(segments, leftovers, loops, 0.1);
    EXPECT_EQ(loops.size(), closes ? 1u : 0u) << gap;
    EXPECT_EQ(leftovers.size(), closes ? 0u : 4u) << gap;
  }
}

PointLoop Loop(const std::vector<std::pair<double, double>>& points) {
  PointLoop loop;
  for (const auto& [x, y] : points) loop.push_back({x, y});
  loop.push_back(loop.front());
  return loop;
}

TEST(BuildOutlines, LoopsEnclosingNoAreaAreDroppedAndNoneLeftIsAFailure) {
  const PointLoop bowTie = Loop({{0, 0}, {2, 2}, {2, 0}, {0, 2}});
  const PointLoop flat = Loop({{0, 0}, {1, 0}, {2, 0}});
  const PointLoop square = Loop({{4, 0}, {5, 0}, {5, 1}, {4, 1}});

  PrintingEditor editor;
  LoopList loops{bowTie, flat};
  std::vector<std::unique_ptr<MyShape>> shapes;
  EXPECT_FALSE(BuildOutlines(loops, shapes, {}));
  EXPECT_TRUE(loops.empty());
  EXPECT_TRUE(shapes.empty());
  EXPECT_EQ(editor.printed, "\n签名边线不封闭或签名边线不在X-Y平面内!\n");

  loops = {bowTie, square, flat};
  EXPECT_TRUE(BuildOutlines(loops, shapes, {4.5, 0.5}));
  ASSERT_EQ(loops.size(), 1u);
  ASSERT_EQ(shapes.size(), 1u);
  EXPECT_EQ(shapes[0]->is_outer, 1);
  EXPECT_EQ(shapes[0]->xs, (std::vector<double>{-0.5, 0.5, 0.5, -0.5, -0.5}));
  EXPECT_EQ(shapes[0]->ys, (std::vector<double>{-0.5, -0.5, 0.5, 0.5, -0.5}));
}

}  // namespace
}  // namespace tv::signing
