#include "plot/review_forms.h"

namespace tv::plot {

namespace {
int g_liveForms = 0;
}  // namespace

void DestroyReviewForms() { g_liveForms = 0; }
int LiveReviewForms() { return g_liveForms; }

}  // namespace tv::plot
