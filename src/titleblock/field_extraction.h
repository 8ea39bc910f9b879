#pragma once
// The fields of a title block: where a definition's stored areas lie on the drawing for one insert,
// and the text that fills each field, looked for in attributes, loose texts, attribute definitions,
// attributes of neighbouring inserts and the content of inserts over the area, in that order.
#include <string>
#include <string_view>
#include <vector>

#include "host/entity.h"
#include "host/geometry.h"
#include "host/object_id.h"
#include "titleblock/tk_library.h"

namespace tv::titleblock {

// The mark that stands between lines of one field; replaced only when the field is used.
inline constexpr std::string_view kLineMark = "[++}";

enum FrameAreaIndex : int {
  kAreaPrint = 0,
  kAreaDrawingNo = 1,
  kAreaRevision = 2,
  kAreaTitle = 3,
  kAreaDate = 4,
  kAreaInfo1 = 5,
  kAreaInfo2 = 6,
  kStampRegister = 11,
  kStampIssue = 12,
  kStampProject = 13,
  kStampCompleted = 14
};

// The stored area an index names (any other value: print_extents).
const Extents3d& AreaOfIndex(const TK_Customization& definition, int index);

// The stored area `index` names, placed on the insert as an axis-aligned box in working coordinates
// (the stamps 11 to 13 in world coordinates while a UCS is active), and the rotation of the insert.
// False for a null definition, an area not set or an insert that is no block reference.
bool AreaOnDrawing(const TK_Customization* definition, ObjectId insertId, int index, Extents3d& extents, double& rotation);

// The text of field `index` (1 to 6) of an insert, and the entities that gave it; "" when no source
// gives one. The line marks stay in the title and the two free fields only.
std::string ReadAreaField(const TK_Customization* definition, ObjectId insertId, int index, ObjectIdArray& ids);

// A multiline text's contents without its underline, overline, font, height and alignment codes
// and without its braces.
std::string StripMTextCodes(std::string text);

// The points of a fence that runs to and fro across the box, `divisions` + 1 legs along its longer side.
std::vector<Point3d> ZigzagFence(Point3d min, Point3d max, int divisions);

// Whether an entity counts for a field: visible, and on a layer neither switched off nor hidden by
// the batch.
bool IsLiveEntity(const host::Entity& entity);
// Builds the lists of switched-off and hidden layers IsLiveEntity consults; called at the start of a run.
void RefreshLiveLayers();

}  // namespace tv::titleblock
