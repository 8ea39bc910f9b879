#include "plot/review_forms.h"

#include "plot/generic_review.h"

namespace tv::plot {

void DestroyReviewForms() { DestroyGenericReview(); }
int LiveReviewForms() { return GenericReview() ? 1 : 0; }

}  // namespace tv::plot
