// Selections of the console editor: every form of answer at a selection prompt, the modes the
// logic asks for directly, filters, hidden layers, spaces and the UCS.
#include <gtest/gtest.h>

#include "console/selection_filter.h"
#include "console/text_match.h"
#include "console_test_support.h"
#include "host/editor.h"
#include "host/entity.h"
#include "host/wrappers.h"

namespace tv::console {
namespace {

using namespace tv::host;
using namespace tv::console::testing;

struct Plan {
  ObjectId line, rect, circle, insert, poly, offLine, frozenLine, paperLine, layout2Line;
};

// Model space left to right: a line, a rectangle on 墙, a circle, an insert of FRAME, a 2D
// polyline; above them a line on an off layer and one on a frozen layer. One line in each layout.
cad::Database BuildPlan(Plan& p) {
  cad::Database db = cad::Database::createDefault();
  cad::BlockRecord& ms = *db.modelSpace();
  p.line = AddLine(db, ms, {0, 0}, {10, 0});
  p.rect = AddRectangle(db, ms, {20, 0}, {30, 10}, "墙");
  p.circle = AddCircle(db, ms, {50, 5}, 5);
  p.insert = AddFrameInsert(db, ms, {60, 0});
  p.poly = AddPolyline2d(db, ms, {{80, 0}, {90, 10}});
  p.offLine = AddLine(db, ms, {0, 20}, {10, 20}, "OFF");
  db.findLayer("OFF")->on = false;
  p.frozenLine = AddLine(db, ms, {0, 30}, {10, 30}, "FRZ");
  db.findLayer("FRZ")->setFrozen(true);
  p.paperLine = AddLine(db, *db.paperSpace(), {0, 0}, {100, 0});
  cad::Layout& second = db.addLayout("布局2");
  p.layout2Line = AddLine(db, *db.blockOf(second), {0, 0}, {0, 100});
  return db;
}

const std::vector<std::string> kPrompts{"\n选择对象: ", "\n删除对象: "};

// Answers one selection prompt with `answers` and returns what was selected.
struct Picked {
  int rc = 0;
  ObjectIdArray ids;
  std::string out;
};
Picked Pick(std::vector<std::string> answers, const SelectionFilter& filter = {}) {
  Plan p;
  ScriptedSession s(BuildPlan(p), std::move(answers));
  Picked r;
  r.rc = CurrentEditor().select("_:$", kPrompts, {}, filter, r.ids);
  r.out = s.out();
  return r;
}

class ConsoleSelection : public ::testing::Test {
 protected:
  ConsoleSelection() { BuildPlan(p); }  // same handles as every session built from BuildPlan
  Plan p;
};

TEST_F(ConsoleSelection, AllTakesTheCurrentSpaceButFrozenLayers) {
  Picked r = Pick({"ALL"});
  EXPECT_EQ(r.rc, RTNORM);
  EXPECT_EQ(r.ids, (ObjectIdArray{p.line, p.rect, p.circle, p.insert, p.poly, p.offLine}));
  EXPECT_EQ(r.out, "\n选择对象: ALL\n找到 6 个");
  EXPECT_EQ(Pick({"all"}).ids.size(), 6u);
  r = Pick({"全部"}, TypeFilter({"LINE", "LWPOLYLINE", "POLYLINE", "insert"}));
  EXPECT_EQ(r.ids, (ObjectIdArray{p.line, p.rect, p.insert, p.poly, p.offLine}));
}

TEST_F(ConsoleSelection, WindowCrossingAndFenceSkipOffAndFrozenLayers) {
  EXPECT_EQ(Pick({"w -1,-1 11,1"}).ids, (ObjectIdArray{p.line}));
  EXPECT_EQ(Pick({"W 15,-5 95,15"}).ids, (ObjectIdArray{p.rect, p.circle, p.insert, p.poly}));
  EXPECT_EQ(Pick({"c 5,-1 25,5"}).ids, (ObjectIdArray{p.line, p.rect}));
  EXPECT_EQ(Pick({"W -1,-1 11,31"}).ids, (ObjectIdArray{p.line}));
  Picked hidden = Pick({"C -1,19 11,31"});
  EXPECT_EQ(hidden.rc, RTERROR);
  EXPECT_TRUE(hidden.ids.empty());
  EXPECT_EQ(Pick({"F 5,-5 5,40"}).ids, (ObjectIdArray{p.line}));
  EXPECT_EQ(Pick({"f 25,-5 25,5 55,5"}).ids, (ObjectIdArray{p.rect, p.circle}));
}

TEST_F(ConsoleSelection, HandlesPickEntitiesOfTheCurrentSpaceInTheirOrder) {
  Picked r = Pick({"h " + p.circle.handleText() + " " + p.line.handleText() + " " + p.circle.handleText()});
  EXPECT_EQ(r.ids, (ObjectIdArray{p.circle, p.line}));
  EXPECT_EQ(Pick({"H " + p.paperLine.handleText()}).rc, RTERROR) << "paper space is not current";
  EXPECT_EQ(Pick({"H FFFFFF"}).rc, RTERROR);
}

TEST_F(ConsoleSelection, MalformedAnswersAreReAskedEnterAndCancelEndIt) {
  Picked r = Pick({"Q 1,2", "W 1,1", "F 1,1", "H", "H XYZ", "ALL now", "W 1,1 x,2", "all"});
  EXPECT_EQ(r.rc, RTNORM);
  EXPECT_EQ(r.ids.size(), 6u);
  std::size_t reasks = 0;
  for (std::size_t at = r.out.find("\n无效的选择。\n选择对象: "); at != std::string::npos;
       at = r.out.find("\n无效的选择。\n选择对象: ", at + 1))
    ++reasks;
  EXPECT_EQ(reasks, 7u) << r.out;
  r = Pick({""});
  EXPECT_EQ(r.rc, RTERROR);
  EXPECT_TRUE(r.ids.empty());
  EXPECT_EQ(Pick({"^C"}).rc, RTCAN);
  EXPECT_EQ(Pick({"\x03"}).rc, RTCAN);
  EXPECT_EQ(Pick({}).rc, RTCAN);
}

TEST_F(ConsoleSelection, FiltersByTypeLayerBlockAndLogic) {
  EXPECT_EQ(Pick({"ALL"}, {{8, "墙"}}).ids, (ObjectIdArray{p.rect}));
  EXPECT_EQ(Pick({"ALL"}, {{8, "o*"}}).ids, (ObjectIdArray{p.offLine}));
  EXPECT_EQ(Pick({"ALL"}, {{2, "fr?me"}}).ids, (ObjectIdArray{p.insert}));
  EXPECT_EQ(Pick({"ALL"}, {{0, "*polyline"}}).ids, (ObjectIdArray{p.rect, p.poly}));
  EXPECT_EQ(Pick({"ALL"}, {{0, "line,circle"}, {8, "0"}}).ids, (ObjectIdArray{p.line, p.circle}));
  EXPECT_EQ(Pick({"ALL"}, {{-4, "<not"}, {0, "LINE"}, {-4, "not>"}}).ids,
            (ObjectIdArray{p.rect, p.circle, p.insert, p.poly}));
  const SelectionFilter nested{{-4, "<OR"}, {-4, "<and"}, {0, "LINE"}, {8, "OFF"}, {-4, "and>"},
                               {0, "CIRCLE"}, {-4, "or>"}};
  EXPECT_EQ(Pick({"ALL"}, nested).ids, (ObjectIdArray{p.circle, p.offLine}));
  Picked none = Pick({"ALL"}, {{0, "ARC"}});
  EXPECT_EQ(none.rc, RTERROR) << "nothing left after filtering";
  EXPECT_EQ(none.out.find("找到"), std::string::npos);
}

TEST_F(ConsoleSelection, MalformedFiltersSelectNothing) {
  const std::vector<SelectionFilter> broken{
      {{-4, "<or"}, {0, "LINE"}},
      {{-4, "or>"}},
      {{62, "1"}},
      {{-4, "<not"}, {0, "LINE"}, {0, "ARC"}, {-4, "not>"}},
      {{-4, "<not"}, {-4, "not>"}},
      {{-4, "<xor"}, {0, "LINE"}, {-4, "xor>"}},
      {{-4, "<or"}, {-4, "or>"}},
      {{-4, "<and"}, {0, "LINE"}, {-4, "or>"}},
  };
  for (const auto& f : broken) {
    EXPECT_FALSE(EntityFilter::Compile(f));
    Picked r = Pick({"ALL"}, f);
    EXPECT_EQ(r.rc, RTERROR);
    EXPECT_TRUE(r.ids.empty());
    Plan q;
    ScriptedSession s(BuildPlan(q));
    ObjectIdArray ids;
    EXPECT_EQ(CurrentEditor().select("X", {}, {}, f, ids), RTERROR);
    EXPECT_EQ(CurrentEditor().select("F", {}, {{5, -5}, {5, 40}}, f, ids), RTERROR);
    EXPECT_TRUE(ids.empty());
  }
}

TEST_F(ConsoleSelection, XTakesEveryLayoutAndIgnoresLayerStates) {
  Plan q;
  ScriptedSession s(BuildPlan(q));
  ObjectIdArray ids{ObjectId(0xABC)};
  EXPECT_EQ(CurrentEditor().select("X", {}, {}, {{0, "line"}}, ids), RTNORM);
  EXPECT_EQ(ids, (ObjectIdArray{ObjectId(0xABC), p.line, p.offLine, p.frozenLine, p.paperLine, p.layout2Line}))
      << "appended after what was there, model space first, then the layouts by tab order";
  ids.clear();
  EXPECT_EQ(CurrentEditor().select("X", {}, {}, {}, ids), RTNORM);
  EXPECT_EQ(ids.size(), 9u) << "block definitions are not searched";
  ids.clear();
  EXPECT_EQ(CurrentEditor().select("X", {}, {}, {{0, "ViewPort"}}, ids), RTERROR);
}

TEST_F(ConsoleSelection, FenceWindowAndCrossingModesTakePointsInUserCoordinates) {
  Plan q;
  ScriptedSession s(BuildPlan(q));
  Editor& e = CurrentEditor();
  ObjectIdArray ids;
  EXPECT_EQ(e.select("F", {}, {{5, -5}, {5, 40}}, {}, ids), RTNORM);
  EXPECT_EQ(ids, (ObjectIdArray{p.line})) << "lines on off and frozen layers are not crossed";
  ids.clear();
  EXPECT_EQ(e.select("F", {}, {{5, -5}, {5, 40}}, {{0, "CIRCLE"}}, ids), RTERROR);
  EXPECT_EQ(e.select("F", {}, {{5, -5}}, {}, ids), RTERROR);
  EXPECT_TRUE(ids.empty());

  // A UCS turned by 90 degrees: user (x, y) is world (-y, x).
  ASSERT_TRUE(e.setCurrentUcs(Matrix3d::rotation(kPi / 2)));
  EXPECT_EQ(e.select("F", {}, {{-5, -5}, {40, -5}}, {}, ids), RTNORM);
  EXPECT_EQ(ids, (ObjectIdArray{p.line}));
  ids.clear();
  s.clearOut();
  s.editor().answers().pushFront({"F -5,-5 40,-5"});
  EXPECT_EQ(e.select("_:$", kPrompts, {}, {}, ids), RTNORM);
  EXPECT_EQ(ids, (ObjectIdArray{p.line}));
}

TEST_F(ConsoleSelection, BoxesUnderATurnedUcsAreTurnedRectanglesInTheWorld) {
  Plan q;
  ScriptedSession s(BuildPlan(q), {"W -1,-8 8,1", "C 6,-8 9,-6", "C 8,-8 9,-6"});
  Editor& e = CurrentEditor();
  // Turned by 45 degrees, the line from world 0,0 to 10,0 runs from user 0,0 to 7.07,-7.07.
  ASSERT_TRUE(e.setCurrentUcs(Matrix3d::rotation(kPi / 4)));
  ObjectIdArray ids;
  EXPECT_EQ(e.select("W", {}, {{-1, -8}, {8, 1}}, {}, ids), RTNORM);
  EXPECT_EQ(ids, (ObjectIdArray{p.line}));
  ids.clear();
  EXPECT_EQ(e.select("W", {}, {{-1, -8}, {6, 1}}, {}, ids), RTERROR) << "the line sticks out";
  EXPECT_EQ(e.select("C", {}, {{-1, -8}, {6, 1}}, {}, ids), RTNORM);
  EXPECT_EQ(ids, (ObjectIdArray{p.line}));
  ids.clear();
  EXPECT_EQ(e.select("_:$", kPrompts, {}, {}, ids), RTNORM);
  EXPECT_EQ(ids, (ObjectIdArray{p.line}));
  ids.clear();
  EXPECT_EQ(e.select("_:$", kPrompts, {}, {}, ids), RTNORM);
  EXPECT_EQ(ids, (ObjectIdArray{p.line}));
  ids.clear();
  EXPECT_EQ(e.select("_:$", kPrompts, {}, {}, ids), RTERROR) << "the box lies beyond the line's end";
}

TEST_F(ConsoleSelection, PaperSpaceSelectsItsOwnEntities) {
  Plan q;
  ScriptedSession s(BuildPlan(q), {"ALL", "ALL"});
  ASSERT_TRUE(SetVar("CVPORT", std::int32_t{1}));
  ObjectIdArray ids;
  EXPECT_EQ(CurrentEditor().select("_:$", kPrompts, {}, {}, ids), RTNORM);
  EXPECT_EQ(ids, (ObjectIdArray{p.paperLine}));
  ASSERT_TRUE(SetVar("CVPORT", std::int32_t{2}));
  ids.clear();
  EXPECT_EQ(CurrentEditor().select("_:$", kPrompts, {}, {}, ids), RTNORM);
  EXPECT_EQ(ids.size(), 6u);
}

// The selections of one command see what the command did to the drawing since its last selection:
// entities moved, appended, erased, and a block its inserts show grown.
TEST_F(ConsoleSelection, SelectionsFollowTheEditsOfTheCommand) {
  Plan q;
  ScriptedSession s(BuildPlan(q));
  const auto fence = [](std::vector<Point3d> points) {
    ObjectIdArray ids;
    SelectFence(points, ids);
    return ids;
  };
  const auto window = [](Point3d a, Point3d b) {
    ObjectIdArray ids;
    CurrentEditor().select("W", {}, {a, b}, {}, ids);
    return ids;
  };
  const std::vector<Point3d> across{{0, -10}, {100, -10}};
  EXPECT_TRUE(fence(across).empty());
  EXPECT_EQ(window({-1, -1}, {11, 1}), (ObjectIdArray{p.line}));

  ASSERT_TRUE(TransformEntity(p.circle, Matrix3d::translation({0, -12, 0})));
  EXPECT_EQ(fence(across), (ObjectIdArray{p.circle}));
  ASSERT_TRUE(TransformEntity(p.line, Matrix3d::translation({500, 0, 0})));
  EXPECT_TRUE(window({-1, -1}, {11, 1}).empty());
  EXPECT_EQ(window({499, -1}, {511, 1}), (ObjectIdArray{p.line}));

  const ObjectId added = AppendToSpace(NewLine({5, -20, 0}, {5, 0, 0}), 0, {});
  ASSERT_FALSE(added.isNull());
  EXPECT_EQ(fence(across), (ObjectIdArray{p.circle, added}));
  ASSERT_TRUE(EraseEntity(p.circle));
  EXPECT_EQ(fence(across), (ObjectIdArray{added}));

  // The insert of FRAME at 60,0 reaches down to the fence once the block has a leg.
  ASSERT_FALSE(AppendToSpace(NewLine({5, 0, 0}, {5, -20, 0}), 0, {}, FindBlock("FRAME")).isNull());
  EXPECT_EQ(fence(across), (ObjectIdArray{p.insert, added}));
  // Work in a block nothing shows changes nothing.
  const ObjectId scratch = AppendToSpace(NewLine({0, -10, 0}, {100, -10, 0}), 0, {}, ScratchSpace());
  EXPECT_TRUE(EraseEntity(scratch));
  EXPECT_EQ(fence(across), (ObjectIdArray{p.insert, added}));
}

TEST(Wildcards, MatchAsSelectionFiltersDo) {
  EXPECT_TRUE(WildcardMatch("insert", "INSERT"));
  EXPECT_TRUE(WildcardMatch("ViewPort", "VIEWPORT"));
  EXPECT_TRUE(WildcardMatch("*LINE", "LWPOLYLINE"));
  EXPECT_FALSE(WildcardMatch("*LINE", "LINES"));
  EXPECT_TRUE(WildcardMatch("LINE,ARC", "arc"));
  EXPECT_TRUE(WildcardMatch("墙?", "墙体"));
  EXPECT_FALSE(WildcardMatch("墙?", "墙体线"));
  EXPECT_TRUE(WildcardMatch("*", ""));
  EXPECT_FALSE(WildcardMatch("A", ""));
  EXPECT_TRUE(WildcardMatch("~LINE", "ARC"));
  EXPECT_FALSE(WildcardMatch("~LINE", "line"));
  EXPECT_TRUE(WildcardMatch("A`*B", "A*B"));
  EXPECT_FALSE(WildcardMatch("A`*B", "AxB"));
  EXPECT_TRUE(WildcardMatch("A`,B", "A,B"));
  EXPECT_TRUE(WildcardMatch("*a*b*c*", "xxAyyByyC"));
  EXPECT_FALSE(WildcardMatch("*a*b*c*", "xxAyyCyyB"));
}

}  // namespace
}  // namespace tv::console
