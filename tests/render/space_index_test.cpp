// The index of a space's entities that keeps each window of a batch to its own content.
#include <gtest/gtest.h>

#include <memory>

#include "cad/database.h"
#include "render/space_index.h"

namespace tv::render {
namespace {

const cad::Entity& AddLine(cad::Database& db, cad::Point3d a, cad::Point3d b) {
  auto line = std::make_unique<cad::Line>();
  line->start = a;
  line->end = b;
  return db.append(*db.modelSpace(), std::move(line));
}

TEST(SpaceIndex, AWindowFindsWhatMeetsItInDrawingOrder) {
  cad::Database db = cad::Database::createDefault();
  // A row of a hundred short lines, one long line over all of them, then one across the window's edge.
  std::vector<const cad::Entity*> shorts;
  for (int i = 0; i < 100; ++i) shorts.push_back(&AddLine(db, {i * 100.0, 0, 0}, {i * 100.0 + 50, 10, 0}));
  const cad::Entity& across = AddLine(db, {-10, 5, 0}, {10000, 5, 0});
  const cad::Entity& edge = AddLine(db, {1990, 20, 0}, {2090, 20, 0});
  auto empty = std::make_unique<cad::Text>();  // no text: no extents, always drawn
  const cad::Entity& unbounded = db.append(*db.modelSpace(), std::move(empty));

  const SpaceIndex index(db, *db.modelSpace());
  ASSERT_TRUE(index.describes(*db.modelSpace()));
  std::vector<const cad::Entity*> found;
  index.query({1000, -1}, {2000, 30}, found);
  std::vector<const cad::Entity*> expected(shorts.begin() + 10, shorts.begin() + 21);
  expected.insert(expected.end(), {&across, &edge, &unbounded});
  EXPECT_EQ(found, expected);

  // A window beside everything finds only what has no extents.
  index.query({-5000, -5000}, {-4000, -4000}, found);
  EXPECT_EQ(found, std::vector<const cad::Entity*>{&unbounded});

  // Once the space changes the index no longer describes it.
  AddLine(db, {0, 0, 0}, {1, 1, 0});
  EXPECT_FALSE(index.describes(*db.modelSpace()));
}

}  // namespace
}  // namespace tv::render
