#pragma once
// The shipped sample drawings, built through the drawing database so that they are exactly what
// our own writer produces. Tests and benchmarks build them in memory too.
#include <cstddef>

#include "cad/database.h"

namespace tv::samples {

// sample.dxf: a drawing set in millimetres whose sheets recognition has to find. Model space holds
// title frames of A0 to A4 and a lengthened A2 (A2 + 1/2), landscape and portrait, drawn as closed
// polylines, as inserts of frame blocks (A0图框, A1竖图框, A2图框, A3图框, A4竖图框, with attributes
// 图号/图名/比例/日期) and as loose lines, at 1:100, 1:50 and 1:20, each with its drawing: a floor
// plan with a dashed axis grid, walls, round columns, solid and ANSI31 hatches, Chinese TEXT and
// MTEXT (gbenor.shx + gbcbig.shx) and dimensions with their *D blocks; beam and structural plans,
// details, a door schedule, notes, a site plan, elevations and a stair. An A4 frame lies wholly
// inside the A0 site plan. Stray rectangles: an empty room outline, an empty 1:1 A4 outline, a
// construction rectangle, a 100 x 100 square and a sliver 0.0004 high. Layouts 布局1 (A1 plus an
// A4 frame block) and 布局2 (A3 plus an A3 frame of loose lines) carry paper space frames and
// viewports onto model space. Layer 辅助线 is off, 旧版本 frozen, VPORT and Defpoints do not plot,
// 底图 is locked. The named-object dictionary holds TARVEX/PLOT/DEFAULT, an Xrecord two levels down.
cad::Database BuildSampleDrawing();

// sample_ucs.dxf: model space with a current UCS turned 30 degrees about Z (origin 20000,10000).
// Three A3 frames at 1:100 drawn square to that UCS, each with its drawing: a closed polyline, an
// insert of A3图框 rotated 30 degrees, and four loose lines; and one A3 polyline frame square to
// World, with its drawing, which recognition in the turned UCS must pass over.
cad::Database BuildUcsDrawing();

// sample_titleblocks.dxf: sheets for the title-block batch, at 1:100 unless told. Two inserts of
// the frame block 标准图框A1 (attributes 图号/图名/比例/日期; the revision "A" is a text of the
// block) at one place; one insert of it turned 90 degrees; an insert of 标准图框A2 (no attributes)
// with its values written over it as loose TEXT and MTEXT with formatting codes, the drawing
// number in two lines and the title in two lines; and one of 标准图框A2 at 1:50. Each frame holds a
// structural plan.
inline constexpr const char* kTitleFrameA1 = "标准图框A1";
inline constexpr const char* kTitleFrameA2 = "标准图框A2";
cad::Database BuildTitleBlockDrawing();

// big.dxf: about `entityCount` model space entities in the proportions of a real plan:
// 40% LINE, 25% LWPOLYLINE of 4-8 vertices, 25% TEXT, 10% INSERT (some with an attribute).
// The same count always gives the same drawing.
cad::Database BuildBigDrawing(std::size_t entityCount);

// frames.dxf: `frames` A1 frames at 1:100 (84100 x 59400) in rows of ten, in turn a closed
// polyline, an insert of the block A1图框 and four loose lines, each with `contentPerFrame`
// entities inside its drawing area in the proportions of BuildBigDrawing. The same arguments
// always give the same drawing.
cad::Database BuildFrameSet(std::size_t frames, std::size_t contentPerFrame);

}  // namespace tv::samples
