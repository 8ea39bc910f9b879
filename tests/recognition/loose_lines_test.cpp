// Frames of loose lines: segments from lines and polylines, the sorted families, and the pairing
// of horizontals joined by verticals into sheets.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "host/command_prologue.h"
#include "host/wrappers.h"
#include "recognition/loose_lines.h"
#include "recognition/loose_lines_internal.h"
#include "recognition/sheet_geometry.h"
#include "drawing_fixture.h"

namespace tv::recognition {
namespace {

using test::DrawingTest;
using Sources = std::array<ObjectId, 4>;
using Box = std::array<double, 4>;  // minX, minY, maxX, maxY

class LooseLinesTest : public DrawingTest {
 protected:
  void TearDown() override {
    // Sheets erase their markers, so they go while the drawing is still open.
    result_.clear();
    master_.clear();
    host::ShowTimings = false;
    DrawingTest::TearDown();
  }

  ObjectId Line(Point2d a, Point2d b) { return Keep(AddLine(Point3d{a}, Point3d{b})); }
  ObjectId Polyline(std::vector<Point2d> points, bool closed = false) { return Keep(AddLw(std::move(points), closed)); }
  ObjectId Keep(ObjectId id) {
    pending_.push_back(id);
    return id;
  }

  // Four lines, each drawn in its own direction; the ids in the order a sheet keeps them.
  Sources Frame(Point2d min, Point2d max) {
    const ObjectId bottom = Line(min, {max.x, min.y});
    const ObjectId top = Line(max, {min.x, max.y});
    const ObjectId left = Line({min.x, max.y}, min);
    const ObjectId right = Line({max.x, min.y}, max);
    return {bottom, top, left, right};
  }

  // A sheet of the earlier stages, as the finder would get it.
  Plot_Drawing1& ExistingSheet(Point2d min, Point2d max) {
    auto sheet = std::make_unique<Plot_Drawing1>();
    sheet->minX = min.x;
    sheet->minY = min.y;
    sheet->maxX = max.x;
    sheet->maxY = max.y;
    master_.push_back(std::move(sheet));
    return *master_.back();
  }

  void OpenOnce() {
    if (!session_) Open();
    layer_ = host::FindOrAddLayer("Temp_PlotLayer");
  }

  void Split() {
    OpenOnce();
    // The records the scan keeps; lines along neither axis never get one.
    for (ObjectId id : pending_) {
      const host::Entity e = host::OpenEntity(id);
      MakeTempId(e.kind() == host::EntityClass::Line ? TempKind::Line : TempKind::Polyline, e, remaining_);
    }
    pending_.clear();
    SplitIntoSegments(master_, remaining_, segments_);
  }

  void Find() {
    Split();
    FindLooseRectangles(segments_, host::ModelSpaceId(), layer_, result_, [this] { ++ticks_; });
  }

  std::vector<Sources> FoundSources() const {
    std::vector<Sources> out;
    for (const auto& s : result_) out.push_back(s->sourceIds);
    return out;
  }

  static void ExpectSheetBox(const Plot_Drawing1& s, Point2d min, Point2d max, double tol = 1e-9) {
    EXPECT_NEAR(s.minX, min.x, tol);
    EXPECT_NEAR(s.minY, min.y, tol);
    EXPECT_NEAR(s.maxX, max.x, tol);
    EXPECT_NEAR(s.maxY, max.y, tol);
  }

