#pragma once
// The three review forms of the batch commands and the progress form: one of each per process,
// alive from their command to the next one or to unload; and what their lists share.
#include <cstddef>
#include <string>

namespace tv::plot {

// The "序 号" cell of row `i` (from 0).
std::string RowNumberCell(std::size_t i);
// The print stamp follows the option before a list is shown.
void SetPlotStamp();

// Destroys the review forms and the progress form and clears their pointers.
void DestroyReviewForms();
int LiveReviewForms();

}  // namespace tv::plot
