#pragma once
// The layout's own viewport: the sheet of paper itself, which shows the layout and never model space.
#include "cad/database.h"

namespace tv::cad {

// The own viewport of `space`: the one numbered 1; where the writer left the numbers out, the one
// its layout names, else the first. Null when there is none (a layout built with floating
// viewports only, or model space).
ObjectId LayoutViewportOf(const Database& db, const BlockRecord& space);
bool IsLayoutViewport(const Database& db, const Viewport& vp);

}  // namespace tv::cad
