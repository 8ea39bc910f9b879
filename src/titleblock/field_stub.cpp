#include "titleblock/field_extraction.h"
namespace tv::titleblock {
const Extents3d& AreaOfIndex(const TK_Customization& definition, int index) {
  switch (index) {
    case 1: return definition.area_drawing_no;
    case 2: return definition.area_revision;
    case 3: return definition.area_title;
    case 4: return definition.area_date;
    case 5: return definition.area_info1;
    case 6: return definition.area_info2;
    case 11: return definition.stamp_register;
    case 12: return definition.stamp_issue;
    case 13: return definition.stamp_project;
    case 14: return definition.stamp_completed;
    default: return definition.print_extents;
  }
}
bool AreaOnDrawing(const TK_Customization*, ObjectId, int, Extents3d&, double&) { return false; }
std::string ReadAreaField(const TK_Customization*, ObjectId, int, ObjectIdArray& ids) { ids.clear(); return {}; }
void RefreshLiveLayers() {}
}  // namespace tv::titleblock
