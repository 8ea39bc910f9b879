#include "host/custom_entity.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "cad/dxf_reader.h"
#include "cad/dxf_writer.h"
#include "cad/entity_geometry.h"
#include "cli/drawing_summary.h"
#include "host/cad_binding.h"
#include "host/wrappers.h"
#include "host_test_support.h"

namespace tv::host {
namespace {

using testing::HostDrawingTest;
using testing::RecordingEditor;
using testing::SquareMarker;

using HostCustomEntity = HostDrawingTest;

TEST_F(HostCustomEntity, AppendedMarkersReadBackAsTheSameObject) {
  cad::Layer& marks = db.addLayer("TV_MARKS");
  const ObjectId id = AppendToSpace(NewCustomEntity(std::make_unique<SquareMarker>(Point3d{10, 20, 0}, 5)), 256, marks.id);
  ASSERT_FALSE(id.isNull());

  Entity e = OpenEntity(id);
  ASSERT_TRUE(e);
  EXPECT_EQ(e.kind(), EntityClass::Custom);
  EXPECT_EQ(e.dxfName(), "Temp_PlotRec");
  EXPECT_EQ(e.layer(), marks.id);
  const auto* marker = dynamic_cast<const SquareMarker*>(e.custom());
  ASSERT_NE(marker, nullptr);
  EXPECT_EQ(marker->size(), 5);
  // Extents are those of what it draws.
  const auto box = e.geomExtents();
  ASSERT_TRUE(box.has_value());
  EXPECT_EQ(box->min, (Point3d{10, 20, 0}));
  EXPECT_EQ(box->max, (Point3d{15, 25, 0}));

  // The platform's draw code reaches the same drawing.
  const cad::Entity& model = *db.entity(id);
  EXPECT_EQ(CustomOf(model), e.custom());
  PrimitiveRecorder drawn;
  DrawCustom(model, drawn);
  ASSERT_EQ(drawn.primitives().size(), 2u);
  EXPECT_TRUE(drawn.primitives()[0].filled);
  EXPECT_EQ(drawn.primitives()[0].colorIndex, 1);

  // Other entities are no custom entities.
  cad::Line& line = addLine({}, {1, 0, 0});
  EXPECT_EQ(CustomOf(line), nullptr);
  EXPECT_EQ(OpenEntity(line.id).custom(), nullptr);
  PrimitiveRecorder none;
  DrawCustom(line, none);
  EXPECT_TRUE(none.primitives().empty());
}

TEST_F(HostCustomEntity, ModifyTouchesTheDrawingOnlyWhenTheEditChangedSomething) {
  RecordingEditor editor;
  const ObjectId id = AppendToSpace(NewCustomEntity(std::make_unique<SquareMarker>(Point3d{}, 5)), 0, {});

  EXPECT_TRUE(ModifyCustomEntity(id, [](CustomEntity&) { return false; }));
  EXPECT_EQ(editor.modifiedCalls, 0);

  EXPECT_TRUE(ModifyCustomEntity(id, [](CustomEntity& c) {
    auto& marker = dynamic_cast<SquareMarker&>(c);
    marker.setSize(8);
    return true;
  }));
  EXPECT_EQ(editor.modifiedCalls, 1);
  EXPECT_TRUE(editor.modifiedFlag);
  EXPECT_EQ(OpenEntity(id).geomExtents()->max, (Point3d{8, 8, 0}));

  // Not one of the system's entities, or gone: false, and the edit is not called.
  bool called = false;
  auto edit = [&](CustomEntity&) { return called = true; };
  EXPECT_FALSE(ModifyCustomEntity(addLine({}, {1, 0, 0}).id, edit));
  ASSERT_TRUE(EraseEntity(id));
  EXPECT_FALSE(ModifyCustomEntity(id, edit));
  EXPECT_FALSE(called);
}

TEST_F(HostCustomEntity, TransientMarkersNeverReachAFileButPersistentOnesDo) {
  addLine({0, 0, 0}, {100, 0, 0});
  AppendToSpace(NewCustomEntity(std::make_unique<SquareMarker>(Point3d{1, 1, 0}, 5, 1, true)), 0, {});
  const ObjectId stamp =
      AppendToSpace(NewCustomEntity(std::make_unique<SquareMarker>(Point3d{7, 1, 0}, 2.5, 1, false)), 0, {}, paper().id);
  ASSERT_FALSE(stamp.isNull());

  const std::string dxf = cad::WriteDxfToString(db);
  EXPECT_EQ(dxf.find("Temp_PlotRec"), std::string::npos);
  EXPECT_NE(dxf.find("TV_Stamp"), std::string::npos);

  cad::DxfReadResult back = cad::ReadDxfFromBytes(dxf);
  ASSERT_TRUE(back.ok()) << back.error;
  std::size_t lines = 0, others = 0;
  back.db->forEachEntity(*back.db->modelSpace(), [&](const cad::Entity& e) { ++(e.type() == cad::ObjectType::Line ? lines : others); });
  EXPECT_EQ(lines, 1u);
  EXPECT_EQ(others, 0u);
  // The persistent one comes back as another program sees it: an entity of a foreign class
  // with the groups it wrote.
  std::vector<const cad::ProxyEntity*> proxies;
  back.db->forEachEntity(*back.db->paperSpace(), [&](const cad::Entity& e) {
    if (const auto* p = cad::As<cad::ProxyEntity>(&e)) proxies.push_back(p);
  });
  ASSERT_EQ(proxies.size(), 1u);
  EXPECT_EQ(proxies[0]->name, "TV_Stamp");
  const cad::Group* size = cad::FindGroup(proxies[0]->groups, 40);
  ASSERT_NE(size, nullptr);
  EXPECT_DOUBLE_EQ(size->asDouble(), 2.5);
}

TEST_F(HostCustomEntity, DrawingModelTreatsThemAsUnbreakableShapes) {
  const ObjectId id = AppendToSpace(NewCustomEntity(std::make_unique<SquareMarker>(Point3d{-3, 4, 0}, 2)), 0, {});
  const cad::Entity& e = *db.entity(id);
  const auto box = cad::EntityExtents(e, db);
  ASSERT_TRUE(box.has_value());
  EXPECT_EQ(box->min, (Point3d{-3, 4, 0}));
  EXPECT_EQ(box->max, (Point3d{-1, 6, 0}));
  EXPECT_TRUE(cad::Explode(e, db).empty());
  EXPECT_EQ(cad::TransformedCopy(e, Matrix3d::translation({1, 0, 0})), nullptr);
  EXPECT_TRUE(OpenEntity(id).explode().empty());
  EXPECT_FALSE(OpenEntity(id).transformedCopy(Matrix3d::translation({1, 0, 0})));

  // Inside a block, an insert measures it moved like any content.
  cad::BlockRecord& b = db.addBlock("MARKS");
  auto inBlock = std::make_unique<cad::CustomEntity>();
  inBlock->content = static_cast<const cad::CustomEntity&>(e).content->clone();
  db.append(b, std::move(inBlock));
  auto insert = std::make_unique<cad::Insert>();
  insert->block = b.id;
  insert->position = {10, 0, 0};
  const ObjectId insId = add(std::move(insert)).id;
  const auto insBox = OpenEntity(insId).geomExtents();
  ASSERT_TRUE(insBox.has_value());
  EXPECT_EQ(insBox->min, (Point3d{7, 4, 0}));

  // Copies are independent objects.
  auto copy = e.clone();
  EXPECT_NE(CustomOf(*copy), nullptr);
  EXPECT_NE(CustomOf(*copy), CustomOf(e));
}

TEST_F(HostCustomEntity, DrawingSummaryCountsThemByName) {
  AppendToSpace(NewCustomEntity(std::make_unique<SquareMarker>(Point3d{}, 1, 1, true)), 0, {});
  AppendToSpace(NewCustomEntity(std::make_unique<SquareMarker>(Point3d{}, 1, 1, false)), 0, {});
  addLine({}, {1, 0, 0});
  const cli::DrawingSummary s = cli::SummarizeDrawing(db, "memory.dxf", {});
  ASSERT_FALSE(s.spaces.empty());
  EXPECT_EQ(s.spaces[0].total, 3u);
}

}  // namespace
}  // namespace tv::host
