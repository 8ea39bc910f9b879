// A field of a title-block insert: the five sources in order, the first text wins.
#include "titleblock/field_extraction.h"
#include "titleblock/field_extraction_internal.h"

namespace tv::titleblock {

namespace {

void RemoveLineMarks(std::string& text) {
  for (std::size_t at = text.find(kLineMark); at != std::string::npos; at = text.find(kLineMark, at))
    text.erase(at, kLineMark.size());
}

}  // namespace

std::string ReadAreaField(const TK_Customization* definition, ObjectId insertId, int index, ObjectIdArray& ids) {
  ids.clear();
  Extents3d area;
  double rotation = 0.0;
  if (!AreaOnDrawing(definition, insertId, index, area, rotation)) return {};
  // Explosion, the slowest, comes last so that it runs only where nothing else gave a text.
  std::string text = AttrTextsInArea(insertId, area, index, ids);
  if (text.empty()) text = LooseTextsInArea(area, rotation, index, ids);
  if (text.empty()) text = AttrDefInArea(area, rotation, index, ids);
  if (text.empty()) text = NeighbourAttrsInArea(insertId, area, index, ids);
  if (text.empty()) text = ExplodedTextsInArea(area, rotation, index, ids);
  // A number, revision or date split over lines reads as one word.
  if (index == kAreaDrawingNo || index == kAreaRevision || index == kAreaDate) RemoveLineMarks(text);
  return text;
}

}  // namespace tv::titleblock
