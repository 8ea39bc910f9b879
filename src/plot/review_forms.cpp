#include "plot/review_forms.h"

#include <cstdio>

#include "host/editor.h"
#include "plot/generic_review.h"
#include "plot/paper_review.h"
#include "plot/title_review.h"
#include "settings/config.h"

namespace tv::plot {

std::string RowNumberCell(std::size_t i) {
  char text[16];
  std::snprintf(text, sizeof text, "%4d", static_cast<int>(i + 1));
  return text;
}

void SetPlotStamp() {
  const bool on = settings::GlobalConfig().plot_stamp != 0;
  host::CurrentEditor().command({"-plotstamp", on ? "O" : "OFF", ""});
}

void DestroyReviewForms() {
  DestroyGenericReview();
  DestroyTitleReview();
  DestroyPaperReview();
}
int LiveReviewForms() { return (GenericReview() ? 1 : 0) + (TitleReview() ? 1 : 0) + (PaperReview() ? 1 : 0); }

}  // namespace tv::plot
