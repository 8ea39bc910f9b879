// System variables of the console editor: stored values and their types, the ones derived from
// the current space, its UCS and its view, and Trans through them.
#include <cmath>

#include <gtest/gtest.h>

#include "console_test_support.h"
#include "host/cad_binding.h"
#include "host/editor.h"

namespace tv::console {
namespace {

using namespace tv::host;
using namespace tv::console::testing;

void ExpectPoint(const std::optional<Value>& v, Point3d expected) {
  ASSERT_TRUE(AsPoint(v)) << "not a point";
  EXPECT_TRUE(AsPoint(v)->isEqualTo(expected, 1e-9)) << AsPoint(v)->x << "," << AsPoint(v)->y << "," << AsPoint(v)->z;
}

TEST(SystemVariables, StoredValuesHaveTheirTypesAndAnyCaseNames) {
  ScriptedSession s(cad::Database::createDefault(), {}, nullptr, "/work/plans/一层平面.dxf");
  EXPECT_EQ(AsInt(GetVar("cmdecho")), 1);
  EXPECT_EQ(AsInt(GetVar("FileDia")), 1);
  EXPECT_EQ(AsInt(GetVar("BACKGROUNDPLOT")), 2);
  EXPECT_EQ(AsInt(GetVar("PICKBOX")), 3);
  EXPECT_EQ(AsInt(GetVar("MENUBAR")), 0);
  EXPECT_EQ(AsText(GetVar("WSCURRENT")), "草图与注释");
  EXPECT_EQ(AsText(GetVar("ACADVER")), "25.0s");
  EXPECT_EQ(AsText(GetVar("DWGNAME")), "一层平面.dxf");
  EXPECT_EQ(AsText(GetVar("DWGPREFIX")), "/work/plans/");
  ASSERT_TRUE(GetVar("LENSLENGTH"));
  EXPECT_TRUE(std::holds_alternative<double>(*GetVar("LENSLENGTH")));
  ExpectPoint(GetVar("VIEWDIR"), {0, 0, 1});
  ExpectPoint(GetVar("TARGET"), {0, 0, 0});
  ExpectPoint(GetVar("SCREENSIZE"), {1600, 900, 0});
  EXPECT_FALSE(GetVar("NOSUCHVAR"));

  EXPECT_TRUE(SetVar("cmdecho", std::int32_t{0}));
  EXPECT_EQ(AsInt(GetVar("CMDECHO")), 0);
  EXPECT_FALSE(SetVar("CMDECHO", std::string("0"))) << "wrong type";
  EXPECT_FALSE(SetVar("CMDECHO", 1.0)) << "a real is no integer";
  EXPECT_TRUE(SetVar("LENSLENGTH", std::int32_t{35})) << "an integer passes for a real";
  EXPECT_EQ(AsReal(GetVar("LENSLENGTH")), 35.0);
  EXPECT_FALSE(SetVar("NOSUCHVAR", std::int32_t{1}));
  EXPECT_FALSE(GetVar("NOSUCHVAR")) << "setting an unknown name does not create it";
  for (const char* readOnly : {"ACADVER", "DWGNAME", "DWGPREFIX", "TILEMODE", "WORLDUCS", "UCSORG", "UCSXDIR",
                               "UCSYDIR", "VIEWCTR", "VIEWSIZE", "VIEWTWIST", "SCREENSIZE"}) {
    const std::optional<Value> before = GetVar(readOnly);
    ASSERT_TRUE(before) << readOnly;
    EXPECT_FALSE(SetVar(readOnly, *before)) << readOnly;
  }

  Editor& e = CurrentEditor();
  EXPECT_FALSE(e.getEnv("TvPlotDir"));
  e.setEnv("TvPlotDir", "/opt/tv");
  EXPECT_EQ(e.getEnv("TvPlotDir"), "/opt/tv");
  EXPECT_EQ(e.documentPath(), "/work/plans/一层平面.dxf");
}

TEST(SystemVariables, SpaceVariablesFollowTheCurrentLayout) {
  cad::Database db = cad::Database::createDefault();
  AddLine(db, *db.paperSpace(), {0, 0}, {1000, 100});
  ScriptedSession s(std::move(db));
  EXPECT_EQ(AsInt(GetVar("CVPORT")), 2);
  EXPECT_EQ(AsInt(GetVar("TILEMODE")), 1);
  // The new drawing's *ACTIVE viewport: centre 210,148.5, height 297.
  ExpectPoint(GetVar("VIEWCTR"), {210, 148.5, 0});
  EXPECT_DOUBLE_EQ(GetRealVar("VIEWSIZE"), 297);

  EXPECT_FALSE(SetVar("CVPORT", std::int32_t{3}));
  EXPECT_FALSE(SetVar("CVPORT", 1.0));
  ASSERT_TRUE(SetVar("CVPORT", std::int32_t{1}));
  EXPECT_EQ(AsInt(GetVar("CVPORT")), 1);
  EXPECT_EQ(AsInt(GetVar("TILEMODE")), 0);
  EXPECT_EQ(AsInt(GetVar("WORLDUCS")), 1);
  EXPECT_EQ(GetRealVar("VIEWTWIST", -1), 0.0);
  // Paper fitted to its extents: 1000 wide on a 16:9 screen needs a height of 562.5.
  ExpectPoint(GetVar("VIEWCTR"), {500, 50, 0});
  EXPECT_DOUBLE_EQ(GetRealVar("VIEWSIZE"), 562.5);
  CurrentEditor().setView({10, 20, 0}, 40);
  ExpectPoint(GetVar("VIEWCTR"), {10, 20, 0});
  EXPECT_DOUBLE_EQ(GetRealVar("VIEWSIZE"), 40);

  ASSERT_TRUE(SetVar("CVPORT", std::int32_t{2}));
  EXPECT_EQ(AsInt(GetVar("TILEMODE")), 1);
  ExpectPoint(GetVar("VIEWCTR"), {210, 148.5, 0});  // each space keeps its own view
  ASSERT_TRUE(SetVar("CVPORT", std::int32_t{1}));
  ExpectPoint(GetVar("VIEWCTR"), {10, 20, 0});
}

TEST(SystemVariables, TheLastPaperLayoutIsTheOneCvportReturnsTo) {
  cad::Database db = cad::Database::createDefault();
  cad::Layout& second = db.addLayout("布局2");
  const ObjectId secondId = second.id;
  ScriptedSession s(std::move(db));
  host::Working().currentLayout = secondId;  // as switching tabs does
  ASSERT_TRUE(SetVar("CVPORT", std::int32_t{2}));
  EXPECT_NE(host::Working().currentLayout, secondId);
  ASSERT_TRUE(SetVar("CVPORT", std::int32_t{1}));
  EXPECT_EQ(host::Working().currentLayout, secondId);
}

TEST(SystemVariables, ModelViewWithoutAViewportIsFittedToTheExtents) {
  cad::Database db = cad::Database::createDefault();
  auto& vports = db.otherTables["VPORT"];
  for (const auto& r : vports) db.unregisterObject(r->id);
  vports.clear();
  AddLine(db, *db.modelSpace(), {-100, 0}, {100, 400});
  ScriptedSession s(std::move(db));
  ExpectPoint(GetVar("VIEWCTR"), {0, 200, 0});
  EXPECT_DOUBLE_EQ(GetRealVar("VIEWSIZE"), 400);
  EXPECT_EQ(GetRealVar("VIEWTWIST", -1), 0.0);
}

TEST(SystemVariables, UcsVariablesAndTransFollowTheUcs) {
  cad::Database db = cad::Database::createDefault();
  db.header.setPoint("$UCSORG", {100, 0, 0});
  db.header.setPoint("$UCSXDIR", {0, 1, 0});
  db.header.setPoint("$UCSYDIR", {-1, 0, 0});
  ScriptedSession s(std::move(db));
  EXPECT_EQ(AsInt(GetVar("WORLDUCS")), 0);
  ExpectPoint(GetVar("UCSORG"), {100, 0, 0});
  ExpectPoint(GetVar("UCSXDIR"), {0, 1, 0});
  ExpectPoint(GetVar("UCSYDIR"), {-1, 0, 0});
  // User (1, 2) lies 1 along world y and 2 along world -x from the origin.
  EXPECT_TRUE(Trans({1, 2, 0}, kUser, kWorld).isEqualTo({98, 1, 0}));
  EXPECT_TRUE(Trans({98, 1, 0}, kWorld, kUser).isEqualTo({1, 2, 0}));
  EXPECT_TRUE(Trans({1, 0, 0}, kUser, kWorld, true).isEqualTo({0, 1, 0})) << "a displacement only turns";
  // VIEWCTR is reported in the UCS: the world centre 210,148.5.
  ExpectPoint(GetVar("VIEWCTR"), {148.5, 100 - 210, 0});

  // Paper space starts in the world; the model keeps its UCS while away.
  ASSERT_TRUE(SetVar("CVPORT", std::int32_t{1}));
  EXPECT_EQ(AsInt(GetVar("WORLDUCS")), 1);
  EXPECT_TRUE(Trans({1, 2, 0}, kUser, kWorld).isEqualTo({1, 2, 0}));
  ASSERT_TRUE(SetVar("CVPORT", std::int32_t{2}));
  ExpectPoint(GetVar("UCSORG"), {100, 0, 0});

  Editor& e = CurrentEditor();
  ASSERT_TRUE(e.setCurrentUcs(Matrix3d::identity()));
  EXPECT_EQ(AsInt(GetVar("WORLDUCS")), 1);
  ASSERT_TRUE(e.setCurrentUcs(Matrix3d::translation({5, 5, 0}) * Matrix3d::rotation(kPi / 6)));
  EXPECT_EQ(AsInt(GetVar("WORLDUCS")), 0);
  ExpectPoint(GetVar("UCSXDIR"), {std::cos(kPi / 6), std::sin(kPi / 6), 0});
  ExpectPoint(GetVar("UCSORG"), {5, 5, 0});
  EXPECT_TRUE(Trans(Trans({3, 4, 0}, kUser, kWorld), kWorld, kUser).isEqualTo({3, 4, 0}));
  EXPECT_FALSE(e.setCurrentUcs(Matrix3d::scaling(0, 1, 1))) << "a matrix without an x axis is refused";
  ExpectPoint(GetVar("UCSORG"), {5, 5, 0});

  // setView takes the centre in user coordinates.
  e.setView({0, 0, 0}, 50);
  ExpectPoint(GetVar("VIEWCTR"), {0, 0, 0});
  ASSERT_TRUE(e.setCurrentUcs(Matrix3d::identity()));
  ExpectPoint(GetVar("VIEWCTR"), {5, 5, 0});
}

TEST(SystemVariables, ViewTwistTurnsDisplayCoordinates) {
  cad::Database db = cad::Database::createDefault();
  cad::TableRecord* vport = db.activeViewport();
  ASSERT_NE(vport, nullptr);
  vport->groups.emplace_back(51, cad::GroupValue{90.0});
  ScriptedSession s(std::move(db));
  EXPECT_NEAR(GetRealVar("VIEWTWIST"), kPi / 2, 1e-12);
  // The view centre is kept in display coordinates: display (210, 148.5) is world (-148.5, 210).
  ExpectPoint(GetVar("VIEWCTR"), {-148.5, 210, 0});
  EXPECT_TRUE(Trans({-148.5, 210, 0}, kWorld, kDisplay).isEqualTo({210, 148.5, 0}));
  ASSERT_TRUE(SetVar("CVPORT", std::int32_t{1}));
  EXPECT_EQ(GetRealVar("VIEWTWIST", -1), 0.0);
}

TEST(SystemVariables, SessionInstallsAndRemovesItsEditorAndDrawing) {
  EXPECT_FALSE(HasEditor());
  {
    ScriptedSession s(cad::Database::createDefault());
    EXPECT_TRUE(HasEditor());
    EXPECT_EQ(&CurrentEditor(), &s.editor());
    EXPECT_EQ(host::WorkingDatabase(), &s.db());
  }
  EXPECT_FALSE(HasEditor());
  EXPECT_EQ(host::WorkingDatabase(), nullptr);
  EXPECT_FALSE(GetVar("CMDECHO"));
}

}  // namespace
}  // namespace tv::console
