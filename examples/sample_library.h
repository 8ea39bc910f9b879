#pragma once
// sample_titleblocks.tk: the title-block library that defines the frames of
// sample_titleblocks.dxf, as a user would have captured them at 1:100.
#include "titleblock/tk_library.h"

namespace tv::samples {

// 标准图框A1: fields A to D (the revision is the block's own text), an issue stamp above the title
// block, files named "A_B_C". 标准图框A2: drawing number, title and date, files named "A_C_D".
titleblock::TK_Library BuildTitleBlockLibrary();

}  // namespace tv::samples
