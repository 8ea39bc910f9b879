#include "plot/review_forms.h"

#include "plot/generic_review.h"
#include "plot/title_review.h"

namespace tv::plot {

void DestroyReviewForms() {
  DestroyGenericReview();
  DestroyTitleReview();
}
int LiveReviewForms() { return (GenericReview() ? 1 : 0) + (TitleReview() ? 1 : 0); }

}  // namespace tv::plot
