#pragma once
// The shipped sample drawings, built through the drawing database so that they are exactly what
// our own writer produces. Tests and benchmarks build them in memory too.
#include <cstddef>

#include "cad/database.h"

namespace tv::samples {

// sample.dxf: a 1:100 office floor plan in millimetres. Model space holds title frames of A1,
// A2 and A3 sheets (closed polylines, inserts of frame blocks with attributes 图号/图名/比例/日期,
// and one of loose lines) with their contents: dashed axis grid, walls, round columns, solid
// and ANSI31 hatches, Chinese TEXT and MTEXT (gbenor.shx + gbcbig.shx), dimensions with their
// *D blocks, and a few stray rectangles. Layouts 布局1 (A1) and 布局2 (A3) carry paper space
// frames and viewports onto model space. Layer 辅助线 is off, 旧版本 frozen, VPORT and
// Defpoints do not plot, 底图 is locked. The named-object dictionary holds TARVEX/PLOT/DEFAULT,
// an Xrecord two levels down.
cad::Database BuildSampleDrawing();

// big.dxf: about `entityCount` model space entities in the proportions of a real plan:
// 40% LINE, 25% LWPOLYLINE of 4-8 vertices, 25% TEXT, 10% INSERT (some with an attribute).
// The same count always gives the same drawing.
cad::Database BuildBigDrawing(std::size_t entityCount);

}  // namespace tv::samples
