// The first three sources of a field: the insert's own attributes, loose texts over the area, and
// attribute definitions of a frame that was exploded or never filled.
#include "host/wrappers.h"
#include "recognition/sheet_geometry.h"
#include "recognition/working_coordinates.h"
#include "titleblock/field_extraction.h"
#include "titleblock/field_extraction_internal.h"

namespace tv::titleblock {

namespace {

constexpr int kFenceDivisions = 8;
constexpr const char* kLooseTextTypes = "Text,MText,TCH_TEXT,TCH_MTEXT";

bool CentresField(int index) {
  const auto& flags = GlobalTkLibrary().CentreInArea;
  return index >= 1 && index <= static_cast<int>(flags.size()) && flags[static_cast<std::size_t>(index - 1)] != 0;
}

// The batch writes to the user's drawing here: the texts are moved so that `box` is centred in `area`.
void MoveToAreaCentre(const ObjectIdArray& ids, const Extents3d& box, const Extents3d& area) {
  if (box.isEmpty()) return;
  const Vector3d shift = recognition::ToWorld(area.center() - box.center());
  const Matrix3d move = Matrix3d::translation(Vector3d{shift.x, shift.y, 0});
  for (ObjectId id : ids) host::TransformEntity(id, move);
}

}  // namespace

std::string JoinedField(std::vector<FieldText> texts, double rotation, const Extents3d& area, int index, bool mayMove,
                        ObjectIdArray& ids) {
  ids.clear();
  if (texts.empty()) return {};
  SortReadingOrder(texts, rotation);
  std::string joined = JoinTexts(texts, ids);
  if (mayMove && CentresField(index)) {
    Extents3d all;
    for (const FieldText& t : texts) all.add(t.box);
    MoveToAreaCentre(ids, all, area);
  }
  return joined;
}

std::string NearestField(std::vector<FieldText> texts, const Extents3d& area, int index, ObjectIdArray& ids) {
  ids.clear();
  const FieldText* nearest = nullptr;
  double best = 0.0;
  for (const FieldText& t : texts) {
    const double distance = CentreDistance(t.box, area);
    if (!nearest || distance < best) {
      nearest = &t;
      best = distance;
    }
  }
  if (!nearest) return {};
  ids.push_back(nearest->id);
  if (CentresField(index)) MoveToAreaCentre(ids, nearest->box, area);
  return nearest->text;
}

std::string AttrTextsInArea(ObjectId insertId, const Extents3d& area, int index, ObjectIdArray& ids) {
  ids.clear();
  const host::Entity insert = host::OpenEntity(insertId);
  if (!insert || insert.kind() != host::EntityClass::BlockReference) return {};
  std::vector<FieldText> found;
  for (ObjectId id : insert.attributeIds()) {
    const host::Entity attribute = host::OpenEntity(id);
    if (!attribute || attribute.kind() != host::EntityClass::Attribute || !IsLiveEntity(attribute)) continue;
    const Extents3d box = recognition::EntityExtentsOpen(attribute, true, false);
    if (!CentreInside(box, area)) continue;
    if (std::optional<std::string> text = CleanTextOf(attribute)) found.push_back({id, std::move(*text), box});
  }
  // A title may fill several attributes; every other field is one value.
  if (index == kAreaTitle) return JoinedField(std::move(found), insert.rotation(), area, index, true, ids);
  return NearestField(std::move(found), area, index, ids);
}

std::string LooseTextsInArea(const Extents3d& area, double rotation, int index, ObjectIdArray& ids) {
  ids.clear();
  std::vector<Point3d> fence = ZigzagFence(area.min, area.max, kFenceDivisions);
  ObjectIdArray selected;
  if (!host::SelectFenceOfType(kLooseTextTypes, fence, selected)) return {};
  // No test of position: a long text that only touches the area belongs to it.
  std::vector<FieldText> found;
  for (ObjectId id : selected) {
    const host::Entity text = host::OpenEntity(id);
    if (std::optional<std::string> cleaned = CleanTextOf(text))
      found.push_back({id, std::move(*cleaned), recognition::EntityExtentsOpen(text, true, false)});
  }
  return JoinedField(std::move(found), rotation, area, index, true, ids);
}

std::string AttrDefInArea(const Extents3d& area, double /*rotation*/, int index, ObjectIdArray& ids) {
  ids.clear();
  std::vector<Point3d> fence = ZigzagFence(area.min, area.max, kFenceDivisions);
  ObjectIdArray selected;
  if (!host::SelectFence(fence, selected)) return {};
  std::vector<FieldText> found;
  for (ObjectId id : selected) {
    const host::Entity definition = host::OpenEntity(id);
    if (!definition || definition.dxfName() != "ATTDEF" || !IsLiveEntity(definition)) continue;
    const Extents3d box = recognition::EntityExtentsOpen(definition, true, false);
    if (!CentreInside(box, area)) continue;
    if (std::optional<std::string> tag = CleanText(definition.attributeTag(), false))
      found.push_back({id, std::move(*tag), box});
  }
  return NearestField(std::move(found), area, index, ids);
}

}  // namespace tv::titleblock
