#pragma once
// What the open review list does when the user erases one of its sheet markers in the drawing:
// the marker's row leaves the list, and the rows after it move up.
#include "host/object_id.h"

namespace tv::plot {

// Takes the row whose marker `markerId` was out of the live generic or title-block list; false
// when no row of an open list has that marker.
bool RemoveRowOfMarker(ObjectId markerId);

}  // namespace tv::plot
