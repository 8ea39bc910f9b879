#pragma once
#include "host/object_id.h"

namespace tv::cad {
using tv::ObjectId;
}  // namespace tv::cad
