#pragma once
// The steps of field extraction shared by its files and its tests: the five sources, the texts
// of the entity kinds, their cleaning and their reading order.
#include <optional>
#include <string>
#include <vector>

#include "host/entity.h"
#include "host/geometry.h"
#include "host/object_id.h"
#include "titleblock/field_extraction.h"

namespace tv::titleblock {

// How far the print area reaches beyond the frame at its two corners (print_extents less
// frame_extents); nothing when the definition has no print area.
struct PrintDifferences {
  Vector3d min, max;
};
PrintDifferences PrintAreaDifferences(const TK_Customization& definition);

// A stretched dynamic insert's size, turned upright, widened by the print area's differences and
// in the units of the definition (picked at `scale`); nullopt when the insert has no extents.
std::optional<Vector2d> DynamicFrameSize(double scale, ObjectId insertId, const PrintDifferences& differences);

// Follows a stretched dynamic frame: the print area (index 0) takes the stretched size, every
// other area keeps its size and moves with the frame's lower right corner. `extentsMin` and
// `extentsMax` are print_extents less frame_extents at the two corners.
void DynamicAreaAdjust(Extents3d& area, double scale, const Extents3d& frame, ObjectId insertId, Vector3d extentsMin,
                       Vector3d extentsMax, int index);

// The five sources, tried in this order; each fills `ids` with the entities that gave its text.
std::string AttrTextsInArea(ObjectId insertId, const Extents3d& area, int index, ObjectIdArray& ids);
std::string LooseTextsInArea(const Extents3d& area, double rotation, int index, ObjectIdArray& ids);
std::string AttrDefInArea(const Extents3d& area, double rotation, int index, ObjectIdArray& ids);
std::string NeighbourAttrsInArea(ObjectId insertId, const Extents3d& area, int index, ObjectIdArray& ids);
std::string ExplodedTextsInArea(const Extents3d& area, double rotation, int index, ObjectIdArray& ids);

// Kinds of text entities, as TextOfEntity reports them.
inline constexpr int kNoText = 0;
inline constexpr int kPlainText = 1;
inline constexpr int kMultilineText = 2;
inline constexpr int kVendorText = 3;
inline constexpr int kVendorMultilineText = 4;

// The kind of an entity and the text it holds (formatting codes of multiline texts kept).
int TextOfEntity(const host::Entity& entity, std::string& text);
// A candidate's text: multiline texts stripped of their codes with their breaks made line marks,
// then ASCII blanks trimmed. nullopt when nothing is left.
std::optional<std::string> CleanText(std::string text, bool multiline);
// TextOfEntity and CleanText together; attributes holding a multiline text are stripped too.
std::optional<std::string> CleanTextOf(const host::Entity& entity);

// One text found for a field: its entity, its cleaned text and its box in working coordinates.
struct FieldText {
  ObjectId id;
  std::string text;
  Extents3d box;
};
// Puts the texts into reading order, rows from the top, each from the left, as seen on a sheet
// turned upright by minus `rotation`.
void SortReadingOrder(std::vector<FieldText>& texts, double rotation);
// Joins the texts with line marks and sets `ids` to their entities (those that have an id), in the
// same order.
std::string JoinTexts(const std::vector<FieldText>& texts, ObjectIdArray& ids);

// A field's result from several texts: sorted, joined into `ids` and, when the library asks for it
// and `mayMove`, moved as one to the centre of `area`. "" when there are none.
std::string JoinedField(std::vector<FieldText> texts, double rotation, const Extents3d& area, int index, bool mayMove,
                        ObjectIdArray& ids);
// A field's result from the one text nearest to the centre of `area` (an earlier one wins a tie),
// moved to the centre when the library asks for it.
std::string NearestField(std::vector<FieldText> texts, const Extents3d& area, int index, ObjectIdArray& ids);

// Whether the centre of `box` lies in `area` in the plane, borders included.
bool CentreInside(const Extents3d& box, const Extents3d& area);
// The plane distance from the centre of `box` to the centre of `area`.
double CentreDistance(const Extents3d& box, const Extents3d& area);

}  // namespace tv::titleblock
