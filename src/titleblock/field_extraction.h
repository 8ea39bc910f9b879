#pragma once
// Placeholder until the field reading lands.
#include <string>
#include <string_view>
#include <vector>

#include "host/entity.h"
#include "host/geometry.h"
#include "host/object_id.h"
#include "titleblock/tk_library.h"

namespace tv::titleblock {

inline constexpr std::string_view kLineMark = "[++}";
enum FrameAreaIndex : int { kAreaPrint = 0, kAreaDrawingNo = 1, kAreaRevision = 2, kAreaTitle = 3, kAreaDate = 4, kAreaInfo1 = 5, kAreaInfo2 = 6, kStampRegister = 11, kStampIssue = 12, kStampProject = 13, kStampCompleted = 14 };
const Extents3d& AreaOfIndex(const TK_Customization& definition, int index);
bool AreaOnDrawing(const TK_Customization* definition, ObjectId insertId, int index, Extents3d& extents, double& rotation);
std::string ReadAreaField(const TK_Customization* definition, ObjectId insertId, int index, ObjectIdArray& ids);
void RefreshLiveLayers();

}  // namespace tv::titleblock
