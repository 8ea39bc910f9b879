#pragma once
// The layer new entities go on.
#include "host/object_id.h"

namespace tv::host {

// The drawing's current layer ($CLAYER); layer "0" when it names none that exists.
ObjectId CurrentLayer();

}  // namespace tv::host
