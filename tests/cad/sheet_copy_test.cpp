// One sheet carried into a drawing of its own: where its entities land, what comes with them,
// and viewports with their clips.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cad/sheet_copy.h"
#include "../support/entity_builders.h"

namespace tv::cad {
namespace {

std::vector<std::string> Types(const Database& db, const BlockRecord& block) {
  std::vector<std::string> types;
  db.forEachEntity(block, [&](const Entity& e) { types.push_back(e.dxfName()); });
  return types;
}

struct Source {
  Database db = Database::createDefault();
  ObjectId circle, dimension, line;

  Source() {
    circle = db.append(*db.modelSpace(), test_support::MakeCircle({1100, 1200, 0}, 50)).id;
    line = db.append(*db.modelSpace(), test_support::MakeLine({1000, 1000, 0}, {1200, 1400, 0})).id;
    BlockRecord& shown = db.addBlock("*D");
    db.append(shown, std::make_unique<Line>());
    auto d = std::make_unique<Dimension>();
    d->block = shown.id;
    dimension = db.append(*db.modelSpace(), std::move(d)).id;
  }
};

TEST(SheetCopy, PiecesMoveToTheOriginOrGoInAsOneBlock) {
  struct Case {
    std::string what;
    bool asBlock, withDimension;
    std::vector<std::string> modelSpace;
  };
  const std::vector<Case> cases{
      {"pieces", false, false, {"CIRCLE", "LINE"}},
      {"a block asked for", true, false, {"INSERT"}},
      {"a dimension can't be moved alone", false, true, {"INSERT"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    Source src;
    SheetCopyRequest request;
    request.space = src.db.modelSpace()->id;
    request.ids = {src.circle, src.line};
    if (c.withDimension) request.ids.push_back(src.dimension);
    request.base = {1100, 1200, 0};
    request.asBlock = c.asBlock;
    request.blockName = "BK20261125120000";
    const Database copy = CopySheet(src.db, request);
    EXPECT_EQ(Types(copy, *copy.modelSpace()), c.modelSpace);
    if (c.modelSpace.front() == "CIRCLE") {
      const auto* circle = As<Circle>(copy.modelSpace()->entities.front().get());
      EXPECT_EQ(circle->center, (Point3d{0, 0, 0})) << "the sheet's mid-point lands on the origin";
      EXPECT_EQ(copy.findBlock(request.blockName), nullptr);
    } else {
      const BlockRecord* sheet = copy.findBlock(request.blockName);
      ASSERT_NE(sheet, nullptr);
      EXPECT_EQ(sheet->basePoint, request.base);
      EXPECT_EQ(Types(copy, *sheet).size(), request.ids.size());
    }
  }
}

TEST(SheetCopy, ALayoutSheetKeepsItsViewportsAndTheirClips) {
  Database src = Database::createDefault();
  BlockRecord& paper = *src.paperSpace();
  auto clip = std::make_unique<LwPolyline>();
  clip->points = {{10, 10}, {100, 10}, {60, 80}};
  clip->polyFlags = LwPolyline::kClosed;
  const ObjectId clipId = src.append(paper, std::move(clip)).id;
  auto vp = std::make_unique<Viewport>();
  vp->center = {55, 45, 0};
  vp->width = 90;
  vp->height = 70;
  vp->status = 2;
  vp->clipBoundary = clipId;
  vp->statusFlags = Viewport::kClippedNonRect;
  const ObjectId vpId = src.append(paper, std::move(vp)).id;
  src.append(*src.modelSpace(), std::make_unique<Circle>());

  SheetCopyRequest request;
  request.space = paper.id;
  request.ids = {vpId, clipId};
  request.base = {50, 50, 0};
  request.layoutName = "建施01";
  request.withModelSpace = true;
  request.blockName = "BK1";
  const Database copy = CopySheet(src, request);

  EXPECT_EQ(Types(copy, *copy.modelSpace()), (std::vector<std::string>{"CIRCLE"}));
  const BlockRecord& target = *copy.paperSpace();
  EXPECT_EQ(Types(copy, target), (std::vector<std::string>{"VIEWPORT", "LWPOLYLINE"}));
  const Viewport* copied = nullptr;
  copy.forEachEntity(target, [&](const Entity& e) {
    if (const auto* v = As<Viewport>(&e)) copied = v;
  });
  ASSERT_NE(copied, nullptr);
  const auto* copiedClip = copy.objectAs<LwPolyline>(copied->clipBoundary);
  ASSERT_NE(copiedClip, nullptr) << "the clip names the copy of its boundary";
  EXPECT_EQ(copiedClip->owner, target.id);
  EXPECT_EQ(copied->center, (Point3d{5, -5, 0}));
  ASSERT_NE(copy.layoutOf(target), nullptr);
  EXPECT_EQ(copy.layoutOf(target)->name, "建施01");
  EXPECT_EQ(copy.header.getInt("$TILEMODE", 1), 0);
}

}  // namespace
}  // namespace tv::cad