  ObjectIdArray pending_;  // drawn since the last split
  TempIdArray remaining_;
  SheetList master_;
  SegmentArrays segments_;
  SheetList result_;
  ObjectId layer_;
  int ticks_ = 0;
};

// ---- sheets found ------------------------------------------------------------------------------------

TEST_F(LooseLinesTest, FourLinesMeetingExactlyMakeOneSheetEach) {
  const Sources first = Frame({0, 0}, {420, 297});
  const Sources second = Frame({1000, 500}, {1297, 920});  // upright; also the rightmost and topmost lines
  Find();

  ASSERT_EQ(result_.size(), 2u);
  EXPECT_EQ(FoundSources(), (std::vector<Sources>{first, second}));
  for (const auto& s : result_) {
    EXPECT_EQ(s->kind, SheetKind::Lines);
    EXPECT_EQ(s->spaceId, host::ModelSpaceId());
    EXPECT_FALSE(s->markerId.isNull());
    EXPECT_EQ(s->unitFactor, 1.0);
  }
  ExpectSheetBox(*result_[0], {0, 0}, {420, 297});
  ExpectSheetBox(*result_[1], {1000, 500}, {1297, 920});
  EXPECT_TRUE(result_[1]->rotated);
  EXPECT_EQ(ticks_, 0);
}

TEST_F(LooseLinesTest, CornersMustMeetWithinATwoThousandthOfTheSides) {
  // Squares of 2000: the tolerance is 1 everywhere. Each square is opened at one corner.
  const auto square = [&](double x0, double leftLift, double bottomShort) {
    Line({x0, 0}, {x0 + 2000 - bottomShort, 0});
    Line({x0, 2000}, {x0 + 2000, 2000});
    Line({x0, leftLift}, {x0, 2000});
    Line({x0 + 2000, 0}, {x0 + 2000, 2000});
  };
  square(0, 0.9, 0);
  square(10000, 0, 0.9);
  square(20000, 1.1, 0);
  square(30000, 0, 1.1);
  Find();

  ASSERT_EQ(result_.size(), 2u);
  ExpectSheetBox(*result_[0], {0, 0}, {2000, 2000});
  ExpectSheetBox(*result_[1], {10000, 0}, {12000, 2000});
}

TEST_F(LooseLinesTest, LinesThatOvershootTheirCornersMakeNoSheet) {
  // Crossing at the corners is not meeting there: only end points count.
  Line({-10, 0}, {2010, 0});
  Line({-10, 1000}, {2010, 1000});
  Line({0, -10}, {0, 1010});
  Line({2000, -10}, {2000, 1010});
  // One corner overshot is enough.
  Line({5000, 0}, {7000, 0});
  Line({5000, 1000}, {7000, 1000});
  Line({5000, 0}, {5000, 1000});
  Line({7000, 0}, {7000, 1030});
  Find();
  EXPECT_TRUE(result_.empty());
}

TEST_F(LooseLinesTest, NearlyStraightLinesCountUpToAThousandthOfTheirLength) {
  // Frames of 4000 by 2000 with a leaning bottom or left side.
  const auto frame = [&](double x0, double bottomRise, double leftLean) {
    Line({x0, 0}, {x0 + 4000, bottomRise});
    Line({x0 + leftLean, 2000}, {x0 + 4000, 2000});
    Line({x0, 0}, {x0 + leftLean, 2000});
    Line({x0 + 4000, bottomRise}, {x0 + 4000, 2000});
  };
  frame(0, 3.5, 0);        // under 0.1% of 4000
  frame(10000, 0, 1.5);    // under 0.1% of 2000
  frame(20000, 4.5, 0);    // slanted: dropped
  frame(30000, 0, 2.5);    // slanted: dropped
  Find();

  ASSERT_EQ(result_.size(), 2u);
  ExpectSheetBox(*result_[0], {0, 0}, {4000, 2000});
  ExpectSheetBox(*result_[1], {10000, 0}, {14000, 2000});
}

TEST_F(LooseLinesTest, PolylineSegmentsServeAsSides) {
  // Bottom and right as one open polyline, top and left as lines.
  const ObjectId corner = Polyline({{0, 0}, {3000, 0}, {3000, 2000}});
  const ObjectId top = Line({0, 2000}, {3000, 2000});
  const ObjectId left = Line({0, 0}, {0, 2000});
  // A closed polyline gives its closing side too; a line meeting its sides midway changes nothing.
  const ObjectId outline = Polyline({{5000, 0}, {8000, 0}, {8000, 2000}, {5000, 2000}}, true);
  Line({6000, 0}, {6000, 2000});
  // A closed 2D polyline repeating its first corner a hair away: the hair is no segment.
  const ObjectId old = Keep(AddPolyline({{10000, 0}, {13000, 0}, {13000, 2000}, {10000, 2000}, {10000, 2e-06}}, true, false));
  Find();

  EXPECT_EQ(FoundSources(), (std::vector<Sources>{{corner, top, left, corner},
                                                  {outline, outline, outline, outline},
                                                  {old, old, old, old}}));
  ASSERT_EQ(result_.size(), 3u);
  ExpectSheetBox(*result_[0], {0, 0}, {3000, 2000});
  ExpectSheetBox(*result_[2], {10000, 0}, {13000, 2000});
}

TEST_F(LooseLinesTest, TitleStripGivesOuterAndInnerAndPruningKeepsTheOuter) {
  const Sources frame = Frame({0, 0}, {4200, 2970});
  // The strip along the bottom, drawn as an open polyline sitting on the frame's bottom line.
  const ObjectId strip = Polyline({{0, 0}, {0, 300}, {4200, 300}, {4200, 0}});
  Find();

  ASSERT_EQ(result_.size(), 2u);
  // One bottom line, two tops, nearest first.
  EXPECT_EQ(FoundSources(), (std::vector<Sources>{{frame[0], strip, strip, strip}, frame}));
  PruneSheets(result_);
  ASSERT_EQ(result_.size(), 1u);
  EXPECT_EQ(result_[0]->sourceIds, frame);
  EXPECT_FALSE(result_[0]->hasContent);  // the strip reaches the frame
}

TEST_F(LooseLinesTest, OpenShapesAndLinesAtTheEdgeOfTheFamiliesMakeNothing) {
  // Two equal horizontals, verticals at one side only, the other falling short.
  Line({0, 0}, {1000, 0});
  Line({0, 500}, {1000, 500});
  Line({0, 0}, {0, 500});
  Line({1000, 0}, {1000, 400});
  // At the far right and top: the rightmost vertical with horizontals leaving it to the right, and
  // the topmost horizontal with verticals standing on it.
  Line({9000, 9000}, {9000, 9500});
  Line({9000, 9000}, {9800, 9000});
  Line({9000, 9500}, {9800, 9500});
  Line({3000, 9900}, {4000, 9900});
  Line({3000, 9900}, {3000, 9950});
  Line({4000, 9900}, {4000, 9950});
  Find();
  EXPECT_TRUE(result_.empty());
}

TEST_F(LooseLinesTest, FramesDrawnInAUcsAreFoundInItsCoordinates) {
  const Matrix3d ucs = Matrix3d::translation({500, -200, 0}) * Matrix3d::rotation(DegToRad(30));
  const auto world = [&](Point2d p) { return ucs.transform(Point3d{p}).to2d(); };
  Line(world({0, 0}), world({2000, 0}));
  Line(world({2000, 1000}), world({0, 1000}));
  Line(world({0, 0}), world({0, 1000}));
  Polyline({world({2000, 0}), world({2000, 1000})});
  OpenOnce();
  UseUcs(ucs);
  Find();

  ASSERT_EQ(result_.size(), 1u);
  ExpectSheetBox(*result_[0], {0, 0}, {2000, 1000}, 1e-6);
}

TEST_F(LooseLinesTest, FramesAtASlantToTheWorkingAxesAreNoFrames) {
  const Matrix3d turn = Matrix3d::rotation(DegToRad(30));
  const auto world = [&](Point2d p) { return turn.transform(Point3d{p}).to2d(); };
  Line(world({0, 0}), world({2000, 0}));
  Line(world({2000, 1000}), world({0, 1000}));
  Line(world({0, 0}), world({0, 1000}));
  Line(world({2000, 0}), world({2000, 1000}));
  Find();
  EXPECT_TRUE(segments_.hIds.empty());
  EXPECT_TRUE(segments_.vIds.empty());
  EXPECT_TRUE(result_.empty());
}

TEST_F(LooseLinesTest, EachBatchOfFoundSheetsClearsWhatLiesInside) {
  // 300 frames in a row, each holding a smaller frame. The batch purge after the 300th bottom
  // takes the small frames' lines out before they are paired.
  for (int n = 0; n < 300; ++n) {
    const double x = n * 1200.0;
    Frame({x, 0}, {x + 1000, 1000});
    Frame({x + 100, 100}, {x + 900, 900});
  }
  // A last frame above the row is found after the purge; its inner frame stays, since only the
  // purges clear insides and pruning is left to the caller.
  Frame({0, 5000}, {1000, 6000});
  Frame({100, 5100}, {900, 5900});
  Find();

  EXPECT_EQ(ticks_, 1);
  ASSERT_EQ(result_.size(), 302u);
  for (int n = 0; n < 300; ++n) ExpectSheetBox(*result_[n], {n * 1200.0, 0}, {n * 1200.0 + 1000, 1000});
  ExpectSheetBox(*result_[300], {0, 5000}, {1000, 6000});
  ExpectSheetBox(*result_[301], {100, 5100}, {900, 5900});
}

TEST_F(LooseLinesTest, StagesReportTheirTexts) {
  Frame({0, 0}, {420, 297});
  OpenOnce();
  host::ShowTimings = true;
  out_.str("");
  Find();
  const std::string out = out_.str();
  std::size_t at = 0;
  for (const char* stage : {"\t\t横线从下到上排列--耗时", "\t\t竖线从左到右排列--耗时", "\t\t只保留两端均有竖线相连的横线--耗时",
                            "\t\t只保留两端均有横线相连的竖线--耗时", "\t\t寻找矩形--耗时"}) {
    const std::size_t found = out.find(stage, at);
    ASSERT_NE(found, std::string::npos) << stage;
    at = found + 1;
  }
}

// ---- segments --------------------------------------------------------------------------------------

TEST_F(LooseLinesTest, SegmentsStrictlyInsideASheetAreItsContent) {
  Plot_Drawing1& sheet = ExistingSheet({0, 0}, {1000, 1000});  // inner box 20..980
  Plot_Drawing1& empty = ExistingSheet({2000, 0}, {3000, 1000});
  Plot_Drawing1& overlapping = ExistingSheet({500, 50}, {1500, 950});  // inner box 520..1480, 68..932
  Line({600, 100}, {900, 100});  // in both: the first sheet takes it
  Polyline({{100, 200}, {100, 900}, {500, 900}});
  const ObjectId onFrame = Line({0, 0}, {1000, 0});
  const ObjectId crossing = Line({500, 500}, {1500, 500});
  const ObjectId touching = Line({20, 600}, {500, 600});  // on the inner box's edge
  Split();

  EXPECT_TRUE(sheet.hasContent);
  EXPECT_FALSE(empty.hasContent);
  EXPECT_FALSE(overlapping.hasContent);
  EXPECT_EQ(segments_.hIds, (ObjectIdArray{onFrame, crossing, touching}));
  EXPECT_TRUE(segments_.vIds.empty());

  remaining_.clear();
  Line({1100, 500}, {1400, 500});  // only in the later sheet
  Split();
  EXPECT_TRUE(overlapping.hasContent);
  EXPECT_EQ(segments_.hIds.size(), 3u);
}

TEST_F(LooseLinesTest, SegmentContentAgreesBetweenTheWholeSplitAndSingleSegments) {
  // Sheets in rows, one large sheet ahead of them and others behind that overlap them or hold
  // them, and lines all over: which sheet takes a segment must not depend on the way in.
  std::mt19937 random(7);
  std::uniform_real_distribution<double> coord(-200.0, 5200.0), length(1.0, 300.0);
  std::vector<std::pair<Point2d, Point2d>> lines;
  for (int n = 0; n < 400; ++n) {
    const Point2d a{coord(random), coord(random)};
    // Along the axes only: the scan keeps no other line.
    const double l = length(random);
    const Point2d b = n % 2 == 0 ? Point2d{a.x + l, a.y} : Point2d{a.x, a.y + l};
    lines.push_back({a, b});
    Line(a, b);
  }
  const auto sheets = [](SheetList& list) {
    const auto add = [&](Box b) {
      auto s = std::make_unique<Plot_Drawing1>();
      s->minX = b[0], s->minY = b[1], s->maxX = b[2], s->maxY = b[3];
      list.push_back(std::move(s));
    };
    add({-100, -100, 1500, 2100});
    for (int r = 0; r < 5; ++r)
      for (int c = 0; c < 10; ++c) add({c * 500.0, r * 1000.0, c * 500.0 + 450.0, r * 1000.0 + 900.0});
    for (Box b : std::vector<Box>{{2000, 2000, 5100, 5100}, {40, 40, 60, 60}, {2300, 300, 3300, 700}}) add(b);
  };
  sheets(master_);
  Split();

  SheetList single;
  sheets(single);
  SegmentArrays one;
  for (auto [a, b] : lines) AddSegment(ObjectId(1), Point3d{a}, Point3d{b}, single, one);
  ASSERT_EQ(single.size(), master_.size());
  int holders = 0;
  for (std::size_t i = 0; i < single.size(); ++i) {
    EXPECT_EQ(master_[i]->hasContent, single[i]->hasContent) << i;
    holders += single[i]->hasContent;
  }
  EXPECT_GT(holders, 10);
  EXPECT_LT(holders, 45);
  EXPECT_FALSE(one.hStarts.empty());
  EXPECT_EQ(segments_.hStarts, one.hStarts);
  EXPECT_EQ(segments_.vStarts, one.vStarts);
  EXPECT_EQ(segments_.vEnds, one.vEnds);
}

// ---- the sorted families ---------------------------------------------------------------------------

// The family sort orders as a stable comparison sort by the key: ties (0 and -0, every NaN, equal
// coordinates) keep their order, infinities and NaN go to the ends.
TEST(SortSegments, OrdersAsAStableSortByTheKey) {
  std::mt19937 random(11);
  const double inf = std::numeric_limits<double>::infinity();
  for (int round = 0; round < 12; ++round) {
    const std::size_t n = round == 0 ? 1 : 1 + random() % 5000;
    std::vector<Point2d> starts, ends;
    ObjectIdArray ids;
    for (std::size_t i = 0; i < n; ++i) {
      const double pick[] = {0.0, -0.0, std::nan(""), -std::nan(""), inf, -inf, 1e300, -1e-300, 42.0, -42.0};
      const double key = random() % 3 == 0 ? pick[random() % 10] : std::uniform_real_distribution<double>(-1e6, 1e6)(random);
      starts.push_back({key, -key});
      ends.push_back({static_cast<double>(i), 0});
      ids.push_back(ObjectId(i + 1));
    }
    for (bool byY : {false, true}) {
      std::vector<std::size_t> expected(n);
      for (std::size_t i = 0; i < n; ++i) expected[i] = i;
      std::stable_sort(expected.begin(), expected.end(), [&](std::size_t a, std::size_t b) {
        return loose::KeyLess(loose::KeyOf(starts[a], byY), loose::KeyOf(starts[b], byY));
      });
      std::vector<Point2d> s = starts, e = ends;
      ObjectIdArray d = ids;
      SortSegments(s, 0, static_cast<std::ptrdiff_t>(n) - 1, byY, e, d);
      for (std::size_t k = 0; k < n; ++k) {
        ASSERT_EQ(d[k], ids[expected[k]]) << "round " << round << " place " << k;
        ASSERT_EQ(e[k].x, static_cast<double>(expected[k]));
      }
    }
  }
}

// The removal as documented: erase in place and move on, so the segment that slides into the
// place is not tested against this sheet.
void DropOneByOne(std::size_t firstH, const SheetList& sheets, SegmentArrays& s) {
  const auto inside = [](const Plot_Drawing1& sheet, Point2d p) {
    const auto& b = sheet.innerBox;
    return b[0] < p.x && p.x < b[1] && b[2] < p.y && p.y < b[3];
  };
  const auto drop = [&](ObjectIdArray& ids, std::vector<Point2d>& starts, std::vector<Point2d>& ends, std::size_t from,
                        const Plot_Drawing1& sheet) {
    for (std::size_t i = from; i < ids.size(); ++i)
      if (inside(sheet, starts[i]) && inside(sheet, ends[i])) {
        ids.erase(ids.begin() + static_cast<std::ptrdiff_t>(i));
        starts.erase(starts.begin() + static_cast<std::ptrdiff_t>(i));
        ends.erase(ends.begin() + static_cast<std::ptrdiff_t>(i));
      }
  };
  for (const auto& sheet : sheets) {
    drop(s.hIds, s.hStarts, s.hEnds, firstH, *sheet);
    drop(s.vIds, s.vStarts, s.vEnds, 0, *sheet);
  }
}

TEST_F(LooseLinesTest, DropSegmentsInSheetsMatchesTheRemovalOneByOne) {
  std::mt19937 random(11);
  std::uniform_real_distribution<double> coord(0.0, 3000.0), length(1.0, 300.0);
  SheetList sheets;
  for (auto [x0, y0, x1, y1] :
       std::vector<Box>{{0, 0, 1000, 1000}, {900, 0, 2000, 1500}, {0, 0, 3000, 3000}, {1500, 1500, 2500, 2500}, {100, 100, 600, 600}}) {
    auto s = std::make_unique<Plot_Drawing1>();
    s->minX = x0, s->minY = y0, s->maxX = x1, s->maxY = y1;
    sheets.push_back(std::move(s));
  }
  for (bool sorted : {true, false}) {
    // Enough segments for many cells of the sorted search; one in four repeats the one before,
    // so that runs of segments inside a sheet meet the spared place.
    constexpr int kCount = 6000;
    SegmentArrays s;
    for (int n = 0; n < kCount; ++n) {
      const bool repeat = n > 0 && n % 4 == 0;
      const Point2d h = repeat ? s.hStarts.back() : Point2d{coord(random), coord(random)};
      const Point2d v = repeat ? s.vStarts.back() : Point2d{coord(random), coord(random)};
      s.hIds.push_back(ObjectId(n + 1));
      s.hStarts.push_back(h);
      s.hEnds.push_back(repeat ? s.hEnds.back() : Point2d{h.x + length(random), h.y});
      s.vIds.push_back(ObjectId(n + 1 + kCount));
      s.vStarts.push_back(v);
      s.vEnds.push_back(repeat ? s.vEnds.back() : Point2d{v.x, v.y + length(random)});
    }
    if (sorted) {
      SortSegments(s.hStarts, 0, kCount - 1, true, s.hEnds, s.hIds);
      SortSegments(s.vStarts, 0, kCount - 1, false, s.vEnds, s.vIds);
    }
    for (std::size_t firstH : {std::size_t{0}, std::size_t{2100}}) {
      SegmentArrays fast = s, slow = s;
      DropSegmentsInSheets(firstH, sheets, fast);
      DropOneByOne(firstH, sheets, slow);
      EXPECT_LT(fast.hIds.size(), s.hIds.size());
      EXPECT_EQ(fast.hIds, slow.hIds) << sorted << " " << firstH;
      EXPECT_EQ(fast.hStarts, slow.hStarts);
      EXPECT_EQ(fast.hEnds, slow.hEnds);
      EXPECT_EQ(fast.vIds, slow.vIds) << sorted;
      EXPECT_EQ(fast.vEnds, slow.vEnds);
    }
  }
}

// ---- the finder against the plain search ---------------------------------------------------------------

// The rectangles as the plain search finds them: removal in place, scans that begin at FirstAtX and
// FirstAtY with their fallback, and every later horizontal tried as a top. No batch purge: the
// drawings here stay below a batch.
struct PlainResult {
  std::vector<Sources> sheets;
  ObjectIdArray hIds, vIds;  // the segments that survive
};
PlainResult PlainSearch(SegmentArrays s) {
  using D = std::ptrdiff_t;
  SortSegments(s.hStarts, 0, static_cast<D>(s.hStarts.size()) - 1, true, s.hEnds, s.hIds);
  SortSegments(s.vStarts, 0, static_cast<D>(s.vStarts.size()) - 1, false, s.vEnds, s.vIds);
  const auto nh = [&] { return static_cast<D>(s.hStarts.size()); };
  const auto nv = [&] { return static_cast<D>(s.vStarts.size()); };
  const auto at = [](std::size_t i) { return static_cast<D>(i); };
  std::vector<char> lowT(s.vStarts.size()), highT(s.vStarts.size());
  const auto eraseAt = [](auto& v, D i) { v.erase(v.begin() + i); };

  for (D i = 0; i < nh();) {
    const Point2d p = s.hStarts[i], q = s.hEnds[i];
    const double t = (q.x - p.x) / 2000.0;
    D low = -1, high = -1;
    bool hit = false, both = false;
    for (D j = at(FirstAtX(s.vStarts, p.x - t)); j < nv() - 1; ++j) {
      if (s.vStarts[j].x > p.x + t) break;
      if (p.distanceTo(s.vStarts[j]) < t) low = j;
      else if (p.distanceTo(s.vEnds[j]) < t) high = j;
      else continue;
      hit = true;
      for (D k = std::max(at(FirstAtX(s.vStarts, q.x - t)), j + 1); k < nv(); ++k) {
        if (s.vStarts[k].x > q.x + t) break;
        if (q.distanceTo(s.vStarts[k]) < t) { low = k; both = true; break; }
        if (q.distanceTo(s.vEnds[k]) < t) { high = k; both = true; break; }
      }
      break;
    }
    if (low >= 0) lowT[low] = 1;
    if (high >= 0) highT[high] = 1;
    if (hit && both) { ++i; continue; }
    eraseAt(s.hIds, i), eraseAt(s.hStarts, i), eraseAt(s.hEnds, i);
  }
  for (D i = 0; i < nv();) {
    const Point2d p = s.vStarts[i], q = s.vEnds[i];
    const double t = (q.y - p.y) / 2000.0;
    bool lowOk = lowT[i], highOk = highT[i];
    D found = -1;
    if (!lowOk)
      for (D j = at(FirstAtY(s.hStarts, p.y - t)); j < nh() - 1; ++j) {
        if (s.hStarts[j].y > p.y + t) break;
        if (p.distanceTo(s.hStarts[j]) < t || p.distanceTo(s.hEnds[j]) < t) { lowOk = true; found = j; break; }
      }
    if (lowOk && !highOk)
      for (D j = std::max(at(FirstAtY(s.hStarts, q.y - t)), found + 1); j < nh(); ++j) {
        if (s.hStarts[j].y > q.y + t) break;
        if (q.distanceTo(s.hStarts[j]) < t || q.distanceTo(s.hEnds[j]) < t) { highOk = true; break; }
      }
    if (lowOk && highOk) { ++i; continue; }
    eraseAt(s.vIds, i), eraseAt(s.vStarts, i), eraseAt(s.vEnds, i), eraseAt(lowT, i), eraseAt(highT, i);
  }
  std::vector<Sources> out;
  for (D i = 0; i < nh() - 1; ++i) {
    const Point2d a = s.hStarts[i], b = s.hEnds[i];
    const double t = (b.x - a.x) / 2000.0;
    const D leftFrom = at(FirstAtX(s.vStarts, a.x - t)), rightFrom = at(FirstAtX(s.vStarts, b.x - t));
    for (D j = i + 1; j < nh(); ++j) {
      const Point2d c = s.hStarts[j], d = s.hEnds[j];
      if (!(std::abs(c.x - a.x) < t && std::abs(d.x - b.x) < t && std::abs(c.y - a.y) > t)) continue;
      D k = leftFrom, m = -1;
      for (; k < nv() - 1; ++k) {
        if (s.vStarts[k].x > a.x + t) { k = nv(); break; }
        if (s.vStarts[k].distanceTo(a) < t && s.vEnds[k].distanceTo(c) < t) break;
      }
      if (k >= nv() - 1) continue;
      for (D n = std::max(k + 1, rightFrom); n < nv(); ++n) {
        if (s.vStarts[n].x > b.x + t) break;
        if (s.vStarts[n].distanceTo(b) < t && s.vEnds[n].distanceTo(d) < t) { m = n; break; }
      }
      if (m >= 0) out.push_back({s.hIds[i], s.hIds[j], s.vIds[k], s.vIds[m]});
    }
  }
  return {out, s.hIds, s.vIds};
}

void ExpectAsPlainSearch(SegmentArrays s, ObjectId layer, std::size_t& sheets, const std::string& what) {
  const PlainResult expected = PlainSearch(s);
  SheetList found;
  FindLooseRectangles(s, host::ModelSpaceId(), layer, found, {});
  std::vector<Sources> actual;
  for (const auto& sheet : found) actual.push_back(sheet->sourceIds);
  EXPECT_EQ(actual, expected.sheets) << what;
  EXPECT_EQ(s.hIds, expected.hIds) << what;
  EXPECT_EQ(s.vIds, expected.vIds) << what;
  sheets += actual.size();
}

TEST_F(LooseLinesTest, FinderMatchesThePlainSearchOnTangledLattices) {
  // Segments between the points of a coarse lattice, ends nudged within and beyond the tolerance,
  // some leaning: many near misses, shared corners and nested rectangles.
  OpenOnce();
  std::size_t sheets = 0;
  for (unsigned seed = 1; seed <= 12; ++seed) {
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> cell(0, 6);
    std::uniform_int_distribution<int> nudgeKind(0, 5);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    // Tolerances are 1/2000 of a side: 0.05 to 0.3 on a lattice of 100.
    const auto nudge = [&] {
      switch (nudgeKind(random)) {
        case 0: return unit(random) * 0.04;
        case 1: return unit(random) * 0.2;
        default: return 0.0;
      }
    };
    SegmentArrays s;
    std::uint64_t id = 1;
    for (int n = 0; n < 140; ++n) {
      int a = cell(random), b = cell(random), c = cell(random);
      if (a == b) continue;
      if (a > b) std::swap(a, b);
      const bool horizontal = n % 2 == 0;
      const double lean = nudgeKind(random) == 0 ? unit(random) * 0.1 : 0.0;
      Point2d p, q;
      if (horizontal) {
        p = {a * 100.0 + nudge(), c * 100.0 + nudge()};
        q = {b * 100.0 + nudge(), c * 100.0 + nudge() + lean};
        s.hIds.push_back(ObjectId(id++)), s.hStarts.push_back(p), s.hEnds.push_back(q);
      } else {
        p = {c * 100.0 + nudge(), a * 100.0 + nudge()};
        q = {c * 100.0 + nudge() + lean, b * 100.0 + nudge()};
        s.vIds.push_back(ObjectId(id++)), s.vStarts.push_back(p), s.vEnds.push_back(q);
      }
    }
    ExpectAsPlainSearch(std::move(s), layer_, sheets, "seed " + std::to_string(seed));
  }
  EXPECT_GT(sheets, 24u);
}

TEST_F(LooseLinesTest, FinderMatchesThePlainSearchWhereTheBandsComeUpEmpty) {
  // Right of every vertical start, a short horizontal still meets two verticals that lean into
  // it with their upper ends: the scan from the beginning finds them.
  OpenOnce();
  SegmentArrays s;
  const auto h = [&](std::uint64_t id, Point2d p, Point2d q) { s.hIds.push_back(ObjectId(id)), s.hStarts.push_back(p), s.hEnds.push_back(q); };
  const auto v = [&](std::uint64_t id, Point2d p, Point2d q) { s.vIds.push_back(ObjectId(id)), s.vStarts.push_back(p), s.vEnds.push_back(q); };
  v(1, {999, 0}, {1000, 1000});
  v(2, {999.5, 0}, {1000.5, 1000});
  h(3, {1000, 1000}, {1000.5, 1000});
  h(4, {999, 0}, {999.5, 0});
  // Above every horizontal start, a vertical meets the end of a horizontal that leans up to it; the
  // horizontal's own search marked the vertical before it instead.
  h(5, {-10000, 5000}, {-7000, 5000.9});
  h(6, {-10000, 4000}, {-7000, 4000});
  v(7, {-10000, 4000}, {-10000, 5000});
  v(8, {-7000, 4000}, {-7000, 5000.9});
  v(9, {-6999.8, 4500}, {-6999.8, 5000.9});
  h(10, {-6999.8, 4500}, {-6000, 4500});
  v(11, {-6000, 4500}, {-6000, 4600});
  std::size_t sheets = 0;
  ExpectAsPlainSearch(s, layer_, sheets, "leaning");
  EXPECT_EQ(sheets, 1u);
  SheetList found;
  FindLooseRectangles(s, host::ModelSpaceId(), layer_, found, {});
  EXPECT_NE(std::find(s.hIds.begin(), s.hIds.end(), ObjectId(3)), s.hIds.end());
  EXPECT_NE(std::find(s.vIds.begin(), s.vIds.end(), ObjectId(9)), s.vIds.end());
}

TEST_F(LooseLinesTest, DamagedSegmentsBreakNothing) {
  OpenOnce();
  const double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
  SegmentArrays s;
  for (Point2d p : {Point2d{nan, 0}, {0, nan}, {inf, 0}, {-inf, 5}, {1e308, -1e308}, {0, 0}}) {
    s.hIds.push_back(ObjectId(1)), s.hStarts.push_back(p), s.hEnds.push_back({p.x + 10, p.y});
    s.vIds.push_back(ObjectId(2)), s.vStarts.push_back(p), s.vEnds.push_back({p.x, p.y + 10});
  }
  s.hEnds.pop_back();  // out of step
  s.vIds.push_back(ObjectId(3));
  FindLooseRectangles(s, host::ModelSpaceId(), layer_, result_, {});
  EXPECT_TRUE(result_.empty());
  EXPECT_EQ(s.hIds.size(), s.hStarts.size());
  EXPECT_EQ(s.hStarts.size(), s.hEnds.size());
  EXPECT_EQ(s.vIds.size(), s.vEnds.size());

  SheetList sheets;
  auto sheet = std::make_unique<Plot_Drawing1>();
  sheet->minX = -inf, sheet->maxX = inf, sheet->minY = nan, sheet->maxY = 10;
  sheets.push_back(std::move(sheet));
  SegmentArrays copy = s;
  DropSegmentsInSheets(0, sheets, copy);
  EXPECT_EQ(copy.hIds.size(), s.hIds.size());
  EXPECT_EQ(copy.vIds.size(), s.vIds.size());
}

}  // namespace
}  // namespace tv::recognition
