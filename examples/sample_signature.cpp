#include "examples/sample_signature.h"

#include "examples/sample_kit.h"

namespace tv::samples {

using cad::Point2d;
using namespace kit;

cad::Database BuildSignatureDrawing() {
  cad::Database db = cad::Database::createDefault();
  cad::BlockRecord& ms = *db.modelSpace();
  const cad::ObjectId layer = AddLayer(db, "签名", 1).id;

  // The outer square's sides come in no order, one of them reversed, as traced by hand.
  AddLine(db, ms, {30, 30}, {30, 0}, layer);
  AddLine(db, ms, {0, 0}, {30, 0}, layer);
  AddLine(db, ms, {0, 30}, {0, 0}, layer);
  AddLine(db, ms, {0, 30}, {30, 30}, layer);
  AddRectangleLines(db, ms, {8, 8}, {22, 22}, layer);

  AddCircle(db, ms, {52, 15}, 15, layer);
  AddCircle(db, ms, {52, 15}, 8, layer);

  cad::LwPolyline& stadium = AddPolyline(db, ms, {{78, 2}, {116, 2}, {116, 12}, {78, 12}}, true, layer);
  stadium.bulges = {0, 1, 0, 1};

  const Point2d stroke[] = {{76, 18}, {116, 28}, {120, 34}, {80, 24}};
  for (int i = 0; i < 4; ++i) AddLine(db, ms, stroke[i], stroke[(i + 1) % 4], layer);
  return db;
}

}  // namespace tv::samples
