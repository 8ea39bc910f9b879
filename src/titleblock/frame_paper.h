#pragma once
// The paper a frame was drawn for, from its sides in paper millimetres.
#include "paper/paper.h"

namespace tv::titleblock {

// Brought by tens into the range of real paper first (a frame drawn in metres, centimetres or
// inches scaled by ten still lands on it), then onto the paper catalogue.
paper::MyPaper FramePaperOfSides(double w, double h);

}  // namespace tv::titleblock
