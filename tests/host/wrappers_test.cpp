#include "host/wrappers.h"

#include <gtest/gtest.h>

#include "host_test_support.h"

namespace tv::host {
namespace {

using testing::HostDrawingTest;
using testing::RecordingEditor;

// ---- layers ------------------------------------------------------------------------------------------

using HostLayers = HostDrawingTest;

TEST_F(HostLayers, FindOrAddTellsNewFromExistingAndTakesCaseVariants) {
  const std::size_t before = db.layers.size();
  bool existed = true;
  const ObjectId added = FindOrAddLayer("TV_Frame", &existed);
  ASSERT_FALSE(added.isNull());
  EXPECT_FALSE(existed);
  EXPECT_EQ(db.layers.size(), before + 1);
  const auto facts = ReadLayer(added);
  ASSERT_TRUE(facts.has_value());
  EXPECT_EQ(facts->name, "TV_Frame");
  EXPECT_FALSE(facts->off);
  EXPECT_FALSE(facts->frozen);
  EXPECT_FALSE(facts->locked);
  EXPECT_TRUE(facts->plottable);

  existed = false;
  EXPECT_EQ(FindOrAddLayer("TV_Frame", &existed), added);
  EXPECT_TRUE(existed);
  existed = false;
  EXPECT_EQ(FindOrAddLayer("tv_frame", &existed), added);
  EXPECT_TRUE(existed);
  EXPECT_EQ(db.layers.size(), before + 1);
  const ObjectId other = FindOrAddLayer("TV_Other");
  ASSERT_NE(db.findLayer("TV_Other"), nullptr);
  EXPECT_EQ(other, db.findLayer("TV_Other")->id);

  // An exact match wins over an earlier case variant.
  auto exact = std::make_unique<cad::Layer>();
  exact->name = "Tv_Frame";
  db.registerObject(*exact);
  const ObjectId exactId = exact->id;
  db.layers.push_back(std::move(exact));
  EXPECT_EQ(FindOrAddLayer("Tv_Frame"), exactId);

  SetWorkingDatabase(nullptr);
  existed = true;
  EXPECT_TRUE(FindOrAddLayer("X", &existed).isNull());
  EXPECT_FALSE(existed);
  SetWorkingDatabase(&db);
}

TEST_F(HostLayers, LayerStatesAreRefilledFromTheTable) {
  const ObjectId frozen = FindOrAddLayer("F");
  const ObjectId off = FindOrAddLayer("O");
  const ObjectId both = FindOrAddLayer("B");
  SetLayerFlag(frozen, kLayerFrozen, true);
  SetLayerFlag(off, kLayerOff, true);
  SetLayerFlag(both, kLayerFrozen, true);
  SetLayerFlag(both, kLayerOff, true);
  Aids().frozenLayerIds = {ObjectId{12345}};
  ReadLayerStates();
  EXPECT_EQ(Aids().frozenLayerIds, (ObjectIdArray{frozen, both}));
  EXPECT_EQ(Aids().offLayerIds, (ObjectIdArray{off, both}));

  SetLayerFlag(both, kLayerFrozen, false);
  ReadLayerStates();
  EXPECT_EQ(Aids().frozenLayerIds, (ObjectIdArray{frozen}));

  const auto all = ListLayers();
  ASSERT_EQ(all.size(), db.layers.size());
  EXPECT_EQ(all.front().name, "0");
  EXPECT_EQ(all.back().id, both);
}

// ---- spaces and layouts --------------------------------------------------------------------------------

using HostSpaces = HostDrawingTest;

TEST_F(HostSpaces, CollectSpaceIdsKeepsOrderSkipsErasedAndAppends) {
  const ObjectId a = addLine({}, {1, 0, 0}).id;
  const ObjectId b = addLine({}, {2, 0, 0}).id;
  const ObjectId c = addLine({}, {3, 0, 0}).id;
  const ObjectId onPaper = addLine({}, {4, 0, 0}, &paper()).id;
  ASSERT_TRUE(db.erase(b));

  ObjectIdArray ids{ObjectId{999}};
  CollectSpaceIds(ModelSpaceId(), ids);
  EXPECT_EQ(ids, (ObjectIdArray{ObjectId{999}, a, c}));
  CollectSpaceIds(paper().id, ids);
  EXPECT_EQ(ids.back(), onPaper);
  const std::size_t n = ids.size();
  CollectSpaceIds(ObjectId{}, ids);
  CollectSpaceIds(a, ids);  // an entity is no record
  EXPECT_EQ(ids.size(), n);
}

TEST_F(HostSpaces, ActivateLayoutOfSwitchesTheCurrentSpaceOnlyForLayoutRecords) {
  cad::Layout& second = db.addLayout("A3");
  const ObjectId secondBlock = second.blockRecord;
  const cad::BlockRecord& title = db.addBlock("TITLE");
  const ObjectId line = addLine({}, {1, 0, 0}).id;

  EXPECT_EQ(OpenCurrentSpace(), ModelSpaceId());
  EXPECT_FALSE(IsPaperSpace());

  ActivateLayoutOf(secondBlock);
  EXPECT_EQ(Working().currentLayout, second.id);
  EXPECT_EQ(OpenCurrentSpace(), secondBlock);
  EXPECT_TRUE(IsPaperSpace());

  for (ObjectId bad : {ObjectId{}, ObjectId{0xABCDEF}, line, title.id}) {
    ActivateLayoutOf(bad);
    EXPECT_EQ(OpenCurrentSpace(), secondBlock) << bad.handleText();
  }

  ActivateLayoutOf(ModelSpaceId());
  EXPECT_EQ(OpenCurrentSpace(), ModelSpaceId());
  EXPECT_FALSE(IsPaperSpace());
}

TEST_F(HostSpaces, LayoutsBlocksAndNames) {
  cad::Layout& second = db.addLayout("立面");
  const auto layouts = ListLayouts();
  ASSERT_EQ(layouts.size(), 3u);
  EXPECT_EQ(layouts[0].name, "Model");
  EXPECT_EQ(layouts[0].blockId, ModelSpaceId());
  EXPECT_EQ(layouts[1].name, "Layout1");
  EXPECT_EQ(layouts[1].blockId, paper().id);
  EXPECT_EQ(layouts[2].id, second.id);
  EXPECT_EQ(layouts[2].tabOrder, second.tabOrder);

  EXPECT_EQ(BlockName(ModelSpaceId()), "*Model_Space");
  EXPECT_EQ(BlockName(second.blockRecord), db.objectAs<cad::BlockRecord>(second.blockRecord)->name);
  EXPECT_EQ(BlockName(second.id), "");  // a layout is no block
  const ObjectId title = db.addBlock("Title").id;
  EXPECT_EQ(FindBlock("TITLE"), title);
  EXPECT_EQ(FindBlock("*model_space"), ModelSpaceId());
  EXPECT_TRUE(FindBlock("NONE").isNull());

  SetWorkingDatabase(nullptr);
  EXPECT_TRUE(ModelSpaceId().isNull());
  EXPECT_TRUE(OpenCurrentSpace().isNull());
  EXPECT_TRUE(ListLayouts().empty());
  EXPECT_FALSE(IsPaperSpace());
  SetWorkingDatabase(&db);
}

// ---- writing -------------------------------------------------------------------------------------------

using HostWriting = HostDrawingTest;

TEST_F(HostWriting, AppendSetsColourOnlyInRangeAndLayerOnlyWhenGiven) {
  const ObjectId red = FindOrAddLayer("RED");
  auto colourAfter = [&](int colour) {
    const ObjectId id = AppendToSpace(NewLine({}, {1, 0, 0}), colour, {});
    return db.entity(id)->colorIndex;
  };
  EXPECT_EQ(colourAfter(0), cad::kColorByLayer);
  EXPECT_EQ(colourAfter(-1), cad::kColorByLayer);
  EXPECT_EQ(colourAfter(257), cad::kColorByLayer);
  EXPECT_EQ(colourAfter(1), 1);
  EXPECT_EQ(colourAfter(255), 255);
  EXPECT_EQ(colourAfter(256), 256);

  const ObjectId onZero = AppendToSpace(NewLine({}, {1, 0, 0}), 0, {});
  EXPECT_EQ(OpenEntity(onZero).layer(), db.findLayer("0")->id);
  const ObjectId onRed = AppendToSpace(NewText({}, 2.5, 0, "X"), 3, red);
  Entity e = OpenEntity(onRed);
  EXPECT_EQ(e.layer(), red);
  EXPECT_EQ(e.owner(), ModelSpaceId());

  // Into a given record, or into the current space when none is given.
  const ObjectId explicitPaper = AppendToSpace(NewPolyline({{0, 0}, {1, 1}}, false), 0, {}, paper().id);
  EXPECT_EQ(OpenEntity(explicitPaper).owner(), paper().id);
  ActivateLayoutOf(paper().id);
  const ObjectId current = AppendToSpace(NewLine({}, {1, 0, 0}), 0, {});
  EXPECT_EQ(OpenEntity(current).owner(), paper().id);

  // Nothing to append, nowhere to append to, or an entity that is in the drawing already.
  EXPECT_TRUE(AppendToSpace(Entity{}, 1, {}).isNull());
  EXPECT_TRUE(AppendToSpace(NewLine({}, {1, 0, 0}), 1, {}, red).isNull());
  const std::size_t before = paper().entities.size();
  EXPECT_TRUE(AppendToSpace(OpenEntity(current), 1, {}).isNull());
  EXPECT_EQ(paper().entities.size(), before);
}

TEST_F(HostWriting, EraseEntitiesEmptiesTheArrayAndReportsWhetherAllWent) {
  const ObjectId locked = FindOrAddLayer("MARKS");
  ObjectIdArray ids;
  for (int i = 0; i < 3; ++i) ids.push_back(AppendToSpace(NewLine({}, {1.0 + i, 0, 0}), 0, locked));
  SetLayerFlag(locked, kLayerLocked, true);
  const ObjectIdArray copy = ids;

  EXPECT_TRUE(EraseEntities(ids));
  EXPECT_TRUE(ids.empty());
  for (ObjectId id : copy) EXPECT_FALSE(OpenEntity(id));
  EXPECT_TRUE(GetLayerFlag(locked, kLayerLocked));

  ids = {AppendToSpace(NewLine({}, {1, 0, 0}), 0, {}), copy[0]};
  EXPECT_FALSE(EraseEntities(ids));
  EXPECT_TRUE(ids.empty());

  EXPECT_TRUE(EraseEntities(ids));  // nothing to erase
}

// ---- editor-backed wrappers --------------------------------------------------------------------------------

using HostEditorWrappers = HostDrawingTest;

// Fences, views and paper space are checked against the console host; only the case its screen
// cannot show is left here: a rectangle wider than the screen's proportion.
TEST_F(HostEditorWrappers, ZoomOnAWideRectangleLetsTheWidthDecide) {
  RecordingEditor editor;
  editor.vars["SCREENSIZE"] = Point3d{1600, 800, 0};
  ZoomView({-100, 10}, {300, 30});
  ASSERT_EQ(editor.views.size(), 1u);
  EXPECT_TRUE(editor.views[0].first.isEqualTo({100, 20, 0}));
  EXPECT_DOUBLE_EQ(editor.views[0].second, 200);

  RegenDrawing();
  EXPECT_EQ(editor.regenCalls, 1);
}

}  // namespace
}  // namespace tv::host
