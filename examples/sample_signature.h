#pragma once
// sample_signature.dxf: a signature traced as outlines, as an office traces a scanned name before
// capturing it into the signature library: a "口" of loose lines (its counter drawn after it), a
// ring of two circles, a stadium of one polyline with arcs and a slanted stroke of lines, on the
// layer 签名 of model space, about 120 x 34 units.
#include "cad/database.h"

namespace tv::samples {

cad::Database BuildSignatureDrawing();

// Where the sample run places the traced signature in sample_titleblocks.dxf: the free part of
// the designer's row of the first A1 title block.
inline constexpr double kSignatureBox[4] = {71100, 1100, 74900, 1900};

}  // namespace tv::samples
