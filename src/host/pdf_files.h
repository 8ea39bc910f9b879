#pragma once
// Changes to PDF files the plot has written.
#include <string>

namespace tv::host {

// Turns every page of a PDF file by `degrees` (a multiple of 90) clockwise, as the file's page
// rotation says; the file is replaced whole or left as it was. False, with the reason shown, when
// it could not be done.
bool RotatePdfPages(const std::string& path, int degrees);

// Sets the rotation of a PDF file's first page to `degrees`, rewriting the file whole. False, with
// the reason shown, when the file isn't a PDF that can be read.
bool SetFirstPageRotation(const std::string& path, int degrees);

}  // namespace tv::host
