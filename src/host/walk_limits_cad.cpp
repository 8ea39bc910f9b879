#include "host/walk_limits.h"

#include "cad/walk_limits.h"

namespace tv::host {

void NoteContentLeftOut() { cad::NoteContentLeftOut(); }

}  // namespace tv::host
