// The last two sources of a field: attributes of small inserts laid over the frame, and texts
// inside inserts, read by exploding them in memory.
#include <algorithm>

#include "host/wrappers.h"
#include "recognition/sheet_geometry.h"
#include "titleblock/field_extraction.h"
#include "titleblock/field_extraction_internal.h"

namespace tv::titleblock {

namespace {

constexpr int kFenceDivisions = 8;
// A piece counts when the area covers this share of its width and of its height.
constexpr double kPieceOverlap = 0.1;

ObjectIdArray InsertsAcross(const Extents3d& area) {
  std::vector<Point3d> fence = ZigzagFence(area.min, area.max, kFenceDivisions);
  ObjectIdArray selected;
  host::SelectFenceOfType("insert", fence, selected);
  return selected;
}

bool IsVendorText(const std::string& dxfName) { return dxfName == "TCH_TEXT" || dxfName == "TCH_MTEXT"; }

bool OverlapsEnough(const Extents3d& box, const Extents3d& area) {
  if (box.isEmpty()) return false;
  const double w = std::min(box.max.x, area.max.x) - std::max(box.min.x, area.min.x);
  const double h = std::min(box.max.y, area.max.y) - std::max(box.min.y, area.min.y);
  return w >= 0.0 && h >= 0.0 && w >= box.width() * kPieceOverlap && h >= box.height() * kPieceOverlap;
}

// Pieces of other vendors' texts can be read only while they belong to a drawing: they stay in the
// scratch space for the length of one insert. One scratch space serves the process, so the sources
// are never re-entered.
class ScratchPieces {
 public:
  ScratchPieces() = default;
  ScratchPieces(const ScratchPieces&) = delete;
  ScratchPieces& operator=(const ScratchPieces&) = delete;
  ~ScratchPieces() {
    for (ObjectId id : ids_) host::EraseEntity(id);
  }

  host::Entity add(host::Entity piece) {
    const ObjectId id = host::AppendToSpace(std::move(piece), 0, {}, host::ScratchSpace());
    if (id.isNull()) return {};
    ids_.push_back(id);
    return host::OpenEntity(id);
  }

 private:
  ObjectIdArray ids_;
};

}  // namespace

std::string NeighbourAttrsInArea(ObjectId insertId, const Extents3d& area, int index, ObjectIdArray& ids) {
  ids.clear();
  for (ObjectId neighbour : InsertsAcross(area)) {
    if (neighbour == insertId) continue;
    std::string text = AttrTextsInArea(neighbour, area, index, ids);
    if (!text.empty()) return text;
  }
  return {};
}

std::string ExplodedTextsInArea(const Extents3d& area, double rotation, int index, ObjectIdArray& ids) {
  ids.clear();
  for (ObjectId insertId : InsertsAcross(area)) {
    const host::Entity insert = host::OpenEntity(insertId);
    if (!insert) continue;
    ScratchPieces scratch;
    std::vector<FieldText> found;
    for (host::Entity& piece : insert.explode()) {
      const bool vendor = IsVendorText(piece.dxfName());
      if (!vendor && piece.kind() != host::EntityClass::Text && piece.kind() != host::EntityClass::MText) continue;
      const host::Entity resident = vendor ? scratch.add(std::move(piece)) : host::Entity{};
      const host::Entity& text = vendor ? resident : piece;
      if (!text || !IsLiveEntity(text)) continue;
      const Extents3d box = recognition::EntityExtentsOpen(text, true, false);
      if (!OverlapsEnough(box, area)) continue;
      // Pieces are gone once the insert is done: they give no ids and are never moved.
      if (std::optional<std::string> cleaned = CleanTextOf(text)) found.push_back({ObjectId{}, std::move(*cleaned), box});
    }
    std::string joined = JoinedField(std::move(found), rotation, area, index, false, ids);
    if (!joined.empty()) return joined;
  }
  return {};
}

}  // namespace tv::titleblock
