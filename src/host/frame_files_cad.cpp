#include <cmath>

#include "cad/drawing_file.h"
#include "cad/entity_geometry.h"
#include "host/cad_binding.h"
#include "host/editor.h"
#include "host/frame_files.h"
#include "host/sheet_files.h"

namespace tv::host {

namespace {

// Blocks nested deeper than this, and pieces past this count, are left out of one file's walk:
// a frame is a few thousand lines, and a file that nests without end must not hold the form up.
constexpr int kDeepest = 16;
constexpr long kMostPieces = 2'000'000;

Point2d Flat(const cad::Point3d& p) { return {p.x, p.y}; }

void AddChords(const std::vector<cad::Point3d>& points, std::vector<FileSegment>& out) {
  for (std::size_t i = 0; i + 1 < points.size(); ++i) out.push_back({Flat(points[i]), Flat(points[i + 1])});
}

void AddSegments(const cad::Entity& e, const cad::Database& db, int depth, long& budget, std::vector<FileSegment>& out) {
  if (--budget < 0 || e.isErased()) return;
  if (const auto* line = cad::As<cad::Line>(&e)) {
    out.push_back({Flat(line->start), Flat(line->end)});
  } else if (const auto* arc = cad::As<cad::Arc>(&e)) {
    AddChords(cad::ArcToPolyline(*arc, 0), out);
  } else if (const auto* circle = cad::As<cad::Circle>(&e)) {
    AddChords(cad::CircleToPolyline(*circle, 0), out);
  } else if (const auto* ellipse = cad::As<cad::Ellipse>(&e); ellipse && depth > 0) {
    // Only as the piece of an arc or circle of a block inserted out of proportion.
    AddChords(cad::EllipseToPolyline(*ellipse, 0), out);
  } else if (cad::As<cad::LwPolyline>(&e) || cad::As<cad::Polyline>(&e) || (cad::As<cad::Insert>(&e) && depth < kDeepest)) {
    for (const auto& piece : cad::Explode(e, db))
      if (!cad::As<cad::Attrib>(piece.get())) AddSegments(*piece, db, depth + 1, budget, out);
  }
}

// The record of the working drawing a record of the file maps to, by name.
cad::ObjectId LayerFor(const cad::Database& src, cad::ObjectId layerId, cad::Database& db) {
  const auto* from = src.objectAs<cad::Layer>(layerId);
  if (!from) return db.addLayer("0").id;
  const bool existed = db.findLayer(from->name) != nullptr;
  cad::Layer& to = db.addLayer(from->name);
  if (!existed) {
    to.on = from->on;
    to.colorIndex = from->colorIndex;
    to.trueColor = from->trueColor;
    to.lineweight = from->lineweight;
    to.plottable = from->plottable;
  }
  return to.id;
}

cad::ObjectId NamedIn(const cad::Database& src, cad::ObjectId id, cad::Database& db, bool textStyle) {
  if (id.isNull()) return {};
  if (textStyle) {
    const auto* style = src.objectAs<cad::TextStyle>(id);
    const cad::TextStyle* mine = style ? db.findTextStyle(style->name) : nullptr;
    if (!mine) mine = db.findTextStyle("Standard");
    return mine ? mine->id : cad::ObjectId{};
  }
  const auto* linetype = src.objectAs<cad::Linetype>(id);
  const cad::Linetype* mine = linetype ? db.findLinetype(linetype->name) : nullptr;
  return mine ? mine->id : cad::ObjectId{};
}

// Entities of the file that carry no references but layer, linetype and text style.
bool Carried(const cad::Entity& e) {
  return cad::As<cad::Line>(&e) || cad::As<cad::Arc>(&e) || cad::As<cad::Circle>(&e) || cad::As<cad::Ellipse>(&e) ||
         cad::As<cad::LwPolyline>(&e) || cad::As<cad::Spline>(&e) || cad::As<cad::Text>(&e) || cad::As<cad::MText>(&e) ||
         cad::As<cad::Solid>(&e) || cad::As<cad::PointEntity>(&e) ||
         (cad::As<cad::Polyline>(&e) && !static_cast<const cad::Polyline&>(e).isMeshOrPolyface());
}

void CopyInto(const cad::Entity& e, const cad::Database& src, cad::Database& db, cad::BlockRecord& space, int depth,
              long& budget, ObjectIdArray& added) {
  if (--budget < 0 || e.isErased()) return;
  if (cad::As<cad::Insert>(&e)) {
    if (depth >= kDeepest) return;
    for (const auto& piece : cad::Explode(e, src)) {
      if (const auto* attrib = cad::As<cad::Attrib>(piece.get())) {
        // An attribute's value stays as the text it shows.
        if (!attrib->isVisible()) continue;
        auto text = std::make_unique<cad::Text>();
        text->colorIndex = attrib->colorIndex;
        text->lineweight = attrib->lineweight;
        text->layer = attrib->layer;
        text->linetype = attrib->linetype;
        text->trueColor = attrib->trueColor;
        text->text = attrib->text;
        text->position = attrib->position;
        text->height = attrib->height;
        text->rotation = attrib->rotation;
        text->widthFactor = attrib->widthFactor;
        text->style = attrib->style;
        text->hAlign = attrib->hAlign;
        text->vAlign = attrib->vAlign;
        if (attrib->hasAlignPoint()) text->setAlignPoint(attrib->alignPoint());
        text->setNormal(attrib->normal());
        CopyInto(*text, src, db, space, depth + 1, budget, added);
      } else {
        CopyInto(*piece, src, db, space, depth + 1, budget, added);
      }
    }
    return;
  }
  if (!Carried(e)) return;
  std::unique_ptr<cad::Entity> copy = e.clone();
  copy->id = {};
  if (copy->extrasIfAny()) {
    copy->extras().extensionDictionary = {};
    copy->extras().reactors.clear();
  }
  copy->layer = LayerFor(src, e.layer, db);
  copy->linetype = NamedIn(src, e.linetype, db, false);
  if (auto* text = cad::As<cad::Text>(copy.get())) text->style = NamedIn(src, text->style, db, true);
  if (auto* mtext = cad::As<cad::MText>(copy.get())) mtext->style = NamedIn(src, mtext->style, db, true);
  if (auto* polyline = cad::As<cad::Polyline>(copy.get())) {
    for (cad::PolylineVertex& v : polyline->vertices) v.id = db.newHandle();
    polyline->seqendId = db.newHandle();
  }
  const cad::Entity& appended = db.appendEntity(space, std::move(copy));
  NoteEntityChange(appended);
  added.push_back(appended.id);
}

}  // namespace

bool WriteEntitiesToDrawingFile(const ObjectIdArray& ids, const std::string& path) {
  SheetFile sheet;
  sheet.ids = ids;
  sheet.asBlock = false;  // the entities themselves, where they stand
  std::string why;
  return WriteSheetFile(sheet, path, why);
}

std::optional<std::vector<FileSegment>> DrawingFileSegments(const std::string& path) {
  cad::DxfReadResult read = cad::ReadDrawing(path);
  if (!read.ok() || !read.db->modelSpace()) return std::nullopt;
  std::vector<FileSegment> segments;
  long budget = kMostPieces;
  read.db->forEachEntity(*read.db->modelSpace(), [&](const cad::Entity& e) { AddSegments(e, *read.db, 0, budget, segments); });
  return segments;
}

std::optional<ObjectIdArray> CopyDrawingFileEntities(const std::string& path) {
  cad::Database* db = WorkingDatabase();
  auto* space = db ? db->objectAs<cad::BlockRecord>(CurrentSpaceBlockId()) : nullptr;
  if (!space) return std::nullopt;
  cad::DxfReadResult read = cad::ReadDrawing(path);
  if (!read.ok() || !read.db->modelSpace()) return std::nullopt;
  ObjectIdArray added;
  long budget = kMostPieces;
  read.db->forEachEntity(*read.db->modelSpace(),
                         [&](const cad::Entity& e) { CopyInto(e, *read.db, *db, *space, 0, budget, added); });
  if (!added.empty()) CurrentEditor().setModified(true);
  return added;
}

}  // namespace tv::host
