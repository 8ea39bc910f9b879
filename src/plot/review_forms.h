#pragma once
// The three review forms of the batch commands and the progress form: one of each per process,
// alive from their command to the next one or to unload.
namespace tv::plot {

// Destroys the review forms and the progress form and clears their pointers.
void DestroyReviewForms();
int LiveReviewForms();

}  // namespace tv::plot
