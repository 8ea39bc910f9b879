#pragma once
// Texts of other vendors' classes (`TCH_TEXT`, `TCH_MTEXT` …), kept as proxies: the reader knows
// only their DXF data, but they stand on the sheet like any text and must be found by fences and
// measured by extents.
#include <memory>

#include "cad/database.h"

namespace tv::cad {

// A TEXT or MTEXT with the proxy's position, height, rotation, style and text, to measure it by;
// null when the proxy is no text or lacks a position, a height or a text. Group 10 is the
// insertion point, 40 the height, 50 the rotation, 7 the style, 1 the text; a one-line text uses
// 41, 72, 73 and 11 as TEXT does, a multi-line one 41 and 71 as MTEXT does.
std::unique_ptr<Entity> VendorTextStandIn(const ProxyEntity& proxy, const Database& db);

// Moves such a text by `xf` (points 10 and 11, height 40, rotation 50), so that it comes out of
// an exploded block where it stands. False, the proxy untouched, for a proxy that is no text.
bool TransformVendorText(ProxyEntity& proxy, const Matrix3d& xf);

}  // namespace tv::cad
