// Which viewport of a layout is the layout's own: built in code for each way writers mark it, and
// checked against the numbers real drawings carry.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "../support/corpus.h"
#include "cad/dxf_reader.h"
#include "cad/layout_viewport.h"

namespace tv::cad {
namespace {

namespace fs = std::filesystem;

TEST(LayoutViewport, TheLayoutsOwnIsNamedNumberedOrFirst) {
  struct Case {
    const char* name;
    std::vector<std::int16_t> numbers;  // of the viewports in drawing order
    int named;                          // the one the layout names, or -1
    int own;                            // the expected own viewport, or -1 for none
  };
  for (const Case& c : std::vector<Case>{
           {"numbered", {1, 2, 3}, -1, 0},
           {"numbered out of order", {2, 1}, -1, 1},
           {"without numbers", {0, 0, 0}, -1, 0},
           {"without numbers, named by the layout", {0, 0}, 1, 1},
           {"numbered, the layout naming a floating one", {1, 2}, 1, 0},
           {"floating viewports only", {2, 3}, -1, -1},
           {"no viewport", {}, -1, -1},
       }) {
    SCOPED_TRACE(c.name);
    Database db = Database::createDefault();
    Layout* layout = db.findLayout("Layout1");
    ASSERT_NE(layout, nullptr);
    BlockRecord& paper = *db.blockOf(*layout);
    std::vector<ObjectId> ids;
    for (std::int16_t number : c.numbers) {
      auto vp = std::make_unique<Viewport>();
      vp->number = number;
      vp->width = vp->height = 10;
      ids.push_back(db.append(paper, std::move(vp)).id);
    }
    if (c.named >= 0) layout->lastActiveViewport = ids[static_cast<std::size_t>(c.named)];
    EXPECT_EQ(LayoutViewportOf(db, paper), c.own < 0 ? ObjectId{} : ids[static_cast<std::size_t>(c.own)]);
    for (std::size_t i = 0; i < ids.size(); ++i)
      EXPECT_EQ(IsLayoutViewport(db, *db.objectAs<Viewport>(ids[i])), static_cast<int>(i) == c.own) << i;
    EXPECT_EQ(LayoutViewportOf(db, *db.modelSpace()), ObjectId{});
  }
}

// In drawings whose writers number their viewports, the layout's own is the one numbered 1.
TEST(LayoutViewport, CorpusLayoutsHaveTheirViewportNumberedOne) {
  const fs::path root = test_support::CorpusDir();
  TV_SKIP_WITHOUT_CORPUS(root);
  int layouts = 0;
  for (const fs::path& file : test_support::CorpusDxfFiles(root)) {
    const DxfReadResult read = ReadDxf(file.string());
    if (!read.ok()) continue;
    SCOPED_TRACE(file.string());
    const Database& db = *read.db;
    for (const auto& block : db.blocks) {
      if (!block->isLayout() || block.get() == db.modelSpace()) continue;
      const Viewport* numberOne = nullptr;
      for (const auto& e : block->entities)
        if (const auto* vp = As<Viewport>(e.get()); vp && !vp->isErased() && vp->number == 1 && !numberOne) numberOne = vp;
      if (!numberOne) continue;
      ++layouts;
      EXPECT_EQ(LayoutViewportOf(db, *block), numberOne->id) << block->name;
    }
  }
  EXPECT_GT(layouts, 3);
}

}  // namespace
}  // namespace tv::cad
