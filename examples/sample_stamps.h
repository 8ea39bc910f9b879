#pragma once
// sample_stamps.tvlib2: a small stamp library of the samples, its pictures drawn here (red seals
// with text on a transparent ground), so that a stamped plot can be tried without a user's seals.
#include <string>

#include "signing/stamp_library.h"

namespace tv::samples {

// A red seal picture as PNG bytes: a ring (round) or a frame (not round) around `text`,
// `widthPx` by `heightPx`, transparent outside the seal.
std::string SealPicture(const std::string& text, int widthPx, int heightPx, bool round);
// A PNG wholly of one opaque red, for tests that look for the stamp's pixels.
std::string SolidRedPicture(int widthPx, int heightPx);

// "出图专用章" (issue stamp, round, 40 mm), "注册建筑师章" (register stamp, 50 x 25 mm) and
// "审定章" (unclassified, 36 x 18 mm, approval code 2468).
signing::StampLibrary BuildStampLibrary();

}  // namespace tv::samples
