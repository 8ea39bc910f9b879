#pragma once
// Drawings for the drawing aids: a title block whose attributes stand over a line of its block, so
// that a small crossing window on an attribute picks the insert with the cursor on that attribute.
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "../support/entity_builders.h"
#include "cad/database.h"

namespace tv::test_support {

inline std::unique_ptr<cad::Attrib> MakeAttribute(std::string tag, std::string text, cad::Point3d at) {
  auto a = std::make_unique<cad::Attrib>();
  a->tag = std::move(tag);
  a->text = std::move(text);
  a->position = at;
  a->height = 4;
  return a;
}

// Block "TB": a line from (0, 0) to (100, 0).
inline cad::BlockRecord& TitleBlock(cad::Database& db) {
  if (cad::BlockRecord* b = db.findBlock("TB")) return *b;
  cad::BlockRecord& block = db.addBlock("TB");
  db.append(block, MakeLine({0, 0, 0}, {100, 0, 0}));
  return block;
}

// An insert of "TB" at (x, 0) with attributes (tag, text) at x + 10, x + 60, x + 110 … on y = -1.
inline cad::Insert& AddTitleBlock(cad::Database& db, double x,
                                  const std::vector<std::pair<std::string, std::string>>& attributes) {
  auto insert = MakeInsert(TitleBlock(db), {x, 0, 0});
  for (std::size_t i = 0; i < attributes.size(); ++i)
    insert->attribs.push_back(MakeAttribute(attributes[i].first, attributes[i].second, {x + 10 + 50.0 * i, -1, 0}));
  return db.append(*db.modelSpace(), std::move(insert));
}

// An A3 frame in model space: its edge a polyline from (0, 0) to (420, 297), its border lines 25 in
// from the left and 5 from the other sides.
inline void AddA3Frame(cad::Database& db) {
  cad::BlockRecord& ms = *db.modelSpace();
  db.append(ms, MakeLwPolyline({{0, 0}, {420, 0}, {420, 297}, {0, 297}}, true));
  const cad::Point3d corners[4] = {{25, 5, 0}, {415, 5, 0}, {415, 292, 0}, {25, 292, 0}};
  for (int i = 0; i < 4; ++i) db.append(ms, MakeLine(corners[i], corners[(i + 1) % 4]));
}

// The answer that picks the insert at x with the cursor on its attribute number `i` (from 0).
inline std::string PickAttribute(double x, int i) {
  const double at = x + 11 + 50.0 * i;
  return "C " + std::to_string(at) + ",-0.5 " + std::to_string(at + 1) + ",1";
}

}  // namespace tv::test_support
