#include "render/plot_shapes.h"

#include <gtest/gtest.h>

#include <cmath>

#include "render/plot_colors.h"
#include "render/plotter_files.h"

namespace tv::render {
namespace {

double Length(const Polyline2d& p) {
  double l = 0;
  for (std::size_t i = 1; i < p.size(); ++i) l += p[i].distanceTo(p[i - 1]);
  return l;
}

TEST(PlotShapes, DashesRunOnAcrossCornersAndKeepDots) {
  // 10 dash, 5 gap along an L of 12 + 12: dashes [0,10], [15,24].
  const auto pieces = ApplyDashes({{0, 0}, {12, 0}, {12, 12}}, false, {10, -5});
  ASSERT_EQ(pieces.size(), 2u);
  EXPECT_NEAR(Length(pieces[0]), 10, 1e-9);
  EXPECT_NEAR(Length(pieces[1]), 9, 1e-9);
  EXPECT_NEAR(pieces[1].front().y, 3, 1e-9) << "the second dash starts after the corner";

  const auto dots = ApplyDashes({{0, 0}, {10, 0}}, false, {0, -2});
  ASSERT_EQ(dots.size(), 6u);  // at 0, 2, 4, 6, 8 and 10
  for (const auto& d : dots) EXPECT_EQ(Length(d), 0);

  // No dash at all, or a pattern below what paper shows: the line whole.
  EXPECT_EQ(ApplyDashes({{0, 0}, {10, 0}}, false, {-1}).size(), 1u);
  EXPECT_EQ(ApplyDashes({{0, 0}, {10, 0}}, false, {0.001, -0.001}).size(), 1u);
  // A closed outline is dashed all the way round.
  double sum = 0;
  for (const auto& p : ApplyDashes({{0, 0}, {10, 0}, {10, 10}, {0, 10}}, true, {5, -5})) sum += Length(p);
  EXPECT_NEAR(sum, 20, 1e-9);
}

TEST(PlotShapes, LinesAreCutToConcavePolygons) {
  // A U shape: the horizontal line at y = 8 crosses both arms and leaves through the notch.
  const Polyline2d u{{0, 0}, {10, 0}, {10, 10}, {7, 10}, {7, 3}, {3, 3}, {3, 10}, {0, 10}};
  const auto inside = ClipLineToPolygon({{-5, 8}, {15, 8}}, u);
  ASSERT_EQ(inside.size(), 2u);
  EXPECT_NEAR(inside[0].front().x, 0, 1e-9);
  EXPECT_NEAR(inside[0].back().x, 3, 1e-9);
  EXPECT_NEAR(inside[1].front().x, 7, 1e-9);
  EXPECT_NEAR(inside[1].back().x, 10, 1e-9);
  EXPECT_TRUE(ClipLineToPolygon({{20, 20}, {30, 30}}, u).empty());
  EXPECT_FALSE(IsConvex(u));
  EXPECT_TRUE(IsConvex({{0, 0}, {1, 0}, {1, 1}, {0, 1}}));
}

TEST(PlotShapes, PolygonsCutToConvexClip) {
  const Polyline2d square{{0, 0}, {10, 0}, {10, 10}, {0, 10}};
  const auto cut = ClipPolygonToConvex({{5, 5}, {15, 5}, {15, 15}, {5, 15}}, square);
  ASSERT_EQ(cut.size(), 4u);
  for (auto p : cut) EXPECT_TRUE(p.x >= 5 - 1e-9 && p.x <= 10 + 1e-9 && p.y >= 5 - 1e-9 && p.y <= 10 + 1e-9);
  // Clockwise clip outlines work as well.
  EXPECT_EQ(ClipPolygonToConvex({{5, 5}, {15, 5}, {15, 15}}, {{0, 10}, {10, 10}, {10, 0}, {0, 0}}).size(), 3u);
  EXPECT_TRUE(ClipPolygonToConvex({{20, 20}, {30, 20}, {30, 30}}, square).empty());
}

TEST(PlotShapes, SpansInsideFollowTheEvenOddRule) {
  // A square with a square hole: a line through both gives two spans.
  const std::vector<Polyline2d> rings{{{0, 0}, {10, 0}, {10, 10}, {0, 10}}, {{3, 3}, {7, 3}, {7, 7}, {3, 7}}};
  const auto spans = SpansInside(rings, {-1, 5}, {1, 0});
  ASSERT_EQ(spans.size(), 2u);
  EXPECT_NEAR(spans[0].first, 1, 1e-9);
  EXPECT_NEAR(spans[0].second, 4, 1e-9);
  EXPECT_NEAR(spans[1].first, 8, 1e-9);
  EXPECT_NEAR(spans[1].second, 11, 1e-9);
  // Through a vertex the line counts one crossing there, not two.
  EXPECT_EQ(SpansInside({{{0, 0}, {10, 0}, {10, 10}, {0, 10}}}, {-1, 10}, {1, 0}).size(), 0u);
  EXPECT_EQ(SpansInside({{{5, 0}, {10, 5}, {5, 10}, {0, 5}}}, {-1, 5}, {1, 0}).size(), 1u);
}

TEST(PlotColors, PaletteAndStyles) {
  EXPECT_EQ(AciColor(1), (Rgb{255, 0, 0}));
  EXPECT_EQ(AciColor(5), (Rgb{0, 0, 255}));
  EXPECT_EQ(AciColor(10), (Rgb{255, 0, 0}));
  EXPECT_EQ(AciColor(11), (Rgb{255, 127, 127}));
  EXPECT_EQ(AciColor(14), (Rgb{127, 0, 0}));
  EXPECT_EQ(AciColor(13), (Rgb{165, 82, 82}));
  EXPECT_EQ(AciColor(250), (Rgb{51, 51, 51}));
  // White on the screen is black on paper; true colours win over the index.
  EXPECT_EQ(PenOf(PlotStyle::objectColors(), 7, -1, 0.25).color, (Rgb{0, 0, 0}));
  EXPECT_EQ(PenOf(PlotStyle::objectColors(), 1, 0x123456, 0.25).color, (Rgb{0x12, 0x34, 0x56}));
  EXPECT_EQ(PenOf(PlotStyle::allBlack(), 1, 0x123456, 0.25).color, (Rgb{0, 0, 0}));
  EXPECT_EQ(PenOf(PlotStyle::allBlue(), 3, -1, 0.25).color, (Rgb{0, 0, 255}));
  EXPECT_DOUBLE_EQ(PenOf(PlotStyle::allBlue(), 3, -1, 0.35).widthMm, 0.35);
}

TEST(PlotColors, StyleTablesGivePensPerColourIndex) {
  PlotStyleTable table;
  table.lineweightsMm = {0.0, 0.05, 0.1, 0.15, 0.2, 0.25, 0.3};
  table.styles.resize(255);
  for (auto& s : table.styles) s.color = static_cast<std::int32_t>(0xC30000FFu);  // blue pens
  table.styles[0].color = static_cast<std::int32_t>(0xC3FFFFFFu);               // colour 1: the object's
  table.styles[1].color = -1;
  table.styles[2].objectLineweight = false;
  table.styles[2].lineweightIndex = 6;
  const PlotStyle style = PlotStyleFromTable(table);
  EXPECT_EQ(PenOf(style, 1, -1, 0.25).color, (Rgb{255, 0, 0}));
  EXPECT_EQ(PenOf(style, 2, -1, 0.25).color, (Rgb{255, 255, 0}));
  EXPECT_EQ(PenOf(style, 3, -1, 0.25).color, (Rgb{0, 0, 255}));
  EXPECT_DOUBLE_EQ(PenOf(style, 3, -1, 0.25).widthMm, 0.3);
  EXPECT_DOUBLE_EQ(PenOf(style, 4, -1, 0.25).widthMm, 0.25);
  // Colours outside the table (ByLayer left unresolved) keep the object's look.
  EXPECT_EQ(PenOf(style, 0, -1, 0.25).color, (Rgb{0, 0, 0}));
}

}  // namespace
TEST(PlotShapes, ArcChordsStayOnTheEllipseWithinTheTolerance) {
  struct Case {
    const char* name;
    PageArc arc;
    double tolerance;
  };
  const double pi = cad::kPi;
  const Case cases[] = {
      {"circle", {{50, 40}, {20, 0}, {0, 20}, 0, 2 * pi, true}, 0.05},
      {"quarter", {{0, 0}, {10, 0}, {0, 10}, pi / 2, pi, false}, 0.05},
      {"turned ellipse", {{5, 5}, {30, 30}, {-5, 5}, 0.3, 0.3 + 2 * pi, true}, 0.02},
      {"mirrored arc", {{0, 0}, {0, 8}, {8, 0}, 0, 1, false}, 0.01},
      {"coarse", {{0, 0}, {1, 0}, {0, 1}, 0, 2 * pi, true}, 5},
  };
  for (const Case& c : cases) {
    const Polyline2d points = ArcPoints(c.arc, c.tolerance);
    ASSERT_GE(points.size(), 2u) << c.name;
    const auto at = [&](double t) { return c.arc.center + c.arc.u * std::cos(t) + c.arc.v * std::sin(t); };
    EXPECT_LT(points.front().distanceTo(at(c.arc.start)), 1e-9) << c.name;
    if (c.arc.closed) {
      EXPECT_GE(points.size(), 8u) << c.name << ": a whole curve never collapses to a few chords";
      EXPECT_GT(points.back().distanceTo(points.front()), 1e-9) << c.name << ": the stroke closes it";
    } else {
      EXPECT_LT(points.back().distanceTo(at(c.arc.end)), 1e-9) << c.name;
    }
    // Each chord's middle lies near the curve between its ends: search the parameter there.
    const double span = c.arc.end - c.arc.start;
    const std::size_t chords = c.arc.closed ? points.size() : points.size() - 1;
    double worst = 0;
    for (std::size_t i = 0; i < chords; ++i) {
      const cad::Point2d a = points[i], b = points[(i + 1) % points.size()];
      const cad::Point2d mid{(a.x + b.x) / 2, (a.y + b.y) / 2};
      const double t = c.arc.start + span * (i + 0.5) / static_cast<double>(chords);
      worst = std::max(worst, mid.distanceTo(at(t)));
    }
    if (c.tolerance < 1) {
      EXPECT_LE(worst, c.tolerance * 1.05) << c.name;
    }
  }
}

}  // namespace tv::render
