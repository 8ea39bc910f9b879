#pragma once
// Page-level edits of finished PDF files, through qpdf.
#include <string>

namespace tv::render {

// Adds `degrees` (a multiple of 90) to the rotation of every page. The file is written under a
// temporary name and renamed over the old one, so a failure leaves it untouched. False with the
// reason in `error`.
bool RotatePdfPages(const std::string& path, int degrees, std::string& error);

}  // namespace tv::render
