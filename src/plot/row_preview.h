#pragma once
// The preview of one row of a review list (the "预 览" column, `V row` at the list).
#include <cstddef>

namespace tv::plot {

struct Dlg_BPlot1;
struct Dlg_BPlot2;

// Previews row `row` (from 0); false when nothing was shown.
bool PreviewRow(Dlg_BPlot1& form, std::size_t row);
bool PreviewRow(Dlg_BPlot2& form, std::size_t row);

}  // namespace tv::plot
