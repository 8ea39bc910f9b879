#pragma once
// The old paper batch: the sheets picked by one of the ways of its form, each plotted with its own
// `-plot` on the layout's own device (or into numbered PLT files), copy after copy.
#include <string>
#include <vector>

namespace tv::plot {

// The command "批打到纸张(旧版)": the plot prologue, the form, the picking, the question, the plots.
void OldPaperBatchCommand();

// The answers of one `-plot` of the old batch: the layout's settings accepted with Enter,
// `orientation` ("P", "L" or "" to keep the layout's), and the PLT file when `pltPath` isn't empty.
std::vector<std::string> OldBatchAnswers(bool inLayout, const std::string& orientation, const std::string& pltPath);

}  // namespace tv::plot
