#pragma once
// Page-level edits of finished PDF files, through qpdf.
#include <string>

namespace tv::render {

// Adds `degrees` (a multiple of 90) to the rotation of every page. The file is written under a
// temporary name and renamed over the old one, so a failure leaves it untouched. False with the
// reason in `error`.
bool RotatePdfPages(const std::string& path, int degrees, std::string& error);

// Sets the rotation of the first page to `degrees` (a multiple of 90), whatever it was and wherever
// the page's box is kept (in the page, inherited from the page tree, or in a compressed object
// stream); the file is rewritten with a correct cross-reference table, replacing the old one
// whole. False with the reason in `error`, the file untouched.
bool SetFirstPageRotation(const std::string& path, int degrees, std::string& error);

// Width and height in millimetres of the first page as it shows (its rotation applied); false
// when the file is no readable PDF.
bool FirstPageSizeMm(const std::string& path, double& widthMm, double& heightMm);

}  // namespace tv::render
