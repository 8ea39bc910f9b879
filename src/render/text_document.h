#pragma once
// Plain documents set in the installed Chinese font: pages of A4 with headings and paragraphs.
// The help file of the program is made this way.
#include <string>
#include <vector>

namespace tv::render {

// Lines of the source: "# " starts a heading, an empty line a new paragraph, anything else is text
// wrapped to the page width. Returns an empty string on success, else what went wrong.
std::string WriteTextPdf(const std::string& path, const std::vector<std::string>& lines);

}  // namespace tv::render
