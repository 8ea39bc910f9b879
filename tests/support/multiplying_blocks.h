#pragma once
// Drawings built to multiply their content, for the walks that must end on them: blocks that insert
// the block below twice at every level, and MINSERT grids of a single small block.
#include <memory>
#include <string>

#include "cad/database.h"
#include "entity_builders.h"

namespace tv::test_support {

inline cad::Insert& InsertOf(cad::Database& db, cad::BlockRecord& into, const cad::BlockRecord& block, cad::Point3d at,
                             double scale = 1, double rotation = 0) {
  return db.append(into, MakeInsert(block, at, {scale, scale, scale}, rotation));
}

// A new block `name` holding one line from the origin to `end`.
inline cad::BlockRecord& LineBlock(cad::Database& db, const std::string& name, cad::Point3d end) {
  cad::BlockRecord& block = db.addBlock(name);
  db.append(block, MakeLine({}, end));
  return block;
}

// Blocks L0 (a line to (10, 10)) to L`levels`, each drawing a line to (1, 1) and inserting the one
// below twice, the second a quarter unit to the right: 2^levels lines in a few kilobytes. The top
// one is inserted into model space at `at`, scaled 100 and turned by `rotation`.
inline cad::Insert& DoublingBlocks(cad::Database& db, int levels, cad::Point3d at, double rotation = 0) {
  cad::BlockRecord* below = &LineBlock(db, "L0", {10, 10, 0});
  for (int level = 1; level <= levels; ++level) {
    cad::BlockRecord& block = LineBlock(db, "L" + std::to_string(level), {1, 1, 0});
    InsertOf(db, block, *below, {0, 0, 0});
    InsertOf(db, block, *below, {0.25, 0, 0});
    below = &block;
  }
  return InsertOf(db, *db.modelSpace(), *below, at, 100, rotation);
}

// A MINSERT at (1000, 1000) of `count` x `count` copies of a block holding a line to (10, 10),
// `spacing` apart both ways.
inline cad::Insert& GridOfCopies(cad::Database& db, int count, double spacing) {
  cad::Insert& grid = InsertOf(db, *db.modelSpace(), LineBlock(db, "CELL", {10, 10, 0}), {1000, 1000, 0});
  grid.columnCount = grid.rowCount = static_cast<std::int16_t>(count);
  grid.columnSpacing = grid.rowSpacing = spacing;
  return grid;
}

}  // namespace tv::test_support
